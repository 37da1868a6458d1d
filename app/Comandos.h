#pragma once

#include <memory>
#include <ostream>

#include "app/LineaComandos.h"
#include "host/HostSql.h"

namespace caja::app {

// Exit statuses of the program.
inline constexpr int kExito = 0;
inline constexpr int kRechazado = 1;  // the dialog or the store refused
inline constexpr int kUso = 2;        // the command line was wrong
inline constexpr int kError = 3;      // a raised error

// What every command works with: the command line, the open database, where
// to print and whether a screen is there.
struct Contexto {
  const LineaComandos& args;
  std::shared_ptr<HostSql> db;
  std::ostream& out;
  bool conPantalla;
};

int init(Contexto& c);
int cobrar(Contexto& c);
int saldo(Contexto& c);
int movimiento(Contexto& c);
int medios(Contexto& c);
int aparcar(Contexto& c);
int retomar(Contexto& c);
int revertir(Contexto& c);
int supervisor(Contexto& c);

}  // namespace caja::app
