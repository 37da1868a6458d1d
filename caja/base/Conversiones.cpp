#include "caja/base/Conversiones.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <limits>

#include "caja/base/CajaError.h"
#include "caja/base/Decimal.h"
#include "caja/base/Regional.h"

namespace caja {

namespace {

[[noreturn]] void tiposNoCoinciden() {
  throw errorEjecucion(err::kTiposNoCoinciden);
}

void rechazarNull(const Variant& v) {
  if (v.isNull())
    throw errorEjecucion(err::kUsoInvalidoNull);
}

Decimal decimalDeTexto(const std::string& texto) {
  auto d = Decimal::parseRegional(texto);
  if (!d)
    tiposNoCoinciden();
  return *d;
}

}  // namespace

Decimal toDecimal(const Variant& v) {
  rechazarNull(v);
  switch (v.type()) {
    case VarType::Empty:
      return Decimal{};
    case VarType::Boolean:
      return Decimal::fromInteger(v.asBool() ? -1 : 0);
    case VarType::Integer:
      return Decimal::fromInteger(v.asInteger());
    case VarType::Long:
      return Decimal::fromInteger(v.asLong());
    case VarType::Double:
      return Decimal::fromDouble(v.asDouble());
    case VarType::Currency:
      return Decimal::fromCurrency(v.asCurrency());
    case VarType::Date:
      return Decimal::fromDouble(v.asDate().serial());
    case VarType::String:
      return decimalDeTexto(v.asString());
    default:
      tiposNoCoinciden();
  }
}

namespace {

long long enteroEnRango(const Decimal& d, long long minimo, long long maximo) {
  const Decimal r = d.roundedHalfEven(0);
  const std::string entero = r.parteEntera();
  if (entero.size() > 18)
    throw errorEjecucion(err::kDesbordamiento);
  long long valor = std::stoll(entero);
  if (r.negativo)
    valor = -valor;
  if (valor < minimo || valor > maximo)
    throw errorEjecucion(err::kDesbordamiento);
  return valor;
}

bool textoBooleano(const std::string& texto, bool& valor) {
  std::string t;
  for (char c : texto)
    if (c != ' ')
      t += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (t == "true" || t == "verdadero") {
    valor = true;
    return true;
  }
  if (t == "false" || t == "falso") {
    valor = false;
    return true;
  }
  return false;
}

std::string conSeparadorRegional(std::string texto) {
  for (char& c : texto)
    if (c == '.')
      c = regional().separadorDecimal;
  return texto;
}

std::string textoDouble(double d) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.15g", d);
  std::string texto(buf);
  const auto e = texto.find('e');
  if (e != std::string::npos) {
    // The host language writes 1E+20 and 1E-05.
    texto[e] = 'E';
  }
  return conSeparadorRegional(texto);
}

}  // namespace

std::int32_t CLng(const Variant& v) {
  return static_cast<std::int32_t>(enteroEnRango(toDecimal(v),
                                                 std::numeric_limits<std::int32_t>::min(),
                                                 std::numeric_limits<std::int32_t>::max()));
}

std::int16_t CInt(const Variant& v) {
  return static_cast<std::int16_t>(enteroEnRango(toDecimal(v),
                                                 std::numeric_limits<std::int16_t>::min(),
                                                 std::numeric_limits<std::int16_t>::max()));
}

Currency CCur(const Variant& v) {
  if (v.type() == VarType::Currency)
    return v.asCurrency();
  if (v.type() == VarType::Double)
    return CCur(v.asDouble());
  return toDecimal(v).toCurrency();
}

double CDbl(const Variant& v) {
  rechazarNull(v);
  switch (v.type()) {
    case VarType::Double:
      return v.asDouble();
    case VarType::Date:
      return v.asDate().serial();
    case VarType::Currency:
      return v.asCurrency().toDouble();
    default: {
      const double d = toDecimal(v).toDouble();
      if (!std::isfinite(d))
        throw errorEjecucion(err::kDesbordamiento);
      return d;
    }
  }
}

bool CBool(const Variant& v) {
  rechazarNull(v);
  if (v.type() == VarType::Boolean)
    return v.asBool();
  if (v.type() == VarType::String) {
    bool valor;
    if (textoBooleano(v.asString(), valor))
      return valor;
  }
  return !toDecimal(v).isZero();
}

std::string CStr(const Variant& v) {
  rechazarNull(v);
  switch (v.type()) {
    case VarType::Empty:
      return "";
    case VarType::Boolean:
      return v.asBool() ? "True" : "False";
    case VarType::Integer:
      return std::to_string(v.asInteger());
    case VarType::Long:
      return std::to_string(v.asLong());
    case VarType::Double:
      return textoDouble(v.asDouble());
    case VarType::Currency:
      return conSeparadorRegional(v.asCurrency().toMachineText());
    case VarType::Date:
      return v.asDate().toString();
    case VarType::String:
      return v.asString();
    default:
      tiposNoCoinciden();
  }
}

Fecha CDate(const Variant& v) {
  rechazarNull(v);
  if (v.type() == VarType::Date)
    return v.asDate();
  if (v.type() == VarType::String) {
    Fecha f;
    if (Fecha::parse(v.asString(), f))
      return f;
  }
  return Fecha(CDbl(v));
}

Currency CCur(double d) {
  const double escalado = std::nearbyint(d * Currency::kEscala);
  // 2^63 is exactly representable; anything at or beyond it does not fit.
  if (!std::isfinite(escalado) || escalado >= 9223372036854775808.0 ||
      escalado < -9223372036854775808.0)
    throw errorEjecucion(err::kDesbordamiento);
  return Currency::fromRaw(static_cast<std::int64_t>(escalado));
}

std::int32_t CLng(double d) {
  const double r = std::nearbyint(d);
  if (!(r >= std::numeric_limits<std::int32_t>::min() &&
        r <= std::numeric_limits<std::int32_t>::max()))
    throw errorEjecucion(err::kDesbordamiento);
  return static_cast<std::int32_t>(r);
}

std::int16_t CInt(double d) {
  const double r = std::nearbyint(d);
  if (!(r >= std::numeric_limits<std::int16_t>::min() &&
        r <= std::numeric_limits<std::int16_t>::max()))
    throw errorEjecucion(err::kDesbordamiento);
  return static_cast<std::int16_t>(r);
}

Decimal ValExacto(std::string_view texto) {
  bool negativo = false;
  std::string digitos;
  int escala = 0;
  bool enFraccion = false;
  bool empezado = false;
  for (char c : texto) {
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
      continue;
    if ((c == '+' || c == '-') && !empezado) {
      negativo = c == '-';
    } else if (c >= '0' && c <= '9') {
      digitos += c;
      if (enFraccion)
        ++escala;
    } else if (c == '.' && !enFraccion) {
      enFraccion = true;
    } else {
      break;
    }
    empezado = true;
  }
  return Decimal::de(negativo, std::move(digitos), escala);
}

double Val(std::string_view texto) {
  return ValExacto(texto).toDouble();
}

double Int(double d) {
  return std::floor(d);
}

}  // namespace caja
