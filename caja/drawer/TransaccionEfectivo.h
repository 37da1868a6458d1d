#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/Collection.h"
#include "caja/base/Exporta.h"
#include "caja/base/Variant.h"
#include "caja/drawer/DetalleEfectivo.h"
#include "caja/service/Recordset.h"

namespace caja {

// The kind of document that caused a drawer transaction; only stored.
enum class origenTransaccionEfectivo : std::int32_t {
  OTE_MOVCAJA = 0,
  OTE_ORIGENT = 1,
  OTE_DESTINOT = 2,
};

// The money of each payment method that entered or left one till's drawer
// because of one document. Collect with `beginProcess` and `addDetalle`,
// write with `grabar`; undo with `loadFromTransid` and `revertir`. Balances
// only ever move by relative amounts. No statement is undone on failure: a
// caller that needs atomicity wraps the call in a host transaction.
class CAJA_EXPORT TransaccionEfectivo : public Objeto {
 public:
  std::int32_t Id = 0;
  origenTransaccionEfectivo tipoTrans = origenTransaccionEfectivo::OTE_MOVCAJA;
  std::int32_t idOrigen = 0;
  std::int16_t MachineID = 0;
  Currency EfectivoMN;

  void beginProcess(const Variant& idMaquina);
  // Adds an amount of a cash-like method; national cash ("EFE") goes to
  // `EfectivoMN`. An outgoing amount is revalued at the drawer's own rate.
  void addDetalle(const std::string& medio, Currency Monto, Currency nominal);
  // Adds one amount to the balance of till `MachineID`, creating its rows on first use.
  void actualizarSaldo(const Variant& medio, const Variant& valorMN, const Variant& valorNominal);
  // Writes the transaction, then each line before its balance, in first-added order.
  void grabar(origenTransaccionEfectivo origen, std::int32_t numRef);
  // Takes a loaded transaction out of the balances, then deletes its rows.
  void revertir();
  void loadInstance(Recordset& rs);
  bool loadFromTransid(origenTransaccionEfectivo origen, std::int32_t numRef);

 private:
  Collection<DetalleEfectivo>& lineas();
  // The drawer's own rate for `medio`, or 0 when it holds none.
  double tasaDelCajon(const std::string& medio);

  std::shared_ptr<Collection<DetalleEfectivo>> detalles_;
};

}  // namespace caja
