#include "caja/drawer/DetalleEfectivo.h"

#include "caja/base/Conversiones.h"

namespace caja {

double DetalleEfectivo::tipoCambio() const {
  if (valorNominal.isZero())
    return 1.0;
  return CCur(valorMN / valorNominal).toDouble();
}

void DetalleEfectivo::tipoCambio(double valor) {
  tasaGuardada_ = CCur(valor);
}

}  // namespace caja
