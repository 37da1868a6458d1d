#pragma once

#include <string>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"

namespace caja {

// Confirmation of an electronic payment, as the card terminal reports it.
class CAJA_EXPORT CDetalleConfirmacion : public Objeto {
 public:
  std::string TextoComprobante;  // the voucher; may hold several lines
  std::string Id;
  std::string TipoMedio;
  std::string CodigoEmisor;
  std::string Track1;
  std::string Track2;
  Currency Monto;
  std::string CodigoAprobacion;
  std::string NumeroCuenta;
  std::string Referencia;

  // Placeholders kept in the interface: printing and voiding belong to the terminal.
  void Imprimir(const std::string& /*TipoDoc*/) {}
  bool Anular() { return false; }
};

}  // namespace caja
