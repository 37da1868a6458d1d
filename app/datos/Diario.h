#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/datos/Auditoria.h"
#include "app/datos/Tipos.h"
#include "caja/host/HostSql.h"

namespace caja::app {

// A till configured for a server keeps a journal: an SQLite file in its data
// folder with the server's schema, a copy of what a sale reads (catalogue,
// sessions, rate, company, the till's drawer, the documents charged lately)
// and every movement the till saved, each under the key made for it at the
// till (hostClaves), with the number the server gave it once sent. Sending
// a movement is idempotent: the server keeps the key with the movement, and
// a key it already has is answered with that movement.

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
// What the movements waiting add to the till's drawers, per method.
std::vector<MontoMedio> aporteDe(HostSql& diario);

// Something that went wrong with a movement while sending it, said in one
// line: `clave` and `numeroLocal` name the movement, `maquina` its till.
struct Aviso {
  std::string clave;
  std::int32_t numeroLocal, maquina;
  std::string texto;
};

// The server's answer for a sale of a document it already held as charged
// (`previos`, "NUMBER:MACHINE ..."), now also charged as its movement `numero`.
Aviso conflictoDe(const Pendiente& p, const std::string& previos, std::int32_t numero);

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
// Keeps each new one of `avisos` as a conflict of `clase`, once per
// movement and kind, with a row of the journal's trail, which reaches the
// server's with the rest.
void guardarConflictos(HostSql& diario, const char* clase, const std::vector<Aviso>& avisos);
// One not acknowledged yet, or nothing.
std::optional<Conflicto> conflictoSinResolver(HostSql& diario, std::int32_t id);
void marcarResuelto(HostSql& diario, std::int32_t id, const std::string& aprobador);

// A batch of pending movements as the server's receiver takes it: a JSON
// array, each its key, its header, lines with their coins, drawer
// transactions with their lines, how its change went back, its amounts and
// its void when the till voided it unsent.
std::string loteJson(HostSql& diario, const std::vector<Pendiente>& lote);
// The server's answer to a batch, by key: its number there and, for a sale
// of a document it already held as charged, those movements as
// "NUMBER:MACHINE" separated by blanks. One statement, one round trip.
std::map<std::string, std::pair<std::int32_t, std::string>> recibirLote(HostSql& servidor,
                                                                        const std::string& lote);
// The journal marks each movement of the answer with the server's number.
void marcarEnviados(HostSql& diario,
                    const std::map<std::string, std::pair<std::int32_t, std::string>>& respuesta);

// The journal's trail rows the server has not got yet, in order.
std::vector<Asiento> asientosSinEnviar(HostSql& diario);
// Whether the server has the row that came from the journal's row `origen`.
bool asientoRecibido(HostSql& servidor, const std::string& origen);
void marcarAsientoEnviado(HostSql& diario, std::int64_t id);

// What the till sent is kept for "DiasEnviados" days (section "Diario" of
// ZOR, 30 unless set), so that it reprints a receipt while the server is
// away; older sent movements leave the journal, children first.
void olvidarEnviados(HostSql& diario);

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

}  // namespace caja::app
