#pragma once

#include "caja/host/HostSql.h"

namespace caja::app {

// A catalogue that exercises every kind of method, an open session on
// machine 1, the exchange rate and a special-taxpayer company with 3% IGTF.
void crearDemo(HostSql& db);

}  // namespace caja::app
