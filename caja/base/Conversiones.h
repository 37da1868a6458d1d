#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "caja/base/Currency.h"
#include "caja/base/Decimal.h"
#include "caja/base/Exporta.h"
#include "caja/base/Variant.h"

namespace caja {

// The host language's conversions, with its rules:
// - CLng, CInt and CCur round halves to even; out of range raises error 6;
// - Empty reads as 0, "" or False; Null raises 94; text that is not a number, 13;
// - True is -1 as a number;
// - text is read with the regional decimal and group separators.
CAJA_INTERNO std::int32_t CLng(const Variant& v);
CAJA_INTERNO std::int16_t CInt(const Variant& v);
CAJA_INTERNO Currency CCur(const Variant& v);
CAJA_INTERNO double CDbl(const Variant& v);
CAJA_INTERNO bool CBool(const Variant& v);
CAJA_INTERNO std::string CStr(const Variant& v);
CAJA_INTERNO Fecha CDate(const Variant& v);

// The exact decimal value of a number or numeric text (doubles to fifteen
// significant digits); Null raises 94, other text 13.
CAJA_INTERNO Decimal toDecimal(const Variant& v);

// A double product or quotient back into money: four decimals, halves to even.
CAJA_INTERNO Currency CCur(double d);
CAJA_INTERNO std::int32_t CLng(double d);
CAJA_INTERNO std::int16_t CInt(double d);

// The numeric value of a text as `Val` reads it: blanks ignored anywhere, an
// optional sign, digits and one '.' as decimal point, stopping at the first
// other character; "" is 0. It ignores the regional settings by design.
CAJA_INTERNO double Val(std::string_view texto);
// The same reading, exact: what Val's double would round.
CAJA_INTERNO Decimal ValExacto(std::string_view texto);

// Rounds toward minus infinity.
CAJA_INTERNO double Int(double d);

}  // namespace caja
