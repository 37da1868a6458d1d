#include "caja/dialogs/modelo/CobroVarelta.h"

#include <cmath>

#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/catalog/AtributosMedioPago.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja {

namespace {

Currency capar(Currency igtf, Currency tope) {
  return igtf > tope ? tope : igtf;
}

// The legacy input names by class, for the AutoFill setting.
const char* nombreLegado(ClaseIngresoSesion clase) {
  static const char* const nombres[] = {"txEfectivo", "txCheques",  "txAmex",
                                        "txTCVisa",   "txTCMaster", "txOtrasTC",
                                        "txTDebito",  "txOtros",    "txUSD"};
  const auto i = static_cast<std::size_t>(clase);
  return i < std::size(nombres) ? nombres[i] : "";
}

bool ajuste(const char* clave, const char* defecto) {
  return CStr(lmGetSetting(kAppZOR, kSeccionVarelta, clave, defecto)) != "0";
}

}  // namespace

const char* const CobroVarelta::kConsultaMedios =
    "SELECT * FROM MediosPago WHERE Codigo != 'EFE' And posicion != 0 And Titulo != '' ORDER BY "
    "posicion, titulo";

OpcionesCobro OpcionesCobro::leer() {
  OpcionesCobro o;
  o.AutoFill = ajuste("AutoFill", "0");
  o.AutoCierre = ajuste("AutoCierre", "0");
  o.ExcluirIVAIGTF = lmGetSettingBool(kAppZOR, kSeccionVarelta, "ExcluirIVAIGTF", false);
  o.ResaltarVuelto = lmGetSettingBool(kAppZOR, kSeccionVarelta, "ResaltarVuelto", false);
  o.IVA2602 = lmGetSettingBool(kAppZOR, "Config", "IVA2602", false);
  o.dividirVuelto = lmGetSettingBool(kAppZOR, kSeccionVarelta, "VueltoDetallado", false) ||
                    lmGetSettingBool(kAppZOR, kSeccionVarelta, "acreditarVueltos", false);
  o.mostrarVuelto = CStr(lmGetSetting(kAppZOR, kSeccionVarelta, "NoMostrarVuelto", "0")) == "0" &&
                    !o.dividirVuelto;
  o.MaximaUnidadMonetaria = lmGetSettingCur(kAppZOR, kSeccionVarelta, "MaximaUnidadMonetaria",
                                            Currency::fromUnits(10000));
  o.Tolerancia = lmGetSettingCur(kAppZOR, kSeccionVarelta, "Tolerancia", Currency{});
  o.SimboloMEX = LeerSimboloMEX();
  o.CodigoMEX = CStr(lmGetSetting(kAppZOR, kSeccionVarelta, "CodigoMEX", "USD"));
  o.nombreIVA = CStr(lmGetSetting(kAppZOR, kSeccionVarelta, "nombreIVA", "I.V.A.:"));
  o.controlAutofill = CStr(lmGetSetting(kAppZOR, kSeccionVarelta, "controlAutofill", "txEfectivo"));
  return o;
}

CobroVarelta::CobroVarelta(Currency venta, Currency iva, Currency credito, double tasa, double igtf,
                           OpcionesCobro o)
    : MontoVenta(venta),
      MontoIVA(iva),
      MontoCredito(credito),
      neto(venta + iva - credito),
      netoTrabajo(neto),
      montoIGTFApertura(CCur(neto.toDouble() * igtf / 100)),
      tipoCambio(tasa),
      tasaIGTF(igtf),
      opciones(std::move(o)) {}

void CobroVarelta::agregarMedios(Recordset& rs) {
  for (; !rs.Eof() && medios.size() < kMaximoEntradas; rs.MoveNext()) {
    DescriptorMedio d;
    d.Clase = static_cast<ClaseIngresoSesion>(CLng(rs.Fields("Clase")));
    d.Titulo = CStr(rs.Fields("Titulo"));
    d.isMedioElectronico = CDbl(rs.Fields("isMedioElectronico")) != 0.0;
    d.TextoAyuda = NzTexto(rs.Fields("TextoAyuda"));
    const std::int32_t atributos = CLng(rs.Fields("Atributos"));
    // The withholding column doubles as the factor of foreign methods: shops'
    // catalogues keep their rates there.
    if (atributos & monedaExtranjera)
      d.Factor = CDbl(rs.Fields("PorcentajeISLR"));
    if (atributos & IndexadoMonedaExtranjera)
      d.Factor = CDbl(rs.Fields("PorcentajeISLR")) * tipoCambio;
    if (d.Clase == ClaseIngresoSesion::EfectivoME) {
      d.Tag = "USD*";
      d.Factor = tipoCambio;
    } else if (atributos & kMascaraMonedaExtranjera) {
      d.Tag = "ME";
    }
    if (atributos & SujetoIGTF)
      d.Tag += "*";
    d.Codigo = CStr(rs.Fields("codigo"));
    medios.push_back(std::move(d));
  }
}

std::string CobroVarelta::textoMonto(Currency c) const {
  return Format(Variant(c), kFormatoMonto);
}

std::string CobroVarelta::netoUSD(Currency c) const {
  return Format(Variant(Int(c.toDouble() / tipoCambio * 100 + 0.5) / 100), kFormatoMonto);
}

Currency CobroVarelta::valorEnMN(std::size_t i) const {
  const DescriptorMedio& d = medios.at(i);
  if (d.Tag.rfind("USD", 0) == 0)
    return CCur(d.valor.toDouble() * tipoCambio);
  if (d.Tag.rfind("ME", 0) == 0)
    return CCur(d.valor.toDouble() * d.Factor);
  return d.valor;
}

Currency CobroVarelta::recibidoSinAjuste(Currency& extranjero) const {
  Currency local = efectivo;
  extranjero = Currency{};
  for (std::size_t i = 0; i < medios.size(); ++i) {
    if (medios[i].Factor != 1.0) {
      extranjero += valorEnMN(i);
    } else {
      local += valorEnMN(i);
    }
  }
  return local + extranjero;
}

Currency CobroVarelta::TotalRecibido() const {
  Currency extranjero;
  const Currency recibido = recibidoSinAjuste(extranjero);
  const Currency diferencia = Abs(neto - recibido);
  // Absorbs the rounding of foreign conversions, up to half a cent of the
  // foreign currency, and only when foreign currency was received: a national
  // payment is never snapped, so the cashier sees every cent missing.
  if (diferencia > Currency::fromRaw(50) && !extranjero.isZero() &&
      diferencia.toDouble() <= tipoCambio / 200)
    return neto;
  return recibido;
}

Currency CobroVarelta::valorIGTF() const {
  if (netoTrabajo <= Currency{})
    return Currency{};
  Currency igtf;
  for (const auto& d : medios)
    if (d.valor > Currency{} && d.sujetoIGTF())
      igtf += CCur(d.valor.toDouble() * d.Factor / 100 * tasaIGTF);
  igtf = capar(igtf, montoIGTFApertura);
  if (opciones.ExcluirIVAIGTF)
    igtf = CCur(igtf.toDouble() * MontoVenta.toDouble() / (MontoVenta + MontoIVA).toDouble());
  // Cents, halves up: Int(100 × IGTF + 0.5) ÷ 100 in currency arithmetic.
  const Currency centesimas = Int(igtf * std::int16_t{100} + Currency::fromRaw(5000));
  return Currency::fromRaw(centesimas.raw() / 100);
}

Pantalla CobroVarelta::recalcular() {
  const Currency recibido = TotalRecibido();
  const Currency igtf = valorIGTF();
  neto = netoTrabajo + igtf;
  Pantalla p;
  p.IGTF = textoMonto(igtf);
  p.lblTotal = textoMonto(MontoVenta + MontoIVA + igtf);
  p.lblNetoMN = textoMonto(neto);
  p.lblNetoUSD = netoUSD(neto);
  p.vuelto = recibido - neto;
  p.lblVuelto = FormatearVuelto(Variant(p.vuelto));
  p.lblVueltoUSD = opciones.SimboloMEX + " " + netoUSD(p.vuelto);
  const double signo = p.vuelto < Currency{} ? -1.0 : 1.0;
  const Currency entero = CCur(Int(Abs(p.vuelto).toDouble() / tipoCambio) * signo);
  const Currency resto = p.vuelto - CCur(entero.toDouble() * tipoCambio);
  p.lblVueltoMixto =
      opciones.SimboloMEX + " " + textoMonto(entero) + " + " + FormatearVuelto(Variant(resto));
  return p;
}

void CobroVarelta::completar(std::optional<std::size_t> i) {
  Currency& entrada = i ? medios.at(*i).valor : efectivo;
  entrada = Currency{};
  double recibido = efectivo.toDouble();
  Currency baseIGTF;
  for (const auto& d : medios) {
    if (d.valor <= Currency{})
      continue;
    recibido += d.valor.toDouble() * d.Factor;
    if (d.sujetoIGTF())
      baseIGTF += CCur(d.valor.toDouble() * d.Factor);
  }
  Currency igtf = capar(CCur(baseIGTF.toDouble() / 100 * tasaIGTF), montoIGTFApertura);
  Currency falta = netoTrabajo + igtf - CCur(recibido);
  if (falta <= Currency{})
    return;
  if (!i) {
    entrada = falta;
    return;
  }
  // The IGTF this very payment causes is included once, without iterating.
  if (medios[*i].sujetoIGTF()) {
    igtf = capar(igtf + CCur(falta.toDouble() * tasaIGTF / 100), montoIGTFApertura);
    falta = netoTrabajo + igtf - CCur(recibido);
  }
  // A foreign method kept without a rate settles nothing: the input stays empty.
  if (medios[*i].Factor != 0)
    entrada = CCur(falta.toDouble() / medios[*i].Factor);
}

std::string CobroVarelta::ayuda(std::optional<std::size_t> i) const {
  if (!i)
    return "Introduzca el monto cobrado en efectivo de curso legal";
  const DescriptorMedio& d = medios.at(*i);
  if (d.Factor == 1.0)
    return d.TextoAyuda;
  // No amount of a currency without a rate settles the rest; saying so beats
  // the overflow its division would raise each time the input takes the focus.
  if (d.Factor == 0)
    return d.TextoAyuda + " (" + d.Titulo + " sin tasa de cambio)";
  Currency recibido = efectivo;
  for (const auto& m : medios)
    recibido += CCur(m.valor.toDouble() * m.Factor);
  const Currency cuanto = CCur((neto - recibido).toDouble() / d.Factor);
  return d.TextoAyuda + " (" + d.Titulo + " = " + textoMonto(cuanto) + ")";
}

std::string CobroVarelta::preguntaExceso(std::optional<std::size_t> i) const {
  if (!i) {
    if (efectivo > neto + opciones.MaximaUnidadMonetaria)
      return "El monto parece excesivo.\r\nEs correcto?";
    return "";
  }
  // One unit of foreign currency never counts as excessive.
  const Currency tasa = CCur(tipoCambio);
  const Currency margen = std::max(opciones.MaximaUnidadMonetaria, tasa);
  if (valorEnMN(*i) - neto > margen)
    return "Está seguro\r(el monto parece excesivo)";
  return "";
}

void CobroVarelta::cambiarIVA(Currency nuevoIVA) {
  MontoIVA = nuevoIVA;
  // The credit is not subtracted on this path: hosts that change the tax
  // (Aplicar2602) apply it to sales without credit notes.
  neto = MontoVenta + MontoIVA;
  netoTrabajo = neto;
  efectivo = Currency{};
  for (auto& d : medios)
    d.valor = Currency{};
}

std::shared_ptr<CDetalleIngreso> CobroVarelta::particulares(std::optional<std::size_t> i) {
  auto& p = i ? medios.at(*i).particulares : particularesEfectivo;
  if (!p) {
    p = std::make_shared<CDetalleIngreso>();
    p->medio = i ? medios[*i].Codigo : "EFE";
  }
  p->montoNominal = i ? medios[*i].valor : efectivo;
  p->Monto = i ? valorEnMN(*i) : efectivo;
  return p;
}

void CobroVarelta::tomarParticulares(std::optional<std::size_t> i) {
  auto& p = i ? medios.at(*i).particulares : particularesEfectivo;
  if (p)
    (i ? medios[*i].valor : efectivo) = p->montoNominal;
}

void CobroVarelta::autoLlenar() {
  if (!opciones.AutoFill)
    return;
  if (opciones.controlAutofill == "txEfectivo") {
    efectivo = neto;
    return;
  }
  for (auto& d : medios) {
    if (equalsIgnoreCase(nombreLegado(d.Clase), opciones.controlAutofill)) {
      d.valor = CCur(neto.toDouble() / d.Factor);
      return;
    }
  }
}

}  // namespace caja
