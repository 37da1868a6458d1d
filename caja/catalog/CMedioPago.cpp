#include "caja/catalog/CMedioPago.h"

#include <cstdlib>

#include "caja/base/Conversiones.h"
#include "caja/service/DialogosCaja.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja {

double CMedioPago::tipoCambio() const {
  return (Atributos & kMascaraMonedaExtranjera) != 0 ? PorcentajeISLR : 1.0;
}

double CMedioPago::FactorCambio() const {
  if (Clase == ClaseIngresoSesion::EfectivoME)
    return ObtenerTipoCambioCaja();
  if (Atributos & monedaExtranjera)
    return tipoCambio();
  if (Atributos & IndexadoMonedaExtranjera)
    return tipoCambio() * ObtenerTipoCambioCaja();
  return 1.0;
}

void CMedioPago::loadInstance(Recordset& rs, CMedioPago* pDest) {
  CMedioPago& d = pDest ? *pDest : *this;
  d.codigo = CStr(rs.Fields("Codigo"));
  d.Descripcion = CStr(rs.Fields("descripcion"));
  d.Atributos = CLng(rs.Fields("Atributos"));
  d.PorcentajeRetencionEmisor = CDbl(rs.Fields("PorcentajeRetencionEmisor"));
  d.PorcentajeISLR = CDbl(rs.Fields("PorcentajeISLR"));
  d.CuentaActivo = CStr(rs.Fields("CuentaActivo"));
  d.CuentaComisiones = CStr(rs.Fields("CuentaComisiones"));
  d.BancoRelacionado = CStr(rs.Fields("BancoRelacionado"));
  d.Clase = static_cast<ClaseIngresoSesion>(CLng(rs.Fields("Clase")));
  d.Titulo = CStr(rs.Fields("titulo"));
  d.TextoAyuda = CStr(rs.Fields("textoAyuda"));
  d.isMedioElectronico = CDbl(rs.Fields("isMedioElectronico")) != 0.0;
  d.posicion = CInt(rs.Fields("posicion"));
}

bool CMedioPago::load(const std::string& codigoMedio) {
  auto rs = factoria().openrecordset("SELECT * FROM MediosPago WHERE Codigo = " +
                                     factoria().StringDB(codigoMedio));
  const bool hallado = !rs->Eof();
  if (hallado)
    loadInstance(*rs, this);
  rs->Close();
  return hallado;
}

Variant CMedioPago::ActualizarDescriptivos(
    const std::string& iCodigo, const std::string& iDescripcion, std::int32_t iAtributos,
    double iPorcentajeRetencionEmisor, double iPorcentajeISLR, const std::string& iCuentaActivo,
    const std::string& iCuentaComisiones, const std::string& iBancoRelacionado,
    std::int32_t iClaseIngreso, const std::string& ititulo, const std::string& iTextoAyuda,
    std::int16_t iPosicion, bool isElectron) {
  // True is -1 in the host language; its absolute value stores 1.
  const auto electronico = static_cast<std::int16_t>(std::abs(CInt(Variant(isElectron))));
  const long filas = factoria().ExecuteSQL(
      "UPDATE MediosPago SET Descripcion = ?, Atributos = ?, PorcentajeRetencionEmisor = ?, "
      "PorcentajeISLR = ?, CuentaActivo = ?, CuentaComisiones = ?, BancoRelacionado = ?, Clase = "
      "?, "
      "titulo = ?, textoAyuda = ?, posicion = ?, isMedioElectronico = ? WHERE Codigo = ?",
      {iDescripcion, iAtributos, iPorcentajeRetencionEmisor, iPorcentajeISLR, iCuentaActivo,
       iCuentaComisiones, iBancoRelacionado, iClaseIngreso, ititulo, iTextoAyuda, iPosicion,
       electronico, iCodigo});
  if (filas == 0) {
    // Fourteen values for thirteen markers: hosts that record each call's
    // arguments see the trailing code they always saw; binding ignores it.
    factoria().ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Descripcion, Atributos, PorcentajeRetencionEmisor, "
        "PorcentajeISLR, CuentaActivo, CuentaComisiones, BancoRelacionado, Clase, titulo, "
        "textoAyuda, posicion, isMedioElectronico) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        {iCodigo, iDescripcion, iAtributos, iPorcentajeRetencionEmisor, iPorcentajeISLR,
         iCuentaActivo, iCuentaComisiones, iBancoRelacionado, iClaseIngreso, ititulo, iTextoAyuda,
         iPosicion, electronico, iCodigo});
  }
  load(iCodigo);
  return Variant();
}

bool CMedioPago::CreateNew(const std::string& iCodigo) {
  if (!hostUtil().Preguntar("Desea registrar el medio de pago " + iCodigo))
    return false;
  std::int16_t contexto = 3;
  dialogosCaja().DefinirMedioPagoNuevo(iCodigo, contexto);
  load(iCodigo);
  return contexto != 0;
}

void CMedioPago::Eliminar(const std::string& sCodigo) {
  const std::int32_t usos = CLng(factoria().ReadScalar(
      "SELECT COUNT(*) FROM DetallesVarelta WHERE Medio = " + factoria().StringDB(sCodigo)));
  if (usos > 0) {
    throw CajaError(err::kErrorComponente, "CMedioPago::Eliminar",
                    "Hay movimientos con el medio seleccionado: eliminacion no permitida");
  }
  factoria().ExecuteSQL("DELETE FROM MediosPago WHERE Codigo = " + factoria().StringDB(sCodigo));
}

}  // namespace caja
