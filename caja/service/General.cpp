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
    if (!medio->load(codigo))
      return nullptr;
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

// Int(monto / paso + 0.5) * paso on the exact amounts: the nearest multiple
// of the step, halves up.
Currency multiploMasCercano(Currency monto, Currency paso) {
  const __int128 m = monto.raw();
  const __int128 p = paso.raw();
  __int128 numerador = 2 * m + p;
  const __int128 divisor = 2 * p;
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

Currency RedondearVuelto(Currency monto) {
  const Currency paso = PasoVuelto();
  return paso <= Currency{} ? monto : multiploMasCercano(monto, paso);
}

std::string FormatearVuelto(const Variant& monto) {
  return Format(Variant(RedondearVuelto(CCur(monto))), kFormatoMoneda);
}

}  // namespace caja
