#include "caja/movement/TempVarelta.h"

#include "caja/base/Conversiones.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja {

namespace {

std::int32_t idDeClave(const std::string& clave) {
  return CLng(factoria().ReadScalar("SELECT id FROM saveMovsCaja WHERE clave = ?", {clave}));
}

void registrarEmisor(const CDetalleIngreso& d) {
  factoria().ExecuteSQL(
      "INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) SELECT ?, ? WHERE NOT "
      "Exists(SELECT * FROM generalEmisores WHERE TipoDocumento = ? AND CodigoEmisor = ?)",
      {d.medio, d.CodigoEmisor, d.medio, d.CodigoEmisor});
}

std::shared_ptr<CDetalleIngreso> lineaGuardada(Recordset& rs) {
  auto d = std::make_shared<CDetalleIngreso>();
  d->Id = NzLong(rs.Fields("Id"));
  d->ClaveAutorizacion = NzTexto(rs.Fields("ClaveAutorizacion"));
  d->CodigoEmisor = NzTexto(rs.Fields("Emisor"));
  d->IdTitular = NzTexto(rs.Fields("IdTitular"));
  d->medio = NzTexto(rs.Fields("medio"));
  d->Monto = NzMoneda(rs.Fields("Monto"));
  d->montoNominal = NzMoneda(rs.Fields("montoNominal"));
  d->NumeroCuenta = NzTexto(rs.Fields("NumeroCuenta"));
  d->NumeroDocumento = NzTexto(rs.Fields("NumeroDocumento"));
  auto den = factoria().openrecordset(
      "SELECT * FROM saveDenominaciones WHERE iddetalle = ? ORDER BY id", {rs.Fields("id")});
  for (; !den->Eof(); den->MoveNext()) {
    auto x = std::make_shared<CDetalleDenominacion>();
    x->CantidadRecibida = NzInteger(den->Fields("CantidadRecibida"));
    x->Denominacion = NzMoneda(den->Fields("Denominacion"));
    d->Denominaciones->Add(x);
  }
  return d;
}

}  // namespace

void TempVarelta::Save(const std::string& clave, CVarelta& mov) {
  Factoria& host = factoria();
  host.ExecuteSQL("INSERT INTO saveMovsCaja (clave) Values (?)", {clave});
  Id = CLng(host.ReadScalar("SELECT @@identity"));
  for (const auto& d : mov.lineasEnMemoria()) {
    host.ExecuteSQL(
        "INSERT INTO saveDetallesCaja (TransID, Medio, Monto, IdTitular, NumeroCuenta, "
        "NumeroDocumento, ClaveAutorizacion, Emisor, MontoNominal) VALUES (?, ?, ?, ?, ?, ?, ?, ?, "
        "?)",
        {Id, d->medio, d->Monto, d->IdTitular, d->NumeroCuenta, d->NumeroDocumento,
         d->ClaveAutorizacion, d->CodigoEmisor, d->montoNominal});
    const std::int32_t idDetalle = CLng(host.ReadScalar("SELECT scope_identity()"));
    if (!d->CodigoEmisor.empty())
      registrarEmisor(*d);
    if (!d->Denominaciones)
      continue;
    for (const auto& x : *d->Denominaciones) {
      host.ExecuteSQL(
          "INSERT INTO saveDenominaciones (idDetalle, Denominacion, CantidadRecibida) VALUES (?, "
          "?, "
          "?)",
          {idDetalle, x->Denominacion, x->CantidadRecibida});
    }
  }
}

void TempVarelta::load(const std::string& clave, CVarelta& mov) {
  Id = idDeClave(clave);
  if (Id <= 0)
    return;
  auto rs = factoria().openrecordset("SELECT * FROM saveDetallesCaja WHERE transID = ? ORDER BY id",
                                     {Id});
  for (; !rs->Eof(); rs->MoveNext())
    mov.lineasEnMemoria().Add(lineaGuardada(*rs));
  // Consumed by loading; the lines go as far as the database cascades the delete.
  factoria().ExecuteSQL("DELETE FROM saveMovsCaja WHERE clave = ?", {clave});
}

void TempVarelta::revertir(const std::string& Referencia) {
  const std::int32_t id = idDeClave(Referencia);
  if (id == 0) {
    throw CajaError(err::kErrorComponente, "ServiciosCaja.tempVarelta.Revertir",
                    "Referencia " + Referencia + " no registrada.");
  }
  factoria().ExecuteSQL("DELETE FROM saveMovsCaja WHERE id = ?", {id});
}

}  // namespace caja
