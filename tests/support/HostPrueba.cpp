#include "tests/support/HostPrueba.h"

#include <libpq-fe.h>
#include <unistd.h>

#include <cstdlib>
#include <random>
#include <stdexcept>

#include "caja/base/Conversiones.h"
#include "caja/service/DialogosCaja.h"

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

EntornoPrueba::EntornoPrueba(std::shared_ptr<Factoria> host) {
  gMediosPago.reset();
  setSettingsStore(settings);
  setHostUtil(util);
  gFactoria = std::move(host);
}

EntornoPrueba::~EntornoPrueba() {
  gFactoria.reset();
  gEmpresa.reset();
  gTemaUI.reset();
  gMediosPago.reset();
  setSettingsStore(nullptr);
  setHostUtil(nullptr);
  setDialogosCaja(nullptr);
}

namespace {

const char* servidorDePrueba() {
  const char* uri = std::getenv("CAJA_PRUEBA_PG");
  return uri && *uri ? uri : nullptr;
}

// Runs one administrative statement on the test server.
void administrar(const std::string& sql) {
  std::unique_ptr<PGconn, decltype(&PQfinish)> c(PQconnectdb(servidorDePrueba()), PQfinish);
  if (PQstatus(c.get()) != CONNECTION_OK)
    throw std::runtime_error(PQerrorMessage(c.get()));
  std::unique_ptr<PGresult, decltype(&PQclear)> r(PQexec(c.get(), sql.c_str()), PQclear);
  if (PQresultStatus(r.get()) != PGRES_COMMAND_OK)
    throw std::runtime_error(PQresultErrorMessage(r.get()));
}

// The administrator's URI with another database name in place of its own.
std::string uriDeBase(const std::string& admin, const std::string& base) {
  const auto ruta = admin.find('/', admin.find("://") + 3);
  const auto consulta = admin.find('?');
  std::string uri = admin.substr(0, ruta == std::string::npos ? consulta : ruta) + "/" + base;
  if (consulta != std::string::npos)
    uri += admin.substr(consulta);
  return uri;
}

}  // namespace

std::vector<Motor> motores() {
  return {Motor::Sqlite, Motor::Postgres};
}

std::string nombreMotor(const ::testing::TestParamInfo<Motor>& info) {
  return info.param == Motor::Sqlite ? "Sqlite" : "Postgres";
}

BasePostgresTemporal::BasePostgresTemporal() {
  if (!servidorDePrueba())
    return;
  static int creadas = 0;
  nombre_ = "caja_prueba_" + std::to_string(::getpid()) + "_" + std::to_string(++creadas);
  administrar("CREATE DATABASE " + nombre_);
  uri_ = uriDeBase(servidorDePrueba(), nombre_);
}

BasePostgresTemporal::~BasePostgresTemporal() {
  if (nombre_.empty())
    return;
  try {
    administrar("DROP DATABASE IF EXISTS " + nombre_ + " WITH (FORCE)");
  } catch (const std::exception&) {
    // A database left behind goes with the throwaway server.
  }
}

ConBase::ConBase(Motor motor) : motor(motor), db(abrir()) {}

std::shared_ptr<HostSql> ConBase::abrir() const {
  if (motor == Motor::Postgres && servidor.uri().empty())
    return nullptr;
  return otraConexion();
}

std::string ConBase::destino() const {
  return motor == Motor::Sqlite ? (carpeta.ruta() / "caja.db").string() : servidor.uri();
}

std::shared_ptr<HostSql> ConBase::otraConexion() const {
  if (motor == Motor::Sqlite)
    return SqliteFactoria::Abrir(destino());
  return PostgresFactoria::Conectar(destino());
}

long ConBase::contar(const std::string& sqlCount) {
  return CLng(db->ReadScalar(sqlCount));
}

}  // namespace caja::test
