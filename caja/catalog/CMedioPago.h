#pragma once

#include <cstdint>
#include <string>

#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"
#include "caja/base/Variant.h"
#include "caja/catalog/AtributosMedioPago.h"
#include "caja/catalog/ClaseIngresoSesion.h"
#include "caja/service/Recordset.h"

namespace caja {

// One payment method: a row of `MediosPago`. Plain values; no validation on
// assignment. Database errors reach the caller unchanged.
class CAJA_EXPORT CMedioPago : public Objeto {
 public:
  std::string codigo;
  std::string Descripcion;
  std::int32_t Atributos = 0;
  double PorcentajeRetencionEmisor = 0.0;
  // For foreign-currency methods this storage holds the exchange factor (see tipoCambio).
  double PorcentajeISLR = 0.0;
  std::string CuentaActivo;
  std::string CuentaComisiones;
  std::string BancoRelacionado;
  ClaseIngresoSesion Clase = ClaseIngresoSesion::Efectivo;
  std::string Titulo;
  std::string TextoAyuda;
  bool isMedioElectronico = false;
  std::int16_t posicion = 0;

  // The factor of a foreign-currency method, stored in `PorcentajeISLR`:
  // shops' existing MediosPago rows keep their rates in that column. Read as
  // 1.0 without a foreign-currency flag; written whatever the flags.
  double tipoCambio() const;
  void tipoCambio(double valor) { PorcentajeISLR = valor; }

  // National currency per unit of this method: the till's rate for foreign
  // cash, the own factor, or the own factor times the till's rate when indexed.
  double FactorCambio() const;

  // Copies the current row into `pDest`, or into this object; the recordset is
  // not moved. A Null in a text column raises.
  void loadInstance(Recordset& rs, CMedioPago* pDest = nullptr);
  // False, with this object unchanged, when there is no such code.
  bool load(const std::string& codigoMedio);
  // Updates the row, inserts it when the update touched none, then reloads.
  Variant ActualizarDescriptivos(const std::string& iCodigo, const std::string& iDescripcion,
                                 std::int32_t iAtributos, double iPorcentajeRetencionEmisor,
                                 double iPorcentajeISLR, const std::string& iCuentaActivo,
                                 const std::string& iCuentaComisiones,
                                 const std::string& iBancoRelacionado, std::int32_t iClaseIngreso,
                                 const std::string& ititulo, const std::string& iTextoAyuda,
                                 std::int16_t iPosicion, bool isElectron);
  // Asks whether to register the code, then runs the administration dialog on it.
  bool CreateNew(const std::string& iCodigo);
  // Raises 10001 and deletes nothing when stored payment lines use the method.
  void Eliminar(const std::string& sCodigo);
};

}  // namespace caja
