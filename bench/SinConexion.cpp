// The time of one sale as the cashier waits for it: a whole `caja cobrar`
// run, from start to exit, on the embedded file, on a PostgreSQL server, and
// on a server that cannot be reached (the sale goes to the till's journal).
// Target: the offline sale is no slower than the embedded-file sale; the
// program exits 1 when the median of their ratio, round by round, is more
// than 1.10.
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
#include <thread>
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

// A till: its data folder and the database it names.
struct Caja {
  const char* nombre;
  std::filesystem::path datos;
  std::string db;
  std::vector<double> tiempos;
};

// Sales at the given tills in turn, the order reversed every round, so that
// a machine whose load drifts slows them alike.
void medir(std::vector<Caja*> cajas, int ventas) {
  for (int i = 1; i <= ventas; ++i) {
    for (Caja* c : cajas)
      c->tiempos.push_back(correr(c->datos, venta(i, c->db)));
    std::reverse(cajas.begin(), cajas.end());
  }
}

double percentil(std::vector<double> v, double p) {
  std::sort(v.begin(), v.end());
  return v[static_cast<std::size_t>(p * static_cast<double>(v.size() - 1))];
}

}  // namespace

int main(int argc, char** argv) {
  const int ventas = argc > 1 ? std::max(1, std::atoi(argv[1])) : 60;
  // No connection of this program stays open on the file: the last one to
  // close checkpoints its log, and each sale must pay that as the journal's do.
  test::CarpetaTemporal archivo;
  const std::string base = (archivo.ruta() / "caja.db").string();
  correr(archivo.ruta(), {"init", "--demo", "--db", base});
  std::vector<Caja> cajas{{"archivo SQLite", archivo.ruta(), base, {}}};

  test::ConBase servidor(test::Motor::Postgres);
  // A till of its own, whose journal its first sale on the server made.
  test::CarpetaTemporal otraCaja;
  if (servidor.db) {
    correr(servidor.carpeta.ruta(), {"init", "--demo", "--db", servidor.destino()});
    correr(otraCaja.ruta(), venta(1, servidor.destino()));
    cajas.push_back({"servidor PostgreSQL", servidor.carpeta.ruta(), servidor.destino(), {}});
    cajas.push_back({"sin conexión (diario)", otraCaja.ruta(), kServidorAusente, {}});
  } else {
    std::printf("(sin CAJA_PRUEBA_PG: no se mide el servidor ni la venta sin conexión)\n");
  }
  if (cajas.size() < 3) {
    medir({&cajas[0]}, ventas);
  } else {
    // The server goes on working after a sale (its log, its statistics):
    // its sales are measured apart, and it is left to settle before the
    // file and the journal are compared.
    medir({&cajas[1]}, ventas);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    medir({&cajas[0], &cajas[2]}, ventas);
  }

  std::printf("%-24s %9s %9s\n", "venta (proceso entero)", "p50 ms", "p90 ms");
  for (const Caja& c : cajas)
    std::printf("%-24s %9.1f %9.1f\n", c.nombre, percentil(c.tiempos, 0.5),
                percentil(c.tiempos, 0.9));
  if (cajas.size() < 3)
    return 0;
  // Paired by round: the two sales of a round met the same machine.
  std::vector<double> razones;
  for (std::size_t i = 0; i < cajas[0].tiempos.size(); ++i)
    razones.push_back(cajas[2].tiempos[i] / cajas[0].tiempos[i]);
  const double razon = percentil(razones, 0.5);
  std::printf("sin conexión / archivo, mediana por ronda: %.2f (objetivo <= 1.10)\n", razon);
  return razon <= 1.10 ? 0 : 1;
}
