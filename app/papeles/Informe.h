#pragma once

#include <string>

#include "app/linea/Comandos.h"
#include "app/linea/Salida.h"

namespace caja::app {

// The closing report on A4: per method the expected, counted and difference
// amounts with a chart of the two, the notes counted, what made up the
// expected amounts per kind of movement, who counted and who approved, and
// the lines to sign.
void pdfCierre(Contexto& c, const Cierre& cierre, const std::string& archivo);

// `caja informe --desde --hasta [--maquina N]`: per day what came in per
// method from sales, refunds, voids, cash taken out, IGTF and the
// closings' differences; as text, --csv, --json, --pdf with the table and a
// stacked chart, or --png with the chart alone (--tamano ANCHOxALTO).
int informe(Contexto& c);

}  // namespace caja::app
