#include "app/envio/Enviador.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <thread>

#include "app/datos/Carpeta.h"
#include "app/envio/Cerrojo.h"
#include "app/envio/Envio.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/service/General.h"

namespace caja::app {

namespace {

constexpr int kEsperaMaximaS = 60;
constexpr auto kPlazo = std::chrono::minutes(10);
// Between batches of a sender that runs all day, and between its copies of
// what a sale reads while nothing goes.
constexpr int kPausaContinuaS = 2;
constexpr auto kCadaCopia = std::chrono::seconds(30);

std::filesystem::path enCarpeta(const char* nombre) {
  return carpetaDeDatos(true) / nombre;
}

// One batch: what waits goes to the server, then the journal takes a fresh
// copy of what a sale reads, unless nothing went and the last copy is
// recent (a sender that runs all day would otherwise rewrite it every
// pause). Whether anything still waits.
bool lote(HostSql& servidor, const std::shared_ptr<HostSql>& diario,
          std::chrono::steady_clock::time_point& ultimaCopia) {
  const Envio envio = sincronizar(servidor, *diario);
  avisarEnvio(envio);
  if (!envio.enviados.empty() || std::chrono::steady_clock::now() - ultimaCopia >= kCadaCopia) {
    copiarReferencias(servidor, *diario);
    ultimaCopia = std::chrono::steady_clock::now();
  }
  return !pendientes(*diario).empty();
}

}  // namespace

namespace {

// Sends while the lock is held, until nothing waits or, unless
// `--continuo`, ten minutes have passed.
bool enviarConCerrojo(const std::string& uri, const std::shared_ptr<HostSql>& diario,
                      bool continuo) {
  const auto hasta = std::chrono::steady_clock::now() + kPlazo;
  int espera = 1;
  // One connection while it works; a failure makes a new one next time.
  std::shared_ptr<PostgresFactoria> servidor;
  auto ultimaCopia = std::chrono::steady_clock::now() - kCadaCopia;
  for (;;) {
    int pausa = kPausaContinuaS;
    try {
      if (!servidor)
        servidor = PostgresFactoria::Conectar(uri);
      if (!lote(*servidor, diario, ultimaCopia) && !continuo)
        return true;
      espera = 1;
    } catch (const CajaError& e) {
      servidor.reset();
      // A server that is away, or one that refuses what it is sent: try
      // again later, less often each time.
      std::cerr << e.description() << "; nuevo intento en " << espera << " s" << std::endl;
      pausa = espera;
      espera = std::min(espera * 2, kEsperaMaximaS);
    }
    if (!continuo && std::chrono::steady_clock::now() > hasta) {
      std::cerr << "El servidor no recibió lo pendiente en diez minutos: se enviará con la "
                   "próxima venta"
                << std::endl;
      return false;
    }
    std::this_thread::sleep_for(std::chrono::seconds(pausa));
  }
}

}  // namespace

FinDeEnvio enviar(const std::string& uri, const std::shared_ptr<HostSql>& diario, bool continuo) {
  for (bool primera = true;; primera = false) {
    {
      const Cerrojo vivo(enCarpeta("enviador.lock"), false);
      if (!vivo.tomado())
        return primera ? FinDeEnvio::OtroEnCurso : FinDeEnvio::OtroSigue;
      if (!enviarConCerrojo(uri, diario, continuo))
        return FinDeEnvio::SinServidor;
    }
    // A sale saved after the last look found this sender still running and
    // started none: one more look once the lock is free.
    if (pendientes(*diario).empty())
      return FinDeEnvio::NadaEspera;
  }
}

void lanzarEnviador(const std::string& uri) {
  if (std::getenv("CAJA_PRUEBA_SIN_ENVIADOR"))
    return;  // tests that send by hand, at moments of their choosing
  {
    const Cerrojo libre(enCarpeta("enviador.lock"), false);
    if (!libre.tomado())
      return;
  }
  const std::string programa = QCoreApplication::applicationFilePath().toStdString();
  // Detached twice over, so that the sender outlives the sale and leaves no
  // child behind it.
  const pid_t hijo = fork();
  if (hijo == 0) {
    setsid();
    if (fork() == 0) {
      const int nulo = ::open("/dev/null", O_RDWR);
      for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nulo, fd);
      execl(programa.c_str(), programa.c_str(), "enviar", "--db", uri.c_str(),
            static_cast<char*>(nullptr));
    }
    _exit(0);
  }
  if (hijo > 0)
    waitpid(hijo, nullptr, 0);
}

}  // namespace caja::app
