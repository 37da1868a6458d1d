#include "app/envio/Politica.h"

#include <QCoreApplication>
#include <filesystem>

#include "app/datos/Carpeta.h"
#include "app/datos/Diario.h"
#include "app/envio/Enviador.h"
#include "app/envio/Envio.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/service/General.h"

namespace caja::app {

namespace {

// The default file, under the user's data folder; the folder is made only
// for an act that creates the database.
std::string baseDeDatosPorDefecto(bool crear) {
  return (carpetaDeDatos(crear) / "caja.db").string();
}

// A server by its connection URI, or the file. Only creating the database
// makes a file: every other act needs the database it names to be there
// already, so a mistyped --db never leaves an empty database behind.
std::shared_ptr<HostSql> abrirBaseDeDatos(const std::optional<std::string>& db, bool crear) {
  if (db && PostgresFactoria::EsUri(*db))
    return PostgresFactoria::Conectar(*db);
  const std::string archivo = db ? *db : baseDeDatosPorDefecto(crear);
  if (!crear && !std::filesystem::exists(archivo))
    throw CajaError(kErrorBaseDatos, "caja",
                    "No existe la base de datos " + archivo + " (créela con caja init)");
  return SqliteFactoria::Abrir(archivo);
}

// A journal that never took a copy of what a sale reads takes it now, from
// the server: the till's first sale waits on the link once.
void copiaInicial(const std::string& uri, HostSql& diario) {
  if (hayCatalogo(diario))
    return;
  try {
    copiarReferencias(*PostgresFactoria::Conectar(uri), diario);
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
void refrescarCopia(Almacen& a) {
  try {
    if (const auto diario = abrirDiario(false))
      copiarReferencias(*a.db, *diario);
  } catch (const std::exception& e) {
    avisarDiarioSinActualizar(e);
  }
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

bool esperaEnDiario(std::int32_t local) {
  const auto diario = abrirDiario(false);
  return diario && numeroEnServidor(*diario, local) == 0;
}

CobroDocumento cobroParaDevolver(Almacen& a, const std::string& tipo, std::int32_t numero) {
  if (!a.enDiario || !a.conServidor)
    return cobroDe(*a.db, tipo, numero);
  // A server known to be away is not waited on.
  if (!a.sinServidor) {
    try {
      CobroDocumento k = cobroDe(*PostgresFactoria::Conectar(a.uri), tipo, numero);
      sumar(k, cobroDe(*a.db, tipo, numero, true));
      return k;
    } catch (const CajaError& e) {
      if (e.number() != kErrorConexion)
        throw;
    }
  }
  CobroDocumento k = cobroDe(*a.db, tipo, numero);
  if (!k.cobrado && !cobradoSegunDiario(*a.db, tipo, numero).empty()) {
    k.cobrado = true;
    k.montosConocidos = false;
  }
  return k;
}

Almacen PoliticaCaja::abrir(const std::optional<std::string>& db, Acceso acceso, bool crear,
                            bool enDiario) {
  Almacen a;
  a.conServidor = db && PostgresFactoria::EsUri(*db);
  if (a.conServidor)
    a.uri = *db;
  const bool local = acceso == Acceso::Diario || (a.conServidor && acceso == Acceso::Guarda) ||
                     (a.conServidor && enDiario);
  if (local) {
    a.db = abrirDiario(true);
    a.enDiario = true;
    if (a.conServidor && acceso == Acceso::Guarda)
      copiaInicial(a.uri, *a.db);
    usar(a);
    return a;
  }
  try {
    a.db = abrirBaseDeDatos(db, crear);
  } catch (const CajaError& e) {
    const bool sinServidor = a.conServidor && e.number() == kErrorConexion;
    if (sinServidor && acceso == Acceso::Cierre)
      throw Rechazo(cierreSinServidor());
    a.db = sinServidor && (acceso == Acceso::Lee || acceso == Acceso::Consulta) ? abrirDiario(false)
                                                                                : nullptr;
    if (!a.db)
      throw;
    a.enDiario = true;
    a.sinServidor = true;
  }
  usar(a);
  return a;
}

Almacen PoliticaCaja::delServidor(std::shared_ptr<HostSql> servidor, const std::string& uri) {
  Almacen a;
  a.db = std::move(servidor);
  a.uri = uri;
  a.conServidor = true;
  usar(a);
  return a;
}

// The act's host is the component's too, for the whole act: the till's
// actions and the component's own statements reach the same database.
void PoliticaCaja::usar(const Almacen& a) {
  InicializarEntorno(a.db);
  a.db->SetCarpetaIconos(QCoreApplication::applicationDirPath().toStdString() + "/iconos");
}

void PoliticaCaja::despues(Almacen& a, Acceso acceso) {
  if (!a.conServidor)
    return;
  if (a.enDiario && (acceso == Acceso::Guarda || acceso == Acceso::Cambia))
    lanzarEnviador(a.uri);
  else if (!a.enDiario && (acceso == Acceso::Cambia || acceso == Acceso::Cierre))
    refrescarCopia(a);
}

}  // namespace caja::app
