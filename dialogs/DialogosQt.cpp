#include "dialogs/DialogosQt.h"

#include "dialogs/frmDefinirMedioPago.h"
#include "dialogs/frmVarelta.h"

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

void instalarDialogosQt() {
  setDialogosCaja(std::make_shared<DialogosQt>());
}

}  // namespace caja
