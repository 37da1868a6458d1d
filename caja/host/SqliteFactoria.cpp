#include "caja/host/SqliteFactoria.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>
#include <unordered_map>

#include "caja/base/CajaError.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/host/ArchivosPrivados.h"
#include "caja/host/DialectoSql.h"
#include "caja/host/DineroSqlite.h"
#include "caja/service/TablaRecordset.h"

namespace caja {

namespace {

constexpr const char* kFuente = "SqliteFactoria";
// Long enough for every other till to finish a save; a lock held longer is a
// conflict the wrapped save retries.
constexpr int kEsperaBloqueoMs = 30000;

void fnGetdate(sqlite3_context* ctx, int, sqlite3_value**) {
  const std::string ahora = Fecha::now().toIsoText();
  sqlite3_result_text(ctx, ahora.c_str(), static_cast<int>(ahora.size()), SQLITE_TRANSIENT);
}

void fnScopeIdentity(sqlite3_context* ctx, int, sqlite3_value**) {
  sqlite3_result_int64(ctx, sqlite3_last_insert_rowid(sqlite3_context_db_handle(ctx)));
}

// The last identity this connection handed out for the table: another
// till's inserts never show here, whatever the timing.
void fnIdentCurrent(sqlite3_context* ctx, int, sqlite3_value** argv) {
  const auto* identidades = static_cast<std::map<std::string, long long>*>(sqlite3_user_data(ctx));
  const unsigned char* tabla = sqlite3_value_text(argv[0]);
  const auto it = tabla ? identidades->find(lowerAscii(reinterpret_cast<const char*>(tabla)))
                        : identidades->end();
  if (it == identidades->end())
    sqlite3_result_null(ctx);
  else
    sqlite3_result_int64(ctx, it->second);
}

void anotarIdentidad(void* datos, int operacion, const char*, const char* tabla,
                     sqlite3_int64 fila) {
  if (operacion == SQLITE_INSERT)
    (*static_cast<std::map<std::string, long long>*>(datos))[lowerAscii(tabla)] = fila;
}

// A double of the floating-point schema back to the amount it was written
// from: its shortest exact decimal text, rounded to four places.
Currency monedaDeDouble(double d) {
  char buf[400];
  const auto [fin, ec] = std::to_chars(buf, buf + sizeof buf, d, std::chars_format::fixed);
  if (ec != std::errc())
    throw errorEjecucion(err::kDesbordamiento);
  return monedaDeTexto(std::string_view(buf, static_cast<std::size_t>(fin - buf)));
}

// caja_diezmilesimas(x): a money value of schema version 0 (whole numbers as
// INTEGER, the rest as REAL) as ten-thousandths.
void fnDiezmilesimas(sqlite3_context* ctx, int, sqlite3_value** argv) {
  try {
    switch (sqlite3_value_type(argv[0])) {
      case SQLITE_NULL:
        sqlite3_result_null(ctx);
        return;
      case SQLITE_INTEGER:
        sqlite3_result_int64(ctx, Currency::fromUnits(sqlite3_value_int64(argv[0])).raw());
        return;
      default:
        sqlite3_result_int64(ctx, monedaDeDouble(sqlite3_value_double(argv[0])).raw());
    }
  } catch (const CajaError& e) {
    sqlite3_result_error(ctx, e.description().c_str(), -1);
  }
}

// 2^63: the first double past the ten-thousandths an int64 holds.
constexpr double kFueraDeRango = 9223372036854775808.0;

bool enRango(double diezmilesimas) {
  return std::isfinite(diezmilesimas) && diezmilesimas > -kFueraDeRango &&
         diezmilesimas < kFueraDeRango;
}

std::int64_t potencia10(long long n) {
  std::int64_t p = 1;
  for (long long i = 0; i < n; ++i)
    p *= 10;
  return p;
}

// `v` rounded to a multiple of 10^`n` (n at most 18), halves away from zero,
// and divided by it when `dividir`.
std::int64_t redondearEntero(std::int64_t v, long long n, bool dividir) {
  if (n <= 0)
    return v;
  const std::int64_t paso = potencia10(n);
  const std::int64_t resto = v % paso;
  std::int64_t cociente = v / paso;
  // |resto| < 10^18, so twice it still fits.
  if (2 * (resto < 0 ? -resto : resto) >= paso)
    cociente += resto < 0 ? -1 : 1;
  if (dividir)
    return cociente;
  std::int64_t r = 0;
  if (__builtin_mul_overflow(cociente, paso, &r))
    throw errorFueraDeRango(kFuente, {});
  return r;
}

// An amount computed in floating point (a quotient, an average, TOTAL) in
// ten-thousandths, read as the server reads a numeric into four decimals:
// halves away from zero.
Currency monedaDeReal(double diezmilesimas) {
  const double entero = std::round(diezmilesimas);
  if (!enRango(entero))
    throw errorFueraDeRango(kFuente, {});
  return Currency::fromRaw(static_cast<std::int64_t>(entero));
}

// An amount the statement computed in units of 10^-(4 + escala), as currency.
Currency monedaDeValor(sqlite3_value* v, long long escala) {
  if (sqlite3_value_type(v) == SQLITE_INTEGER)
    return Currency::fromRaw(redondearEntero(sqlite3_value_int64(v), escala, true));
  return monedaDeReal(sqlite3_value_double(v) / static_cast<double>(potencia10(escala)));
}

long long escalaDe(int argc, sqlite3_value** argv, int i) {
  return argc > i ? std::clamp<long long>(sqlite3_value_int64(argv[i]), 0, 18) : 0;
}

// caja_entero(x [, escala]): an amount about to be stored or compared with a
// compound's other branches, in whole ten-thousandths, halves away from zero
// as NUMERIC(19, 4) rounds them. Out of range a REAL stays REAL and the
// column's check refuses it.
void fnEntero(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  const long long escala = escalaDe(argc, argv, 1);
  if (sqlite3_value_type(argv[0]) == SQLITE_INTEGER) {
    sqlite3_result_int64(ctx, redondearEntero(sqlite3_value_int64(argv[0]), escala, true));
    return;
  }
  const double x = sqlite3_value_double(argv[0]) / static_cast<double>(potencia10(escala));
  if (sqlite3_value_type(argv[0]) == SQLITE_FLOAT && enRango(std::round(x)))
    sqlite3_result_int64(ctx, std::llround(x));
  else
    sqlite3_result_value(ctx, argv[0]);
}

// The average the server gives of amounts (numeric AVG): their sum divided
// by their count and rounded, halves away from zero, at the scale it picks
// for a quotient: sixteen significant digits from the quotient's first
// base-10000 digit, and never fewer decimals than the sum has.
// SQLite's memory for an aggregate is aligned to 8 bytes only: the sum is
// kept as its bytes and copied in and out.
struct Promedio {
  unsigned char suma[sizeof(__int128)] = {};  // in units of 10^-(4 + escala)
  std::int64_t cuenta = 0;
  std::int64_t factor = 1;
  int decimalesFactor = 0, escala = 0;
};

// The weight and value of the first base-10000 digit of `v` in units of
// 10^-decimales, as the server normalises a numeric: (0, 0) for zero.
std::pair<int, int> primerDigito(__int128 v, int decimales) {
  if (v < 0)
    v = -v;
  if (v == 0)
    return {0, 0};
  // The fraction padded to whole base-10000 digits.
  const int relleno = (4 - decimales % 4) % 4;
  for (int i = 0; i < relleno; ++i)
    v *= 10;
  int peso = -(decimales + relleno) / 4 - 1;
  int digito = 0;
  for (; v != 0; v /= 10000, ++peso)
    digito = static_cast<int>(v % 10000);
  return {peso, digito};
}

__int128 potencia10Grande(int n) {
  __int128 p = 1;
  for (int i = 0; i < n; ++i)
    p *= 10;
  return p;
}

// a * b, false when it does not fit. By hand: a compiler's overflow check
// of 128-bit numbers needs a runtime library that not every build links.
bool multiplicar128(__int128 a, __int128 b, __int128& r) {
  constexpr __int128 kMaximo = ~(static_cast<__int128>(1) << 127);
  const __int128 ma = a < 0 ? -a : a, mb = b < 0 ? -b : b;
  if (mb != 0 && ma > kMaximo / mb)
    return false;
  r = a * b;
  return true;
}

// a / b rounded halves away from zero; b > 0.
__int128 dividirRedondeando(__int128 a, __int128 b) {
  const __int128 cociente = a / b, resto = a % b;
  if (2 * (resto < 0 ? -resto : resto) >= b)
    return cociente + (a < 0 ? -1 : 1);
  return cociente;
}

void fnPromedioPaso(sqlite3_context* ctx, int, sqlite3_value** argv) {
  auto* p = static_cast<Promedio*>(sqlite3_aggregate_context(ctx, sizeof(Promedio)));
  if (!p)
    return sqlite3_result_error_nomem(ctx);
  p->factor = sqlite3_value_int64(argv[1]);
  p->decimalesFactor = static_cast<int>(std::clamp<long long>(sqlite3_value_int64(argv[2]), 0, 18));
  p->escala = static_cast<int>(escalaDe(4, argv, 3));
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL)
    return;
  __int128 suma = 0;
  std::memcpy(&suma, p->suma, sizeof suma);
  suma += sqlite3_value_int64(argv[0]);
  std::memcpy(p->suma, &suma, sizeof suma);
  ++p->cuenta;
}

// caja_promedio(x, factor, decimalesFactor, escala): the average the server
// gives of the amounts x (in units of 10^-(4 + escala)) — their sum over
// their count, rounded halves away from zero at the scale it picks for a
// quotient: sixteen significant digits from the quotient's first base-10000
// digit, and never fewer decimals than the sum has — times the factor
// (factor / 10^decimalesFactor), kept exact until then, in whole
// ten-thousandths, halves away from zero.
void fnPromedioFinal(sqlite3_context* ctx) {
  auto* p = static_cast<Promedio*>(sqlite3_aggregate_context(ctx, 0));
  if (!p || p->cuenta == 0)
    return sqlite3_result_null(ctx);
  __int128 suma = 0;
  std::memcpy(&suma, p->suma, sizeof suma);
  const int decimalesSuma = 4 + p->escala;
  const auto [pesoSuma, digitoSuma] = primerDigito(suma, decimalesSuma);
  const auto [pesoCuenta, digitoCuenta] = primerDigito(p->cuenta, 0);
  const int pesoCociente = pesoSuma - pesoCuenta - (digitoSuma <= digitoCuenta ? 1 : 0);
  const int escalaCociente = std::clamp(16 - 4 * pesoCociente, decimalesSuma, 1000);
  const int subir = escalaCociente - decimalesSuma;
  const int bajar = escalaCociente + p->decimalesFactor - 4;
  __int128 escalada = 0, producto = 0;
  // Past 38 digits the quotient would not be exact here: refused as an
  // amount out of range, as a sum past the currency's would be.
  if (subir > 36 || bajar > 36 || !multiplicar128(suma, potencia10Grande(subir), escalada) ||
      !multiplicar128(dividirRedondeando(escalada, p->cuenta), p->factor, producto))
    return sqlite3_result_error(ctx, "Monto fuera del rango de la moneda", -1);
  const __int128 diezmilesimas = dividirRedondeando(producto, potencia10Grande(bajar));
  if (diezmilesimas > std::numeric_limits<std::int64_t>::max() ||
      diezmilesimas < -std::numeric_limits<std::int64_t>::max())
    return sqlite3_result_error(ctx, "Monto fuera del rango de la moneda", -1);
  sqlite3_result_int64(ctx, static_cast<std::int64_t>(diezmilesimas));
}

// caja_redondear(x, n, escala, precision): ROUND of an amount in units of
// 10^-(4 + escala) to n decimals, halves away from zero, in the same units;
// with a precision (CAST to NUMERIC(p, n)), a value of more integer digits
// than p - n is refused as the server refuses it.
void fnRedondear(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  try {
    const long long decimales = sqlite3_value_int64(argv[1]);
    const long long escala = escalaDe(argc, argv, 2);
    const long long paso = 4 + escala - std::max(decimales, -20LL);
    std::int64_t r = 0;  // a step past 10^18 rounds any amount to zero
    if (paso <= 18 && sqlite3_value_type(argv[0]) == SQLITE_INTEGER) {
      r = redondearEntero(sqlite3_value_int64(argv[0]), paso, false);
    } else if (paso <= 18) {
      const double unidad = static_cast<double>(potencia10(std::max(paso, 0LL)));
      const double x = std::round(sqlite3_value_double(argv[0]) / unidad) * unidad;
      if (!enRango(x))
        throw errorFueraDeRango(kFuente, {});
      r = static_cast<std::int64_t>(x);
    }
    if (sqlite3_value_type(argv[3]) != SQLITE_NULL) {
      const long long digitos = sqlite3_value_int64(argv[3]) - decimales + 4 + escala;
      if (digitos <= 18 &&
          (r >= potencia10(std::max(digitos, 0LL)) || r <= -potencia10(std::max(digitos, 0LL))))
        throw CajaError(kErrorBaseDatos, kFuente,
                        "Desbordamiento del campo numérico: el monto no cabe en NUMERIC(" +
                            std::to_string(sqlite3_value_int64(argv[3])) + ", " +
                            std::to_string(decimales) + ")");
    }
    sqlite3_result_int64(ctx, r);
  } catch (const CajaError& e) {
    sqlite3_result_error(ctx, e.description().c_str(), -1);
  }
}

// caja_texto(x, escala): an amount in units of 10^-(4 + escala) as exact
// decimal text with 4 + escala places, as the server writes a numeric.
void fnTexto(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  try {
    const long long escala =
        sqlite3_value_type(argv[0]) == SQLITE_INTEGER ? escalaDe(argc, argv, 1) : 0;
    const std::int64_t v = sqlite3_value_type(argv[0]) == SQLITE_INTEGER
                               ? sqlite3_value_int64(argv[0])
                               : monedaDeValor(argv[0], escalaDe(argc, argv, 1)).raw();
    const auto decimales = static_cast<std::size_t>(4 + escala);
    std::string digitos =
        std::to_string(v < 0 ? -static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v));
    if (digitos.size() <= decimales)
      digitos.insert(0, decimales + 1 - digitos.size(), '0');
    digitos.insert(digitos.size() - decimales, 1, '.');
    const std::string texto = (v < 0 ? "-" : "") + digitos;
    sqlite3_result_text(ctx, texto.c_str(), static_cast<int>(texto.size()), SQLITE_TRANSIENT);
  } catch (const CajaError& e) {
    sqlite3_result_error(ctx, e.description().c_str(), -1);
  }
}

std::string tipoDeclarado(sqlite3_stmt* st, int i) {
  const char* d = sqlite3_column_decltype(st, i);
  return d ? upperAscii(d) : std::string{};
}

Variant valorSegunAlmacen(sqlite3_stmt* st, int i) {
  switch (sqlite3_column_type(st, i)) {
    case SQLITE_INTEGER:
      return enteroComoVariant(sqlite3_column_int64(st, i));
    case SQLITE_FLOAT:
      return Variant(sqlite3_column_double(st, i));
    default:
      return Variant(std::string(reinterpret_cast<const char*>(sqlite3_column_text(st, i)),
                                 static_cast<std::size_t>(sqlite3_column_bytes(st, i))));
  }
}

// A column as the host's data layer would type it: from its declared type,
// or as an amount in units of 10^-(4 + escala) where the statement computes
// one (escala -1: none).
Variant leerColumna(sqlite3_stmt* st, int i, int escala) {
  const int almacen = sqlite3_column_type(st, i);
  if (almacen == SQLITE_NULL)
    return Variant::Null();
  const std::string tipo = tipoDeclarado(st, i);
  if (tipo == "MONEY" && escala < 0)
    escala = 0;
  if (escala >= 0 && (almacen == SQLITE_INTEGER || almacen == SQLITE_FLOAT))
    return Variant(monedaDeValor(sqlite3_column_value(st, i), escala));
  const Variant crudo = valorSegunAlmacen(st, i);
  if (tipo == "BIT")
    return Variant(CBool(crudo));
  if (tipo == "SMALLINT" && crudo.type() == VarType::Long)
    return Variant(CInt(crudo));
  if (tipo == "FLOAT" && crudo.type() != VarType::String)
    return Variant(CDbl(crudo));
  if (tipo == "DATETIME" && crudo.type() == VarType::String) {
    Fecha f;
    if (Fecha::parse(crudo.asString(), f))
      return Variant(f);
  }
  return crudo;
}

}  // namespace

struct SqliteFactoria::Preparada {
  sqlite3_stmt* st;
  SentenciaTipada tipos;
};

// Prepared statements not in use, by the component's text of them.
struct SqliteFactoria::Preparadas {
  std::unordered_map<std::string, Preparada> porTexto;
};

SqliteFactoria::SqliteFactoria() : preparadas_(std::make_unique<Preparadas>()) {}

// A prepared statement with its values bound, taken from the connection's
// cache of prepared statements and given back reset on destruction, also when
// binding fails part-way.
class SqliteFactoria::Sentencia {
 public:
  Sentencia(SqliteFactoria& host, const std::string& sql, const Argumentos& args)
      : host_(host), sql_(sql), args_(args), p_(host_.tomarPreparada(sql)), st_(p_.st) {
    const int enSentencia = sqlite3_bind_parameter_count(st_);
    try {
      if (static_cast<std::size_t>(enSentencia) > args.size()) {
        throw CajaError(kErrorBaseDatos, kFuente,
                        "Faltan valores para uno o mas parametros requeridos");
      }
      for (int i = 0; i < enSentencia; ++i)
        enlazar(i + 1, args[static_cast<std::size_t>(i)]);
    } catch (...) {
      host_.devolverPreparada(sql_, std::move(p_));
      throw;
    }
  }
  ~Sentencia() { host_.devolverPreparada(sql_, std::move(p_)); }
  Sentencia(const Sentencia&) = delete;
  Sentencia& operator=(const Sentencia&) = delete;

  bool paso() {
    const int rc = sqlite3_step(st_);
    if (rc == SQLITE_ROW)
      return true;
    if (rc != SQLITE_DONE)
      host_.fallar(args_);
    return false;
  }
  sqlite3_stmt* st() const { return st_; }
  Variant columna(int i) const {
    return leerColumna(st_, i, escalaDeColumna(p_.tipos, i, sqlite3_column_count(st_)));
  }

 private:
  bool marcaDinero(int i) const {
    const auto& marcas = p_.tipos.marcasDinero;
    return static_cast<std::size_t>(i) < marcas.size() && marcas[static_cast<std::size_t>(i)];
  }

  // A value the statement meets an amount with is bound in ten-thousandths;
  // an amount anywhere else meets a plain number (a count, a code), as on
  // the server, where it is numeric: bound as one, whole units as an
  // integer and a fraction as SQLite's own kind of number, never as text,
  // which SQLite orders above every number.
  void enlazar(int i, const Variant& v) {
    int rc = SQLITE_OK;
    if (marcaDinero(i - 1) && !v.isEmpty() && !v.isNull()) {
      rc = sqlite3_bind_int64(st_, i, CCur(v).raw());
      if (rc != SQLITE_OK)
        host_.fallar();
      return;
    }
    switch (v.type()) {
      case VarType::Empty:
      case VarType::Null:
        rc = sqlite3_bind_null(st_, i);
        break;
      case VarType::Boolean:
        rc = sqlite3_bind_int(st_, i, v.asBool() ? 1 : 0);
        break;
      case VarType::Integer:
        rc = sqlite3_bind_int(st_, i, v.asInteger());
        break;
      case VarType::Long:
        rc = sqlite3_bind_int(st_, i, v.asLong());
        break;
      case VarType::Double:
        rc = sqlite3_bind_double(st_, i, v.asDouble());
        break;
      case VarType::Currency: {
        const std::int64_t raw = v.asCurrency().raw();
        rc = raw % 10000 == 0 ? sqlite3_bind_int64(st_, i, raw / 10000)
                              : sqlite3_bind_double(st_, i, v.asCurrency().toDouble());
        break;
      }
      case VarType::Date: {
        const std::string texto = v.asDate().toIsoText();
        rc = sqlite3_bind_text(st_, i, texto.c_str(), static_cast<int>(texto.size()),
                               SQLITE_TRANSIENT);
        break;
      }
      case VarType::String:
        rc = sqlite3_bind_text(st_, i, v.asString().c_str(), static_cast<int>(v.asString().size()),
                               SQLITE_TRANSIENT);
        break;
      case VarType::Object:
        throw errorEjecucion(err::kTiposNoCoinciden);
    }
    if (rc != SQLITE_OK)
      host_.fallar();
  }

  SqliteFactoria& host_;
  const std::string& sql_;
  const Argumentos& args_;
  Preparada p_;
  sqlite3_stmt* st_;
};

// Kept by the component's own text, so that a statement met again is neither
// translated, typed nor prepared again.
SqliteFactoria::Preparada SqliteFactoria::tomarPreparada(const std::string& sql) {
  if (const auto it = preparadas_->porTexto.find(sql); it != preparadas_->porTexto.end()) {
    Preparada p = std::move(it->second);
    preparadas_->porTexto.erase(it);
    return p;
  }
  int marcas = 0;
  Preparada p{nullptr, tiparDinero(traducirSql(sql, kDialectoSqlite, marcas))};
  const std::string& texto = p.tipos.sql;
  const char* resto = nullptr;
  sqlite3_stmt*& st = p.st;
  const int rc =
      sqlite3_prepare_v2(db_, texto.c_str(), static_cast<int>(texto.size()), &st, &resto);
  if (rc != SQLITE_OK) {
    sqlite3_finalize(st);
    fallar();
  }
  if (resto && std::string_view(resto).find_first_not_of(" \t\r\n;") != std::string_view::npos) {
    sqlite3_finalize(st);
    throw CajaError(kErrorBaseDatos, kFuente, "Solo se admite una sentencia por llamada");
  }
  return p;
}

// Statements with spliced values differ in text each time; past a bound the
// cache starts afresh rather than grow without end.
void SqliteFactoria::devolverPreparada(const std::string& sql, Preparada p) {
  sqlite3_reset(p.st);
  sqlite3_clear_bindings(p.st);
  if (preparadas_->porTexto.size() >= kMaximoPreparadas)
    vaciarPreparadas();
  sqlite3_stmt* st = p.st;
  if (!preparadas_->porTexto.emplace(sql, std::move(p)).second)
    sqlite3_finalize(st);
}

void SqliteFactoria::vaciarPreparadas() {
  for (const auto& [texto, p] : preparadas_->porTexto)
    sqlite3_finalize(p.st);
  preparadas_->porTexto.clear();
}

std::shared_ptr<SqliteFactoria> SqliteFactoria::Abrir(const std::string& archivo) {
  std::shared_ptr<SqliteFactoria> host(new SqliteFactoria());
  host->abrir(archivo);
  return host;
}

void SqliteFactoria::abrir(const std::string& archivo) {
  // A new file is its owner's alone; SQLite gives its journal and WAL the
  // file's own mode. ":memory:" and URIs are left to SQLite.
  if (!archivo.empty() && archivo != ":memory:" && archivo.rfind("file:", 0) != 0)
    crearArchivoPrivado(archivo);
  if (sqlite3_open_v2(archivo.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
      SQLITE_OK) {
    const std::string mensaje = db_ ? sqlite3_errmsg(db_) : "sin memoria";
    throw CajaError(kErrorBaseDatos, kFuente, "No se pudo abrir " + archivo + ": " + mensaje);
  }
  sqlite3_extended_result_codes(db_, 1);
  sqlite3_busy_timeout(db_, kEsperaBloqueoMs);
  const int flags = SQLITE_UTF8 | SQLITE_DIRECTONLY;
  sqlite3_create_function(db_, "getdate", 0, flags, nullptr, fnGetdate, nullptr, nullptr);
  sqlite3_create_function(db_, "scope_identity", 0, flags, nullptr, fnScopeIdentity, nullptr,
                          nullptr);
  sqlite3_create_function(db_, "ident_current", 1, flags, &identidades_, fnIdentCurrent, nullptr,
                          nullptr);
  const int puras = flags | SQLITE_DETERMINISTIC;
  sqlite3_create_function(db_, "caja_diezmilesimas", 1, puras, nullptr, fnDiezmilesimas, nullptr,
                          nullptr);
  for (const int argumentos : {1, 2}) {
    sqlite3_create_function(db_, "caja_entero", argumentos, puras, nullptr, fnEntero, nullptr,
                            nullptr);
    sqlite3_create_function(db_, "caja_texto", argumentos, puras, nullptr, fnTexto, nullptr,
                            nullptr);
  }
  sqlite3_create_function(db_, "caja_redondear", 4, puras, nullptr, fnRedondear, nullptr, nullptr);
  sqlite3_create_function(db_, "caja_promedio", 4, puras, nullptr, nullptr, fnPromedioPaso,
                          fnPromedioFinal);
  sqlite3_update_hook(db_, anotarIdentidad, &identidades_);
  try {
    pasarAWal();
    ejecutarGuion("PRAGMA foreign_keys = ON");
    prepararEsquema();
  } catch (const CajaError& e) {
    throw CajaError(e.number(), kFuente, "No se pudo abrir " + archivo + ": " + e.description());
  }
}

// Making a new file WAL reads its header and then writes it, and SQLite does
// not wait for a lock between the two (waiting there could deadlock): a till
// that opens the same new file as another at that moment is told "locked" at
// once. It tries again for as long as it would wait for any other lock.
void SqliteFactoria::pasarAWal() {
  const auto limite =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(kEsperaBloqueoMs);
  while ((sqlite3_exec(db_, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr) & 0xff) ==
             SQLITE_BUSY &&
         std::chrono::steady_clock::now() < limite)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  if (sqlite3_errcode(db_) != SQLITE_OK)
    throw CajaError(kErrorBaseDatos, kFuente, sqlite3_errmsg(db_));
}

void SqliteFactoria::ejecutarGuion(const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string mensaje = error ? error : sqlite3_errmsg(db_);
    sqlite3_free(error);
    throw CajaError(kErrorBaseDatos, kFuente, mensaje);
  }
}

// Creates the schema, or brings an older one up to date, once: the version
// is read again under the write lock, so that tills opening the file together
// do the work only once. Version 0 kept money as floating point; versions 1
// to 6 lacked some of the host program's own tables and the decimal views,
// which creating the schema adds; so does a file of this version made before
// the embedding program added its tables (the last table tells).
void SqliteFactoria::prepararEsquema() {
  const std::string ultima(tablasEsquema().back().nombre);
  const auto completo = [&] {
    return CLng(ReadScalar("PRAGMA user_version")) == kVersionEsquema &&
           CLng(ReadScalar("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name = ?",
                           {ultima})) > 0;
  };
  if (completo())
    return;
  const bool anterior =
      CLng(ReadScalar("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND "
                      "name = 'MovimientosCaja'")) > 0;
  // Tables are rebuilt during the conversion; the references are checked again afterwards.
  if (anterior)
    ejecutarGuion("PRAGMA foreign_keys = OFF");
  BeginTrans();
  try {
    const long version = CLng(ReadScalar("PRAGMA user_version"));
    if (!completo()) {
      if (version == 0 && anterior)
        migrarDineroExacto();
      crearEsquema();
      ejecutarGuion("PRAGMA user_version = " + std::to_string(kVersionEsquema));
    }
    CommitTrans();
  } catch (...) {
    Rollback();
    throw;
  }
  ejecutarGuion("PRAGMA foreign_keys = ON");
}

void SqliteFactoria::crearEsquema() {
  for (const Tabla& t : tablasEsquema())
    ejecutarGuion(crearTabla(t, kDialectoSqlite));
  for (const auto& [tabla, columna] : columnasAgregadas())
    if (CLng(ReadScalar("SELECT COUNT(*) FROM pragma_table_info(?) WHERE name = ?",
                        {std::string(tabla), std::string(columna)})) == 0)
      ejecutarGuion(agregarColumna(tablaDelEsquema(tabla), columna, kDialectoSqlite));
  for (const Indice& i : indicesEsquema())
    ejecutarGuion(crearIndice(i));
  for (const Tabla& t : tablasEsquema())
    if (const std::string vista = crearVistaDecimal(t); !vista.empty())
      ejecutarGuion(vista);
}

// Schema version 0 kept money as floating point. Each of its tables is
// rebuilt with the checked integer columns and its rows copied over, money
// converted exactly; identities keep counting from where they were.
void SqliteFactoria::migrarDineroExacto() {
  for (const Tabla& t : tablasEsquema()) {
    const std::string nombre(t.nombre);
    if (CLng(ReadScalar("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name = ?",
                        {nombre})) == 0)
      continue;
    std::string columnas, valores;
    for (const Columna& c : t.columnas) {
      const std::string col(c.nombre);
      columnas += (columnas.empty() ? "" : ", ") + col;
      valores += (valores.empty() ? "" : ", ") +
                 (c.tipo == TipoColumna::Dinero ? "caja_diezmilesimas(" + col + ")" : col);
    }
    const Variant secuencia =
        ReadScalar("SELECT seq FROM sqlite_sequence WHERE name = ?", {nombre});
    ejecutarGuion(crearTabla(t, kDialectoSqlite, "caja_migrada"));
    ejecutarGuion("INSERT INTO caja_migrada (" + columnas + ") SELECT " + valores + " FROM " +
                  nombre);
    ejecutarGuion("DROP TABLE " + nombre);
    ejecutarGuion("ALTER TABLE caja_migrada RENAME TO " + nombre);
    if (!secuencia.isEmpty())
      ExecuteSQL("UPDATE sqlite_sequence SET seq = MAX(seq, ?) WHERE name = ?",
                 {secuencia, nombre});
  }
}

SqliteFactoria::~SqliteFactoria() {
  vaciarPreparadas();
  sqlite3_close_v2(db_);
}

void SqliteFactoria::fallar(const Argumentos& args) const {
  const int codigo = sqlite3_extended_errcode(db_);
  const std::string mensaje = sqlite3_errmsg(db_);
  if (codigo == SQLITE_CONSTRAINT_CHECK && mensaje.find("typeof(") != std::string::npos)
    throw errorFueraDeRango(kFuente, args);
  if (mensaje == "integer overflow")
    throw errorFueraDeRango(kFuente, args);
  if ((codigo & 0xff) == SQLITE_BUSY || (codigo & 0xff) == SQLITE_LOCKED)
    throw CajaError(kErrorConflicto, kFuente, "La base de datos está ocupada: " + mensaje);
  throw CajaError(kErrorBaseDatos, kFuente, mensaje);
}

long SqliteFactoria::ExecuteSQL(const std::string& sql, const Argumentos& args) {
  Sentencia s(*this, sql, args);
  while (s.paso()) {
  }
  return sqlite3_stmt_readonly(s.st()) ? 0 : sqlite3_changes(db_);
}

Variant SqliteFactoria::ReadScalar(const std::string& sql, const Argumentos& args) {
  Sentencia s(*this, sql, args);
  if (!s.paso())
    return Variant();
  return s.columna(0);
}

std::shared_ptr<Recordset> SqliteFactoria::openrecordset(const std::string& sql,
                                                         const Argumentos& args) {
  Sentencia s(*this, sql, args);
  const int n = sqlite3_column_count(s.st());
  std::vector<std::string> columnas;
  for (int i = 0; i < n; ++i)
    columnas.emplace_back(sqlite3_column_name(s.st(), i));
  std::vector<TablaRecordset::Fila> filas;
  while (s.paso()) {
    TablaRecordset::Fila fila;
    for (int i = 0; i < n; ++i)
      fila.push_back(s.columna(i));
    filas.push_back(std::move(fila));
  }
  return std::make_shared<TablaRecordset>(std::move(columnas), std::move(filas));
}

void SqliteFactoria::BeginTrans() {
  ExecuteSQL("BEGIN IMMEDIATE");
}
void SqliteFactoria::CommitTrans() {
  ExecuteSQL("COMMIT");
}
void SqliteFactoria::Rollback() {
  ExecuteSQL("ROLLBACK");
}

}  // namespace caja
