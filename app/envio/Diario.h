#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "caja/host/HostSql.h"
#include "caja/movement/CVarelta.h"

namespace caja::app {

// A till configured for a server keeps a journal: an SQLite file in its data
// folder with the server's schema, a copy of what a sale reads (catalogue,
// sessions, rate, company, the till's drawer, the documents charged lately)
// and every movement the till saved, each under the key made for it at the
// till (hostClaves), with the number the server gave it once sent. Sending
// a movement is idempotent: the server keeps the key with the movement, and
// a key it already has is answered with that movement.

// The program's data folder, $XDG_DATA_HOME/caja (~/.local/share/caja),
// made when `crear`.
std::filesystem::path carpetaDeDatos(bool crear);
// Appends the error, with its number and source, to the till's log
// (caja.log in the data folder, 0600) when the folder exists: what the
// cashier read without its number, for whoever looks into it.
void anotarError(const CajaError& e);
// The journal file in it: diario.db.
std::string rutaDiario(bool crearCarpeta);
// The journal, created when `crear`; nullptr when it is not there.
std::shared_ptr<HostSql> abrirDiario(bool crear);
// Replaces the journal's copy of what a sale reads with the server's, and
// its drawers too while nothing waits to be sent. A till's drawer moves on
// the server only by what the till sends, so in the journal it always reads
// as the server had it at the last copy plus what the till saved since:
// what `saldo` shows away from the server and what a withdrawal may take.
void copiarReferencias(HostSql& servidor, HostSql& diario);

// A movement waiting in the journal.
struct Pendiente {
  std::string clave;
  std::int32_t numeroLocal;
  std::string fecha, documento;
  Currency debitos, creditos;
  std::int32_t maquina;
};
std::vector<Pendiente> pendientes(HostSql& diario);

// Something that went wrong with a movement while sending it, said in one
// line: `clave` and `numeroLocal` name the movement, `maquina` its till.
struct Aviso {
  std::string clave;
  std::int32_t numeroLocal, maquina;
  std::string texto;
};

// What one run of sending did: the movements sent, with their local and
// server numbers, the documents that ended up charged more than once, and
// the movements the server refused (they stay pending).
struct Envio {
  std::vector<std::pair<std::int32_t, std::int32_t>> enviados;
  std::vector<Aviso> conflictos;
  std::vector<Aviso> fallidos;
};

// A conflict kept in the journal until a supervisor acknowledges it: a
// document charged at more than one till ("documento") or a movement the
// server refused ("rechazo").
struct Conflicto {
  std::int32_t id;
  std::string fecha, clase;
  std::int32_t numeroLocal, maquina;
  std::string detalle, resueltoPor, resueltoEl;
};
// The journal's conflicts, the acknowledged ones too when `todos`.
std::vector<Conflicto> conflictos(HostSql& diario, bool todos);
// Says on standard error, a line each, the documents charged twice and the
// movements the server refused.
void avisarEnvio(const Envio& envio);
// Sends the pending movements, oldest first, a batch of them per call of
// the server's receiver (caja_recibir) and per server transaction, holding
// the till's sending lock; keeps each new conflict in the journal with a
// row of its trail; then sends the journal's trail rows. Neither host
// becomes the component's. A lost link is raised.
Envio sincronizar(HostSql& servidor, HostSql& diario);

// Where a till on a server finds a document charged already, without a
// round trip: the journal's copy of the server's recent documents ("12",
// the server's movement), then the till's own sales not sent yet ("local
// 3"); empty when neither has it.
std::string cobradoSegunDiario(HostSql& diario, const std::string& tipo, std::int32_t numero);
// The server's number of a movement saved in the journal as `local`: 0 while
// it waits to be sent, -1 when the journal has no such movement.
std::int32_t numeroEnServidor(HostSql& diario, std::int32_t local);
// The journal's number of the movement the server numbered `servidor`, or 0
// when the journal has none.
std::int32_t numeroLocalDe(HostSql& diario, std::int32_t servidor);
// The movement as before its first save: no number, lines without ids. A
// save that starts again (another till collided, or it moves to the journal)
// makes its own drawer transaction.
void olvidarGuardado(CVarelta& mov);
// Says on standard error, in one line, that the journal could not be brought
// up to date and why: the sale it came with goes on without it.
void avisarDiarioSinActualizar(const std::exception& e);
// A new key for a movement: a random UUID.
std::string nuevaClave();

}  // namespace caja::app
