#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace caja::test {

// A slow link between tills and the test server: a TCP proxy on a local
// port that hands each chunk on, each way, half the round-trip time after it
// came, and counts round trips: every flight of the client that follows an
// answer of the server (or opens a connection) is one. It can also lose
// everything sent (a link whose packets vanish) until told otherwise.
class EnlaceDemorado {
 public:
  // Forwards to the test server's TCP port (PGPORT, 5432 unless set).
  explicit EnlaceDemorado(std::chrono::milliseconds idaYVuelta);
  ~EnlaceDemorado();
  EnlaceDemorado(const EnlaceDemorado&) = delete;
  EnlaceDemorado& operator=(const EnlaceDemorado&) = delete;

  // The URI of the same database as `directa`, through this link.
  std::string uri(const std::string& directa) const;
  void demora(std::chrono::milliseconds idaYVuelta) { idaYVuelta_ = idaYVuelta; }
  // While set, nothing gets through either way, and nothing is refused:
  // the sender waits until its own timeouts.
  void perder(bool perder) { perder_ = perder; }
  long idasYVueltas() const { return idasYVueltas_; }
  // Connections opened through the link since it was made.
  long conexiones() const { return conexiones_; }
  void contarDesdeCero() { idasYVueltas_ = 0; }

 private:
  struct Conexion;
  void aceptar();
  void llevar(int desde, int hasta, bool delCliente, const std::shared_ptr<Conexion>& conexion);

  int escucha_ = -1, puerto_ = 0, puertoServidor_ = 5432;
  std::atomic<std::chrono::milliseconds> idaYVuelta_;
  std::atomic<bool> perder_{false}, fin_{false};
  std::atomic<long> idasYVueltas_{0}, conexiones_{0};
  std::mutex hilosMutex_;
  std::vector<std::thread> hilos_;
  std::thread aceptador_;
};

// The round trips of the component's save of a three-line sale (national
// cash, a dollar, a debit card) on the database `directa` names, through the
// link, as a host that saves directly does it: Save and commitTransEf in
// one host transaction, its writes deferred when `diferir`.
long idasYVueltasDelGuardado(EnlaceDemorado& enlace, const std::string& directa, bool diferir);

}  // namespace caja::test
