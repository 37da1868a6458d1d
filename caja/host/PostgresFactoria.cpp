#include "caja/host/PostgresFactoria.h"

#include <libpq-fe.h>

#include <charconv>
#include <cstring>
#include <memory>

#include "caja/base/CajaError.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/host/DialectoSql.h"
#include "caja/service/TablaRecordset.h"

namespace caja {

namespace {

constexpr const char* kFuente = "PostgresFactoria";

// Type identifiers of the built-in types the schema uses (pg_type.oid).
constexpr Oid kBool = 16, kInt8 = 20, kInt2 = 21, kInt4 = 23, kText = 25, kFloat4 = 700,
              kFloat8 = 701, kDate = 1082, kTime = 1083, kTimestamp = 1114, kNumeric = 1700;

// A key of its own so that two tills connecting to an empty database for the
// first time do not both create the schema.
constexpr std::int32_t kCerrojoEsquema = 0x63616a61;

// The SQL Server functions the component calls, as the server's own. Each
// reads this session's sequences only; with none yet they answer NULL, as
// SQL Server does.
const char* const kFunciones[] = {
    "CREATE COLLATION IF NOT EXISTS caja_ci "
    "(provider = icu, locale = 'und-u-ks-level2', deterministic = false)",
    "CREATE OR REPLACE FUNCTION getdate() RETURNS timestamp(0) LANGUAGE sql VOLATILE "
    "AS $$ SELECT clock_timestamp()::timestamp(0) $$",
    "CREATE OR REPLACE FUNCTION scope_identity() RETURNS bigint LANGUAGE plpgsql VOLATILE "
    "AS $$ BEGIN RETURN lastval(); "
    "EXCEPTION WHEN object_not_in_prerequisite_state THEN RETURN NULL; END $$",
    "CREATE OR REPLACE FUNCTION ident_current(tabla text) RETURNS bigint LANGUAGE plpgsql "
    "VOLATILE AS $$ DECLARE secuencia text; BEGIN "
    "SELECT pg_get_serial_sequence(c.oid::regclass::text, a.attname) INTO secuencia "
    "FROM pg_class c JOIN pg_attribute a ON a.attrelid = c.oid "
    "WHERE c.relname = lower(tabla) AND c.relnamespace = current_schema()::regnamespace "
    "AND a.attidentity <> ''; "
    "IF secuencia IS NULL THEN RETURN NULL; END IF; RETURN currval(secuencia); "
    "EXCEPTION WHEN object_not_in_prerequisite_state THEN RETURN NULL; END $$",
};

std::string primeraLinea(const std::string& texto) {
  const std::string linea = texto.substr(0, texto.find('\n'));
  const auto inicio = linea.find_first_not_of(' ');
  return inicio == std::string::npos ? std::string{} : linea.substr(inicio);
}

// The URI as it may be shown: without its password.
std::string uriVisible(std::string uri) {
  if (const auto consulta = uri.find('?');
      consulta != std::string::npos && uri.find("password", consulta) != std::string::npos)
    uri.erase(consulta);
  const auto esquema = uri.find("://");
  const auto arroba = uri.find('@');
  if (esquema == std::string::npos || arroba == std::string::npos)
    return uri;
  const auto dosPuntos = uri.find(':', esquema + 3);
  if (dosPuntos == std::string::npos || dosPuntos > arroba)
    return uri;
  return uri.substr(0, dosPuntos) + uri.substr(arroba);
}

bool contiene(const std::string& texto, std::initializer_list<const char*> partes) {
  for (const char* p : partes)
    if (texto.find(p) != std::string::npos)
      return true;
  return false;
}

// Why a connection failed, in the cashier's words, from libpq's message
// (in English, or in Spanish where the server or the client speak it).
std::string motivoDeConexion(const std::string& mensaje) {
  if (contiene(mensaje, {"database", "base de datos"}) &&
      contiene(mensaje, {"does not exist", "no existe"}))
    return "la base de datos no existe";
  if (contiene(mensaje, {"authentication", "password", "autentificación", "contraseña"}) ||
      (contiene(mensaje, {"role", "rol"}) && contiene(mensaje, {"does not exist", "no existe"})))
    return "usuario o contraseña rechazados";
  if (contiene(mensaje, {"Connection refused", "could not translate host name", "timeout",
                         "No such file or directory", "Conexión rehusada", "No existe el archivo",
                         "no se pudo traducir el nombre", "expiró"}))
    return "el servidor no responde";
  return primeraLinea(mensaje);
}

std::string textoDeDouble(double d) {
  char buf[64];
  const auto [fin, ec] = std::to_chars(buf, buf + sizeof buf, d);
  return ec == std::errc() ? std::string(buf, fin) : std::string("NaN");
}

// A value as libpq's text format takes it; nullopt is SQL NULL.
std::optional<std::string> textoParametro(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Null:
      return std::nullopt;
    case VarType::Boolean:
      return v.asBool() ? "1" : "0";
    case VarType::Integer:
      return std::to_string(v.asInteger());
    case VarType::Long:
      return std::to_string(v.asLong());
    case VarType::Double:
      return textoDeDouble(v.asDouble());
    case VarType::Currency:
      return v.asCurrency().toMachineText();
    case VarType::Date:
      return v.asDate().toIsoText();
    case VarType::String:
      return v.asString();
    case VarType::Object:
      break;
  }
  throw errorEjecucion(err::kTiposNoCoinciden);
}

// The server's type for a value bound to a placeholder. A number with a
// fraction is always typed by its value: left to the context, `? * 2` would
// be an integer and 0.5 refused. Any other value is typed only when the
// context gives the placeholder no type (`-?`), `todos`, which outside a
// transaction is tried once the server has said so; otherwise the context's
// type (a date, a flag, a text column) reads its text.
Oid tipoDeValor(const Variant& v, bool todos) {
  switch (v.type()) {
    case VarType::Currency:
      return kNumeric;
    case VarType::Double:
      return kFloat8;
    case VarType::Integer:
    case VarType::Long:
      return todos ? kInt4 : 0;
    case VarType::Boolean:
      return todos ? kBool : 0;
    case VarType::String:
      return todos ? kText : 0;
    case VarType::Date:
      return todos ? kTimestamp : 0;
    default:
      return 0;
  }
}

std::vector<Oid> tiposDeValores(const Argumentos& args, int marcas, bool todos) {
  std::vector<Oid> tipos;
  for (int i = 0; i < marcas; ++i)
    tipos.push_back(static_cast<std::size_t>(i) < args.size()
                        ? tipoDeValor(args[static_cast<std::size_t>(i)], todos)
                        : 0);
  return tipos;
}

// The statement's text and the types its values give it: one prepared
// statement for each.
std::string claveDePreparada(const std::string& sql, const Argumentos& args) {
  std::string clave = sql;
  clave += '\0';
  for (const Variant& v : args)
    clave += std::to_string(tipoDeValor(v, true)) + ',';
  return clave;
}

bool sinTipo(const PGresult* r) {
  const char* sqlstate = PQresultErrorField(r, PG_DIAG_SQLSTATE);
  const std::string codigo = sqlstate ? sqlstate : "";
  return codigo == "42P18" || codigo == "42725";  // indeterminate type, ambiguous operator
}

Variant fechaDeTexto(const std::string& texto) {
  Fecha f;
  // A fraction of a second or a zone is never written by the component.
  if (Fecha::parse(texto.substr(0, 19), f))
    return Variant(f);
  return Variant(texto);
}

// A column value as the host's data layer would type it, from the server's type.
Variant valorDeColumna(Oid tipo, const std::string& texto) {
  switch (tipo) {
    case kBool:
      return Variant(texto == "t");
    case kInt2:
      return Variant(static_cast<std::int16_t>(std::stoi(texto)));
    case kInt4:
      return Variant(static_cast<std::int32_t>(std::stol(texto)));
    case kInt8:
      return enteroComoVariant(std::stoll(texto));
    case kFloat4:
    case kFloat8: {
      double d = 0;
      std::from_chars(texto.data(), texto.data() + texto.size(), d);
      return Variant(d);
    }
    case kNumeric:
      return Variant(monedaDeTexto(texto));
    case kDate:
    case kTime:
    case kTimestamp:
      return fechaDeTexto(texto);
    default:
      return Variant(texto);
  }
}

}  // namespace

// The result of one statement, cleared on destruction.
class PostgresFactoria::Resultado {
 public:
  explicit Resultado(PGresult* r) : r_(r, PQclear) {}
  PGresult* get() const { return r_.get(); }
  int filas() const { return PQntuples(r_.get()); }
  int columnas() const { return PQnfields(r_.get()); }
  Variant valor(int fila, int columna) const {
    if (PQgetisnull(r_.get(), fila, columna))
      return Variant::Null();
    return valorDeColumna(PQftype(r_.get(), columna), PQgetvalue(r_.get(), fila, columna));
  }

 private:
  std::unique_ptr<PGresult, decltype(&PQclear)> r_;
};

bool PostgresFactoria::EsUri(const std::string& texto) {
  return texto.rfind("postgresql://", 0) == 0 || texto.rfind("postgres://", 0) == 0;
}

bool PostgresFactoria::LlevaContrasena(const std::string& uri) {
  PQconninfoOption* opciones = PQconninfoParse(uri.c_str(), nullptr);
  bool lleva = false;
  for (auto* o = opciones; o && o->keyword; ++o)
    lleva = lleva || (std::string_view(o->keyword) == "password" && o->val && *o->val);
  PQconninfoFree(opciones);
  return lleva;
}

std::shared_ptr<PostgresFactoria> PostgresFactoria::Conectar(const std::string& uri) {
  std::shared_ptr<PostgresFactoria> host(new PostgresFactoria());
  host->conectar(uri);
  return host;
}

void PostgresFactoria::conectar(const std::string& uri) {
  // Defaults first: what the URI says overrides them. A link whose packets
  // vanish is given up after 3 s to connect and 5 s of unacknowledged data,
  // so that a till sells on its journal instead of waiting on the network.
  const char* claves[] = {"connect_timeout", "tcp_user_timeout", "application_name", "dbname",
                          nullptr};
  const char* valores[] = {"3", "5000", "caja", uri.c_str(), nullptr};
  conexion_ = PQconnectdbParams(claves, valores, 1);
  if (!conexion_ || PQstatus(conexion_) != CONNECTION_OK) {
    const std::string mensaje = conexion_ ? PQerrorMessage(conexion_) : "sin memoria";
    throw CajaError(kErrorConexion, kFuente,
                    "No se pudo conectar con la base de datos " + uriVisible(uri) + ": " +
                        motivoDeConexion(mensaje));
  }
  ExecuteSQL("SET client_min_messages = warning");
  prepararEsquema();
}

// Creates the schema in an empty database once; the last table of the schema
// tells that the rest is there, since all of it is created in one transaction.
// The program's functions are checked too: a database made before one of them
// gets them.
void PostgresFactoria::prepararEsquema() {
  const std::string ultima = lowerAscii(tablasEsquema().back().nombre);
  const std::string& testigo = testigoPrograma();
  const std::string existe =
      "SELECT to_regclass(?) IS NOT NULL" +
      (testigo.empty() ? std::string()
                       : " AND to_regprocedure(" + StringDB(testigo) + ") IS NOT NULL");
  if (CBool(ReadScalar(existe, {ultima})))
    return;
  BeginTrans();
  try {
    ReadScalar("SELECT pg_advisory_xact_lock(?)", {Variant(kCerrojoEsquema)});
    if (!CBool(ReadScalar(existe, {ultima}))) {
      for (const char* f : kFunciones)
        ExecuteSQL(f);
      for (const char* f : funcionesPrograma())
        ExecuteSQL(f);
      for (const Tabla& t : tablasEsquema())
        ExecuteSQL(crearTabla(t, kDialectoPostgres));
      for (const auto& [tabla, columna] : columnasAgregadas())
        ExecuteSQL(agregarColumna(tablaDelEsquema(tabla), columna, kDialectoPostgres));
      for (const Indice& i : indicesEsquema())
        ExecuteSQL(crearIndice(i));
    }
    CommitTrans();
  } catch (...) {
    Rollback();
    throw;
  }
}

PostgresFactoria::~PostgresFactoria() {
  PQfinish(conexion_);
}

namespace {

bool fallido(const PGresult* r) {
  const auto estado = PQresultStatus(r);
  return estado != PGRES_COMMAND_OK && estado != PGRES_TUPLES_OK;
}

// A statement that answers only with a count of rows.
bool esEscritura(const std::string& sql) {
  const std::string texto = lowerAscii(sql);
  const auto inicio = texto.find_first_not_of(" \t\r\n");
  if (inicio == std::string::npos || texto.find("returning") != std::string::npos)
    return false;
  for (const char* verbo : {"insert", "update", "delete"})
    if (texto.compare(inicio, std::strlen(verbo), verbo) == 0)
      return true;
  return false;
}

// The statement's values as libpq's text format takes them; a statement
// with more placeholders than values is refused before anything is sent.
std::vector<std::optional<std::string>> valoresDe(int marcas, const Argumentos& args) {
  if (static_cast<std::size_t>(marcas) > args.size())
    throw CajaError(kErrorBaseDatos, kFuente,
                    "Faltan valores para uno o mas parametros requeridos");
  std::vector<std::optional<std::string>> textos;
  for (int j = 0; j < marcas; ++j)
    textos.push_back(textoParametro(args[static_cast<std::size_t>(j)]));
  return textos;
}

// A statement of a flight, with its values as libpq's text format takes
// them (null pointers for SQL NULL).
struct Paso {
  std::string clave, texto;
  bool nueva = false;
  std::vector<std::optional<std::string>> textos;
  std::vector<const char*> valores;
};

}  // namespace

// Each statement is prepared once per connection and kind of values, under
// a name of its own, so that the server parses and plans it once; past a
// bound the connection's statements are dropped and prepared afresh. A
// statement not prepared yet is prepared and run in the same flight
// (libpq's pipeline mode), and so are several statements sent together:
// one round trip for all of them.
std::vector<PostgresFactoria::Resultado> PostgresFactoria::viaje(
    const std::vector<std::pair<std::string, Argumentos>>& sentencias, bool todos) {
  if (preparadas_.size() + sentencias.size() > kMaximoPreparadas) {
    Resultado r(PQexec(conexion_, "DEALLOCATE ALL"));
    preparadas_.clear();
  }
  std::vector<Paso> pasos(sentencias.size());
  std::vector<Preparada> nuevas(sentencias.size());
  // A statement twice in one flight is prepared by the first.
  std::unordered_map<std::string, std::size_t> enVuelo;
  for (std::size_t i = 0; i < sentencias.size(); ++i) {
    const auto& [sql, args] = sentencias[i];
    Paso& paso = pasos[i];
    paso.clave = claveDePreparada(sql, args);
    if (const auto it = preparadas_.find(paso.clave); it != preparadas_.end()) {
      nuevas[i] = it->second;
    } else if (const auto previa = enVuelo.find(paso.clave); previa != enVuelo.end()) {
      nuevas[i] = nuevas[previa->second];
    } else {
      paso.nueva = true;
      paso.texto = traducirSql(sql, kDialectoPostgres, nuevas[i].marcas);
      nuevas[i].nombre = "caja" + std::to_string(++nombradas_);
      enVuelo.emplace(paso.clave, i);
    }
    paso.textos = valoresDe(nuevas[i].marcas, args);
    for (const auto& t : paso.textos)
      paso.valores.push_back(t ? t->c_str() : nullptr);
  }
  PQenterPipelineMode(conexion_);
  for (std::size_t i = 0; i < pasos.size(); ++i) {
    const Preparada& p = nuevas[i];
    if (pasos[i].nueva) {
      const std::vector<Oid> tipos = tiposDeValores(sentencias[i].second, p.marcas, todos);
      PQsendPrepare(conexion_, p.nombre.c_str(), pasos[i].texto.c_str(), p.marcas, tipos.data());
    }
    PQsendQueryPrepared(conexion_, p.nombre.c_str(), p.marcas, pasos[i].valores.data(), nullptr,
                        nullptr, 0);
  }
  PQpipelineSync(conexion_);
  std::vector<Resultado> resultados;
  for (std::size_t i = 0; i < pasos.size(); ++i) {
    if (pasos[i].nueva) {
      Resultado preparacion(siguienteResultado());
      if (fallido(preparacion.get())) {
        // Its run was skipped: the failed preparation says why.
        Resultado omitido(siguienteResultado());
        resultados.push_back(std::move(preparacion));
        continue;
      }
      preparadas_.emplace(pasos[i].clave, nuevas[i]);
    }
    resultados.emplace_back(siguienteResultado());
  }
  for (PGresult* r; (r = PQgetResult(conexion_)) != nullptr;) {
    const bool sincronizado = PQresultStatus(r) == PGRES_PIPELINE_SYNC;
    PQclear(r);
    if (sincronizado)
      break;
  }
  PQexitPipelineMode(conexion_);
  return resultados;
}

// The result of the next statement of a flight, and past the end of it.
PGresult* PostgresFactoria::siguienteResultado() {
  PGresult* r = PQgetResult(conexion_);
  if (r)
    while (PGresult* mas = PQgetResult(conexion_))
      PQclear(mas);
  return r;
}

// Sends the statement after those waiting, in one flight; the first that
// failed raises its error.
PostgresFactoria::Resultado PostgresFactoria::ejecutar(const std::string& sql,
                                                       const Argumentos& args) {
  std::vector<std::pair<std::string, Argumentos>> sentencias;
  sentencias.swap(diferidas_);
  sentencias.emplace_back(sql, args);
  std::vector<Resultado> r = viaje(sentencias, false);
  // A value whose type the context does not give (`-?`) is typed by the
  // value once the server has said so; inside a transaction the failed
  // attempt has already aborted it.
  if (r.size() == 1 && fallido(r.front().get()) && sinTipo(r.front().get()) &&
      PQtransactionStatus(conexion_) == PQTRANS_IDLE)
    r = viaje(sentencias, true);
  for (std::size_t i = 0; i < r.size(); ++i)
    if (fallido(r[i].get()))
      fallar(r[i].get(), sentencias[i].second);
  return std::move(r.back());
}

std::vector<std::shared_ptr<Recordset>> PostgresFactoria::LeerJuntas(
    const std::vector<std::pair<std::string, Argumentos>>& consultas) {
  // Inside the caller's transaction a COMMIT of this flight would end it;
  // there each read goes in turn, after what waits.
  if (enTransaccion_ || PQtransactionStatus(conexion_) != PQTRANS_IDLE)
    return HostSql::LeerJuntas(consultas);
  std::vector<std::pair<std::string, Argumentos>> sentencias{
      {"BEGIN ISOLATION LEVEL REPEATABLE READ, READ ONLY", {}}};
  sentencias.insert(sentencias.end(), consultas.begin(), consultas.end());
  sentencias.push_back({"COMMIT", {}});
  std::vector<Resultado> r = viaje(sentencias, false);
  for (std::size_t i = 0; i < r.size(); ++i)
    if (fallido(r[i].get())) {
      if (PQtransactionStatus(conexion_) == PQTRANS_INERROR)
        Resultado(PQexec(conexion_, "ROLLBACK"));
      fallar(r[i].get(), sentencias[i].second);
    }
  std::vector<std::shared_ptr<Recordset>> lecturas;
  for (std::size_t i = 1; i <= consultas.size(); ++i)
    lecturas.push_back(recordsetDe(r[i]));
  return lecturas;
}

void PostgresFactoria::fallar(const PGresult* r, const Argumentos& args) const {
  const char* sqlstate = PQresultErrorField(r, PG_DIAG_SQLSTATE);
  const std::string codigo = sqlstate ? sqlstate : "";
  const char* primario = PQresultErrorField(r, PG_DIAG_MESSAGE_PRIMARY);
  const std::string mensaje = primario ? primario : primeraLinea(PQerrorMessage(conexion_));
  if (PQstatus(conexion_) == CONNECTION_BAD || codigo.rfind("08", 0) == 0 ||
      codigo.rfind("57P", 0) == 0)
    throw CajaError(kErrorConexion, kFuente,
                    "Se perdió la conexión con la base de datos: " + mensaje);
  if (codigo == "23514" || codigo == "22003")
    throw errorFueraDeRango(kFuente, args);
  // The server's own words are English; what they mean, for a till's login
  // that its role does not let do something, is said in Spanish.
  if (codigo == "42501" && mensaje.rfind("permission denied", 0) == 0)
    throw CajaError(kErrorBaseDatos, kFuente,
                    "Este usuario del servidor no tiene permiso para hacerlo (" + mensaje +
                        "): lo hace el administrador de la tienda");
  // Another till got there first: a deadlock, a serialization failure, or the
  // same new key (an issuer) inserted by both. The wrapped save runs again.
  if (codigo == "40001" || codigo == "40P01" || codigo == "55P03" || codigo == "23505")
    throw CajaError(kErrorConflicto, kFuente, mensaje);
  throw CajaError(kErrorBaseDatos, kFuente, mensaje);
}

long PostgresFactoria::ExecuteSQL(const std::string& sql, const Argumentos& args) {
  if (diferir_ && enTransaccion_ && esEscritura(sql)) {
    // What the statement lacks is said now, not when it is sent.
    int marcas = 0;
    traducirSql(sql, kDialectoPostgres, marcas);
    valoresDe(marcas, args);
    diferidas_.emplace_back(sql, args);
    return 0;
  }
  const Resultado r = ejecutar(sql, args);
  if (PQresultStatus(r.get()) == PGRES_TUPLES_OK)
    return 0;
  const char* n = PQcmdTuples(r.get());
  return n && *n ? std::atol(n) : 0;
}

Variant PostgresFactoria::ReadScalar(const std::string& sql, const Argumentos& args) {
  const Resultado r = ejecutar(sql, args);
  if (r.filas() == 0 || r.columnas() == 0)
    return Variant();
  return r.valor(0, 0);
}

std::shared_ptr<Recordset> PostgresFactoria::openrecordset(const std::string& sql,
                                                           const Argumentos& args) {
  return recordsetDe(ejecutar(sql, args));
}

std::shared_ptr<Recordset> PostgresFactoria::recordsetDe(const Resultado& r) {
  std::vector<std::string> columnas;
  for (int j = 0; j < r.columnas(); ++j)
    columnas.emplace_back(PQfname(r.get(), j));
  std::vector<TablaRecordset::Fila> filas;
  for (int i = 0; i < r.filas(); ++i) {
    TablaRecordset::Fila fila;
    for (int j = 0; j < r.columnas(); ++j)
      fila.push_back(r.valor(i, j));
    filas.push_back(std::move(fila));
  }
  return std::make_shared<TablaRecordset>(std::move(columnas), std::move(filas));
}

void PostgresFactoria::BeginTrans() {
  if (diferir_)
    diferidas_.emplace_back("BEGIN", Argumentos{});
  else
    ExecuteSQL("BEGIN");
  enTransaccion_ = true;
}
// A transaction that failed part-way answers COMMIT with a rollback; the
// caller must hear that nothing was saved.
void PostgresFactoria::CommitTrans() {
  enTransaccion_ = false;
  const Resultado r = ejecutar("COMMIT", {});
  if (std::string_view(PQcmdStatus(r.get())) == "ROLLBACK")
    throw CajaError(kErrorBaseDatos, kFuente, "La transacción fue revertida: no se guardó nada");
}
// What waits is dropped unsent: the server never began what it undoes.
void PostgresFactoria::Rollback() {
  enTransaccion_ = false;
  diferidas_.clear();
  if (PQtransactionStatus(conexion_) != PQTRANS_IDLE)
    ExecuteSQL("ROLLBACK");
}

}  // namespace caja
