#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/Collection.h"
#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Fecha.h"
#include "caja/base/Variant.h"
#include "caja/catalog/CMedioPago.h"
#include "caja/catalog/ClaseIngresoSesion.h"
#include "caja/drawer/DetalleEfectivo.h"
#include "caja/drawer/TransaccionEfectivo.h"
#include "caja/movement/CDetalleIngreso.h"
#include "caja/movement/CDocsMovCaja.h"
#include "caja/service/ObjetosHost.h"
#include "caja/service/Recordset.h"

namespace caja {

// One cash movement of a till: its header and its payment lines. Unsaved
// (`TransID` 0) its lines are the in-memory `colDetalles`; once saved or
// loaded, `detalles()` and the totals read them from the database.
class CAJA_EXPORT CVarelta : public Objeto, public std::enable_shared_from_this<CVarelta> {
 public:
  std::int32_t TransID = 0;
  Fecha fecha;
  Fecha Hora;
  std::int32_t Sesion = 0;
  std::string Operador;
  std::string TipoDocRel;
  std::int32_t NumeroDocRel = 0;
  std::string TipoEntidad;
  std::string CodigoEntidad;
  std::string Descripcion;
  Currency Debitos;
  Currency Creditos;
  bool CerrarCredito = false;
  bool HayDescuento = false;
  Currency Vuelto;
  std::string Clasificacion;
  std::string Beneficiario;
  std::shared_ptr<Collection<CDetalleIngreso>> colDetalles =
      std::make_shared<Collection<CDetalleIngreso>>();
  std::int32_t MachineID = 0;
  bool acreditarVuelto = false;
  Currency MontoAcreditable;
  Currency montoIGTF;
  double tipoCambio = 0.0;

  // Fills `Dest`, or this movement, from the current row. The first fourteen
  // columns are null-safe; a Null "montoIGTF" or "tipoCambio" raises.
  void loadInstance(Recordset& rs, CVarelta* Dest = nullptr);
  bool load(std::int32_t iTransID);
  std::int32_t Numero() const { return TransID; }
  // The in-memory lines; error 91 when `colDetalles` was set to nothing.
  Collection<CDetalleIngreso>& lineasEnMemoria() const;
  // The very `colDetalles` while unsaved; a fresh read in `Id` order once saved.
  std::shared_ptr<Collection<CDetalleIngreso>> detalles();
  std::string NombreEntidadRelacionada() const;

  // Totals per legacy class. A line whose method is not in the catalogue
  // raises 91: a host's class totals never leave a line out without saying so.
  Currency Efectivo() { return TotalClase(ClaseIngresoSesion::Efectivo); }
  Currency TCVisa() { return TotalClase(ClaseIngresoSesion::TTCVisa); }
  Currency TCMaster() { return TotalClase(ClaseIngresoSesion::TTCMaster); }
  Currency TCAmex() { return TotalClase(ClaseIngresoSesion::TTCAmex); }
  Currency Cheques() { return TotalClase(ClaseIngresoSesion::Cheques); }
  Currency OtrasTC() { return TotalClase(ClaseIngresoSesion::TTCOtras); }
  Currency TDebito() { return TotalClase(ClaseIngresoSesion::TDebito); }
  Currency OtrosMedios() { return TotalClase(ClaseIngresoSesion::OtrosMedios); }
  Currency EfectivoME() { return TotalClase(ClaseIngresoSesion::EfectivoME); }

  // Writes the movement: header, lines with issuers and coins, then the
  // host's "PostVarelta". Prepares the drawer transaction that
  // `commitTransEf` records. Opens no transaction: on failure the rows
  // already written stay, and the error is re-raised with "(DLL#n)" appended,
  // n being the step that failed.
  void Save(std::int32_t iSesion, const std::string& iOperador, const std::string& iTipoDoc,
            std::int32_t iNumeroDoc, const std::string& iTipoEntidad,
            const std::string& iCodigoEntidad, const std::string& iDescripcion, Fecha iFecha,
            const Variant& Handle = Variant(), const std::string& iClasificacion = "",
            const std::string& iBeneficiario = "", Currency IGTF = Currency{}, double tc = -1.0);
  // Writes one payment line; its new Id, or 0 for an amount under a cent.
  std::int32_t addDetalle(const std::string& iCodigoMedio, Currency iMonto,
                          const std::string& iIdTitular, const std::string& iNumeroCuenta,
                          const std::string& iNumeroDoc, const std::string& iClaveAutorizacion,
                          const std::string& iCodigoEmisor, Currency iMontoNominal,
                          const std::shared_ptr<Collection<CDetalleDenominacion>>& iDetalles);
  void AddDetalleS(CDetalleIngreso& pDetalle);

  bool LoadFromDocumento(const std::string& sTipoDoc, std::int32_t lNumeroDoc);
  // The cash-like in-memory lines summed per method.
  std::shared_ptr<Collection<DetalleEfectivo>> detallesEfectivo();
  bool AddConcepto(Currency vmDebitos, Currency vmCreditos, const std::string& TipoDoc,
                   std::int32_t numDoc);
  // At least one concept; on error reports it and returns nullptr.
  std::shared_ptr<Collection<CDocsMovCaja>> Conceptos();

  // Moves the drawer balances straight by the cash-like lines, with no transaction row.
  void actualizarSaldosEfectivo();
  // Records the drawer transaction prepared by `Save`; 91 before any `Save`.
  void commitTransEf();

 private:
  Currency TotalClase(ClaseIngresoSesion clase);
  // Steps 1 to 14 of `Save`; `paso` tells the handler where it failed.
  std::shared_ptr<PosExt> guardar(
      std::int32_t iSesion, const std::string& iOperador, const std::string& iTipoDoc,
      std::int32_t iNumeroDoc, const std::string& iTipoEntidad, const std::string& iCodigoEntidad,
      const std::string& iDescripcion, Fecha iFecha, const std::string& iClasificacion,
      const std::string& iBeneficiario, Currency IGTF, double tc, int& paso);
  TransaccionEfectivo& transaccion();

  std::shared_ptr<TransaccionEfectivo> transEf_;
};

// The movement rule of a cash-like method, narrower than `EsMedioEfectivo`:
// national or foreign cash class, or a foreign-currency flag.
CAJA_EXPORT bool esMedioEfectivoMovimiento(const CMedioPago& medio);

}  // namespace caja
