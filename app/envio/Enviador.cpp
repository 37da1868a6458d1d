#include "app/envio/Enviador.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDateTime>
#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <thread>

#include "app/envio/Diario.h"
#include "app/linea/Salida.h"
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

Cerrojo::Cerrojo(const std::filesystem::path& archivo, bool esperar) {
  fd_ = ::open(archivo.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  tomado_ = fd_ >= 0 && ::flock(fd_, LOCK_EX | (esperar ? 0 : LOCK_NB)) == 0;
}

Cerrojo::~Cerrojo() {
  if (fd_ >= 0)
    ::close(fd_);
}

namespace {

// Sends while the lock is held, until nothing waits or, unless
// `--continuo`, ten minutes have passed.
int enviarConCerrojo(Contexto& c) {
  const std::string uri = *c.args.valor("db");
  const bool continuo = c.args.bandera("continuo");
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
      if (!lote(*servidor, c.db, ultimaCopia) && !continuo)
        return kExito;
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
      return kError;
    }
    std::this_thread::sleep_for(std::chrono::seconds(pausa));
  }
}

}  // namespace

int enviar(Contexto& c) {
  for (bool primera = true;; primera = false) {
    {
      const Cerrojo vivo(enCarpeta("enviador.lock"), false);
      if (!vivo.tomado()) {
        if (primera)
          Salida(c.out, c.args.bandera("json")).mensaje("Ya hay un envío en curso en esta caja");
        return kExito;
      }
      if (const int estado = enviarConCerrojo(c); estado != kExito)
        return estado;
    }
    // A sale saved after the last look found this sender still running and
    // started none: one more look once the lock is free.
    if (pendientes(*c.db).empty()) {
      Salida(c.out, c.args.bandera("json")).mensaje("Nada espera envío");
      return kExito;
    }
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

std::string ultimoEnvio() {
  std::ifstream archivo(carpetaDeDatos(false) / "ultimo-envio");
  std::string texto;
  std::getline(archivo, texto);
  return texto;
}

void anotarEnvio() {
  const auto ruta = enCarpeta("ultimo-envio");
  std::ofstream(ruta) << QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss").toStdString()
                      << '\n';
  std::filesystem::permissions(
      ruta, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace caja::app
