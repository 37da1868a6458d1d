#pragma once

#include <string>
#include <vector>

namespace caja::app {

// Least privilege on a shop's server: two group roles, granted to the login
// roles of the tills and of the administrator.
//   caja_caja   reads what a sale reads; inserts movements, their lines and
//               the trail; moves the drawers, sessions, parked lines and PIN
//               counts; may never update or delete a movement, a line, a
//               closing or a row of the trail.
//   caja_admin  all of that, and the catalogue, the company, cashiers and
//               supervisors. Not the trail either: only the database's owner
//               could rewrite it, and the chain would tell.
// The statements, one per element, safe to run again.
std::vector<std::string> sentenciasDeRoles();

}  // namespace caja::app
