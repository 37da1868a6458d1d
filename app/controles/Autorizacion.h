#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/datos/Auditoria.h"
#include "app/datos/Supervisores.h"
#include "caja/base/Currency.h"

namespace caja::app {

// Who acts and who approves. A wrong PIN is refused, recorded in the audit
// trail and counted; `IntentosPin` wrong PINs in a row (5) lock that person
// for `MinutosBloqueo` minutes (15), settings of section "Seguridad".

struct Credencial {
  std::string nombre, pin;
};

// Where names and PINs come from: the command line (its options and standard
// input, or a small dialog with a screen), or the till's window. Each act
// asks in this order: the cashier's first, then the approver's, then a new
// PIN being registered.
class Firmas {
 public:
  virtual ~Firmas() = default;
  // The name given for `rol` before anyone asks (--operador, --autoriza, the
  // signed-in cashier), if any.
  virtual std::optional<std::string> nombreDado(Rol rol) = 0;
  // Who and their PIN, for `para`; `nombres` are those of the role the shop
  // has. A Rechazo when it cannot be had or is cancelled: nothing is saved.
  virtual Credencial pedir(Rol rol, const std::string& titulo, const std::string& para,
                           const std::vector<std::string>& nombres) = 0;
  // A new PIN being registered.
  virtual std::string pinNuevo() = 0;
  // A supervisor's PIN alone, as the component asks for a level (`pide`
  // says what for); nothing when cancelled.
  virtual std::optional<std::string> pinDeSupervisor(const std::string& pide) = 0;
};

// Installs `VerificarUsuario` on the host: it asks `firmas` for a
// supervisor's PIN and answers its level; a PIN of no one is recorded.
void instalarVerificador(HostSql& db, Firmas& firmas);

// The machine an act is recorded at, found only when a row of the trail
// needs it (a wrong PIN).
using Maquina = std::function<std::int32_t()>;

// The cashier acting at `maquina`, by the name the shop registered. While the
// shop has no cashiers, the name given as it is (CAJERO when none); once it
// has them, the name given is one and its PIN is asked.
std::string cajeroDe(HostSql& db, Firmas& firmas, const Maquina& maquina);

// A supervisor's approval for `que` ("anular el movimiento 3") at `maquina`:
// the level must reach `nivel`. Answers the approver's name; a refusal is a
// Rechazo, and nothing of the act is saved.
std::string aprobacion(HostSql& db, Firmas& firmas, const Maquina& maquina, const std::string& que,
                       int nivel);

// The level an act needs: "NivelAprobacion" (voids, refunds, withdrawals,
// closings out of tolerance) or "NivelForzar" (leaving a drawer below zero),
// 5 unless the shop sets them.
int nivelExigido(const char* ajuste);
// The largest difference a closing may have per method, valued in national
// currency, without a supervisor: "DiferenciaCierre", 0 unless set.
Currency diferenciaTolerada();
// The fewest characters of a PIN ("LargoMinimoPin", 6 unless set, never
// under 4).
std::int64_t largoMinimoPin();

// A wrong PIN of `nombre` counted in `db`, inside the caller's transaction:
// at "IntentosPin" in a row (5) the person is locked out for
// "MinutosBloqueo" minutes (15). The time until then, or empty.
std::string contarFallo(HostSql& db, Rol rol, const std::string& nombre);
// A till's row of the trail about a wrong PIN or a lockout, on its way to
// the server, counted there too: failures add up across the shop's tills,
// and a lockout recorded on the server holds at every till after its next
// copy.
void contarEnServidor(HostSql& servidor, const Asiento& a);

}  // namespace caja::app
