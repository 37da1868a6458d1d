#include "app/linea/Comandos.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "app/acciones/EstaCaja.h"
#include "app/acciones/Personas.h"
#include "app/acciones/Venta.h"
#include "app/controles/Autorizacion.h"
#include "app/datos/Carpeta.h"
#include "app/datos/Demo.h"
#include "app/datos/Diario.h"
#include "app/datos/Roles.h"
#include "app/envio/Envio.h"
#include "app/linea/EnLinea.h"
#include "app/linea/Salida.h"
#include "app/ventana/Ventana.h"
#include "caja/base/Texto.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"

namespace caja::app {

namespace {

Salida salida(Contexto& c) {
  return Salida(c.out, c.args.bandera("json"));
}

// The amounts of a repeatable CODIGO=MONTO option, each code in the
// catalogue's spelling whatever letter case was typed; `otro` is a code
// that is not in the catalogue and yet accepted ("CREDITO" of --vuelto).
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

// What every movement of the command line takes: its session, document,
// customer and whether a drawer may go below zero.
void comunDe(Contexto& c, Venta& v) {
  if (const auto s = c.args.entero("sesion", 1, kMaximo32))
    v.sesion = static_cast<std::int32_t>(*s);
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
  v.repetir = c.args.bandera("repetir");
  v.forzar = c.args.bandera("forzar");
}

// The sale as the command line gives it, checked before anything is opened;
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
  comunDe(c, v);
  v.pagos = pagos(c);
  v.vueltos = pagos(c, "vuelto", "CREDITO");
  if (!v.vueltos.empty() && !c.args.bandera("aceptar"))
    throw ErrorUso("--vuelto va con --aceptar: en pantalla el cajero reparte el vuelto");
  return v;
}

// Prints the movement as the database now holds it.
int mostrarGuardado(Contexto& c, std::int32_t transId) {
  CVarelta guardado;
  guardado.load(transId);
  salida(c).movimiento(guardado, vueltoDe(c.db(), transId), numeroVisible(c.almacen, transId));
  if (c.args.bandera("imprimir"))
    imprimirGuardado(c, transId);
  return kExito;
}

int vender(Contexto& c, const std::string* clave) {
  const Venta v = ventaDe(c);
  CobroDeLinea cobro(c.args, c.conPantalla);
  Puesto p = c.puesto();
  return mostrarGuardado(c, vender(p, v, cobro, clave));
}

int cobrar(Contexto& c) {
  return vender(c, nullptr);
}

const std::string& clave(Contexto& c) {
  return c.args.posicionales().front();
}

int retomar(Contexto& c) {
  return vender(c, &clave(c));
}

int devolver(Contexto& c) {
  Venta v = ventaDe(c, "monto");
  v.titulo = c.args.valor("motivo").value_or(c.args.valor("titulo", kTituloDevolucion));
  CobroDeLinea cobro(c.args, c.conPantalla);
  Puesto p = c.puesto();
  return mostrarGuardado(c, devolver(p, v, cobro));
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
  comunDe(c, v);
  Puesto p = c.puesto();
  return mostrarGuardado(c, moverEfectivo(p, v));
}

int entrada(Contexto& c) {
  return moverEfectivo(c, kEntrada);
}

int salidaDeCaja(Contexto& c) {
  return moverEfectivo(c, kSalida);
}

// The server's roles: their SQL shown, or run in one transaction.
int roles(Contexto& c) {
  const auto sentencias = sentenciasDeRoles();
  if (c.args.bandera("mostrar-roles")) {
    for (const auto& s : sentencias)
      c.out << s << ";\n";
    return kExito;
  }
  crearRoles(c.db());
  salida(c).mensaje(
      "Roles caja_caja (las cajas) y caja_admin (el administrador) listos: déselos a cada "
      "usuario con GRANT caja_caja TO USUARIO");
  return kExito;
}

int init(Contexto& c) {
  if (const auto m = c.args.entero("maquina", 1, kMaquinaMaxima))
    fijarMaquina(static_cast<std::int32_t>(*m));
  if (c.args.bandera("demo"))
    crearDemo(c.db());
  if (c.args.bandera("roles") || c.args.bandera("mostrar-roles"))
    return roles(c);
  salida(c).mensaje(c.args.bandera("demo")
                        ? "Base de datos lista"
                        : "Base de datos lista. Fije los datos de la empresa con caja empresa "
                          "--nombre NOMBRE --rif RIF [--direccion TEXTO] [--especial --igtf "
                          "PORCENTAJE], y el número de esta caja con caja maquina N");
  return kExito;
}

int saldo(Contexto& c) {
  SaldoCaja s;
  s.load(estaMaquinaDe(c));
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
    const std::int32_t enServidor = numeroEnServidor(c.db(), static_cast<std::int32_t>(*local));
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
  salida(c).movimiento(mov, vueltoDe(c.db(), mov.TransID), numeroVisible(c.almacen, mov.TransID));
  return kExito;
}

int sincronizar(Contexto& c) {
  const Envio envio = sincronizarCaja(c.db());
  salida(c).envio(envio);
  avisarEnvio(envio);
  if (!envio.fallidos.empty())
    return kError;
  const auto diario = c.almacen.diario();
  return diario && !conflictos(*diario, false).empty() ? kRechazado : kExito;
}

int pendientesDeEnvio(Contexto& c) {
  salida(c).pendientes(pendientes(c.db()), conflictos(c.db(), false));
  return kExito;
}

int conflictosDeCaja(Contexto& c) {
  const auto diario = c.almacen.diario();
  if (const auto n = c.args.entero("resolver", 1, kMaximo32)) {
    if (!diario)
      throw Rechazo("Esta caja no tiene conflictos que resolver");
    Puesto p = c.puesto();
    const std::string aprobador = resolverConflicto(p, *diario, static_cast<std::int32_t>(*n));
    salida(c).mensaje("Conflicto " + std::to_string(*n) + " resuelto, autorizado por " + aprobador);
    return kExito;
  }
  salida(c).conflictos(
      diario ? conflictos(*diario, c.args.bandera("todos")) : std::vector<Conflicto>{},
      c.almacen.enDiario ? std::vector<std::string>{} : documentosRepetidos(c.db()));
  return kExito;
}

int medios(Contexto& c) {
  if (c.args.bandera("editar")) {
    if (!c.conPantalla)
      throw ErrorUso("No hay pantalla para editar el catálogo");
    Puesto p = c.puesto();
    return editarCatalogo(p) ? kExito : kError;
  }
  salida(c).medios(mediosDeLaCaja(c.db()));
  return kExito;
}

int aparcar(Contexto& c) {
  const auto lista = pagos(c);
  if (lista.empty())
    throw ErrorUso("Nada que aparcar: indique --pago CODIGO=MONTO");
  CVarelta aparcado;
  Puesto p = c.puesto();
  aparcar(p, clave(c), lista, aparcado);
  salida(c).lineas(clave(c), *aparcado.colDetalles);
  return kExito;
}

int revertir(Contexto& c) {
  app::revertir(clave(c));
  salida(c).mensaje("Referencia " + clave(c) + " descartada.");
  return kExito;
}

const std::string& nombre(Contexto& c) {
  return c.args.posicionales().front();
}

int supervisor(Contexto& c) {
  if (!c.args.bandera("agregar") || c.args.posicionales().empty())
    throw ErrorUso("Uso: caja supervisor --agregar NOMBRE [--nivel N]");
  Puesto p = c.puesto();
  registrarSupervisor(p, nombre(c), static_cast<int>(c.args.entero("nivel", 0, 9).value_or(5)));
  salida(c).mensaje("Supervisor " + nombre(c) + " registrado");
  return kExito;
}

int cajero(Contexto& c) {
  const bool agregar = c.args.bandera("agregar"), quitar = c.args.bandera("quitar");
  if (!agregar && !quitar) {
    if (!c.args.posicionales().empty())
      throw ErrorUso("Uso: caja cajero [--agregar NOMBRE | --quitar NOMBRE]");
    salida(c).nombres(nombresDe(c.db(), Rol::Cajero));
    return kExito;
  }
  if (agregar == quitar || c.args.posicionales().empty())
    throw ErrorUso("Uso: caja cajero [--agregar NOMBRE | --quitar NOMBRE]");
  Puesto p = c.puesto();
  if (agregar)
    registrarCajero(p, nombre(c));
  else
    darDeBajaCajero(p, nombre(c));
  salida(c).mensaje("Cajero " + nombre(c) + (agregar ? " registrado" : " dado de baja"));
  return kExito;
}

int ventana(Contexto& c) {
  if (!c.conPantalla)
    throw ErrorUso(
        "No hay pantalla para la ventana de la caja (DISPLAY, WAYLAND_DISPLAY o QT_QPA_PLATFORM)");
  return ejecutarVentana(c.args.valor("db"), maquinaElegida(c.args),
                         c.args.valor("operador", "CAJERO"));
}

int auditoria(Contexto& c) {
  const auto filas = asientos(c.db());
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
  const auto ajenas = filasAjenas(c.db(), filas);
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

// Whether --local of a command names a movement it runs on in the journal:
// always (a listing of it), or while the journal holds it unsent (its void
// and its receipt, which go to the server with it).
enum class Local { No, Siempre, MientrasEspera };

struct Comando {
  DefinicionComando definicion;
  Ejecutor ejecutor;
  Acceso acceso;
  Local local = Local::No;
  bool suyos = false;  // opens its data itself, act by act (the window)
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
       init,
       Acceso::Cambia},
      {{"maquina",
        "[N] | N --login USUARIO",
        "muestra o fija el número de máquina de esta caja, el que usan saldo, cierre, sesion "
        "abrir y la sesión por omisión; con --login, en el servidor, ata un usuario a su máquina",
        {{"login", "USUARIO",
          "el usuario del servidor de la caja N, que desde entonces no toca otra máquina"}},
        0,
        1},
       comandoMaquina,
       Acceso::Servidor},
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
       empresa,
       Acceso::Cambia},
      {{"ventana",
        "[--maquina N] [--operador O]",
        "abre la ventana de la caja: ventas, devoluciones, anulaciones y el cierre con el teclado",
        {kMaquina,
         {"operador", "O", "el cajero, mientras la tienda no tenga cajeros registrados"}}},
       ventana,
       Acceso::Servidor,
       Local::No,
       true},
      {{"tasa", "[VALOR]", "muestra o fija la tasa de cambio de la caja", {}, 0, 1},
       tasa,
       Acceso::Cambia},
      {{"sesion",
        "[abrir --maquina N [--operador O] | cerrar [--sesion S]]",
        "lista las sesiones abiertas, abre una o cierra una",
        {kMaquina, kOperador, {"sesion", "S", "la sesión que se cierra"}},
        0,
        1},
       sesion,
       Acceso::Cambia},
      {{"cobrar", "--venta V [opciones]", "cobra una venta y guarda el movimiento", kOpcionesCobro},

       cobrar,
       Acceso::Guarda},
      {{"devolver", "--monto M [opciones]",
        "devuelve una venta: lo entregado por medio sale de la caja", kOpcionesDevolucion},

       devolver,
       Acceso::Guarda},
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
       entrada,
       Acceso::Guarda},
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
       salidaDeCaja,
       Acceso::Guarda},
      {{"aparcar",
        "CLAVE --pago CODIGO=MONTO ...",
        "aparca líneas de pago bajo CLAVE",
        {{"pago", "CODIGO=MONTO", "línea aparcada", true}},
        1,
        1},
       aparcar,
       Acceso::Servidor},
      {{"retomar", "CLAVE --venta V [opciones]",
        "cobra una venta empezando por las líneas aparcadas bajo CLAVE, que se liberan al "
        "guardarla",
        kOpcionesCobro, 1, 1},
       retomar,
       Acceso::Servidor},
      {{"revertir", "CLAVE", "descarta lo aparcado bajo CLAVE", {}, 1, 1},
       revertir,
       Acceso::Servidor},
      {{"movimiento",
        "NUMERO | --documento TIPO:NUMERO | --local NUMERO",
        "un movimiento guardado con sus líneas, totales y conceptos",
        {{"documento", "TIPO:NUMERO", "el movimiento que cobró ese documento"}, kLocal},

        0,
        1},
       movimiento,
       Acceso::Lee,
       Local::Siempre},
      {{"recibo",
        "NUMERO | --local NUMERO [--ancho N] [--impresora RUTA] [--pdf ARCHIVO]",
        "el recibo de un movimiento para papel térmico: texto, ESC/POS o PDF",
        {kLocal, kAncho, kImpresora, {"pdf", "ARCHIVO", "el recibo en PDF, del ancho del rollo"}},
        0,
        1},
       recibo,
       Acceso::Consulta,
       Local::MientrasEspera},
      {{"movimientos",
        "[--desde FECHA] [--hasta FECHA] [--sesion S] [--operador O] [--csv]",
        "los movimientos, con los totales por medio y el IGTF",
        {{"desde", "AAAA-MM-DD", "desde ese día"},
         {"hasta", "AAAA-MM-DD", "hasta ese día, inclusive"},
         {"sesion", "S", "solo los de esa sesión"},
         {"operador", "O", "solo los de ese operador"},
         {"csv", nullptr, "salida en CSV"}}},
       movimientos,
       Acceso::Lee},
      {{"anular",
        "NUMERO | --local NUMERO [--motivo TEXTO]",
        "anula un movimiento: revierte su transacción de caja y lo marca anulado",
        {{"motivo", "TEXTO", "por qué se anula"}, kLocal, kOperador, kAutoriza},

        0,
        1},
       anular,
       Acceso::Cambia,
       Local::MientrasEspera},
      {{"sincronizar",
        "",
        "envía al servidor lo que espera en el diario de esta caja, del más antiguo al más "
        "nuevo, y renueva su copia; sale con 1 si un documento quedó cobrado en más de una caja",
        {}},
       sincronizar,
       Acceso::Servidor},
      {{"pendientes",
        "",
        "lo guardado en esta caja que espera su envío al servidor, y los conflictos sin resolver",
        {}},
       pendientesDeEnvio,
       Acceso::Diario},
      {{"conflictos",
        "[--todos] | --resolver N --autoriza SUPERVISOR",
        "los conflictos de esta caja (un documento cobrado en dos cajas, un movimiento que el "
        "servidor rechazó) y los documentos cobrados en más de una caja; un supervisor da uno "
        "por resuelto",
        {{"todos", nullptr, "también los ya resueltos"},
         {"resolver", "N", "da por resuelto el conflicto N"},
         kAutoriza}},
       conflictosDeCaja,
       Acceso::Consulta},
      {{"enviar",
        "[--continuo]",
        "envía al servidor lo que espera en el diario de esta caja, reintentando mientras el "
        "servidor no está; una caja a la vez",
        {{"continuo", nullptr, "no terminar nunca: para un servicio que corre todo el día"}}},
       enviar,
       Acceso::Diario},
      {{"saldo", "[--maquina N]", "el saldo de la caja por medio, con su tasa", {kMaquina}},
       saldo,
       Acceso::Lee},
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
       cierre,
       Acceso::Cierre},
      {{"cierres",
        "[NUMERO [--pdf ARCHIVO]] [--maquina N]",
        "los cierres registrados, o uno con su informe en PDF",
        {kMaquina, kPdf},

        0,
        1},
       cierres,
       Acceso::Servidor},
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
       informe,
       Acceso::Servidor},
      {{"medios",
        "[--editar]",
        "el catálogo de medios de pago",
        {{"editar", nullptr, "abrir el diálogo del catálogo"}}},
       medios,
       Acceso::Cambia},
      {{"supervisor",
        "--agregar NOMBRE [--nivel N]",
        "registra un supervisor; el PIN se lee de la entrada estándar",
        {{"agregar", nullptr, "agregar o cambiar un supervisor"},
         {"nivel", "N", "nivel de autorización, de 0 a 9 (por omisión 5)"},
         kAutoriza},

        1,
        1},
       supervisor,
       Acceso::Cambia},
      {{"cajero",
        "[--agregar NOMBRE | --quitar NOMBRE]",
        "lista los cajeros, registra uno (el PIN se lee de la entrada estándar) o lo da de baja",
        {{"agregar", nullptr, "agregar un cajero o cambiar su PIN"},
         {"quitar", nullptr, "dar de baja a un cajero"},
         kAutoriza},

        0,
        1},
       cajero,
       Acceso::Cambia},
      {{"auditoria",
        "[--verificar] [--csv]",
        "el registro de auditoría; --verificar comprueba que ninguna fila fue cambiada ni "
        "quitada",
        {{"verificar", nullptr, "comprobar la cadena de la auditoría"},
         {"csv", nullptr, "salida en CSV"}}},
       auditoria,
       Acceso::Servidor},
  };
  return lista;
}

const Comando& comandoDe(const LineaComandos& args) {
  for (const auto& comando : comandos())
    if (args.comando() == comando.definicion.nombre)
      return comando;
  throw ErrorUso("Comando desconocido: " + args.comando());
}

// What the line asks that only a till on a server has, refused before a
// database is opened, so that none is made for nothing.
void exigirAntesDeAbrir(const LineaComandos& args, bool conServidor) {
  if (conServidor)
    return;
  const std::string& comando = args.comando();
  if (comando == "enviar")
    throw ErrorUso("caja enviar es de una caja con servidor: --db postgresql://...");
  if (comando == "init" && (args.bandera("roles") || args.bandera("mostrar-roles")))
    throw ErrorUso("Los roles son de un servidor: --db postgresql://...");
  if (comando == "cierre" && args.bandera("forzar"))
    throw ErrorUso(
        "--forzar cierra una caja con servidor aunque le queden movimientos sin enviar; en un "
        "archivo no hay nada que forzar");
}

// A command that names with --local a movement the journal holds unsent
// runs on the journal.
bool nombraDelDiario(const Comando& comando, const LineaComandos& args) {
  const auto local = args.entero("local", 1, kMaximo32);
  return local &&
         (comando.local == Local::Siempre || (comando.local == Local::MientrasEspera &&
                                              esperaEnDiario(static_cast<std::int32_t>(*local))));
}

// A fault-test hook: with CAJA_PRUEBA_PAUSA_MS set, the post procedure says
// so on standard error and waits, so that a test can kill the program in the
// middle of a save.
void instalarPausaDePrueba(HostSql& db) {
  const char* pausa = std::getenv("CAJA_PRUEBA_PAUSA_MS");
  if (!pausa)
    return;
  const int ms = std::atoi(pausa);
  db.RegistrarProcedimiento("PostVarelta", [ms](std::vector<Variant>&) {
    std::cerr << "guardando" << std::endl;
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    return Variant();
  });
}

// A read of the server says so, and what waits at this till, which the
// server does not have yet: after the server's balances and listings, in
// text, with what it adds to the drawers; in JSON, CSV and for one
// movement only on standard error, so that the document stays the
// server's.
void decirOrigen(Contexto& c) {
  const auto diario = c.almacen.diario();
  const auto lista = diario ? pendientes(*diario) : std::vector<Pendiente>{};
  if (lista.empty()) {
    std::cerr << "Cifras del servidor" << std::endl;
    return;
  }
  std::cerr << "Cifras del servidor; esperan envío en esta caja " << lista.size()
            << " movimientos (caja pendientes)" << std::endl;
  if (!c.args.bandera("json") && !c.args.bandera("csv") && c.args.comando() != "movimiento")
    Salida(c.out, false).esperanEnvio(lista, aporteDe(*diario));
}

}  // namespace

Puesto Contexto::puesto() {
  return {almacen, firmas, [this] { return maquinaDe(*this); }};
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

int ejecutarComando(const LineaComandos& args, bool conPantalla, Firmas& firmas) {
  const Comando& comando = comandoDe(args);
  Contexto c{args, {}, std::cout, conPantalla, firmas};
  // This till's number lives in its settings, not in a database.
  if (args.comando() == "maquina" && !args.valor("login"))
    return comandoMaquina(c);
  if (comando.suyos)
    return comando.ejecutor(c);
  const auto db = args.valor("db");
  const bool conServidor = db && PostgresFactoria::EsUri(*db);
  exigirAntesDeAbrir(args, conServidor);
  c.almacen = PoliticaCaja::abrir(db, comando.acceso, args.comando() == "init",
                                  conServidor && nombraDelDiario(comando, args));
  if (c.almacen.sinServidor)
    std::cerr << "Sin conexión con el servidor: cifras locales de esta caja" << std::endl;
  instalarVerificador(c.db(), firmas);
  instalarPausaDePrueba(c.db());
  // A receipt's width is checked before anything is saved.
  if (args.valor("ancho"))
    columnasRecibo(args);
  const int estado = comando.ejecutor(c);
  if (estado != kExito)
    return estado;
  PoliticaCaja::despues(c.almacen, comando.acceso);
  if (c.almacen.enServidor() && comando.acceso == Acceso::Lee)
    decirOrigen(c);
  return estado;
}

}  // namespace caja::app
