#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "caja/base/Exporta.h"

namespace caja {

// The legacy payment class a method is equivalent to; drives the per-class
// totals of a movement and marks foreign cash.
enum class ClaseIngresoSesion : std::int32_t {
  Efectivo = 0,
  Cheques = 1,
  TTCAmex = 2,
  TTCVisa = 3,
  TTCMaster = 4,
  TTCOtras = 5,
  TDebito = 6,
  OtrosMedios = 7,
  EfectivoME = 8,
};

// A list control as the catalogue fills it; the dialogs adapt their own.
class CAJA_EXPORT ControlLista {
 public:
  virtual ~ControlLista() = default;
  virtual void Clear() = 0;
  virtual void AddItem(const std::string& texto) = 0;
};

// The nine captions in class order, so that an item's index is its class value.
CAJA_EXPORT const std::vector<std::string>& CaptionsClaseIngreso();
// Clears `lista` and adds the nine captions.
CAJA_EXPORT void LlenarClasesIngreso(ControlLista& lista);

}  // namespace caja
