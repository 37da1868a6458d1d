// The time of one sale as the cashier waits for it: a whole `caja cobrar`
// run, from start to exit, on the embedded file, on a PostgreSQL server, and
// on a server that cannot be reached (the sale goes to the till's journal).
// Target: the offline sale is no slower than the embedded-file sale; the
// program exits 1 when its median is more than 10% above.
//
// The unreachable server refuses the connection at once (a closed local
// port). A link whose packets vanish waits the connection's timeout (3 s
// unless the URI says otherwise) before the sale goes to the journal; that
// wait is the network's, not the save's, and is not measured here.
//
//   CAJA_PRUEBA_PG=postgresql:///postgres bench_sin_conexion [VENTAS]

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/HostPrueba.h"

namespace {

using namespace caja;
using Reloj = std::chrono::steady_clock;

// A server no till can reach: nothing listens on port 1.
constexpr const char* kServidorAusente = "postgresql://127.0.0.1:1/caja";

// Runs caja with `argumentos` for the till whose data folder is `datos`;
// returns the wall time in milliseconds, or exits when caja fails.
double correr(const std::filesystem::path& datos, const std::vector<std::string>& argumentos) {
  std::fflush(stdout);
  const auto inicio = Reloj::now();
  const pid_t pid = fork();
  if (pid == 0) {
    setenv("XDG_DATA_HOME", datos.c_str(), 1);
    setenv("XDG_CONFIG_HOME", datos.c_str(), 1);
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    const int nulo = open("/dev/null", O_WRONLY);
    dup2(nulo, STDOUT_FILENO);
    dup2(nulo, STDERR_FILENO);
    std::vector<char*> argv{const_cast<char*>(CAJA_BIN)};
    for (const auto& a : argumentos)
      argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(CAJA_BIN, argv.data());
    _exit(127);
  }
  int estado = 0;
  waitpid(pid, &estado, 0);
  if (!WIFEXITED(estado) || WEXITSTATUS(estado) != 0) {
    std::fprintf(stderr, "caja %s falló (%d)\n", argumentos.front().c_str(), estado);
    std::exit(2);
  }
  return std::chrono::duration<double, std::milli>(Reloj::now() - inicio).count();
}

std::vector<std::string> venta(int i, const std::string& db) {
  return {"cobrar", "--venta", std::to_string(i), "--pago", "EFE=" + std::to_string(i), "--aceptar",
          "--db",   db};
}

struct Medida {
  double mediana, p90;
};

Medida medir(const std::filesystem::path& datos, const std::string& db, int ventas) {
  std::vector<double> tiempos;
  for (int i = 1; i <= ventas; ++i)
    tiempos.push_back(correr(datos, venta(i, db)));
  std::sort(tiempos.begin(), tiempos.end());
  const auto en = [&](double p) {
    return tiempos[static_cast<std::size_t>(p * static_cast<double>(tiempos.size() - 1))];
  };
  return {en(0.5), en(0.9)};
}

void imprimir(const char* donde, Medida m) {
  std::printf("%-24s %9.1f %9.1f\n", donde, m.mediana, m.p90);
}

}  // namespace

int main(int argc, char** argv) {
  const int ventas = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
  std::printf("%-24s %9s %9s\n", "venta (proceso entero)", "p50 ms", "p90 ms");

  test::ConBase archivo(test::Motor::Sqlite);
  correr(archivo.carpeta.ruta(), {"init", "--demo", "--db", archivo.destino()});
  const Medida local = medir(archivo.carpeta.ruta(), archivo.destino(), ventas);
  imprimir("archivo SQLite", local);

  test::ConBase servidor(test::Motor::Postgres);
  if (!servidor.db) {
    std::printf("(sin CAJA_PRUEBA_PG: no se mide el servidor ni la venta sin conexión)\n");
    return 0;
  }
  correr(servidor.carpeta.ruta(), {"init", "--demo", "--db", servidor.destino()});
  imprimir("servidor PostgreSQL", medir(servidor.carpeta.ruta(), servidor.destino(), ventas));

  // A till of its own, whose journal its first sale on the server made.
  test::CarpetaTemporal otraCaja;
  correr(otraCaja.ruta(), venta(1, servidor.destino()));
  const Medida sinConexion = medir(otraCaja.ruta(), kServidorAusente, ventas);
  imprimir("sin conexión (diario)", sinConexion);

  const double razon = sinConexion.mediana / local.mediana;
  std::printf("sin conexión / archivo: %.2f (objetivo <= 1.10)\n", razon);
  return razon <= 1.10 ? 0 : 1;
}
