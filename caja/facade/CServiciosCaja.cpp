#include "caja/facade/CServiciosCaja.h"

#include "caja/base/Conversiones.h"
#include "caja/base/Decimal.h"
#include "caja/service/DialogosCaja.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja {

CServiciosCaja::CServiciosCaja() {
  hostUtil().EstablecerTitulo("Varelta");
}

std::shared_ptr<CVarelta> CServiciosCaja::Varelta(const Variant& MontoVenta,
                                                  const Variant& MontoIVA,
                                                  const Variant& MontoCredito,
                                                  const std::string& sTitulo) {
  return dialogosCaja().Cobrar(
      sTitulo, RedondearMonto(MontoVenta, 2), RedondearMonto(MontoIVA, 2),
      RedondearMonto(MontoCredito, 2),
      [this](Currency& monto, bool& aplicar) { frm_Aplicar2602(monto, aplicar); });
}

void CServiciosCaja::DefinirMediosPago() {
  dialogosCaja().DefinirMediosPago();
}

void CServiciosCaja::Init(const Variant& /*Handle*/, const std::shared_ptr<Factoria>& Factoria) {
  InicializarEntorno(Factoria);
}

std::shared_ptr<Collection<CDetalleIngreso>> CServiciosCaja::DetallesEnRegistro() {
  auto lineas = std::make_shared<Collection<CDetalleIngreso>>();
  try {
    const auto pares = settingsStore().GetAllSettings(kAppZOR, "frmVarelta\\Detalles");
    if (!pares)
      return lineas;
    for (const auto& [clave, valor] : *pares) {
      auto linea = std::make_shared<CDetalleIngreso>();
      linea->Deserialize(valor);
      lineas->Add(linea);
    }
  } catch (const std::exception&) {
    // The lines read before the first error are the answer: hosts call this
    // after a crash to recover what they can, and never get an error.
  }
  return lineas;
}

void CServiciosCaja::frm_Aplicar2602(Currency& Monto, bool& Aplicar) {
  if (Listener2602)
    Listener2602->Aplicar2602(Monto, Aplicar);
}

Currency RedondearMonto(const Variant& valor, std::int16_t decimales) {
  return toDecimal(valor).shifted(decimales).roundedHalfUp(0).shifted(-2).toCurrency();
}

}  // namespace caja
