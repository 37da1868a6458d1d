#include "tests/support/Ayudas.h"

#include <random>

namespace caja::test {

CarpetaTemporal::CarpetaTemporal() {
  std::random_device azar;
  ruta_ = std::filesystem::temp_directory_path() / ("caja-test-" + std::to_string(azar()));
  std::filesystem::create_directories(ruta_);
}

CarpetaTemporal::~CarpetaTemporal() {
  std::error_code ignorado;
  std::filesystem::remove_all(ruta_, ignorado);
}

}  // namespace caja::test
