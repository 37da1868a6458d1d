#include "app/linea/EnLinea.h"

#include <QInputDialog>
#include <QLineEdit>
#include <iostream>

#include <unistd.h>

#include "app/controles/DialogoCredencial.h"
#include "caja/base/Texto.h"
#include "caja/dialogs/DialogosQt.h"
#include "caja/dialogs/frmDefinirVuelto.h"

namespace caja::app {

namespace {

// One line of standard input, without the line end a terminal may leave;
// the question is shown to a person at a terminal only.
std::string lineaDeEntrada(const std::string& pregunta) {
  if (isatty(STDIN_FILENO))
    std::cerr << pregunta << ": " << std::flush;
  std::string linea;
  if (!std::getline(std::cin, linea))
    throw Rechazo("Falta " + pregunta + " en la entrada estándar: nada se guardó");
  if (!linea.empty() && linea.back() == '\r')
    linea.pop_back();
  return linea;
}

// The change split typed in place of the cashier: the suggestion when no
// --vuelto was given, else exactly the amounts given.
bool teclearVuelto(const Venta& v, frmDefinirVuelto& d) {
  if (!v.vueltos.empty()) {
    d.limpiar();
    for (const auto& [codigo, monto] : v.vueltos)
      if (!d.teclear(codigo, monto))
        throw ErrorUso("El medio " + codigo + " no da vuelto en este cobro");
  }
  return d.aceptarGuion();
}

}  // namespace

std::optional<std::string> FirmasDeLinea::nombreDado(Rol rol) {
  return args_.valor(rol == Rol::Cajero ? "operador" : "autoriza");
}

Credencial FirmasDeLinea::pedir(Rol rol, const std::string& titulo, const std::string& para,
                                const std::vector<std::string>& nombres) {
  const auto dado = nombreDado(rol);
  if (!dado && !conPantalla_) {
    if (rol == Rol::Cajero)
      throw ErrorUso("La tienda tiene cajeros registrados: indique --operador NOMBRE y su PIN");
    throw Rechazo(para + ": --autoriza NOMBRE y su PIN en la entrada estándar; nada se guardó");
  }
  if (conPantalla_) {
    const auto dicha = credencialEnDialogo(titulo, para, nombres, dado.value_or(""));
    if (!dicha)
      throw Rechazo(titulo + ": cancelado, nada se guardó");
    return *dicha;
  }
  return {*dado, lineaDeEntrada("el PIN del " + std::string(nombreRol(rol)) + " " + *dado)};
}

std::string FirmasDeLinea::pinNuevo() {
  // Never from the command line, where every local user can read it.
  const std::string pin = lineaDeEntrada("el PIN nuevo");
  const std::int64_t minimo = largoMinimoPin();
  if (static_cast<std::int64_t>(largoUtf8(pin)) < minimo)
    throw ErrorUso("El PIN debe tener al menos " + std::to_string(minimo) + " caracteres");
  return pin;
}

std::optional<std::string> FirmasDeLinea::pinDeSupervisor(const std::string& pide) {
  if (conPantalla_) {
    bool ok = false;
    const QString pin =
        QInputDialog::getText(nullptr, "Autorización de un supervisor",
                              QString::fromStdString(pide + ":"), QLineEdit::Password, {}, &ok);
    if (!ok)
      return std::nullopt;
    return pin.toStdString();
  }
  std::cerr << pide << ": ";
  std::string pin;
  std::getline(std::cin, pin);
  return pin;
}

void CobroDeLinea::preparar() {
  const bool guion = args_.bandera("aceptar");
  if (!guion && !conPantalla_)
    throw ErrorUso("No hay pantalla: use --pago CODIGO=MONTO y --aceptar");
  if (!guion)
    instalarDialogosQt();
}

std::shared_ptr<CVarelta> CobroDeLinea::trabajar(frmVarelta& dialogo, const Venta& v) {
  if (!v.vueltos.empty() && !dialogo.cobro().opciones.dividirVuelto)
    throw ErrorUso(
        "--vuelto necesita que la tienda reparta el vuelto (VueltoDetallado o "
        "acreditarVueltos en ZOR.ini)");
  if (!args_.bandera("aceptar"))
    return dialogo.mostrar();
  for (const auto& [codigo, monto] : v.pagos)
    if (!dialogo.teclear(codigo, monto))
      throw ErrorUso("El medio de pago " + codigo + " no tiene entrada en el cobro");
  dialogo.guionVuelto = [&v](frmDefinirVuelto& d) { return teclearVuelto(v, d); };
  return dialogo.aceptarGuion() ? dialogo.resultado() : nullptr;
}

}  // namespace caja::app
