#include "app/acciones/Jornada.h"

#include <algorithm>

#include "app/datos/Diario.h"
#include "app/datos/Json.h"
#include "app/envio/Envio.h"
#include "caja/base/Conversiones.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/drawer/TransaccionEfectivo.h"
#include "caja/movement/CVarelta.h"

namespace caja::app {

namespace {

std::vector<LineaCierre> lineasDeCierre(std::int32_t m, std::map<std::string, Currency> contado) {
  std::vector<LineaCierre> lineas;
  SaldoCaja saldo;
  saldo.load(m);
  for (const auto& d : *saldo.detalles) {
    const auto it = contado.find(d->codigoMedio);
    const Currency cuenta = it == contado.end() ? Currency{} : it->second;
    if (it != contado.end())
      contado.erase(it);
    lineas.push_back({d->codigoMedio, d->valorMN, d->valorNominal, saldo.tipoCambio(d->codigoMedio),
                      cuenta, cuenta - d->valorNominal});
  }
  // Counted and yet not in the drawer: all of it is a difference.
  for (const auto& [codigo, cuenta] : contado)
    lineas.push_back({codigo, Currency{}, Currency{}, 1.0, cuenta, cuenta});
  return lineas;
}

// The closing's row of the trail, with each method's count; a difference
// beyond what the shop tolerates, valued in national currency, needs a
// supervisor's approval first, and a closing forced with movements still
// unsent (`sinEnviar`, their local numbers) one of the forcing level. The
// total is the differences so valued.
Asiento asientoDeCierre(Puesto& p, const Cierre& registro, const std::string& sinEnviar) {
  Asiento a;
  a.maquina = registro.maquina;
  a.cajero = registro.operador;
  a.accion = "cierre";
  Currency mayor;
  for (const auto& l : registro.lineas) {
    const Currency valorada = CCur(l.diferencia.toDouble() * l.tipoCambio);
    a.monto += valorada;
    mayor = std::max(mayor, Abs(valorada));
    a.detalle += (a.detalle.empty() ? "" : "; ") + l.medio + " esperado " +
                 l.esperadoNominal.toMachineText() + " contado " + l.contado.toMachineText() +
                 " diferencia " + l.diferencia.toMachineText();
  }
  if (!sinEnviar.empty()) {
    a.accion = "cierre forzado";
    a.detalle += "; sin enviar: locales " + sinEnviar;
    a.aprobador =
        p.aprobacion("cerrar sin los movimientos locales " + sinEnviar,
                     std::max(nivelExigido("NivelAprobacion"), nivelExigido("NivelForzar")));
  } else if (mayor > diferenciaTolerada()) {
    a.aprobador = p.aprobacion("cerrar la caja con una diferencia de " + mayor.toMachineText(),
                               nivelExigido("NivelAprobacion"));
  }
  return a;
}

// On a server, what waits in this till's journal goes first: a closing
// that left movements out would count a drawer the server does not have.
// What still waits refuses the closing, naming it, unless forced, which a
// supervisor approves and the trail records.
std::string pendientesAlCerrar(Puesto& p, const Arqueo& arqueo) {
  const auto diario = p.almacen.conServidor ? p.almacen.diario() : nullptr;
  if (!diario)
    return "";
  arqueo.alEnviar(sincronizar(p.db(), *diario));
  std::string locales;
  for (const Pendiente& pendiente : pendientes(*diario))
    locales += (locales.empty() ? "" : ", ") + std::to_string(pendiente.numeroLocal);
  if (locales.empty())
    return "";
  if (!arqueo.forzar)
    throw Rechazo("Quedan movimientos de esta caja sin enviar al servidor (locales " + locales +
                  "): el cierre no los contaría; envíelos con caja sincronizar, o cierre con "
                  "--forzar; nada se guardó");
  return locales;
}

}  // namespace

std::int32_t abrirSesion(Puesto& p, std::int32_t maquina) {
  const std::string cajero = p.cajero();
  std::int32_t nueva = 0;
  p.db().EnTransaccion([&] {
    nueva = abrirSesionDe(p.db(), maquina, cajero);
    if (nueva < 0)
      throw Rechazo("La máquina " + std::to_string(maquina) + " ya tiene abierta la sesión " +
                    std::to_string(-nueva) + ": ciérrela con caja sesion cerrar");
  });
  return nueva;
}

std::int32_t cerrarSesion(Puesto& p, std::optional<std::int32_t> sesion, std::int32_t maquina) {
  const auto s = sesion ? sesion : sesionAbiertaDe(p.db(), maquina);
  if (!s)
    throw Rechazo("La máquina " + std::to_string(maquina) + " no tiene sesión abierta");
  p.db().EnTransaccion([&] {
    if (cerrarSesionDe(p.db(), *s) == 0)
      throw Rechazo("La sesión " + std::to_string(*s) + " no está abierta");
  });
  return *s;
}

void fijarTasaDeCaja(Puesto& p, double tasa) {
  Asiento a;
  a.maquina = p.maquina();
  a.accion = "tasa";
  a.detalle = "de " + textoDeTasa(p.db().TipoCambioCaja()) + " a " + textoDeTasa(tasa);
  p.db().EnTransaccion([&] {
    anotar(p.db(), a);
    fijarTasa(p.db(), tasa);
  });
}

Listado listar(Almacen& a, const Filtro& f) {
  Listado l{filasDe(*a.db, f), totalesDe(*a.db, f, false), totalesDe(*a.db, f, true), {}};
  for (auto& fila : l.filas) {
    const NumeroVisible n = numeroVisible(a, fila.numero);
    fila.numero = n.numero;
    fila.local = n.local;
    if (!fila.anulado)
      l.igtf += fila.igtf;
  }
  return l;
}

void anular(Puesto& p, std::int32_t numero, const std::string& nombre, const std::string& motivo) {
  CVarelta mov;
  if (!mov.load(numero))
    throw Rechazo(nombre + " no encontrado");
  Asiento a;
  a.maquina = maquinaDeMovimiento(p.db(), numero);
  a.cajero = p.cajero();
  a.aprobador = p.aprobacion("anular el movimiento " + std::to_string(numero),
                             nivelExigido("NivelAprobacion"));
  a.accion = "anulacion";
  a.detalle = motivo;
  a.movimiento = numero;
  a.monto = mov.Debitos - mov.Creditos;
  p.db().EnTransaccion([&] {
    if (const auto previa = anulacionDe(p.db(), numero))
      throw Rechazo("El movimiento " + std::to_string(numero) + " ya fue anulado el " +
                    previa->fecha.toIsoText() + " por " + previa->operador);
    // On a server the void is the server's function's: a till's login
    // moves no drawer and writes no void itself.
    if (esServidor(p.db()))
      return anularEnServidor(p.db(), numero, a.cajero, a.aprobador, a.detalle);
    TransaccionEfectivo t;
    if (t.loadFromTransid(origenTransaccionEfectivo::OTE_MOVCAJA, numero))
      t.revertir();
    anotarAnulacion(p.db(), numero, a.cajero, a.detalle);
    anotar(p.db(), a);
  });
}

Cierre cerrarCaja(Puesto& p, const Arqueo& arqueo) {
  const std::int32_t m = arqueo.maquina;
  const std::string operador = p.cajero();
  // What waits at this till goes first, so that the drawer counted against
  // is the server's with it.
  const std::string sinEnviar = arqueo.parcial ? "" : pendientesAlCerrar(p, arqueo);
  // What made up the expected amounts: every standing movement of the till.
  Filtro deLaMaquina;
  deLaMaquina.maquina = m;
  Cierre registro{0,
                  m,
                  Fecha::now(),
                  operador,
                  lineasDeCierre(m, arqueo.contado),
                  totalesDe(p.db(), deLaMaquina, true),
                  arqueo.denominaciones};
  if (!arqueo.parcial) {
    const Asiento a = asientoDeCierre(p, registro, sinEnviar);
    registro.aprobador = a.aprobador;
    registrarCierre(p.db(), registro, a);
  }
  return registro;
}

std::vector<LineaCierre> esperadoDeCaja(std::int32_t maquina) {
  return lineasDeCierre(maquina, {});
}

}  // namespace caja::app
