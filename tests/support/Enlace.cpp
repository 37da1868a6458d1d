#include "tests/support/Enlace.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <stdexcept>
#include <tuple>

#include "caja/host/PostgresFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"

namespace caja::test {

using Reloj = std::chrono::steady_clock;

// The two sockets of one connection and which side spoke last, for the
// count of round trips.
struct EnlaceDemorado::Conexion {
  int cliente = -1, servidor = -1;
  std::atomic<bool> habloServidor{true};
  ~Conexion() {
    ::close(cliente);
    ::close(servidor);
  }
};

namespace {

sockaddr_in local(int puerto) {
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  a.sin_port = htons(static_cast<std::uint16_t>(puerto));
  return a;
}

void sinNagle(int fd) {
  int uno = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &uno, sizeof uno);
}

// Chunks in flight one way, each with the moment it may be handed on.
struct EnVuelo {
  std::mutex m;
  std::condition_variable cv;
  std::deque<std::pair<Reloj::time_point, std::string>> trozos;
  bool cerrado = false;
};

}  // namespace

EnlaceDemorado::EnlaceDemorado(std::chrono::milliseconds idaYVuelta) : idaYVuelta_(idaYVuelta) {
  if (const char* p = std::getenv("PGPORT"))
    puertoServidor_ = std::atoi(p);
  escucha_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in a = local(0);
  socklen_t largo = sizeof a;
  if (::bind(escucha_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 ||
      ::listen(escucha_, 64) != 0 ||
      ::getsockname(escucha_, reinterpret_cast<sockaddr*>(&a), &largo) != 0)
    throw std::runtime_error("el enlace no pudo escuchar");
  puerto_ = ntohs(a.sin_port);
  aceptador_ = std::thread([this] { aceptar(); });
}

EnlaceDemorado::~EnlaceDemorado() {
  fin_ = true;
  ::shutdown(escucha_, SHUT_RDWR);
  aceptador_.join();
  ::close(escucha_);
  std::lock_guard<std::mutex> l(hilosMutex_);
  for (auto& h : hilos_)
    h.join();
}

std::string EnlaceDemorado::uri(const std::string& directa) const {
  const auto barra = directa.rfind('/');
  return "postgresql://127.0.0.1:" + std::to_string(puerto_) + directa.substr(barra);
}

void EnlaceDemorado::aceptar() {
  while (!fin_) {
    const int cliente = ::accept4(escucha_, nullptr, nullptr, SOCK_CLOEXEC);
    if (cliente < 0)
      continue;
    ++conexiones_;
    auto c = std::make_shared<Conexion>();
    c->cliente = cliente;
    c->servidor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in a = local(puertoServidor_);
    if (::connect(c->servidor, reinterpret_cast<const sockaddr*>(&a), sizeof a) != 0)
      continue;
    sinNagle(c->cliente);
    sinNagle(c->servidor);
    std::lock_guard<std::mutex> l(hilosMutex_);
    hilos_.emplace_back([this, c] { llevar(c->cliente, c->servidor, true, c); });
    hilos_.emplace_back([this, c] { llevar(c->servidor, c->cliente, false, c); });
  }
}

// One way of one connection: a reader stamps each chunk, and this thread's
// writer hands it on when its time comes. Either side closing closes both.
void EnlaceDemorado::llevar(int desde, int hasta, bool delCliente,
                            const std::shared_ptr<Conexion>& conexion) {
  EnVuelo vuelo;
  std::thread escritor([&] {
    std::unique_lock<std::mutex> l(vuelo.m);
    for (;;) {
      vuelo.cv.wait(l, [&] { return vuelo.cerrado || !vuelo.trozos.empty(); });
      if (vuelo.trozos.empty())
        break;
      auto [cuando, trozo] = std::move(vuelo.trozos.front());
      vuelo.trozos.pop_front();
      l.unlock();
      std::this_thread::sleep_until(cuando);
      for (std::size_t hecho = 0; hecho < trozo.size();) {
        const ssize_t n = ::send(hasta, trozo.data() + hecho, trozo.size() - hecho, MSG_NOSIGNAL);
        if (n <= 0)
          break;
        hecho += static_cast<std::size_t>(n);
      }
      l.lock();
    }
    ::shutdown(hasta, SHUT_WR);
  });
  char buf[65536];
  for (;;) {
    pollfd p{desde, POLLIN, 0};
    if (::poll(&p, 1, 200) == 0) {
      if (fin_)
        break;
      continue;
    }
    const ssize_t n = ::recv(desde, buf, sizeof buf, 0);
    if (n <= 0)
      break;
    if (perder_)
      continue;
    if (delCliente && conexion->habloServidor.exchange(false))
      ++idasYVueltas_;
    if (!delCliente)
      conexion->habloServidor = true;
    std::lock_guard<std::mutex> l(vuelo.m);
    vuelo.trozos.emplace_back(Reloj::now() + idaYVuelta_.load() / 2,
                              std::string(buf, static_cast<std::size_t>(n)));
    vuelo.cv.notify_one();
  }
  {
    std::lock_guard<std::mutex> l(vuelo.m);
    vuelo.cerrado = true;
    vuelo.cv.notify_one();
  }
  escritor.join();
}

long idasYVueltasDelGuardado(EnlaceDemorado& enlace, const std::string& directa, bool diferir) {
  setSettingsStore(std::make_shared<MemoriaSettingsStore>());
  const auto host = PostgresFactoria::Conectar(enlace.uri(directa));
  host->DiferirEscrituras(diferir);
  InicializarEntorno(host);
  CVarelta mov;
  for (const auto& [medio, nominal, monto] :
       {std::tuple{"EFE", 10, 10}, std::tuple{"USD", 1, 36}, std::tuple{"TDD", 54, 54}}) {
    auto d = std::make_shared<CDetalleIngreso>();
    d->medio = medio;
    d->montoNominal = Currency::fromUnits(nominal);
    d->Monto = Currency::fromUnits(monto);
    mov.colDetalles->Add(d);
  }
  enlace.contarDesdeCero();
  host->EnTransaccion([&] {
    mov.Save(1, "DIRECTO", "", 0, "CLI", "C0001", "directo", Fecha::today());
    mov.commitTransEf();
  });
  const long cuenta = enlace.idasYVueltas();
  gFactoria.reset();
  gMediosPago.reset();
  return cuenta;
}

}  // namespace caja::test
