#include "caja/base/Decimal.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "caja/base/CajaError.h"
#include "caja/base/Regional.h"

namespace caja {

namespace {

// Exponents beyond this cannot matter to a currency, a Long or a double the
// component uses; they are clamped so that a hostile text cannot allocate much.
constexpr int kExponenteMaximo = 400;

bool esDigito(char c) {
  return c >= '0' && c <= '9';
}

// Keeps at least one digit before the point and no superfluous leading zeros.
void normalizar(Decimal& d) {
  while (static_cast<int>(d.digitos.size()) <= d.escala)
    d.digitos.insert(0, 1, '0');
  const std::size_t maxQuitar = d.digitos.size() - static_cast<std::size_t>(d.escala) - 1;
  std::size_t quitar = 0;
  while (quitar < maxQuitar && d.digitos[quitar] == '0')
    ++quitar;
  d.digitos.erase(0, quitar);
}

void incrementar(std::string& digitos) {
  for (auto it = digitos.rbegin(); it != digitos.rend(); ++it) {
    if (*it != '9') {
      ++*it;
      return;
    }
    *it = '0';
  }
  digitos.insert(0, 1, '1');
}

enum class Empate { AlPar, LejosDeCero, HaciaArriba };

Decimal redondear(const Decimal& d, int decimales, Empate empate) {
  if (d.escala <= decimales)
    return d;
  Decimal r = d;
  const std::size_t corte = r.digitos.size() - static_cast<std::size_t>(d.escala - decimales);
  const char primero = r.digitos[corte];
  const bool restoNoCero = r.digitos.find_first_not_of('0', corte + 1) != std::string::npos;
  r.digitos.resize(corte);
  r.escala = decimales;
  if (r.digitos.empty())
    r.digitos.assign(1, '0');
  bool subir;
  if (primero != '5') {
    subir = primero > '5';
  } else if (restoNoCero || empate == Empate::LejosDeCero) {
    subir = true;
  } else if (empate == Empate::HaciaArriba) {
    subir = !d.negativo;
  } else {
    subir = (r.digitos.back() - '0') % 2 == 1;
  }
  if (subir)
    incrementar(r.digitos);
  normalizar(r);
  return r;
}

}  // namespace

Decimal Decimal::fromCurrency(Currency c) {
  std::string texto = c.toMachineText();
  Decimal d;
  d.negativo = texto.front() == '-';
  if (d.negativo)
    texto.erase(0, 1);
  const auto punto = texto.find('.');
  if (punto != std::string::npos) {
    d.escala = static_cast<int>(texto.size() - punto - 1);
    texto.erase(punto, 1);
  }
  d.digitos = texto;
  normalizar(d);
  return d;
}

Decimal Decimal::fromDouble(double valor) {
  if (!std::isfinite(valor))
    throw errorEjecucion(err::kDesbordamiento);
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.14e", valor);
  std::string texto(buf);
  const bool negativo = texto.front() == '-';
  if (negativo)
    texto.erase(0, 1);
  const auto e = texto.find('e');
  const int exponente = std::atoi(texto.c_str() + e + 1);
  std::string digitos = texto.substr(0, 1) + texto.substr(2, e - 2);
  int escala = 14 - exponente;
  if (escala < 0) {
    digitos.append(static_cast<std::size_t>(-escala), '0');
    escala = 0;
  }
  while (escala > 0 && digitos.back() == '0') {
    digitos.pop_back();
    --escala;
  }
  return Decimal::de(negativo, std::move(digitos), escala);
}

Decimal Decimal::de(bool negativo, std::string digitos, int escala) {
  Decimal d;
  d.digitos = digitos.empty() ? "0" : std::move(digitos);
  d.escala = escala;
  normalizar(d);
  d.negativo = negativo && !d.isZero();
  return d;
}

Decimal Decimal::fromInteger(long long n) {
  Decimal d;
  d.negativo = n < 0;
  const unsigned long long magnitud =
      d.negativo ? 0 - static_cast<unsigned long long>(n) : static_cast<unsigned long long>(n);
  d.digitos = std::to_string(magnitud);
  return d;
}

std::optional<Decimal> Decimal::parseRegional(std::string_view texto) {
  const char sepDecimal = regional().separadorDecimal;
  const char sepMiles = regional().separadorMiles;
  auto esBlanco = [](char c) { return c == ' ' || c == '\t'; };
  while (!texto.empty() && esBlanco(texto.front()))
    texto.remove_prefix(1);
  while (!texto.empty() && esBlanco(texto.back()))
    texto.remove_suffix(1);

  Decimal d;
  std::size_t i = 0;
  if (i < texto.size() && (texto[i] == '+' || texto[i] == '-'))
    d.negativo = texto[i++] == '-';
  std::string digitos;
  int escala = 0;
  bool hayDigito = false;
  for (; i < texto.size(); ++i) {
    if (esDigito(texto[i])) {
      digitos += texto[i];
      hayDigito = true;
    } else if (texto[i] != sepMiles || sepMiles == sepDecimal || !hayDigito) {
      break;
    }
  }
  if (i < texto.size() && texto[i] == sepDecimal) {
    for (++i; i < texto.size() && esDigito(texto[i]); ++i) {
      digitos += texto[i];
      ++escala;
      hayDigito = true;
    }
  }
  if (!hayDigito)
    return std::nullopt;
  if (i < texto.size() &&
      (texto[i] == 'e' || texto[i] == 'E' || texto[i] == 'd' || texto[i] == 'D')) {
    ++i;
    bool expNegativo = false;
    if (i < texto.size() && (texto[i] == '+' || texto[i] == '-'))
      expNegativo = texto[i++] == '-';
    if (i >= texto.size() || !esDigito(texto[i]))
      return std::nullopt;
    int exponente = 0;
    for (; i < texto.size() && esDigito(texto[i]); ++i)
      exponente = std::min(exponente * 10 + (texto[i] - '0'), kExponenteMaximo);
    escala += expNegativo ? exponente : -exponente;
  }
  if (i != texto.size())
    return std::nullopt;
  if (escala < 0) {
    digitos.append(static_cast<std::size_t>(-escala), '0');
    escala = 0;
  }
  if (escala > kExponenteMaximo + 30) {
    const std::size_t sobra = static_cast<std::size_t>(escala - kExponenteMaximo - 30);
    digitos.erase(digitos.size() > sobra ? digitos.size() - sobra : 0);
    escala -= static_cast<int>(sobra);
    if (digitos.empty())
      digitos.assign(1, '0');
  }
  return Decimal::de(d.negativo, std::move(digitos), escala);
}

bool Decimal::isZero() const {
  return digitos.find_first_not_of('0') == std::string::npos;
}

Decimal Decimal::roundedHalfEven(int decimales) const {
  return redondear(*this, decimales, Empate::AlPar);
}

Decimal Decimal::roundedHalfAway(int decimales) const {
  return redondear(*this, decimales, Empate::LejosDeCero);
}

Decimal Decimal::roundedHalfUp(int decimales) const {
  return redondear(*this, decimales, Empate::HaciaArriba);
}

Decimal Decimal::shifted(int potencia) const {
  Decimal r = *this;
  r.escala -= potencia;
  if (r.escala < 0) {
    r.digitos.append(static_cast<std::size_t>(-r.escala), '0');
    r.escala = 0;
  }
  normalizar(r);
  return r;
}

std::string Decimal::parteEntera() const {
  return digitos.substr(0, digitos.size() - static_cast<std::size_t>(escala));
}

std::string Decimal::parteFraccion() const {
  return digitos.substr(digitos.size() - static_cast<std::size_t>(escala));
}

Currency Decimal::toCurrency() const {
  const Decimal r = roundedHalfEven(4);
  const std::string entero = r.parteEntera();
  std::string fraccion = r.parteFraccion();
  fraccion.append(4 - fraccion.size(), '0');
  if (entero.size() > 16)
    throw errorEjecucion(err::kDesbordamiento);
  __int128 valor = 0;
  for (char c : entero + fraccion)
    valor = valor * 10 + (c - '0');
  if (r.negativo)
    valor = -valor;
  if (valor > std::numeric_limits<std::int64_t>::max() ||
      valor < std::numeric_limits<std::int64_t>::min())
    throw errorEjecucion(err::kDesbordamiento);
  return Currency::fromRaw(static_cast<std::int64_t>(valor));
}

double Decimal::toDouble() const {
  const std::string texto = (negativo ? "-" : "") + digitos + "e-" + std::to_string(escala);
  return std::strtod(texto.c_str(), nullptr);
}

}  // namespace caja

namespace caja {

std::string Decimal::toMachineText() const {
  std::string fraccion = parteFraccion();
  while (!fraccion.empty() && fraccion.back() == '0')
    fraccion.pop_back();
  const std::string entera = parteEntera();
  const bool cero = entera.find_first_not_of('0') == std::string::npos && fraccion.empty();
  // Appended one piece at a time: GCC 12 at -O3 sees a false overlap
  // (-Wrestrict) in the operator+ chain of a literal and strings.
  std::string texto;
  if (negativo && !cero)
    texto.push_back('-');
  texto.append(entera);
  if (!fraccion.empty()) {
    texto.push_back('.');
    texto.append(fraccion);
  }
  return texto;
}

}  // namespace caja
