#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/acciones/Puesto.h"
#include "caja/catalog/CMedioPago.h"

namespace caja::app {

// Who may act, and the shop's catalogue and conflicts: each change approved
// by a supervisor once the shop has one (the first supervisor registers
// alone) and recorded in the trail, never a PIN.

// Registers or changes a supervisor with `nivel`, its PIN asked of the
// signatures.
void registrarSupervisor(Puesto& p, const std::string& nombre, int nivel);
// Registers a cashier, or changes its PIN.
void registrarCajero(Puesto& p, const std::string& nombre);
// Removes a cashier; a Rechazo when there is none of that name.
void darDeBajaCajero(Puesto& p, const std::string& nombre);

// The catalogue, national cash always in it whether or not it has a row.
std::vector<std::shared_ptr<CMedioPago>> mediosDeLaCaja(HostSql& db);
// The catalogue's dialog, run to its end; a change is recorded in the
// trail. Whether it ended well.
bool editarCatalogo(Puesto& p);

// A supervisor acknowledges the conflict `numero` of this till's journal:
// the journal keeps who and when, and the trail records it (the server's
// when the act runs there). The approver.
std::string resolverConflicto(Puesto& p, HostSql& diario, std::int32_t numero);

}  // namespace caja::app
