#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace caja {

// Relays a transaction-change notice to whoever listens; holds no data.
class CNotifTrans {
 public:
  // The event; both arguments by reference, so a listener may change them.
  std::function<void(std::int16_t& a, std::string& b)> CambioTransaccion;

  void NotificarCambioTransaccion(std::int16_t& a, std::string& b) {
    if (CambioTransaccion)
      CambioTransaccion(a, b);
  }
};

}  // namespace caja
