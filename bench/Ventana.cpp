// The till's window, in-process and offscreen: from opening it to its first
// paint, from the collection dialog's accepting key to the movement
// committed and on the screen, and the memory it holds after 1,000 sales;
// on the file, and at a till on a server behind a 50 ms link and behind one
// that loses every packet (the sale goes to the journal either way). Exits 1
// when a goal is missed.

#include <unistd.h>

#include <QApplication>
#include <QTest>
#include <chrono>
#include <cstdio>
#include <fstream>

#include "app/datos/Demo.h"
#include "app/datos/Esquema.h"
#include "app/ventana/Ventana.h"
#include "caja/service/Settings.h"
#include "tests/support/Enlace.h"
#include "tests/support/HostPrueba.h"
#include "tests/support/Modales.h"
#include "tests/support/Programa.h"

namespace {

using namespace caja;
using Reloj = std::chrono::steady_clock;
using namespace std::chrono_literals;

double ms(Reloj::duration d) {
  return std::chrono::duration<double, std::milli>(d).count();
}

// Resident memory, in MB.
double residente() {
  long paginas = 0, enUso = 0;
  std::ifstream("/proc/self/statm") >> paginas >> enUso;
  return static_cast<double>(enUso) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

// Notes when the window first paints.
class PrimeraPintura : public QObject {
 public:
  std::optional<Reloj::time_point> cuando;
  bool eventFilter(QObject*, QEvent* e) override {
    if (e->type() == QEvent::Paint && !cuando)
      cuando = Reloj::now();
    return false;
  }
};

struct Medida {
  std::string nombre;
  double pintura = 0;
  std::vector<double> ventas;  // accepting key to committed, ms
  std::vector<double> vistas;  // ...and on the screen
  double crecimiento = 0;      // MB over the sales after the first ten
};

void intro() {
  QWidget* foco = QApplication::focusWidget();
  QTest::keyClick(foco ? foco : QApplication::activeModalWidget(), Qt::Key_Return);
}

// One sale by keys: the time from the accepting key to the movement
// committed, and to the window back with its row on the screen.
std::pair<double, double> vender(app::VentanaCaja& v) {
  Reloj::time_point aceptada, guardada;
  v.alGuardar = [&guardada](std::int32_t) { guardada = Reloj::now(); };
  test::cuandoAparezca("formulario", [](QWidget& f) {
    test::teclear(f, "txVenta", "100");
    test::teclear(f, "txIVA", "16");
    intro();
  });
  test::cuandoAparezca("frmVarelta", [&aceptada](QWidget& d) {
    test::teclear(d, "txEfectivo", "116");
    aceptada = Reloj::now();
    intro();
  });
  QWidget* foco = QApplication::focusWidget();
  QTest::keyClick(foco ? foco : &v, Qt::Key_F2);
  return {ms(guardada - aceptada), ms(Reloj::now() - aceptada)};
}

Medida medir(const std::string& nombre, const std::string& db, int ventas,
             test::EnlaceDemorado* perdido) {
  Medida m;
  m.nombre = nombre;
  const auto antes = Reloj::now();
  app::VentanaCaja v(db, std::nullopt, "CAJERO");
  PrimeraPintura pintura;
  if (!v.empezar())
    throw std::runtime_error("la ventana no empezó");
  v.resize(1024, 768);
  v.installEventFilter(&pintura);
  v.centralWidget()->installEventFilter(&pintura);
  v.show();
  while (!pintura.cuando && ms(Reloj::now() - antes) < 5000)
    QApplication::processEvents(QEventLoop::AllEvents, 5);
  m.pintura = pintura.cuando ? ms(*pintura.cuando - antes) : 5000;
  v.activateWindow();
  if (!QTest::qWaitForWindowActive(&v))
    throw std::runtime_error("la ventana no se activó");
  if (perdido)
    perdido->perder(true);
  double base = 0;
  for (int i = 0; i < ventas; ++i) {
    if (i == 10)
      base = residente();
    const auto [guardada, vista] = vender(v);
    m.ventas.push_back(guardada);
    m.vistas.push_back(vista);
  }
  m.crecimiento = residente() - base;
  if (perdido)
    perdido->perder(false);
  v.permitirCierre();
  return m;
}

}  // namespace

int main(int argc, char** argv) {
  const int ventas = argc > 1 ? std::max(20, std::atoi(argv[1])) : 1000;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication aplicacion(argc, argv);
  app::agregarEsquema();
  // The sender is a process of its own (bench_enlace measures it): here
  // only the window's wait.
  setenv("CAJA_PRUEBA_SIN_ENVIADOR", "1", 1);
  std::vector<Medida> medidas;
  const auto preparar = [](test::ConBase& base) {
    setenv("XDG_DATA_HOME", (base.carpeta.ruta() / "datos").c_str(), 1);
    app::crearDemo(*base.db);
    // The receipt goes to a printer that takes everything: no dialog to close.
    settingsStore().SaveSetting(kAppZOR, "Recibo", "Impresora", "/dev/null");
    // Enter on a complete amount accepts, as a quick till has it.
    settingsStore().SaveSetting(kAppZOR, "frmVarelta", "AutoCierre", "1");
  };
  {
    test::ConBase archivo(test::Motor::Sqlite);
    preparar(archivo);
    medidas.push_back(medir("archivo", archivo.destino(), ventas, nullptr));
  }
  test::ConBase servidor(test::Motor::Postgres);
  if (servidor.db) {
    test::EnlaceDemorado nube(50ms);
    preparar(servidor);
    medidas.push_back(medir("servidor a 50 ms", nube.uri(servidor.destino()), ventas / 5, nullptr));
    test::ConBase otro(test::Motor::Postgres);
    preparar(otro);
    medidas.push_back(medir("servidor sin enlace", nube.uri(otro.destino()), ventas / 5, &nube));
  } else {
    std::printf("(sin CAJA_PRUEBA_PG: no se mide el servidor)\n");
  }
  std::printf("%-20s %11s %13s %13s %13s %10s\n", "", "1.ª pintura", "guardada p50", "guardada p90",
              "en pantalla p50", "memoria MB");
  for (const auto& m : medidas)
    std::printf("%-20s %8.0f ms %10.2f ms %10.2f ms %12.2f ms %10.1f\n", m.nombre.c_str(),
                m.pintura, test::percentil(m.ventas, 0.5), test::percentil(m.ventas, 0.9),
                test::percentil(m.vistas, 0.5), m.crecimiento);
  const Medida& archivo = medidas.front();
  bool bien = test::cumple("tecla de aceptar a movimiento guardado, archivo, p50",
                           test::percentil(archivo.ventas, 0.5), 5, "ms");
  bien &= test::cumple("ventana abierta a primera pintura, archivo", archivo.pintura, 400, "ms");
  bien &= test::cumple("memoria tras 1.000 ventas, archivo", archivo.crecimiento, 20, "MB");
  for (std::size_t i = 1; i < medidas.size(); ++i)
    bien &= test::cumple(
        (medidas[i].nombre + ", p50 menos el del archivo").c_str(),
        test::percentil(medidas[i].ventas, 0.5) - test::percentil(archivo.ventas, 0.5), 2, "ms");
  return bien ? 0 : 1;
}
