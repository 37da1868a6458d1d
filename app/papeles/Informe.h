#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>

#include "app/datos/Consultas.h"

class QChart;

namespace caja::app {

// One day of the month.
struct Dia {
  std::map<std::string, Currency> entradas;  // sales per method, national currency
  Currency devoluciones, anulaciones, salidas, igtf, diferencias;
};

struct Mes {
  Fecha desde, hasta;
  std::optional<std::int32_t> maquina;
  std::set<std::string> medios;
  std::map<std::string, Dia> dias;  // by "yyyy-mm-dd", every day of the range
  Dia total;
};

// Per day of the range what came in per method from sales, refunds, voids,
// cash taken out, IGTF and the closings' differences, of `maquina` or of
// every till.
Mes mesDe(HostSql& db, Fecha desde, Fecha hasta, std::optional<std::int32_t> maquina);
// The month as text, CSV, JSON, a PDF with the table and a stacked chart,
// or the chart alone as PNG.
void textoDelMes(std::ostream& out, const Mes& mes);
void csvDelMes(std::ostream& out, const Mes& mes);
void jsonDelMes(std::ostream& out, const Mes& mes);
void pdfDelMes(HostSql& db, const Mes& mes, const std::string& archivo);
void pngDelMes(const Mes& mes, int ancho, int alto, const std::string& archivo);
// The month's chart: per day what came in per method, stacked.
std::unique_ptr<QChart> graficoDelMes(const Mes& mes);

// The closing report on A4: per method the expected, counted and difference
// amounts with a chart of the two, the notes counted, what made up the
// expected amounts per kind of movement, who counted and who approved, and
// the lines to sign.
void pdfCierre(HostSql& db, const Cierre& cierre, const std::string& archivo);

}  // namespace caja::app
