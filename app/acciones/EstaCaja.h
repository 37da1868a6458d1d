#pragma once

#include <cstdint>
#include <optional>

#include "app/linea/Comandos.h"

namespace caja::app {

// Which till this is. A shop of several tills on one database tells them
// apart by a machine number, kept where the component reads it too: the
// "MachineID" setting of application "Nubetral", section "General", in the
// till's own configuration folder.

// The number set for this till, if any.
std::optional<std::int32_t> maquinaConfigurada();
// Sets this till's number.
void fijarMaquina(std::int32_t maquina);

// The till a command acts at: --maquina, else this till's number, else the
// one machine the database has sessions of (1 when it has none). A database
// with sessions of several machines and a till without a number is refused
// with how to set it: a guess would count another cashier's money.
std::int32_t estaMaquina(Contexto& c);

// --maquina, else this till's number; nothing when neither is given (a
// listing of every till).
std::optional<std::int32_t> maquinaElegida(Contexto& c);

// `caja maquina [N]`: shows or sets this till's number; `caja maquina N
// --login USUARIO` binds a server login to machine N.
int comandoMaquina(Contexto& c);

}  // namespace caja::app
