// caja: a small point-of-sale host over the embedded SQLite database or a
// PostgreSQL server. It follows the calling order a host of the component
// uses: create CServiciosCaja, Init once, Varelta per sale, then Save and
// commitTransEf inside one database transaction.

#include <QApplication>
#include <QDir>
#include <algorithm>
#include <iostream>

#include "app/datos/Carpeta.h"
#include "app/datos/Esquema.h"
#include "app/datos/Json.h"
#include "app/linea/Comandos.h"
#include "app/linea/EnLinea.h"
#include "caja/host/IniSettingsStore.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/host/QtHostUtil.h"
#include "caja/service/General.h"

namespace {

using namespace caja;
using namespace caja::app;

// An X or Wayland display, or a platform named for a screen of its own, as a
// till's framebuffer (eglfs, linuxfb); "offscreen" and "minimal" show nothing.
bool hayPantalla() {
  const bool x = !qEnvironmentVariableIsEmpty("DISPLAY");
  const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
  const QString plataforma = qEnvironmentVariable("QT_QPA_PLATFORM");
  if (plataforma.isEmpty())
    return x || wayland;
  if (plataforma.startsWith("xcb"))
    return x;
  if (plataforma.startsWith("wayland"))
    return wayland;
  return !plataforma.startsWith("offscreen") && !plataforma.startsWith("minimal");
}

// A password on the command line is there for every local user to read.
void rechazarContrasena(const LineaComandos& args) {
  const auto db = args.valor("db");
  if (db && PostgresFactoria::EsUri(*db) && PostgresFactoria::LlevaContrasena(*db))
    throw ErrorUso(
        "La contraseña del servidor no va en --db, donde cualquier usuario de la máquina la lee: "
        "póngala en el archivo de contraseñas (~/.pgpass o PGPASSFILE)");
}

// A cashier reads the error in Spanish, without its number; the number and
// its source stay in the JSON (--json) and in the till's log.
void decirError(const CajaError& e, int argc, char** argv) {
  const bool conJson =
      std::any_of(argv + 1, argv + argc, [](const char* a) { return std::string(a) == "--json"; });
  if (conJson)
    std::cerr << "{\"error\":" << e.number() << ",\"fuente\":" << json(e.source())
              << ",\"mensaje\":" << json(e.description()) << "}\n";
  else
    std::cerr << e.description() << '\n';
  anotarError(e);
}

int ejecutar(const LineaComandos& args, bool conPantalla) {
  rechazarContrasena(args);
  FirmasDeLinea firmas(args, conPantalla);
  return ejecutarComando(args, conPantalla, firmas);
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
    agregarEsquema();
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
    decirError(e, argc, argv);
    return kError;
  } catch (const std::exception& e) {
    std::cerr << e.what() << '\n';
    return kError;
  }
}
