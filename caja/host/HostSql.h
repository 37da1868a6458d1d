#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "caja/base/CajaError.h"
#include "caja/base/Exporta.h"
#include "caja/service/Factoria.h"

namespace caja {

// Error numbers of the substitute hosts, as a host's data layer raises them.
// A failed statement; the description is the database's message.
inline constexpr long kErrorBaseDatos = -2147217900;
// A conflict with another till that clears by itself: a lock held too long,
// a deadlock, a serialization failure. `EnTransaccion` retries the work.
inline constexpr long kErrorConflicto = -2147467259;
// The connection to the server was lost or could not be made.
inline constexpr long kErrorConexion = -2147217843;

// What the two substitute hosts (the embedded SQLite file and a PostgreSQL
// server) share: the host objects, quoting, the registered procedures, user
// verification, icons, the till's rate and theme, and the wrapped save. Each
// subclass supplies the statements themselves and the transaction verbs.
class CAJA_EXPORT HostSql : public Factoria, public std::enable_shared_from_this<HostSql> {
 public:
  using Procedimiento = std::function<Variant(std::vector<Variant>& argumentos)>;

  std::shared_ptr<Objeto> CrearObjeto(const std::string& clase) override;
  std::string NumeroDB(const Variant& numero) override;
  std::string StringDB(const std::string& texto) override;
  bool ExisteProcedimiento(const std::string& nombre,
                           const std::shared_ptr<Objeto>& dueno) override;
  void Log(const std::string& mensaje) override;
  Variant VerificarUsuario(const std::string& mensaje) override;
  std::shared_ptr<Objeto> loadFileIcon(const std::string& archivo) override;
  double TipoCambioCaja() override;
  std::shared_ptr<caja::TemaUI> TemaUI() override;

  // What the program that embeds the component configures.
  void RegistrarProcedimiento(const std::string& nombre, Procedimiento procedimiento);
  void SetVerificador(std::function<Variant(const std::string&)> verificador);
  void SetCarpetaIconos(const std::string& carpeta);
  void SetTemaUI(std::shared_ptr<caja::TemaUI> tema);
  // Runs a procedure registered by the host; raises 438 for an unknown name.
  Variant EjecutarProcedimiento(const std::string& nombre, std::vector<Variant>& argumentos);

  // Runs `trabajo` in one database transaction: all of it or nothing. When it
  // fails with kErrorConflicto the transaction is rolled back and the work
  // runs again from the start, at most `intentos` times in all; `antesDeReintentar`
  // lets the caller reset what the failed try left in memory. Any other error
  // rolls back and reaches the caller.
  void EnTransaccion(const std::function<void()>& trabajo,
                     const std::function<void()>& antesDeReintentar = {}, int intentos = 8);
  // The same, for work that is one statement and so its own transaction.
  void Reintentando(const std::function<void()>& trabajo,
                    const std::function<void()>& antesDeReintentar = {}, int intentos = 8);

  // Runs the reads in their order. A server host sends them in one round
  // trip and, outside a transaction of the caller's, in one read-only
  // transaction of their own, so that they see the data as of one moment;
  // each value's type then comes from its place in the statement. Here,
  // one after the other, in the caller's transaction if there is one.
  virtual std::vector<std::shared_ptr<Recordset>> LeerJuntas(
      const std::vector<std::pair<std::string, Argumentos>>& consultas);

 protected:
  HostSql() = default;

 private:
  std::map<std::string, Procedimiento> procedimientos_;  // keys in lower case
  std::function<Variant(const std::string&)> verificador_;
  std::string carpetaIconos_;
  std::shared_ptr<caja::TemaUI> tema_ = std::make_shared<caja::TemaUI>();
};

// A whole number read from a database: Long when it fits, Double beyond.
CAJA_EXPORT Variant enteroComoVariant(long long n);
// A database's exact decimal text ("-12.3456", "1e3" is not one) as currency,
// rounded to four places halves away from zero, as the server rounds a
// numeric into NUMERIC(19, 4); error 6 outside the currency range.
CAJA_EXPORT Currency monedaDeTexto(std::string_view texto);

// The error for a statement that would leave a money column outside the
// currency range, naming the amounts the statement was given.
CAJA_EXPORT CajaError errorFueraDeRango(const std::string& fuente, const Argumentos& args);

}  // namespace caja
