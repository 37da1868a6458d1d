#include "app/envio/Envio.h"

#include <iostream>

#include "app/controles/Autorizacion.h"
#include "app/datos/Carpeta.h"
#include "app/envio/Cerrojo.h"

namespace caja::app {

namespace {

// Movements sent in one call: few round trips for a backlog, and a batch
// small enough that one the server refuses is soon sent again one by one.
constexpr std::size_t kLote = 100;

// Sends a batch in one call, one server transaction; the journal marks
// each movement with the number the server gave it. Exactly once: the
// server keeps each key with its movement, so a batch whose answer was lost
// is answered again from the keys when it is sent once more.
void enviarLote(HostSql& servidor, HostSql& diario, const std::vector<Pendiente>& lote,
                Envio& envio) {
  const auto respuesta = recibirLote(servidor, loteJson(diario, lote));
  marcarEnviados(diario, respuesta);
  for (const Pendiente& p : lote) {
    const auto& [numero, previos] = respuesta.at(p.clave);
    envio.enviados.emplace_back(p.numeroLocal, numero);
    if (!previos.empty())
      envio.conflictos.push_back(conflictoDe(p, previos, numero));
  }
}

// One movement alone, after its batch was refused: a refusal of its own is
// named, and it stays pending.
void enviarSolo(HostSql& servidor, HostSql& diario, const Pendiente& p, Envio& envio) {
  try {
    enviarLote(servidor, diario, {p}, envio);
  } catch (const CajaError& e) {
    if (e.number() == kErrorConexion)
      throw;
    envio.fallidos.push_back(
        {p.clave, p.numeroLocal, p.maquina,
         "Movimiento local " + std::to_string(p.numeroLocal) + " no enviado: " + e.description()});
  }
}

// The journal's trail rows the server has not got, in order, each with its
// movement's number on the server and, as its origin, its hash in the
// journal, which keeps a row from reaching the server twice. A row whose
// movement is not on the server yet waits, and those after it.
void enviarAuditoria(HostSql& servidor, HostSql& diario) {
  for (Asiento a : asientosSinEnviar(diario)) {
    const std::int64_t fila = a.id;
    if (a.movimiento) {
      a.movimiento = numeroEnServidor(diario, *a.movimiento);
      if (*a.movimiento <= 0)
        return;
    }
    a.origen = a.hash;
    servidor.EnTransaccion([&] {
      if (asientoRecibido(servidor, a.origen))
        return;
      anotar(servidor, a);
      contarEnServidor(servidor, a);
    });
    marcarAsientoEnviado(diario, fila);
  }
}

}  // namespace

Envio sincronizar(HostSql& servidor, HostSql& diario) {
  const Cerrojo enviando(carpetaDeDatos(true) / "envio.lock", true);
  Envio envio;
  const std::vector<Pendiente> lista = pendientes(diario);
  for (std::size_t desde = 0; desde < lista.size(); desde += kLote) {
    const std::vector<Pendiente> lote(
        lista.begin() + static_cast<std::ptrdiff_t>(desde),
        lista.begin() + static_cast<std::ptrdiff_t>(std::min(lista.size(), desde + kLote)));
    try {
      enviarLote(servidor, diario, lote, envio);
    } catch (const CajaError& e) {
      // A lost link ends the run. A batch the server refuses is sent again
      // a movement at a time, so that the one it refuses stays in the
      // journal, named, and does not hold back the others.
      if (e.number() == kErrorConexion)
        throw;
      for (const Pendiente& p : lote)
        enviarSolo(servidor, diario, p, envio);
    }
  }
  // What went wrong is heard of, at the till and in the shop.
  diario.EnTransaccion([&] {
    guardarConflictos(diario, "documento", envio.conflictos);
    guardarConflictos(diario, "rechazo", envio.fallidos);
  });
  enviarAuditoria(servidor, diario);
  olvidarEnviados(diario);
  // Noted only when something went, so that a sale with nothing to send
  // writes nothing more.
  if (envio.fallidos.empty() && !envio.enviados.empty())
    anotarEnvio();
  return envio;
}

Envio sincronizarCaja(HostSql& servidor) {
  Envio envio;
  if (const auto diario = abrirDiario(false)) {
    envio = sincronizar(servidor, *diario);
    copiarReferencias(servidor, *diario);
  }
  return envio;
}

void avisarEnvio(const Envio& envio) {
  for (const auto* lista : {&envio.conflictos, &envio.fallidos})
    for (const Aviso& aviso : *lista)
      std::cerr << aviso.texto << std::endl;
}

void avisarDiarioSinActualizar(const std::exception& e) {
  const auto* error = dynamic_cast<const CajaError*>(&e);
  std::cerr << "El diario de esta caja no se actualizó: "
            << (error ? error->description() : e.what()) << std::endl;
}

}  // namespace caja::app
