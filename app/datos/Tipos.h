#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "caja/base/Currency.h"
#include "caja/base/Fecha.h"

namespace caja::app {

// A refusal that leaves everything as it was, with its reason: what a till
// action answers when the till's state, its rules or a person say no.
struct Rechazo : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The kind of a movement, kept in its Clasificacion: sales keep it empty, as
// movements always had; refunds, cash put in and cash taken out are named.
inline constexpr const char* kDevolucion = "DEVOLUCION";
inline constexpr const char* kEntrada = "ENTRADA";
inline constexpr const char* kSalida = "SALIDA";
// What a refund or cash put in is described as when no reason is given.
inline constexpr const char* kTituloDevolucion = "Devolución";
inline constexpr const char* kTituloEntrada = "Entrada de efectivo";
// The kind as listings show it: "venta", "devolucion", "entrada" or "salida".
std::string tipoDe(const std::string& clasificacion);

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
  std::string tipo;          // "venta", "devolucion", "entrada" or "salida"
  bool local = false;        // numbered by the till's journal: see NumeroVisible
  std::int32_t transId = 0;  // its number where it was read
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

// The shop's own data, kept in hostEmpresa: what its papers print and what
// decides its IGTF (charged only by a special taxpayer, at its percentage).
struct DatosEmpresa {
  std::string nombre, rif, direccion;
  bool especial = false;
  double igtf = 0;  // percentage
};

}  // namespace caja::app
