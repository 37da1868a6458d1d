#include "app/datos/Carpeta.h"

#include <QDateTime>
#include <cstdlib>
#include <fstream>

#include "caja/host/ArchivosPrivados.h"
#include "caja/host/SqliteFactoria.h"

namespace caja::app {

std::filesystem::path carpetaDeDatos(bool crear) {
  const char* xdg = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  const std::filesystem::path raiz =
      xdg && *xdg ? std::filesystem::path(xdg)
                  : std::filesystem::path(home ? home : ".") / ".local" / "share";
  if (crear)
    crearCarpetaPrivada(raiz / "caja");
  return raiz / "caja";
}

void anotarError(const CajaError& e) {
  const auto carpeta = carpetaDeDatos(false);
  if (!std::filesystem::is_directory(carpeta))
    return;
  const auto ruta = carpeta / "caja.log";
  crearArchivoPrivado(ruta);
  std::ofstream(ruta, std::ios::app) << Fecha::now().toIsoText() << " Error " << e.number() << " ("
                                     << e.source() << "): " << e.description() << '\n';
}

std::string rutaDiario(bool crearCarpeta) {
  return (carpetaDeDatos(crearCarpeta) / "diario.db").string();
}

std::shared_ptr<HostSql> abrirDiario(bool crear) {
  const std::string ruta = rutaDiario(crear);
  if (!crear && !std::filesystem::exists(ruta))
    return nullptr;
  return SqliteFactoria::Abrir(ruta);
}

std::string ultimoEnvio() {
  std::ifstream archivo(carpetaDeDatos(false) / "ultimo-envio");
  std::string texto;
  std::getline(archivo, texto);
  return texto;
}

void anotarEnvio() {
  const auto ruta = carpetaDeDatos(true) / "ultimo-envio";
  std::ofstream(ruta) << QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss").toStdString()
                      << '\n';
  std::filesystem::permissions(
      ruta, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace caja::app
