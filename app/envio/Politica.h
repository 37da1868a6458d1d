#pragma once

#include <string>

#include "app/linea/Comandos.h"

namespace caja::app {

// Where the commands of one till keep their data.
//
// A till on a file keeps everything in it. A till on a server works
// local-first: every movement it saves (`cobrar`, `devolver`, `entrada`,
// `salida`) is committed to the till's journal, in one local transaction
// with a key made for it (hostClaves), and the command returns at once,
// whatever the link; the till's sender ships it behind the cashier.
//
// Invariant: every movement saved at a till reaches the server exactly
// once. The server keeps the key in the same transaction as the movement,
// and answers a key it already has with that movement instead of saving
// it again; the journal marks a movement sent only with the number the
// server answered.
//
// Each process has one host, the component's for the whole run: a saving
// command the journal, every other command the server, or the journal when
// a read finds the server away. The sender reaches the server itself and
// reads the journal with plain SQL.
struct CobroDocumento;
// What a document's sales charged and its refunds gave back, for a refund:
// where the command runs, or, at a till on a server, the server's (which
// has every till's sales) and what waits in the journal; away from the
// server the journal's, where a document known charged only from the
// server's copy has no amounts to check against.
CobroDocumento cobroParaDevolver(Contexto& c, const std::string& tipo, std::int32_t numero);

class PoliticaCaja {
 public:
  // Opens the host the command works on into `c.db`.
  static void abrir(Contexto& c);
  // After the command succeeded: a movement saved in the journal starts
  // the till's sender; a command that changed what a sale reads on the
  // server refreshes the journal's copy of it.
  static void despues(Contexto& c);
};

}  // namespace caja::app
