#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/Collection.h"
#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Variant.h"
#include "caja/movement/CDetalleIngreso.h"
#include "caja/service/Factoria.h"

namespace caja {

class CVarelta;

// What a host sets as `Listener2602` to hear of a tax change in the collection
// dialog. It may change `Monto`, and set `Aplicar` to refuse the change.
class CAJA_EXPORT Listener2602Host : public Objeto {
 public:
  virtual void Aplicar2602(Currency& Monto, bool& Aplicar) = 0;
};

// The component's entry point: a host creates one, calls `Init` once and then
// `Varelta` for each sale.
class CAJA_EXPORT CServiciosCaja {
 public:
  // Gives the host suite's application the title "Varelta".
  CServiciosCaja();

  std::shared_ptr<Listener2602Host> Listener2602;

  // One collection: the three amounts rounded to cents, the dialog shown
  // modally; the filled movement, or nullptr when the cashier cancels. The
  // caller saves the movement; this class never does.
  std::shared_ptr<CVarelta> Varelta(const Variant& MontoVenta, const Variant& MontoIVA,
                                    const Variant& MontoCredito, const std::string& sTitulo);
  void DefinirMediosPago();
  // `Handle` is accepted and not used: every access goes through `Factoria`.
  void Init(const Variant& Handle, const std::shared_ptr<Factoria>& Factoria);
  // The payment lines the collection dialog kept in section
  // "frmVarelta\Detalles"; never nullptr, never raises: reading stops at the
  // first error with the lines read so far.
  std::shared_ptr<Collection<CDetalleIngreso>> DetallesEnRegistro();

 private:
  void frm_Aplicar2602(Currency& Monto, bool& Aplicar);
};

// Int(valor × 10^decimales + 0.5) ÷ 100 on the exact decimal value. The
// divisor is a fixed 100, not 10^decimales: Varelta, its only caller, asks for
// 2, where the two agree. Halves of positive amounts go up, of negative ones
// toward zero.
CAJA_EXPORT Currency RedondearMonto(const Variant& valor, std::int16_t decimales);

}  // namespace caja
