#include "tests/support/Programa.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace caja::test {

double correrCaja(const char* programa, const std::filesystem::path& datos,
                  const std::vector<std::string>& argumentos,
                  const std::vector<std::pair<std::string, std::string>>& entorno) {
  std::fflush(stdout);
  const auto inicio = std::chrono::steady_clock::now();
  const pid_t pid = fork();
  if (pid == 0) {
    setenv("XDG_DATA_HOME", datos.c_str(), 1);
    setenv("XDG_CONFIG_HOME", datos.c_str(), 1);
    for (const auto& [nombre, valor] : entorno)
      setenv(nombre.c_str(), valor.c_str(), 1);
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    const int nulo = open("/dev/null", O_WRONLY);
    dup2(nulo, STDOUT_FILENO);
    dup2(nulo, STDERR_FILENO);
    std::vector<char*> argv{const_cast<char*>(programa)};
    for (const auto& a : argumentos)
      argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(programa, argv.data());
    _exit(127);
  }
  int estado = 0;
  waitpid(pid, &estado, 0);
  if (!WIFEXITED(estado) || WEXITSTATUS(estado) != 0) {
    std::fprintf(stderr, "caja %s falló (%d)\n", argumentos.front().c_str(), estado);
    std::exit(2);
  }
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - inicio)
      .count();
}

double percentil(std::vector<double> v, double p) {
  std::sort(v.begin(), v.end());
  return v[static_cast<std::size_t>(p * static_cast<double>(v.size() - 1))];
}

bool cumple(const char* que, double valor, double objetivo, const char* unidad) {
  const bool bien = valor <= objetivo;
  std::printf("%-52s %9.2f %s (objetivo <= %g)%s\n", que, valor, unidad, objetivo,
              bien ? "" : "  NO CUMPLE");
  return bien;
}

}  // namespace caja::test
