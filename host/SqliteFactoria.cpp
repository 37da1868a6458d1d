#include "host/SqliteFactoria.h"

#include <sqlite3.h>

#include <limits>
#include <memory>

#include "base/CajaError.h"
#include "base/Conversiones.h"
#include "base/Texto.h"
#include "host/EsquemaSqlite.h"
#include "host/ObjetosSqlite.h"
#include "service/TablaRecordset.h"

namespace caja {

namespace {

constexpr const char* kFuente = "SqliteFactoria";
constexpr long kNoPuedeCrearObjeto = 429;

// "@@IDENTITY" outside string literals becomes last_insert_rowid(): the one
// construct of the dialect that is not a plain function call.
std::string reescribir(const std::string& sql) {
  static const std::string kToken = "@@identity";
  std::string r;
  bool enLiteral = false;
  for (std::size_t i = 0; i < sql.size(); ++i) {
    if (sql[i] == '\'')
      enLiteral = !enLiteral;
    if (!enLiteral && sql[i] == '@' &&
        equalsIgnoreCase(std::string_view(sql).substr(i, kToken.size()), kToken)) {
      r += "last_insert_rowid()";
      i += kToken.size() - 1;
    } else {
      r += sql[i];
    }
  }
  return r;
}

void fnGetdate(sqlite3_context* ctx, int, sqlite3_value**) {
  const std::string ahora = Fecha::now().toIsoText();
  sqlite3_result_text(ctx, ahora.c_str(), static_cast<int>(ahora.size()), SQLITE_TRANSIENT);
}

void fnScopeIdentity(sqlite3_context* ctx, int, sqlite3_value**) {
  sqlite3_result_int64(ctx, sqlite3_last_insert_rowid(sqlite3_context_db_handle(ctx)));
}

// The last identity handed out for a table, from any connection.
void fnIdentCurrent(sqlite3_context* ctx, int, sqlite3_value** argv) {
  sqlite3* db = sqlite3_context_db_handle(ctx);
  sqlite3_stmt* st = nullptr;
  if (sqlite3_prepare_v2(db, "SELECT seq FROM sqlite_sequence WHERE name = ?1 COLLATE NOCASE", -1,
                         &st, nullptr) != SQLITE_OK) {
    sqlite3_result_error(ctx, sqlite3_errmsg(db), -1);
    return;
  }
  sqlite3_bind_value(st, 1, argv[0]);
  if (sqlite3_step(st) == SQLITE_ROW) {
    sqlite3_result_int64(ctx, sqlite3_column_int64(st, 0));
  } else {
    sqlite3_result_null(ctx);
  }
  sqlite3_finalize(st);
}

std::string tipoDeclarado(sqlite3_stmt* st, int i) {
  const char* d = sqlite3_column_decltype(st, i);
  return d ? upperAscii(d) : std::string{};
}

Variant enteroComoVariant(sqlite3_int64 n) {
  if (n >= std::numeric_limits<std::int32_t>::min() &&
      n <= std::numeric_limits<std::int32_t>::max())
    return Variant(static_cast<std::int32_t>(n));
  return Variant(static_cast<double>(n));
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

// A column as the host's data layer would type it, from its declared type.
Variant leerColumna(sqlite3_stmt* st, int i) {
  if (sqlite3_column_type(st, i) == SQLITE_NULL)
    return Variant::Null();
  const std::string tipo = tipoDeclarado(st, i);
  const Variant crudo = valorSegunAlmacen(st, i);
  if (tipo == "MONEY")
    return Variant(CCur(crudo));
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

// A prepared statement with its values bound; finalized on destruction, also
// when binding fails part-way.
class SqliteFactoria::Sentencia {
 public:
  Sentencia(SqliteFactoria& host, const std::string& sql, const Argumentos& args) : host_(host) {
    const std::string texto = reescribir(sql);
    const char* resto = nullptr;
    sqlite3_stmt* st = nullptr;
    const int rc =
        sqlite3_prepare_v2(host_.db_, texto.c_str(), static_cast<int>(texto.size()), &st, &resto);
    st_.reset(st);
    if (rc != SQLITE_OK)
      host_.fallar();
    if (resto && std::string_view(resto).find_first_not_of(" \t\r\n;") != std::string_view::npos) {
      throw CajaError(kErrorBaseDatos, kFuente, "Solo se admite una sentencia por llamada");
    }
    const int marcas = sqlite3_bind_parameter_count(st);
    if (static_cast<std::size_t>(marcas) > args.size()) {
      throw CajaError(kErrorBaseDatos, kFuente,
                      "Faltan valores para uno o mas parametros requeridos");
    }
    for (int i = 0; i < marcas; ++i)
      enlazar(i + 1, args[static_cast<std::size_t>(i)]);
  }
  bool paso() {
    const int rc = sqlite3_step(st_.get());
    if (rc == SQLITE_ROW)
      return true;
    if (rc != SQLITE_DONE)
      host_.fallar();
    return false;
  }
  sqlite3_stmt* st() const { return st_.get(); }

 private:
  void enlazar(int i, const Variant& v) {
    int rc = SQLITE_OK;
    switch (v.type()) {
      case VarType::Empty:
      case VarType::Null:
        rc = sqlite3_bind_null(st_.get(), i);
        break;
      case VarType::Boolean:
        rc = sqlite3_bind_int(st_.get(), i, v.asBool() ? 1 : 0);
        break;
      case VarType::Integer:
        rc = sqlite3_bind_int(st_.get(), i, v.asInteger());
        break;
      case VarType::Long:
        rc = sqlite3_bind_int(st_.get(), i, v.asLong());
        break;
      case VarType::Double:
        rc = sqlite3_bind_double(st_.get(), i, v.asDouble());
        break;
      case VarType::Currency:
        rc = sqlite3_bind_double(st_.get(), i, v.asCurrency().toDouble());
        break;
      case VarType::Date: {
        const std::string texto = v.asDate().toIsoText();
        rc = sqlite3_bind_text(st_.get(), i, texto.c_str(), static_cast<int>(texto.size()),
                               SQLITE_TRANSIENT);
        break;
      }
      case VarType::String:
        rc = sqlite3_bind_text(st_.get(), i, v.asString().c_str(),
                               static_cast<int>(v.asString().size()), SQLITE_TRANSIENT);
        break;
      case VarType::Object:
        throw errorEjecucion(err::kTiposNoCoinciden);
    }
    if (rc != SQLITE_OK)
      host_.fallar();
  }

  SqliteFactoria& host_;
  std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> st_{nullptr, sqlite3_finalize};
};

std::shared_ptr<SqliteFactoria> SqliteFactoria::Abrir(const std::string& archivo) {
  std::shared_ptr<SqliteFactoria> host(new SqliteFactoria());
  host->abrir(archivo);
  return host;
}

void SqliteFactoria::abrir(const std::string& archivo) {
  if (sqlite3_open_v2(archivo.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
      SQLITE_OK) {
    const std::string mensaje = db_ ? sqlite3_errmsg(db_) : "sin memoria";
    throw CajaError(kErrorBaseDatos, kFuente, "No se pudo abrir " + archivo + ": " + mensaje);
  }
  sqlite3_busy_timeout(db_, 5000);
  const int flags = SQLITE_UTF8 | SQLITE_DIRECTONLY;
  sqlite3_create_function(db_, "getdate", 0, flags, nullptr, fnGetdate, nullptr, nullptr);
  sqlite3_create_function(db_, "scope_identity", 0, flags, nullptr, fnScopeIdentity, nullptr,
                          nullptr);
  sqlite3_create_function(db_, "ident_current", 1, flags, nullptr, fnIdentCurrent, nullptr,
                          nullptr);
  char* error = nullptr;
  const std::string arranque =
      std::string("PRAGMA journal_mode = WAL; PRAGMA foreign_keys = ON;") + kEsquemaSqlite;
  if (sqlite3_exec(db_, arranque.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string mensaje = error ? error : sqlite3_errmsg(db_);
    sqlite3_free(error);
    throw CajaError(kErrorBaseDatos, kFuente, "No se pudo abrir " + archivo + ": " + mensaje);
  }
}

SqliteFactoria::~SqliteFactoria() {
  sqlite3_close_v2(db_);
}

void SqliteFactoria::fallar() const {
  throw CajaError(kErrorBaseDatos, kFuente, sqlite3_errmsg(db_));
}

std::shared_ptr<Objeto> SqliteFactoria::CrearObjeto(const std::string& clase) {
  if (equalsIgnoreCase(clase, "Empresa"))
    return std::make_shared<EmpresaSqlite>(*this);
  if (equalsIgnoreCase(clase, "Instanciador"))
    return std::make_shared<InstanciadorSqlite>(shared_from_this());
  if (equalsIgnoreCase(clase, "posExt"))
    return std::make_shared<PosExtSqlite>(shared_from_this());
  throw CajaError(kNoPuedeCrearObjeto, kFuente, "No se puede crear el objeto " + clase);
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
  return leerColumna(s.st(), 0);
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
      fila.push_back(leerColumna(s.st(), i));
    filas.push_back(std::move(fila));
  }
  return std::make_shared<TablaRecordset>(std::move(columnas), std::move(filas));
}

std::string SqliteFactoria::NumeroDB(const Variant& numero) {
  if (numero.isNull())
    return "NULL";
  if (numero.type() == VarType::Boolean)
    return numero.asBool() ? "1" : "0";
  return toDecimal(numero).toMachineText();
}

std::string SqliteFactoria::StringDB(const std::string& texto) {
  return "'" + replaceAll(texto, "'", "''") + "'";
}

bool SqliteFactoria::ExisteProcedimiento(const std::string& nombre,
                                         const std::shared_ptr<Objeto>& /*dueno*/) {
  return procedimientos_.count(lowerAscii(nombre)) > 0;
}

void SqliteFactoria::Log(const std::string& mensaje) {
  ExecuteSQL("INSERT INTO hostLog (Fecha, Mensaje) VALUES (getdate(), ?)", {Variant(mensaje)});
}

Variant SqliteFactoria::VerificarUsuario(const std::string& mensaje) {
  return verificador_ ? verificador_(mensaje) : Variant(0);
}

std::shared_ptr<Objeto> SqliteFactoria::loadFileIcon(const std::string& archivo) {
  return std::make_shared<Imagen>(carpetaIconos_.empty() ? archivo
                                                         : carpetaIconos_ + "/" + archivo);
}

double SqliteFactoria::TipoCambioCaja() {
  const Variant tasa = ReadScalar("SELECT TipoCambioCaja FROM hostEmpresa WHERE id = 1");
  return tasa.isEmpty() || tasa.isNull() ? 0.0 : CDbl(tasa);
}

std::shared_ptr<caja::TemaUI> SqliteFactoria::TemaUI() {
  return tema_;
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

void SqliteFactoria::RegistrarProcedimiento(const std::string& nombre,
                                            Procedimiento procedimiento) {
  procedimientos_[lowerAscii(nombre)] = std::move(procedimiento);
}

void SqliteFactoria::SetVerificador(std::function<Variant(const std::string&)> verificador) {
  verificador_ = std::move(verificador);
}

void SqliteFactoria::SetCarpetaIconos(const std::string& carpeta) {
  carpetaIconos_ = carpeta;
}

void SqliteFactoria::SetTemaUI(std::shared_ptr<caja::TemaUI> tema) {
  tema_ = std::move(tema);
}

Variant SqliteFactoria::EjecutarProcedimiento(const std::string& nombre,
                                              std::vector<Variant>& argumentos) {
  auto it = procedimientos_.find(lowerAscii(nombre));
  if (it == procedimientos_.end())
    throw CajaError(err::kMetodoNoAdmitido, kFuente, "Procedimiento no definido: " + nombre);
  return it->second(argumentos);
}

}  // namespace caja
