#pragma once

#include <functional>
#include <string>
#include <vector>

#include "caja/service/ObjetosHost.h"

namespace caja::test {

// A host extension that records the procedures run, can fail on demand and
// lets a test script what a procedure does with its arguments.
class PosExtGrabadora : public PosExt {
 public:
  std::vector<std::string> llamadas;
  std::shared_ptr<Objeto> recibido;
  bool fallar = false;
  Variant esValido = Variant(true);
  std::function<void(std::vector<Variant>&)> alCorrer;

  Variant Run(const std::string& p, std::vector<Variant>& args) override {
    llamadas.push_back(p);
    recibido = args.at(0).asObject();
    if (fallar)
      throw CajaError(438, "posExt", "no existe");
    if (alCorrer)
      alCorrer(args);
    return Variant();
  }
  Variant Eval(const std::string& expresion) override {
    llamadas.push_back("Eval " + expresion);
    return esValido;
  }
};

}  // namespace caja::test
