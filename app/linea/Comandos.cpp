#include "app/linea/Comandos.h"

#include <QApplication>
#include <algorithm>
#include <iostream>
#include <map>

#include "app/datos/Auditoria.h"
#include "app/controles/Autorizacion.h"
#include "app/datos/Demo.h"
#include "app/acciones/Devolucion.h"
#include "app/envio/Diario.h"
#include "app/acciones/Empresa.h"
#include "app/envio/Enviador.h"
#include "app/acciones/EstaCaja.h"
#include "app/papeles/Impresos.h"
#include "app/papeles/Informe.h"
#include "app/envio/Politica.h"
#include "app/datos/Roles.h"
#include "app/linea/Salida.h"
#include "app/datos/Supervisores.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/dialogs/DialogosQt.h"
#include "caja/dialogs/frmDefinirVuelto.h"
#include "caja/dialogs/frmVarelta.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/facade/CServiciosCaja.h"
#include "caja/movement/TempVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

Salida salida(Contexto& c) {
  return Salida(c.out, c.args.bandera("json"));
}

// A payment of the command line: the catalogue's code (any letter case
// typed) and its amount in the method's own currency.
struct Pago {
  std::string codigo;
  Currency monto;
};

// The amounts of a repeatable CODIGO=MONTO option; `otro` is a code that is
// not in the catalogue and yet accepted ("CREDITO" of --vuelto).
std::vector<Pago> pagos(Contexto& c, const char* opcion = "pago", const char* otro = "EFE") {
  std::vector<Pago> lista;
  for (const auto& texto : c.args.valores(opcion)) {
    auto [codigo, cuanto] = parDe(texto, opcion, '=');
    const std::string que = std::string("--") + opcion + " " + codigo;
    if (equalsIgnoreCase(codigo, "EFE") || equalsIgnoreCase(codigo, otro)) {
      lista.push_back({upperAscii(codigo), montoDe(cuanto, que)});
      continue;
    }
    const auto medio = ObtenerMedioPago(codigo);
    if (!medio)
      throw ErrorUso(std::string("Medio de pago desconocido en --") + opcion + ": " + codigo +
                     " (caja medios lista el catálogo)");
    lista.push_back({medio->codigo, montoDe(cuanto, que)});
  }
  return lista;
}

// The sale as the command line gives it, checked before anything is opened.
struct Venta {
  Currency venta, iva, credito;
  std::string titulo, operador, tipoDoc, tipoEnt, codEnt;
  std::int32_t numDoc = 0;
  bool conDocumento = false;
  std::vector<Pago> pagos;
  std::vector<Pago> vueltos;  // "CREDITO" for the credited part
  std::string clasificacion;  // empty for a sale
};

// `opcion` names the amount: --venta for a sale, --monto for a refund.
Venta ventaDe(Contexto& c, const char* opcion = "venta") {
  Venta v;
  const auto venta = c.args.monto(opcion);
  if (!venta)
    throw ErrorUso(std::string("Falta --") + opcion);
  v.venta = *venta;
  v.iva = c.args.monto("iva").value_or(Currency{});
  v.credito = c.args.monto("credito").value_or(Currency{});
  Currency total;
  try {
    total = v.venta + v.iva - v.credito;
  } catch (const CajaError&) {
    throw CajaError(err::kDesbordamiento, "caja",
                    "El total de la venta " + v.venta.toMachineText() + " + " +
                        v.iva.toMachineText() + " - " + v.credito.toMachineText() +
                        " está fuera del rango de la moneda (-922337203685477.5807 a "
                        "922337203685477.5807)");
  }
  if (total.isZero())
    throw ErrorUso("No hay nada que cobrar: venta + IVA - crédito es 0");
  v.titulo = c.args.valor("titulo", "Cobro");
  // Without --documento the movement has none ("sin documento").
  if (const auto documento = c.args.valor("documento")) {
    v.conDocumento = true;
    const auto [tipoDoc, numDoc] = parDe(*documento, "documento", ':');
    v.tipoDoc = tipoDoc;
    v.numDoc = static_cast<std::int32_t>(enteroDe(numDoc, "--documento", 0, kMaximo32));
  }
  const auto [tipoEnt, codEnt] = parDe(c.args.valor("entidad", "CLI:C0001"), "entidad", ':');
  v.tipoEnt = tipoEnt;
  v.codEnt = codEnt;
  v.pagos = pagos(c);
  v.vueltos = pagos(c, "vuelto", "CREDITO");
  if (!v.vueltos.empty() && !c.args.bandera("aceptar"))
    throw ErrorUso("--vuelto va con --aceptar: en pantalla el cajero reparte el vuelto");
  v.operador = cajeroDe(c);
  return v;
}

// The session the sale goes to: the one given, else the one open at this
// till. A closed or unknown session, or no rate, is refused with the
// command that puts it right.
std::int32_t sesionDeVenta(Contexto& c) {
  const auto dada = c.args.entero("sesion", 1, kMaximo32);
  if (!dada) {
    const std::int32_t m = estaMaquina(c);
    const Variant abierta =
        c.db->ReadScalar("SELECT MIN(SessionID) FROM SesionesPOS WHERE MachineID = ?", {m});
    if (abierta.isEmpty() || abierta.isNull())
      throw Rechazo("La máquina " + std::to_string(m) +
                    " no tiene ninguna sesión abierta: ábrala con caja sesion abrir");
    return CLng(abierta);
  }
  const auto s = static_cast<std::int32_t>(*dada);
  if (c.db->ReadScalar("SELECT MachineID FROM SesionesPOS WHERE SessionID = ?", {s}).isEmpty()) {
    const bool cerrada =
        !c.db->ReadScalar("SELECT MachineID FROM SesionesCerradas WHERE SessionID = ?", {s})
             .isEmpty();
    throw Rechazo("La sesión " + std::to_string(s) + (cerrada ? " está cerrada" : " no existe") +
                  ": abra una con caja sesion abrir --maquina N");
  }
  return s;
}

void exigirTasa(Contexto& c) {
  const Variant tasa = c.db->ReadScalar("SELECT MAX(TipoCambio) FROM parametrosEmpresa");
  if (c.db->TipoCambioCaja() <= 0 || tasa.isEmpty() || tasa.isNull() || CDbl(tasa) <= 0)
    throw Rechazo("La caja no tiene tasa de cambio: fíjela con caja tasa VALOR");
}

// The movement of the database that charged the sale's document and was
// not voided, or empty.
std::string cobradoEn(HostSql& db, const Venta& v) {
  CVarelta previo;
  if (!previo.LoadFromDocumento(v.tipoDoc, v.numDoc) ||
      !db.ReadScalar("SELECT TransID FROM hostAnulaciones WHERE TransID = ?", {previo.TransID})
           .isEmpty())
    return "";
  return std::to_string(previo.TransID);
}

// The same document is charged once: a second charge names the first one,
// unless the cashier says --repetir. A voided charge does not count.
void exigirDocumentoLibre(Contexto& c, const Venta& v) {
  if (!v.conDocumento || c.args.bandera("repetir"))
    return;
  const std::string previo =
      c.enDiario ? cobradoSegunDiario(*c.db, v.tipoDoc, v.numDoc) : cobradoEn(*c.db, v);
  if (previo.empty())
    return;
  throw Rechazo("El documento " + v.tipoDoc + " " + std::to_string(v.numDoc) +
                " ya se cobró en el movimiento " + previo +
                " (use --repetir para cobrarlo de nuevo)");
}

// The dialog loaded with the sale's amounts, rounded to cents as the facade does.
void abrir(frmVarelta& dialogo, const Venta& v) {
  dialogo.setWindowTitle(QString::fromStdString(v.titulo));
  dialogo.preparar(RedondearMonto(Variant(v.venta), 2), RedondearMonto(Variant(v.iva), 2),
                   RedondearMonto(Variant(v.credito), 2));
}

// The change split typed in place of the cashier: the suggestion when no
// --vuelto was given, else exactly the amounts given.
bool teclearVuelto(const Venta& v, frmDefinirVuelto& d) {
  if (!v.vueltos.empty()) {
    d.limpiar();
    for (const auto& [codigo, monto] : v.vueltos)
      if (!d.teclear(codigo, monto))
        throw ErrorUso("El medio " + codigo + " no da vuelto en este cobro");
  }
  return d.aceptarGuion();
}

// The collection in the real dialog, the parked lines first: typed unseen
// and accepted (--aceptar), or worked by the cashier on screen. The dialog
// stays with the caller, who reads the change from it.
std::shared_ptr<CVarelta> cobrarEn(frmVarelta& dialogo, Contexto& c, const Venta& v,
                                   Collection<CDetalleIngreso>* aparcadas) {
  const bool guion = c.args.bandera("aceptar");
  if (!guion && !c.conPantalla)
    throw ErrorUso("No hay pantalla: use --pago CODIGO=MONTO y --aceptar");
  if (!guion)
    instalarDialogosQt();
  abrir(dialogo, v);
  if (v.clasificacion == kDevolucion)
    dialogo.comoDevolucion();
  if (!v.vueltos.empty() && !dialogo.cobro().opciones.dividirVuelto)
    throw ErrorUso(
        "--vuelto necesita que la tienda reparta el vuelto (VueltoDetallado o "
        "acreditarVueltos en ZOR.ini)");
  if (aparcadas)
    for (const auto& linea : *aparcadas)
      if (!dialogo.precargar(*linea))
        throw Rechazo("El medio de pago " + linea->medio + " no tiene entrada en el cobro");
  if (!guion)
    return dialogo.mostrar();
  for (const auto& [codigo, monto] : v.pagos)
    if (!dialogo.teclear(codigo, monto))
      throw ErrorUso("El medio de pago " + codigo + " no tiene entrada en el cobro");
  dialogo.guionVuelto = [&v](frmDefinirVuelto& d) { return teclearVuelto(v, d); };
  return dialogo.aceptarGuion() ? dialogo.resultado() : nullptr;
}

// How the change went back, kept in the host's own table beside the
// movement: each change line and the credited amount ("CREDITO").
void anotarVuelto(Contexto& c, const CVarelta& mov, const Vuelto* cambio) {
  const std::string sql =
      "INSERT INTO hostVueltos (TransID, Medio, Monto, MontoNominal) VALUES (?, ?, ?, ?)";
  if (cambio && mov.Vuelto > Currency{})
    for (const auto& d : *cambio->detalles())
      c.db->ExecuteSQL(sql, {mov.TransID, d->medio, Abs(d->Monto), Abs(d->montoNominal)});
  if (mov.MontoAcreditable > Currency{})
    c.db->ExecuteSQL(sql, {mov.TransID, "CREDITO", mov.MontoAcreditable, mov.MontoAcreditable});
}

// What a sale or a refund was made of, for its receipt: base, tax and
// credit, as the dialog took them (rounded to cents), given back positive.
void anotarImportes(Contexto& c, const CVarelta& mov, const Venta& v) {
  if (!v.clasificacion.empty() && v.clasificacion != kDevolucion)
    return;
  const auto centimos = [](Currency m) { return Abs(CCur(RedondearMonto(Variant(m), 2))); };
  c.db->ExecuteSQL("INSERT INTO hostImportes (TransID, Base, IVA, Credito) VALUES (?, ?, ?, ?)",
                   {mov.TransID, centimos(v.venta), centimos(v.iva), centimos(v.credito)});
}

}  // namespace

std::int32_t numeroDondeCorre(Contexto& c, const std::string& numero) {
  const auto n = static_cast<std::int32_t>(enteroDe(numero, "NUMERO", 1, kMaximo32));
  return c.enDiario && c.conServidor ? numeroLocalDe(*c.db, n) : n;
}

void exigirServidor(Contexto& c) {
  if (!c.conServidor)
    throw ErrorUso(
        "--local nombra un movimiento del diario de una caja con servidor: aquí use NUMERO");
}

NumeroVisible numeroVisible(Contexto& c, std::int32_t transId) {
  if (!c.enDiario || !c.conServidor)
    return {transId};
  const std::int32_t enServidor = numeroEnServidor(*c.db, transId);
  return enServidor > 0 ? NumeroVisible{enServidor} : NumeroVisible{transId, true};
}

std::vector<MontoMedio> vueltoDe(Contexto& c, std::int32_t transId) {
  std::vector<MontoMedio> lista;
  auto rs = c.db->openrecordset("SELECT * FROM hostVueltos WHERE TransID = ?", {transId});
  for (; !rs->Eof(); rs->MoveNext())
    lista.push_back({NzTexto(rs->Fields("Medio")), NzMoneda(rs->Fields("Monto")),
                     NzMoneda(rs->Fields("MontoNominal"))});
  return lista;
}

namespace {

// What runs around a save inside its transaction: `antes` may refuse before
// anything is written; `despues` sees the saved movement and the drawers it
// moved, and may still refuse (all of it rolls back) or record more.
struct Alrededor {
  std::function<void()> antes = [] {};
  std::function<void()> despues = [] {};
};

// Saves and commits in one host transaction, with the change and the
// movement's key: a failed save leaves nothing, and a save that collided
// with another till's runs again. On a server till the host is the till's
// journal, from where the sender ships the movement under its key.
void guardar(Contexto& c, const Venta& v, std::int32_t sesion, CVarelta& mov, const Vuelto* cambio,
             const Alrededor& alrededor = {}) {
  const std::string clave = nuevaClave();
  c.db->EnTransaccion(
      [&] {
        alrededor.antes();
        mov.Save(sesion, v.operador, v.tipoDoc, v.numDoc, v.tipoEnt, v.codEnt, v.titulo,
                 Fecha::today(), Variant(), v.clasificacion);
        mov.commitTransEf();
        anotarVuelto(c, mov, cambio);
        anotarImportes(c, mov, v);
        alrededor.despues();
        c.db->ExecuteSQL("INSERT INTO hostClaves (Clave, TransID) VALUES (?, ?)",
                         {clave, mov.TransID});
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

// Prints the movement as the database now holds it.
int mostrarGuardado(Contexto& c, std::int32_t transId) {
  CVarelta guardado;
  guardado.load(transId);
  salida(c).movimiento(guardado, vueltoDe(c, transId), numeroVisible(c, transId));
  if (c.args.bandera("imprimir"))
    imprimirGuardado(c, transId);
  return kExito;
}

// One sale from the command line to the saved movement; `clave` names parked
// lines to start from, taken from the store in the same transaction as the save.
int venderDesde(Contexto& c, const std::string* clave) {
  const Venta v = ventaDe(c);
  const std::int32_t sesionVenta = sesionDeVenta(c);
  exigirTasa(c);
  exigirDocumentoLibre(c, v);
  CVarelta aparcado;
  if (clave) {
    // Read without taking: the rolled-back load leaves the entry parked.
    c.db->BeginTrans();
    TempVarelta().load(*clave, aparcado);
    c.db->Rollback();
    if (aparcado.colDetalles->Count() == 0)
      throw Rechazo("Referencia " + *clave + " no registrada.");
  }
  frmVarelta dialogo;
  const auto mov = cobrarEn(dialogo, c, v, clave ? aparcado.colDetalles.get() : nullptr);
  if (!mov)
    throw Rechazo("Cobro no completado: nada se guardó");
  Alrededor alrededor;
  if (clave)
    alrededor.antes = [&] {
      CVarelta tomado;
      TempVarelta().load(*clave, tomado);
      if (tomado.colDetalles->Count() == 0)
        throw Rechazo("La referencia " + *clave + " ya fue retomada en otra caja: nada se guardó");
    };
  guardar(c, v, sesionVenta, *mov, dialogo.cambio(), alrededor);
  return mostrarGuardado(c, mov->TransID);
}

std::int32_t maquinaDeSesion(Contexto& c, std::int32_t sesion) {
  return CLng(c.db->ReadScalar("SELECT MachineID FROM SesionesPOS WHERE SessionID = ?", {sesion}));
}

// Money leaving the till (a refund, a withdrawal) never takes a method's
// drawer below zero, whatever the method, unless the cashier says --forzar
// and a supervisor approves it: what is not in the drawer cannot have been
// handed out. Checked on the drawers the save has just moved.
void exigirSaldo(Contexto& c, std::int32_t sesion, CVarelta& mov) {
  if (c.args.bandera("forzar"))
    return;
  std::map<std::string, Currency> sale;
  for (const auto& linea : *mov.colDetalles)
    if (linea->montoNominal < Currency{})
      sale[linea->medio] += linea->montoNominal;
  SaldoCaja saldo;
  saldo.load(maquinaDeSesion(c, sesion));
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
std::string aprobacionDeSalida(Contexto& c, const std::string& que) {
  const bool forzada = c.args.bandera("forzar");
  return aprobacion(
      c, que + (forzada ? " aunque la caja quede en negativo" : ""),
      std::max(nivelExigido("NivelAprobacion"), forzada ? nivelExigido("NivelForzar") : 0));
}

// The trail's row of a saved movement that needed approval: each line's
// amount in its own currency, and the total in national currency.
void anotarMovimiento(Contexto& c, std::int32_t sesion, const Venta& v, CVarelta& mov,
                      const std::string& aprobador) {
  Asiento a;
  a.maquina = maquinaDeSesion(c, sesion);
  a.cajero = v.operador;
  a.aprobador = aprobador;
  a.accion = tipoDe(v.clasificacion) + (c.args.bandera("forzar") ? " forzada" : "");
  for (const auto& linea : *mov.colDetalles) {
    a.detalle +=
        (a.detalle.empty() ? "" : " ") + linea->medio + "=" + linea->montoNominal.toMachineText();
    a.monto += linea->Monto;
  }
  if (v.clasificacion == kSalida)
    a.detalle += "; " + v.titulo;
  a.movimiento = mov.TransID;
  anotar(*c.db, a);
}

// The checks and the record of a movement that takes money out.
Alrededor alrededorDeSalida(Contexto& c, std::int32_t sesion, const Venta& v, CVarelta& mov,
                            const std::string& aprobador) {
  Alrededor a;
  a.despues = [&c, sesion, &v, &mov, aprobador] {
    exigirSaldo(c, sesion, mov);
    anotarMovimiento(c, sesion, v, mov, aprobador);
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

int devolver(Contexto& c) {
  Venta v = ventaDe(c, "monto");
  // Given back: the dialog works on the negative amounts; the cashier types
  // (and the command line gives) what leaves the till per method, positive.
  v.venta = -v.venta;
  v.iva = -v.iva;
  v.titulo = c.args.valor("motivo").value_or(c.args.valor("titulo", kTituloDevolucion));
  v.clasificacion = kDevolucion;
  const std::int32_t sesionVenta = sesionDeVenta(c);
  exigirTasa(c);
  // Checked in total before a supervisor is asked, and per method once the
  // dialog says what leaves the till.
  const Currency total = -(v.venta + v.iva);
  const bool forzada = c.args.bandera("forzar");
  const std::string documento = v.tipoDoc + " " + std::to_string(v.numDoc);
  const CobroDocumento cobro =
      v.conDocumento ? cobroParaDevolver(c, v.tipoDoc, v.numDoc) : CobroDocumento{};
  if (v.conDocumento)
    exigirDevolucionCubierta(cobro, documento, total, {}, forzada);
  const std::string aprobador =
      aprobacionDeSalida(c, "devolver " + Format(Variant(total), kFormatoMonto));
  frmVarelta dialogo;
  const auto mov = cobrarEn(dialogo, c, v, nullptr);
  if (!mov)
    throw Rechazo("Devolución no completada: nada se guardó");
  if (!mov->Vuelto.isZero())
    throw Rechazo("Lo entregado debe sumar exactamente el monto de la devolución: nada se guardó");
  if (v.conDocumento)
    exigirDevolucionCubierta(cobro, documento, total, entregadoPorMedio(*mov), forzada);
  guardar(c, v, sesionVenta, *mov, nullptr, alrededorDeSalida(c, sesionVenta, v, *mov, aprobador));
  return mostrarGuardado(c, mov->TransID);
}

// Cash put into the till or taken out of it without a sale: a movement of
// its own kind, with one line per method, that moves the drawer.
int moverEfectivo(Contexto& c, const char* clasificacion) {
  const bool sale = clasificacion == std::string(kSalida);
  Venta v;
  v.clasificacion = clasificacion;
  const auto motivo = c.args.valor("motivo");
  if (sale && (!motivo || motivo->empty()))
    throw ErrorUso("Falta --motivo: diga por qué sale el dinero");
  v.titulo = motivo.value_or(kTituloEntrada);
  v.pagos = pagos(c);
  if (v.pagos.empty())
    throw ErrorUso("Indique lo que se mueve con --pago CODIGO=MONTO");
  for (const auto& [codigo, monto] : v.pagos)
    if (monto.isZero())
      throw ErrorUso("--pago " + codigo + "=0 no mueve nada: nada se guardó");
  v.operador = cajeroDe(c);
  const std::int32_t sesionVenta = sesionDeVenta(c);
  exigirTasa(c);
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
      sale ? alrededorDeSalida(c, sesionVenta, v, mov,
                               aprobacionDeSalida(c, "sacar dinero de la caja"))
           : Alrededor{};
  guardar(c, v, sesionVenta, mov, nullptr, alrededor);
  return mostrarGuardado(c, mov.TransID);
}

int entrada(Contexto& c) {
  return moverEfectivo(c, kEntrada);
}

int salidaDeCaja(Contexto& c) {
  return moverEfectivo(c, kSalida);
}

const std::string& clave(Contexto& c) {
  return c.args.posicionales().front();
}

// The server's roles: their SQL shown, or run in one transaction.
int roles(Contexto& c) {
  const auto sentencias = sentenciasDeRoles();
  if (c.args.bandera("mostrar-roles")) {
    for (const auto& s : sentencias)
      c.out << s << ";\n";
    return kExito;
  }
  c.db->EnTransaccion([&] {
    for (const auto& s : sentencias)
      c.db->ExecuteSQL(s);
  });
  salida(c).mensaje(
      "Roles caja_caja (las cajas) y caja_admin (el administrador) listos: déselos a cada "
      "usuario con GRANT caja_caja TO USUARIO");
  return kExito;
}

int init(Contexto& c) {
  if (const auto m = c.args.entero("maquina", 1, 32767))
    fijarMaquina(static_cast<std::int32_t>(*m));
  if (c.args.bandera("demo"))
    crearDemo(*c.db);
  if (c.args.bandera("roles") || c.args.bandera("mostrar-roles"))
    return roles(c);
  salida(c).mensaje(c.args.bandera("demo")
                        ? "Base de datos lista"
                        : "Base de datos lista. Fije los datos de la empresa con caja empresa "
                          "--nombre NOMBRE --rif RIF [--direccion TEXTO] [--especial --igtf "
                          "PORCENTAJE], y el número de esta caja con caja maquina N");
  return kExito;
}

int cobrar(Contexto& c) {
  return venderDesde(c, nullptr);
}

int retomar(Contexto& c) {
  return venderDesde(c, &clave(c));
}

int saldo(Contexto& c) {
  SaldoCaja s;
  s.load(estaMaquina(c));
  salida(c).saldo(s);
  return kExito;
}

// A movement by its number, by the document it charged, or by the number it
// had in the till's journal (the server's once sent, the journal's before).
int movimiento(Contexto& c) {
  CVarelta mov;
  bool hallado = false;
  if (!c.args.posicionales().empty() + c.args.valor("documento").has_value() +
          c.args.valor("local").has_value() !=
      1)
    throw ErrorUso("Indique uno: NUMERO, --documento TIPO:NUMERO o --local NUMERO");
  if (const auto doc = c.args.valor("documento")) {
    const auto [tipo, numero] = parDe(*doc, "documento", ':');
    hallado = mov.LoadFromDocumento(
                  tipo, static_cast<std::int32_t>(enteroDe(numero, "--documento", 0, kMaximo32))) &&
              mov.load(mov.TransID);
  } else if (const auto local = c.args.entero("local", 1, kMaximo32)) {
    exigirServidor(c);
    const std::int32_t enServidor = numeroEnServidor(*c.db, static_cast<std::int32_t>(*local));
    if (enServidor == 0)
      c.out << "Pendiente de envío: el movimiento del diario de esta caja\n";
    else if (enServidor > 0)
      c.out << "Enviado: movimiento " << enServidor << " del servidor\n";
    hallado = enServidor >= 0 && mov.load(static_cast<std::int32_t>(*local));
  } else {
    const std::int32_t n = numeroDondeCorre(c, c.args.posicionales().front());
    hallado = n > 0 && mov.load(n);
  }
  if (!hallado)
    throw Rechazo("Movimiento no encontrado");
  salida(c).movimiento(mov, vueltoDe(c, mov.TransID), numeroVisible(c, mov.TransID));
  return kExito;
}

int sincronizar(Contexto& c) {
  // Both ways: what waits goes to the server, and the journal takes a fresh
  // copy of what a sale reads.
  Envio envio;
  if (const auto diario = abrirDiario(false)) {
    envio = app::sincronizar(*c.db, *diario);
    copiarReferencias(*c.db, *diario);
  }
  salida(c).envio(envio);
  avisarEnvio(envio);
  if (!envio.fallidos.empty())
    return kError;
  const auto diario = abrirDiario(false);
  return diario && !conflictos(*diario, false).empty() ? kRechazado : kExito;
}

int pendientesDeEnvio(Contexto& c) {
  salida(c).pendientes(pendientes(*c.db), conflictos(*c.db, false));
  return kExito;
}

// The documents the database holds as charged, not voided, at more than one
// till, one line each: "FAC 1002: movimientos 3 (máquina 1), 4 (máquina 2)".
std::vector<std::string> documentosRepetidos(HostSql& db) {
  const std::string cobrado =
      "FROM MovimientosCaja M LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID WHERE "
      "A.TransID IS NULL AND COALESCE(M.Clasificacion, '') = '' AND COALESCE(M.TipoDocumento, "
      "'') <> '' AND M.NumeroDocumento <> 0";
  auto rs = db.openrecordset(
      "SELECT M.TipoDocumento, M.NumeroDocumento, M.TransID, M.machineID " + cobrado +
      " AND EXISTS (SELECT 1 FROM MovimientosCaja O LEFT JOIN hostAnulaciones B ON B.TransID = "
      "O.TransID WHERE B.TransID IS NULL AND COALESCE(O.Clasificacion, '') = '' AND "
      "O.TipoDocumento = M.TipoDocumento AND O.NumeroDocumento = M.NumeroDocumento AND "
      "O.machineID <> M.machineID) ORDER BY M.TipoDocumento, M.NumeroDocumento, M.TransID");
  std::vector<std::string> lineas;
  std::string documento;
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string este = NzTexto(rs->Fields(0)) + " " + std::to_string(NzLong(rs->Fields(1)));
    const std::string movimiento = std::to_string(NzLong(rs->Fields(2))) + " (máquina " +
                                   std::to_string(NzLong(rs->Fields(3))) + ")";
    if (este != documento)
      lineas.push_back(este + ": movimientos " + movimiento);
    else
      lineas.back() += ", " + movimiento;
    documento = este;
  }
  return lineas;
}

// A supervisor acknowledges a conflict of this till: the journal keeps who
// and when, and the trail records it (the server's when it answers).
void resolverConflicto(Contexto& c, HostSql& diario, std::int32_t numero) {
  auto rs = diario.openrecordset(
      "SELECT Detalle, MachineID FROM hostConflictos WHERE id = ? AND ResueltoPor = ''", {numero});
  if (rs->Eof())
    throw Rechazo("No hay ningún conflicto " + std::to_string(numero) + " sin resolver");
  Asiento a;
  a.maquina = NzLong(rs->Fields(1));
  a.accion = "conflicto resuelto";
  a.detalle = "conflicto " + std::to_string(numero) + ": " + NzTexto(rs->Fields(0));
  a.aprobador = aprobacion(c, "dar por resuelto el conflicto " + std::to_string(numero),
                           nivelExigido("NivelAprobacion"));
  const auto marcar = [&] {
    diario.ExecuteSQL("UPDATE hostConflictos SET ResueltoPor = ?, ResueltoEl = ? WHERE id = ?",
                      {a.aprobador, Fecha::now().toIsoText(), numero});
  };
  c.db->EnTransaccion([&] {
    anotar(*c.db, a);
    if (c.db.get() == &diario)
      marcar();
  });
  if (c.db.get() != &diario)
    marcar();
  salida(c).mensaje("Conflicto " + std::to_string(numero) + " resuelto, autorizado por " +
                    a.aprobador);
}

int conflictosDeCaja(Contexto& c) {
  const auto diario = c.enDiario ? c.db : abrirDiario(false);
  if (const auto n = c.args.entero("resolver", 1, kMaximo32)) {
    if (!diario)
      throw Rechazo("Esta caja no tiene conflictos que resolver");
    resolverConflicto(c, *diario, static_cast<std::int32_t>(*n));
    return kExito;
  }
  salida(c).conflictos(
      diario ? conflictos(*diario, c.args.bandera("todos")) : std::vector<Conflicto>{},
      c.enDiario ? std::vector<std::string>{} : documentosRepetidos(*c.db));
  return kExito;
}

// The whole catalogue as one text, to tell whether the dialog changed it.
std::string catalogo(Contexto& c) {
  std::string texto;
  auto rs = c.db->openrecordset("SELECT * FROM MediosPago ORDER BY Codigo");
  for (; !rs->Eof(); rs->MoveNext())
    for (int i = 0; i < rs->FieldCount(); ++i)
      texto += NzTexto(rs->Fields(i)) + '\x1f';
  return texto;
}

int medios(Contexto& c) {
  if (c.args.bandera("editar")) {
    if (!c.conPantalla)
      throw ErrorUso("No hay pantalla para editar el catálogo");
    instalarDialogosQt();
    const std::string antes = catalogo(c);
    CServiciosCaja servicios;
    servicios.Init(Variant(), c.db);
    servicios.DefinirMediosPago();
    const int estado = QApplication::exec() == 0 ? kExito : kError;
    if (catalogo(c) != antes) {
      Asiento a;
      a.maquina = maquinaDe(c);
      a.accion = "catalogo";
      a.detalle = "medios de pago cambiados en el diálogo";
      anotarAparte(*c.db, a);
    }
    return estado;
  }
  std::vector<std::shared_ptr<CMedioPago>> lista;
  auto rs = c.db->openrecordset("SELECT * FROM MediosPago ORDER BY posicion, Codigo");
  for (; !rs->Eof(); rs->MoveNext()) {
    auto m = std::make_shared<CMedioPago>();
    m->loadInstance(*rs);
    lista.push_back(m);
  }
  // National cash is always there, whether or not the catalogue has a row for it.
  if (std::none_of(lista.begin(), lista.end(),
                   [](const auto& m) { return equalsIgnoreCase(m->codigo, "EFE"); })) {
    auto efectivo = std::make_shared<CMedioPago>();
    efectivo->codigo = "EFE";
    efectivo->Titulo = "Efectivo";
    efectivo->Descripcion = "Efectivo en moneda nacional";
    lista.insert(lista.begin(), efectivo);
  }
  salida(c).medios(lista);
  return kExito;
}

int aparcar(Contexto& c) {
  const auto lista = pagos(c);
  if (lista.empty())
    throw ErrorUso("Nada que aparcar: indique --pago CODIGO=MONTO");
  if (CLng(c.db->ReadScalar("SELECT COUNT(*) FROM saveMovsCaja WHERE clave = ?", {clave(c)})) > 0)
    throw Rechazo("La clave " + clave(c) + " ya está en uso: retómela, o descártela con caja " +
                  "revertir " + clave(c));
  CVarelta mov;
  for (const auto& [codigo, monto] : lista)
    mov.colDetalles->Add(lineaDe(codigo, monto));
  c.db->EnTransaccion([&] { TempVarelta().Save(clave(c), mov); });
  salida(c).lineas(clave(c), *mov.colDetalles);
  return kExito;
}

int revertir(Contexto& c) {
  TempVarelta().revertir(clave(c));
  salida(c).mensaje("Referencia " + clave(c) + " descartada.");
  return kExito;
}

// Registering or changing who may act: approved by a supervisor once the
// shop has one (the first supervisor registers alone), and recorded in the
// trail, never the PIN. `cambio` makes the change, given the new PIN when
// `conPin`, and names the act for the trail.
void cambiarPersonas(Contexto& c, const std::string& que, const std::string& detalle, int nivel,
                     bool conPin, const std::function<std::string(const std::string&)>& cambio) {
  Asiento a;
  a.maquina = maquinaDe(c);
  a.detalle = detalle;
  if (haySupervisores(c))
    a.aprobador = aprobacion(c, que, nivel);
  // Never from the command line, where every local user can read it.
  const std::string pin = conPin ? nuevoPin() : "";
  c.db->EnTransaccion([&] {
    a.accion = cambio(pin);
    anotar(*c.db, a);
  });
}

const std::string& nombre(Contexto& c) {
  return c.args.posicionales().front();
}

int supervisor(Contexto& c) {
  if (!c.args.bandera("agregar") || c.args.posicionales().empty())
    throw ErrorUso("Uso: caja supervisor --agregar NOMBRE [--nivel N]");
  const auto nivel = static_cast<int>(c.args.entero("nivel", 0, 9).value_or(5));
  const std::string detalle = "supervisor " + nombre(c) + " nivel " + std::to_string(nivel);
  cambiarPersonas(c, "registrar al " + detalle, detalle,
                  std::max(nivel, nivelExigido("NivelAprobacion")), true,
                  [&](const std::string& pin) {
                    const bool habia = personaDe(*c.db, Rol::Supervisor, nombre(c)).has_value();
                    agregarSupervisor(*c.db, nombre(c), pin, nivel);
                    return habia ? "cambio de supervisor" : "alta de supervisor";
                  });
  salida(c).mensaje("Supervisor " + nombre(c) + " registrado");
  return kExito;
}

int cajero(Contexto& c) {
  const bool agregar = c.args.bandera("agregar"), quitar = c.args.bandera("quitar");
  if (!agregar && !quitar) {
    if (!c.args.posicionales().empty())
      throw ErrorUso("Uso: caja cajero [--agregar NOMBRE | --quitar NOMBRE]");
    salida(c).nombres(nombresDe(*c.db, Rol::Cajero));
    return kExito;
  }
  if (agregar == quitar || c.args.posicionales().empty())
    throw ErrorUso("Uso: caja cajero [--agregar NOMBRE | --quitar NOMBRE]");
  const std::string detalle = "cajero " + nombre(c);
  cambiarPersonas(c, (agregar ? "registrar al " : "dar de baja al ") + detalle, detalle,
                  nivelExigido("NivelAprobacion"), agregar, [&](const std::string& pin) {
                    if (quitar && !quitarCajero(*c.db, nombre(c)))
                      throw Rechazo("No hay ningún cajero llamado " + nombre(c));
                    if (quitar)
                      return "baja de cajero";
                    const bool habia = personaDe(*c.db, Rol::Cajero, nombre(c)).has_value();
                    agregarCajero(*c.db, nombre(c), pin);
                    return habia ? "cambio de cajero" : "alta de cajero";
                  });
  salida(c).mensaje("Cajero " + nombre(c) + (agregar ? " registrado" : " dado de baja"));
  return kExito;
}

int auditoria(Contexto& c) {
  const auto filas = asientos(*c.db);
  if (!c.args.bandera("verificar")) {
    salida(c).auditoria(filas, c.args.bandera("csv"));
    return kExito;
  }
  const Verificacion v = verificar(filas);
  if (v.rotura)
    throw Rechazo("La auditoría está alterada: la fila " + std::to_string(v.rotura->fila) + " " +
                  v.rotura->motivo + " (" + std::to_string(v.filas) +
                  " filas íntegras antes de ella)");
  // A row a till's login wrote for another machine: the chain holds, and
  // yet the row says something its writer could not know.
  const auto ajenas = filasAjenas(*c.db, filas);
  std::string dichas;
  for (const auto& linea : ajenas)
    dichas += "\n" + linea;
  if (!ajenas.empty())
    throw Rechazo("La cadena de la auditoría está íntegra (" + std::to_string(v.filas) +
                  " filas), pero hay filas escritas por la caja de otra máquina:" + dichas);
  salida(c).mensaje("La auditoría está íntegra: " + std::to_string(v.filas) + " filas");
  return kExito;
}

using Ejecutor = int (*)(Contexto&);

const Opcion kOperador{"operador", "O",
                       "el cajero que lo hace; con cajeros registrados, su PIN se pide"};
const Opcion kAutoriza{"autoriza", "SUPERVISOR",
                       "el supervisor que lo autoriza; su PIN se pide (en pantalla, el diálogo)"};
const Opcion kMaquina{"maquina", "N", "la máquina de la caja (por omisión la de esta caja)"};
const Opcion kLocal{"local", "NUMERO", "el movimiento con ese número en el diario de esta caja"};

const Opcion kSesion{"sesion", "S", "sesión de la caja (por omisión la única abierta)"};
const Opcion kForzar{"forzar", nullptr, "aunque deje la caja con saldo negativo"};
const Opcion kPagoMovido{"pago", "CODIGO=MONTO", "lo que se mueve de ese medio, en su moneda",
                         true};

const Opcion kImprimir{"imprimir", nullptr,
                       "imprime el recibo al guardar: en --impresora, o como texto"};
const Opcion kImpresora{"impresora", "RUTA", "la impresora ESC/POS: un dispositivo o un archivo"};
const Opcion kPdf{"pdf", "ARCHIVO", "el informe en PDF"};
const Opcion kAncho{"ancho", "COLUMNAS", "del recibo: 32 (58 mm), 42 o 48 (80 mm); 42 si no"};

const std::vector<Opcion> kOpcionesDevolucion = {
    {"monto", "M", "monto devuelto sin impuesto"},
    {"iva", "I", "impuesto devuelto (por omisión 0)"},
    {"titulo", "T", "título de la ventana y descripción del movimiento"},
    {"motivo", "TEXTO", "por qué se devuelve: la descripción del movimiento y su recibo"},
    kSesion,
    kOperador,
    {"documento", "TIPO:NUMERO", "el documento que se devuelve"},
    {"entidad", "TIPO:CODIGO", "cliente (por omisión CLI:C0001)"},
    {"pago", "CODIGO=MONTO", "lo entregado en ese medio (EFE: efectivo)", true},
    {"aceptar", nullptr, "teclear lo entregado en el diálogo sin mostrarlo y aceptar"},
    kForzar,
    kAutoriza,
    kImprimir,
    kImpresora,
    kAncho,
};

const std::vector<Opcion> kOpcionesCobro = {
    {"venta", "V", "monto de la venta sin impuesto"},
    {"iva", "I", "impuesto de la venta (por omisión 0)"},
    {"credito", "C", "crédito que se descuenta (por omisión 0)"},
    {"titulo", "T", "título de la ventana y descripción del movimiento"},
    kSesion,
    kOperador,
    {"documento", "TIPO:NUMERO", "documento que se cobra; uno ya cobrado se rechaza"},
    {"repetir", nullptr, "cobrar un documento ya cobrado"},
    {"entidad", "TIPO:CODIGO", "cliente (por omisión CLI:C0001)"},
    {"pago", "CODIGO=MONTO", "monto tecleado en la entrada del medio (EFE: efectivo)", true},
    {"aceptar", nullptr, "teclear los pagos en el diálogo sin mostrarlo y aceptar"},
    {"vuelto", "CODIGO=MONTO",
     "vuelto entregado en ese medio (CREDITO: acreditado al cliente); con el vuelto repartido",
     true},
    kImprimir,
    kImpresora,
    kAncho,
};

struct Comando {
  DefinicionComando definicion;
  Ejecutor ejecutor;
};

const std::vector<Comando>& comandos() {
  static const std::vector<Comando> lista = {
      {{"init",
        "[--demo] [--maquina N] [--roles | --mostrar-roles]",
        "crea la base de datos; con --demo, catálogo, sesión 1 en la máquina 1, tasa 36.50 y "
        "empresa de ejemplo",
        {{"demo", nullptr, "datos de demostración"},
         {"maquina", "N", "el número de máquina de esta caja (caja maquina N lo cambia)"},
         {"roles", nullptr, "en un servidor, crea los roles caja_caja y caja_admin"},
         {"mostrar-roles", nullptr, "muestra el SQL de esos roles sin ejecutarlo"}}},
       init},
      {{"maquina",
        "[N] | N --login USUARIO",
        "muestra o fija el número de máquina de esta caja, el que usan saldo, cierre, sesion "
        "abrir y la sesión por omisión; con --login, en el servidor, ata un usuario a su máquina",
        {{"login", "USUARIO",
          "el usuario del servidor de la caja N, que desde entonces no toca otra máquina"}},
        0,
        1},
       comandoMaquina},
      {{"empresa",
        "[--nombre N] [--rif R] [--direccion D] [--especial | --no-especial] [--igtf P]",
        "muestra los datos de la empresa o cambia los que se indiquen, con la autorización de un "
        "supervisor",
        {{"nombre", "NOMBRE", "la razón social, como la imprimen recibos e informes"},
         {"rif", "RIF", "el registro de información fiscal"},
         {"direccion", "TEXTO", "la dirección fiscal"},
         {"especial", nullptr, "es contribuyente especial: cobra IGTF"},
         {"no-especial", nullptr, "no es contribuyente especial"},
         {"igtf", "PORCENTAJE",
          "el porcentaje de IGTF, de 0 a 100 (3 es el 3 %); uno mayor que 0 la hace "
          "contribuyente especial, salvo --no-especial"},
         kAutoriza}},
       empresa},
      {{"tasa", "[VALOR]", "muestra o fija la tasa de cambio de la caja", {}, 0, 1}, tasa},
      {{"sesion",
        "[abrir --maquina N [--operador O] | cerrar [--sesion S]]",
        "lista las sesiones abiertas, abre una o cierra una",
        {kMaquina, kOperador, {"sesion", "S", "la sesión que se cierra"}},
        0,
        1},
       sesion},
      {{"cobrar", "--venta V [opciones]", "cobra una venta y guarda el movimiento", kOpcionesCobro},
       cobrar},
      {{"devolver", "--monto M [opciones]",
        "devuelve una venta: lo entregado por medio sale de la caja", kOpcionesDevolucion},
       devolver},
      {{"entrada",
        "--pago CODIGO=MONTO ... [--motivo T]",
        "entrada de efectivo sin venta (el fondo de apertura, por ejemplo)",
        {kPagoMovido,
         {"motivo", "T", "por qué entra"},
         kOperador,
         kSesion,
         kImprimir,
         kImpresora,
         kAncho}},
       entrada},
      {{"salida",
        "--pago CODIGO=MONTO ... --motivo T",
        "salida de efectivo sin venta (a la caja fuerte, un pago a un proveedor)",
        {kPagoMovido,
         {"motivo", "T", "por qué sale"},
         kOperador,
         kSesion,
         kForzar,
         kAutoriza,
         kImprimir,
         kImpresora,
         kAncho}},
       salidaDeCaja},
      {{"aparcar",
        "CLAVE --pago CODIGO=MONTO ...",
        "aparca líneas de pago bajo CLAVE",
        {{"pago", "CODIGO=MONTO", "línea aparcada", true}},
        1,
        1},
       aparcar},
      {{"retomar", "CLAVE --venta V [opciones]",
        "cobra una venta empezando por las líneas aparcadas bajo CLAVE, que se liberan al "
        "guardarla",
        kOpcionesCobro, 1, 1},
       retomar},
      {{"revertir", "CLAVE", "descarta lo aparcado bajo CLAVE", {}, 1, 1}, revertir},
      {{"movimiento",
        "NUMERO | --documento TIPO:NUMERO | --local NUMERO",
        "un movimiento guardado con sus líneas, totales y conceptos",
        {{"documento", "TIPO:NUMERO", "el movimiento que cobró ese documento"}, kLocal},
        0,
        1},
       movimiento},
      {{"recibo",
        "NUMERO | --local NUMERO [--ancho N] [--impresora RUTA] [--pdf ARCHIVO]",
        "el recibo de un movimiento para papel térmico: texto, ESC/POS o PDF",
        {kLocal, kAncho, kImpresora, {"pdf", "ARCHIVO", "el recibo en PDF, del ancho del rollo"}},
        0,
        1},
       recibo},
      {{"movimientos",
        "[--desde FECHA] [--hasta FECHA] [--sesion S] [--operador O] [--csv]",
        "los movimientos, con los totales por medio y el IGTF",
        {{"desde", "AAAA-MM-DD", "desde ese día"},
         {"hasta", "AAAA-MM-DD", "hasta ese día, inclusive"},
         {"sesion", "S", "solo los de esa sesión"},
         {"operador", "O", "solo los de ese operador"},
         {"csv", nullptr, "salida en CSV"}}},
       movimientos},
      {{"anular",
        "NUMERO | --local NUMERO [--motivo TEXTO]",
        "anula un movimiento: revierte su transacción de caja y lo marca anulado",
        {{"motivo", "TEXTO", "por qué se anula"}, kLocal, kOperador, kAutoriza},
        0,
        1},
       anular},
      {{"sincronizar",
        "",
        "envía al servidor lo que espera en el diario de esta caja, del más antiguo al más "
        "nuevo, y renueva su copia; sale con 1 si un documento quedó cobrado en más de una caja",
        {}},
       sincronizar},
      {{"pendientes",
        "",
        "lo guardado en esta caja que espera su envío al servidor, y los conflictos sin resolver",
        {}},
       pendientesDeEnvio},
      {{"conflictos",
        "[--todos] | --resolver N --autoriza SUPERVISOR",
        "los conflictos de esta caja (un documento cobrado en dos cajas, un movimiento que el "
        "servidor rechazó) y los documentos cobrados en más de una caja; un supervisor da uno "
        "por resuelto",
        {{"todos", nullptr, "también los ya resueltos"},
         {"resolver", "N", "da por resuelto el conflicto N"},
         kAutoriza}},
       conflictosDeCaja},
      {{"enviar",
        "[--continuo]",
        "envía al servidor lo que espera en el diario de esta caja, reintentando mientras el "
        "servidor no está; una caja a la vez",
        {{"continuo", nullptr, "no terminar nunca: para un servicio que corre todo el día"}}},
       enviar},
      {{"saldo", "[--maquina N]", "el saldo de la caja por medio, con su tasa", {kMaquina}}, saldo},
      {{"cierre",
        "[--maquina N] [--contado CODIGO=MONTO ...] [--denominaciones CODIGO:VxC,...] "
        "[--parcial] [--pdf ARCHIVO]",
        "arqueo de cierre: esperado según el saldo, contado y diferencia por medio; queda "
        "registrado",
        {kMaquina,
         kOperador,
         kAutoriza,
         {"contado", "CODIGO=MONTO", "lo contado de un medio, en su moneda", true},
         {"denominaciones", "CODIGO:VALORxCANTIDAD,...",
          "lo contado de un medio por denominaciones", true},
         {"parcial", nullptr, "un arqueo a mitad del turno: no queda registrado"},
         {"forzar", nullptr, "aunque queden movimientos de esta caja sin enviar al servidor"},
         kPdf}},
       cierre},
      {{"cierres",
        "[NUMERO [--pdf ARCHIVO]] [--maquina N]",
        "los cierres registrados, o uno con su informe en PDF",
        {kMaquina, kPdf},
        0,
        1},
       cierres},
      {{"informe",
        "--desde FECHA --hasta FECHA [--maquina N] [--csv | --pdf ARCHIVO | --png ARCHIVO]",
        "por día: lo vendido por medio, devoluciones, anulaciones, salidas, IGTF y las "
        "diferencias de los cierres",
        {{"desde", "AAAA-MM-DD", "desde ese día"},
         {"hasta", "AAAA-MM-DD", "hasta ese día, inclusive"},
         {"maquina", "N", "solo esa máquina (por omisión todas)"},
         {"csv", nullptr, "salida en CSV"},
         kPdf,
         {"png", "ARCHIVO", "el gráfico en PNG"},
         {"tamano", "ANCHOxALTO", "del PNG, en píxeles (por omisión 1200x700)"}}},
       informe},
      {{"medios",
        "[--editar]",
        "el catálogo de medios de pago",
        {{"editar", nullptr, "abrir el diálogo del catálogo"}}},
       medios},
      {{"supervisor",
        "--agregar NOMBRE [--nivel N]",
        "registra un supervisor; el PIN se lee de la entrada estándar",
        {{"agregar", nullptr, "agregar o cambiar un supervisor"},
         {"nivel", "N", "nivel de autorización, de 0 a 9 (por omisión 5)"},
         kAutoriza},
        1,
        1},
       supervisor},
      {{"cajero",
        "[--agregar NOMBRE | --quitar NOMBRE]",
        "lista los cajeros, registra uno (el PIN se lee de la entrada estándar) o lo da de baja",
        {{"agregar", nullptr, "agregar un cajero o cambiar su PIN"},
         {"quitar", nullptr, "dar de baja a un cajero"},
         kAutoriza},
        0,
        1},
       cajero},
      {{"auditoria",
        "[--verificar] [--csv]",
        "el registro de auditoría; --verificar comprueba que ninguna fila fue cambiada ni "
        "quitada",
        {{"verificar", nullptr, "comprobar la cadena de la auditoría"},
         {"csv", nullptr, "salida en CSV"}}},
       auditoria},
  };
  return lista;
}

}  // namespace

std::string tipoDe(const std::string& clasificacion) {
  for (const char* tipo : {kDevolucion, kEntrada, kSalida})
    if (equalsIgnoreCase(clasificacion, tipo))
      return lowerAscii(tipo);
  return "venta";
}

const std::vector<DefinicionComando>& definicionesComandos() {
  static const std::vector<DefinicionComando> lista = [] {
    std::vector<DefinicionComando> d;
    for (const auto& c : comandos())
      d.push_back(c.definicion);
    return d;
  }();
  return lista;
}

int ejecutarComando(Contexto& c) {
  // A receipt's width is checked before anything is saved.
  if (c.args.valor("ancho"))
    columnasRecibo(c);
  for (const auto& comando : comandos())
    if (c.args.comando() == comando.definicion.nombre)
      return comando.ejecutor(c);
  throw ErrorUso("Comando desconocido: " + c.args.comando());
}

}  // namespace caja::app
