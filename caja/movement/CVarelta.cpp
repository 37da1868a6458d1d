#include "caja/movement/CVarelta.h"

#include "caja/base/Conversiones.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/uisupport/CStringBuffer.h"

namespace caja {

bool esMedioEfectivoMovimiento(const CMedioPago& medio) {
  return medio.Clase == ClaseIngresoSesion::Efectivo ||
         medio.Clase == ClaseIngresoSesion::EfectivoME ||
         (medio.Atributos & kMascaraMonedaExtranjera) != 0;
}

void CVarelta::loadInstance(Recordset& rs, CVarelta* Dest) {
  CVarelta& d = Dest ? *Dest : *this;
  d.TransID = NzLong(rs.Fields("TransID"));
  d.fecha = NzFecha(rs.Fields("fecha"));
  d.Hora = NzFecha(rs.Fields("Hora"));
  d.Sesion = NzLong(rs.Fields("Sesion"));
  d.Operador = NzTexto(rs.Fields("Operador"));
  d.TipoDocRel = NzTexto(rs.Fields("TipoDocumento"));
  d.NumeroDocRel = NzLong(rs.Fields("NumeroDocumento"));
  d.TipoEntidad = NzTexto(rs.Fields("TipoEntidad"));
  d.CodigoEntidad = NzTexto(rs.Fields("CodigoEntidad"));
  d.Descripcion = NzTexto(rs.Fields("Descripcion"));
  d.Debitos = NzMoneda(rs.Fields("Debitos"));
  d.Creditos = NzMoneda(rs.Fields("Creditos"));
  d.Clasificacion = NzTexto(rs.Fields("Clasificacion"));
  d.Beneficiario = NzTexto(rs.Fields("Beneficiario"));
  d.montoIGTF = CCur(rs.Fields("montoIGTF"));
  d.tipoCambio = CDbl(rs.Fields("tipoCambio"));
}

bool CVarelta::load(std::int32_t iTransID) {
  auto rs = factoria().openrecordset("SELECT * FROM MovimientosCaja WHERE TransID = " +
                                     factoria().NumeroDB(Variant(iTransID)));
  const bool hallado = !rs->Eof();
  if (hallado) {
    loadInstance(*rs);
    colDetalles = detalles();
  }
  rs->Close();
  return hallado;
}

Collection<CDetalleIngreso>& CVarelta::lineasEnMemoria() const {
  if (!colDetalles)
    throw errorEjecucion(err::kObjetoNoEstablecido);
  return *colDetalles;
}

std::shared_ptr<Collection<CDetalleIngreso>> CVarelta::detalles() {
  if (Numero() == 0)
    return colDetalles;
  auto lineas = std::make_shared<Collection<CDetalleIngreso>>();
  auto rs = factoria().openrecordset("SELECT * FROM DetallesVarelta WHERE TransID = " +
                                     factoria().NumeroDB(Variant(Numero())) + " ORDER BY Id");
  for (; !rs->Eof(); rs->MoveNext()) {
    auto linea = std::make_shared<CDetalleIngreso>();
    linea->loadInstance(*rs);
    lineas->Add(linea);
  }
  rs->Close();
  return lineas;
}

std::string CVarelta::NombreEntidadRelacionada() const {
  if (!gFactoria)
    return "NombreEntidadRelacionada NO DISPONIBLE";
  auto entidad =
      crearObjeto<Instanciador>(*gFactoria, "Instanciador")->Entidad(TipoEntidad, CodigoEntidad);
  return entidad ? entidad->Nombre() : "NombreEntidadRelacionada NO LOCALIZADO";
}

Currency CVarelta::TotalClase(ClaseIngresoSesion clase) {
  Currency total;
  // Held here: a saved movement's lines are a fresh collection that must
  // outlive the loop.
  const auto lineas = detalles();
  if (!lineas)
    throw errorEjecucion(err::kObjetoNoEstablecido);
  for (const auto& d : *lineas) {
    if (clase == ClaseIngresoSesion::Efectivo && d->medio == "EFE") {
      total += d->Monto;
      continue;
    }
    std::string codigo = d->medio;
    const auto medio = ObtenerMedioPago(codigo);
    if (!medio)
      throw errorEjecucion(err::kObjetoNoEstablecido);
    if (medio->Clase == clase)
      total += d->Monto;
  }
  return total;
}

bool CVarelta::LoadFromDocumento(const std::string& sTipoDoc, std::int32_t lNumeroDoc) {
  Factoria& host = factoria();
  const std::string tipo = host.StringDB(sTipoDoc);
  const std::string numero = host.NumeroDB(Variant(lNumeroDoc));
  auto rs = host.openrecordset("SELECT * FROM MovimientosCaja WHERE TipoDocumento = " + tipo +
                               " AND NumeroDocumento = " + numero + ";");
  if (rs->Eof()) {
    rs->Close();
    // Through the related documents, the most recent reference winning.
    rs = host.openrecordset(std::string("SELECT M.* ") +
                            "FROM MovimientosCaja AS M, subDocsMC AS S " +
                            "WHERE s.TipoDoc = " + tipo + " " + "AND s.numDoc = " + numero + " " +
                            "AND M.TransID = S.TransID " + "AND S.ID IN " +
                            "  (SELECT MAX(ID) FROM subDocsMC WHERE TipoDoc = " + tipo + " " +
                            "AND NumDoc = " + numero + ");");
  }
  const bool hallado = !rs->Eof();
  if (hallado)
    loadInstance(*rs);
  rs->Close();
  return hallado;
}

std::shared_ptr<Collection<DetalleEfectivo>> CVarelta::detallesEfectivo() {
  auto resultado = std::make_shared<Collection<DetalleEfectivo>>();
  for (const auto& d : lineasEnMemoria()) {
    std::string codigo = d->medio;
    auto medio = ObtenerMedioPago(codigo);
    if (!medio) {
      medio = std::make_shared<CMedioPago>();
      medio->codigo = "EFE";
    }
    if (!esMedioEfectivoMovimiento(*medio))
      continue;
    auto linea = resultado->Find(medio->codigo);
    if (!linea) {
      linea = std::make_shared<DetalleEfectivo>();
      linea->codigoMedio = medio->codigo;
      resultado->Add(linea, medio->codigo);
    }
    linea->valorNominal += d->montoNominal;
    linea->valorMN += d->Monto;
  }
  return resultado;
}

bool CVarelta::AddConcepto(Currency vmDebitos, Currency vmCreditos, const std::string& TipoDoc,
                           std::int32_t numDoc) {
  Factoria& host = factoria();
  CStringBuffer sql;
  sql.Append("INSERT INTO SubDocsMC (TransID, TipoDoc, NumDoc, Debitos, Creditos) VALUES (");
  sql.Append(host.NumeroDB(Variant(TransID)) + ", " + host.StringDB(TipoDoc) + ", " +
             host.NumeroDB(Variant(numDoc)) + ", " + host.NumeroDB(Variant(vmDebitos)) + ", " +
             host.NumeroDB(Variant(vmCreditos)) + ");");
  host.ExecuteSQL(sql.value());
  return true;
}

std::shared_ptr<Collection<CDocsMovCaja>> CVarelta::Conceptos() {
  try {
    auto conceptos = std::make_shared<Collection<CDocsMovCaja>>();
    auto rs = factoria().openrecordset("SELECT * FROM subDocsMC WHERE TransID = " +
                                       factoria().NumeroDB(Variant(TransID)) + " ORDER BY ID");
    for (; !rs->Eof(); rs->MoveNext()) {
      auto c = std::make_shared<CDocsMovCaja>();
      c->Creditos = NzMoneda(rs->Fields("Creditos"));
      c->Debitos = NzMoneda(rs->Fields("Debitos"));
      c->NumeroDoc = NzLong(rs->Fields("NumDoc"));
      c->TipoDoc = NzTexto(rs->Fields("TipoDoc"));
      c->TransID = NzLong(rs->Fields("TransID"));
      conceptos->Add(c);
    }
    if (conceptos->Count() == 0) {
      auto propio = std::make_shared<CDocsMovCaja>();
      propio->Creditos = Creditos;
      propio->Debitos = Debitos;
      propio->NumeroDoc = NumeroDocRel;
      propio->TipoDoc = TipoDocRel;
      propio->TransID = TransID;
      conceptos->Add(propio);
    }
    rs->Close();
    return conceptos;
  } catch (const CajaError& e) {
    hostUtil().ReportarError(e, "CMovimientoCaja::Conceptos");
    return nullptr;
  }
}

}  // namespace caja
