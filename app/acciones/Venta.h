#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/acciones/Puesto.h"
#include "caja/dialogs/frmVarelta.h"

namespace caja::app {

// A payment: the catalogue's code and its amount in the method's own currency.
struct Pago {
  std::string codigo;
  Currency monto;
};

// A movement to save: a sale (its base, tax and credit, charged in the
// collection dialog), a refund (the amounts given back) or cash put in or
// taken out (its lines, `pagos`).
struct Venta {
  Currency venta, iva, credito;
  std::string titulo = "Cobro";
  std::string tipoDoc, tipoEnt = "CLI", codEnt = "C0001";
  std::int32_t numDoc = 0;
  bool conDocumento = false;  // without one the movement has none ("sin documento")
  std::vector<Pago> pagos;
  std::vector<Pago> vueltos;           // "CREDITO" for the credited part
  std::string clasificacion;           // empty for a sale
  std::optional<std::int32_t> sesion;  // the till's open one when none
  bool repetir = false;                // charge a document charged already
  bool forzar = false;                 // leave a drawer below zero, with a supervisor
};

// How the collection dialog, loaded with the movement, is worked: shown to
// the cashier, or typed in their place. The accepted movement, or nothing.
class Cobrador {
 public:
  virtual ~Cobrador() = default;
  // Before the dialog is loaded: may refuse, or set up what showing it needs.
  virtual void preparar() {}
  virtual std::shared_ptr<CVarelta> trabajar(frmVarelta& dialogo, const Venta& v) = 0;
};

// Each saves and commits in one transaction with its change, its amounts
// and its key, and answers the movement's number where it was saved; a
// refusal (Rechazo) saves nothing. A sale may start from the lines parked
// under `aparcada`, which it frees in the same transaction.
std::int32_t vender(Puesto& p, const Venta& v, Cobrador& cobrador,
                    const std::string* aparcada = nullptr);
// A refund: `v.venta` and `v.iva` are what is given back, positive;
// approved by a supervisor.
std::int32_t devolver(Puesto& p, Venta v, Cobrador& cobrador);
// Cash put in (kEntrada) or taken out (kSalida, approved) without a sale.
std::int32_t moverEfectivo(Puesto& p, Venta v);

// Lines parked under `clave` for a sale to come, and dropped.
void aparcar(Puesto& p, const std::string& clave, const std::vector<Pago>& pagos,
             CVarelta& aparcado);
void revertir(const std::string& clave);

}  // namespace caja::app
