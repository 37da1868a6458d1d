#pragma once

#include <optional>
#include <string>
#include <vector>

#include "caja/base/Currency.h"
#include "caja/base/Fecha.h"

namespace caja::app {

// A payment line of a receipt: the method's name, what was handed over in
// the method's own currency and its value in national currency, as the
// database holds them, with the particulars a customer may see.
struct PagoRecibo {
  std::string medio;        // the catalogue's title, or its code
  bool extranjero = false;  // shown with its nominal amount and rate
  Currency montoNominal, monto;
  std::string codigo, tasa;       // beside a foreign amount: its code and rate
  std::string cuenta, documento;  // shown masked but the last four digits
};

struct VueltoRecibo {
  std::string medio, codigo;  // codigo "CREDITO" for the part credited to the customer
  Currency montoNominal, monto;
};

// Everything a receipt prints of a saved movement.
struct DatosRecibo {
  std::string empresa, rif, direccion;
  std::int32_t numero = 0, maquina = 0, sesion = 0;
  std::string cajero, documento, tipo;  // tipo: "venta", "devolucion", "entrada", "salida"
  Fecha fecha, hora;
  bool anulado = false;
  bool local = false;  // numbered by the till's journal, not yet by the server
  std::vector<PagoRecibo> pagos;
  std::vector<VueltoRecibo> vuelto;
  // What a sale or refund was made of, when the till kept it.
  std::optional<Currency> base, iva, credito;
  Currency igtf, total;
  // Why money came in or went out (or was given back) and who approved it;
  // for a void, who voided it, who approved and why.
  std::string motivo, aprobador;
  std::string anuladoPor, aprobadorAnulacion, motivoAnulacion;
  bool conEfectivo = false;  // took or gave cash: the drawer opens
};

// A line of the paper; titles print bold.
struct LineaRecibo {
  std::string texto;
  bool titulo = false;
};

// The widths of thermal paper: 32 columns on 58 mm, 42 or 48 on 80 mm.
bool anchoValido(int columnas);

// The receipt laid out in lines of at most `columnas` characters.
std::vector<LineaRecibo> lineasRecibo(const DatosRecibo& d, int columnas);
// An amount as papers print it: exact to the ten-thousandth the database
// keeps, never fewer than two decimals ("116.00", "0.0011").
std::string montoImpreso(Currency c);
// A number masked but its last four characters: "************1234".
std::string enmascarar(const std::string& numero);

// Plain text, one line each.
std::string textoRecibo(const std::vector<LineaRecibo>& lineas);
// The bytes for an ESC/POS printer: initialise, code page 850, the lines
// (titles bold), the drawer pulse when `abrirCajon`, feed and cut.
std::string escposRecibo(const std::vector<LineaRecibo>& lineas, bool abrirCajon);

}  // namespace caja::app
