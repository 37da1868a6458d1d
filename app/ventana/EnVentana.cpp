#include "app/ventana/EnVentana.h"

#include <QCoreApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QThread>
#include <exception>

#include "app/controles/DialogoCredencial.h"
#include "caja/base/Texto.h"
#include "caja/dialogs/DialogosQt.h"

namespace caja::app {

namespace {

std::optional<std::string> pinEnDialogo(QWidget* padre, const std::string& titulo,
                                        const std::string& pide) {
  bool ok = false;
  const QString pin =
      QInputDialog::getText(padre, QString::fromStdString(titulo),
                            QString::fromStdString(pide + ":"), QLineEdit::Password, {}, &ok);
  if (!ok)
    return std::nullopt;
  return pin.toStdString();
}

// An act on the server runs off the window's thread; what it asks of the
// cashier is asked on the window's, and the answer (or the refusal) goes
// back to the act.
template <class Pregunta>
auto enLaVentana(Pregunta pregunta) -> decltype(pregunta()) {
  QCoreApplication* app = QCoreApplication::instance();
  if (QThread::currentThread() == app->thread())
    return pregunta();
  std::optional<decltype(pregunta())> dicho;
  std::exception_ptr error;
  QMetaObject::invokeMethod(
      app,
      [&] {
        try {
          dicho = pregunta();
        } catch (...) {
          error = std::current_exception();
        }
      },
      Qt::BlockingQueuedConnection);
  if (error)
    std::rethrow_exception(error);
  return std::move(*dicho);
}

}  // namespace

std::optional<std::string> FirmasDeVentana::nombreDado(Rol rol) {
  if (rol == Rol::Supervisor)
    return std::nullopt;
  return cajero_ ? cajero_->nombre : operador_;
}

Credencial FirmasDeVentana::pedir(Rol rol, const std::string& titulo, const std::string& para,
                                  const std::vector<std::string>& nombres) {
  if (rol == Rol::Cajero && cajero_)
    return *cajero_;
  const auto dicha =
      enLaVentana([&] { return credencialEnDialogo(titulo, para, nombres, "", ventana_); });
  if (!dicha)
    throw Rechazo(titulo + ": cancelado, nada se guardó");
  if (rol == Rol::Cajero)
    cajero_ = dicha;
  return *dicha;
}

std::string FirmasDeVentana::pinNuevo() {
  return enLaVentana([this] { return pinNuevoAqui(); });
}

std::string FirmasDeVentana::pinNuevoAqui() {
  const auto pin = pinEnDialogo(ventana_, "PIN nuevo", "El PIN nuevo");
  if (!pin)
    throw Rechazo("PIN nuevo: cancelado, nada se guardó");
  const std::int64_t minimo = largoMinimoPin();
  if (static_cast<std::int64_t>(largoUtf8(*pin)) < minimo)
    throw Rechazo("El PIN debe tener al menos " + std::to_string(minimo) + " caracteres");
  const auto otra = pinEnDialogo(ventana_, "PIN nuevo", "El mismo PIN otra vez");
  if (otra != pin)
    throw Rechazo("Los dos PIN no coinciden: nada se guardó");
  return *pin;
}

std::optional<std::string> FirmasDeVentana::pinDeSupervisor(const std::string& pide) {
  return enLaVentana([&] { return pinEnDialogo(ventana_, "Autorización de un supervisor", pide); });
}

void CobroDeVentana::preparar() {
  instalarDialogosQt();
}

std::shared_ptr<CVarelta> CobroDeVentana::trabajar(frmVarelta& dialogo, const Venta&) {
  return dialogo.mostrar();
}

}  // namespace caja::app
