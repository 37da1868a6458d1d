#include "app/acciones/EstaCaja.h"

#include <set>

#include "app/datos/Auditoria.h"
#include "app/linea/Salida.h"
#include "caja/base/Conversiones.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

constexpr const char* kSeccion = "General";
constexpr const char* kClave = "MachineID";
constexpr std::int64_t kMaquinaMaxima = 32767;

// The machines the database has sessions of, open or closed.
std::set<std::int32_t> maquinasConSesiones(HostSql& db) {
  std::set<std::int32_t> maquinas;
  for (const char* tabla : {"SesionesPOS", "SesionesCerradas"})
    for (auto rs = db.openrecordset(std::string("SELECT DISTINCT MachineID FROM ") + tabla);
         !rs->Eof(); rs->MoveNext())
      maquinas.insert(NzLong(rs->Fields(0)));
  return maquinas;
}

std::string lista(const std::set<std::int32_t>& maquinas) {
  std::string texto;
  for (const auto m : maquinas)
    texto += (texto.empty() ? "" : ", ") + std::to_string(m);
  return texto;
}

// The administrator binds a till's server login to its machine: from then
// on that login touches no other machine's money. Recorded in the trail.
void atarLogin(Contexto& c, const std::string& login) {
  if (!c.conServidor)
    throw ErrorUso("--login ata un usuario del servidor a su máquina: --db postgresql://...");
  if (c.args.posicionales().empty())
    throw ErrorUso("Uso: caja maquina N --login USUARIO --db postgresql://...");
  const auto n = static_cast<std::int32_t>(
      enteroDe(c.args.posicionales().front(), "la máquina", 1, kMaquinaMaxima));
  Asiento a;
  a.maquina = n;
  a.accion = "login de caja";
  a.detalle = "el usuario " + login + " es la caja de la máquina " + std::to_string(n);
  c.db->EnTransaccion([&] {
    c.db->ExecuteSQL(
        "INSERT INTO hostLogins (Login, MachineID) VALUES (?, ?) ON CONFLICT (Login) DO UPDATE "
        "SET MachineID = excluded.MachineID",
        {login, n});
    anotar(*c.db, a);
  });
  Salida(c.out, c.args.bandera("json"))
      .mensaje("El usuario " + login + " del servidor es la caja de la máquina " +
               std::to_string(n));
}

}  // namespace

std::optional<std::int32_t> maquinaConfigurada() {
  const Currency valor = lmGetSettingCur(kAppNubetral, kSeccion, kClave, Currency{});
  const double numero = valor.toDouble();
  if (numero < 1 || numero > kMaquinaMaxima)
    return std::nullopt;
  return static_cast<std::int32_t>(numero);
}

void fijarMaquina(std::int32_t maquina) {
  settingsStore().SaveSetting(kAppNubetral, kSeccion, kClave, std::to_string(maquina));
}

std::optional<std::int32_t> maquinaElegida(Contexto& c) {
  if (const auto m = c.args.entero("maquina", 1, kMaquinaMaxima))
    return static_cast<std::int32_t>(*m);
  return maquinaConfigurada();
}

std::int32_t estaMaquina(Contexto& c) {
  if (const auto m = maquinaElegida(c))
    return *m;
  const auto maquinas = maquinasConSesiones(*c.db);
  if (maquinas.size() > 1)
    throw Rechazo("Esta caja no sabe qué máquina es, y la tienda tiene sesiones en las máquinas " +
                  lista(maquinas) +
                  ": fije la de esta caja con caja maquina N (o indique --maquina N); nada se "
                  "guardó");
  return maquinas.empty() ? 1 : *maquinas.begin();
}

int comandoMaquina(Contexto& c) {
  Salida salida(c.out, c.args.bandera("json"));
  if (const auto login = c.args.valor("login")) {
    atarLogin(c, *login);
    return kExito;
  }
  if (!c.args.posicionales().empty()) {
    const auto n = static_cast<std::int32_t>(
        enteroDe(c.args.posicionales().front(), "la máquina", 1, kMaquinaMaxima));
    fijarMaquina(n);
    salida.maquina(n);
    return kExito;
  }
  const auto n = maquinaConfigurada();
  if (!n)
    throw Rechazo("Esta caja no tiene número de máquina: fíjelo con caja maquina N");
  salida.maquina(*n);
  return kExito;
}

}  // namespace caja::app
