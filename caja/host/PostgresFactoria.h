#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "caja/base/Exporta.h"
#include "caja/host/HostSql.h"

struct pg_conn;
struct pg_result;

namespace caja {

// The server host: one connection to a PostgreSQL database, named by a libpq
// connection URI ("postgresql://USER@HOST:PORT/DBNAME"). The schema, with the
// functions getdate(), scope_identity() and ident_current(T) that the
// component's SQL Server dialect calls, is created on the first connection to
// an empty database. Identities are always this connection's own (the
// session's sequence values), so a till never reads another till's number.
// Money is NUMERIC(19,4), checked against the currency range, bound and read
// as exact decimal text. Text compares without regard to letter case.
class CAJA_EXPORT PostgresFactoria : public HostSql {
 public:
  // Connects; an unreachable server, refused credentials or a missing
  // database raise kErrorConexion with one line saying which.
  static std::shared_ptr<PostgresFactoria> Conectar(const std::string& uri);
  // Whether `texto` names a server rather than a file.
  static bool EsUri(const std::string& texto);
  // Whether the URI carries a password (after the user, or as ?password=).
  static bool LlevaContrasena(const std::string& uri);
  ~PostgresFactoria() override;
  PostgresFactoria(const PostgresFactoria&) = delete;
  PostgresFactoria& operator=(const PostgresFactoria&) = delete;

  long ExecuteSQL(const std::string& sql, const Argumentos& args = {}) override;
  Variant ReadScalar(const std::string& sql, const Argumentos& args = {}) override;
  std::shared_ptr<Recordset> openrecordset(const std::string& sql,
                                           const Argumentos& args = {}) override;
  void BeginTrans() override;
  void CommitTrans() override;
  void Rollback() override;
  // For hosts that never read what ExecuteSQL returns, such as the
  // component's save: the writes of a transaction may then wait. BEGIN and
  // each statement that answers only with a count (INSERT, UPDATE, DELETE
  // without RETURNING) go with the next statement that needs an answer (a
  // read, the COMMIT), all in one round trip and in their order; ExecuteSQL
  // returns 0 for them, and a failure of one is raised by that next
  // statement, before anything after it. Off unless asked for.
  void DiferirEscrituras(bool diferir) { diferir_ = diferir; }
  // In one round trip: BEGIN (repeatable read, read only), the reads,
  // COMMIT; inside the caller's transaction, the reads alone.
  std::vector<std::shared_ptr<Recordset>> LeerJuntas(
      const std::vector<std::pair<std::string, Argumentos>>& consultas) override;

 private:
  PostgresFactoria() = default;
  class Resultado;
  struct Preparada {
    std::string nombre;
    int marcas = 0;
  };
  static constexpr std::size_t kMaximoPreparadas = 256;
  void conectar(const std::string& uri);
  void prepararEsquema();
  std::vector<Resultado> viaje(const std::vector<std::pair<std::string, Argumentos>>& sentencias,
                               bool todos);
  pg_result* siguienteResultado();
  Resultado ejecutar(const std::string& sql, const Argumentos& args);
  static std::shared_ptr<Recordset> recordsetDe(const Resultado& r);
  [[noreturn]] void fallar(const pg_result* r, const Argumentos& args) const;

  pg_conn* conexion_ = nullptr;
  // Statements prepared on this connection, by the component's text of them
  // and the types of their values.
  std::unordered_map<std::string, Preparada> preparadas_;
  long nombradas_ = 0;
  // Statements of the open transaction not sent yet, while deferring.
  bool diferir_ = false, enTransaccion_ = false;
  std::vector<std::pair<std::string, Argumentos>> diferidas_;
};

}  // namespace caja
