#include "app/Comandos.h"

#include <QApplication>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "app/Demo.h"
#include "app/Salida.h"
#include "app/Supervisores.h"
#include "base/Conversiones.h"
#include "base/Decimal.h"
#include "dialogs/DialogosQt.h"
#include "dialogs/frmVarelta.h"
#include "movement/TempVarelta.h"
#include "service/CServiciosCaja.h"
#include "service/General.h"

namespace caja::app {

namespace {

CajaError fueraDeRango(const std::string& que) {
  return CajaError(err::kDesbordamiento, "caja",
                   que +
                       " está fuera del rango de la moneda (-922337203685477.5807 a "
                       "922337203685477.5807)");
}

// An amount typed on the command line: four decimals at most, '.' as the
// decimal point. A well-formed amount beyond the currency range is an error
// of its own (exit 3), not a typing mistake.
Currency monto(const std::string& texto, const char* opcion) {
  if (const auto c = Currency::parse(texto))
    return *c;
  if (const auto d = Decimal::parseRegional(texto); d && d->escala <= 4)
    throw fueraDeRango(std::string("El monto ") + texto + " de --" + opcion);
  throw std::runtime_error(std::string("Monto no válido para --") + opcion + ": " + texto);
}

Currency montoOpcional(const LineaComandos& a, const char* opcion) {
  const auto v = a.valor(opcion);
  return v ? monto(*v, opcion) : Currency{};
}

std::int32_t entero(const std::string& texto, const char* que) {
  try {
    std::size_t fin = 0;
    const long n = std::stol(texto, &fin);
    if (fin == texto.size())
      return static_cast<std::int32_t>(n);
  } catch (const std::exception&) {
  }
  throw std::runtime_error(std::string("Número no válido para ") + que + ": " + texto);
}

Salida salida(Contexto& c) {
  return Salida(c.out, c.args.bandera("json"));
}

// The sale's amounts typed into the real dialog, unseen, then accepted.
std::shared_ptr<CVarelta> cobrarConGuion(Contexto& c, Currency venta, Currency iva,
                                         Currency credito) {
  frmVarelta dialogo;
  dialogo.setWindowTitle(QString::fromStdString(c.args.valor("titulo", "Cobro")));
  dialogo.preparar(RedondearMonto(Variant(venta), 2), RedondearMonto(Variant(iva), 2),
                   RedondearMonto(Variant(credito), 2));
  for (const auto& pago : c.args.valores("pago")) {
    const auto [codigo, cuanto] = parDe(pago, "pago");
    if (!dialogo.teclear(codigo, monto(cuanto, "pago")))
      throw std::runtime_error("El medio de pago " + codigo + " no tiene entrada en el cobro");
  }
  return dialogo.aceptarGuion() ? dialogo.resultado() : nullptr;
}

// The movement as it was before a failed try: not saved, lines without ids.
// Save makes a new drawer transaction of its own on the next try.
void olvidarGuardado(CVarelta& mov) {
  mov.TransID = 0;
  for (const auto& d : *mov.colDetalles)
    d->Id = 0;
}

// Saves and commits in one host transaction: a failed save leaves nothing,
// and a save that collided with another till's runs again.
void guardar(Contexto& c, CVarelta& mov) {
  const auto [tipoDoc, numDoc] = parDe(c.args.valor("documento", "FAC:0"), "documento");
  const auto [tipoEnt, codEnt] = parDe(c.args.valor("entidad", "CLI:C0001"), "entidad");
  const std::int32_t sesion = entero(c.args.valor("sesion", "1"), "--sesion");
  const std::int32_t numero = entero(numDoc, "--documento");
  c.db->EnTransaccion(
      [&] {
        mov.Save(sesion, c.args.valor("operador", "CAJERO"), tipoDoc, numero, tipoEnt, codEnt,
                 c.args.valor("titulo", "Cobro"), Fecha::today());
        mov.commitTransEf();
      },
      [&] { olvidarGuardado(mov); });
}

// The amount due must itself be a currency amount before the dialog sums it.
void comprobarTotal(Currency venta, Currency iva, Currency credito) {
  try {
    (void)(venta + iva - credito);
  } catch (const CajaError&) {
    throw fueraDeRango("El total de la venta " + venta.toMachineText() + " + " +
                       iva.toMachineText() + " - " + credito.toMachineText());
  }
}

std::shared_ptr<CVarelta> movimientoDePagos(Contexto& c) {
  auto mov = std::make_shared<CVarelta>();
  for (const auto& pago : c.args.valores("pago")) {
    auto [codigo, cuanto] = parDe(pago, "pago");
    const auto medio = ObtenerMedioPago(codigo);
    if (!medio)
      throw std::runtime_error("Medio de pago desconocido: " + codigo);
    auto linea = std::make_shared<CDetalleIngreso>();
    linea->medio = medio->codigo;
    linea->montoNominal = monto(cuanto, "pago");
    linea->Monto = CCur(linea->montoNominal.toDouble() * medio->FactorCambio());
    mov->colDetalles->Add(linea);
  }
  return mov;
}

const std::string& clave(Contexto& c) {
  if (c.args.posicionales().empty())
    throw std::runtime_error("Falta la clave");
  return c.args.posicionales().front();
}

}  // namespace

int init(Contexto& c) {
  if (c.args.bandera("demo"))
    crearDemo(*c.db);
  salida(c).mensaje("Base de datos lista");
  return kExito;
}

int cobrar(Contexto& c) {
  const auto venta = c.args.valor("venta");
  if (!venta)
    throw std::runtime_error("Falta --venta");
  const Currency v = monto(*venta, "venta");
  const Currency iva = montoOpcional(c.args, "iva");
  const Currency credito = montoOpcional(c.args, "credito");
  comprobarTotal(v, iva, credito);
  std::shared_ptr<CVarelta> mov;
  if (c.args.bandera("aceptar")) {
    mov = cobrarConGuion(c, v, iva, credito);
  } else {
    if (!c.conPantalla)
      throw std::runtime_error("No hay pantalla: use --pago CODIGO=MONTO y --aceptar");
    instalarDialogosQt();
    CServiciosCaja servicios;
    servicios.Init(Variant(), c.db);
    mov = servicios.Varelta(Variant(v), Variant(iva), Variant(credito),
                            c.args.valor("titulo", "Cobro"));
  }
  if (!mov) {
    std::cerr << "Cobro no completado: nada se guardó\n";
    return kRechazado;
  }
  guardar(c, *mov);
  CVarelta guardado;
  guardado.load(mov->TransID);
  salida(c).movimiento(guardado);
  return kExito;
}

int saldo(Contexto& c) {
  SaldoCaja s;
  s.load(entero(c.args.valor("maquina", "1"), "--maquina"));
  salida(c).saldo(s);
  return kExito;
}

int movimiento(Contexto& c) {
  CVarelta mov;
  bool hallado = false;
  if (const auto doc = c.args.valor("documento")) {
    const auto [tipo, numero] = parDe(*doc, "documento");
    hallado = mov.LoadFromDocumento(tipo, entero(numero, "--documento")) && mov.load(mov.TransID);
  } else if (!c.args.posicionales().empty()) {
    hallado = mov.load(entero(c.args.posicionales().front(), "NUMERO"));
  } else {
    throw std::runtime_error("Indique NUMERO o --documento TIPO:NUMERO");
  }
  if (!hallado) {
    std::cerr << "Movimiento no encontrado\n";
    return kRechazado;
  }
  salida(c).movimiento(mov);
  return kExito;
}

int medios(Contexto& c) {
  if (c.args.bandera("editar")) {
    if (!c.conPantalla)
      throw std::runtime_error("No hay pantalla para editar el catálogo");
    instalarDialogosQt();
    CServiciosCaja servicios;
    servicios.Init(Variant(), c.db);
    servicios.DefinirMediosPago();
    return QApplication::exec() == 0 ? kExito : kError;
  }
  std::vector<std::shared_ptr<CMedioPago>> lista;
  auto rs = c.db->openrecordset("SELECT * FROM MediosPago ORDER BY posicion, Codigo");
  for (; !rs->Eof(); rs->MoveNext()) {
    auto m = std::make_shared<CMedioPago>();
    m->loadInstance(*rs);
    lista.push_back(m);
  }
  salida(c).medios(lista);
  return kExito;
}

int aparcar(Contexto& c) {
  auto mov = movimientoDePagos(c);
  TempVarelta t;
  t.Save(clave(c), *mov);
  salida(c).lineas(clave(c), *mov->colDetalles);
  return kExito;
}

int retomar(Contexto& c) {
  CVarelta mov;
  TempVarelta t;
  t.load(clave(c), mov);
  if (mov.colDetalles->Count() == 0) {
    std::cerr << "Referencia " << clave(c) << " no registrada.\n";
    return kRechazado;
  }
  salida(c).lineas(clave(c), *mov.colDetalles);
  return kExito;
}

int revertir(Contexto& c) {
  TempVarelta().revertir(clave(c));
  salida(c).mensaje("Referencia " + clave(c) + " descartada.");
  return kExito;
}

int supervisor(Contexto& c) {
  if (!c.args.bandera("agregar") || c.args.posicionales().empty())
    throw std::runtime_error("Uso: caja supervisor --agregar NOMBRE [--nivel N]");
  std::string pin = c.args.valor("pin", "");
  if (pin.empty()) {
    std::cerr << "PIN: ";
    std::getline(std::cin, pin);
  }
  if (pin.size() < 4)
    throw std::runtime_error("El PIN debe tener al menos 4 caracteres");
  agregarSupervisor(*c.db, c.args.posicionales().front(), pin,
                    entero(c.args.valor("nivel", "5"), "--nivel"));
  salida(c).mensaje("Supervisor " + c.args.posicionales().front() + " registrado");
  return kExito;
}

}  // namespace caja::app
