#pragma once

#include <cstdint>
#include <functional>

#include "app/controles/Autorizacion.h"
#include "app/datos/Almacen.h"

namespace caja::app {

// The till an action acts at: where its data is, where names and PINs come
// from, and the machine its rows of the trail name (found when first needed).
struct Puesto {
  Almacen& almacen;
  Firmas& firmas;
  Maquina maquina;

  HostSql& db() { return *almacen.db; }
  std::string cajero() { return cajeroDe(db(), firmas, maquina); }
  std::string aprobacion(const std::string& que, int nivel) {
    return app::aprobacion(db(), firmas, maquina, que, nivel);
  }
};

}  // namespace caja::app
