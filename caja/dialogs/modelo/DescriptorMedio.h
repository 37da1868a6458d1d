#pragma once

#include <cstdint>
#include <string>

#include <memory>

#include "caja/base/Currency.h"
#include "caja/catalog/ClaseIngresoSesion.h"
#include "caja/movement/CDetalleIngreso.h"

namespace caja {

// What the collection dialog keeps of one payment-method input.
struct DescriptorMedio {
  ClaseIngresoSesion Clase = ClaseIngresoSesion::Efectivo;
  bool isMedioElectronico = false;
  std::string Titulo;
  std::string TextoAyuda;
  std::string Codigo;
  // National currency per unit typed into the input; 1.0 for national methods.
  double Factor = 1.0;
  // "USD*" foreign cash, "ME" foreign currency, "" national; a trailing "*"
  // more when payments through it bear IGTF.
  std::string Tag;
  // What the cashier typed, in the method's own unit.
  Currency valor;
  // The particulars taken in the detail dialog, if any.
  std::shared_ptr<CDetalleIngreso> particulares;

  bool sujetoIGTF() const { return !Tag.empty() && Tag.back() == '*'; }
};

}  // namespace caja
