#include "caja/base/Fecha.h"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace caja {

namespace {

constexpr long kSegundosDia = 86400;
// days_from_civil of 1899-12-30: the serial origin.
constexpr long kDiasOrigen = -25569;

long daysFromCivil(long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long>(doe) - 719468;
}

void civilFromDays(long z, int& y, int& m, int& d) {
  z += 719468;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(yoe + era * 400 + (m <= 2));
}

struct Partes {
  int anio, mes, dia, hora, minuto, segundo;
};

Partes partes(double serial) {
  long dias = static_cast<long>(std::floor(serial));
  long segundos = std::lround((serial - static_cast<double>(dias)) * kSegundosDia);
  if (segundos >= kSegundosDia) {
    ++dias;
    segundos -= kSegundosDia;
  }
  Partes p{};
  civilFromDays(dias + kDiasOrigen, p.anio, p.mes, p.dia);
  p.hora = static_cast<int>(segundos / 3600);
  p.minuto = static_cast<int>(segundos / 60 % 60);
  p.segundo = static_cast<int>(segundos % 60);
  return p;
}

}  // namespace

Fecha Fecha::fromYmd(int anio, int mes, int dia) {
  return Fecha(static_cast<double>(
      daysFromCivil(anio, static_cast<unsigned>(mes), static_cast<unsigned>(dia)) - kDiasOrigen));
}

Fecha Fecha::fromHms(int hora, int minuto, int segundo) {
  return Fecha(static_cast<double>(hora * 3600 + minuto * 60 + segundo) / kSegundosDia);
}

Fecha Fecha::now() {
  const std::time_t t = std::time(nullptr);
  std::tm local{};
  localtime_r(&t, &local);
  return fromYmd(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday) +
         fromHms(local.tm_hour, local.tm_min, local.tm_sec);
}

Fecha Fecha::today() {
  return now().date();
}

bool Fecha::parse(const std::string& texto, Fecha& resultado) {
  int y = 0, mo = 1, d = 1, h = 0, mi = 0, s = 0;
  char extra = 0;
  Fecha leida;
  if (std::sscanf(texto.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%c", &y, &mo, &d, &h, &mi, &s, &extra) ==
          6 ||
      std::sscanf(texto.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%c", &y, &mo, &d, &h, &mi, &s, &extra) ==
          6) {
    leida = fromYmd(y, mo, d) + fromHms(h, mi, s);
  } else if (std::sscanf(texto.c_str(), "%4d-%2d-%2d%c", &y, &mo, &d, &extra) == 3) {
    leida = fromYmd(y, mo, d);
  } else if (std::sscanf(texto.c_str(), "%2d:%2d:%2d%c", &h, &mi, &s, &extra) == 3) {
    leida = fromHms(h, mi, s);
  } else {
    return false;
  }
  if (mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 || s > 59)
    return false;
  resultado = leida;
  return true;
}

Fecha Fecha::date() const {
  return Fecha(std::floor(serial_));
}

Fecha Fecha::timeOfDay() const {
  return Fecha(serial_ - std::floor(serial_));
}

std::string Fecha::toIsoText() const {
  const Partes p = partes(serial_);
  char buf[32];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", p.anio, p.mes, p.dia, p.hora,
                p.minuto, p.segundo);
  return buf;
}

std::string Fecha::toString() const {
  const std::string iso = toIsoText();
  if (date().serial() == 0.0)
    return iso.substr(11);
  if (timeOfDay().serial() == 0.0)
    return iso.substr(0, 10);
  return iso;
}

Fecha operator+(Fecha a, Fecha b) {
  return Fecha(a.serial() + b.serial());
}
Fecha operator-(Fecha a, Fecha b) {
  return Fecha(a.serial() - b.serial());
}

}  // namespace caja
