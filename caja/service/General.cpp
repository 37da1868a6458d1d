#include "caja/service/General.h"

#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/service/Settings.h"

namespace caja {

std::shared_ptr<Factoria> gFactoria;
std::shared_ptr<TemaUI> gTemaUI;
std::shared_ptr<Empresa> gEmpresa;
std::string gFormatoMEX;
std::shared_ptr<Collection<CMedioPago>> gMediosPago;

Factoria& factoria() {
  if (!gFactoria)
    throw errorEjecucion(err::kObjetoNoEstablecido);
  return *gFactoria;
}

void InicializarEntorno(const std::shared_ptr<Factoria>& host) {
  gFactoria = host;
  gTemaUI = factoria().TemaUI();
  try {
    gEmpresa = crearObjeto<Empresa>(*gFactoria, "Empresa");
    gFormatoMEX = gEmpresa->FormatoMEX();
  } catch (const std::exception&) {
    gFormatoMEX = kFormatoMEXPorDefecto;
  }
}

double ObtenerTipoCambioCaja() {
  const double tasa = factoria().TipoCambioCaja();
  return tasa == 0.0 ? 1.0 : tasa;
}

double ObtenerPorcentajeIGTF() {
  auto empresa = crearObjeto<Empresa>(factoria(), "Empresa");
  const Variant especial = empresa->ContribuyenteEspecial();
  if (especial.isNull() || !CBool(especial))
    return 0.0;
  try {
    return empresa->porcentajeIGTF456();
  } catch (const std::exception&) {
    return 0.0;
  }
}

std::string LeerSimboloMEX() {
  return CStr(lmGetSetting(kAppZOR, kSeccionVarelta, "SimboloMEX", "$"));
}

std::shared_ptr<CMedioPago> ObtenerMedioPago(std::string& codigo) {
  if (!gMediosPago)
    gMediosPago = std::make_shared<Collection<CMedioPago>>();
  if (auto enCache = gMediosPago->Find(codigo))
    return enCache;
  auto medio = std::make_shared<CMedioPago>();
  if (codigo != "EFE") {
    // Errors resume here: a database that fails while the method loads gives
    // Nothing, as an unknown code does, and caches nothing. Callers already
    // test for Nothing, and the next call reads the table again; a half-read
    // method kept for the life of the process would have the blank class of
    // national cash and misfile every later payment of that code.
    try {
      if (!medio->load(codigo))
        return nullptr;
    } catch (const std::exception&) {
      return nullptr;
    }
  } else {
    medio->codigo = "EFE";
    medio->Clase = ClaseIngresoSesion::Efectivo;
    medio->tipoCambio(1.0);
    medio->Atributos = 0;
  }
  gMediosPago->Add(medio, codigo);
  return medio;
}

std::int32_t EsMedioEfectivo(const CMedioPago& medio) {
  // The comparisons are True (-1) or False (0), OR-ed with the whole bit set.
  const std::int32_t esME = medio.Clase == ClaseIngresoSesion::EfectivoME ? -1 : 0;
  const std::int32_t esEfectivo = medio.Clase == ClaseIngresoSesion::Efectivo ? -1 : 0;
  return esME | esEfectivo | medio.Atributos;
}

std::shared_ptr<Objeto> CargarIconoArchivo(const std::string& archivo) {
  return factoria().loadFileIcon(archivo);
}

namespace {

// floor(monto × 10^5): the amount's exact value in hundred-thousandths, the
// unit in which half of any step of four decimals is whole.
__int128 cienMilesimasHaciaAbajo(const Decimal& monto) {
  const Decimal d = monto.shifted(5);
  const std::string entera = d.parteEntera();
  if (entera.size() > 30)
    throw errorEjecucion(err::kDesbordamiento);
  __int128 valor = 0;
  for (char c : entera)
    valor = valor * 10 + (c - '0');
  if (!d.negativo)
    return valor;
  const bool conFraccion = d.parteFraccion().find_first_not_of('0') != std::string::npos;
  return -valor - (conFraccion ? 1 : 0);
}

// Int(monto / paso + 0.5) * paso on the exact values, as currency: the
// nearest multiple of the step, halves up. floor((m + p/2) / p) is computed
// as floor((floor(m·10^5) + 5·P) / 10·P), P being the step in units of 10^-4,
// which the floor of the numerator leaves unchanged because 10·P is whole.
Currency multiploMasCercano(const Decimal& monto, Currency paso) {
  const __int128 p = paso.raw();
  const __int128 numerador = cienMilesimasHaciaAbajo(monto) + 5 * p;
  const __int128 divisor = 10 * p;
  __int128 cociente = numerador / divisor;
  if (numerador % divisor != 0 && numerador < 0)
    --cociente;
  const __int128 resultado = cociente * p;
  if (resultado > INT64_MAX || resultado < INT64_MIN)
    throw errorEjecucion(err::kDesbordamiento);
  return Currency::fromRaw(static_cast<std::int64_t>(resultado));
}

}  // namespace

Currency PasoVuelto() {
  return lmGetSettingCur(kAppZOR, kSeccionVarelta, "RedondeoVuelto", Currency::fromRaw(100));
}

Currency RedondearVuelto(const Variant& monto) {
  const Currency paso = PasoVuelto();
  return paso <= Currency{} ? CCur(monto) : multiploMasCercano(toDecimal(monto), paso);
}

// The step applies to the amount as it was passed in, however many decimals
// it holds: 12.37499 rounds to 12.37 with a step of 0.01, where converting it
// to currency first (12.375) would give 12.38.
std::string FormatearVuelto(const Variant& monto) {
  return Format(Variant(RedondearVuelto(monto)), kFormatoMoneda);
}

}  // namespace caja
