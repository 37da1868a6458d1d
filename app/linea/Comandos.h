#pragma once

#include <memory>
#include <ostream>
#include <stdexcept>

#include "app/acciones/Puesto.h"
#include "app/envio/Politica.h"
#include "app/linea/LineaComandos.h"

namespace caja::app {

// Exit statuses of the program.
inline constexpr int kExito = 0;
inline constexpr int kRechazado = 1;  // the dialog, the store or the till's state refused
inline constexpr int kUso = 2;        // the command line was wrong
inline constexpr int kError = 3;      // a raised error

// What every command works with: the command line, where its data is, where
// to print, whether a screen is there, and where names and PINs come from.
struct Contexto {
  const LineaComandos& args;
  Almacen almacen;
  std::ostream& out;
  bool conPantalla;
  Firmas& firmas;

  HostSql& db() { return *almacen.db; }
  // The till the command acts at, for the actions.
  Puesto puesto();
};

// The commands, with their options and help.
const std::vector<DefinicionComando>& definicionesComandos();
// Runs the command the line names: opens its data where the storage policy
// says, runs it, and after success lets the policy follow up.
int ejecutarComando(const LineaComandos& args, bool conPantalla, Firmas& firmas);

// The till a command acts at for the trail: --maquina or this till's
// number, else the machine of --sesion or of the only open session, else 0.
std::int32_t maquinaDe(Contexto& c);
// --maquina, else this till's number; nothing when neither is given (a
// listing of every till).
std::optional<std::int32_t> maquinaElegida(const LineaComandos& args);
// The machine the command acts at: see estaMaquina.
std::int32_t estaMaquinaDe(Contexto& c);

// The movement a command names: NUMERO where it runs, or --local NUMERO,
// its number in this till's journal (one of the two). One the journal holds
// unsent is the journal's (the command runs on it); one sent already is
// named by the number the server gave it.
std::int32_t numeroNombrado(Contexto& c);
// --local names a movement of a till on a server: ErrorUso elsewhere.
void exigirServidor(Contexto& c);
// NUMERO as typed, where the command runs (see numeroDondeCorre).
std::int32_t numeroDondeCorre(Contexto& c, const std::string& numero);

// The receipt's width --ancho asks; ErrorUso for one that is not a roll's.
int columnasRecibo(const LineaComandos& args);

// The commands of the till's day and of its papers, each parsing its line,
// calling its action and printing what it did.
int sesion(Contexto& c);
int tasa(Contexto& c);
int movimientos(Contexto& c);
int anular(Contexto& c);
int cierre(Contexto& c);
int cierres(Contexto& c);
int recibo(Contexto& c);
int informe(Contexto& c);
int empresa(Contexto& c);
int comandoMaquina(Contexto& c);
int enviar(Contexto& c);
// The receipt of a movement just saved, as --imprimir asks: to --impresora
// when given, else as text after the movement. The movement stands
// whatever happens here: a failure is said on standard error.
void imprimirGuardado(Contexto& c, std::int32_t numero);

}  // namespace caja::app
