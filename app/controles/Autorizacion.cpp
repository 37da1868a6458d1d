#include "app/controles/Autorizacion.h"

#include <QDateTime>
#include <algorithm>
#include <cstdio>

#include "app/datos/Auditoria.h"
#include "app/datos/Supervisores.h"
#include "app/datos/Tipos.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

std::int64_t ajuste(const char* clave, std::int64_t defecto) {
  return CLng(Variant(lmGetSettingCur(kAppZOR, "Seguridad", clave, Currency::fromUnits(defecto))));
}

std::string ahora(std::int64_t masMinutos = 0) {
  return QDateTime::currentDateTime()
      .addSecs(masMinutos * 60)
      .toString("yyyy-MM-dd HH:mm:ss")
      .toStdString();
}

std::int64_t limiteDeIntentos() {
  return std::max<std::int64_t>(1, ajuste("IntentosPin", 5));
}

// "supervisor ANA": messages put "el" or "del" before it.
std::string quien(Rol rol, const std::string& nombre) {
  return std::string(nombreRol(rol)) + " " + nombre;
}

Asiento asientoDe(std::int32_t maquina, Rol rol, const std::string& nombre, const char* accion) {
  Asiento a;
  a.maquina = maquina;
  (rol == Rol::Cajero ? a.cajero : a.aprobador) = nombre;
  a.accion = accion;
  return a;
}

// A wrong PIN: counted, recorded, and at the limit the person is locked out
// for a while; all of it stays even though the act is refused.
[[noreturn]] void fallo(HostSql& db, const Maquina& maquina, Rol rol, const std::string& nombre) {
  const std::int64_t limite = limiteDeIntentos();
  std::int64_t fallos = 0;
  std::string hasta;
  db.EnTransaccion([&] {
    fallos = intentosDe(db, rol, nombre).fallos + 1;
    hasta = contarFallo(db, rol, nombre);
    Asiento a = asientoDe(maquina(), rol, nombre, "pin fallido");
    a.detalle = "intento " + std::to_string(fallos) + " de " + std::to_string(limite);
    anotar(db, a);
    if (!hasta.empty()) {
      a.accion = "bloqueo";
      a.detalle = "hasta " + hasta;
      anotar(db, a);
    }
  });
  if (!hasta.empty())
    throw Rechazo("PIN incorrecto: " + std::to_string(fallos) + " seguidos, el " +
                  quien(rol, nombre) + " queda bloqueado hasta " + hasta + "; nada se guardó");
  throw Rechazo("PIN incorrecto del " + quien(rol, nombre) + ": nada se guardó");
}

// The registered person whose PIN this is, or a refusal.
Persona verificada(HostSql& db, const Maquina& maquina, Rol rol, const Credencial& dicha) {
  const auto persona = personaDe(db, rol, dicha.nombre);
  if (!persona)
    throw Rechazo("No hay ningún " + std::string(nombreRol(rol)) + " llamado " + dicha.nombre +
                  ": nada se guardó");
  const Intentos intentos = intentosDe(db, rol, persona->nombre);
  if (intentos.bloqueadoHasta > ahora())
    throw Rechazo("El " + quien(rol, persona->nombre) + " está bloqueado hasta " +
                  intentos.bloqueadoHasta + " por PIN incorrectos: nada se guardó");
  if (!pinCoincide(*persona, dicha.pin))
    fallo(db, maquina, rol, persona->nombre);
  if (intentos.fallos > 0 || !intentos.bloqueadoHasta.empty())
    reiniciarIntentos(db, rol, persona->nombre);
  return *persona;
}

}  // namespace

std::string cajeroDe(HostSql& db, Firmas& firmas, const Maquina& maquina) {
  if (!hayPersonas(db, Rol::Cajero))
    return firmas.nombreDado(Rol::Cajero).value_or("CAJERO");
  return verificada(db, maquina, Rol::Cajero,
                    firmas.pedir(Rol::Cajero, "Cajero", "¿Quién atiende la caja?",
                                 nombresDe(db, Rol::Cajero)))
      .nombre;
}

std::string aprobacion(HostSql& db, Firmas& firmas, const Maquina& maquina, const std::string& que,
                       int nivel) {
  if (!hayPersonas(db, Rol::Supervisor))
    throw Rechazo("Para " + que +
                  " hace falta un supervisor y no hay ninguno: regístrelo con caja supervisor "
                  "--agregar NOMBRE; nada se guardó");
  const Persona p =
      verificada(db, maquina, Rol::Supervisor,
                 firmas.pedir(Rol::Supervisor, "Autorización",
                              "Para " + que + " hace falta la autorización de un supervisor",
                              nombresDe(db, Rol::Supervisor)));
  if (p.nivel < nivel)
    throw Rechazo("El supervisor " + p.nombre + " (nivel " + std::to_string(p.nivel) +
                  ") no puede autorizar " + que + ": hace falta nivel " + std::to_string(nivel) +
                  "; nada se guardó");
  return p.nombre;
}

std::string contarFallo(HostSql& db, Rol rol, const std::string& nombre) {
  const std::int64_t minutos = std::max<std::int64_t>(1, ajuste("MinutosBloqueo", 15));
  const std::int64_t fallos = intentosDe(db, rol, nombre).fallos + 1;
  const std::string hasta = fallos >= limiteDeIntentos() ? ahora(minutos) : "";
  ponerIntentos(db, rol, nombre, static_cast<std::int32_t>(hasta.empty() ? fallos : 0), hasta);
  return hasta;
}

void contarEnServidor(HostSql& servidor, const Asiento& a) {
  const Rol rol = a.aprobador.empty() ? Rol::Cajero : Rol::Supervisor;
  const std::string& nombre = a.aprobador.empty() ? a.cajero : a.aprobador;
  if (nombre.empty())
    return;
  if (a.accion == "pin fallido") {
    // The till's own last allowed failure comes with its own lockout row,
    // which locks the person on the server: nothing to count twice.
    int n = 0, limite = 0;
    if (std::sscanf(a.detalle.c_str(), "intento %d de %d", &n, &limite) == 2 && n >= limite)
      return;
    const std::string hasta = contarFallo(servidor, rol, nombre);
    if (hasta.empty())
      return;
    Asiento bloqueo = a;
    bloqueo.fecha.clear();
    bloqueo.origen.clear();
    bloqueo.accion = "bloqueo";
    bloqueo.detalle = "hasta " + hasta + " (PIN incorrectos en las cajas)";
    anotar(servidor, bloqueo);
  } else if (a.accion == "bloqueo" && a.detalle.rfind("hasta ", 0) == 0) {
    bloquearHasta(servidor, rol, nombre, a.detalle.substr(6, 19));
  }
}

int nivelExigido(const char* clave) {
  return static_cast<int>(std::clamp<std::int64_t>(ajuste(clave, 5), 0, 9));
}

Currency diferenciaTolerada() {
  return lmGetSettingCur(kAppZOR, "Seguridad", "DiferenciaCierre", Currency{});
}

void instalarVerificador(HostSql& db, Firmas& firmas) {
  db.SetVerificador([&db, &firmas](const std::string& mensaje) {
    // The component asks for a level, not for a person: the prompt says
    // that a supervisor's PIN is wanted, and that it is not the cashier's.
    const auto pin = firmas.pinDeSupervisor(mensaje + ". Lo autoriza un supervisor con su PIN");
    if (!pin)
      return Variant(0);
    const int nivel = nivelDePin(db, *pin);
    // No name is asked here, so no one is locked out; the failure is recorded.
    if (nivel == 0) {
      Asiento a;
      a.accion = "pin fallido";
      a.detalle = mensaje;
      anotarAparte(db, a);
    }
    return Variant(nivel);
  });
}

std::int64_t largoMinimoPin() {
  return std::max<std::int64_t>(4, ajuste("LargoMinimoPin", 6));
}

}  // namespace caja::app
