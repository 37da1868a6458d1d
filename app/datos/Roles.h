#pragma once

#include <string>
#include <vector>

#include "caja/host/HostSql.h"

namespace caja::app {

// Least privilege on a shop's server: two group roles, granted to the login
// roles of the tills and of the administrator.
//   caja_caja   reads what a sale reads; writes a movement, its key and the
//               trail only through the server's functions (caja_recibir,
//               caja_anotar), which check what they are given; records voids,
//               closings and sessions, moves drawers, parked lines and PIN
//               counts; may never update or delete a movement, a line, a
//               closing or a row of the trail, nor delete a PIN count, nor
//               touch the company, the rate or the catalogue. Bound to a
//               machine by the administrator (hostLogins), it may touch no
//               row of another machine's money: a trigger on each such table
//               refuses it, and an unbound till's login touches none.
//   caja_admin  all of that, and the catalogue, the company, the rate,
//               cashiers, supervisors and the tills' logins. Not the trail
//               either: only the database's owner could rewrite it, and the
//               chain would tell.
// The statements, one per element, safe to run again.
std::vector<std::string> sentenciasDeRoles();
// Runs them on the server, in one transaction.
void crearRoles(HostSql& servidor);

}  // namespace caja::app
