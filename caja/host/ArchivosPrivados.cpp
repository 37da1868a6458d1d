#include "caja/host/ArchivosPrivados.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "caja/base/CajaError.h"

namespace caja {

namespace fs = std::filesystem;

namespace {

constexpr long kErrorArchivo = 75;  // path/file access error

CajaError errorArchivo(const fs::path& ruta) {
  return CajaError(kErrorArchivo, "caja",
                   "No se pudo escribir " + ruta.string() + ": " + std::strerror(errno));
}

}  // namespace

void crearCarpetaPrivada(const fs::path& carpeta) {
  if (carpeta.empty() || fs::exists(carpeta))
    return;
  crearCarpetaPrivada(carpeta.parent_path());
  if (::mkdir(carpeta.c_str(), 0700) != 0 && errno != EEXIST)
    throw errorArchivo(carpeta);
}

void crearArchivoPrivado(const fs::path& archivo) {
  const int fd = ::open(archivo.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd >= 0)
    ::close(fd);
}

void escribirArchivoPrivado(const fs::path& archivo, const std::string& contenido) {
  const int fd = ::open(archivo.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0)
    throw errorArchivo(archivo);
  // A file left by an older version keeps no wider mode.
  bool bien = ::fchmod(fd, 0600) == 0;
  for (std::size_t hecho = 0; bien && hecho < contenido.size();) {
    const ssize_t n = ::write(fd, contenido.data() + hecho, contenido.size() - hecho);
    if (n < 0 && errno == EINTR)
      continue;
    bien = n > 0;
    hecho += bien ? static_cast<std::size_t>(n) : 0;
  }
  if (::close(fd) != 0 || !bien)
    throw errorArchivo(archivo);
}

}  // namespace caja
