#include "caja/catalog/ClaseIngresoSesion.h"

namespace caja {

const std::vector<std::string>& CaptionsClaseIngreso() {
  static const std::vector<std::string> captions = {"Efectivo", "Cheques",   "TC AMEX",
                                                    "TC VISA",  "TC MASTER", "TC OTRAS",
                                                    "T.DEBITO", "OTROS",     "Efectivo USD"};
  return captions;
}

void LlenarClasesIngreso(ControlLista& lista) {
  lista.Clear();
  for (const auto& caption : CaptionsClaseIngreso())
    lista.AddItem(caption);
}

}  // namespace caja
