// Tills on a slow link: a TCP proxy that delays every packet stands between
// the tills and a real PostgreSQL server. Measured in one run:
//
//  1. The cashier's wait per sale (a whole `caja cobrar`, the till's sender
//     running behind it as in a shop) at 0, 10 and 50 ms of round-trip time
//     and with the server unreachable, next to a till on the embedded file,
//     sale for sale. Goal: median ratio to the file's at 50 ms <= 1.2.
//  2. From the end of a sale until the server has it, at 50 ms. Goal: <= 2 s.
//  3. A backlog of 1,000 movements sent by `caja sincronizar` at 50 ms.
//     Goal: <= 10 s, each movement once.
//  4. Round trips of sending one three-line sale (`sincronizar` with it,
//     less `sincronizar` with nothing waiting). Goal: <= 3. The component's
//     own save of the same sale straight through PostgresFactoria is counted
//     beside it, for hosts that save directly.
//
// Exits 1 when a goal is missed.
//
//   CAJA_PRUEBA_PG=postgresql:///postgres bench_enlace [VENTAS]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "caja/base/Conversiones.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"
#include "tests/support/Enlace.h"
#include "tests/support/HostPrueba.h"
#include "tests/support/Programa.h"

namespace {

using namespace caja;
using namespace std::chrono_literals;
using Reloj = std::chrono::steady_clock;

// A server no till can reach: nothing listens on port 1.
constexpr const char* kServidorAusente = "postgresql://127.0.0.1:1/caja";
constexpr int kAtrasados = 1000;

std::vector<std::string> venta(int i, const std::string& db) {
  return {"cobrar", "--venta", std::to_string(i), "--pago", "EFE=" + std::to_string(i), "--aceptar",
          "--db",   db};
}

// Three lines: national cash, a dollar and a debit card.
std::vector<std::string> ventaDeTresLineas(const std::string& db) {
  return {"cobrar", "--venta", "100",    "--pago",    "EFE=10", "--pago",
          "USD=1",  "--pago",  "TDD=60", "--aceptar", "--db",   db};
}

double correr(const std::filesystem::path& datos, const std::vector<std::string>& argumentos,
              bool conEnviador = true) {
  if (conEnviador)
    return test::correrCaja(CAJA_BIN, datos, argumentos);
  return test::correrCaja(CAJA_BIN, datos, argumentos, {{"CAJA_PRUEBA_SIN_ENVIADOR", "1"}});
}

// A till: its data folder, the database it names, its sales' times.
struct Caja {
  std::string nombre;
  test::CarpetaTemporal datos;
  std::string db;
  std::vector<double> tiempos = {};
  // A sender that could never reach its server would only sleep between
  // tries, for ten minutes after the run: the unreachable till has none.
  bool conEnviador = true;
};

std::shared_ptr<SqliteFactoria> diarioDe(const Caja& c) {
  return SqliteFactoria::Abrir((c.datos.ruta() / "caja" / "diario.db").string());
}

long pendientesEn(const Caja& c) {
  return CLng(
      diarioDe(c)->ReadScalar("SELECT COUNT(*) FROM hostClaves WHERE TransIDServidor IS NULL"));
}

// Until the till's senders have shipped all it saved (a minute at most).
void esperarEnvio(const Caja& c) {
  for (int i = 0; i < 600 && pendientesEn(c) > 0; ++i)
    std::this_thread::sleep_for(100ms);
}

long enServidor(HostSql& servidor) {
  return CLng(servidor.ReadScalar("SELECT COUNT(*) FROM MovimientosCaja"));
}

// 1. Sales at every till in turn, the order reversed every round, so that a
// machine whose load drifts slows them alike.
void medirEspera(std::vector<Caja*> cajas, int ventas) {
  for (int i = 1; i <= ventas; ++i) {
    for (Caja* c : cajas)
      c->tiempos.push_back(correr(c->datos.ruta(), venta(i, c->db), c->conEnviador));
    std::reverse(cajas.begin(), cajas.end());
  }
}

// 2. Milliseconds from a sale's exit until the server holds it, per sale.
std::vector<double> medirLlegada(Caja& caja, HostSql& servidor, int ventas) {
  std::vector<double> tiempos;
  for (int i = 1; i <= ventas; ++i) {
    esperarEnvio(caja);
    std::this_thread::sleep_for(300ms);  // the last sender's copy and exit
    const long antes = enServidor(servidor);
    correr(caja.datos.ruta(), venta(i, caja.db));
    const auto fin = Reloj::now();
    while (enServidor(servidor) == antes && Reloj::now() - fin < 30s)
      std::this_thread::sleep_for(5ms);
    tiempos.push_back(std::chrono::duration<double, std::milli>(Reloj::now() - fin).count());
  }
  return tiempos;
}

// 3. A backlog saved straight into the till's journal, as `cobrar` saves:
// movement, drawer, key, one local transaction each.
void atrasar(const Caja& caja, int cuantos) {
  const auto diario = diarioDe(caja);
  InicializarEntorno(diario);
  for (int i = 0; i < cuantos; ++i)
    diario->EnTransaccion([&] {
      CVarelta mov;
      for (const char* medio : {"EFE", "TDD"}) {
        auto d = std::make_shared<CDetalleIngreso>();
        d->medio = medio;
        d->Monto = d->montoNominal = Currency::fromUnits(5 + i % 7);
        mov.colDetalles->Add(d);
        // As the dialog fills them: the server checks the lines add up.
        mov.Debitos += d->Monto;
      }
      mov.Save(1, "ATRASO", "", 0, "CLI", "C0001", "atraso", Fecha::today());
      mov.commitTransEf();
      diario->ExecuteSQL("INSERT INTO hostClaves (Clave, TransID) VALUES (?, ?)",
                         {"atraso-" + std::to_string(i), mov.TransID});
    });
  gFactoria.reset();
  gMediosPago.reset();
}

}  // namespace

int main(int argc, char** argv) {
  const int ventas = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
  test::ConBase servidor(test::Motor::Postgres);
  if (!servidor.db) {
    std::printf("(sin CAJA_PRUEBA_PG: nada que medir)\n");
    return 0;
  }
  setSettingsStore(std::make_shared<MemoriaSettingsStore>());
  test::EnlaceDemorado local(0ms), ciudad(10ms), nube(50ms);

  Caja archivo{"archivo SQLite", {}, ""};
  archivo.db = (archivo.datos.ruta() / "caja.db").string();
  correr(archivo.datos.ruta(), {"init", "--demo", "--db", archivo.db});
  correr(archivo.datos.ruta(), {"init", "--demo", "--db", servidor.destino()});
  Caja a0{"servidor a 0 ms", {}, local.uri(servidor.destino())};
  Caja a10{"servidor a 10 ms", {}, ciudad.uri(servidor.destino())};
  Caja a50{"servidor a 50 ms", {}, nube.uri(servidor.destino())};
  Caja ausente{"servidor inalcanzable", {}, kServidorAusente};
  // Each till's first sale takes its journal's first copy; the unreachable
  // server's till took its copy while the server was there.
  for (Caja* c : {&a0, &a10, &a50}) {
    correr(c->datos.ruta(), venta(1, c->db));
    esperarEnvio(*c);
  }
  ausente.conEnviador = false;
  correr(ausente.datos.ruta(), venta(1, a0.db), false);
  medirEspera({&archivo, &a0, &a10, &a50, &ausente}, ventas);
  for (Caja* c : {&a0, &a10, &a50})
    esperarEnvio(*c);

  std::printf("%-24s %9s %9s\n", "venta (proceso entero)", "p50 ms", "p90 ms");
  for (const Caja* c : {&archivo, &a0, &a10, &a50, &ausente})
    std::printf("%-24s %9.1f %9.1f\n", c->nombre.c_str(), test::percentil(c->tiempos, 0.5),
                test::percentil(c->tiempos, 0.9));
  std::vector<double> razones;
  for (std::size_t i = 0; i < archivo.tiempos.size(); ++i)
    razones.push_back(a50.tiempos[i] / archivo.tiempos[i]);
  bool bien = test::cumple("espera a 50 ms / archivo, mediana por ronda",
                           test::percentil(razones, 0.5), 1.2, "");

  const auto llegada = medirLlegada(a50, *servidor.db, std::min(ventas, 10));
  std::printf("de la venta al servidor a 50 ms: p50 %.0f ms, máx %.0f ms\n",
              test::percentil(llegada, 0.5), test::percentil(llegada, 1.0));
  bien &= test::cumple("de la venta al servidor a 50 ms, máximo",
                       test::percentil(llegada, 1.0) / 1000, 2, "s");

  Caja atrasada{"atrasada", {}, a50.db};
  correr(atrasada.datos.ruta(), venta(1, atrasada.db), false);
  atrasar(atrasada, kAtrasados - 1);
  const long antes = enServidor(*servidor.db);
  const double vaciado = correr(atrasada.datos.ruta(), {"sincronizar", "--db", atrasada.db}, false);
  const long llegados = enServidor(*servidor.db) - antes;
  std::printf("%d movimientos pendientes enviados a 50 ms: %ld en el servidor\n", kAtrasados,
              llegados);
  bien &= llegados == kAtrasados && pendientesEn(atrasada) == 0;
  bien &= test::cumple("envío de 1000 pendientes a 50 ms", vaciado / 1000, 10, "s");

  Caja contada{"contada", {}, a50.db};
  correr(contada.datos.ruta(), venta(1, contada.db), false);
  correr(contada.datos.ruta(), {"sincronizar", "--db", contada.db}, false);
  nube.contarDesdeCero();
  correr(contada.datos.ruta(), {"sincronizar", "--db", contada.db}, false);
  const long sinNada = nube.idasYVueltas();
  correr(contada.datos.ruta(), ventaDeTresLineas(contada.db), false);
  nube.contarDesdeCero();
  correr(contada.datos.ruta(), {"sincronizar", "--db", contada.db}, false);
  const long conVenta = nube.idasYVueltas();
  std::printf("idas y vueltas de sincronizar: %ld sin nada pendiente, %ld con una venta\n", sinNada,
              conVenta);
  bien &= test::cumple("idas y vueltas del envío de una venta de 3 líneas",
                       static_cast<double>(conVenta - sinNada), 3, "");
  for (const bool diferir : {false, true})
    std::printf(
        "idas y vueltas del guardado del componente por PostgresFactoria, 3 líneas%s: %ld\n",
        diferir ? ", escrituras diferidas" : "",
        test::idasYVueltasDelGuardado(nube, servidor.destino(), diferir));
  return bien ? 0 : 1;
}
