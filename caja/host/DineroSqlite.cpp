#include "caja/host/DineroSqlite.h"

#include <cctype>
#include <map>
#include <optional>
#include <set>

#include "caja/base/Texto.h"
#include "caja/host/DialectoSql.h"
#include "caja/host/HostSql.h"

namespace caja {

namespace {

constexpr const char* kFuente = "SqliteFactoria";
constexpr auto npos = std::string_view::npos;

[[noreturn]] void rehusar(const std::string& motivo) {
  throw CajaError(kErrorBaseDatos, kFuente, motivo);
}

// A statement in a shape the reader does not follow; caught at the top.
struct NoSeEntiende {};

enum class Tok {
  Nombre,
  NombreCitado,
  Numero,
  Cadena,
  Marca,
  Operador,
  Abre,
  Cierra,
  Coma,
  Punto,
  Fin
};

struct Token {
  Tok tipo;
  std::string texto;
  int marca = -1;  // a placeholder's index among the statement's values
};

bool inicioNombre(unsigned char c) {
  return std::isalpha(c) || c == '_' || c >= 0x80;
}
bool parteNombre(unsigned char c) {
  return std::isalnum(c) || c == '_' || c == '$' || c >= 0x80;
}

std::size_t finNumero(std::string_view s, std::size_t i) {
  auto digitos = [&] {
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])))
      ++i;
  };
  digitos();
  if (i < s.size() && s[i] == '.') {
    ++i;
    digitos();
  }
  if (i + 1 < s.size() && (s[i] == 'e' || s[i] == 'E')) {
    ++i;
    if (s[i] == '+' || s[i] == '-')
      ++i;
    digitos();
  }
  while (i < s.size() && parteNombre(static_cast<unsigned char>(s[i])))  // 0x1F, 12abc
    ++i;
  return i;
}

std::vector<Token> leerTokens(std::string_view s) {
  std::vector<Token> r;
  NumeracionMarcas marcas(kFuente);
  static const std::string_view kOperadoresDobles[] = {
      "||", "<=", ">=", "<>", "!=", "==", "<<", ">>", "->"};
  std::size_t i = 0;
  while (i < s.size()) {
    const auto c = static_cast<unsigned char>(s[i]);
    const std::size_t desde = i;
    Tok tipo = Tok::Operador;
    if (std::isspace(c)) {
      ++i;
      continue;
    } else if (const std::size_t n = s.substr(i, 2) == "::" ? 0 : largoIntocable(s, i)) {
      // The dialect's scanner: literals, quoted names and comments end
      // where it ends them.
      i += n;
      if (c == '-' || c == '/')
        continue;
      tipo = c == '\'' ? Tok::Cadena : Tok::NombreCitado;
    } else if (std::isdigit(c) || (c == '.' && i + 1 < s.size() &&
                                   std::isdigit(static_cast<unsigned char>(s[i + 1])))) {
      tipo = Tok::Numero;
      i = finNumero(s, i);
    } else if (const std::size_t largo = largoMarca(s, i)) {
      tipo = Tok::Marca;
      i += largo;
    } else if (inicioNombre(c)) {
      tipo = Tok::Nombre;
      while (i < s.size() && parteNombre(static_cast<unsigned char>(s[i])))
        ++i;
    } else {
      tipo = c == '('   ? Tok::Abre
             : c == ')' ? Tok::Cierra
             : c == ',' ? Tok::Coma
             : c == '.' ? Tok::Punto
                        : Tok::Operador;
      i += s.substr(i, 3) == "->>" ? 3 : 1;
      for (const std::string_view doble : kOperadoresDobles)
        if (i == desde + 1 && s.substr(desde, 2) == doble)
          i = desde + 2;
    }
    Token t{tipo, std::string(s.substr(desde, i - desde))};
    if (tipo == Tok::Marca)
      t.marca = marcas.numero(t.texto) - 1;
    r.push_back(std::move(t));
  }
  r.push_back({Tok::Fin, ""});
  return r;
}

// The deepest nesting of parentheses, subqueries and unary operators read.
// SQLite's own parser gives up earlier ("parser stack overflow"), so nothing
// it runs is refused here; the bound keeps a hostile statement from
// exhausting the stack.
constexpr int kMaximaProfundidad = 100;

// Powers of ten kept exactly past the ten-thousandths by a product with a
// literal: 10^18 is the largest an int64 holds.
constexpr int kMaximaEscala = 18;

std::string potencia10(int n) {
  return "1" + std::string(static_cast<std::size_t>(n), '0');
}

// A literal with a decimal point or none, as exact digits: "-0.015" is
// negative, digits "15", three decimals. nullopt for any other number
// (1e3, 0x1F) or text.
struct Literal {
  bool negativo = false;
  std::string digitos;  // without leading zeros, at least one digit
  int decimales = 0;
};

std::optional<Literal> leerLiteral(std::string_view texto) {
  Literal l;
  l.negativo = !texto.empty() && texto.front() == '-';
  if (l.negativo || (!texto.empty() && texto.front() == '+'))
    texto.remove_prefix(1);
  const std::size_t punto = texto.find('.');
  const std::string_view entera = texto.substr(0, punto);
  const std::string_view fraccion = punto == npos ? std::string_view{} : texto.substr(punto + 1);
  const auto soloDigitos = [](std::string_view d) {
    return d.find_first_not_of("0123456789") == npos;
  };
  if (entera.size() + fraccion.size() == 0 || !soloDigitos(entera) || !soloDigitos(fraccion))
    return std::nullopt;
  l.digitos = std::string(entera) + std::string(fraccion);
  l.digitos.erase(0, std::min(l.digitos.find_first_not_of('0'), l.digitos.size() - 1));
  l.decimales = static_cast<int>(fraccion.size());
  l.negativo = l.negativo && l.digitos != "0";
  return l;
}

// A decimal literal as an exact fraction mantissa / 10^decimales.
struct Exacto {
  __int128 mantisa = 0;
  int decimales = 0;
};

std::optional<Exacto> exactoDe(std::string_view texto) {
  const std::optional<Literal> l = leerLiteral(texto);
  if (!l || l->digitos.size() > 18)
    return std::nullopt;
  Exacto e{std::stoll(l->digitos), l->decimales};
  if (l->negativo)
    e.mantisa = -e.mantisa;
  return e;
}

std::string textoDeExacto(Exacto e) {
  const bool negativo = e.mantisa < 0;
  std::string digitos;
  for (__int128 m = negativo ? -e.mantisa : e.mantisa; m > 0 || digitos.empty(); m /= 10)
    digitos.insert(digitos.begin(), static_cast<char>('0' + static_cast<int>(m % 10)));
  const auto decimales = static_cast<std::size_t>(e.decimales);
  if (digitos.size() <= decimales)
    digitos.insert(0, decimales + 1 - digitos.size(), '0');
  if (decimales > 0)
    digitos.insert(digitos.size() - decimales, 1, '.');
  return (negativo ? "-" : "") + digitos;
}

// Arithmetic of two literals with a decimal point done exactly, as the
// server's numeric does it, so that 198.13035 * 3 or 25.6213 / 2 meets an
// amount as the exact literal it is. nullopt where it cannot be (a
// quotient without an end, more digits than 36), and for two integers,
// whose arithmetic SQLite and the server already share.
std::optional<std::string> plegar(const std::string& a, const std::string& op,
                                  const std::string& b) {
  std::optional<Exacto> x = exactoDe(a), y = exactoDe(b);
  if (!x || !y || (x->decimales == 0 && y->decimales == 0))
    return std::nullopt;
  const auto alinear = [&] {
    for (; x->decimales < y->decimales; ++x->decimales)
      x->mantisa *= 10;
    for (; y->decimales < x->decimales; ++y->decimales)
      y->mantisa *= 10;
  };
  if (op == "+" || op == "-") {
    alinear();
    return textoDeExacto(
        {op == "+" ? x->mantisa + y->mantisa : x->mantisa - y->mantisa, x->decimales});
  }
  if (op == "*")
    return textoDeExacto({x->mantisa * y->mantisa, x->decimales + y->decimales});
  if (op != "/" || y->mantisa == 0)
    return std::nullopt;
  alinear();
  Exacto q{0, 0};
  __int128 resto = x->mantisa;
  for (; q.decimales <= 18; ++q.decimales, resto *= 10) {
    if (resto % y->mantisa == 0) {
      q.mantisa = q.mantisa * 10 + resto / y->mantisa;
      return textoDeExacto({q.mantisa, q.decimales});
    }
    q.mantisa = q.mantisa * 10 + resto / y->mantisa;
    resto %= y->mantisa;
  }
  return std::nullopt;
}

bool cabeEnEntero64(const std::string& digitos) {
  const std::string maximo = std::to_string(kMaximoDineroDiezmilesimas);
  return digitos.size() < maximo.size() || (digitos.size() == maximo.size() && digitos <= maximo);
}

// A literal amount in units of 10^-(4 + escala), exactly: "3.25" is 32500
// with escala 0, "0.00015" is 15 with escala 1.
std::pair<std::string, int> diezmilesimasDeLiteral(std::string_view literal,
                                                   std::string_view escrito) {
  const std::optional<Literal> l = leerLiteral(literal);
  if (!l)
    rehusar("Monto literal no válido en la sentencia: " + std::string(escrito) +
            " (escriba el monto con punto decimal, o páselo como parámetro)");
  const int escala = std::max(0, l->decimales - 4);
  std::string digitos =
      l->digitos + std::string(static_cast<std::size_t>(4 - l->decimales + escala), '0');
  digitos.erase(0, std::min(digitos.find_first_not_of('0'), digitos.size() - 1));
  if (!cabeEnEntero64(digitos)) {
    if (escala == 0)
      throw errorFueraDeRango(kFuente, {});
    rehusar("Monto literal con demasiados dígitos en la sentencia: " + std::string(escrito));
  }
  return {(l->negativo ? "-" : "") + digitos, escala};
}

// What an expression is, as far as amounts go. A literal, a placeholder or
// NULL takes the side of what it meets.
enum class Clase { Dinero, Simple, Numero, Texto, Marca, Nulo };

// How a value of a column or an expression is held, as far as amounts go.
struct Monto {
  bool dinero = false;
  bool real = false;  // may fall between units (a quotient, an average): REAL in SQLite
  int escala = 0;     // in units of 10^-(4 + escala): a product by a literal kept exact
};

struct Columna {
  std::string nombre;  // lower case
  Monto monto;
};

struct Expr {
  explicit Expr(std::string texto, Clase c = Clase::Simple, int m = -1)
      : sql(std::move(texto)), clase(c), marca(m) {}
  std::string sql;
  Clase clase;
  int marca;                   // the placeholder's index, for Clase::Marca
  bool real = false;           // an amount that may fall between units
  int escala = 0;              // an amount in units of 10^-(4 + escala)
  std::string columna;         // the column's name when the expression is one
  std::string cotejo;          // " COLLATE X" after a literal, kept when it becomes an amount
  std::vector<Expr> fila;      // the elements of a row value
  std::vector<Expr> factores;  // of a literal times a placeholder, the two
  std::vector<Columna> columnasFila;  // the columns of a subquery that gives a row
  // Of an average of exact amounts, what is averaged and its scale: a
  // product by a number then goes into the average, exact until then.
  std::string promedioDe;
  int promedioEscala = 0;
  bool dinero() const { return clase == Clase::Dinero; }
};

// The columns a SELECT gives; a `*` over a table of unknown shape leaves a
// gap whose width only the prepared statement knows.
struct Resultado {
  std::vector<Columna> columnas;
  int estrellaIncierta = -1;
  bool variasInciertas = false;
};

struct Fuente {
  std::string alias;                             // lower case
  std::optional<std::vector<Columna>> columnas;  // nullopt: not known
};

struct Ambito {
  std::vector<Fuente> fuentes;
  std::map<std::string, Monto> alias;  // the result list's aliases, by what they alias
};

const std::set<std::string>& nombresDinero() {
  static const std::set<std::string> nombres = [] {
    std::set<std::string> r;
    for (const Tabla& t : tablasEsquema())
      for (const auto& c : t.columnas)
        if (c.tipo == TipoColumna::Dinero)
          r.insert(lowerAscii(c.nombre));
    return r;
  }();
  return nombres;
}

// The columns of a table of the schema, or of its decimal view, whose
// amounts are text already.
std::optional<std::vector<Columna>> columnasDeTabla(std::string_view nombre) {
  const bool vista = nombre.size() > 2 && equalsIgnoreCase(nombre.substr(0, 2), "v_");
  for (const Tabla& t : tablasEsquema()) {
    if (!equalsIgnoreCase(t.nombre, vista ? nombre.substr(2) : nombre))
      continue;
    std::vector<Columna> r;
    for (const auto& c : t.columnas)
      r.push_back({lowerAscii(c.nombre), Monto{!vista && c.tipo == TipoColumna::Dinero}});
    return r;
  }
  return std::nullopt;
}

std::string sinComillas(const std::string& nombre) {
  if (nombre.size() >= 2 && (nombre[0] == '"' || nombre[0] == '`' || nombre[0] == '['))
    return nombre.substr(1, nombre.size() - 2);
  return nombre;
}

// Words after which an expression in a list has no alias.
bool esPalabraDeClausula(std::string_view p) {
  static const std::set<std::string> kPalabras = {
      "from",      "where",   "group",   "having", "order", "limit",   "union",     "except",
      "intersect", "window",  "on",      "using",  "join",  "inner",   "left",      "right",
      "full",      "cross",   "natural", "outer",  "set",   "values",  "returning", "and",
      "or",        "not",     "as",      "offset", "end",   "then",    "when",      "else",
      "do",        "indexed", "asc",     "desc",   "nulls", "collate", "filter",    "over"};
  return kPalabras.count(lowerAscii(p)) > 0;
}

class Lector {
 public:
  explicit Lector(std::vector<Token> tokens) : t_(std::move(tokens)) {}

  SentenciaTipada leer();
  bool mencionaDinero() const;

 private:
  // Reading tokens.
  const Token& mira(std::size_t k = 0) const { return t_[std::min(p_ + k, t_.size() - 1)]; }
  bool es(std::string_view palabra, std::size_t k = 0) const {
    return mira(k).tipo == Tok::Nombre && equalsIgnoreCase(mira(k).texto, palabra);
  }
  bool esOp(std::string_view op) const {
    return mira().tipo == Tok::Operador && mira().texto == op;
  }
  std::string toma() {
    if (mira().tipo == Tok::Fin)
      throw NoSeEntiende{};
    return t_[p_++].texto;
  }
  std::string pide(std::string_view palabra) {
    if (!es(palabra))
      throw NoSeEntiende{};
    return toma();
  }
  std::string pide(Tok tipo) {
    if (mira().tipo != tipo)
      throw NoSeEntiende{};
    return toma();
  }
  bool tomaSi(std::string_view palabra, std::string& sql) {
    if (!es(palabra))
      return false;
    sql += ' ' + toma();
    return true;
  }
  std::string balanceado();
  std::optional<std::size_t> posicionDeFrom() const;

  // Statements and clauses.
  std::string leerWith();
  std::pair<std::string, Resultado> leerSelect(const std::vector<bool>& esperado);
  std::pair<std::string, Resultado> leerNucleo(const std::vector<bool>& esperado, bool compuesta);
  bool esCompuesta() const;
  std::string leerValues(const std::vector<bool>& esperado, bool compuesta, Resultado& r);
  std::string leerListaResultado(const std::vector<bool>& esperado, bool compuesta, Resultado& r);
  Expr subconsulta(const std::vector<bool>& esperado);
  std::string leerFrom();
  std::string leerFuente();
  std::string leerInsert();
  std::string leerUpdate();
  std::string leerDelete();
  std::string leerAsignaciones(const std::optional<std::vector<Columna>>& destino);
  std::string leerReturning(Resultado& r);
  std::string leerTablaDestino(std::optional<std::vector<Columna>>& columnas);
  std::string alias();

  // Expressions, from the loosest operator to the tightest.
  Expr expr();
  Expr logica(std::string_view palabra, Expr (Lector::*lado)());
  Expr disyuncion();
  Expr conjuncion();
  Expr negacion();
  Expr igualdad();
  Expr comparacion();
  Expr bits();
  Expr suma();
  Expr producto();
  Expr concatenacion();
  Expr unaria();
  Expr primaria();
  Expr nombre();
  Expr funcion(const std::string& nombre);
  Expr caso();
  Expr conversion();
  Expr en(Expr izquierda, const std::string& op);
  Expr operando(const Expr& izquierda, Expr (Lector::*siguiente)());
  Expr multiplicar(Expr a, Expr b, bool marcaEsMonto = false);
  Expr dividir(Expr a, const std::string& op, Expr b);
  std::vector<Expr> argumentos(std::string& distinto);
  std::string lista();

  // Amounts.
  Expr aDinero(Expr e);
  Expr aColumnaDinero(Expr e);
  Expr valorParaColumna(Expr e, bool dinero);
  void comoMontos(const std::vector<Expr*>& es);
  void emparejar(Expr& a, Expr& b);
  Monto montoDe(const std::string& calificador, const std::string& columna) const;

  // One level deeper for as long as it lives; past kMaximaProfundidad the
  // statement is refused.
  class Nivel {
   public:
    explicit Nivel(Lector& l);
    ~Nivel() { --l_.profundidad_; }
    Nivel(const Nivel&) = delete;
    Nivel& operator=(const Nivel&) = delete;

   private:
    Lector& l_;
  };

  std::vector<Token> t_;
  std::size_t p_ = 0;
  int profundidad_ = 0;
  std::vector<bool> marcas_;
  std::vector<Ambito> ambitos_;
  std::map<std::string, std::vector<Columna>> ctes_;
};

Expr simple(std::string sql) {
  return Expr{std::move(sql), Clase::Simple};
}

Expr dinero(std::string sql, bool real = false, int escala = 0) {
  Expr e{std::move(sql), Clase::Dinero};
  e.real = real;
  e.escala = escala;
  return e;
}

bool coercible(const Expr& e) {
  return e.clase == Clase::Numero || e.clase == Clase::Texto || e.clase == Clase::Marca ||
         e.clase == Clase::Nulo;
}

bool algunoDinero(const std::vector<Expr>& es) {
  for (const Expr& e : es)
    if (e.dinero())
      return true;
  return false;
}

std::string unir(const std::vector<Expr>& es) {
  std::string r;
  for (const Expr& e : es)
    r += (r.empty() ? "" : ", ") + e.sql;
  return r;
}

// The server's average of `x`, exact amounts, times factor / 10^decimales,
// in whole ten-thousandths (caja_promedio).
Expr promedio(const std::string& x, int escala, const std::string& factor, int decimales) {
  Expr r = dinero("caja_promedio(" + x + ", " + factor + ", " + std::to_string(decimales) + ", " +
                  std::to_string(escala) + ")");
  if (factor == "1" && decimales == 0) {
    r.promedioDe = x;
    r.promedioEscala = escala;
  }
  return r;
}

Monto montoDeExpr(const Expr& e) {
  return {e.dinero(), e.real, e.escala};
}

// The same amount in finer units: exact, by a power of ten.
void aEscala(Expr& e, int escala) {
  if (e.escala == escala || e.clase == Clase::Nulo)
    return;
  e.sql = "((" + e.sql + ") * " + potencia10(escala - e.escala) + ")";
  e.escala = escala;
}

// An amount in whole ten-thousandths, halves away from zero as the server
// rounds a numeric into four decimals.
Expr enDiezmilesimas(Expr e) {
  if (e.escala == 0 && !e.real)
    return e;
  return dinero("caja_entero(" + e.sql + ", " + std::to_string(e.escala) + ")");
}

Lector::Nivel::Nivel(Lector& l) : l_(l) {
  if (++l_.profundidad_ > kMaximaProfundidad) {
    --l_.profundidad_;
    rehusar("La sentencia anida más de " + std::to_string(kMaximaProfundidad) +
            " niveles de paréntesis, subconsultas u operadores");
  }
}

Expr Lector::aDinero(Expr e) {
  switch (e.clase) {
    case Clase::Dinero:
      return e;
    case Clase::Nulo:
      return dinero(e.sql);
    case Clase::Numero:
    case Clase::Texto: {
      const std::string_view escrito =
          std::string_view(e.sql).substr(0, e.sql.size() - e.cotejo.size());
      const std::string texto = e.clase == Clase::Numero
                                    ? std::string(escrito)
                                    : replaceAll(escrito.substr(1, escrito.size() - 2), "''", "'");
      auto [digitos, escala] = diezmilesimasDeLiteral(texto, escrito);
      return dinero(std::move(digitos) + e.cotejo, false, escala);
    }
    case Clase::Marca:
      if (marcas_.size() <= static_cast<std::size_t>(e.marca))
        marcas_.resize(static_cast<std::size_t>(e.marca) + 1);
      marcas_[static_cast<std::size_t>(e.marca)] = true;
      return dinero(e.sql);
    case Clase::Simple:
      break;
  }
  if (!e.factores.empty())
    return multiplicar(std::move(e.factores[0]), std::move(e.factores[1]), true);
  return dinero("((" + e.sql + ") * 10000)", true);
}

// A value about to be stored in a money column: whole ten-thousandths, the
// way the server rounds a value into NUMERIC(19, 4).
Expr Lector::aColumnaDinero(Expr e) {
  return enDiezmilesimas(aDinero(std::move(e)));
}

Expr Lector::valorParaColumna(Expr e, bool esDinero) {
  if (esDinero)
    return aColumnaDinero(std::move(e));
  if (e.dinero())
    rehusar("Un monto no puede guardarse en una columna que no es de montos: " + e.sql);
  return e;
}

// Values compared, chosen among or added: when any is an amount, all are
// amounts, in the finest units any of them has.
void Lector::comoMontos(const std::vector<Expr*>& es) {
  bool alguno = false;
  for (const Expr* e : es)
    alguno = alguno || e->dinero();
  if (!alguno)
    return;
  int escala = 0;
  for (Expr* e : es) {
    *e = aDinero(std::move(*e));
    escala = std::max(escala, e->escala);
  }
  for (Expr* e : es)
    aEscala(*e, escala);
}

// The two sides of a comparison: element by element when both are rows.
void Lector::emparejar(Expr& a, Expr& b) {
  if (!a.fila.empty() && !b.columnasFila.empty()) {
    for (std::size_t i = 0; i < a.fila.size() && i < b.columnasFila.size(); ++i) {
      Expr& e = a.fila[i];
      const Monto m = b.columnasFila[i].monto;
      if (e.dinero() && !m.dinero)
        rehusar("Una fila con montos se compara con una subconsulta que no da montos: " + b.sql);
      if (m.dinero) {
        e = aDinero(std::move(e));
        if (e.escala > m.escala)
          rehusar("Una fila se compara con montos de menos decimales que los suyos: " + b.sql);
        aEscala(e, m.escala);
      }
    }
    a.sql = "(" + unir(a.fila) + ")";
    return;
  }
  if (!a.fila.empty() && a.fila.size() == b.fila.size()) {
    for (std::size_t i = 0; i < a.fila.size(); ++i)
      emparejar(a.fila[i], b.fila[i]);
    a.sql = "(" + unir(a.fila) + ")";
    b.sql = "(" + unir(b.fila) + ")";
    return;
  }
  comoMontos({&a, &b});
}

// A name resolves as SQLite resolves it: a column of the innermost source
// that has it, else an alias of the result list, else the same in the
// enclosing query; a source whose columns are unknown leaves the schema's
// money columns as the last guess.
Monto Lector::montoDe(const std::string& calificador, const std::string& columna) const {
  const std::string c = lowerAscii(sinComillas(columna));
  const std::string q = lowerAscii(sinComillas(calificador));
  for (auto a = ambitos_.rbegin(); a != ambitos_.rend(); ++a) {
    for (const Fuente& f : a->fuentes) {
      if ((!q.empty() && f.alias != q) || !f.columnas)
        continue;
      for (const Columna& col : *f.columnas)
        if (col.nombre == c)
          return col.monto;
    }
    if (const auto alias = a->alias.find(c); q.empty() && alias != a->alias.end())
      return alias->second;
  }
  return Monto{nombresDinero().count(c) > 0};
}

bool Lector::mencionaDinero() const {
  for (const Token& t : t_)
    if ((t.tipo == Tok::Nombre || t.tipo == Tok::NombreCitado) &&
        nombresDinero().count(lowerAscii(sinComillas(t.texto))))
      return true;
  return false;
}

SentenciaTipada Lector::leer() {
  SentenciaTipada s;
  std::string sql;
  Resultado r;
  ambitos_.emplace_back();
  if (es("WITH"))
    sql = leerWith();
  if (es("SELECT") || es("VALUES")) {
    auto [texto, resultado] = leerSelect({});
    sql += texto;
    r = std::move(resultado);
  } else if (es("INSERT") || es("REPLACE")) {
    sql += leerInsert();
  } else if (es("UPDATE")) {
    sql += leerUpdate();
  } else if (es("DELETE")) {
    sql += leerDelete();
  } else {
    throw NoSeEntiende{};
  }
  if (es("RETURNING"))
    sql += leerReturning(r);
  while (esOp(";"))
    toma();
  if (mira().tipo != Tok::Fin)
    throw NoSeEntiende{};
  if (r.variasInciertas)
    for (std::size_t i = static_cast<std::size_t>(r.estrellaIncierta); i < r.columnas.size(); ++i)
      if (r.columnas[i].monto.dinero)
        rehusar("No se puede saber qué columnas son montos: use una sola * sobre tablas propias");
  s.sql = std::move(sql);
  for (const Columna& c : r.columnas)
    s.escalas.push_back(c.monto.dinero ? c.monto.escala : -1);
  s.estrellaIncierta = r.estrellaIncierta;
  s.marcasDinero = std::move(marcas_);
  return s;
}

// Tokens up to the parenthesis that closes the one just taken, as they are.
std::string Lector::balanceado() {
  std::string r;
  for (int nivel = 1;;) {
    if (mira().tipo == Tok::Abre)
      ++nivel;
    if (mira().tipo == Tok::Cierra && --nivel == 0)
      return r + toma();
    r += toma() + ' ';
  }
}

// Where the FROM of the SELECT that starts here is, if it has one: its
// sources must be known before the result list is read.
std::optional<std::size_t> Lector::posicionDeFrom() const {
  int nivel = 0;
  for (std::size_t i = p_; i < t_.size(); ++i) {
    const Token& t = t_[i];
    if (t.tipo == Tok::Fin || (t.tipo == Tok::Cierra && --nivel < 0))
      return std::nullopt;
    if (t.tipo == Tok::Abre)
      ++nivel;
    if (nivel > 0 || t.tipo != Tok::Nombre)
      continue;
    const std::string p = lowerAscii(t.texto);
    if (p == "from")
      return i;
    if (p == "where" || p == "group" || p == "having" || p == "order" || p == "limit" ||
        p == "union" || p == "except" || p == "intersect" || p == "window")
      return std::nullopt;
  }
  return std::nullopt;
}

std::string Lector::leerWith() {
  std::string sql = toma();
  tomaSi("RECURSIVE", sql);
  do {
    if (mira().tipo == Tok::Coma)
      sql += toma();
    const std::string nombre = toma();
    sql += ' ' + nombre;
    std::vector<std::string> renombres;
    if (mira().tipo == Tok::Abre) {
      sql += toma();
      while (mira().tipo != Tok::Cierra) {
        if (mira().tipo == Tok::Coma)
          sql += toma();
        renombres.push_back(lowerAscii(sinComillas(toma())));
        sql += renombres.back();
      }
      sql += toma();
    }
    sql += ' ' + pide("AS");
    tomaSi("NOT", sql);
    tomaSi("MATERIALIZED", sql);
    sql += ' ' + pide(Tok::Abre);
    auto [texto, r] = leerSelect({});
    sql += texto + pide(Tok::Cierra);
    for (std::size_t i = 0; i < renombres.size() && i < r.columnas.size(); ++i)
      r.columnas[i].nombre = renombres[i];
    ctes_[lowerAscii(sinComillas(nombre))] = r.columnas;
  } while (mira().tipo == Tok::Coma);
  return sql + ' ';
}

// Whether the SELECT that starts here has more than one branch (UNION,
// EXCEPT, INTERSECT) before it ends.
bool Lector::esCompuesta() const {
  int nivel = 0;
  for (std::size_t i = p_; i < t_.size(); ++i) {
    const Token& t = t_[i];
    if (t.tipo == Tok::Fin || (t.tipo == Tok::Cierra && --nivel < 0))
      return false;
    if (t.tipo == Tok::Abre)
      ++nivel;
    if (nivel == 0 && t.tipo == Tok::Nombre &&
        (equalsIgnoreCase(t.texto, "union") || equalsIgnoreCase(t.texto, "except") ||
         equalsIgnoreCase(t.texto, "intersect")))
      return true;
    if (nivel == 0 && t.tipo == Tok::Operador && t.texto == ";")
      return false;
  }
  return false;
}

// A compound SELECT: its branches must agree on which columns are amounts,
// so a literal in one branch is put in ten-thousandths when another branch
// gives an amount there; the branches are read again once that is known.
// Their amounts are whole ten-thousandths, so that every branch has the same
// units. The ORDER BY sees the last branch's sources and aliases, as SQLite
// resolves it.
std::pair<std::string, Resultado> Lector::leerSelect(const std::vector<bool>& esperado) {
  const Nivel nivel(*this);
  const std::size_t inicio = p_;
  const std::vector<bool> marcas = marcas_;
  const bool compuesta = esCompuesta();
  std::vector<bool> requerido = esperado;
  for (int vuelta = 0;; ++vuelta) {
    auto nucleo = leerNucleo(requerido, compuesta);
    std::string& sql = nucleo.first;
    Resultado& r = nucleo.second;
    bool desparejo = false;
    while (es("UNION") || es("EXCEPT") || es("INTERSECT")) {
      ambitos_.pop_back();
      sql += ' ' + toma();
      tomaSi("ALL", sql);
      auto [otroSql, otro] = leerNucleo(requerido, compuesta);
      sql += ' ' + otroSql;
      for (std::size_t i = 0; i < r.columnas.size() && i < otro.columnas.size(); ++i) {
        Monto& m = r.columnas[i].monto;
        desparejo = desparejo || m.dinero != otro.columnas[i].monto.dinero;
        m.dinero = m.dinero || otro.columnas[i].monto.dinero;
      }
    }
    if (desparejo && vuelta == 0) {
      ambitos_.pop_back();
      requerido.resize(r.columnas.size());
      for (std::size_t i = 0; i < r.columnas.size(); ++i)
        requerido[i] = requerido[i] || r.columnas[i].monto.dinero;
      p_ = inicio;
      marcas_ = marcas;
      continue;
    }
    if (compuesta)
      for (const Columna& c : r.columnas)
        ambitos_.back().alias[c.nombre] = c.monto;
    if (es("ORDER")) {
      sql += ' ' + toma();
      sql += ' ' + pide("BY");
      sql += ' ' + lista();
    }
    if (tomaSi("LIMIT", sql)) {
      sql += ' ' + expr().sql;
      if (mira().tipo == Tok::Coma || es("OFFSET")) {
        sql += ' ' + toma();
        sql += ' ' + expr().sql;
      }
    }
    ambitos_.pop_back();
    return nucleo;
  }
}

// A comma-separated list of expressions with their ordering words, as
// ORDER BY, GROUP BY and PARTITION BY take them.
std::string Lector::lista() {
  std::string sql;
  do {
    if (mira().tipo == Tok::Coma)
      sql += toma() + ' ';
    sql += expr().sql;
    while (es("ASC") || es("DESC") || es("NULLS") || es("FIRST") || es("LAST"))
      sql += ' ' + toma();
  } while (mira().tipo == Tok::Coma);
  return sql;
}

// One branch of a SELECT; its scope stays open for the caller, which reads
// the ORDER BY in it.
std::pair<std::string, Resultado> Lector::leerNucleo(const std::vector<bool>& esperado,
                                                     bool compuesta) {
  Resultado r;
  ambitos_.emplace_back();
  if (es("VALUES"))
    return {leerValues(esperado, compuesta, r), r};
  std::string sql = pide("SELECT");
  if (!tomaSi("DISTINCT", sql))
    tomaSi("ALL", sql);
  std::string from;
  std::size_t finFrom = 0;
  if (const auto posicion = posicionDeFrom()) {
    const std::size_t lista = p_;
    p_ = *posicion;
    from = ' ' + toma();
    from += ' ' + leerFrom();
    finFrom = p_;
    p_ = lista;
  }
  sql += ' ' + leerListaResultado(esperado, compuesta, r);
  if (finFrom) {
    if (!es("FROM"))
      throw NoSeEntiende{};
    p_ = finFrom;
    sql += from;
  }
  if (tomaSi("WHERE", sql))
    sql += ' ' + expr().sql;
  if (es("GROUP")) {
    sql += ' ' + toma();
    sql += ' ' + pide("BY");
    sql += ' ' + lista();
  }
  if (tomaSi("HAVING", sql))
    sql += ' ' + expr().sql;
  if (tomaSi("WINDOW", sql)) {
    do {
      if (mira().tipo == Tok::Coma)
        sql += toma();
      sql += ' ' + toma();
      sql += ' ' + pide("AS");
      sql += ' ' + pide(Tok::Abre);
      sql += balanceado();
    } while (mira().tipo == Tok::Coma);
  }
  return {sql, r};
}

std::string Lector::leerValues(const std::vector<bool>& esperado, bool compuesta, Resultado& r) {
  std::string sql = toma();
  do {
    if (mira().tipo == Tok::Coma)
      sql += toma();
    sql += ' ' + pide(Tok::Abre);
    std::size_t i = 0;
    do {
      if (mira().tipo == Tok::Coma)
        sql += toma() + ' ';
      Expr e = expr();
      if (i < esperado.size() && esperado[i])
        e = aColumnaDinero(std::move(e));
      else if (compuesta && e.dinero())
        e = enDiezmilesimas(std::move(e));
      if (r.columnas.size() <= i)
        r.columnas.push_back({"column" + std::to_string(i + 1), {}});
      Monto& m = r.columnas[i].monto;
      if (e.dinero() && !m.dinero)
        m = montoDeExpr(e);
      sql += e.sql;
      ++i;
    } while (mira().tipo == Tok::Coma);
    sql += pide(Tok::Cierra);
  } while (mira().tipo == Tok::Coma);
  return sql;
}

std::string Lector::alias() {
  if (es("AS")) {
    toma();
    return toma();
  }
  if ((mira().tipo == Tok::Nombre && !esPalabraDeClausula(mira().texto)) ||
      mira().tipo == Tok::NombreCitado || mira().tipo == Tok::Cadena)
    return toma();
  return {};
}

// The result list, with each `*` expanded over the known sources so that
// the amounts after it keep their places. The scope is found by its depth,
// not held: a subquery in the list adds scopes and may move them.
std::string Lector::leerListaResultado(const std::vector<bool>& esperado, bool compuesta,
                                       Resultado& r) {
  std::string sql;
  const std::size_t nivel = ambitos_.size() - 1;
  const auto expandir = [&](const Fuente& f) {
    if (f.columnas) {
      r.columnas.insert(r.columnas.end(), f.columnas->begin(), f.columnas->end());
    } else if (r.estrellaIncierta < 0) {
      r.estrellaIncierta = static_cast<int>(r.columnas.size());
    } else {
      r.variasInciertas = true;
    }
  };
  do {
    if (mira().tipo == Tok::Coma)
      sql += toma() + ' ';
    if (esOp("*")) {
      sql += toma();
      for (const Fuente& f : ambitos_[nivel].fuentes)
        expandir(f);
      continue;
    }
    if (mira(1).tipo == Tok::Punto && mira(2).tipo == Tok::Operador && mira(2).texto == "*") {
      const std::string tabla = lowerAscii(sinComillas(mira().texto));
      for (int i = 0; i < 3; ++i)
        sql += toma();
      for (const Fuente& f : ambitos_[nivel].fuentes)
        if (f.alias == tabla)
          expandir(f);
      continue;
    }
    Expr e = expr();
    if (r.columnas.size() < esperado.size() && esperado[r.columnas.size()])
      e = aColumnaDinero(std::move(e));
    else if (compuesta && e.dinero())
      e = enDiezmilesimas(std::move(e));
    const std::string nombre = alias();
    sql += e.sql;
    if (!nombre.empty())
      sql += " AS " + nombre;
    const std::string clave =
        lowerAscii(sinComillas(nombre.empty() ? (e.columna.empty() ? e.sql : e.columna) : nombre));
    r.columnas.push_back({clave, montoDeExpr(e)});
    if (!nombre.empty())
      ambitos_[nivel].alias[clave] = montoDeExpr(e);
  } while (mira().tipo == Tok::Coma);
  return sql;
}

std::string Lector::leerFrom() {
  const Nivel nivel(*this);
  std::string sql = leerFuente();
  for (;;) {
    if (mira().tipo == Tok::Coma) {
      sql += toma() + ' ';
      sql += leerFuente();
      continue;
    }
    std::string union_;
    while (es("NATURAL") || es("LEFT") || es("RIGHT") || es("FULL") || es("OUTER") || es("INNER") ||
           es("CROSS"))
      union_ += toma() + ' ';
    if (!es("JOIN")) {
      if (!union_.empty())
        throw NoSeEntiende{};
      return sql;
    }
    sql += ' ' + union_ + toma() + ' ';
    sql += leerFuente();
    if (tomaSi("ON", sql))
      sql += ' ' + expr().sql;
    else if (tomaSi("USING", sql)) {
      sql += ' ' + pide(Tok::Abre);
      sql += balanceado();
    }
  }
}

std::string Lector::leerFuente() {
  Fuente f;
  std::string sql;
  if (mira().tipo == Tok::Abre) {
    sql = toma();
    if (es("SELECT") || es("VALUES") || es("WITH")) {
      std::string with;
      if (es("WITH"))
        with = leerWith();
      auto [texto, r] = leerSelect({});
      sql += with + texto + pide(Tok::Cierra);
      if (r.estrellaIncierta < 0)
        f.columnas = r.columnas;
    } else {
      sql += leerFrom();
      sql += pide(Tok::Cierra);
      return sql;
    }
  } else {
    std::string nombre = toma();
    sql = nombre;
    if (mira().tipo == Tok::Punto) {
      sql += toma();
      nombre = toma();
      sql += nombre;
    }
    if (mira().tipo == Tok::Abre) {
      sql += toma();  // a table-valued function
      sql += balanceado();
    } else if (const auto cte = ctes_.find(lowerAscii(sinComillas(nombre))); cte != ctes_.end()) {
      f.columnas = cte->second;
    } else {
      f.columnas = columnasDeTabla(sinComillas(nombre));
    }
    f.alias = lowerAscii(sinComillas(nombre));
  }
  if (const std::string a = alias(); !a.empty()) {
    sql += " AS " + a;
    f.alias = lowerAscii(sinComillas(a));
  }
  if (es("INDEXED")) {
    sql += ' ' + toma();
    sql += ' ' + pide("BY");
    sql += ' ' + toma();
  } else if (es("NOT") && es("INDEXED", 1)) {
    sql += ' ' + toma();
    sql += ' ' + toma();
  }
  ambitos_.back().fuentes.push_back(std::move(f));
  return sql;
}

// The target of INSERT, UPDATE or DELETE, added to the current scope.
std::string Lector::leerTablaDestino(std::optional<std::vector<Columna>>& columnas) {
  std::string nombre = toma();
  std::string sql = nombre;
  if (mira().tipo == Tok::Punto) {
    sql += toma();
    nombre = toma();
    sql += nombre;
  }
  columnas = columnasDeTabla(sinComillas(nombre));
  Fuente f{lowerAscii(sinComillas(nombre)), columnas};
  if (es("AS") || (mira().tipo == Tok::Nombre && !esPalabraDeClausula(mira().texto) &&
                   !es("DEFAULT") && !es("SELECT") && !es("WITH"))) {
    if (es("AS"))
      toma();
    const std::string a = toma();
    sql += " AS " + a;
    f.alias = lowerAscii(sinComillas(a));
  }
  ambitos_.back().fuentes.push_back(std::move(f));
  return sql;
}

std::string Lector::leerInsert() {
  std::string sql = toma();
  if (tomaSi("OR", sql))
    sql += ' ' + toma();
  sql += ' ' + pide("INTO") + ' ';
  std::optional<std::vector<Columna>> columnas;
  sql += leerTablaDestino(columnas);
  std::vector<bool> esperado;
  if (mira().tipo == Tok::Abre) {
    sql += ' ' + toma();
    do {
      if (mira().tipo == Tok::Coma)
        sql += toma() + ' ';
      const std::string col = toma();
      sql += col;
      esperado.push_back(montoDe("", col).dinero);
    } while (mira().tipo == Tok::Coma);
    sql += pide(Tok::Cierra);
  } else if (columnas) {
    for (const Columna& c : *columnas)
      esperado.push_back(c.monto.dinero);
  }
  if (es("DEFAULT")) {
    sql += ' ' + toma();
    sql += ' ' + pide("VALUES");
  } else {
    std::string with;
    if (es("WITH"))
      with = leerWith();
    auto [texto, r] = leerSelect(esperado);
    for (std::size_t i = 0; i < r.columnas.size(); ++i)
      if (r.columnas[i].monto.dinero && (i >= esperado.size() || !esperado[i]))
        rehusar("Un monto no puede guardarse en una columna que no es de montos: " +
                r.columnas[i].nombre);
    sql += ' ' + with + texto;
  }
  while (es("ON") && es("CONFLICT", 1)) {
    sql += ' ' + toma();
    sql += ' ' + toma();
    if (mira().tipo == Tok::Abre) {
      sql += ' ' + toma();
      sql += balanceado();
      if (tomaSi("WHERE", sql))
        sql += ' ' + expr().sql;
    }
    sql += ' ' + pide("DO");
    if (!tomaSi("NOTHING", sql)) {
      sql += ' ' + pide("UPDATE");
      sql += ' ' + leerAsignaciones(columnas);
      if (tomaSi("WHERE", sql))
        sql += ' ' + expr().sql;
    }
  }
  return sql;
}

std::string Lector::leerAsignaciones(const std::optional<std::vector<Columna>>& destino) {
  std::string sql = pide("SET");
  const auto esDinero = [&](const std::string& col) {
    if (destino)
      for (const Columna& c : *destino)
        if (c.nombre == lowerAscii(sinComillas(col)))
          return c.monto.dinero;
    return nombresDinero().count(lowerAscii(sinComillas(col))) > 0;
  };
  do {
    if (mira().tipo == Tok::Coma)
      sql += toma();
    if (mira().tipo == Tok::Abre)
      throw NoSeEntiende{};  // (a, b) = (...): not used with amounts here
    const std::string col = toma();
    sql += ' ' + col + ' ';
    if (!esOp("=") && !esOp("=="))
      throw NoSeEntiende{};
    sql += toma() + ' ';
    sql += valorParaColumna(expr(), esDinero(col)).sql;
  } while (mira().tipo == Tok::Coma);
  return sql;
}

std::string Lector::leerUpdate() {
  std::string sql = toma();
  if (tomaSi("OR", sql))
    sql += ' ' + toma();
  std::optional<std::vector<Columna>> columnas;
  sql += ' ' + leerTablaDestino(columnas);
  // The sources of UPDATE ... FROM are named in the SET list before they appear.
  std::string from;
  std::size_t finFrom = 0;
  const std::size_t set = p_;
  if (const auto posicion = posicionDeFrom()) {
    p_ = *posicion;
    from = ' ' + toma();
    from += ' ' + leerFrom();
    finFrom = p_;
    p_ = set;
  }
  sql += ' ' + leerAsignaciones(columnas);
  if (finFrom) {
    p_ = finFrom;
    sql += from;
  }
  if (tomaSi("WHERE", sql))
    sql += ' ' + expr().sql;
  return sql;
}

std::string Lector::leerDelete() {
  std::string sql = toma() + ' ';
  sql += pide("FROM") + ' ';
  std::optional<std::vector<Columna>> columnas;
  sql += leerTablaDestino(columnas);
  if (tomaSi("WHERE", sql))
    sql += ' ' + expr().sql;
  return sql;
}

std::string Lector::leerReturning(Resultado& r) {
  std::string sql = ' ' + toma() + ' ';
  return sql + leerListaResultado({}, false, r);
}

Expr Lector::expr() {
  const Nivel nivel(*this);
  return disyuncion();
}

// OR and AND give a truth value, whatever their sides are.
Expr Lector::logica(std::string_view palabra, Expr (Lector::*lado)()) {
  Expr a = (this->*lado)();
  while (es(palabra)) {
    const std::string op = toma();
    a = simple(a.sql + ' ' + op + ' ' + (this->*lado)().sql);
  }
  return a;
}

Expr Lector::disyuncion() {
  return logica("OR", &Lector::conjuncion);
}

Expr Lector::conjuncion() {
  return logica("AND", &Lector::negacion);
}

Expr Lector::negacion() {
  if (es("NOT") && !es("EXISTS", 1)) {
    const Nivel nivel(*this);
    const std::string op = toma();
    return simple(op + ' ' + negacion().sql);
  }
  return igualdad();
}

// Which columns of a subquery compared with the row `fila` must be amounts.
std::vector<bool> esperadoDe(const Expr& fila) {
  std::vector<bool> r;
  for (const Expr& e : fila.fila)
    r.push_back(e.dinero());
  return r;
}

// The right side of a comparison: a subquery compared with a row is read
// knowing which of the row's elements are amounts.
Expr Lector::operando(const Expr& izquierda, Expr (Lector::*siguiente)()) {
  if (izquierda.fila.empty() || mira().tipo != Tok::Abre ||
      !(es("SELECT", 1) || es("VALUES", 1) || es("WITH", 1)))
    return (this->*siguiente)();
  toma();
  return subconsulta(esperadoDe(izquierda));
}

Expr Lector::igualdad() {
  Expr a = comparacion();
  for (;;) {
    const auto comparar = [&](const std::string& op) {
      Expr b = operando(a, &Lector::comparacion);
      emparejar(a, b);
      a = simple(a.sql + ' ' + op + ' ' + b.sql);
    };
    if (esOp("=") || esOp("==") || esOp("!=") || esOp("<>")) {
      comparar(toma());
    } else if (es("IS")) {
      std::string op = toma();
      tomaSi("NOT", op);
      if (tomaSi("DISTINCT", op))
        op += ' ' + pide("FROM");
      comparar(op);
    } else if (es("ISNULL") || es("NOTNULL")) {
      a = simple(a.sql + ' ' + toma());
    } else if (es("NOT") && es("NULL", 1)) {
      const std::string op = toma();
      a = simple(a.sql + ' ' + op + ' ' + toma());
    } else {
      std::string op;
      if (es("NOT") && (es("IN", 1) || es("LIKE", 1) || es("GLOB", 1) || es("MATCH", 1) ||
                        es("REGEXP", 1) || es("BETWEEN", 1)))
        op = toma() + ' ';
      if (es("IN")) {
        a = en(std::move(a), op + toma());
      } else if (es("BETWEEN")) {
        op += toma();
        Expr desde = comparacion();
        const std::string y = pide("AND");
        Expr hasta = comparacion();
        comoMontos({&a, &desde, &hasta});
        a = simple(a.sql + ' ' + op + ' ' + desde.sql + ' ' + y + ' ' + hasta.sql);
      } else if (es("LIKE") || es("GLOB") || es("MATCH") || es("REGEXP")) {
        op += toma();
        Expr b = comparacion();
        std::string escape;
        if (tomaSi("ESCAPE", escape))
          escape += ' ' + comparacion().sql;
        if (a.dinero() || b.dinero())
          rehusar("Un monto no se compara como texto (" + op + "): " + a.sql);
        a = simple(a.sql + ' ' + op + ' ' + b.sql + escape);
      } else if (!op.empty()) {
        throw NoSeEntiende{};
      } else {
        return a;
      }
    }
  }
}

Expr Lector::en(Expr a, const std::string& op) {
  if (mira().tipo != Tok::Abre)
    return simple(a.sql + ' ' + op + ' ' + toma());  // IN a table
  if (es("SELECT", 1) || es("VALUES", 1) || es("WITH", 1)) {
    const bool esFila = !a.fila.empty();
    if (!esFila) {  // one value is compared as a row of one
      Expr fila{a.sql};
      fila.fila.push_back(std::move(a));
      a = std::move(fila);
    }
    toma();
    Expr sub = subconsulta(esperadoDe(a));
    emparejar(a, sub);
    if (!esFila) {
      Expr solo = std::move(a.fila[0]);
      a = std::move(solo);
    }
    return simple(a.sql + ' ' + op + ' ' + sub.sql);
  }
  toma();
  std::vector<Expr> valores;
  while (mira().tipo != Tok::Cierra) {
    if (mira().tipo == Tok::Coma)
      toma();
    valores.push_back(expr());
  }
  toma();
  std::vector<Expr*> todos{&a};
  for (Expr& v : valores)
    todos.push_back(&v);
  comoMontos(todos);
  return simple(a.sql + ' ' + op + " (" + unir(valores) + ")");
}

Expr Lector::comparacion() {
  Expr a = bits();
  while (esOp("<") || esOp("<=") || esOp(">") || esOp(">=")) {
    const std::string op = toma();
    Expr b = operando(a, &Lector::bits);
    emparejar(a, b);
    a = simple(a.sql + ' ' + op + ' ' + b.sql);
  }
  return a;
}

Expr Lector::bits() {
  Expr a = suma();
  while (esOp("&") || esOp("|") || esOp("<<") || esOp(">>")) {
    const std::string op = toma();
    Expr b = suma();
    if (a.dinero() || b.dinero())
      rehusar("Un monto no admite operaciones de bits (" + op + "): " + a.sql + ' ' + op + ' ' +
              b.sql);
    a = simple(a.sql + ' ' + op + ' ' + b.sql);
  }
  return a;
}

// Two literals folded into the exact one, or the expression as written;
// a literal times a placeholder remembers its factors, to be kept exact if
// it meets an amount.
Expr literalesOSimple(Expr a, const std::string& op, Expr b) {
  if (a.clase == Clase::Numero && b.clase == Clase::Numero && a.cotejo.empty() && b.cotejo.empty())
    if (std::optional<std::string> plegado = plegar(a.sql, op, b.sql))
      return Expr{std::move(*plegado), Clase::Numero};
  Expr r = simple(a.sql + ' ' + op + ' ' + b.sql);
  if (op == "*" && ((a.clase == Clase::Numero && b.clase == Clase::Marca) ||
                    (a.clase == Clase::Marca && b.clase == Clase::Numero)))
    r.factores = {std::move(a), std::move(b)};
  return r;
}

Expr Lector::suma() {
  Expr a = producto();
  while (esOp("+") || esOp("-")) {
    const std::string op = toma();
    Expr b = producto();
    if (a.dinero() || b.dinero()) {
      comoMontos({&a, &b});
      a = dinero(a.sql + ' ' + op + ' ' + b.sql, a.real || b.real, a.escala);
    } else {
      a = literalesOSimple(std::move(a), op, std::move(b));
    }
  }
  return a;
}

Expr Lector::producto() {
  Expr a = concatenacion();
  while (esOp("*") || esOp("/") || esOp("%")) {
    const std::string op = toma();
    Expr b = concatenacion();
    if (!a.dinero() && !b.dinero()) {
      a = literalesOSimple(std::move(a), op, std::move(b));
    } else if (op == "*") {
      a = multiplicar(std::move(a), std::move(b));
    } else {
      a = dividir(std::move(a), op, std::move(b));
    }
  }
  return a;
}

// An amount times a number. By a literal or a bound value the product stays
// exact in finer units (Monto * 0.015 is Monto's ten-thousandths times 15, in
// units of 10^-7), as the server's numeric keeps it; by anything else it is
// taken as SQLite computes it and may fall between units.
Expr Lector::multiplicar(Expr a, Expr b, bool marcaEsMonto) {
  if (a.dinero() && b.dinero())
    rehusar("El producto de dos montos no es un monto: " + a.sql + " * " + b.sql);
  if (marcaEsMonto) {  // a literal times a placeholder that meets an amount
    Expr& marca = a.clase == Clase::Marca ? a : b;
    marca = aDinero(std::move(marca));
  }
  Expr& monto = a.dinero() ? a : b;
  Expr& factor = a.dinero() ? b : a;
  if (!monto.promedioDe.empty() && !marcaEsMonto) {
    if (const auto l = factor.clase == Clase::Numero ? leerLiteral(factor.sql) : std::nullopt;
        l && cabeEnEntero64(l->digitos))
      return promedio(monto.promedioDe, monto.promedioEscala, (l->negativo ? "-" : "") + l->digitos,
                      l->decimales);
    if (factor.clase == Clase::Marca)
      return promedio(monto.promedioDe, monto.promedioEscala, aDinero(std::move(factor)).sql, 4);
  }
  int escala = monto.escala;
  if (const auto l = factor.clase == Clase::Numero ? leerLiteral(factor.sql) : std::nullopt) {
    if (!cabeEnEntero64(l->digitos))
      rehusar("Factor con demasiados dígitos en la sentencia: " + factor.sql);
    factor.sql = (l->negativo ? "-" : "") + l->digitos;
    escala += l->decimales;
  } else if (factor.clase == Clase::Marca) {
    factor = aDinero(std::move(factor));
    escala += 4;
  } else {
    monto.real = true;
  }
  if (escala > kMaximaEscala)
    rehusar("Un producto con más de " + std::to_string(kMaximaEscala + 4) +
            " decimales no se calcula exactamente: " + a.sql + " * " + b.sql);
  return dinero(a.sql + " * " + b.sql, monto.real, escala);
}

// A quotient with an amount in it is an amount, as the server's numeric is,
// taken in floating point: SQLite's integer division would drop the
// fraction. The remainder of two amounts stays exact.
Expr Lector::dividir(Expr a, const std::string& op, Expr b) {
  if (op == "%") {
    comoMontos({&a, &b});
    if (a.real || b.real)
      rehusar("El resto de una división no es exacto sobre un cociente: " + a.sql + " % " + b.sql);
    return dinero(a.sql + " % " + b.sql, false, a.escala);
  }
  if (a.dinero() && b.dinero()) {
    comoMontos({&a, &b});
    return dinero("CAST(" + a.sql + " AS REAL) * 10000 / " + b.sql, true);
  }
  if (a.dinero()) {
    // By a literal, as its exact fraction: a / 0.07 is a * 100 / 7, so that a
    // quotient that falls on a half stays one.
    if (const auto l = b.clase == Clase::Numero ? leerLiteral(b.sql) : std::nullopt)
      return dinero("CAST(" + a.sql + " AS REAL) * " + potencia10(l->decimales) + " / " +
                        (l->negativo ? "-" : "") + l->digitos,
                    true, a.escala);
    return dinero(a.sql + " / CAST(" + b.sql + " AS REAL)", true, a.escala);
  }
  b = enDiezmilesimas(std::move(b));
  return dinero("(" + a.sql + ") * 100000000.0 / " + b.sql, true);
}

Expr Lector::concatenacion() {
  Expr a = unaria();
  while (esOp("||") || esOp("->") || esOp("->>")) {
    const std::string op = toma();
    Expr b = unaria();
    if (a.dinero() || b.dinero())
      rehusar("Un monto no se une a un texto (" + op + "): use CAST(monto AS TEXT)");
    a = simple(a.sql + ' ' + op + ' ' + b.sql);
  }
  return a;
}

Expr Lector::unaria() {
  if (esOp("-") || esOp("+") || esOp("~")) {
    const Nivel nivel(*this);
    const std::string op = toma();
    Expr e = unaria();
    if (op == "~" && e.dinero())
      rehusar("Un monto no admite operaciones de bits (~): " + e.sql);
    if (e.clase == Clase::Numero && op != "~") {
      if (op == "+")
        return e;
      return Expr{e.sql[0] == '-' ? e.sql.substr(1) : "-" + e.sql, Clase::Numero};
    }
    e.sql = op + e.sql;
    if (!e.dinero())
      e.clase = Clase::Simple;
    e.columna.clear();
    return e;
  }
  Expr e = primaria();
  while (es("COLLATE")) {
    std::string cotejo = ' ' + toma();
    cotejo += ' ' + toma();
    e.sql += cotejo;
    e.cotejo += cotejo;
  }
  return e;
}

// A subquery whose opening parenthesis was taken, up to its closing one.
Expr Lector::subconsulta(const std::vector<bool>& esperado) {
  std::string with;
  if (es("WITH"))
    with = leerWith();
  auto [texto, r] = leerSelect(esperado);
  pide(Tok::Cierra);
  Expr e{"(" + with + texto + ")"};
  if (!r.columnas.empty() && r.columnas[0].monto.dinero) {
    e = dinero(e.sql, r.columnas[0].monto.real, r.columnas[0].monto.escala);
  }
  e.columnasFila = std::move(r.columnas);
  return e;
}

Expr Lector::primaria() {
  const Token& t = mira();
  switch (t.tipo) {
    case Tok::Numero:
      return Expr{toma(), Clase::Numero};
    case Tok::Cadena:
      return Expr{toma(), Clase::Texto};
    case Tok::Marca: {
      const int marca = t.marca;
      return Expr{toma(), Clase::Marca, marca};
    }
    case Tok::Abre: {
      toma();
      if (es("SELECT") || es("VALUES") || es("WITH"))
        return subconsulta({});
      Expr e = expr();
      if (mira().tipo == Tok::Coma) {  // a row value
        std::vector<Expr> fila;
        fila.push_back(std::move(e));
        while (mira().tipo == Tok::Coma) {
          toma();
          fila.push_back(expr());
        }
        pide(Tok::Cierra);
        Expr r{"(" + unir(fila) + ")"};
        r.fila = std::move(fila);
        return r;
      }
      pide(Tok::Cierra);
      if (!coercible(e))  // a literal keeps its own text, to be read as an amount
        e.sql = "(" + e.sql + ")";
      return e;
    }
    case Tok::Nombre:
    case Tok::NombreCitado:
      return nombre();
    default:
      throw NoSeEntiende{};
  }
}

Expr Lector::nombre() {
  if (mira().tipo == Tok::Nombre) {
    if (es("NULL"))
      return Expr{toma(), Clase::Nulo};
    if (es("CASE"))
      return caso();
    if (es("CAST"))
      return conversion();
    if (es("EXISTS") || (es("NOT") && es("EXISTS", 1))) {
      std::string sql;
      if (es("NOT"))
        sql = toma() + ' ';
      sql += toma() + ' ';
      pide(Tok::Abre);
      return simple(sql + subconsulta({}).sql);
    }
    if (esPalabraDeClausula(mira().texto) && !es("LEFT") && !es("RIGHT"))
      throw NoSeEntiende{};
  }
  std::string primero = toma();
  if (mira().tipo == Tok::Abre && !primero.empty() && primero[0] != '"')
    return funcion(primero);
  std::string calificador, columna = primero, sql = primero;
  while (mira().tipo == Tok::Punto) {
    sql += toma();
    calificador = columna;
    columna = toma();
    sql += columna;
  }
  const Monto m = montoDe(calificador, columna);
  Expr e = m.dinero ? dinero(sql, m.real, m.escala) : simple(sql);
  e.columna = sinComillas(columna);
  return e;
}

std::vector<Expr> Lector::argumentos(std::string& distinto) {
  pide(Tok::Abre);
  std::vector<Expr> r;
  if (tomaSi("DISTINCT", distinto) || tomaSi("ALL", distinto))
    distinto += ' ';
  while (mira().tipo != Tok::Cierra) {
    if (mira().tipo == Tok::Coma)
      toma();
    if (esOp("*"))
      r.push_back(simple(toma()));
    else
      r.push_back(expr());
  }
  toma();
  return r;
}

// The rounding of an amount to `decimales` places, halves away from zero as
// the server rounds; `precision` digits in all, when given, or the value is
// refused as the server refuses it.
Expr redondeo(const Expr& e, const std::string& decimales, const std::string& precision = "NULL") {
  return dinero("caja_redondear(" + e.sql + ", " + decimales + ", " + std::to_string(e.escala) +
                    ", " + precision + ")",
                false, e.escala);
}

// Aggregates and functions whose result is an amount when their arguments
// are; any other function is refused an amount rather than handed
// ten-thousandths it would take for units.
Expr Lector::funcion(const std::string& nombreFuncion) {
  const std::string f = lowerAscii(nombreFuncion);
  std::string distinto;
  std::vector<Expr> args = argumentos(distinto);
  Expr r = simple("");
  const bool conDinero = algunoDinero(args);
  const auto llamada = [&](const std::string& nombre) {
    return nombre + "(" + distinto + unir(args) + ")";
  };
  const auto todos = [&](std::size_t desde) {
    std::vector<Expr*> r;
    for (std::size_t i = desde; i < args.size(); ++i)
      r.push_back(&args[i]);
    return r;
  };
  if (f == "count" || !conDinero) {
    r = simple(llamada(nombreFuncion));
  } else if (f == "avg" && args.size() == 1 && distinto.empty() && !args[0].real && !es("OVER")) {
    // As the server divides: exact, at its own scale, not in floating point.
    comoMontos(todos(0));
    r = promedio(args[0].sql, args[0].escala, "1", 0);
  } else if (f == "sum" || f == "abs" || f == "total" || f == "avg" || f == "min" || f == "max" ||
             f == "coalesce" || f == "ifnull" || f == "nullif" || f == "likely" ||
             f == "unlikely") {
    comoMontos(todos(0));
    bool real = f == "total" || f == "avg";
    for (const Expr& a : args)
      real = real || a.real;
    // Each quotient the server adds up is rounded at its own precision, so
    // a sum of quotients can only agree by chance.
    if ((f == "sum" || f == "total" || f == "avg") && args[0].real)
      rehusar("La base de datos embebida no suma cocientes exactamente (" + nombreFuncion +
              "): divida el total, como en SUM(Monto) / 3");
    r = dinero(llamada(nombreFuncion), real, args[0].escala);
  } else if (f == "iif" && args.size() == 3) {
    comoMontos(todos(1));
    r = dinero(llamada(nombreFuncion), args[1].real || args[2].real, args[1].escala);
  } else if (f == "round" && args.size() <= 2 && args[0].dinero() &&
             (args.size() == 1 || !args[1].dinero())) {
    r = redondeo(args[0], args.size() == 2 ? args[1].sql : "0");
  } else {
    rehusar("La función " + nombreFuncion +
            " no admite montos en la base de datos embebida: " + llamada(nombreFuncion));
  }
  if (es("FILTER")) {
    for (int i = 0; i < 3; ++i)  // FILTER ( WHERE
      r.sql += ' ' + toma();
    r.sql += ' ' + expr().sql;
    r.sql += pide(Tok::Cierra);
  }
  if (es("OVER")) {
    r.sql += ' ' + toma() + ' ';
    const bool ventana = mira().tipo == Tok::Abre;
    r.sql += toma();
    if (ventana)
      r.sql += balanceado();
  }
  return r;
}

Expr Lector::caso() {
  std::string sql = toma();
  std::optional<Expr> operando;
  if (!es("WHEN"))
    operando = expr();
  std::vector<Expr> condiciones, valores;
  while (es("WHEN")) {
    toma();
    condiciones.push_back(expr());
    pide("THEN");
    valores.push_back(expr());
  }
  std::optional<Expr> otro;
  if (es("ELSE")) {
    toma();
    otro = expr();
  }
  pide("END");
  if (operando) {
    std::vector<Expr*> comparados{&*operando};
    for (Expr& c : condiciones)
      comparados.push_back(&c);
    comoMontos(comparados);
  }
  std::vector<Expr*> resultados;
  for (Expr& v : valores)
    resultados.push_back(&v);
  if (otro)
    resultados.push_back(&*otro);
  comoMontos(resultados);
  bool deMontos = false, real = false;
  for (const Expr* v : resultados) {
    deMontos = deMontos || v->dinero();
    real = real || v->real;
  }
  if (operando)
    sql += ' ' + operando->sql;
  for (std::size_t i = 0; i < condiciones.size(); ++i)
    sql += " WHEN " + condiciones[i].sql + " THEN " + valores[i].sql;
  if (otro)
    sql += " ELSE " + otro->sql;
  sql += " END";
  return deMontos ? dinero(sql, real, resultados.front()->escala) : simple(sql);
}

// The precision and scale written in a type: DECIMAL(19, 1) is {19, 1};
// DECIMAL(10) has scale 0, as on the server; a bare DECIMAL has neither.
std::optional<std::pair<std::string, std::string>> precisionYEscala(std::string_view tipo) {
  const std::size_t abre = tipo.find('(');
  if (abre == npos)
    return std::nullopt;
  std::vector<std::string> numeros;
  std::string actual;
  for (const char c : tipo.substr(abre + 1)) {
    if (std::isdigit(static_cast<unsigned char>(c))) {
      actual += c;
    } else if (!actual.empty()) {
      numeros.push_back(actual);
      actual.clear();
    }
  }
  if (numeros.empty() || numeros.size() > 2 || numeros[0].size() > 4 ||
      (numeros.size() == 2 && numeros[1].size() > 4))
    rehusar("Tipo no válido en la conversión de un monto: " + std::string(tipo));
  return std::pair{numeros[0], numeros.size() == 2 ? numeros[1] : "0"};
}

// CAST of an amount to the types a report asks for: a decimal text, an
// integer or a decimal rounded as the server rounds, a float.
Expr Lector::conversion() {
  std::string sql = toma();
  sql += pide(Tok::Abre);
  Expr e = expr();
  pide("AS");
  std::string tipo;
  while (mira().tipo != Tok::Cierra) {
    if (mira().tipo == Tok::Abre) {
      tipo += toma();
      tipo += balanceado();
    } else
      tipo += (tipo.empty() ? "" : " ") + toma();
  }
  toma();
  if (!e.dinero())
    return simple(sql + e.sql + " AS " + tipo + ")");
  const std::string t = upperAscii(tipo);
  const auto empieza = [&](std::initializer_list<const char*> nombres) {
    for (const char* n : nombres)
      if (t.rfind(n, 0) == 0)
        return true;
    return false;
  };
  const std::string unidades = potencia10(4 + e.escala);
  if (empieza({"TEXT", "VARCHAR", "CHAR", "NVARCHAR", "NCHAR", "CLOB"})) {
    if (e.real)
      rehusar("Un cociente no tiene texto exacto en la base de datos embebida: " + e.sql);
    return simple("caja_texto(" + e.sql + ", " + std::to_string(e.escala) + ")");
  }
  if (empieza({"NUMERIC", "DECIMAL"})) {
    const auto ps = precisionYEscala(t);
    return ps ? redondeo(e, ps->second, ps->first) : e;
  }
  if (empieza({"INT", "BIGINT", "SMALLINT", "TINYINT"}))
    return simple("(" + redondeo(e, "0").sql + " / " + unidades + ")");
  if (empieza({"REAL", "FLOAT", "DOUBLE"}))
    return simple("(" + e.sql + " / " + unidades + ".0)");
  rehusar("Un monto no se convierte a " + tipo + " en la base de datos embebida");
}

}  // namespace

SentenciaTipada tiparDinero(std::string_view sql) {
  Lector lector(leerTokens(sql));
  try {
    return lector.leer();
  } catch (const NoSeEntiende&) {
    if (lector.mencionaDinero())
      rehusar(
          "La base de datos embebida no sabe calcular los montos de esta sentencia (escríbala "
          "con SELECT, INSERT, UPDATE o DELETE simples): " +
          std::string(sql));
    return SentenciaTipada{std::string(sql), {}, {}, -1};
  }
}

int escalaDeColumna(const SentenciaTipada& s, int i, int columnas) {
  const auto conocidas = static_cast<int>(s.escalas.size());
  if (s.estrellaIncierta >= 0 && i >= s.estrellaIncierta) {
    const int ancho = columnas - conocidas;
    if (i < s.estrellaIncierta + ancho)
      return -1;
    i -= ancho;
  }
  return i >= 0 && i < conocidas ? s.escalas[static_cast<std::size_t>(i)] : -1;
}

}  // namespace caja
