#include "app/acciones/Venta.h"

#include <QUuid>
#include <algorithm>
#include <map>

#include "app/acciones/Devolucion.h"
#include "app/acciones/EstaCaja.h"
#include "app/datos/Consultas.h"
#include "app/datos/Diario.h"
#include "app/envio/Politica.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/facade/CServiciosCaja.h"
#include "caja/movement/TempVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

// The session the movement goes to: the one given, else the one open at
// this till. A closed or unknown session, or no rate, is refused with what
// puts it right.
std::int32_t sesionDeVenta(Puesto& p, const Venta& v) {
  if (!v.sesion) {
    const std::int32_t m = estaMaquina(p.db(), maquinaConfigurada());
    const auto abierta = sesionAbiertaDe(p.db(), m);
    if (!abierta)
      throw Rechazo("La máquina " + std::to_string(m) +
                    " no tiene ninguna sesión abierta: ábrala con caja sesion abrir");
    return *abierta;
  }
  const std::int32_t s = *v.sesion;
  if (!maquinaDeSesion(p.db(), s))
    throw Rechazo("La sesión " + std::to_string(s) +
                  (sesionCerrada(p.db(), s) ? " está cerrada" : " no existe") +
                  ": abra una con caja sesion abrir --maquina N");
  return s;
}

void exigirTasa(Puesto& p) {
  if (!hayTasa(p.db()))
    throw Rechazo("La caja no tiene tasa de cambio: fíjela con caja tasa VALOR");
}

// The same document is charged once: a second charge names the first one,
// unless the cashier says so. A voided charge does not count.
void exigirDocumentoLibre(Puesto& p, const Venta& v) {
  if (!v.conDocumento || v.repetir)
    return;
  std::string previo;
  if (p.almacen.enDiario)
    previo = cobradoSegunDiario(p.db(), v.tipoDoc, v.numDoc);
  else if (const auto n = cobradoEn(p.db(), v.tipoDoc, v.numDoc))
    previo = std::to_string(*n);
  if (previo.empty())
    return;
  throw Rechazo("El documento " + v.tipoDoc + " " + std::to_string(v.numDoc) +
                " ya se cobró en el movimiento " + previo +
                " (use --repetir para cobrarlo de nuevo)");
}

// The dialog loaded with the movement's amounts, rounded to cents as the
// facade does, and the parked lines first; then worked.
std::shared_ptr<CVarelta> cobrarEn(frmVarelta& dialogo, Cobrador& cobrador, const Venta& v,
                                   Collection<CDetalleIngreso>* aparcadas) {
  cobrador.preparar();
  dialogo.setWindowTitle(QString::fromStdString(v.titulo));
  dialogo.preparar(RedondearMonto(Variant(v.venta), 2), RedondearMonto(Variant(v.iva), 2),
                   RedondearMonto(Variant(v.credito), 2));
  if (v.clasificacion == kDevolucion)
    dialogo.comoDevolucion();
  if (aparcadas)
    for (const auto& linea : *aparcadas)
      if (!dialogo.precargar(*linea))
        throw Rechazo("El medio de pago " + linea->medio + " no tiene entrada en el cobro");
  return cobrador.trabajar(dialogo, v);
}

// How the change went back, kept beside the movement: each change line and
// the credited amount ("CREDITO").
void anotarVueltoDe(HostSql& db, const CVarelta& mov, const Vuelto* cambio) {
  if (cambio && mov.Vuelto > Currency{})
    for (const auto& d : *cambio->detalles())
      anotarVuelto(db, mov.TransID, d->medio, Abs(d->Monto), Abs(d->montoNominal));
  if (mov.MontoAcreditable > Currency{})
    anotarVuelto(db, mov.TransID, "CREDITO", mov.MontoAcreditable, mov.MontoAcreditable);
}

// What a sale or a refund was made of, for its receipt: base, tax and
// credit, as the dialog took them (rounded to cents), given back positive.
void anotarImportesDe(HostSql& db, const CVarelta& mov, const Venta& v) {
  if (!v.clasificacion.empty() && v.clasificacion != kDevolucion)
    return;
  const auto centimos = [](Currency m) { return Abs(CCur(RedondearMonto(Variant(m), 2))); };
  anotarImportes(db, mov.TransID, {centimos(v.venta), centimos(v.iva), centimos(v.credito)});
}

// The movement as before its first save: no number, lines without ids. A
// save that starts again (another till collided) makes its own drawer
// transaction.
void olvidarGuardado(CVarelta& mov) {
  mov.TransID = 0;
  for (const auto& d : *mov.colDetalles)
    d->Id = 0;
}

// What runs around a save inside its transaction: `antes` may refuse before
// anything is written; `despues` sees the saved movement and the drawers it
// moved, and may still refuse (all of it rolls back) or record more.
struct Alrededor {
  std::function<void()> antes = [] {};
  std::function<void()> despues = [] {};
};

// Saves and commits in one host transaction, with the change and the
// movement's key (a random UUID): a failed save leaves nothing, and a save
// that collided with another till's runs again. On a server till the host
// is the till's journal, from where the sender ships the movement under its
// key.
void guardar(Puesto& p, const Venta& v, const std::string& operador, std::int32_t sesion,
             CVarelta& mov, const Vuelto* cambio, const Alrededor& alrededor = {}) {
  const std::string clave = QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
  p.db().EnTransaccion(
      [&] {
        alrededor.antes();
        mov.Save(sesion, operador, v.tipoDoc, v.numDoc, v.tipoEnt, v.codEnt, v.titulo,
                 Fecha::today(), Variant(), v.clasificacion);
        mov.commitTransEf();
        anotarVueltoDe(p.db(), mov, cambio);
        anotarImportesDe(p.db(), mov, v);
        alrededor.despues();
        anotarClave(p.db(), clave, mov.TransID);
      },
      [&] { olvidarGuardado(mov); });
}

// A line of `monto` in the method's own currency, valued at the catalogue's rate.
std::shared_ptr<CDetalleIngreso> lineaDe(std::string codigo, Currency monto) {
  const auto medio = ObtenerMedioPago(codigo);
  auto linea = std::make_shared<CDetalleIngreso>();
  linea->medio = codigo;
  linea->montoNominal = monto;
  linea->Monto = medio ? CCur(monto.toDouble() * medio->FactorCambio()) : monto;
  return linea;
}

std::int32_t maquinaDe(Puesto& p, std::int32_t sesion) {
  return maquinaDeSesion(p.db(), sesion).value_or(0);
}

// Money leaving the till (a refund, a withdrawal) never takes a method's
// drawer below zero, whatever the method, unless forced with a supervisor's
// approval: what is not in the drawer cannot have been handed out. Checked
// on the drawers the save has just moved.
void exigirSaldo(Puesto& p, const Venta& v, std::int32_t sesion, CVarelta& mov) {
  if (v.forzar)
    return;
  std::map<std::string, Currency> sale;
  for (const auto& linea : *mov.colDetalles)
    if (linea->montoNominal < Currency{})
      sale[linea->medio] += linea->montoNominal;
  SaldoCaja saldo;
  saldo.load(maquinaDe(p, sesion));
  for (const auto& [medio, monto] : sale) {
    const auto queda = saldo.detalles ? saldo.detalles->Find(medio) : nullptr;
    if (!queda || queda->valorNominal >= Currency{})
      continue;
    throw Rechazo("En la caja hay " + Format(Variant(queda->valorNominal - monto), kFormatoMonto) +
                  " de " + medio + ": no alcanza para entregar " +
                  Format(Variant(-monto), kFormatoMonto) +
                  " (use --forzar si el dinero salió igual): nada se guardó");
  }
}

// The approval money leaving the till needs; forcing a drawer below zero
// may ask for a higher level.
std::string aprobacionDeSalida(Puesto& p, const Venta& v, const std::string& que) {
  return p.aprobacion(
      que + (v.forzar ? " aunque la caja quede en negativo" : ""),
      std::max(nivelExigido("NivelAprobacion"), v.forzar ? nivelExigido("NivelForzar") : 0));
}

// The trail's row of a saved movement that needed approval: each line's
// amount in its own currency, and the total in national currency.
void anotarMovimiento(Puesto& p, std::int32_t sesion, const Venta& v, const std::string& operador,
                      CVarelta& mov, const std::string& aprobador) {
  Asiento a;
  a.maquina = maquinaDe(p, sesion);
  a.cajero = operador;
  a.aprobador = aprobador;
  a.accion = tipoDe(v.clasificacion) + (v.forzar ? " forzada" : "");
  for (const auto& linea : *mov.colDetalles) {
    a.detalle +=
        (a.detalle.empty() ? "" : " ") + linea->medio + "=" + linea->montoNominal.toMachineText();
    a.monto += linea->Monto;
  }
  if (v.clasificacion == kSalida)
    a.detalle += "; " + v.titulo;
  a.movimiento = mov.TransID;
  anotar(p.db(), a);
}

// The checks and the record of a movement that takes money out.
Alrededor alrededorDeSalida(Puesto& p, std::int32_t sesion, const Venta& v,
                            const std::string& operador, CVarelta& mov,
                            const std::string& aprobador) {
  Alrededor a;
  a.despues = [&p, sesion, &v, operador, &mov, aprobador] {
    exigirSaldo(p, v, sesion, mov);
    anotarMovimiento(p, sesion, v, operador, mov, aprobador);
  };
  return a;
}

// What a refund hands back per method, in the method's own currency.
std::map<std::string, Currency> entregadoPorMedio(CVarelta& mov) {
  std::map<std::string, Currency> porMedio;
  for (const auto& linea : *mov.colDetalles)
    porMedio[linea->medio] -= linea->montoNominal;
  return porMedio;
}

}  // namespace

std::int32_t vender(Puesto& p, const Venta& v, Cobrador& cobrador, const std::string* aparcada) {
  const std::string operador = p.cajero();
  const std::int32_t sesion = sesionDeVenta(p, v);
  exigirTasa(p);
  exigirDocumentoLibre(p, v);
  CVarelta aparcado;
  if (aparcada) {
    // Read without taking: the rolled-back load leaves the entry parked.
    p.db().BeginTrans();
    TempVarelta().load(*aparcada, aparcado);
    p.db().Rollback();
    if (aparcado.colDetalles->Count() == 0)
      throw Rechazo("Referencia " + *aparcada + " no registrada.");
  }
  frmVarelta dialogo;
  const auto mov = cobrarEn(dialogo, cobrador, v, aparcada ? aparcado.colDetalles.get() : nullptr);
  if (!mov)
    throw Rechazo("Cobro no completado: nada se guardó");
  Alrededor alrededor;
  if (aparcada)
    alrededor.antes = [&] {
      CVarelta tomado;
      TempVarelta().load(*aparcada, tomado);
      if (tomado.colDetalles->Count() == 0)
        throw Rechazo("La referencia " + *aparcada +
                      " ya fue retomada en otra caja: nada se guardó");
    };
  guardar(p, v, operador, sesion, *mov, dialogo.cambio(), alrededor);
  return mov->TransID;
}

std::int32_t devolver(Puesto& p, Venta v, Cobrador& cobrador) {
  const std::string operador = p.cajero();
  // Given back: the dialog works on the negative amounts; the cashier types
  // what leaves the till per method, positive.
  v.venta = -v.venta;
  v.iva = -v.iva;
  v.clasificacion = kDevolucion;
  const std::int32_t sesion = sesionDeVenta(p, v);
  exigirTasa(p);
  // Checked in total before a supervisor is asked, and per method once the
  // dialog says what leaves the till.
  const Currency total = -(v.venta + v.iva);
  const std::string documento = v.tipoDoc + " " + std::to_string(v.numDoc);
  const CobroDocumento cobro =
      v.conDocumento ? cobroParaDevolver(p.almacen, v.tipoDoc, v.numDoc) : CobroDocumento{};
  if (v.conDocumento)
    exigirDevolucionCubierta(cobro, documento, total, {}, v.forzar);
  const std::string aprobador =
      aprobacionDeSalida(p, v, "devolver " + Format(Variant(total), kFormatoMonto));
  frmVarelta dialogo;
  const auto mov = cobrarEn(dialogo, cobrador, v, nullptr);
  if (!mov)
    throw Rechazo("Devolución no completada: nada se guardó");
  if (!mov->Vuelto.isZero())
    throw Rechazo("Lo entregado debe sumar exactamente el monto de la devolución: nada se guardó");
  if (v.conDocumento)
    exigirDevolucionCubierta(cobro, documento, total, entregadoPorMedio(*mov), v.forzar);
  guardar(p, v, operador, sesion, *mov, nullptr,
          alrededorDeSalida(p, sesion, v, operador, *mov, aprobador));
  return mov->TransID;
}

std::int32_t moverEfectivo(Puesto& p, Venta v) {
  const bool sale = v.clasificacion == kSalida;
  const std::string operador = p.cajero();
  const std::int32_t sesion = sesionDeVenta(p, v);
  exigirTasa(p);
  CVarelta mov;
  Currency suma;
  for (const auto& [codigo, monto] : v.pagos) {
    const auto linea = lineaDe(codigo, sale ? -monto : monto);
    suma += linea->Monto;
    mov.colDetalles->Add(linea);
  }
  if (suma < Currency{})
    mov.Creditos = -suma;
  else
    mov.Debitos = suma;
  const Alrededor alrededor =
      sale ? alrededorDeSalida(p, sesion, v, operador, mov,
                               aprobacionDeSalida(p, v, "sacar dinero de la caja"))
           : Alrededor{};
  guardar(p, v, operador, sesion, mov, nullptr, alrededor);
  return mov.TransID;
}

void aparcar(Puesto& p, const std::string& clave, const std::vector<Pago>& pagos,
             CVarelta& aparcado) {
  if (claveAparcada(p.db(), clave))
    throw Rechazo("La clave " + clave + " ya está en uso: retómela, o descártela con caja " +
                  "revertir " + clave);
  for (const auto& [codigo, monto] : pagos)
    aparcado.colDetalles->Add(lineaDe(codigo, monto));
  p.db().EnTransaccion([&] { TempVarelta().Save(clave, aparcado); });
}

void revertir(const std::string& clave) {
  TempVarelta().revertir(clave);
}

}  // namespace caja::app
