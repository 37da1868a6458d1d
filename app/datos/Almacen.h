#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "app/datos/Tipos.h"
#include "caja/host/HostSql.h"

namespace caja::app {

// Where a till's act keeps its data: the file, the shop's server, or, at a
// till on a server, its journal (which the storage policy chose).
struct Almacen {
  std::shared_ptr<HostSql> db;
  std::string uri;           // the server's, at a till on one
  bool conServidor = false;  // the till works with a server
  bool enDiario = false;     // ...and `db` is the till's journal
  bool sinServidor = false;  // ...because the server did not answer a read

  // The till's journal: `db` when the act runs on it, else its file when
  // there is one (nullptr otherwise).
  std::shared_ptr<HostSql> diario() const;
  // The act reads or writes the shop's server itself.
  bool enServidor() const { return conServidor && !enDiario; }
  // The movement numbered `numero` where the act runs, as a message names
  // it: "Movimiento local 3" in a server till's journal.
  std::string nombreDe(std::int32_t numero) const;
};

// How the movement numbered `transId` where the act runs is named: in a
// server till's journal, by the server's number once sent, else as local.
NumeroVisible numeroVisible(Almacen& a, std::int32_t transId);
// A movement's number on the database (the server's), as the database the
// act runs on numbers it: in a server till's journal, read while the server
// is away, its local number (0 when it has none).
std::int32_t numeroDondeCorre(Almacen& a, std::int32_t numero);

}  // namespace caja::app
