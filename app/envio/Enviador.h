#pragma once

#include <filesystem>
#include <string>

#include <memory>

#include "caja/host/HostSql.h"

namespace caja::app {

// The till's sender: it ships the journal to the server behind the cashier.
// One runs per till at a time (the lock "enviador.lock" of the data folder,
// held for its life, and looked at once more after it is freed); each batch
// it sends holds "envio.lock", which every other sending (`sincronizar`, a
// closing's) waits for, so that two processes never send the same movement
// at once. Exactly once stays the key's doing.
//
// `caja enviar` sends until nothing waits, on one connection while it
// works, backing off while the server is away (1, 2, 4... up to 60 s), and
// gives up after ten minutes; `--continuo` never ends, for a till that runs
// it all day as a service. After a batch that sent something, and every
// half minute otherwise, the journal's copy of what a sale reads is
// refreshed; a batch that sent something with nothing refused notes its
// time for `pendientes`.
enum class FinDeEnvio {
  NadaEspera,   // all sent
  OtroEnCurso,  // another sender of this till runs: nothing done
  OtroSigue,    // ...and took over what waited, after this one sent
  SinServidor,  // the server did not take it in ten minutes
};
FinDeEnvio enviar(const std::string& uri, const std::shared_ptr<HostSql>& diario, bool continuo);

// Starts `caja enviar` for the server `uri`, detached, unless a sender of
// this till is running already. Called after a movement was saved in the
// journal.
void lanzarEnviador(const std::string& uri);

}  // namespace caja::app
