#pragma once

#include <optional>
#include <string>

#include "app/acciones/Venta.h"
#include "app/controles/Autorizacion.h"

class QWidget;

namespace caja::app {

// Names and PINs at the till's window: the cashier who signed in (asked
// once, then kept for every act of the shift), a supervisor's in a small
// dialog each time an act needs one, a new PIN twice. An act running off
// the window's thread gets its dialogs on the window's.
class FirmasDeVentana : public Firmas {
 public:
  FirmasDeVentana(QWidget* ventana, std::string operador)
      : ventana_(ventana), operador_(std::move(operador)) {}
  std::optional<std::string> nombreDado(Rol rol) override;
  Credencial pedir(Rol rol, const std::string& titulo, const std::string& para,
                   const std::vector<std::string>& nombres) override;
  std::string pinNuevo() override;
  std::optional<std::string> pinDeSupervisor(const std::string& pide) override;
  // The cashier signs in again: the next act asks for the name and PIN.
  void olvidarCajero() { cajero_.reset(); }

 private:
  std::string pinNuevoAqui();

  QWidget* ventana_;
  std::string operador_;  // the name when the shop has no cashiers registered
  std::optional<Credencial> cajero_;
};

// The collection dialog shown to the cashier.
class CobroDeVentana : public Cobrador {
 public:
  void preparar() override;
  std::shared_ptr<CVarelta> trabajar(frmVarelta& dialogo, const Venta& v) override;
};

}  // namespace caja::app
