#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <variant>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Fecha.h"
#include "caja/base/Objeto.h"

namespace caja {

enum class VarType { Empty, Null, Boolean, Integer, Long, Double, Currency, Date, String, Object };

// The host language's Variant. Conversions out of it live in Conversiones.h and
// raise the run-time errors the host language would (13, 94, 6).
class CAJA_EXPORT Variant {
 public:
  Variant() = default;  // Empty
  Variant(bool b) : valor_(b) {}
  Variant(std::int16_t n) : valor_(n) {}
  Variant(std::int32_t n) : valor_(n) {}
  Variant(double d) : valor_(d) {}
  Variant(Currency c) : valor_(c) {}
  Variant(Fecha f) : valor_(f) {}
  Variant(std::string s) : valor_(std::move(s)) {}
  Variant(const char* s) : valor_(std::string(s)) {}
  template <class T, class = std::enable_if_t<std::is_base_of_v<Objeto, T>>>
  Variant(std::shared_ptr<T> objeto) : valor_(std::shared_ptr<Objeto>(std::move(objeto))) {}

  static Variant Null() {
    Variant v;
    v.valor_ = NullTag{};
    return v;
  }

  VarType type() const { return static_cast<VarType>(valor_.index()); }
  bool isEmpty() const { return type() == VarType::Empty; }
  bool isNull() const { return type() == VarType::Null; }

  // Direct access for code that has checked type() first.
  bool asBool() const { return std::get<bool>(valor_); }
  std::int16_t asInteger() const { return std::get<std::int16_t>(valor_); }
  std::int32_t asLong() const { return std::get<std::int32_t>(valor_); }
  double asDouble() const { return std::get<double>(valor_); }
  Currency asCurrency() const { return std::get<Currency>(valor_); }
  Fecha asDate() const { return std::get<Fecha>(valor_); }
  const std::string& asString() const { return std::get<std::string>(valor_); }
  const std::shared_ptr<Objeto>& asObject() const {
    return std::get<std::shared_ptr<Objeto>>(valor_);
  }

  // Same type and same value; objects compare by identity.
  friend bool operator==(const Variant& a, const Variant& b) = default;

 private:
  struct NullTag {
    friend bool operator==(NullTag, NullTag) = default;
  };
  std::variant<std::monostate, NullTag, bool, std::int16_t, std::int32_t, double, Currency, Fecha,
               std::string, std::shared_ptr<Objeto>>
      valor_;
};

// The object a Variant holds as interface T; error 91 for Nothing or a
// non-object, error 13 when the object is not a T.
template <class T>
std::shared_ptr<T> objetoDe(const Variant& v);

}  // namespace caja

#include "caja/base/CajaError.h"

template <class T>
std::shared_ptr<T> caja::objetoDe(const Variant& v) {
  if (v.type() != VarType::Object || !v.asObject())
    throw errorEjecucion(err::kObjetoNoEstablecido);
  auto objeto = std::dynamic_pointer_cast<T>(v.asObject());
  if (!objeto)
    throw errorEjecucion(err::kTiposNoCoinciden);
  return objeto;
}
