#pragma once

#include <optional>
#include <string>

#include "app/datos/Almacen.h"
#include "app/datos/Consultas.h"

namespace caja::app {

// Where the acts of one till keep their data.
//
// A till on a file keeps everything in it. A till on a server works
// local-first: every movement it saves (a sale, a refund, cash in or out)
// is committed to the till's journal, in one local transaction with a key
// made for it (hostClaves), and the act returns at once, whatever the link;
// the till's sender ships it behind the cashier.
//
// Invariant: every movement saved at a till reaches the server exactly
// once. The server keeps the key in the same transaction as the movement,
// and answers a key it already has with that movement instead of saving
// it again; the journal marks a movement sent only with the number the
// server answered.
//
// Each act has one host, the component's for the whole act: a saving act
// the journal, every other act the server, or the journal when a read finds
// the server away. The sender reaches the server itself and reads the
// journal with plain SQL.

// What an act does with the till's data, which decides where it runs.
enum class Acceso {
  Servidor,  // the shop's data: the server at a till on one
  Guarda,    // saves a movement: the journal at a till on a server
  Lee,       // the till's figures: the server, else the journal
  Consulta,  // a movement's papers, the conflicts: the server, else the journal
  Cambia,    // changes what a sale reads: the journal's copy follows the server
  Diario,    // the journal itself: what waits, the sender
  Cierre,    // the closing: the server's, and none without it
};

class PoliticaCaja {
 public:
  // Opens where an act of `acceso` runs, for the database `db` names (a
  // server's URI, or a file; the user's file when none), and makes it the
  // component's host. Only `crear` makes a file that is not there.
  // `enDiario`: the act names a movement the journal holds unsent, and so
  // runs there.
  static Almacen abrir(const std::optional<std::string>& db, Acceso acceso, bool crear = false,
                       bool enDiario = false);
  // Where an act that needs the server runs, on `servidor`, connected
  // already to the server of `uri`; made the component's host.
  static Almacen delServidor(std::shared_ptr<HostSql> servidor, const std::string& uri);
  // Makes the act's data the component's host, as `abrir` does: for a
  // program that keeps one open across acts.
  static void usar(const Almacen& almacen);
  // After the act succeeded: a movement saved in the journal starts the
  // till's sender; an act that changed what a sale reads on the server
  // refreshes the journal's copy of it.
  static void despues(Almacen& almacen, Acceso acceso);
};

// Whether the journal holds the movement it numbered `local` unsent: its
// void and its receipt are the journal's (a void goes to the server with
// its movement).
bool esperaEnDiario(std::int32_t local);

// What a document's sales charged and its refunds gave back, for a refund:
// where the act runs, or, at a till on a server, the server's (which has
// every till's sales) and what waits in the journal; away from the server
// the journal's, where a document known charged only from the server's
// copy has no amounts to check against.
CobroDocumento cobroParaDevolver(Almacen& almacen, const std::string& tipo, std::int32_t numero);

}  // namespace caja::app
