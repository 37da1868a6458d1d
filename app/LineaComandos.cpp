#include "app/LineaComandos.h"

#include <set>
#include <stdexcept>

namespace caja::app {

namespace {
// Options that take no value.
const std::set<std::string> kBanderas = {"json", "demo", "aceptar", "editar", "agregar", "ayuda"};
}  // namespace

LineaComandos::LineaComandos(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a.rfind("--", 0) == 0) {
      const std::string nombre = a.substr(2);
      if (kBanderas.count(nombre)) {
        banderas_[nombre] = true;
      } else if (i + 1 < argc) {
        opciones_[nombre].push_back(argv[++i]);
      } else {
        throw std::runtime_error("Falta el valor de --" + nombre);
      }
    } else if (comando_.empty()) {
      comando_ = a;
    } else {
      posicionales_.push_back(a);
    }
  }
}

std::optional<std::string> LineaComandos::valor(const std::string& nombre) const {
  auto it = opciones_.find(nombre);
  if (it == opciones_.end())
    return std::nullopt;
  return it->second.back();
}

std::vector<std::string> LineaComandos::valores(const std::string& nombre) const {
  auto it = opciones_.find(nombre);
  return it == opciones_.end() ? std::vector<std::string>{} : it->second;
}

std::pair<std::string, std::string> parDe(const std::string& texto, const char* opcion) {
  const auto dos = texto.find_first_of(":=");
  if (dos == std::string::npos || dos == 0 || dos + 1 == texto.size())
    throw std::runtime_error(std::string("Valor no válido para --") + opcion + ": " + texto);
  return {texto.substr(0, dos), texto.substr(dos + 1)};
}

}  // namespace caja::app
