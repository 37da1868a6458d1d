#pragma once

#include <string>
#include <string_view>

#include "caja/base/Exporta.h"
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
CAJA_INTERNO std::string Format(const Variant& valor, std::string_view patron);

// An amount as a label shows it ("Bs. 1,234.50", "-Bs. 0.01", "(Bs. 5.00)"),
// read back as currency: its digits and regional decimal separator, negative
// with a minus sign or parentheses. Raises 13 when it holds no digit.
CAJA_INTERNO Currency LeerMonto(std::string_view texto);

}  // namespace caja
