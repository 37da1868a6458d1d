#include "caja/drawer/SaldoCaja.h"

#include "caja/base/Conversiones.h"
#include "caja/service/General.h"

namespace caja {

std::shared_ptr<DetalleEfectivo> SaldoCaja::makeDetalleEfectivo(const Variant& medio,
                                                                const Variant& valorNominal,
                                                                const Variant& valorMN) {
  auto d = std::make_shared<DetalleEfectivo>();
  d->codigoMedio = CStr(medio);
  d->valorNominal = CCur(valorNominal);
  d->valorMN = CCur(valorMN);
  const double nominal = CDbl(valorNominal);
  const double mn = CDbl(valorMN);
  if (nominal == 0.0 || nominal == mn) {
    d->tipoCambio(1.0);
  } else {
    // The inverse of the rate, without visible effect (reading derives the
    // rate from the amounts); kept for its error 11 when `mn` is 0, which
    // callers reading a damaged balance row receive.
    if (mn == 0.0)
      throw errorEjecucion(err::kDivisionPorCero);
    d->tipoCambio(nominal / mn);
  }
  return d;
}

bool SaldoCaja::load(std::int32_t idCajaBuscada) {
  detalles = std::make_shared<Collection<DetalleEfectivo>>();
  idCaja = idCajaBuscada;
  auto rs =
      factoria().openrecordset("SELECT id, EfectivoMN FROM cvCaja WHERE MachineID = ?", {idCaja});
  if (rs->Eof()) {
    saldoMonedaNacional = Currency{};
    return false;
  }
  Id = CLng(rs->Fields(0));
  saldoMonedaNacional = CCur(rs->Fields(1));
  detalles->Add(makeDetalleEfectivo(Variant("EFE"), Variant(saldoMonedaNacional),
                                    Variant(saldoMonedaNacional)),
                "EFE");
  auto filas = factoria().openrecordset("SELECT * FROM CVCajaDetalles WHERE idCEC = ?", {Id});
  for (; !filas->Eof(); filas->MoveNext()) {
    const Variant codigo = filas->Fields("codigoMedio");
    detalles->Add(
        makeDetalleEfectivo(codigo, filas->Fields("valorNominal"), filas->Fields("valorMN")),
        CStr(codigo));
  }
  return true;
}

double SaldoCaja::tipoCambio(const std::string& codigoMedio) const {
  if (!detalles)
    return 0.0;
  const auto linea = detalles->Find(codigoMedio);
  if (!linea)
    return 0.0;
  if (linea->valorNominal.isZero())
    return 1.0;
  return linea->valorMN / linea->valorNominal;
}

}  // namespace caja
