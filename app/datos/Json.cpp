#include "app/datos/Json.h"

#include <QString>
#include <charconv>
#include <cstdio>

#include "caja/base/Texto.h"

namespace caja::app {

std::string json(const std::string& texto) {
  const std::string utf8 =
      QString::fromUtf8(texto.data(), static_cast<qsizetype>(texto.size())).toUtf8().toStdString();
  std::string s = "\"";
  for (unsigned char c : utf8) {
    if (c == '"' || c == '\\') {
      s += '\\';
      s += static_cast<char>(c);
    } else if (c < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04x", c);
      s += buf;
    } else {
      s += static_cast<char>(c);
    }
  }
  return s + "\"";
}

std::string textoDeTasa(double tasa) {
  char buf[32];
  const auto [fin, ec] = std::to_chars(buf, buf + sizeof buf, tasa);
  return ec == std::errc() ? std::string(buf, fin) : "0";
}

std::string csv(const std::string& texto) {
  if (texto.find_first_of(",\"\r\n") == std::string::npos)
    return texto;
  return "\"" + replaceAll(texto, "\"", "\"\"") + "\"";
}

}  // namespace caja::app
