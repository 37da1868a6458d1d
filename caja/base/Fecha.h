#pragma once

#include <compare>
#include <string>

#include "caja/base/Exporta.h"

namespace caja {

// A date-time as the host language keeps it: days since 1899-12-30, the time
// of day as the fraction. Only non-negative serials are used by the component.
class CAJA_EXPORT Fecha {
 public:
  constexpr Fecha() = default;
  constexpr explicit Fecha(double serial) : serial_(serial) {}

  static Fecha fromYmd(int anio, int mes, int dia);
  static Fecha fromHms(int hora, int minuto, int segundo);
  static Fecha now();    // local date and time
  static Fecha today();  // local date at midnight
  // Reads "yyyy-mm-dd", "yyyy-mm-dd hh:mm:ss" or "hh:mm:ss"; false, with
  // `resultado` untouched, for any other text.
  static bool parse(const std::string& texto, Fecha& resultado);

  constexpr double serial() const { return serial_; }
  // Date part and time-of-day part.
  Fecha date() const;
  Fecha timeOfDay() const;

  // "yyyy-mm-dd hh:mm:ss"; the date alone when there is no time, the time alone
  // when the date part is zero.
  std::string toString() const;
  // Always "yyyy-mm-dd hh:mm:ss": the form the database keeps.
  std::string toIsoText() const;

  friend constexpr auto operator<=>(Fecha a, Fecha b) = default;

 private:
  double serial_ = 0.0;
};

CAJA_EXPORT Fecha operator+(Fecha a, Fecha b);
CAJA_EXPORT Fecha operator-(Fecha a, Fecha b);

}  // namespace caja
