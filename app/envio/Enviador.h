#pragma once

#include <filesystem>
#include <string>

#include "app/linea/Comandos.h"

namespace caja::app {

// An exclusive lock on a file of the till's data folder (flock), held while
// the object lives; not inherited by programs the process starts.
class Cerrojo {
 public:
  // Waits for the lock when `esperar`; otherwise `tomado()` says whether it
  // was free.
  Cerrojo(const std::filesystem::path& archivo, bool esperar);
  ~Cerrojo();
  Cerrojo(const Cerrojo&) = delete;
  Cerrojo& operator=(const Cerrojo&) = delete;
  bool tomado() const { return tomado_; }

 private:
  int fd_ = -1;
  bool tomado_ = false;
};

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
int enviar(Contexto& c);

// Starts `caja enviar` for the server `uri`, detached, unless a sender of
// this till is running already. Called after a movement was saved in the
// journal.
void lanzarEnviador(const std::string& uri);

// When the last batch with nothing refused ended, or empty.
std::string ultimoEnvio();
// Notes now as the time of the last batch that sent with nothing refused.
void anotarEnvio();

}  // namespace caja::app
