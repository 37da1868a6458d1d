#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "app/acciones/Puesto.h"

namespace caja::app {

// Which till this is. A shop of several tills on one database tells them
// apart by a machine number, kept where the component reads it too: the
// "MachineID" setting of application "Nubetral", section "General", in the
// till's own configuration folder.

inline constexpr std::int64_t kMaquinaMaxima = 32767;

// The number set for this till, if any.
std::optional<std::int32_t> maquinaConfigurada();
// Sets this till's number.
void fijarMaquina(std::int32_t maquina);

// The till an act acts at: `elegida` (the one named, else this till's
// number), else the one machine the database has sessions of (1 when it has
// none). A database with sessions of several machines and a till without a
// number is refused with how to set it: a guess would count another
// cashier's money.
std::int32_t estaMaquina(HostSql& db, std::optional<std::int32_t> elegida);

// On a server, the administrator binds a till's login to its machine: from
// then on that login touches no other machine's money. Recorded in the trail.
void atarLoginDeCaja(Puesto& p, const std::string& login, std::int32_t maquina);

}  // namespace caja::app
