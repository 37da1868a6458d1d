#include "app/acciones/Devolucion.h"

#include "app/linea/Comandos.h"
#include "app/envio/Diario.h"
#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

// The movements of a document that stand: the condition and its values.
constexpr const char* kDelDocumento =
    " LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID WHERE A.TransID IS NULL AND "
    "M.TipoDocumento = ? AND M.NumeroDocumento = ?";

std::string monto(Currency c) {
  return Format(Variant(c), kFormatoMonto);
}

Currency en(const std::map<std::string, Currency>& porMedio, const std::string& medio) {
  const auto it = porMedio.find(medio);
  return it == porMedio.end() ? Currency{} : it->second;
}

const char* kForzar = " (con --forzar, si un supervisor lo autoriza); nada se guardó";

}  // namespace

CobroDocumento cobroDe(HostSql& db, const std::string& tipo, std::int32_t numero,
                       bool soloSinEnviar) {
  CobroDocumento k;
  const Argumentos doc{tipo, numero};
  const std::string donde =
      kDelDocumento + std::string(soloSinEnviar ? " AND M.TransID IN (SELECT TransID FROM "
                                                  "hostClaves WHERE TransIDServidor IS NULL)"
                                                : "");
  auto rs = db.openrecordset(
      std::string("SELECT M.Clasificacion, M.Debitos, M.Creditos, M.MontoIGTF, I.Base, I.IVA, "
                  "I.Credito FROM MovimientosCaja M LEFT JOIN hostImportes I ON I.TransID = "
                  "M.TransID") +
          donde,
      doc);
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string clase = NzTexto(rs->Fields(0));
    // A movement saved before its amounts were kept counts by its totals.
    const bool conImportes = !rs->Fields(4).isNull() && !rs->Fields(4).isEmpty();
    const Currency importes =
        NzMoneda(rs->Fields(4)) + NzMoneda(rs->Fields(5)) - NzMoneda(rs->Fields(6));
    if (clase.empty()) {
      k.cobrado = true;
      k.total += conImportes ? importes : NzMoneda(rs->Fields(1)) - NzMoneda(rs->Fields(3));
    } else if (equalsIgnoreCase(clase, kDevolucion)) {
      k.devuelto += conImportes ? importes : NzMoneda(rs->Fields(2));
    }
  }
  auto lineas = db.openrecordset(
      std::string("SELECT D.Medio, D.MontoNominal, M.Clasificacion FROM DetallesVarelta D "
                  "INNER JOIN MovimientosCaja M ON M.TransID = D.TransID") +
          donde,
      doc);
  for (; !lineas->Eof(); lineas->MoveNext()) {
    const std::string medio = upperAscii(NzTexto(lineas->Fields(0)));
    const std::string clase = NzTexto(lineas->Fields(2));
    if (clase.empty())
      k.pagado[medio] += NzMoneda(lineas->Fields(1));
    else if (equalsIgnoreCase(clase, kDevolucion))
      k.dado[medio] -= NzMoneda(lineas->Fields(1));
  }
  return k;
}

void sumar(CobroDocumento& a, const CobroDocumento& b) {
  a.cobrado = a.cobrado || b.cobrado;
  a.total += b.total;
  a.devuelto += b.devuelto;
  for (const auto& [m, v] : b.pagado)
    a.pagado[m] += v;
  for (const auto& [m, v] : b.dado)
    a.dado[m] += v;
}

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
