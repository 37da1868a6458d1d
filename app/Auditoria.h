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
  std::string hashPrevio, hash;
};

// The hash the first row follows.
inline const std::string kHashInicial(64, '0');

// The SHA-256, in hex, of every field of the row but its own hash, each
// preceded by its length so that no two rows hash the same text.
std::string hashDe(const Asiento& a);

// Appends the act inside the caller's transaction: the trail's lock is
// taken, so that two tills never chain onto the same row, and the row is
// numbered, dated and hashed here.
void anotar(HostSql& db, Asiento a);
// The same in a transaction of its own, for what is recorded even though
// the act is then refused (a wrong PIN, a lock).
void anotarAparte(HostSql& db, const Asiento& a);

std::vector<Asiento> asientos(HostSql& db);

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

}  // namespace caja::app
