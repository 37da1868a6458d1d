#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"

namespace caja {

// One related document of a cash movement: a row of `subDocsMC`.
class CAJA_EXPORT CDocsMovCaja : public Objeto {
 public:
  std::int32_t TransID = 0;
  std::string TipoDoc;
  std::int32_t NumeroDoc = 0;
  Currency Debitos;
  Currency Creditos;

  // The host's document object, or nullptr before `Init`.
  std::shared_ptr<Objeto> Documento() const;
};

}  // namespace caja
