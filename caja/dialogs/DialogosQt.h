#pragma once

#include "caja/service/DialogosCaja.h"

namespace caja {

// The component's dialogs on Qt Widgets, for the facade.
class DialogosQt : public DialogosCaja {
 public:
  std::shared_ptr<CVarelta> Cobrar(const std::string& titulo, Currency montoVenta,
                                   Currency montoIVA, Currency montoCredito,
                                   Aplicar2602 alCambiarIVA) override;
  void DefinirMediosPago() override;
  void DefinirMedioPagoNuevo(const std::string& codigo, std::int16_t& contexto) override;
};

// Installs the Qt dialogs for `CServiciosCaja` (a QApplication must exist).
void instalarDialogosQt();

}  // namespace caja
