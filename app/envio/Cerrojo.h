#pragma once

#include <filesystem>

namespace caja::app {

// An exclusive lock on a file of the till's data folder (flock), held while
// the object lives; not inherited by programs the process starts.
class Cerrojo {
 public:
  // Waits for the lock when `esperar`; otherwise `tomado()` says whether it
  // was free.
  Cerrojo(const std::filesystem::path& archivo, bool esperar);
  ~Cerrojo();
  Cerrojo(const Cerrojo&) = delete;
  Cerrojo& operator=(const Cerrojo&) = delete;
  bool tomado() const { return tomado_; }

 private:
  int fd_ = -1;
  bool tomado_ = false;
};

}  // namespace caja::app
