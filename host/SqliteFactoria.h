#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "service/Factoria.h"

struct sqlite3;
struct sqlite3_stmt;

namespace caja {

// Error number of a failed database statement: the one a host's data layer
// raises for an error in a command. The description is SQLite's message.
inline constexpr long kErrorBaseDatos = -2147217900;

// The embedded host: one SQLite file (WAL journal, foreign keys on) with the
// whole schema created on first open. The component's SQL Server dialect is
// kept as written: getdate(), scope_identity() and IDENT_CURRENT('T') are
// functions registered on the connection, and the token @@IDENTITY is the only
// text rewritten. Values are bound to '?' in order; surplus values are ignored.
class SqliteFactoria : public Factoria, public std::enable_shared_from_this<SqliteFactoria> {
 public:
  using Procedimiento = std::function<Variant(std::vector<Variant>& argumentos)>;

  // Opens or creates the file; raises kErrorBaseDatos when it cannot.
  static std::shared_ptr<SqliteFactoria> Abrir(const std::string& archivo);
  ~SqliteFactoria() override;
  SqliteFactoria(const SqliteFactoria&) = delete;
  SqliteFactoria& operator=(const SqliteFactoria&) = delete;

  std::shared_ptr<Objeto> CrearObjeto(const std::string& clase) override;
  long ExecuteSQL(const std::string& sql, const Argumentos& args = {}) override;
  Variant ReadScalar(const std::string& sql, const Argumentos& args = {}) override;
  std::shared_ptr<Recordset> openrecordset(const std::string& sql,
                                           const Argumentos& args = {}) override;
  std::string NumeroDB(const Variant& numero) override;
  std::string StringDB(const std::string& texto) override;
  bool ExisteProcedimiento(const std::string& nombre,
                           const std::shared_ptr<Objeto>& dueno) override;
  void Log(const std::string& mensaje) override;
  Variant VerificarUsuario(const std::string& mensaje) override;
  std::shared_ptr<Objeto> loadFileIcon(const std::string& archivo) override;
  double TipoCambioCaja() override;
  std::shared_ptr<caja::TemaUI> TemaUI() override;
  void BeginTrans() override;
  void CommitTrans() override;
  void Rollback() override;

  // What the program that embeds the component configures.
  void RegistrarProcedimiento(const std::string& nombre, Procedimiento procedimiento);
  void SetVerificador(std::function<Variant(const std::string&)> verificador);
  void SetCarpetaIconos(const std::string& carpeta);
  void SetTemaUI(std::shared_ptr<caja::TemaUI> tema);
  // Runs a procedure registered by the host; raises 438 for an unknown name.
  Variant EjecutarProcedimiento(const std::string& nombre, std::vector<Variant>& argumentos);

 private:
  SqliteFactoria() = default;
  class Sentencia;
  void abrir(const std::string& archivo);
  [[noreturn]] void fallar() const;

  sqlite3* db_ = nullptr;
  std::map<std::string, Procedimiento> procedimientos_;  // keys in lower case
  std::function<Variant(const std::string&)> verificador_;
  std::string carpetaIconos_;
  std::shared_ptr<caja::TemaUI> tema_ = std::make_shared<caja::TemaUI>();
};

}  // namespace caja
