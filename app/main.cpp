// caja: a small point-of-sale host over the embedded SQLite database or a
// PostgreSQL server. It follows the calling order a host of the component
// uses: create CServiciosCaja, Init once, Varelta per sale, then Save and
// commitTransEf inside one database transaction.

#include <QApplication>
#include <QDir>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <thread>

#include "app/Comandos.h"
#include "app/Diario.h"
#include "app/Supervisores.h"
#include "caja/host/IniSettingsStore.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/host/QtHostUtil.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/service/General.h"

namespace {

using namespace caja;
using namespace caja::app;

bool hayPantalla() {
  return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
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

// A fault-test hook: with CAJA_PRUEBA_PAUSA_MS set, the post procedure says
// so on standard error and waits, so that a test can kill the program in the
// middle of a save.
void instalarPausaDePrueba(HostSql& db) {
  const char* pausa = std::getenv("CAJA_PRUEBA_PAUSA_MS");
  if (!pausa)
    return;
  const int ms = std::atoi(pausa);
  db.RegistrarProcedimiento("PostVarelta", [ms](std::vector<Variant>&) {
    std::cerr << "guardando" << std::endl;
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    return Variant();
  });
}

bool esUno(const std::string& comando, std::initializer_list<const char*> lista) {
  for (const char* c : lista)
    if (comando == c)
      return true;
  return false;
}

// Commands that save a movement: on a server they keep the journal's copy of
// what a sale reads fresh and send what waits first; without the server they
// save in the journal.
bool guardaMovimiento(const std::string& comando) {
  return esUno(comando, {"cobrar", "devolver", "entrada", "salida"});
}

// Before a save on the server: what waits in the journal goes first, then
// the journal takes a fresh copy of what a sale reads. A link lost meanwhile
// leaves the sale to the journal. The sale never waits on the journal: any
// other failure is said in one line and the sale goes on to the server.
void prepararDiario(Contexto& c) {
  try {
    c.diario = abrirDiario(true);
    avisarEnvio(sincronizar(c.db, c.diario));
    copiarReferencias(*c.db, *c.diario);
  } catch (const std::exception& e) {
    const auto* error = dynamic_cast<const CajaError*>(&e);
    if (error && error->number() == kErrorConexion && c.diario) {
      c.db = c.diario;
      c.sinConexion = true;
      return;
    }
    avisarDiarioSinActualizar(e);
  }
}

// Opens what the command works on. A server that cannot be reached leaves
// the commands that save or read a till's figures on the till's journal.
void abrir(Contexto& c) {
  const auto uri = c.args.valor("db");
  c.conServidor = uri && PostgresFactoria::EsUri(*uri);
  const std::string& comando = c.args.comando();
  if (comando == "pendientes") {
    c.db = abrirDiario(true);
    return;
  }
  // The sender reaches the server itself, again and again while it is away.
  if (comando == "enviar") {
    if (!c.conServidor)
      throw ErrorUso("caja enviar es de una caja con servidor: --db postgresql://...");
    c.db = abrirDiario(true);
    return;
  }
  try {
    c.db = abrirBaseDeDatos(c.args);
  } catch (const CajaError& e) {
    const bool local =
        guardaMovimiento(comando) || esUno(comando, {"saldo", "movimientos", "movimiento"});
    c.db = c.conServidor && e.number() == kErrorConexion && local ? abrirDiario(false) : nullptr;
    if (!c.db)
      throw;
    c.sinConexion = true;
    if (!guardaMovimiento(comando))
      std::cerr << "Sin conexión con el servidor: cifras locales de esta caja" << std::endl;
    return;
  }
  if (c.conServidor && guardaMovimiento(comando))
    prepararDiario(c);
}

// A password on the command line is there for every local user to read.
void rechazarContrasena(const LineaComandos& args) {
  const auto db = args.valor("db");
  if (db && PostgresFactoria::EsUri(*db) && PostgresFactoria::LlevaContrasena(*db))
    throw ErrorUso(
        "La contraseña del servidor no va en --db, donde cualquier usuario de la máquina la lee: "
        "póngala en el archivo de contraseñas (~/.pgpass o PGPASSFILE)");
}

int ejecutar(const LineaComandos& args, bool conPantalla) {
  rechazarContrasena(args);
  Contexto contexto{args, nullptr, std::cout, conPantalla, false, false, nullptr};
  abrir(contexto);
  const auto& db = contexto.db;
  InicializarEntorno(db);
  db->SetCarpetaIconos(QCoreApplication::applicationDirPath().toStdString() + "/iconos");
  instalarVerificador(*db, conPantalla);
  instalarPausaDePrueba(*db);
  return ejecutarComando(contexto);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const LineaComandos args(argc, argv, definicionesComandos());
    if (args.ayuda()) {
      std::cout << textoAyuda(definicionesComandos(), args.definicion());
      return kExito;
    }
    const bool conPantalla = hayPantalla() && !args.bandera("aceptar");
    if (!conPantalla)
      qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
      qputenv("XDG_RUNTIME_DIR", QDir::tempPath().toUtf8() + "/caja-runtime");
    QApplication app(argc, argv);
    setSettingsStore(std::make_shared<IniSettingsStore>(
        QCoreApplication::applicationDirPath().toStdString(), IniSettingsStore::defaultUserDir()));
    if (conPantalla)
      setHostUtil(std::make_shared<QtHostUtil>());
    return ejecutar(args, conPantalla);
  } catch (const ErrorUso& e) {
    std::cerr << e.what() << '\n';
    return kUso;
  } catch (const Rechazo& e) {
    std::cerr << e.what() << '\n';
    return kRechazado;
  } catch (const CajaError& e) {
    std::cerr << "Error " << e.number() << " (" << e.source() << "): " << e.description() << '\n';
    return kError;
  } catch (const std::exception& e) {
    std::cerr << e.what() << '\n';
    return kError;
  }
}
