#include "caja/dialogs/modelo/Vuelto.h"

namespace caja {

bool Vuelto::detallarVuelto(const CobroVarelta& /*cobro*/, Currency monto, Currency& acreditable) {
  detalles_ = std::make_shared<Collection<CDetalleIngreso>>();
  auto linea = std::make_shared<CDetalleIngreso>();
  linea->medio = "EFE";
  linea->Monto = -monto;
  linea->montoNominal = -monto;
  detalles_->Add(linea);
  acreditable = Currency{};
  return true;
}

}  // namespace caja
