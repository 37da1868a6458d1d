#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "caja/base/Currency.h"
#include "caja/base/Fecha.h"

namespace caja::app {

// A command line the program refuses: one Spanish line, exit status 2,
// nothing written.
struct ErrorUso : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// An option of a command: a flag when `valor` is null, else it takes a value
// (named `valor` in the help); `repetible` options may be given more than once.
struct Opcion {
  const char* nombre;
  const char* valor;
  const char* ayuda;
  bool repetible = false;
};

// A command: its words after the name (for the help), a line of help, its
// own options, and how many positional words it takes.
struct DefinicionComando {
  const char* nombre;
  const char* argumentos;
  const char* ayuda;
  std::vector<Opcion> opciones;
  std::size_t minimoPosicionales = 0;
  std::size_t maximoPosicionales = 0;
};

// The options every command takes.
extern const std::vector<Opcion> kOpcionesGenerales;

// The command line, parsed by QCommandLineParser against the commands'
// definitions: a command, its positional words and its options. Unknown
// commands and options, missing values, an option given twice, text that is
// not UTF-8 and a wrong number of words raise ErrorUso. `--help` (or -h) asks
// for help instead: `ayuda()` is true and nothing else is checked.
class LineaComandos {
 public:
  LineaComandos(int argc, char** argv, const std::vector<DefinicionComando>& comandos);

  bool ayuda() const { return ayuda_; }
  // The definition of the command; null for `caja --help` alone.
  const DefinicionComando* definicion() const { return definicion_; }
  const std::string& comando() const { return comando_; }
  const std::vector<std::string>& posicionales() const { return posicionales_; }
  bool bandera(const std::string& nombre) const { return valores_.count(nombre) > 0; }
  std::optional<std::string> valor(const std::string& nombre) const;
  std::vector<std::string> valores(const std::string& nombre) const;
  std::string valor(const std::string& nombre, const std::string& defecto) const {
    return valor(nombre).value_or(defecto);
  }

  // Typed values; each raises ErrorUso naming the option when the text is not one.
  // An integer inside [minimo, maximo].
  std::optional<std::int64_t> entero(const std::string& nombre, std::int64_t minimo,
                                     std::int64_t maximo) const;
  // An amount: digits, '.' and at most four decimals; never negative.
  std::optional<Currency> monto(const std::string& nombre) const;
  // A date as yyyy-mm-dd.
  std::optional<Fecha> fecha(const std::string& nombre) const;

 private:
  bool ayuda_ = false;
  const DefinicionComando* definicion_ = nullptr;
  std::string comando_;
  std::vector<std::string> posicionales_;
  std::map<std::string, std::vector<std::string>> valores_;
};

// The help of the program (all commands) or of one command, in Spanish.
std::string textoAyuda(const std::vector<DefinicionComando>& comandos,
                       const DefinicionComando* comando);

// "TIPO:NUMERO" (separador ':') or "CODIGO=MONTO" (separador '=') split at
// the first separator, so that the second part may hold the other one
// ("C:LI=X"); ErrorUso when either part is empty.
std::pair<std::string, std::string> parDe(const std::string& texto, const char* opcion,
                                          char separador);
// An amount as typed on the command line for `que`: ErrorUso when it is not
// one (a sign, more than four decimals, letters); an amount beyond the
// currency range is a CajaError of its own (exit 3).
Currency montoDe(const std::string& texto, const std::string& que);
// The largest session, document or movement number: the database keeps them as Longs.
inline constexpr std::int64_t kMaximo32 = std::numeric_limits<std::int32_t>::max();
// An integer inside [minimo, maximo] for `que`; ErrorUso otherwise.
std::int64_t enteroDe(const std::string& texto, const std::string& que, std::int64_t minimo,
                      std::int64_t maximo);

}  // namespace caja::app
