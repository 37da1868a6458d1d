#pragma once

#include "app/acciones/Venta.h"
#include "app/controles/Autorizacion.h"
#include "app/linea/LineaComandos.h"

namespace caja::app {

// Names and PINs as the command line gives them: --operador and --autoriza
// name the people, and each PIN is typed in a small dialog when the program
// runs with a screen, else read from standard input, one line each, in the
// order they are asked.
class FirmasDeLinea : public Firmas {
 public:
  FirmasDeLinea(const LineaComandos& args, bool conPantalla)
      : args_(args), conPantalla_(conPantalla) {}
  std::optional<std::string> nombreDado(Rol rol) override;
  Credencial pedir(Rol rol, const std::string& titulo, const std::string& para,
                   const std::vector<std::string>& nombres) override;
  // ErrorUso for one shorter than the shop asks.
  std::string pinNuevo() override;
  std::optional<std::string> pinDeSupervisor(const std::string& pide) override;

 private:
  const LineaComandos& args_;
  bool conPantalla_;
};

// The collection dialog as the command line works it: typed unseen and
// accepted (--pago, --vuelto and --aceptar), or shown to the cashier.
class CobroDeLinea : public Cobrador {
 public:
  CobroDeLinea(const LineaComandos& args, bool conPantalla)
      : args_(args), conPantalla_(conPantalla) {}
  void preparar() override;
  std::shared_ptr<CVarelta> trabajar(frmVarelta& dialogo, const Venta& v) override;

 private:
  const LineaComandos& args_;
  bool conPantalla_;
};

}  // namespace caja::app
