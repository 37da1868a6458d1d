#include "app/datos/Supervisores.h"

#include "app/datos/CostePin.h"

#include <sodium.h>
#include <QCryptographicHash>

#include <stdexcept>

#include "app/datos/Consultas.h"
#include "caja/base/Conversiones.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

// Rows written before Argon2id: one SHA-256 of salt and PIN, kept verifiable
// until the supervisor's next change so that nobody is locked out by an update.
std::string sha256Antiguo(const std::string& sal, const std::string& pin) {
  return QCryptographicHash::hash(QByteArray::fromStdString(sal + pin), QCryptographicHash::Sha256)
      .toHex()
      .toStdString();
}

void iniciarSodium() {
  static const bool listo = sodium_init() >= 0;
  if (!listo)
    throw std::runtime_error("No se pudo iniciar libsodium");
}

// Argon2id at the program's cost (CostePin.h): the text carries its own
// salt and parameters.
std::string hashPin(const std::string& pin) {
  iniciarSodium();
  char hash[crypto_pwhash_STRBYTES];
  if (crypto_pwhash_str(hash, pin.data(), pin.size(), kOperacionesPin, kMemoriaPin) != 0)
    throw std::runtime_error("Sin memoria para guardar el PIN");
  return hash;
}

bool coincide(const std::string& sal, const std::string& hash, const std::string& pin) {
  if (!sal.empty())
    return sha256Antiguo(sal, pin) == hash;
  iniciarSodium();
  return crypto_pwhash_str_verify(hash.c_str(), pin.data(), pin.size()) == 0;
}

// A server keeps the PIN hashes from a till's own queries: they are read
// through its function caja_personas (see esServidor).
const char* tablaDe(Rol rol) {
  return rol == Rol::Cajero ? "hostCajeros" : "hostSupervisores";
}

}  // namespace

const char* nombreRol(Rol rol) {
  return rol == Rol::Cajero ? "cajero" : "supervisor";
}

void agregarSupervisor(HostSql& db, const std::string& nombre, const std::string& pin, int nivel) {
  db.ExecuteSQL(
      "INSERT INTO hostSupervisores (Nombre, Sal, Hash, Nivel) VALUES (?, '', ?, ?) "
      "ON CONFLICT (Nombre) DO UPDATE SET Sal = excluded.Sal, Hash = excluded.Hash, "
      "Nivel = excluded.Nivel",
      {nombre, hashPin(pin), nivel});
}

void agregarCajero(HostSql& db, const std::string& nombre, const std::string& pin) {
  db.ExecuteSQL(
      "INSERT INTO hostCajeros (Nombre, Hash) VALUES (?, ?) "
      "ON CONFLICT (Nombre) DO UPDATE SET Hash = excluded.Hash",
      {nombre, hashPin(pin)});
}

bool quitarCajero(HostSql& db, const std::string& nombre) {
  return db.ExecuteSQL("DELETE FROM hostCajeros WHERE Nombre = ?", {nombre}) > 0;
}

std::optional<Persona> personaDe(HostSql& db, Rol rol, const std::string& nombre) {
  auto rs = esServidor(db)
                ? db.openrecordset("SELECT * FROM caja_personas(?, ?)", {nombreRol(rol), nombre})
                : db.openrecordset(
                      "SELECT * FROM " + std::string(tablaDe(rol)) + " WHERE Nombre = ?", {nombre});
  if (rs->Eof())
    return std::nullopt;
  Persona p{CStr(rs->Fields("Nombre")), "", CStr(rs->Fields("Hash")), 0};
  if (rol == Rol::Supervisor) {
    p.sal = CStr(rs->Fields("Sal"));
    p.nivel = static_cast<int>(CLng(rs->Fields("Nivel")));
  }
  return p;
}

std::vector<std::string> nombresDe(HostSql& db, Rol rol) {
  std::vector<std::string> lista;
  auto rs =
      db.openrecordset("SELECT Nombre FROM " + std::string(tablaDe(rol)) + " ORDER BY Nombre");
  for (; !rs->Eof(); rs->MoveNext())
    lista.push_back(CStr(rs->Fields("Nombre")));
  return lista;
}

bool pinCoincide(const Persona& persona, const std::string& pin) {
  return coincide(persona.sal, persona.hash, pin);
}

bool hayPersonas(HostSql& db, Rol rol) {
  return CLng(db.ReadScalar("SELECT COUNT(*) FROM " + std::string(tablaDe(rol)))) > 0;
}

Intentos intentosDe(HostSql& db, Rol rol, const std::string& nombre) {
  auto rs = db.openrecordset(
      "SELECT Fallos, BloqueadoHasta FROM hostIntentos WHERE Rol = ? AND Nombre = ?",
      {nombreRol(rol), nombre});
  if (rs->Eof())
    return {};
  return {NzLong(rs->Fields(0)), CStr(rs->Fields(1))};
}

void ponerIntentos(HostSql& db, Rol rol, const std::string& nombre, std::int32_t fallos,
                   const std::string& hasta) {
  db.ExecuteSQL(
      "INSERT INTO hostIntentos (Rol, Nombre, Fallos, BloqueadoHasta) VALUES (?, ?, ?, ?) "
      "ON CONFLICT (Rol, Nombre) DO UPDATE SET Fallos = excluded.Fallos, "
      "BloqueadoHasta = excluded.BloqueadoHasta",
      {nombreRol(rol), nombre, fallos, hasta});
}

void reiniciarIntentos(HostSql& db, Rol rol, const std::string& nombre) {
  db.ExecuteSQL(
      "UPDATE hostIntentos SET Fallos = 0, BloqueadoHasta = '' WHERE Rol = ? AND Nombre = ?",
      {nombreRol(rol), nombre});
}

void bloquearHasta(HostSql& db, Rol rol, const std::string& nombre, const std::string& hasta) {
  db.ExecuteSQL(
      "INSERT INTO hostIntentos (Rol, Nombre, Fallos, BloqueadoHasta) VALUES (?, ?, 0, ?) "
      "ON CONFLICT (Rol, Nombre) DO UPDATE SET Fallos = 0, BloqueadoHasta = CASE WHEN "
      "hostIntentos.BloqueadoHasta > excluded.BloqueadoHasta THEN hostIntentos.BloqueadoHasta "
      "ELSE excluded.BloqueadoHasta END",
      {nombreRol(rol), nombre, hasta});
}

int nivelDePin(HostSql& db, const std::string& pin) {
  int nivel = 0;
  auto rs = esServidor(db)
                ? db.openrecordset("SELECT sal, hash, nivel FROM caja_personas('supervisor', NULL)")
                : db.openrecordset("SELECT Sal, Hash, Nivel FROM hostSupervisores");
  for (; !rs->Eof(); rs->MoveNext())
    if (coincide(CStr(rs->Fields("Sal")), CStr(rs->Fields("Hash")), pin))
      nivel = std::max(nivel, static_cast<int>(CLng(rs->Fields("Nivel"))));
  return nivel;
}

}  // namespace caja::app
