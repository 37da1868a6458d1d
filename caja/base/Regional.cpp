#include "caja/base/Regional.h"

namespace caja {

namespace {
Regional& actual() {
  static Regional valor;
  return valor;
}
}  // namespace

const Regional& regional() {
  return actual();
}
void setRegional(const Regional& valor) {
  actual() = valor;
}

}  // namespace caja
