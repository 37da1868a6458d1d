#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Variant.h"

namespace caja {

inline constexpr const char* kAppZOR = "ZOR";
inline constexpr const char* kAppNubetral = "Nubetral";
inline constexpr const char* kSeccionVarelta = "frmVarelta";

// Where settings live: an installation file per application ("<app>.ini"),
// read first, and a per-user store written by the dialogs.
class CAJA_EXPORT SettingsStore {
 public:
  using Pares = std::vector<std::pair<std::string, std::string>>;

  virtual ~SettingsStore() = default;
  // The value of section/key in "<app>.ini" of the installation; "" when absent.
  virtual std::string ReadInstallValue(const std::string& app, const std::string& seccion,
                                       const std::string& clave) = 0;
  virtual std::string GetSetting(const std::string& app, const std::string& seccion,
                                 const std::string& clave, const std::string& defecto) = 0;
  virtual void SaveSetting(const std::string& app, const std::string& seccion,
                           const std::string& clave, const std::string& valor) = 0;
  // Every (key, value) of a per-user section; nullopt when the section does not exist.
  virtual std::optional<Pares> GetAllSettings(const std::string& app,
                                              const std::string& seccion) = 0;
};

// The process-wide store. Until the host sets one, an empty store in memory.
CAJA_EXPORT SettingsStore& settingsStore();
CAJA_EXPORT void setSettingsStore(std::shared_ptr<SettingsStore> store);

// A store held in memory, for hosts without files and for tests.
class CAJA_EXPORT MemoriaSettingsStore : public SettingsStore {
 public:
  void SetInstallValue(const std::string& app, const std::string& seccion, const std::string& clave,
                       const std::string& valor);
  std::string ReadInstallValue(const std::string& app, const std::string& seccion,
                               const std::string& clave) override;
  std::string GetSetting(const std::string& app, const std::string& seccion,
                         const std::string& clave, const std::string& defecto) override;
  void SaveSetting(const std::string& app, const std::string& seccion, const std::string& clave,
                   const std::string& valor) override;
  std::optional<Pares> GetAllSettings(const std::string& app, const std::string& seccion) override;

 private:
  struct Valor {
    std::string app, seccion, clave, valor;
  };
  // Works on a const or a mutable list alike.
  template <class V>
  static V* buscar(std::vector<V>& valores, const std::string& app, const std::string& seccion,
                   const std::string& clave);
  static void poner(std::vector<Valor>& valores, const std::string& app, const std::string& seccion,
                    const std::string& clave, const std::string& valor);
  std::vector<Valor> instalacion_;
  std::vector<Valor> usuario_;
};

// Reads a setting: the installation file wins when it holds a non-empty
// value, then the per-user store, then `defecto`. None of them raises.
CAJA_EXPORT Variant lmGetSetting(const std::string& app, const std::string& seccion,
                                 const std::string& clave, const std::string& defecto);
CAJA_EXPORT bool lmGetSettingBool(const std::string& app, const std::string& seccion,
                                  const std::string& clave, bool defecto);
// Accepts both ',' and '.' as the decimal separator of the stored text.
CAJA_EXPORT Currency lmGetSettingCur(const std::string& app, const std::string& seccion,
                                     const std::string& clave, Currency defecto);

}  // namespace caja
