// The owner's month: `caja informe` over 10,000 movements of October (sales
// by cash and card, refunds, withdrawals, voids and a closing a day), run as
// a whole process, text and PDF with its chart, on the embedded file and, with
// CAJA_PRUEBA_PG, on a PostgreSQL server. Target: under a second; the
// program exits 1 when a median is over it.
//
//   CAJA_PRUEBA_PG=postgresql:///postgres bench_informe [RONDAS]
//   CAJA_INFORME_PNG=docs/informe.png bench_informe 1    (the month's chart for the docs)

#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/datos/Esquema.h"
#include "tests/support/HostPrueba.h"

namespace {

using namespace caja;
using Reloj = std::chrono::steady_clock;

constexpr int kMovimientos = 10000;

// A month of movements written straight into the tables, numbered by hand:
// every 40th a refund, every 97th a withdrawal, every 50th voided, every
// third sale paid partly by card; one closing a day.
void sembrar(HostSql& db) {
  const Fecha octubre = Fecha::fromYmd(2026, 10, 1);
  db.EnTransaccion([&] {
    for (std::int32_t i = 1; i <= kMovimientos; ++i) {
      const Fecha dia = octubre + Fecha(static_cast<double>(i % 31));
      const bool devolucion = i % 40 == 0, salida = i % 97 == 0;
      const Currency monto = Currency::fromRaw(1000000 + (i * 7919LL) % 5000000);
      const Currency entra = devolucion || salida ? Currency{} : monto;
      db.ExecuteSQL(
          "INSERT INTO MovimientosCaja (TransID, Fecha, Hora, Sesion, Operador, Debitos, "
          "Creditos, Clasificacion, machineID, MontoIGTF) VALUES (?, ?, ?, 1, 'ANA', ?, ?, ?, ?, "
          "?)",
          {i, dia, Fecha::fromHms(9 + i % 10, i % 60, 0), entra, monto - entra,
           devolucion ? "DEVOLUCION"
           : salida   ? "SALIDA"
                      : "",
           1 + i % 3, i % 5 == 0 ? Currency::fromRaw(30000) : Currency{}});
      const Currency tarjeta = i % 3 == 0 && !entra.isZero() ? Currency::fromUnits(10) : Currency{};
      const Currency efectivo = (entra.isZero() ? -monto : entra) - tarjeta;
      db.ExecuteSQL(
          "INSERT INTO DetallesVarelta (TransID, Medio, Monto, MontoNominal) VALUES "
          "(?, 'EFE', ?, ?)",
          {i, efectivo, efectivo});
      if (!tarjeta.isZero())
        db.ExecuteSQL(
            "INSERT INTO DetallesVarelta (TransID, Medio, Monto, MontoNominal) VALUES "
            "(?, 'TDC', ?, ?)",
            {i, tarjeta, tarjeta});
      if (i % 50 == 0)
        db.ExecuteSQL("INSERT INTO hostAnulaciones (TransID, Fecha, Operador) VALUES (?, ?, 'ANA')",
                      {i, dia});
    }
    for (std::int32_t d = 1; d <= 31; ++d) {
      db.ExecuteSQL(
          "INSERT INTO hostCierres (id, MachineID, Fecha, Operador) VALUES (?, 1, ?, "
          "'ANA')",
          {d, octubre + Fecha(d - 1 + 0.9)});
      db.ExecuteSQL(
          "INSERT INTO hostCierreDetalles (idCierre, codigoMedio, esperadoMN, esperadoNominal, "
          "tipoCambio, contado, diferencia) VALUES (?, 'EFE', 100, 100, 1, 99.5, -0.5)",
          {d});
    }
  });
}

// The whole `caja informe` process, in milliseconds.
double informe(const std::string& db, const std::vector<std::string>& mas) {
  std::vector<std::string> argumentos = {
      "informe", "--desde", "2026-10-01", "--hasta", "2026-10-31", "--db", db};
  argumentos.insert(argumentos.end(), mas.begin(), mas.end());
  std::string cmd = "env -u DISPLAY " + std::string(CAJA_BIN);
  for (const auto& a : argumentos)
    cmd += " '" + a + "'";
  cmd += " >/dev/null";
  const auto inicio = Reloj::now();
  const int estado = std::system(cmd.c_str());
  if (WEXITSTATUS(estado) != 0) {
    std::fprintf(stderr, "caja informe falló: %s\n", cmd.c_str());
    std::exit(2);
  }
  return std::chrono::duration<double, std::milli>(Reloj::now() - inicio).count();
}

double mediana(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const int rondas = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  // The month is written straight into the program's own tables too.
  caja::app::agregarEsquema();
  bool lento = false;
  for (const auto motor : {test::Motor::Sqlite, test::Motor::Postgres}) {
    test::ConBase base(motor);
    if (!base.db) {
      std::printf("(sin CAJA_PRUEBA_PG: no se mide el servidor)\n");
      continue;
    }
    sembrar(*base.db);
    // The docs' picture of a month comes from here.
    if (const char* png = std::getenv("CAJA_INFORME_PNG"); png && motor == test::Motor::Sqlite)
      informe(base.destino(), {"--png", png, "--tamano", "1200x600"});
    const auto pdf = (base.carpeta.ruta() / "mes.pdf").string();
    for (const auto& [que, mas] : std::vector<std::pair<const char*, std::vector<std::string>>>{
             {"texto", {}}, {"PDF con gráfico", {"--pdf", pdf}}}) {
      std::vector<double> tiempos;
      for (int r = 0; r < rondas; ++r)
        tiempos.push_back(informe(base.destino(), mas));
      const double ms = mediana(tiempos);
      std::printf("%-10s %-16s %d movimientos: %.0f ms (mediana de %d)\n",
                  motor == test::Motor::Sqlite ? "archivo" : "servidor", que, kMovimientos, ms,
                  rondas);
      lento = lento || ms > 1000;
    }
  }
  return lento ? 1 : 0;
}
