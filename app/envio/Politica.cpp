#include "app/envio/Politica.h"

#include <filesystem>
#include <iostream>
#include <limits>
#include <map>

#include "app/acciones/Devolucion.h"
#include "app/envio/Diario.h"
#include "app/envio/Enviador.h"
#include "app/linea/Salida.h"
#include "caja/base/Conversiones.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

bool esUno(const std::string& comando, std::initializer_list<const char*> lista) {
  for (const char* c : lista)
    if (comando == c)
      return true;
  return false;
}

bool guardaMovimiento(const std::string& comando) {
  return esUno(comando, {"cobrar", "devolver", "entrada", "salida"});
}

// Reads of a till's figures: the server's, or the journal's when the server
// is away.
bool leeCifras(const std::string& comando) {
  return esUno(comando, {"saldo", "movimientos", "movimiento"});
}

// What a sale reads (a voided movement frees its document) and these
// commands change on the server.
bool cambiaReferencias(const std::string& comando) {
  return esUno(comando, {"init", "tasa", "sesion", "medios", "supervisor", "cajero", "anular",
                         "cierre", "empresa"});
}

// The default file, under the user's data folder; the folder is made only
// for a command that creates the database.
std::string baseDeDatosPorDefecto(bool crear) {
  return (carpetaDeDatos(crear) / "caja.db").string();
}

// A server by its connection URI, or the file. Only `init` creates a file:
// every other command needs the database it names to be there already, so a
// mistyped --db never leaves an empty database behind.
std::shared_ptr<HostSql> abrirBaseDeDatos(const LineaComandos& args) {
  const auto db = args.valor("db");
  if (db && PostgresFactoria::EsUri(*db))
    return PostgresFactoria::Conectar(*db);
  const bool crear = args.comando() == "init";
  const std::string archivo = db ? *db : baseDeDatosPorDefecto(crear);
  if (!crear && !std::filesystem::exists(archivo))
    throw CajaError(kErrorBaseDatos, "caja",
                    "No existe la base de datos " + archivo + " (créela con caja init)");
  return SqliteFactoria::Abrir(archivo);
}

// A journal that never took a copy of what a sale reads takes it now, from
// the server: the till's first sale waits on the link once.
void copiaInicial(const LineaComandos& args, HostSql& diario) {
  if (CLng(diario.ReadScalar("SELECT COUNT(*) FROM MediosPago")) > 0)
    return;
  try {
    copiarReferencias(*PostgresFactoria::Conectar(*args.valor("db")), diario);
  } catch (const CajaError& e) {
    throw CajaError(e.number(), e.source(),
                    "Esta caja aún no tiene su copia del catálogo, las sesiones y la tasa, que "
                    "toma del servidor en su primera venta: " +
                        e.description());
  }
}

// The journal's copy after a change on the server. The change is made
// whatever happens here: a failed copy is said in one line, and the sender
// refreshes it after the next sale.
void refrescarCopia(Contexto& c) {
  try {
    if (const auto diario = abrirDiario(false))
      copiarReferencias(*c.db, *diario);
  } catch (const std::exception& e) {
    avisarDiarioSinActualizar(e);
  }
}

// What the movements waiting in the journal add to the till's drawers, per
// method, from their drawer transactions.
std::vector<MontoMedio> aporteDe(HostSql& diario) {
  std::map<std::string, MontoMedio> porMedio;
  const std::string pendiente =
      " INNER JOIN hostClaves K ON K.TransID = T.idOrigen AND T.tipoTrans = 0 WHERE "
      "K.TransIDServidor IS NULL";
  for (auto rs =
           diario.openrecordset("SELECT T.efectivoMN FROM transaccionesEfectivo T" + pendiente);
       !rs->Eof(); rs->MoveNext()) {
    auto& efe = porMedio.try_emplace("EFE", MontoMedio{"EFE", {}, {}}).first->second;
    efe.montoMN += NzMoneda(rs->Fields(0));
    efe.montoNominal += NzMoneda(rs->Fields(0));
  }
  for (auto rs = diario.openrecordset(
           "SELECT D.codigoMedio, D.valorMN, D.valorNominal FROM transaccionEfectivoDetalles D "
           "INNER JOIN transaccionesEfectivo T ON T.id = D.transID" +
           pendiente);
       !rs->Eof(); rs->MoveNext()) {
    const std::string medio = NzTexto(rs->Fields(0));
    auto& m = porMedio.try_emplace(medio, MontoMedio{medio, {}, {}}).first->second;
    m.montoMN += NzMoneda(rs->Fields(1));
    m.montoNominal += NzMoneda(rs->Fields(2));
  }
  std::vector<MontoMedio> aporte;
  for (const auto& [medio, m] : porMedio)
    aporte.push_back(m);
  return aporte;
}

// A read of the server says so, and what waits at this till, which the
// server does not have yet: after the server's balances and listings, in
// text, with what it adds to the drawers; in JSON, CSV and for one
// movement only on standard error, so that the document stays the
// server's.
void decirOrigen(Contexto& c) {
  const auto diario = abrirDiario(false);
  const auto lista = diario ? pendientes(*diario) : std::vector<Pendiente>{};
  if (lista.empty()) {
    std::cerr << "Cifras del servidor" << std::endl;
    return;
  }
  std::cerr << "Cifras del servidor; esperan envío en esta caja " << lista.size()
            << " movimientos (caja pendientes)" << std::endl;
  if (!c.args.bandera("json") && !c.args.bandera("csv") && c.args.comando() != "movimiento")
    Salida(c.out, false).esperanEnvio(lista, aporteDe(*diario));
}

// A movement named by its number in the journal, which holds it unsent: its
// void and its receipt are the journal's (a void goes to the server with
// its movement).
bool esperaEnDiario(const LineaComandos& args) {
  const auto local = args.entero("local", 1, std::numeric_limits<std::int32_t>::max());
  const auto diario = local ? abrirDiario(false) : nullptr;
  return diario && numeroEnServidor(*diario, static_cast<std::int32_t>(*local)) == 0;
}

// A closing counts the drawer the server holds: away from it, nothing to
// count against.
std::string cierreSinServidor() {
  const auto diario = abrirDiario(false);
  const std::size_t esperan = diario ? pendientes(*diario).size() : 0;
  return "El cierre necesita el servidor, que no responde" +
         (esperan ? "; esperan envío en esta caja " + std::to_string(esperan) + " movimientos"
                  : std::string()) +
         ": ciérrela cuando vuelva la conexión; nada se guardó";
}

}  // namespace

CobroDocumento cobroParaDevolver(Contexto& c, const std::string& tipo, std::int32_t numero) {
  if (!c.enDiario || !c.conServidor)
    return cobroDe(*c.db, tipo, numero);
  try {
    CobroDocumento k = cobroDe(*PostgresFactoria::Conectar(*c.args.valor("db")), tipo, numero);
    sumar(k, cobroDe(*c.db, tipo, numero, true));
    return k;
  } catch (const CajaError& e) {
    if (e.number() != kErrorConexion)
      throw;
  }
  CobroDocumento k = cobroDe(*c.db, tipo, numero);
  if (!k.cobrado && !cobradoSegunDiario(*c.db, tipo, numero).empty()) {
    k.cobrado = true;
    k.montosConocidos = false;
  }
  return k;
}

void PoliticaCaja::abrir(Contexto& c) {
  const auto uri = c.args.valor("db");
  c.conServidor = uri && PostgresFactoria::EsUri(*uri);
  const std::string& comando = c.args.comando();
  if (comando == "enviar" && !c.conServidor)
    throw ErrorUso("caja enviar es de una caja con servidor: --db postgresql://...");
  // Refused before a database is opened, so that none is made for nothing.
  if (comando == "init" && (c.args.bandera("roles") || c.args.bandera("mostrar-roles")) &&
      !c.conServidor)
    throw ErrorUso("Los roles son de un servidor: --db postgresql://...");
  if (comando == "cierre" && c.args.bandera("forzar") && !c.conServidor)
    throw ErrorUso(
        "--forzar cierra una caja con servidor aunque le queden movimientos sin enviar; en un "
        "archivo no hay nada que forzar");
  const bool local =
      esUno(comando, {"pendientes", "enviar"}) || (c.conServidor && guardaMovimiento(comando)) ||
      (c.conServidor && comando == "movimiento" && c.args.valor("local")) ||
      (c.conServidor && esUno(comando, {"anular", "recibo"}) && esperaEnDiario(c.args));
  if (local) {
    c.db = abrirDiario(true);
    c.enDiario = true;
    if (c.conServidor && guardaMovimiento(comando))
      copiaInicial(c.args, *c.db);
    return;
  }
  try {
    c.db = abrirBaseDeDatos(c.args);
  } catch (const CajaError& e) {
    const bool sinServidor = c.conServidor && e.number() == kErrorConexion;
    if (sinServidor && comando == "cierre")
      throw Rechazo(cierreSinServidor());
    c.db = sinServidor && (leeCifras(comando) || esUno(comando, {"recibo", "conflictos"}))
               ? abrirDiario(false)
               : nullptr;
    if (!c.db)
      throw;
    c.enDiario = true;
    std::cerr << "Sin conexión con el servidor: cifras locales de esta caja" << std::endl;
  }
}

void PoliticaCaja::despues(Contexto& c) {
  const std::string& comando = c.args.comando();
  if (!c.conServidor)
    return;
  if (c.enDiario && (guardaMovimiento(comando) || comando == "anular"))
    lanzarEnviador(*c.args.valor("db"));
  else if (!c.enDiario && cambiaReferencias(comando))
    refrescarCopia(c);
  else if (!c.enDiario && leeCifras(comando))
    decirOrigen(c);
}

}  // namespace caja::app
