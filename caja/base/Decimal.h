#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"

namespace caja {

// An exact decimal number: `digitos` × 10^-`escala`. The common ground of
// parsing, the conversions and the display formats, so that each rounding
// rule is applied to the decimal value rather than to a binary approximation.
struct CAJA_INTERNO Decimal {
  bool negativo = false;
  std::string digitos = "0";  // no sign, at least one digit
  int escala = 0;             // digits after the decimal point

  // `digitos` × 10^-`escala`, normalised; no digits reads as 0, and zero has no sign.
  static Decimal de(bool negativo, std::string digitos, int escala);
  static Decimal fromCurrency(Currency c);
  // A double as the host language turns it into decimal: fifteen significant digits.
  static Decimal fromDouble(double d);
  static Decimal fromInteger(long long n);
  // Text in the regional form: blanks around, a sign, digits with group
  // separators before the decimal separator, an exponent. nullopt otherwise.
  static std::optional<Decimal> parseRegional(std::string_view texto);

  bool isZero() const;
  // Rounded to `decimales` places: halves to even, away from zero, or up
  // (toward plus infinity, as Int(x + 0.5) does).
  Decimal roundedHalfEven(int decimales) const;
  Decimal roundedHalfAway(int decimales) const;
  Decimal roundedHalfUp(int decimales) const;
  // Multiplied by 10^potencia, exactly.
  Decimal shifted(int potencia) const;
  // Integer and fraction digits at the current scale (integer part "0" when empty).
  std::string parteEntera() const;
  std::string parteFraccion() const;
  // Exact conversion of a value with at most four decimals; error 6 out of range.
  Currency toCurrency() const;
  double toDouble() const;
  // '-', digits, '.' and the fraction without trailing zeros; no grouping.
  std::string toMachineText() const;
};

}  // namespace caja
