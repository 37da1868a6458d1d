#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "drawer/SaldoCaja.h"
#include "movement/CVarelta.h"

namespace caja::app {

// Prints what the commands show, as text for people or as JSON for scripts.
class Salida {
 public:
  Salida(std::ostream& out, bool json) : out_(out), json_(json) {}

  void movimiento(CVarelta& mov);
  void saldo(SaldoCaja& saldo);
  void medios(const std::vector<std::shared_ptr<CMedioPago>>& medios);
  void lineas(const std::string& titulo, Collection<CDetalleIngreso>& lineas);
  void mensaje(const std::string& texto);

 private:
  std::ostream& out_;
  bool json_;
};

// A JSON string literal.
std::string json(const std::string& texto);

}  // namespace caja::app
