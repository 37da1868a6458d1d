#include "caja/uisupport/CStringBuffer.h"

#include <algorithm>

#include "caja/base/CajaError.h"
#include "caja/base/Texto.h"

namespace caja {

namespace {

std::int32_t sumar(std::int32_t a, std::int32_t b) {
  std::int32_t r;
  if (__builtin_add_overflow(a, b, &r))
    throw errorEjecucion(err::kDesbordamiento);
  return r;
}

std::int32_t restar(std::int32_t a, std::int32_t b) {
  std::int32_t r;
  if (__builtin_sub_overflow(a, b, &r))
    throw errorEjecucion(err::kDesbordamiento);
  return r;
}

std::int32_t largoDe(const std::string& texto) {
  if (texto.size() > static_cast<std::size_t>(INT32_MAX))
    throw errorEjecucion(err::kDesbordamiento);
  return static_cast<std::int32_t>(texto.size());
}

}  // namespace

CStringBuffer::CStringBuffer() {
  crear();
}

void CStringBuffer::crear() {
  if (buffer_.empty())
    buffer_.assign(kBloque, '\0');
  capacidad_ = kBloque;
  largo_ = 0;
}

void CStringBuffer::asegurarEspacio(std::int32_t n) {
  if (sumar(largo_, n) <= capacidad_)
    return;
  buffer_.append(kBloque, '\0');
  capacidad_ = sumar(capacidad_, kBloque);
}

void CStringBuffer::sobrescribir(std::int32_t posicion, const std::string& texto) {
  if (posicion < 1)
    throw errorEjecucion(err::kLlamadaInvalida);
  const std::size_t desde = static_cast<std::size_t>(posicion - 1);
  if (desde >= buffer_.size())
    return;
  const std::size_t cuantos = std::min(texto.size(), buffer_.size() - desde);
  buffer_.replace(desde, cuantos, texto, 0, cuantos);
}

std::string CStringBuffer::medio(std::int32_t posicion, std::int32_t cuantos) const {
  if (posicion < 1 || cuantos < 0)
    throw errorEjecucion(err::kLlamadaInvalida);
  const std::size_t desde = static_cast<std::size_t>(posicion - 1);
  if (desde >= buffer_.size())
    return "";
  return buffer_.substr(desde, static_cast<std::size_t>(cuantos));
}

void CStringBuffer::Append(const std::string& texto) {
  const std::int32_t n = largoDe(texto);
  asegurarEspacio(n);
  sobrescribir(sumar(largo_, 1), texto);
  largo_ = sumar(largo_, n);
}

void CStringBuffer::appendLN(const std::string& texto) {
  Append("\r\n" + texto);
}

void CStringBuffer::Remove(std::int32_t inicio, std::int32_t& cuenta) {
  if (sumar(inicio, cuenta) < largo_) {
    // The tail length is taken as length − start + count, bounded by the
    // buffer's end; it is at least as long as the real tail.
    const std::string cola = medio(sumar(inicio, cuenta), sumar(restar(largo_, inicio), cuenta));
    sobrescribir(inicio, cola);
    sobrescribir(sumar(restar(largo_, cuenta), 1),
                 std::string(static_cast<std::size_t>(cuenta), '\0'));
    largo_ = restar(largo_, cuenta);
  } else {
    cuenta = restar(sumar(largo_, 1), inicio);
    sobrescribir(inicio, std::string(static_cast<std::size_t>(std::max(cuenta, 0)), '\0'));
    largo_ = restar(inicio, 1);
  }
}

void CStringBuffer::Insert(std::int32_t posicion, const std::string& texto) {
  if (posicion > sumar(largo_, 1))
    throw errorEjecucion(err::kLlamadaInvalida);
  const std::int32_t n = largoDe(texto);
  if (n == largo_) {
    Append(texto);
    return;
  }
  asegurarEspacio(n);
  const std::string cola = medio(posicion, sumar(restar(largo_, posicion), 1));
  sobrescribir(sumar(posicion, n), cola);
  sobrescribir(posicion, texto);
  largo_ = sumar(largo_, n);
}

void CStringBuffer::Replace(const std::string& buscar, const std::string& poner) {
  buffer_ = replaceAll(buffer_, buscar, poner);
  capacidad_ = largoDe(buffer_);
  const auto nul = buffer_.find('\0');
  largo_ = (nul == std::string::npos ? 0 : static_cast<std::int32_t>(nul) + 1) - 1;
  if (largo_ == 0)
    largo_ = capacidad_;
}

std::string CStringBuffer::value() const {
  if (largo_ < 0)
    throw errorEjecucion(err::kLlamadaInvalida);
  return buffer_.substr(0, static_cast<std::size_t>(largo_));
}

void CStringBuffer::value(const std::string& texto) {
  crear();
  Append(texto);
}

}  // namespace caja
