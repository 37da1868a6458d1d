#pragma once

#include <cstdint>

#include "app/linea/Comandos.h"

namespace caja::app {

// The papers of a movement: `caja recibo N` prints its receipt as text, to
// an ESC/POS printer (--impresora, a device or a file) and as PDF (--pdf),
// at 32, 42 or 48 columns (--ancho, 42 unless given).
int recibo(Contexto& c);
// The company's name and tax number, as the head of a report prints them.
std::string nombreEmpresa(Contexto& c);
// The receipt's width --ancho asks; ErrorUso for one that is not a roll's.
int columnasRecibo(Contexto& c);
// The receipt of a movement just saved, as --imprimir asks: to --impresora
// when given, else as text after the movement. The movement stands
// whatever happens here: a failure is said on standard error.
void imprimirGuardado(Contexto& c, std::int32_t numero);

}  // namespace caja::app
