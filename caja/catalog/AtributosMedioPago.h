#pragma once

#include <cstdint>

namespace caja {

// Attribute flags of a payment method, combined by OR in `CMedioPago::Atributos`.
enum AtributosMedioPago : std::int32_t {
  ControlDenominaciones = 1,
  ControlIDCuenta = 2,
  ControlNumero = 4,
  ControlEmisor = 8,
  ControlIDTitular = 16,
  ControlClaveAutorizacion = 32,
  monedaExtranjera = 64,
  RequiereClaveSupervisor = 128,
  UsaVPOS = 256,
  IndexadoMonedaExtranjera = 512,
  SujetoIGTF = 1024,
};

// Either foreign-currency flag.
inline constexpr std::int32_t kMascaraMonedaExtranjera =
    monedaExtranjera | IndexadoMonedaExtranjera;

}  // namespace caja
