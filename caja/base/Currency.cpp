#include "caja/base/Currency.h"

#include <limits>

#include "caja/base/CajaError.h"

namespace caja {

namespace {

std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
  std::int64_t r;
  if (__builtin_add_overflow(a, b, &r))
    throw errorEjecucion(err::kDesbordamiento);
  return r;
}

std::int64_t checkedMul(std::int64_t a, std::int64_t b) {
  std::int64_t r;
  if (__builtin_mul_overflow(a, b, &r))
    throw errorEjecucion(err::kDesbordamiento);
  return r;
}

}  // namespace

Currency Currency::fromUnits(std::int64_t unidades) {
  return fromRaw(checkedMul(unidades, kEscala));
}

std::optional<Currency> Currency::parse(std::string_view texto) {
  bool negativo = false;
  if (!texto.empty() && texto.front() == '-') {
    negativo = true;
    texto.remove_prefix(1);
  }
  const auto punto = texto.find('.');
  const std::string_view entero = texto.substr(0, punto);
  const std::string_view fraccion =
      punto == std::string_view::npos ? std::string_view{} : texto.substr(punto + 1);
  if (entero.empty() || fraccion.size() > 4 ||
      (punto != std::string_view::npos && fraccion.empty()))
    return std::nullopt;
  __int128 valor = 0;
  for (char c : entero) {
    if (c < '0' || c > '9')
      return std::nullopt;
    valor = valor * 10 + (c - '0');
    if (valor > (static_cast<__int128>(1) << 64))
      return std::nullopt;
  }
  std::int64_t frac = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    char c = i < fraccion.size() ? fraccion[i] : '0';
    if (c < '0' || c > '9')
      return std::nullopt;
    frac = frac * 10 + (c - '0');
  }
  valor = valor * kEscala + frac;
  if (negativo)
    valor = -valor;
  if (valor > std::numeric_limits<std::int64_t>::max() ||
      valor < std::numeric_limits<std::int64_t>::min())
    return std::nullopt;
  return fromRaw(static_cast<std::int64_t>(valor));
}

std::string Currency::toMachineText() const {
  const bool negativo = raw_ < 0;
  // Work on the unsigned magnitude so that the most negative value prints too.
  const std::uint64_t magnitud =
      negativo ? 0 - static_cast<std::uint64_t>(raw_) : static_cast<std::uint64_t>(raw_);
  std::string texto = std::to_string(magnitud / kEscala);
  std::uint64_t frac = magnitud % kEscala;
  if (frac != 0) {
    std::string digitos = std::to_string(frac + kEscala).substr(1);
    while (digitos.back() == '0')
      digitos.pop_back();
    texto += '.' + digitos;
  }
  return negativo ? '-' + texto : texto;
}

Currency Currency::operator-() const {
  if (raw_ == std::numeric_limits<std::int64_t>::min())
    throw errorEjecucion(err::kDesbordamiento);
  return fromRaw(-raw_);
}

Currency& Currency::operator+=(Currency otro) {
  raw_ = checkedAdd(raw_, otro.raw_);
  return *this;
}

Currency& Currency::operator-=(Currency otro) {
  std::int64_t r;
  if (__builtin_sub_overflow(raw_, otro.raw_, &r))
    throw errorEjecucion(err::kDesbordamiento);
  raw_ = r;
  return *this;
}

Currency operator*(Currency a, std::int16_t n) {
  return Currency::fromRaw(checkedMul(a.raw_, n));
}

double operator/(Currency a, Currency b) {
  if (b.isZero())
    throw errorEjecucion(err::kDivisionPorCero);
  return static_cast<double>(a.raw_) / static_cast<double>(b.raw_);
}

Currency Int(Currency valor) {
  std::int64_t unidades = valor.raw() / Currency::kEscala;
  if (valor.raw() % Currency::kEscala < 0)
    --unidades;
  return Currency::fromRaw(unidades * Currency::kEscala);
}

Currency Abs(Currency valor) {
  return valor < Currency{} ? -valor : valor;
}

}  // namespace caja
