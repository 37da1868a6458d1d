#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/acciones/Puesto.h"
#include "app/datos/Consultas.h"
#include "app/envio/Envio.h"

namespace caja::app {

// The till's day: sessions, the rate, listings, voiding and the closing
// count. Voids and closings are kept in the program's own tables
// (hostAnulaciones, hostCierres and theirs); on a server, the server's
// functions write them.

// Opens a session at `maquina` for the cashier: its number.
std::int32_t abrirSesion(Puesto& p, std::int32_t maquina);
// Closes `sesion`, or the one open at `maquina`: the number closed.
std::int32_t cerrarSesion(Puesto& p, std::optional<std::int32_t> sesion, std::int32_t maquina);

// Sets the till's rate, recorded in the trail with the one it replaces.
void fijarTasaDeCaja(Puesto& p, double tasa);

// A listing: its movements (numbered as the till names them), totals per
// method and per kind and method of those that stand, and their IGTF.
struct Listado {
  std::vector<FilaMovimiento> filas;
  std::vector<MontoMedio> totales, porTipo;
  Currency igtf;
};
Listado listar(Almacen& a, const Filtro& f);

// Voids the movement numbered `numero` where the act runs (`nombre` as the
// till names it), approved by a supervisor and recorded in the trail with
// `motivo`: its drawer transaction is taken back.
void anular(Puesto& p, std::int32_t numero, const std::string& nombre, const std::string& motivo);

// A closing count: `contado` per method in its own currency, with the notes
// and coins it was counted by. A partial count records nothing and needs no
// one; a full one needs a supervisor beyond the tolerated difference, and,
// at a till on a server, sends what waits first (with `forzar`, a closing
// that leaves movements unsent, approved at the forcing level).
struct Arqueo {
  std::int32_t maquina;
  std::map<std::string, Currency> contado;
  std::vector<Denominacion> denominaciones;
  bool parcial = false;
  bool forzar = false;
  // Told what was sent first, before the closing goes on or is refused.
  std::function<void(const Envio&)> alEnviar = [](const Envio&) {};
};
Cierre cerrarCaja(Puesto& p, const Arqueo& arqueo);
// What the drawer of `maquina` expects per method, before it is counted.
std::vector<LineaCierre> esperadoDeCaja(std::int32_t maquina);

}  // namespace caja::app
