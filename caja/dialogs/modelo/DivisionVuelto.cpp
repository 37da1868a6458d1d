#include "caja/dialogs/modelo/DivisionVuelto.h"

#include <algorithm>

#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/dialogs/modelo/CobroVarelta.h"
#include "caja/service/General.h"

namespace caja {

namespace {

// Cash-like as the cash movement counts it: national or foreign cash, or a
// foreign-currency method.
bool daVuelto(const DescriptorMedio& d) {
  return d.Clase == ClaseIngresoSesion::Efectivo || d.Clase == ClaseIngresoSesion::EfectivoME ||
         d.Tag.rfind("ME", 0) == 0;
}

std::string moneda(Currency c) {
  return Format(Variant(c), kFormatoMoneda);
}

}  // namespace

DivisionVuelto::DivisionVuelto(const CobroVarelta& cobro, Currency vuelto, bool conCredito)
    : vuelto(vuelto), conCredito(conCredito), tipoCambio_(cobro.tipoCambio) {
  entradas.push_back({"EFE", "Efectivo", 1.0, false, {}});
  for (const auto& d : cobro.medios)
    if (daVuelto(d))
      entradas.push_back({d.Codigo, d.Titulo, d.Factor, !d.Tag.empty(), {}});
}

std::optional<std::size_t> DivisionVuelto::indiceDe(const std::string& codigo) const {
  for (std::size_t i = 0; i < entradas.size(); ++i)
    if (equalsIgnoreCase(entradas[i].codigo, codigo))
      return i;
  return std::nullopt;
}

Currency DivisionVuelto::enMN(std::size_t i) const {
  const EntradaVuelto& e = entradas.at(i);
  return e.extranjera ? CCur(e.nominal.toDouble() * e.factor) : e.nominal;
}

Currency DivisionVuelto::restante() const {
  Currency r = vuelto - credito;
  for (std::size_t i = 0; i < entradas.size(); ++i)
    r -= enMN(i);
  return r;
}

void DivisionVuelto::sugerir() {
  for (auto& e : entradas)
    e.nominal = Currency{};
  credito = Currency{};
  const auto divisa = std::find_if(entradas.begin(), entradas.end(), [&](const auto& e) {
    return e.extranjera && e.factor == tipoCambio_ && tipoCambio_ > 0;
  });
  if (divisa != entradas.end())
    divisa->nominal = CCur(Int(vuelto.toDouble() / tipoCambio_));
  entradas.front().nominal = RedondearVuelto(restante());
}

void DivisionVuelto::completar(std::size_t i) {
  if (i == indiceCredito()) {
    credito = Currency{};
    credito = std::max(restante(), Currency{});
    return;
  }
  EntradaVuelto& e = entradas.at(i);
  e.nominal = Currency{};
  const Currency falta = std::max(restante(), Currency{});
  e.nominal = e.extranjera ? CCur(Int(falta.toDouble() / e.factor * 100 + 0.5) / 100) : falta;
}

std::optional<DivisionVuelto::Rechazo> DivisionVuelto::validar() const {
  for (std::size_t i = 0; i < entradas.size(); ++i) {
    const EntradaVuelto& e = entradas[i];
    if (e.nominal < Currency{})
      return Rechazo{"El vuelto en " + e.titulo + " no puede ser negativo", i};
    if (e.extranjera && e.nominal.raw() % 100 != 0)
      return Rechazo{"El vuelto en " + e.titulo + " admite solo dos decimales", i};
  }
  if (credito < Currency{})
    return Rechazo{"El monto acreditado no puede ser negativo", indiceCredito()};
  // The national part may have been rounded to the change step.
  const Currency margen =
      std::max(Currency::fromRaw(100), Currency::fromRaw(PasoVuelto().raw() / 2));
  const Currency r = restante();
  if (r < -margen)
    return Rechazo{"El reparto excede el vuelto en " + moneda(-r), std::nullopt};
  if (r > margen)
    return Rechazo{"Falta repartir " + moneda(r) + " del vuelto", std::nullopt};
  return std::nullopt;
}

std::shared_ptr<Collection<CDetalleIngreso>> DivisionVuelto::lineas() const {
  auto lista = std::make_shared<Collection<CDetalleIngreso>>();
  for (std::size_t i = 0; i < entradas.size(); ++i) {
    if (entradas[i].nominal.isZero())
      continue;
    auto linea = std::make_shared<CDetalleIngreso>();
    linea->medio = entradas[i].codigo;
    linea->Monto = -enMN(i);
    linea->montoNominal = -entradas[i].nominal;
    lista->Add(linea);
  }
  return lista;
}

}  // namespace caja
