#include "caja/uisupport/Protegido.h"

#include <cstdio>
#include <exception>

#include "caja/base/CajaError.h"
#include "caja/service/HostUtil.h"

namespace caja {

namespace {

void mostrar(const std::string& texto) noexcept {
  try {
    hostUtil().MostrarMensaje(texto);
  } catch (...) {
    // The message display itself failed: standard error is all that is left.
    std::fprintf(stderr, "%s\n", texto.c_str());
  }
}

}  // namespace

void protegido(const std::function<void()>& manejador) noexcept {
  try {
    manejador();
  } catch (const CajaError& e) {
    mostrar(e.description());
  } catch (const std::exception& e) {
    mostrar(e.what());
  } catch (...) {
    mostrar("Error inesperado");
  }
}

}  // namespace caja
