#include "app/acciones/Devolucion.h"

#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

std::string monto(Currency c) {
  return Format(Variant(c), kFormatoMonto);
}

Currency en(const std::map<std::string, Currency>& porMedio, const std::string& medio) {
  const auto it = porMedio.find(medio);
  return it == porMedio.end() ? Currency{} : it->second;
}

const char* kForzar = " (con --forzar, si un supervisor lo autoriza); nada se guardó";

}  // namespace

void exigirDevolucionCubierta(const CobroDocumento& cobro, const std::string& documento,
                              Currency total, const std::map<std::string, Currency>& porMedio,
                              bool forzada) {
  if (forzada)
    return;
  if (!cobro.cobrado)
    throw Rechazo("El documento " + documento +
                  " no consta cobrado, o su venta se anuló: una devolución responde a su venta" +
                  kForzar);
  if (!cobro.montosConocidos)
    return;
  if (cobro.devuelto + total > cobro.total)
    throw Rechazo("El documento " + documento + " cobró " + monto(cobro.total) +
                  " y ya se devolvió " + monto(cobro.devuelto) + ": no caben " + monto(total) +
                  " más" + kForzar);
  for (const auto& [medio, cuanto] : porMedio) {
    const std::string codigo = upperAscii(medio);
    if (codigo == "EFE")
      continue;
    const Currency pagado = en(cobro.pagado, codigo), dado = en(cobro.dado, codigo);
    if (dado + cuanto > pagado)
      throw Rechazo("El documento " + documento + " se pagó con " + monto(pagado) + " en " + medio +
                    " y ya se devolvió " + monto(dado) + " en ese medio: no caben " +
                    monto(cuanto) + " más" + kForzar);
  }
}

}  // namespace caja::app
