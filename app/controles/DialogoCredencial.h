#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/controles/Autorizacion.h"

class QWidget;

namespace caja::app {

// The small dialog that asks who and their PIN, saying what for: the names
// the shop has in a list (`dado` chosen), the PIN hidden. Nothing when
// cancelled (Escape).
std::optional<Credencial> credencialEnDialogo(const std::string& titulo, const std::string& para,
                                              const std::vector<std::string>& nombres,
                                              const std::string& dado, QWidget* padre = nullptr);

}  // namespace caja::app
