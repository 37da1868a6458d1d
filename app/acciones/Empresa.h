#pragma once

#include <optional>
#include <string>

#include "app/acciones/Puesto.h"

namespace caja::app {

// What a change of the shop's data gives; what it leaves out stays.
struct CambioEmpresa {
  std::optional<std::string> nombre, rif, direccion;
  std::optional<bool> especial;  // a special taxpayer, who alone charges IGTF
  std::optional<double> igtf;    // percentage, 0 to 100
};

// Changes the shop's data, approved by a supervisor once the shop has one
// and recorded in the trail with what changed. A percentage above 0 makes
// the shop a special taxpayer unless the change says it is not one. The
// data as it stands afterwards.
DatosEmpresa cambiarEmpresa(Puesto& p, const CambioEmpresa& cambio);

}  // namespace caja::app
