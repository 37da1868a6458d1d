#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace caja::app {

// The command line: a command, its positional words and its --options
// (repeatable, each with a value, or a bare flag).
class LineaComandos {
 public:
  LineaComandos(int argc, char** argv);

  const std::string& comando() const { return comando_; }
  const std::vector<std::string>& posicionales() const { return posicionales_; }
  bool bandera(const std::string& nombre) const { return banderas_.count(nombre) > 0; }
  std::optional<std::string> valor(const std::string& nombre) const;
  std::vector<std::string> valores(const std::string& nombre) const;
  std::string valor(const std::string& nombre, const std::string& defecto) const {
    return valor(nombre).value_or(defecto);
  }

 private:
  std::string comando_;
  std::vector<std::string> posicionales_;
  std::map<std::string, std::vector<std::string>> opciones_;
  std::map<std::string, bool> banderas_;
};

// "TIPO:NUMERO" split at its first ':'; an error for any other text.
std::pair<std::string, std::string> parDe(const std::string& texto, const char* opcion);

}  // namespace caja::app
