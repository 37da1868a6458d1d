#include "caja/base/Formato.h"

#include "caja/base/Decimal.h"
#include "caja/base/Regional.h"

namespace caja {

namespace {

struct Patron {
  std::string prefijo;
  std::string sufijo;
  bool agrupar = false;
  int minimoEnteros = 0;
  int decimalesFijos = 0;
  int decimalesOpcionales = 0;
};

Patron analizar(std::string_view texto) {
  Patron p;
  const auto inicio = texto.find_first_of("#0");
  if (inicio == std::string_view::npos) {
    p.prefijo = texto;
    return p;
  }
  auto fin = texto.find_first_not_of("#0,.", inicio);
  if (fin == std::string_view::npos)
    fin = texto.size();
  p.prefijo = texto.substr(0, inicio);
  p.sufijo = texto.substr(fin);
  const std::string_view numero = texto.substr(inicio, fin - inicio);
  const auto punto = numero.find('.');
  const std::string_view entero = numero.substr(0, punto);
  p.agrupar = entero.find(',') != std::string_view::npos;
  for (char c : entero)
    if (c == '0')
      ++p.minimoEnteros;
  if (punto != std::string_view::npos) {
    for (char c : numero.substr(punto + 1)) {
      if (c == '0')
        ++p.decimalesFijos;
      if (c == '#')
        ++p.decimalesOpcionales;
    }
  }
  return p;
}

std::string agrupado(const std::string& entero) {
  std::string r;
  const std::size_t n = entero.size();
  for (std::size_t i = 0; i < n; ++i) {
    if (i > 0 && (n - i) % 3 == 0)
      r += regional().separadorMiles;
    r += entero[i];
  }
  return r;
}

std::string aplicar(const Decimal& valor, const Patron& p) {
  const Decimal r = valor.roundedHalfAway(p.decimalesFijos + p.decimalesOpcionales);
  std::string entero = r.parteEntera();
  if (entero == "0" && p.minimoEnteros == 0)
    entero.clear();
  while (static_cast<int>(entero.size()) < p.minimoEnteros)
    entero.insert(0, 1, '0');
  std::string fraccion = r.parteFraccion();
  fraccion.resize(static_cast<std::size_t>(p.decimalesFijos + p.decimalesOpcionales), '0');
  while (static_cast<int>(fraccion.size()) > p.decimalesFijos && fraccion.back() == '0')
    fraccion.pop_back();
  std::string numero = p.agrupar ? agrupado(entero) : entero;
  if (!fraccion.empty())
    numero += regional().separadorDecimal + fraccion;
  // A value that rounds to zero is shown without its sign.
  const bool negativo = r.negativo && !r.isZero();
  return (negativo ? "-" : "") + p.prefijo + numero + p.sufijo;
}

}  // namespace

std::string Format(const Variant& valor, std::string_view patron) {
  if (valor.isNull() || valor.isEmpty())
    return "";
  const std::string_view efectivo = patron == kFormatoMoneda ? regional().formatoMoneda : patron;
  Decimal d;
  switch (valor.type()) {
    case VarType::String: {
      auto leido = Decimal::parseRegional(valor.asString());
      if (!leido)
        return valor.asString();
      d = *leido;
      break;
    }
    case VarType::Currency:
      d = Decimal::fromCurrency(valor.asCurrency());
      break;
    case VarType::Double:
      d = Decimal::fromDouble(valor.asDouble());
      break;
    case VarType::Integer:
      d = Decimal::fromInteger(valor.asInteger());
      break;
    case VarType::Long:
      d = Decimal::fromInteger(valor.asLong());
      break;
    case VarType::Boolean:
      d = Decimal::fromInteger(valor.asBool() ? -1 : 0);
      break;
    case VarType::Date:
      d = Decimal::fromDouble(valor.asDate().serial());
      break;
    default:
      return "";
  }
  return aplicar(d, analizar(efectivo));
}

Currency LeerMonto(std::string_view texto) {
  std::string numero;
  bool negativo = false;
  for (const char c : texto) {
    if (c >= '0' && c <= '9')
      numero += c;
    else if (c == regional().separadorDecimal && !numero.empty())
      numero += '.';  // not the one of a symbol before the number ("Bs.")
    else if (c == '-' || c == '(')
      negativo = true;
  }
  const auto monto = Currency::parse(numero);
  if (!monto)
    throw errorEjecucion(err::kTiposNoCoinciden);
  return negativo ? -*monto : *monto;
}

}  // namespace caja
