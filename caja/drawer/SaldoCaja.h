#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/Collection.h"
#include "caja/base/Variant.h"
#include "caja/drawer/DetalleEfectivo.h"

namespace caja {

// A snapshot of one till's drawer: national cash, and per method its value in
// national currency and its nominal amount.
class SaldoCaja : public Objeto {
 public:
  std::int32_t Id = 0;
  std::int32_t idCaja = 0;
  Currency saldoMonedaNacional;
  // One line per method keyed by code, national cash under "EFE"; nullptr before `load`.
  std::shared_ptr<Collection<DetalleEfectivo>> detalles;

  // Note the order: nominal amount before national value.
  std::shared_ptr<DetalleEfectivo> makeDetalleEfectivo(const Variant& medio,
                                                       const Variant& valorNominal,
                                                       const Variant& valorMN);
  // Reads the drawer of machine `idCaja`; false when the till has no balance row.
  bool load(std::int32_t idCaja);
  // The drawer's rate for a method, unrounded: 0 for a method it never held,
  // 1 for one without a nominal amount. Never raises.
  double tipoCambio(const std::string& codigoMedio) const;
};

}  // namespace caja
