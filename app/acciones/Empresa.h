#pragma once

#include <string>

#include "app/linea/Comandos.h"

namespace caja::app {

// The shop's own data, kept in hostEmpresa: what its papers print and what
// decides its IGTF (charged only by a special taxpayer, at its percentage).
struct DatosEmpresa {
  std::string nombre, rif, direccion;
  bool especial = false;
  double igtf = 0;  // percentage
};

DatosEmpresa empresaDe(HostSql& db);

// The name with the tax number, as the head of a report prints it.
std::string encabezadoEmpresa(const DatosEmpresa& e);

// `caja empresa`: shows the shop's data, or sets what its options give,
// approved by a supervisor once the shop has one and recorded in the trail.
int empresa(Contexto& c);

}  // namespace caja::app
