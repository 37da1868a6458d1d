#include "caja/service/Settings.h"

#include <algorithm>

#include "caja/base/CajaError.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"

namespace caja {

namespace {

// The profile reader fills a buffer of 1,024 characters, the last one its
// terminator: a longer value is cut to 1,023 characters, which is what the
// hosts' own readers of the same INI file get.
constexpr std::size_t kLargoBufferIni = 1023;

std::shared_ptr<SettingsStore>& actual() {
  static std::shared_ptr<SettingsStore> store = std::make_shared<MemoriaSettingsStore>();
  return store;
}

}  // namespace

SettingsStore& settingsStore() {
  return *actual();
}

void setSettingsStore(std::shared_ptr<SettingsStore> store) {
  actual() = store ? std::move(store) : std::make_shared<MemoriaSettingsStore>();
}

template <class V>
V* MemoriaSettingsStore::buscar(std::vector<V>& valores, const std::string& app,
                                const std::string& seccion, const std::string& clave) {
  for (auto& v : valores)
    if (equalsIgnoreCase(v.app, app) && equalsIgnoreCase(v.seccion, seccion) &&
        equalsIgnoreCase(v.clave, clave))
      return &v;
  return nullptr;
}

void MemoriaSettingsStore::poner(std::vector<Valor>& valores, const std::string& app,
                                 const std::string& seccion, const std::string& clave,
                                 const std::string& valor) {
  if (auto* v = buscar(valores, app, seccion, clave)) {
    v->valor = valor;
  } else {
    valores.push_back({app, seccion, clave, valor});
  }
}

void MemoriaSettingsStore::SetInstallValue(const std::string& app, const std::string& seccion,
                                           const std::string& clave, const std::string& valor) {
  poner(instalacion_, app, seccion, clave, valor);
}

std::string MemoriaSettingsStore::ReadInstallValue(const std::string& app,
                                                   const std::string& seccion,
                                                   const std::string& clave) {
  const Valor* v = buscar(instalacion_, app, seccion, clave);
  return v ? v->valor : std::string{};
}

std::string MemoriaSettingsStore::GetSetting(const std::string& app, const std::string& seccion,
                                             const std::string& clave, const std::string& defecto) {
  const Valor* v = buscar(usuario_, app, seccion, clave);
  return v ? v->valor : defecto;
}

void MemoriaSettingsStore::SaveSetting(const std::string& app, const std::string& seccion,
                                       const std::string& clave, const std::string& valor) {
  poner(usuario_, app, seccion, clave, valor);
}

std::optional<SettingsStore::Pares> MemoriaSettingsStore::GetAllSettings(
    const std::string& app, const std::string& seccion) {
  Pares pares;
  for (const auto& v : usuario_)
    if (equalsIgnoreCase(v.app, app) && equalsIgnoreCase(v.seccion, seccion))
      pares.emplace_back(v.clave, v.valor);
  if (pares.empty())
    return std::nullopt;
  return pares;
}

Variant lmGetSetting(const std::string& app, const std::string& seccion, const std::string& clave,
                     const std::string& defecto) {
  std::string valor;
  try {
    valor = settingsStore().ReadInstallValue(app, seccion, clave).substr(0, kLargoBufferIni);
  } catch (const std::exception&) {
    valor.clear();
  }
  if (valor.empty()) {
    try {
      valor = settingsStore().GetSetting(app, seccion, clave, defecto);
    } catch (const std::exception&) {
      valor = defecto;
    }
  }
  return Variant(valor);
}

bool lmGetSettingBool(const std::string& app, const std::string& seccion, const std::string& clave,
                      bool defecto) {
  try {
    return CBool(lmGetSetting(app, seccion, clave, CStr(Variant(defecto))));
  } catch (const CajaError&) {
    return defecto;
  }
}

Currency lmGetSettingCur(const std::string& app, const std::string& seccion,
                         const std::string& clave, Currency defecto) {
  const std::string texto = CStr(lmGetSetting(app, seccion, clave, CStr(Variant(defecto))));
  // The numeric value of a text is Val's: the leading number, blanks ignored,
  // '.' as the point. So "5abc" is 5 and a text with no number at all is 0,
  // as hosts' settings files have always read; every ',' becomes '.' first so
  // that "5,5" is 5.5. Only a value beyond the currency range fails, and then
  // the unchanged text fails too: the default is the answer.
  for (const std::string& candidato : {replaceAll(texto, ",", "."), texto}) {
    try {
      return ValExacto(candidato).toCurrency();
    } catch (const CajaError&) {
      // The next reading, then the default.
    }
  }
  return defecto;
}

}  // namespace caja
