#include "caja/uisupport/Protegido.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <cstdio>
#include <exception>

#include "caja/base/CajaError.h"
#include "caja/service/HostUtil.h"

namespace caja {

namespace {

// Counts what the cashier does: a key or a click anywhere in the program.
class VigiaDelCajero : public QObject {
 public:
  using QObject::QObject;
  unsigned long acciones = 0;

 protected:
  bool eventFilter(QObject*, QEvent* evento) override {
    if (evento->type() == QEvent::KeyPress || evento->type() == QEvent::MouseButtonPress)
      ++acciones;
    return false;
  }
};

// Installed on the first error, again if the application object was made anew.
VigiaDelCajero* vigia() {
  static QPointer<VigiaDelCajero> instalado;
  if (!instalado && QCoreApplication::instance()) {
    instalado = new VigiaDelCajero(QCoreApplication::instance());
    QCoreApplication::instance()->installEventFilter(instalado);
  }
  return instalado;
}

void mostrar(const std::string& texto) noexcept {
  try {
    hostUtil().MostrarMensaje(texto);
  } catch (...) {
    // The message display itself failed: standard error is all that is left.
    std::fprintf(stderr, "%s\n", texto.c_str());
  }
}

// A handler that fails again as soon as its message closes (one run when the
// focus comes back to the field that failed) would otherwise show the same
// message for ever, and the cashier could never leave the dialog. The same
// text is shown again only once the cashier has pressed a key or clicked
// since it closed, and never from within its own message; meanwhile it goes
// to standard error.
void avisar(const std::string& texto) noexcept {
  static std::string ultimo;
  static bool mostrando = false;
  static unsigned long accionesAlCerrar = 0;
  VigiaDelCajero* v = vigia();
  if (v && texto == ultimo && (mostrando || v->acciones == accionesAlCerrar)) {
    std::fprintf(stderr, "%s\n", texto.c_str());
    return;
  }
  try {
    ultimo = texto;
  } catch (...) {
    ultimo.clear();
  }
  mostrando = true;
  mostrar(texto);
  mostrando = false;
  accionesAlCerrar = v ? v->acciones : 0;
}

}  // namespace

void protegido(const std::function<void()>& manejador) noexcept {
  try {
    manejador();
  } catch (const std::exception& e) {
    avisar(descripcionDe(e));
  } catch (...) {
    avisar("Error inesperado");
  }
}

}  // namespace caja
