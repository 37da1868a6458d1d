#include "caja/drawer/TransaccionEfectivo.h"

#include "caja/base/Conversiones.h"
#include "caja/service/General.h"

namespace caja {

namespace {

Variant origenComoVariant(origenTransaccionEfectivo origen) {
  return Variant(static_cast<std::int32_t>(origen));
}

}  // namespace

void TransaccionEfectivo::beginProcess(const Variant& idMaquina) {
  MachineID = CInt(idMaquina);
  detalles_ = std::make_shared<Collection<DetalleEfectivo>>();
  EfectivoMN = Currency{};
}

Collection<DetalleEfectivo>& TransaccionEfectivo::lineas() {
  if (!detalles_)
    throw errorEjecucion(err::kObjetoNoEstablecido);
  return *detalles_;
}

double TransaccionEfectivo::tasaDelCajon(const std::string& medio) {
  const std::int32_t idCec =
      CLng(factoria().ReadScalar("SELECT id FROM cvCaja WHERE machineID = ?", {MachineID}));
  if (idCec == 0)
    return 0.0;
  auto rs = factoria().openrecordset(
      "SELECT * FROM cvCajaDetalles WHERE idCec =? AND codigoMedio = ?", {idCec, medio});
  if (rs->Eof())
    return 0.0;
  const Currency nominal = CCur(rs->Fields("valorNominal"));
  if (nominal.isZero())
    return 0.0;
  return CCur(rs->Fields("valorMN")) / nominal;
}

void TransaccionEfectivo::addDetalle(const std::string& medio, Currency Monto, Currency nominal) {
  // A zero amount is ignored even with a nominal amount: a nominal without
  // value would lower the drawer's average rate, at which the stored balance
  // values every later outgoing amount of the method.
  if (Monto.isZero())
    return;
  if (medio == "EFE") {
    EfectivoMN += Monto;
    return;
  }
  std::string codigo = medio;
  const auto metodo = ObtenerMedioPago(codigo);
  if (!metodo || EsMedioEfectivo(*metodo) == 0)
    return;
  auto linea = lineas().Find(medio);
  if (!linea) {
    linea = std::make_shared<DetalleEfectivo>();
    linea->codigoMedio = medio;
    lineas().Add(linea, medio);
  }
  if (nominal < Currency{}) {
    const double tasa = tasaDelCajon(medio);
    if (tasa != 0.0)
      Monto = CCur(nominal.toDouble() * tasa);
  }
  linea->valorMN += Monto;
  linea->valorNominal += nominal;
  // A line whose nominals cancel out takes this call's amount as nominal, so
  // the rate below never divides by zero; the stored balances carry it.
  if (linea->valorNominal.isZero())
    linea->valorNominal = Monto;
  linea->tipoCambio(linea->valorMN / linea->valorNominal);
}

void TransaccionEfectivo::actualizarSaldo(const Variant& medio, const Variant& valorMN,
                                          const Variant& valorNominal) {
  Factoria& host = factoria();
  if (CLng(host.ReadScalar("SELECT COUNT(*) FROM CVCaja WHERE machineID = ?", {MachineID})) == 0)
    host.ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, ?)", {MachineID});
  const std::int32_t idCec =
      CLng(host.ReadScalar("SELECT id FROM CVCaja WHERE MachineID = ?", {MachineID}));
  if (CStr(medio) == "EFE") {
    host.ExecuteSQL("UPDATE cvCaja SET efectivoMN = efectivoMN + ? WHERE id = ?", {valorMN, idCec});
    return;
  }
  std::int32_t idDet = CLng(host.ReadScalar(
      "SELECT id FROM CVCajaDetalles WHERE idCEC = ? AND codigoMedio = ?", {idCec, medio}));
  if (idDet == 0) {
    host.ExecuteSQL("INSERT INTO CVCajaDetalles (idCec, codigoMedio) VALUES (?, ?)",
                    {idCec, medio});
    idDet = CLng(host.ReadScalar("SELECT scope_identity()"));
  }
  host.ExecuteSQL(
      "UPDATE CVCajaDetalles SET valorMN = valorMN + ?, valorNominal = valorNominal + ? WHERE id = "
      "?",
      {valorMN, valorNominal, idDet});
}

void TransaccionEfectivo::grabar(origenTransaccionEfectivo origen, std::int32_t numRef) {
  if (EfectivoMN.isZero() && lineas().Count() == 0)
    return;
  Factoria& host = factoria();
  host.ExecuteSQL(
      "INSERT INTO transaccionesEfectivo (tipoTrans, idOrigen, machineID, efectivoMN) VALUES (?, "
      "?, "
      "?, ?)",
      {origenComoVariant(origen), numRef, MachineID, EfectivoMN});
  // Kept in a local only: Id, tipoTrans and idOrigen describe a loaded transaction.
  const std::int32_t transId = CLng(host.ReadScalar("SELECT scope_identity()"));
  if (!EfectivoMN.isZero())
    actualizarSaldo(Variant("EFE"), Variant(EfectivoMN), Variant(EfectivoMN));
  for (const auto& linea : lineas()) {
    host.ExecuteSQL(
        "INSERT INTO transaccionEfectivoDetalles (transID, codigoMedio, valorMN, valorNominal) "
        "VALUES (?, ?, ?, ?)",
        {transId, linea->codigoMedio, linea->valorMN, linea->valorNominal});
    actualizarSaldo(Variant(linea->codigoMedio), Variant(linea->valorMN),
                    Variant(linea->valorNominal));
  }
}

void TransaccionEfectivo::revertir() {
  Factoria& host = factoria();
  host.ExecuteSQL("UPDATE cvCaja SET efectivoMN = efectivoMN - ? WHERE machineID = ?",
                  {EfectivoMN, MachineID});
  // Balances first: the join needs the detail and header rows still present.
  host.ExecuteSQL(std::string("UPDATE cvCajaDetalles ") +
                      "SET valorMN = cvCajaDetalles.valorMN - D.valorMN, valorNominal = "
                      "cvCajaDetalles.valorNominal - D.ValorNominal " +
                      "FROM (SELECT d.*, cv.id AS CEC FROM (SELECT * FROM "
                      "transaccionEfectivodetalles WHERE transID = ?) D " +
                      "INNER JOIN TransaccionesEfectivo te ON D.transID = te.id " +
                      "INNER JOIN cvCaja CV ON cv.machineID = te.machineID) D " +
                      "WHERE D.CEC = idCec AND D.codigoMedio = cvCajaDetalles.codigoMedio",
                  {Id});
  host.ExecuteSQL("DELETE FROM transaccionEfectivoDetalles WHERE transId = ?", {Id});
  host.ExecuteSQL("DELETE FROM TransaccionesEfectivo WHERE id = ?", {Id});
}

void TransaccionEfectivo::loadInstance(Recordset& rs) {
  Id = CLng(rs.Fields("Id"));
  tipoTrans = static_cast<origenTransaccionEfectivo>(CLng(rs.Fields("tipoTrans")));
  idOrigen = CLng(rs.Fields("idOrigen"));
  MachineID = CInt(rs.Fields("MachineID"));
  EfectivoMN = CCur(rs.Fields("EfectivoMN"));
}

bool TransaccionEfectivo::loadFromTransid(origenTransaccionEfectivo origen, std::int32_t numRef) {
  auto rs = factoria().openrecordset(
      "SELECT * FROM transaccionesEfectivo WHERE tipoTrans = ? AND idOrigen = ?",
      {origenComoVariant(origen), numRef});
  if (rs->Eof())
    return false;
  loadInstance(*rs);
  return true;
}

}  // namespace caja
