// Several tills saving at once: sales per second and the p50/p99 latency of
// one wrapped save (Save and commitTransEf in one host transaction, retried on
// a conflict) for 1, 2, 4 and 8 tills, each a process with its own
// connection, on a fresh SQLite file and, when CAJA_PRUEBA_PG names a server,
// on a fresh PostgreSQL database. Target: on PostgreSQL 8 tills reach at least
// 4x the throughput of one.
//
// On a virtual machine a lone till mostly waits for an idle processor to wake
// at each of the save's round trips, so its figure (and every ratio to it)
// says more about the machine than about the save; busy tills do not pay it.
//
//   bench_cajas [VENTAS_POR_CAJA]

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "caja/host/PostgresFactoria.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"
#include "tests/support/HostPrueba.h"

namespace {

using namespace caja;
using Reloj = std::chrono::steady_clock;

void prepararBase(HostSql& db, int cajas) {
  db.ExecuteSQL(
      "INSERT INTO MediosPago (Codigo, Clase, Atributos, titulo, posicion) VALUES "
      "('USD', 8, 1024, 'Dólares', 1), ('TDC', 3, 0, 'Visa', 2)");
  db.ExecuteSQL("INSERT INTO parametrosEmpresa (TipoCambio) VALUES (36.5)");
  for (int c = 1; c <= cajas; ++c)
    db.ExecuteSQL("INSERT INTO SesionesPOS (SessionID, MachineID) VALUES (?, ?)", {c, c});
}

std::shared_ptr<CVarelta> venta(int i) {
  auto mov = std::make_shared<CVarelta>();
  const std::pair<const char*, std::int64_t> lineas[] = {{"EFE", 100 + i}, {"USD", 2}, {"TDC", 7}};
  for (const auto& [medio, nominal] : lineas) {
    auto d = std::make_shared<CDetalleIngreso>();
    d->medio = medio;
    d->montoNominal = Currency::fromUnits(nominal);
    d->Monto = d->medio == "USD" ? d->montoNominal * std::int16_t{36} : d->montoNominal;
    mov->colDetalles->Add(d);
  }
  return mov;
}

// One till: its own connection, `ventas` wrapped saves; the latencies in
// microseconds go to `salida`.
[[noreturn]] void caja(const test::ConBase& base, int numero, int ventas, int salida) {
  try {
    setSettingsStore(std::make_shared<MemoriaSettingsStore>());
    const auto host = base.otraConexion();
    InicializarEntorno(host);
    std::vector<double> latencias;
    for (int i = 0; i < ventas; ++i) {
      auto mov = venta(i);
      const auto inicio = Reloj::now();
      host->EnTransaccion(
          [&] {
            mov->Save(numero, "BENCH", "FAC", i, "CLI", "C1", "", Fecha::today());
            mov->commitTransEf();
          },
          [&] {
            mov->TransID = 0;
            for (const auto& d : *mov->colDetalles)
              d->Id = 0;
          });
      latencias.push_back(std::chrono::duration<double, std::micro>(Reloj::now() - inicio).count());
    }
    const auto bytes = static_cast<ssize_t>(latencias.size() * sizeof(double));
    _exit(write(salida, latencias.data(), static_cast<std::size_t>(bytes)) == bytes ? 0 : 1);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "caja %d: %s\n", numero, e.what());
    _exit(1);
  }
}

struct Medida {
  double ventasPorSegundo, p50ms, p99ms;
};

double percentil(std::vector<double>& v, double p) {
  const auto k = static_cast<std::size_t>(p * static_cast<double>(v.size() - 1));
  std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(k), v.end());
  return v[k] / 1000.0;
}

Medida medir(test::Motor motor, int cajas, int ventas) {
  test::ConBase base(motor);
  prepararBase(*base.db, cajas);
  std::vector<std::pair<pid_t, int>> hijos;
  const auto inicio = Reloj::now();
  for (int c = 1; c <= cajas; ++c) {
    int tubo[2];
    if (pipe(tubo) != 0)
      std::exit(2);
    const pid_t pid = fork();
    if (pid == 0) {
      close(tubo[0]);
      caja(base, c, ventas, tubo[1]);
    }
    close(tubo[1]);
    hijos.emplace_back(pid, tubo[0]);
  }
  std::vector<double> todas;
  for (const auto& [pid, tubo] : hijos) {
    std::vector<double> suyas(static_cast<std::size_t>(ventas));
    const auto esperados = static_cast<ssize_t>(suyas.size() * sizeof(double));
    ssize_t leidos = 0;
    for (ssize_t n;
         leidos < esperados && (n = read(tubo, reinterpret_cast<char*>(suyas.data()) + leidos,
                                         static_cast<std::size_t>(esperados - leidos))) > 0;)
      leidos += n;
    close(tubo);
    int estado = 0;
    waitpid(pid, &estado, 0);
    if (leidos != esperados || !WIFEXITED(estado) || WEXITSTATUS(estado) != 0)
      std::exit(3);
    todas.insert(todas.end(), suyas.begin(), suyas.end());
  }
  const std::chrono::duration<double> total = Reloj::now() - inicio;
  return {static_cast<double>(todas.size()) / total.count(), percentil(todas, 0.5),
          percentil(todas, 0.99)};
}

}  // namespace

int main(int argc, char** argv) {
  const int ventas = argc > 1 ? std::atoi(argv[1]) : 100;
  std::vector<test::Motor> motores{test::Motor::Sqlite};
  if (std::getenv("CAJA_PRUEBA_PG"))
    motores.push_back(test::Motor::Postgres);
  else
    std::printf("(sin CAJA_PRUEBA_PG: solo SQLite)\n");
  std::printf("%-10s %5s %10s %9s %9s %9s\n", "base", "cajas", "ventas/s", "p50 ms", "p99 ms",
              "x 1 caja");
  for (const test::Motor motor : motores) {
    double una = 0;
    for (const int cajas : {1, 2, 4, 8}) {
      const Medida m = medir(motor, cajas, ventas);
      if (cajas == 1)
        una = m.ventasPorSegundo;
      std::printf("%-10s %5d %10.1f %9.2f %9.2f %9.2f\n",
                  motor == test::Motor::Sqlite ? "SQLite" : "PostgreSQL", cajas, m.ventasPorSegundo,
                  m.p50ms, m.p99ms, m.ventasPorSegundo / una);
    }
  }
  return 0;
}
