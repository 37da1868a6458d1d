#include "dialogs/DialogosQt.h"

#include "dialogs/frmVarelta.h"
#include "service/HostUtil.h"

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
  hostUtil().MostrarMensaje("La administración de medios de pago aún no está disponible.");
}

void DialogosQt::DefinirMedioPagoNuevo(const std::string&, std::int16_t& contexto) {
  contexto = 0;
  DefinirMediosPago();
}

void instalarDialogosQt() {
  setDialogosCaja(std::make_shared<DialogosQt>());
}

}  // namespace caja
