#pragma once

#include <memory>
#include <string>
#include <vector>

#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"
#include "caja/base/Variant.h"
#include "caja/service/ObjetosHost.h"
#include "caja/service/Recordset.h"

namespace caja {

using Argumentos = std::vector<Variant>;

// The host's service object. Every statement, scalar read, host object, user
// verification and icon of the component passes through it. SQL comes in the
// SQL Server dialect with '?' markers bound positionally to `args`; values
// beyond the markers are ignored. Failures raise CajaError.
class CAJA_EXPORT Factoria : public Objeto {
 public:
  // A new host object: "Empresa", "Instanciador" or "posExt"; raises for any other name.
  virtual std::shared_ptr<Objeto> CrearObjeto(const std::string& clase) = 0;
  // Runs a statement; returns the rows it affected.
  virtual long ExecuteSQL(const std::string& sql, const Argumentos& args = {}) = 0;
  // First column of the first row; Empty when there is no row.
  virtual Variant ReadScalar(const std::string& sql, const Argumentos& args = {}) = 0;
  virtual std::shared_ptr<Recordset> openrecordset(const std::string& sql,
                                                   const Argumentos& args = {}) = 0;
  // Text forms for splicing into SQL: numbers with '.', strings quoted with
  // their quotes doubled.
  virtual std::string NumeroDB(const Variant& numero) = 0;
  virtual std::string StringDB(const std::string& texto) = 0;
  virtual bool ExisteProcedimiento(const std::string& nombre,
                                   const std::shared_ptr<Objeto>& dueno) = 0;
  virtual void Log(const std::string& mensaje) = 0;
  // An authorisation level; 5 or more authorises.
  virtual Variant VerificarUsuario(const std::string& mensaje) = 0;
  virtual std::shared_ptr<Objeto> loadFileIcon(const std::string& archivo) = 0;
  // The till's exchange rate; 0 when not set.
  virtual double TipoCambioCaja() = 0;
  virtual std::shared_ptr<caja::TemaUI> TemaUI() = 0;

  // For hosts that make a save atomic; the component itself never calls them.
  virtual void BeginTrans() = 0;
  virtual void CommitTrans() = 0;
  virtual void Rollback() = 0;
};

// The host object `clase` as interface T; raises 13 when the host returns
// something else and 91 when it returns nothing.
template <class T>
std::shared_ptr<T> crearObjeto(Factoria& factoria, const std::string& clase) {
  return objetoDe<T>(Variant(factoria.CrearObjeto(clase)));
}

}  // namespace caja
