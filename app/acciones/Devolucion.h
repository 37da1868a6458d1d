#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "caja/base/Currency.h"
#include "caja/host/HostSql.h"

namespace caja::app {

// A refund answers to its sale: what the sales of a document charged and
// what its refunds gave back, voided movements left out, in total (national
// currency, IGTF not counted) and per method (in the method's own currency,
// a sale's change taken off).
struct CobroDocumento {
  bool cobrado = false;         // some sale of it stands
  bool montosConocidos = true;  // false: known charged, but not what for
  Currency total, devuelto;
  std::map<std::string, Currency> pagado, dado;
};

// On `db`; only what waits to be sent when `soloSinEnviar` (a till's journal).
CobroDocumento cobroDe(HostSql& db, const std::string& tipo, std::int32_t numero,
                       bool soloSinEnviar = false);

// Adds what `b` saw of a document to `a`.
void sumar(CobroDocumento& a, const CobroDocumento& b);

// Refuses (Rechazo) a refund of `total`, handing back `porMedio` (own
// currency, positive), that the document never charged, or that would take
// its refunds beyond what it charged, in total or in a method other than
// national cash, which may hand back any part of a sale. `forzada` lets it
// through: the caller has a supervisor approve it and the trail records it.
void exigirDevolucionCubierta(const CobroDocumento& cobro, const std::string& documento,
                              Currency total, const std::map<std::string, Currency>& porMedio,
                              bool forzada);

}  // namespace caja::app
