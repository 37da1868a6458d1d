#pragma once

#include <string>

#include "caja/host/HostSql.h"

namespace caja::app {

// Supervisors who authorise what a cashier may not do alone. Only an
// Argon2id hash of each PIN is kept (rows of older versions keep a salted
// SHA-256 until the supervisor's next change).
void agregarSupervisor(HostSql& db, const std::string& nombre, const std::string& pin, int nivel);
// The highest level of the supervisors whose PIN this is; 0 for none.
int nivelDePin(HostSql& db, const std::string& pin);
// Installs `VerificarUsuario` on the host: it asks for a PIN (a dialog when
// there is a screen, standard input otherwise) and answers its level.
void instalarVerificador(HostSql& db, bool conPantalla);

}  // namespace caja::app
