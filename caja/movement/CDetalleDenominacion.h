#pragma once

#include <cstdint>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"

namespace caja {

// Notes or coins of one denomination counted in a payment line.
class CAJA_EXPORT CDetalleDenominacion : public Objeto {
 public:
  std::int32_t Id = 0;
  std::int32_t idDetalle = 0;
  Currency Denominacion;
  std::int16_t CantidadRecibida = 0;

  Currency valor() const { return Denominacion * CantidadRecibida; }
};

}  // namespace caja
