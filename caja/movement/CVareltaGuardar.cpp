#include "caja/base/Conversiones.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"
#include "caja/uisupport/CStringBuffer.h"

namespace caja {

namespace {

constexpr const char* kFuenteSave = "CVarelta::Save";
// The machine error keeps its own lower-case source through the handler:
// hosts that match errors by source see the text they always saw.
constexpr const char* kFuenteMaquina = "cVarelta::Save";

// The till configured for this machine in the host suite's settings.
Variant maquinaConfigurada(std::int64_t defecto) {
  return Variant(
      lmGetSettingCur(kAppNubetral, "General", "MachineID", Currency::fromUnits(defecto)));
}

// The movement itself as the argument of a host procedure; a movement not
// owned by a shared_ptr is lent without ownership.
std::shared_ptr<CVarelta> comoObjeto(CVarelta& mov) {
  if (auto propio = mov.weak_from_this().lock())
    return propio;
  return std::shared_ptr<CVarelta>(&mov, [](CVarelta*) {});
}

}  // namespace

TransaccionEfectivo& CVarelta::transaccion() {
  if (!transEf_)
    throw errorEjecucion(err::kObjetoNoEstablecido);
  return *transEf_;
}

void CVarelta::Save(std::int32_t iSesion, const std::string& iOperador, const std::string& iTipoDoc,
                    std::int32_t iNumeroDoc, const std::string& iTipoEntidad,
                    const std::string& iCodigoEntidad, const std::string& iDescripcion,
                    Fecha iFecha, const Variant& /*Handle*/, const std::string& iClasificacion,
                    const std::string& iBeneficiario, Currency IGTF, double tc) {
  int paso = 0;
  std::shared_ptr<PosExt> extension;
  try {
    extension = guardar(iSesion, iOperador, iTipoDoc, iNumeroDoc, iTipoEntidad, iCodigoEntidad,
                        iDescripcion, iFecha, iClasificacion, iBeneficiario, IGTF, tc, paso);
  } catch (const CajaError& e) {
    const std::string fuente = e.source() == kFuenteMaquina ? kFuenteMaquina : kFuenteSave;
    throw CajaError(e.number(), fuente, e.description() + "(DLL#" + std::to_string(paso) + ")");
  }
  // Step 15, with errors ignored: the movement stays saved whatever the procedure does.
  try {
    std::vector<Variant> argumentos{Variant(comoObjeto(*this))};
    extension->Run("PostVarelta", argumentos);
  } catch (const std::exception&) {
  }
}

std::shared_ptr<PosExt> CVarelta::guardar(
    std::int32_t iSesion, const std::string& iOperador, const std::string& iTipoDoc,
    std::int32_t iNumeroDoc, const std::string& iTipoEntidad, const std::string& iCodigoEntidad,
    const std::string& iDescripcion, Fecha iFecha, const std::string& iClasificacion,
    const std::string& iBeneficiario, Currency IGTF, double tc, int& paso) {
  Factoria& host = factoria();
  paso = 1;
  if (IGTF.isZero())
    IGTF = montoIGTF;
  paso = 2;
  if (tc < 0)
    tc = CDbl(host.ReadScalar("SELECT MAX(TipoCambio) FROM parametrosEmpresa"));
  paso = 3;
  transEf_ = std::make_shared<TransaccionEfectivo>();
  paso = 4;
  MachineID =
      CLng(host.ReadScalar("SELECT MachineID FROM SesionesPOS WHERE SessionID = ?", {iSesion}));
  paso = 5;
  // Before the fallbacks: a sale saved against a closed session moves the
  // drawer of machine 0, where the stored balances of such sales have always gone.
  transEf_->beginProcess(Variant(MachineID));
  paso = 6;
  if (MachineID == 0)
    MachineID = CLng(
        host.ReadScalar("SELECT MachineID FROM SesionesCerradas WHERE SessionID = ?", {iSesion}));
  paso = 7;
  if (MachineID == 0)
    MachineID = CLng(maquinaConfigurada(0));
  paso = 8;
  if (MachineID == 0)
    throw CajaError(err::kErrorComponente2, kFuenteMaquina, "MachineID Invalido");
  paso = 9;
  if (TransID != 0) {
    throw CajaError(err::kErrorComponente, kFuenteSave,
                    "Intento de guardar movimiento de caja duplicado");
  }
  paso = 10;
  CodigoEntidad = iCodigoEntidad;
  Descripcion = iDescripcion;
  NumeroDocRel = iNumeroDoc;
  Operador = iOperador;
  Sesion = iSesion;
  TipoDocRel = iTipoDoc;
  TipoEntidad = iTipoEntidad;
  Clasificacion = iClasificacion;
  Beneficiario = iBeneficiario;
  montoIGTF = IGTF;
  tipoCambio = tc;
  // `fecha` is left alone: the row takes iFecha, and a host that set the
  // object's date before saving keeps its own value there.
  Hora = Fecha::now() - Fecha::today();
  paso = 11;
  CStringBuffer sql;
  sql.Append(
      "INSERT INTO MovimientosCaja (Fecha, Hora, Sesion, Operador, TipoDocumento, "
      "NumeroDocumento, ");
  sql.Append(
      "TipoEntidad, CodigoEntidad, Descripcion, Debitos, Creditos, Clasificacion, Beneficiario, ");
  sql.Append("machineID, MontoIGTF, tipoCambio) ");
  sql.Append("VALUES (?, getdate(), ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  host.ExecuteSQL(sql.value(), {iFecha, iSesion, iOperador, iTipoDoc, iNumeroDoc, iTipoEntidad,
                                iCodigoEntidad, iDescripcion, Debitos, Creditos, Clasificacion,
                                iBeneficiario, MachineID, montoIGTF, tc});
  paso = 12;
  TransID = CLng(host.ReadScalar("SELECT IDENT_CURRENT('MovimientosCaja')"));
  paso = 13;
  for (const auto& linea : lineasEnMemoria())
    AddDetalleS(*linea);
  paso = 14;
  return crearObjeto<PosExt>(host, "posExt");
}

std::int32_t CVarelta::addDetalle(
    const std::string& iCodigoMedio, Currency iMonto, const std::string& iIdTitular,
    const std::string& iNumeroCuenta, const std::string& iNumeroDoc,
    const std::string& iClaveAutorizacion, const std::string& iCodigoEmisor, Currency iMontoNominal,
    const std::shared_ptr<Collection<CDetalleDenominacion>>& iDetalles) {
  if (Abs(iMonto) < Currency::fromRaw(100))
    return 0;
  transaccion().addDetalle(iCodigoMedio, iMonto, iMontoNominal);
  Factoria& host = factoria();
  host.ExecuteSQL(
      std::string("INSERT INTO DetallesVarelta (TransID, Medio, Monto, IdTitular, NumeroCuenta, "
                  "NumeroDocumento, ") +
          "ClaveAutorizacion, Emisor, MontoNominal) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)",
      {TransID, iCodigoMedio, iMonto, iIdTitular, iNumeroCuenta, iNumeroDoc, iClaveAutorizacion,
       iCodigoEmisor, iMontoNominal});
  const std::int32_t nuevoId = CLng(host.ReadScalar("SELECT @@IDENTITY"));
  if (!iCodigoEmisor.empty()) {
    host.ExecuteSQL(std::string("INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) ") +
                        "SELECT ?, ? WHERE NOT Exists(SELECT * FROM generalEmisores " +
                        "WHERE TipoDocumento = ? AND CodigoEmisor = ?)",
                    {iCodigoMedio, iCodigoEmisor, iCodigoMedio, iCodigoEmisor});
  }
  if (iDetalles) {
    for (const auto& d : *iDetalles) {
      host.ExecuteSQL(
          "INSERT INTO DetallesDenominacion (idDetalle, Denominacion, CantidadRecibida) VALUES (?, "
          "?, ?)",
          {nuevoId, d->Denominacion, d->CantidadRecibida});
    }
  }
  return nuevoId;
}

void CVarelta::AddDetalleS(CDetalleIngreso& pDetalle) {
  if (Abs(pDetalle.Monto) < Currency::fromRaw(100))
    return;
  pDetalle.Id =
      addDetalle(pDetalle.medio, pDetalle.Monto, pDetalle.IdTitular, pDetalle.NumeroCuenta,
                 pDetalle.NumeroDocumento, pDetalle.ClaveAutorizacion, pDetalle.CodigoEmisor,
                 pDetalle.montoNominal, pDetalle.Denominaciones);
}

void CVarelta::commitTransEf() {
  transaccion().grabar(origenTransaccionEfectivo::OTE_MOVCAJA, TransID);
}

void CVarelta::actualizarSaldosEfectivo() {
  TransaccionEfectivo directa;
  // Default 1 here against 0 in Save: tills without the setting move the
  // balances of machine 1, where their rows have always been.
  directa.MachineID = CInt(maquinaConfigurada(1));
  for (const auto& linea : lineasEnMemoria()) {
    // Straight to the balances: no transaction row, no accumulation, no revaluation.
    if (linea->medio == "EFE") {
      directa.actualizarSaldo(Variant("EFE"), Variant(linea->Monto), Variant(linea->Monto));
      continue;
    }
    CMedioPago medio;
    if (medio.load(linea->medio) && esMedioEfectivoMovimiento(medio)) {
      directa.actualizarSaldo(Variant(linea->medio), Variant(linea->Monto),
                              Variant(linea->montoNominal));
    }
  }
}

}  // namespace caja
