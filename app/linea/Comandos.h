#pragma once

#include <memory>
#include <ostream>
#include <stdexcept>

#include "app/linea/LineaComandos.h"
#include "caja/host/HostSql.h"

namespace caja::app {

struct MontoMedio;

// Exit statuses of the program.
inline constexpr int kExito = 0;
inline constexpr int kRechazado = 1;  // the dialog, the store or the till's state refused
inline constexpr int kUso = 2;        // the command line was wrong
inline constexpr int kError = 3;      // a raised error

// A refusal that leaves everything as it was (exit 1), with its reason.
struct Rechazo : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// What every command works with: the command line, the open database, where
// to print and whether a screen is there.
struct Contexto {
  const LineaComandos& args;
  std::shared_ptr<HostSql> db;
  std::ostream& out;
  bool conPantalla;
  bool conServidor = false;  // --db names a server
  bool enDiario = false;     // ...and `db` is the till's journal
};

// The kind of a movement, kept in its Clasificacion: sales keep it empty, as
// movements always had; refunds, cash put in and cash taken out are named.
inline constexpr const char* kDevolucion = "DEVOLUCION";
inline constexpr const char* kEntrada = "ENTRADA";
inline constexpr const char* kSalida = "SALIDA";
// What a refund or cash put in is described as when no reason is given.
inline constexpr const char* kTituloDevolucion = "Devolución";
inline constexpr const char* kTituloEntrada = "Entrada de efectivo";
// The kind as listings show it: "venta", "devolucion", "entrada" or "salida".
std::string tipoDe(const std::string& clasificacion);

// The commands, with their options and help.
const std::vector<DefinicionComando>& definicionesComandos();
// Runs the command the line names on the open database.
int ejecutarComando(Contexto& c);

// The movement a command names: NUMERO where it runs, or --local NUMERO,
// its number in this till's journal (one of the two). One the journal holds
// unsent is the journal's (the command runs on it); one sent already is
// named by the number the server gave it.
std::int32_t numeroNombrado(Contexto& c);

struct NumeroVisible;
// How the movement numbered `transId` where the command runs is named: in a
// server till's journal, by the server's number once sent, else as local.
NumeroVisible numeroVisible(Contexto& c, std::int32_t transId);

// NUMERO as typed, a movement's number on the database (the server's), as
// the database the command runs on numbers it: in a server till's journal,
// read while the server is away, its local number (0 when it has none).
std::int32_t numeroDondeCorre(Contexto& c, const std::string& numero);
// --local names a movement of a till on a server: ErrorUso elsewhere.
void exigirServidor(Contexto& c);

// How a movement's change went back, from the host's own table.
std::vector<MontoMedio> vueltoDe(Contexto& c, std::int32_t transId);

// The till's day: sessions, rate, listings, voiding and closing.
int sesion(Contexto& c);
int tasa(Contexto& c);
int movimientos(Contexto& c);
int anular(Contexto& c);
int cierre(Contexto& c);
int cierres(Contexto& c);

}  // namespace caja::app
