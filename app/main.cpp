// caja: a small point-of-sale host over the embedded SQLite database. It
// follows the calling order a host of the component uses: create
// CServiciosCaja, Init once, Varelta per sale, then Save and commitTransEf
// inside one database transaction.

#include <QApplication>
#include <QDir>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <thread>

#include "app/Comandos.h"
#include "app/Supervisores.h"
#include "host/IniSettingsStore.h"
#include "host/PostgresFactoria.h"
#include "host/QtHostUtil.h"
#include "host/SqliteFactoria.h"
#include "service/General.h"

namespace {

using namespace caja;
using namespace caja::app;

const char* const kTextoUso =
    "Uso: caja COMANDO [opciones] [--db ARCHIVO|postgresql://USUARIO@SERVIDOR:PUERTO/BASE] "
    "[--json]\n"
    "  init [--demo]\n"
    "  cobrar --venta V [--iva I] [--credito C] [--titulo T] [--sesion S] [--operador O]\n"
    "         [--documento TIPO:NUMERO] [--entidad TIPO:CODIGO] [--pago CODIGO=MONTO ... "
    "--aceptar]\n"
    "  saldo [--maquina N]\n"
    "  movimiento NUMERO | movimiento --documento TIPO:NUMERO\n"
    "  medios [--editar]\n"
    "  aparcar CLAVE --pago CODIGO=MONTO ...   retomar CLAVE   revertir CLAVE\n"
    "  supervisor --agregar NOMBRE [--nivel N]\n";

bool hayPantalla() {
  return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

std::string baseDeDatosPorDefecto() {
  const char* xdg = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  const std::filesystem::path raiz =
      xdg && *xdg ? std::filesystem::path(xdg)
                  : std::filesystem::path(home ? home : ".") / ".local" / "share";
  std::filesystem::create_directories(raiz / "caja");
  return (raiz / "caja" / "caja.db").string();
}

// A server by its connection URI, or the embedded file (the default one when
// --db is not given; its folder is made only then).
std::shared_ptr<HostSql> abrirBaseDeDatos(const LineaComandos& args) {
  const auto db = args.valor("db");
  if (db && PostgresFactoria::EsUri(*db))
    return PostgresFactoria::Conectar(*db);
  return SqliteFactoria::Abrir(db ? *db : baseDeDatosPorDefecto());
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

int ejecutar(const LineaComandos& args, bool conPantalla) {
  using Comando = int (*)(Contexto&);
  const std::map<std::string, Comando> comandos = {{"init", init},
                                                   {"cobrar", cobrar},
                                                   {"saldo", saldo},
                                                   {"movimiento", movimiento},
                                                   {"medios", medios},
                                                   {"aparcar", aparcar},
                                                   {"retomar", retomar},
                                                   {"revertir", revertir},
                                                   {"supervisor", supervisor}};
  const auto it = comandos.find(args.comando());
  if (it == comandos.end()) {
    std::cerr << kTextoUso;
    return kUso;
  }
  const auto db = abrirBaseDeDatos(args);
  InicializarEntorno(db);
  db->SetCarpetaIconos(QCoreApplication::applicationDirPath().toStdString() + "/iconos");
  instalarVerificador(*db, conPantalla);
  instalarPausaDePrueba(*db);
  Contexto contexto{args, db, std::cout, conPantalla};
  return it->second(contexto);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const LineaComandos args(argc, argv);
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
  } catch (const CajaError& e) {
    std::cerr << "Error " << e.number() << " (" << e.source() << "): " << e.description() << '\n';
    return kError;
  } catch (const std::exception& e) {
    std::cerr << e.what() << '\n';
    return kUso;
  }
}
