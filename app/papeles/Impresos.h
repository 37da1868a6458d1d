#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/datos/Almacen.h"
#include "app/papeles/Recibo.h"

namespace caja::app {

// The papers of a movement: its receipt for thermal paper at 32, 42 or 48
// columns, as text, ESC/POS bytes (with the drawer's pulse when cash moved),
// PDF or JSON.
struct ReciboListo {
  std::vector<LineaRecibo> lineas;
  bool conEfectivo;  // cash moved: the printer opens the drawer
};
// The receipt of the movement numbered `numero` where the act runs.
ReciboListo reciboDe(Almacen& a, std::int32_t numero, int ancho);
// Appends the bytes to the printer (a device or a file).
void aImpresora(const std::string& ruta, const std::string& bytes);
// The receipt on a page as wide as the roll and as long as it is.
void reciboPdf(const std::vector<LineaRecibo>& lineas, int ancho, const std::string& archivo);
// The lines as JSON, for a host that prints them its own way.
std::string jsonRecibo(const std::vector<LineaRecibo>& lineas);
// The company's name and tax number, as the head of a report prints them.
std::string encabezadoEmpresa(const DatosEmpresa& e);
std::string nombreEmpresa(HostSql& db);

}  // namespace caja::app
