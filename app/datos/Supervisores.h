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

// The highest level of the supervisors whose PIN this is; 0 for none.
int nivelDePin(HostSql& db, const std::string& pin);
// Installs `VerificarUsuario` on the host: it asks for a PIN (a dialog when
// there is a screen, standard input otherwise) and answers its level.
void instalarVerificador(HostSql& db, bool conPantalla);

}  // namespace caja::app
