#pragma once

#include <string>

#include "app/datos/Auditoria.h"
#include "app/linea/Comandos.h"
#include "app/datos/Supervisores.h"
#include "caja/base/Currency.h"

namespace caja::app {

// Who acts and who approves. PINs are typed in a small dialog when the
// command runs with a screen, else read from standard input one line each,
// in the order they are asked: the cashier's first, then the approver's,
// then a new PIN being registered. A wrong PIN is refused, recorded in the
// audit trail and counted; `IntentosPin` wrong PINs in a row (5) lock that
// person for `MinutosBloqueo` minutes (15), settings of section "Seguridad".

// The cashier acting, by the name the shop registered. While the shop has
// no cashiers, --operador as typed (CAJERO when absent), as it always was;
// once it has them, --operador names one and its PIN is asked.
std::string cajeroDe(Contexto& c);

// A supervisor's approval for `que` ("anular el movimiento 3"): --autoriza
// names the supervisor (asked in the dialog when absent), whose PIN is then
// asked; the level must reach `nivel`. Answers the approver's name; a
// refusal is a Rechazo, and nothing of the act is saved.
std::string aprobacion(Contexto& c, const std::string& que, int nivel);

// Whether the shop has any supervisor yet: the first one is registered
// without approval.
bool haySupervisores(Contexto& c);

// The level an act needs: "NivelAprobacion" (voids, refunds, withdrawals,
// closings out of tolerance) or "NivelForzar" (leaving a drawer below zero),
// 5 unless the shop sets them.
int nivelExigido(const char* ajuste);
// The largest difference a closing may have per method, valued in national
// currency, without a supervisor: "DiferenciaCierre", 0 unless set.
Currency diferenciaTolerada();

// A new PIN read from standard input, as long as the shop asks
// ("LargoMinimoPin", 6 unless set, never under 4).
std::string nuevoPin();

// A wrong PIN of `nombre` counted in `db`, inside the caller's transaction:
// at "IntentosPin" in a row (5) the person is locked out for
// "MinutosBloqueo" minutes (15). The time until then, or empty.
std::string contarFallo(HostSql& db, Rol rol, const std::string& nombre);
// A till's row of the trail about a wrong PIN or a lockout, on its way to
// the server, counted there too: failures add up across the shop's tills,
// and a lockout recorded on the server holds at every till after its next
// copy.
void contarEnServidor(HostSql& servidor, const Asiento& a);

// The till a command acts at, for the trail: --maquina or this till's
// number, else the machine of --sesion or of the only open session, else 0.
std::int32_t maquinaDe(Contexto& c);

}  // namespace caja::app
