#pragma once

#include <string>

#include "caja/base/Exporta.h"
#include "caja/service/Settings.h"

namespace caja {

// Settings kept in INI files, one per application name:
// - "<installDir>/<app>.ini", the installation's file, read first and never
//   written (values trimmed, surrounding quotes removed);
// - "<userDir>/<app>.ini", the per-user store that `SaveSetting` writes
//   through a temporary file renamed into place. Its values escape '\', CR
//   and LF as "\\", "\r" and "\n" so that multi-line values survive.
// Sections and keys compare without regard to letter case. A missing,
// unreadable or malformed file reads as empty; lines that are not a section
// header or key=value are skipped.
class CAJA_EXPORT IniSettingsStore : public SettingsStore {
 public:
  IniSettingsStore(std::string installDir, std::string userDir);
  // The per-user folder of the current user: $XDG_CONFIG_HOME/caja, or ~/.config/caja.
  static std::string defaultUserDir();

  std::string ReadInstallValue(const std::string& app, const std::string& seccion,
                               const std::string& clave) override;
  std::string GetSetting(const std::string& app, const std::string& seccion,
                         const std::string& clave, const std::string& defecto) override;
  void SaveSetting(const std::string& app, const std::string& seccion, const std::string& clave,
                   const std::string& valor) override;
  std::optional<Pares> GetAllSettings(const std::string& app, const std::string& seccion) override;

 private:
  std::string installDir_;
  std::string userDir_;
};

}  // namespace caja
