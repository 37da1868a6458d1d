#pragma once

#include <utility>
#include <vector>

#include "caja/base/Exporta.h"
#include "caja/service/DialogosCaja.h"

namespace caja {

// The component's dialogs on Qt Widgets, for the facade.
class CAJA_EXPORT DialogosQt : public DialogosCaja {
 public:
  std::shared_ptr<CVarelta> Cobrar(const std::string& titulo, Currency montoVenta,
                                   Currency montoIVA, Currency montoCredito,
                                   Aplicar2602 alCambiarIVA) override;
  void DefinirMediosPago() override;
  void DefinirMedioPagoNuevo(const std::string& codigo, std::int16_t& contexto) override;
};

// Installs the Qt dialogs for `CServiciosCaja` (a QApplication must exist).
CAJA_EXPORT void instalarDialogosQt();

// A collection typed in place of the cashier, the dialog never shown: the
// dialog set up with the three amounts (as `Varelta` hands them over, in
// cents), each of `pagos` typed into the input of its method ("EFE" for
// national cash), then accepted; a change split the shop asks for is taken
// as the dialog suggests it. nullptr when a method has no input here or the
// payments do not complete the sale. For hosts that bring in sales taken
// elsewhere, and for their own tests.
CAJA_EXPORT std::shared_ptr<CVarelta> CobrarSinMostrar(
    const std::string& titulo, Currency venta, Currency iva, Currency credito,
    const std::vector<std::pair<std::string, Currency>>& pagos);

}  // namespace caja
