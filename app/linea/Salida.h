#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "app/datos/Auditoria.h"
#include "app/datos/Diario.h"
#include "app/datos/Json.h"
#include "app/datos/Tipos.h"
#include "app/envio/Envio.h"
#include "caja/catalog/CMedioPago.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/movement/CVarelta.h"

namespace caja::app {

// Prints what the commands show, as text for people or as JSON for scripts.
class Salida {
 public:
  Salida(std::ostream& out, bool json) : out_(out), json_(json) {}

  // A movement, named `numero`, with how its change went back (the credited
  // part as "CREDITO").
  void movimiento(CVarelta& mov, const std::vector<MontoMedio>& vuelto, NumeroVisible numero);
  void saldo(SaldoCaja& saldo);
  void medios(const std::vector<std::shared_ptr<CMedioPago>>& medios);
  void lineas(const std::string& titulo, Collection<CDetalleIngreso>& lineas);
  void mensaje(const std::string& texto);
  // What waits in the till's journal with the conflicts not acknowledged
  // yet, and what one run of sending did.
  void pendientes(const std::vector<Pendiente>& lista, const std::vector<Conflicto>& sinResolver);
  // This till's conflicts, and the documents the database holds as charged
  // at more than one till, one line each.
  void conflictos(const std::vector<Conflicto>& deLaCaja,
                  const std::vector<std::string>& repetidos);
  void envio(const Envio& envio);
  // After a read of the server: the movements waiting at this till, which
  // it does not have yet, and what they add to the drawers.
  void esperanEnvio(const std::vector<Pendiente>& lista, const std::vector<MontoMedio>& aporte);
  // A list of names, one a line or a JSON array.
  void nombres(const std::vector<std::string>& lista);
  void sesion(std::int32_t numero, std::int32_t maquina);
  void maquina(std::int32_t numero);
  void empresa(const DatosEmpresa& e);
  void sesiones(const std::vector<SesionAbierta>& lista);
  void tasa(double valor);
  // One row per movement, then the totals per method, per kind and method,
  // and the IGTF.
  void movimientos(const std::vector<FilaMovimiento>& filas, const std::vector<MontoMedio>& totales,
                   const std::vector<MontoMedio>& porTipo, Currency igtf, bool csv);
  void cierres(const std::vector<Cierre>& lista);
  // The audit trail, row by row with its hashes (JSON and CSV) or without.
  void auditoria(const std::vector<Asiento>& filas, bool csv);

 private:
  std::ostream& out_;
  bool json_;
};

}  // namespace caja::app
