#include "app/acciones/EstaCaja.h"

#include "app/datos/Consultas.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

constexpr const char* kSeccion = "General";
constexpr const char* kClave = "MachineID";

std::string lista(const std::set<std::int32_t>& maquinas) {
  std::string texto;
  for (const auto m : maquinas)
    texto += (texto.empty() ? "" : ", ") + std::to_string(m);
  return texto;
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

std::int32_t estaMaquina(HostSql& db, std::optional<std::int32_t> elegida) {
  if (elegida)
    return *elegida;
  const auto maquinas = maquinasConSesiones(db);
  if (maquinas.size() > 1)
    throw Rechazo("Esta caja no sabe qué máquina es, y la tienda tiene sesiones en las máquinas " +
                  lista(maquinas) +
                  ": fije la de esta caja con caja maquina N (o indique --maquina N); nada se "
                  "guardó");
  return maquinas.empty() ? 1 : *maquinas.begin();
}

void atarLoginDeCaja(Puesto& p, const std::string& login, std::int32_t maquina) {
  Asiento a;
  a.maquina = maquina;
  a.accion = "login de caja";
  a.detalle = "el usuario " + login + " es la caja de la máquina " + std::to_string(maquina);
  p.db().EnTransaccion([&] {
    atarLogin(p.db(), login, maquina);
    anotar(p.db(), a);
  });
}

}  // namespace caja::app
