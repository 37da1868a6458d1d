#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "caja/base/Currency.h"
#include "caja/host/HostSql.h"

namespace caja::app {

// One row of the audit trail: a sensitive act at a till. Rows are numbered
// 1, 2, 3... and each holds the previous row's hash and the hash of its own
// content, so that a row changed or removed breaks the chain from there on.
struct Asiento {
  std::int64_t id = 0;
  std::string fecha;  // "yyyy-mm-dd hh:mm:ss", the till's clock
  std::int32_t maquina = 0;
  std::string cajero, aprobador, accion, detalle;
  std::optional<std::int32_t> movimiento;  // the movement it concerns, if any
  Currency monto;
  // Empty for a row recorded here; for one sent from a till's journal, the
  // hash the row had there.
  std::string origen;
  std::string hashPrevio, hash;
  // On a server: the login that sent the row and the server's time, which
  // the server records and hashes with the rest; empty in a file.
  std::string login = {}, fechaServidor = {};
};

// The hash the first row follows.
inline const std::string kHashInicial(64, '0');

// The SHA-256, in hex, of every field of the row but its own hash, each
// preceded by its length so that no two rows hash the same text.
std::string hashDe(const Asiento& a);

// Appends the act inside the caller's transaction: the trail's lock is
// taken, so that two tills never chain onto the same row, and the row is
// numbered, hashed and dated (unless it carries its date, as a row sent
// from a journal does). On a server the server's own function does it,
// which no till can bypass: a till may not write the trail itself.
void anotar(HostSql& db, Asiento a);
// The same in a transaction of its own, for what is recorded even though
// the act is then refused (a wrong PIN, a lock).
void anotarAparte(HostSql& db, const Asiento& a);

// The rows after row `despuesDe`, in order.
std::vector<Asiento> asientos(HostSql& db, std::int64_t despuesDe = 0);

// The first row that breaks the chain, or nothing when it holds.
struct Rotura {
  std::int64_t fila;
  std::string motivo;
};
struct Verificacion {
  std::int64_t filas = 0;
  std::optional<Rotura> rotura;
};
Verificacion verificar(const std::vector<Asiento>& filas);

// The rows a login wrote for a machine that is not its own, as bound on the
// server (hostLogins), one line each; a login bound to no machine (the
// administrator's) may write for any.
std::vector<std::string> filasAjenas(HostSql& db, const std::vector<Asiento>& filas);

}  // namespace caja::app
