#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "caja/base/Exporta.h"

namespace caja {

// Exact money: a signed count of ten-thousandths. Sums, differences and
// products by a 16-bit count are exact and raise error 6 on overflow; anything
// that involves a double goes through `CCur`, which names its rounding.
class CAJA_EXPORT Currency {
 public:
  static constexpr std::int64_t kEscala = 10000;

  constexpr Currency() = default;
  static constexpr Currency fromRaw(std::int64_t diezmilesimas) {
    Currency c;
    c.raw_ = diezmilesimas;
    return c;
  }
  // Whole units; error 6 when the value leaves the range.
  static Currency fromUnits(std::int64_t unidades);
  // Machine text: optional '-', digits, optional '.' and at most four decimals.
  // Anything else is refused rather than guessed.
  static std::optional<Currency> parse(std::string_view texto);

  constexpr std::int64_t raw() const { return raw_; }
  double toDouble() const { return static_cast<double>(raw_) / kEscala; }
  constexpr bool isZero() const { return raw_ == 0; }
  // Machine text with '.', no grouping and no trailing zeros ("1234.5", "100").
  std::string toMachineText() const;

  Currency operator-() const;
  Currency& operator+=(Currency otro);
  Currency& operator-=(Currency otro);
  friend Currency operator+(Currency a, Currency b) { return a += b; }
  friend Currency operator-(Currency a, Currency b) { return a -= b; }
  friend CAJA_EXPORT Currency operator*(Currency a, std::int16_t n);
  friend Currency operator*(std::int16_t n, Currency a) { return a * n; }

  // The quotient of two amounts is a rate, not money: a double. A zero
  // divisor raises error 11.
  friend CAJA_EXPORT double operator/(Currency a, Currency b);

  friend constexpr auto operator<=>(Currency a, Currency b) = default;

 private:
  std::int64_t raw_ = 0;
};

// Largest whole-unit floor: the host language's `Int` on a currency value.
CAJA_EXPORT Currency Int(Currency valor);
CAJA_EXPORT Currency Abs(Currency valor);

}  // namespace caja
