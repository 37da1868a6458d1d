#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "app/datos/Auditoria.h"
#include "app/envio/Diario.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/movement/CVarelta.h"

namespace caja::app {

struct DatosEmpresa;

// How a movement is named: by the number the database gave it, or, for one
// a till on a server saved in its journal and has not sent yet, by the
// journal's number, as "local N". Once sent, the server's number names it
// everywhere, so that one number never names two sales.
struct NumeroVisible {
  std::int32_t numero;
  bool local = false;
  std::string texto() const { return (local ? "local " : "") + std::to_string(numero); }
};

struct FilaMovimiento {
  std::int32_t numero;
  Fecha fecha, hora;
  std::int32_t sesion;
  std::string operador, documento;
  Currency debitos, creditos, igtf;
  bool anulado;
  std::string tipo;    // "venta", "devolucion", "entrada" or "salida"
  bool local = false;  // numbered by the till's journal: see NumeroVisible
};

struct MontoMedio {
  std::string medio;
  Currency montoMN, montoNominal;
  std::string tipo = {};  // the kind of movement, in totals per kind
};

struct SesionAbierta {
  std::int32_t sesion, maquina;
  std::string operador;
  Fecha apertura;
};

struct LineaCierre {
  std::string medio;
  Currency esperadoMN, esperadoNominal;
  double tipoCambio;
  Currency contado, diferencia;
};

// Notes or coins of one value counted in a method.
struct Denominacion {
  std::string medio;
  Currency valor;
  std::int16_t cantidad;
};

struct Cierre {
  std::int32_t id, maquina;  // id 0: a partial count, not recorded
  Fecha fecha;
  std::string operador;
  std::vector<LineaCierre> lineas;
  // The expected amounts' make-up per kind of movement.
  std::vector<MontoMedio> porTipo = {};
  std::vector<Denominacion> denominaciones = {};
  std::string aprobador = {};  // who approved its difference, if it needed it
};

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

// A JSON string literal (RFC 8259): quotes, backslashes and control
// characters escaped, and any byte that is not UTF-8 as U+FFFD, so that the
// output always parses.
std::string json(const std::string& texto);
// A rate as the output prints it: the shortest text that reads back the same.
std::string textoDeTasa(double tasa);
// A CSV field (RFC 4180): quoted when it holds a comma, a quote or a line break.
std::string csv(const std::string& texto);

}  // namespace caja::app
