#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "app/datos/Consultas.h"

namespace caja::app {

// Refuses (Rechazo) a refund of `total`, handing back `porMedio` (own
// currency, positive), that the document never charged, or that would take
// its refunds beyond what it charged, in total or in a method other than
// national cash, which may hand back any part of a sale. `forzada` lets it
// through: the caller has a supervisor approve it and the trail records it.
void exigirDevolucionCubierta(const CobroDocumento& cobro, const std::string& documento,
                              Currency total, const std::map<std::string, Currency>& porMedio,
                              bool forzada);

}  // namespace caja::app
