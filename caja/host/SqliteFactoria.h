#pragma once

#include <map>
#include <memory>
#include <string>

#include "caja/base/Exporta.h"
#include "caja/host/HostSql.h"

struct sqlite3;
struct sqlite3_stmt;

namespace caja {

// The embedded host: one SQLite file (WAL journal, foreign keys on) with the
// whole schema created on first open. The component's SQL Server dialect is
// kept as written: getdate(), scope_identity() and IDENT_CURRENT('T') are
// functions registered on the connection, and @@IDENTITY is mapped to the
// connection's last rowid. Identities are always this connection's own. Values
// are bound to '?' in order; surplus values are ignored.
//
// Money is stored as integer ten-thousandths: bound from Currency and read
// back into it without a double, and a check on every money column refuses a
// value (or a sum) outside the currency range. Every statement is typed for
// amounts first (see tiparDinero), so that SQL written by hand reads and
// compares amounts as the server database does. Outside readers of the file
// have a view per table with amounts as decimal text ("v_<table>"). A file
// written with money as floating point (schema version 0) is converted once,
// on open.
class CAJA_EXPORT SqliteFactoria : public HostSql {
 public:
  // Schema version kept in PRAGMA user_version.
  static constexpr int kVersionEsquema = 7;

  // Opens or creates the file; raises kErrorBaseDatos when it cannot.
  static std::shared_ptr<SqliteFactoria> Abrir(const std::string& archivo);
  ~SqliteFactoria() override;
  SqliteFactoria(const SqliteFactoria&) = delete;
  SqliteFactoria& operator=(const SqliteFactoria&) = delete;

  long ExecuteSQL(const std::string& sql, const Argumentos& args = {}) override;
  Variant ReadScalar(const std::string& sql, const Argumentos& args = {}) override;
  std::shared_ptr<Recordset> openrecordset(const std::string& sql,
                                           const Argumentos& args = {}) override;
  // BEGIN IMMEDIATE: a till that wants to write waits for the others up front
  // rather than failing half-way through its save.
  void BeginTrans() override;
  void CommitTrans() override;
  void Rollback() override;

 private:
  SqliteFactoria();
  class Sentencia;
  // A prepared statement with the typing of its amounts, and the cache of
  // those not in use: both stay in the source, with the SQL reader.
  struct Preparada;
  struct Preparadas;
  static constexpr std::size_t kMaximoPreparadas = 128;
  Preparada tomarPreparada(const std::string& sql);
  void devolverPreparada(const std::string& sql, Preparada p);
  void vaciarPreparadas();
  void abrir(const std::string& archivo);
  void pasarAWal();
  void prepararEsquema();
  void crearEsquema();
  void migrarDineroExacto();
  void ejecutarGuion(const std::string& sql);
  [[noreturn]] void fallar(const Argumentos& args = {}) const;

  sqlite3* db_ = nullptr;
  std::unique_ptr<Preparadas> preparadas_;
  // The last identity this connection handed out per table (lower case).
  std::map<std::string, long long> identidades_;
};

}  // namespace caja
