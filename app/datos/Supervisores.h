#pragma once

#include <optional>
#include <string>
#include <vector>

#include "caja/host/HostSql.h"

namespace caja::app {

// Who may act at the till: cashiers sell, supervisors authorise what a
// cashier may not do alone. Only an Argon2id hash of each PIN is kept (rows
// of older versions keep a salted SHA-256 until the supervisor's next change).
enum class Rol { Cajero, Supervisor };

struct Persona {
  std::string nombre;  // as it was registered
  std::string sal, hash;
  int nivel = 0;  // a cashier's is 0
};

// "cajero" or "supervisor", as messages and the trail name the role.
const char* nombreRol(Rol rol);

void agregarSupervisor(HostSql& db, const std::string& nombre, const std::string& pin, int nivel);
void agregarCajero(HostSql& db, const std::string& nombre, const std::string& pin);
// Whether there was such a cashier.
bool quitarCajero(HostSql& db, const std::string& nombre);
std::optional<Persona> personaDe(HostSql& db, Rol rol, const std::string& nombre);
std::vector<std::string> nombresDe(HostSql& db, Rol rol);
bool pinCoincide(const Persona& persona, const std::string& pin);

// Whether the shop has anyone of the role registered.
bool hayPersonas(HostSql& db, Rol rol);

// A person's wrong PINs in a row, and until when they are locked out ("" for
// not locked), as kept in hostIntentos; `fallos` 0 without a row.
struct Intentos {
  std::int64_t fallos = 0;
  std::string bloqueadoHasta;
};
Intentos intentosDe(HostSql& db, Rol rol, const std::string& nombre);
void ponerIntentos(HostSql& db, Rol rol, const std::string& nombre, std::int32_t fallos,
                   const std::string& hasta);
// Back to no failures: set back, never deleted, since a till's login may not
// delete the counts.
void reiniciarIntentos(HostSql& db, Rol rol, const std::string& nombre);
// A lockout until `hasta` merged in: the later of the two holds, and the
// count starts again.
void bloquearHasta(HostSql& db, Rol rol, const std::string& nombre, const std::string& hasta);

// The highest level of the supervisors whose PIN this is; 0 for none.
int nivelDePin(HostSql& db, const std::string& pin);

}  // namespace caja::app
