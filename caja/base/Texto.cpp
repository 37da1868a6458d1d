#include "caja/base/Texto.h"

namespace caja {

namespace {
char bajar(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
char subir(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
}  // namespace

std::string lowerAscii(std::string_view texto) {
  std::string r(texto);
  for (char& c : r)
    c = bajar(c);
  return r;
}

std::string upperAscii(std::string_view texto) {
  std::string r(texto);
  for (char& c : r)
    c = subir(c);
  return r;
}

std::string upperEspanol(std::string_view texto) {
  std::string r = upperAscii(texto);
  for (std::size_t i = 0; i + 1 < r.size(); ++i) {
    const auto lider = static_cast<unsigned char>(r[i]);
    const auto segundo = static_cast<unsigned char>(r[i + 1]);
    // U+00E0..U+00FE lower-case letters, but U+00F7 (division sign).
    if (lider == 0xC3 && segundo >= 0xA0 && segundo <= 0xBE && segundo != 0xB7)
      r[i + 1] = static_cast<char>(segundo - 0x20);
  }
  return r;
}

std::size_t largoUtf8(std::string_view texto) {
  std::size_t n = 0;
  for (unsigned char c : texto)
    n += (c & 0xC0) != 0x80;
  return n;
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size())
    return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (bajar(a[i]) != bajar(b[i]))
      return false;
  return true;
}

std::string trimBlanks(std::string_view texto) {
  const auto inicio = texto.find_first_not_of(' ');
  if (inicio == std::string_view::npos)
    return "";
  const auto fin = texto.find_last_not_of(' ');
  return std::string(texto.substr(inicio, fin - inicio + 1));
}

std::string replaceAll(std::string_view texto, std::string_view buscar, std::string_view poner) {
  if (buscar.empty())
    return std::string(texto);
  std::string r;
  std::size_t desde = 0;
  for (auto pos = texto.find(buscar); pos != std::string_view::npos;
       pos = texto.find(buscar, desde)) {
    r.append(texto.substr(desde, pos - desde));
    r.append(poner);
    desde = pos + buscar.size();
  }
  r.append(texto.substr(desde));
  return r;
}

}  // namespace caja
