#pragma once

#include <exception>
#include <utility>
#include <vector>

#include "app/datos/Diario.h"

namespace caja::app {

// What one run of sending did: the movements sent, with their local and
// server numbers, the documents that ended up charged more than once, and
// the movements the server refused (they stay pending).
struct Envio {
  std::vector<std::pair<std::int32_t, std::int32_t>> enviados;
  std::vector<Aviso> conflictos;
  std::vector<Aviso> fallidos;
};

// Sends the pending movements, oldest first, a batch of them per call of
// the server's receiver (caja_recibir) and per server transaction, holding
// the till's sending lock; keeps each new conflict in the journal with a
// row of its trail; then sends the journal's trail rows. Neither host
// becomes the component's. A lost link is raised.
Envio sincronizar(HostSql& servidor, HostSql& diario);

// Both ways, for a till on the server `servidor`: what waits in its journal
// goes to the server, and the journal takes a fresh copy of what a sale
// reads. Nothing without a journal.
Envio sincronizarCaja(HostSql& servidor);

// Says on standard error, a line each, the documents charged twice and the
// movements the server refused.
void avisarEnvio(const Envio& envio);
// Says on standard error, in one line, that the journal could not be brought
// up to date and why: the sale it came with goes on without it.
void avisarDiarioSinActualizar(const std::exception& e);

}  // namespace caja::app
