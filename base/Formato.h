#pragma once

#include <string>
#include <string_view>

#include "caja/base/Variant.h"

namespace caja {

inline constexpr std::string_view kFormatoMonto = "#,##0.00";
inline constexpr std::string_view kFormatoCuenta = "#,##0";
inline constexpr std::string_view kFormatoMoneda = "Currency";

// The host language's `Format` for the patterns the component uses: literal
// text around one number part made of '#', '0', ',' and '.', or the named
// format "Currency" (the regional currency pattern). Rounds half away from zero
// on the exact decimal value and writes the regional separators. Null and Empty
// give ""; a text that is not a number comes back unchanged.
std::string Format(const Variant& valor, std::string_view patron);

}  // namespace caja
