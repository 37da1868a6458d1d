#include "app/envio/Cerrojo.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace caja::app {

Cerrojo::Cerrojo(const std::filesystem::path& archivo, bool esperar) {
  fd_ = ::open(archivo.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  tomado_ = fd_ >= 0 && ::flock(fd_, LOCK_EX | (esperar ? 0 : LOCK_NB)) == 0;
}

Cerrojo::~Cerrojo() {
  if (fd_ >= 0)
    ::close(fd_);
}

}  // namespace caja::app
