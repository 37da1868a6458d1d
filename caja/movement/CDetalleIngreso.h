#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/Collection.h"
#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Variant.h"
#include "caja/movement/CDetalleConfirmacion.h"
#include "caja/movement/CDetalleDenominacion.h"
#include "caja/service/Recordset.h"

namespace caja {

// One payment line of a cash movement: an amount paid with one method and the
// particulars that method demands. A plain value holder; it writes nothing.
class CAJA_EXPORT CDetalleIngreso : public Objeto {
 public:
  std::int32_t Id = 0;
  std::int32_t TransID = 0;
  std::string medio;
  Currency Monto;
  std::string IdTitular;
  std::string NumeroCuenta;
  std::string NumeroDocumento;
  std::string ClaveAutorizacion;
  std::string CodigoEmisor;
  Currency montoNominal;
  std::shared_ptr<Collection<CDetalleDenominacion>> Denominaciones =
      std::make_shared<Collection<CDetalleDenominacion>>();
  std::shared_ptr<CDetalleConfirmacion> DetalleConfirmacion;

  // The "<DIC>" text form, every line ended by CR LF. The track data is
  // blanked and Id, TransID and three confirmation fields are left out, by design.
  std::string Serialize() const;
  // Fills this line from the text form. A first line other than "<DIC>"
  // raises 10001 "Estructura invalida"; any later fault ends the reading
  // silently, keeping what was assigned. Denominations are appended.
  void Deserialize(const std::string& s);
  // A named value for report templates; false, buffers untouched, for an unknown name.
  bool EvalVar(const Variant& sVarID, Variant& vRetBuffer, Variant& sRetBuffer) const;
  std::string ToString() const;
  // Fills `pDest`, or this line, from a DetallesVarelta row, with its denominations.
  void loadInstance(Recordset& rs, CDetalleIngreso* pDest = nullptr);
  // Whether the issuer is registered for this line's method or already used by one of its lines.
  bool ExisteEmisor(const std::string& istrEmisor) const;
};

}  // namespace caja
