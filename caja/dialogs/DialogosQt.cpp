#include "caja/dialogs/DialogosQt.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include "caja/dialogs/frmDefinirMedioPago.h"
#include "caja/dialogs/frmDefinirVuelto.h"
#include "caja/dialogs/frmVarelta.h"

namespace caja {

std::shared_ptr<CVarelta> DialogosQt::Cobrar(const std::string& titulo, Currency montoVenta,
                                             Currency montoIVA, Currency montoCredito,
                                             Aplicar2602 alCambiarIVA) {
  frmVarelta dialogo;
  dialogo.setWindowTitle(QString::fromStdString(titulo));
  dialogo.Aplicar2602 = std::move(alCambiarIVA);
  return dialogo.Cobrar(montoVenta, montoIVA, montoCredito);
}

void DialogosQt::DefinirMediosPago() {
  // Modeless: the dialog lives until the user closes it.
  auto* dialogo = new frmDefinirMedioPago();
  dialogo->setAttribute(Qt::WA_DeleteOnClose);
  dialogo->show();
  dialogo->activateWindow();
}

void DialogosQt::DefinirMedioPagoNuevo(const std::string& codigo, std::int16_t& contexto) {
  frmDefinirMedioPago dialogo;
  dialogo.SetCodigo(codigo);
  dialogo.SetContexto(contexto);
}

std::shared_ptr<CVarelta> CobrarSinMostrar(
    const std::string& titulo, Currency venta, Currency iva, Currency credito,
    const std::vector<std::pair<std::string, Currency>>& pagos) {
  frmVarelta dialogo;
  dialogo.setWindowTitle(QString::fromStdString(titulo));
  dialogo.preparar(venta, iva, credito);
  for (const auto& [codigo, monto] : pagos)
    if (!dialogo.teclear(codigo, monto))
      return nullptr;
  dialogo.guionVuelto = [](frmDefinirVuelto& vuelto) { return vuelto.aceptarGuion(); };
  return dialogo.aceptarGuion() ? dialogo.resultado() : nullptr;
}

void instalarDialogosQt() {
  setDialogosCaja(std::make_shared<DialogosQt>());
  // Qt's own texts (message boxes, standard buttons) in Spanish: "Aceptar",
  // "Cancelar", "Sí", "No". The component's texts are its own already.
  static QTranslator* traductor = nullptr;
  if (traductor || !QCoreApplication::instance())
    return;
  traductor = new QTranslator(QCoreApplication::instance());
  if (traductor->load(QLocale(QLocale::Spanish), "qtbase", "_",
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QCoreApplication::installTranslator(traductor);
}

}  // namespace caja
