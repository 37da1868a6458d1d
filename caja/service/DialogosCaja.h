#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"

namespace caja {

class CVarelta;

// The dialogs the facade opens, supplied by the dialogs layer at start-up so
// that the model never links against a toolkit.
class CAJA_EXPORT DialogosCaja {
 public:
  // Raised by the collection dialog when the cashier changes the tax; the
  // listener may change the amount or set `cancelar`.
  using Aplicar2602 = std::function<void(Currency& monto, bool& cancelar)>;

  virtual ~DialogosCaja() = default;
  // Runs the collection dialog modally; nullptr when the cashier cancels.
  virtual std::shared_ptr<CVarelta> Cobrar(const std::string& titulo, Currency montoVenta,
                                           Currency montoIVA, Currency montoCredito,
                                           Aplicar2602 alCambiarIVA) = 0;
  // Shows the payment-method administration dialog.
  virtual void DefinirMediosPago() = 0;
  // Runs the administration dialog modally on a new code; the dialog may
  // change `contexto` (0 when nothing was registered).
  virtual void DefinirMedioPagoNuevo(const std::string& codigo, std::int16_t& contexto) = 0;
};

// The installed dialogs; error 91 when no dialogs layer has been installed.
CAJA_EXPORT DialogosCaja& dialogosCaja();
CAJA_EXPORT void setDialogosCaja(std::shared_ptr<DialogosCaja> dialogos);

}  // namespace caja
