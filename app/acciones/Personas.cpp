#include "app/acciones/Personas.h"

#include <QApplication>
#include <algorithm>
#include <functional>

#include "app/datos/Consultas.h"
#include "app/datos/Diario.h"
#include "caja/base/Texto.h"
#include "caja/dialogs/DialogosQt.h"
#include "caja/facade/CServiciosCaja.h"

namespace caja::app {

namespace {

// Registering or changing who may act. `cambio` makes the change, given the
// new PIN when `conPin`, and names the act for the trail.
void cambiarPersonas(Puesto& p, const std::string& que, const std::string& detalle, int nivel,
                     bool conPin, const std::function<std::string(const std::string&)>& cambio) {
  Asiento a;
  a.maquina = p.maquina();
  a.detalle = detalle;
  if (hayPersonas(p.db(), Rol::Supervisor))
    a.aprobador = p.aprobacion(que, nivel);
  const std::string pin = conPin ? p.firmas.pinNuevo() : "";
  p.db().EnTransaccion([&] {
    a.accion = cambio(pin);
    anotar(p.db(), a);
  });
}

}  // namespace

void registrarSupervisor(Puesto& p, const std::string& nombre, int nivel) {
  const std::string detalle = "supervisor " + nombre + " nivel " + std::to_string(nivel);
  cambiarPersonas(p, "registrar al " + detalle, detalle,
                  std::max(nivel, nivelExigido("NivelAprobacion")), true,
                  [&](const std::string& pin) {
                    const bool habia = personaDe(p.db(), Rol::Supervisor, nombre).has_value();
                    agregarSupervisor(p.db(), nombre, pin, nivel);
                    return habia ? "cambio de supervisor" : "alta de supervisor";
                  });
}

void registrarCajero(Puesto& p, const std::string& nombre) {
  const std::string detalle = "cajero " + nombre;
  cambiarPersonas(p, "registrar al " + detalle, detalle, nivelExigido("NivelAprobacion"), true,
                  [&](const std::string& pin) {
                    const bool habia = personaDe(p.db(), Rol::Cajero, nombre).has_value();
                    agregarCajero(p.db(), nombre, pin);
                    return habia ? "cambio de cajero" : "alta de cajero";
                  });
}

void darDeBajaCajero(Puesto& p, const std::string& nombre) {
  const std::string detalle = "cajero " + nombre;
  cambiarPersonas(p, "dar de baja al " + detalle, detalle, nivelExigido("NivelAprobacion"), false,
                  [&](const std::string&) {
                    if (!quitarCajero(p.db(), nombre))
                      throw Rechazo("No hay ningún cajero llamado " + nombre);
                    return "baja de cajero";
                  });
}

std::vector<std::shared_ptr<CMedioPago>> mediosDeLaCaja(HostSql& db) {
  auto lista = mediosDelCatalogo(db);
  if (std::none_of(lista.begin(), lista.end(),
                   [](const auto& m) { return equalsIgnoreCase(m->codigo, "EFE"); })) {
    auto efectivo = std::make_shared<CMedioPago>();
    efectivo->codigo = "EFE";
    efectivo->Titulo = "Efectivo";
    efectivo->Descripcion = "Efectivo en moneda nacional";
    lista.insert(lista.begin(), efectivo);
  }
  return lista;
}

bool editarCatalogo(Puesto& p) {
  instalarDialogosQt();
  const std::string antes = catalogoComoTexto(p.db());
  CServiciosCaja servicios;
  servicios.Init(Variant(), p.almacen.db);
  servicios.DefinirMediosPago();
  const bool bien = QApplication::exec() == 0;
  if (catalogoComoTexto(p.db()) != antes) {
    Asiento a;
    a.maquina = p.maquina();
    a.accion = "catalogo";
    a.detalle = "medios de pago cambiados en el diálogo";
    anotarAparte(p.db(), a);
  }
  return bien;
}

std::string resolverConflicto(Puesto& p, HostSql& diario, std::int32_t numero) {
  const auto conflicto = conflictoSinResolver(diario, numero);
  if (!conflicto)
    throw Rechazo("No hay ningún conflicto " + std::to_string(numero) + " sin resolver");
  Asiento a;
  a.maquina = conflicto->maquina;
  a.accion = "conflicto resuelto";
  a.detalle = "conflicto " + std::to_string(numero) + ": " + conflicto->detalle;
  a.aprobador = p.aprobacion("dar por resuelto el conflicto " + std::to_string(numero),
                             nivelExigido("NivelAprobacion"));
  const bool aqui = p.almacen.db.get() == &diario;
  p.db().EnTransaccion([&] {
    anotar(p.db(), a);
    if (aqui)
      marcarResuelto(diario, numero, a.aprobador);
  });
  if (!aqui)
    marcarResuelto(diario, numero, a.aprobador);
  return a.aprobador;
}

}  // namespace caja::app
