// The till's day through the host program: sessions, the rate, listings,
// voiding and the closing count. Voids and closings are kept in the host's
// own tables (hostAnulaciones, hostCierres, hostCierreDetalles).

#include <QStringList>
#include <charconv>
#include <map>

#include "app/datos/Auditoria.h"
#include "app/controles/Autorizacion.h"
#include "app/linea/Comandos.h"
#include "app/envio/Diario.h"
#include "app/acciones/EstaCaja.h"
#include "app/papeles/Informe.h"
#include "app/linea/Salida.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/drawer/TransaccionEfectivo.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

Salida salida(Contexto& c) {
  return Salida(c.out, c.args.bandera("json"));
}

// The catalogue's spelling of a code typed in any letter case; ErrorUso for
// a code the catalogue does not have.
std::string codigoDe(std::string codigo, const char* opcion) {
  if (equalsIgnoreCase(codigo, "EFE"))
    return "EFE";
  const auto medio = ObtenerMedioPago(codigo);
  if (!medio)
    throw ErrorUso(std::string("Medio de pago desconocido en --") + opcion + ": " + codigo);
  return medio->codigo;
}

// A server, where the program's own writes of the till's day go through
// the server's functions.
bool enServidor(Contexto& c) {
  return dynamic_cast<PostgresFactoria*>(c.db.get()) != nullptr;
}

std::vector<SesionAbierta> sesionesAbiertas(Contexto& c) {
  std::vector<SesionAbierta> lista;
  auto rs = c.db->openrecordset("SELECT * FROM SesionesPOS ORDER BY SessionID");
  for (; !rs->Eof(); rs->MoveNext())
    lista.push_back({NzLong(rs->Fields("SessionID")), NzLong(rs->Fields("MachineID")),
                     NzTexto(rs->Fields("Operador")), NzFecha(rs->Fields("Apertura"))});
  return lista;
}

int abrirSesion(Contexto& c) {
  const std::int32_t m = estaMaquina(c);
  const std::string cajero = cajeroDe(c);
  std::int32_t nueva = 0;
  c.db->EnTransaccion([&] {
    // On a server the server's function opens it: a till's login writes
    // no session itself.
    if (enServidor(c)) {
      nueva = CLng(c.db->ReadScalar("SELECT caja_abrir_sesion(?, ?)", {m, cajero}));
    } else {
      const Variant abierta =
          c.db->ReadScalar("SELECT SessionID FROM SesionesPOS WHERE MachineID = ?", {m});
      nueva = abierta.isEmpty()
                  ? 1 + std::max(
                            NzLong(c.db->ReadScalar("SELECT MAX(SessionID) FROM SesionesPOS")),
                            NzLong(c.db->ReadScalar("SELECT MAX(SessionID) FROM SesionesCerradas")))
                  : -CLng(abierta);
      if (nueva > 0)
        c.db->ExecuteSQL(
            "INSERT INTO SesionesPOS (SessionID, MachineID, Operador, Apertura) "
            "VALUES (?, ?, ?, getdate())",
            {nueva, m, cajero});
    }
    if (nueva < 0)
      throw Rechazo("La máquina " + std::to_string(m) + " ya tiene abierta la sesión " +
                    std::to_string(-nueva) + ": ciérrela con caja sesion cerrar");
  });
  salida(c).sesion(nueva, m);
  return kExito;
}

int cerrarSesion(Contexto& c) {
  const auto dada = c.args.entero("sesion", 1, kMaximo32);
  const std::int32_t m = dada ? 0 : estaMaquina(c);
  const Variant s =
      dada ? Variant(static_cast<std::int32_t>(*dada))
           : c.db->ReadScalar("SELECT SessionID FROM SesionesPOS WHERE MachineID = ?", {m});
  if (s.isEmpty())
    throw Rechazo("La máquina " + std::to_string(m) + " no tiene sesión abierta");
  c.db->EnTransaccion([&] {
    const long movidas =
        enServidor(c)
            ? CLng(c.db->ReadScalar("SELECT caja_cerrar_sesion(?)", {s}))
            : c.db->ExecuteSQL(
                  "INSERT INTO SesionesCerradas (SessionID, MachineID, Operador, Apertura, "
                  "Cierre) SELECT SessionID, MachineID, Operador, Apertura, getdate() FROM "
                  "SesionesPOS WHERE SessionID = ?",
                  {s});
    if (movidas == 0)
      throw Rechazo("La sesión " + std::to_string(CLng(s)) + " no está abierta");
    if (!enServidor(c))
      c.db->ExecuteSQL("DELETE FROM SesionesPOS WHERE SessionID = ?", {s});
  });
  salida(c).mensaje("Sesión " + std::to_string(CLng(s)) + " cerrada");
  return kExito;
}

// A rate as typed: digits with '.' for decimals, above zero.
double tasaDe(const std::string& texto) {
  double tasa = 0;
  const auto [fin, ec] =
      std::from_chars(texto.data(), texto.data() + texto.size(), tasa, std::chars_format::fixed);
  if (texto.empty() || texto.find_first_not_of("0123456789.") != std::string::npos ||
      ec != std::errc() || fin != texto.data() + texto.size() || !(tasa > 0) || tasa > 1e12)
    throw ErrorUso("Tasa no válida: " + texto + " (un número mayor que 0, con punto decimal)");
  return tasa;
}

// One filter for the listing and its totals.
struct Filtro {
  std::string condiciones;
  Argumentos args;
};

Filtro filtroDe(Contexto& c) {
  Filtro f;
  if (const auto desde = c.args.fecha("desde")) {
    f.condiciones += " AND M.Fecha >= ?";
    f.args.emplace_back(*desde);
  }
  if (const auto hasta = c.args.fecha("hasta")) {
    f.condiciones += " AND M.Fecha < ?";
    f.args.emplace_back(*hasta + Fecha(1.0));
  }
  if (const auto s = c.args.entero("sesion", 0, kMaximo32)) {
    f.condiciones += " AND M.Sesion = ?";
    f.args.emplace_back(static_cast<std::int32_t>(*s));
  }
  if (const auto o = c.args.valor("operador")) {
    f.condiciones += " AND M.Operador = ?";
    f.args.emplace_back(*o);
  }
  return f;
}

// "TIPO:NUMERO", or nothing for a movement without a document (cash in and out).
std::string documentoDe(const std::string& tipo, std::int32_t numero) {
  return tipo.empty() ? "" : tipo + ":" + std::to_string(numero);
}

std::vector<FilaMovimiento> filasDe(Contexto& c, const Filtro& f) {
  std::vector<FilaMovimiento> filas;
  auto rs = c.db->openrecordset(
      "SELECT M.TransID, M.Fecha, M.Hora, M.Sesion, M.Operador, M.TipoDocumento, "
      "M.NumeroDocumento, M.Debitos, M.Creditos, M.MontoIGTF, M.Clasificacion, "
      "A.TransID AS Anulado "
      "FROM MovimientosCaja M LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID "
      "WHERE 1 = 1" +
          f.condiciones + " ORDER BY M.TransID",
      f.args);
  for (; !rs->Eof(); rs->MoveNext())
    filas.push_back(
        {NzLong(rs->Fields("TransID")), NzFecha(rs->Fields("Fecha")), NzFecha(rs->Fields("Hora")),
         NzLong(rs->Fields("Sesion")), NzTexto(rs->Fields("Operador")),
         documentoDe(NzTexto(rs->Fields("TipoDocumento")), NzLong(rs->Fields("NumeroDocumento"))),
         NzMoneda(rs->Fields("Debitos")), NzMoneda(rs->Fields("Creditos")),
         NzMoneda(rs->Fields("MontoIGTF")), !rs->Fields("Anulado").isNull(),
         tipoDe(NzTexto(rs->Fields("Clasificacion")))});
  for (auto& fila : filas) {
    const NumeroVisible n = numeroVisible(c, fila.numero);
    fila.numero = n.numero;
    fila.local = n.local;
  }
  return filas;
}

// Totals of the movements that stand (voided ones left out), per method, or
// per kind of movement and method; added here rather than by the database so
// that no sum ever leaves Currency.
std::vector<MontoMedio> totalesDe(Contexto& c, const Filtro& f, bool porTipo) {
  std::map<std::pair<std::string, std::string>, MontoMedio> grupos;
  auto rs = c.db->openrecordset(
      "SELECT D.Medio, D.Monto, D.MontoNominal, M.Clasificacion FROM DetallesVarelta D "
      "INNER JOIN MovimientosCaja M ON M.TransID = D.TransID "
      "LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID WHERE A.TransID IS NULL" +
          f.condiciones,
      f.args);
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string medio = NzTexto(rs->Fields("Medio"));
    const std::string tipo = porTipo ? tipoDe(NzTexto(rs->Fields("Clasificacion"))) : "";
    auto& t = grupos[{tipo, upperAscii(medio)}];
    if (t.medio.empty()) {
      t.medio = medio;
      t.tipo = tipo;
    }
    t.montoMN += NzMoneda(rs->Fields("Monto"));
    t.montoNominal += NzMoneda(rs->Fields("MontoNominal"));
  }
  std::vector<MontoMedio> totales;
  for (const auto& [clave, t] : grupos)
    totales.push_back(t);
  return totales;
}

// What was counted per method: amounts given whole, or notes and coins
// ("EFE:20x3,5x1"), kept in `denominaciones`; a method counted twice is a
// mistake of the command line.
std::map<std::string, Currency> contados(Contexto& c, std::vector<Denominacion>& denominaciones) {
  std::map<std::string, Currency> lista;
  auto anotar = [&](const std::string& codigo, Currency monto, const char* opcion) {
    if (!lista.emplace(codigoDe(codigo, opcion), monto).second)
      throw ErrorUso("El medio " + codigo + " se contó más de una vez");
  };
  for (const auto& texto : c.args.valores("contado")) {
    const auto [codigo, monto] = parDe(texto, "contado", '=');
    anotar(codigo, montoDe(monto, "--contado " + codigo), "contado");
  }
  // "EFE:20x4,5x1" and "EFE:20x4,EFE:5x1" alike: a piece names its method,
  // or counts for the one named last.
  std::map<std::string, Currency> porDenominaciones;
  for (const auto& texto : c.args.valores("denominaciones")) {
    std::string codigo;
    for (const QString& q : QString::fromStdString(texto).split(',')) {
      std::string pieza = q.toStdString();
      if (pieza.find(':') != std::string::npos) {
        const auto [medio, resto] = parDe(pieza, "denominaciones", ':');
        codigo = codigoDe(medio, "denominaciones");
        pieza = resto;
      }
      if (codigo.empty())
        throw ErrorUso("--denominaciones empieza por el medio: CODIGO:VALORxCANTIDAD,...");
      const auto x = pieza.find('x');
      if (x == std::string::npos)
        throw ErrorUso("Denominación no válida: " + pieza + " (use VALORxCANTIDAD)");
      const Currency valor = montoDe(pieza.substr(0, x), "--denominaciones " + codigo);
      const auto cantidad = static_cast<std::int16_t>(
          enteroDe(pieza.substr(x + 1), "--denominaciones " + codigo, 0, 32767));
      porDenominaciones[codigo] += valor * cantidad;
      denominaciones.push_back({codigo, valor, cantidad});
    }
  }
  for (const auto& [codigo, total] : porDenominaciones)
    anotar(codigo, total, "denominaciones");
  return lista;
}

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
Asiento asientoDeCierre(Contexto& c, const Cierre& registro, const std::string& sinEnviar) {
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
        aprobacion(c, "cerrar sin los movimientos locales " + sinEnviar,
                   std::max(nivelExigido("NivelAprobacion"), nivelExigido("NivelForzar")));
  } else if (mayor > diferenciaTolerada()) {
    a.aprobador = aprobacion(c, "cerrar la caja con una diferencia de " + mayor.toMachineText(),
                             nivelExigido("NivelAprobacion"));
  }
  return a;
}

}  // namespace

int sesion(Contexto& c) {
  const std::string accion = c.args.posicionales().empty() ? "" : c.args.posicionales().front();
  if (accion == "abrir")
    return abrirSesion(c);
  if (accion == "cerrar")
    return cerrarSesion(c);
  if (!accion.empty())
    throw ErrorUso("Uso: caja sesion [abrir --maquina N [--operador O] | cerrar [--sesion S]]");
  salida(c).sesiones(sesionesAbiertas(c));
  return kExito;
}

int tasa(Contexto& c) {
  if (c.args.posicionales().empty()) {
    const double actual = c.db->TipoCambioCaja();
    if (actual <= 0)
      throw Rechazo("La caja no tiene tasa de cambio: fíjela con caja tasa VALOR");
    salida(c).tasa(actual);
    return kExito;
  }
  const double nueva = tasaDe(c.args.posicionales().front());
  Asiento a;
  a.maquina = maquinaDe(c);
  a.accion = "tasa";
  a.detalle = "de " + textoDeTasa(c.db->TipoCambioCaja()) + " a " + textoDeTasa(nueva);
  // Save takes the largest rate of parametrosEmpresa: one row keeps it the current one.
  c.db->EnTransaccion([&] {
    anotar(*c.db, a);
    c.db->ExecuteSQL("DELETE FROM parametrosEmpresa");
    c.db->ExecuteSQL("INSERT INTO parametrosEmpresa (Fecha, TipoCambio) VALUES (getdate(), ?)",
                     {nueva});
    c.db->ExecuteSQL(
        "INSERT INTO hostEmpresa (id, TipoCambioCaja) VALUES (1, ?) "
        "ON CONFLICT (id) DO UPDATE SET TipoCambioCaja = excluded.TipoCambioCaja",
        {nueva});
  });
  salida(c).tasa(nueva);
  return kExito;
}

int movimientos(Contexto& c) {
  const Filtro f = filtroDe(c);
  const auto filas = filasDe(c, f);
  Currency igtf;
  for (const auto& fila : filas)
    if (!fila.anulado)
      igtf += fila.igtf;
  salida(c).movimientos(filas, totalesDe(c, f, false), totalesDe(c, f, true), igtf,
                        c.args.bandera("csv"));
  return kExito;
}

std::int32_t numeroNombrado(Contexto& c) {
  const auto local = c.args.entero("local", 1, kMaximo32);
  if (c.args.posicionales().empty() == !local.has_value())
    throw ErrorUso("Indique uno: NUMERO o --local NUMERO");
  if (!local) {
    const std::string& numero = c.args.posicionales().front();
    const std::int32_t n = numeroDondeCorre(c, numero);
    if (n == 0)
      throw Rechazo("El movimiento " + numero +
                    " no está en el diario de esta caja, y el servidor no responde");
    return n;
  }
  exigirServidor(c);
  const auto numero = static_cast<std::int32_t>(*local);
  if (c.enDiario)
    return numero;
  const auto diario = abrirDiario(false);
  const std::int32_t enServidor = diario ? numeroEnServidor(*diario, numero) : -1;
  if (enServidor <= 0)
    throw Rechazo("Movimiento local " + std::to_string(numero) + " no encontrado");
  return enServidor;
}

int anular(Contexto& c) {
  const std::int32_t numero = numeroNombrado(c);
  const std::string nombre =
      (c.enDiario && c.conServidor ? "Movimiento local " : "Movimiento ") + std::to_string(numero);
  CVarelta mov;
  if (!mov.load(numero))
    throw Rechazo(nombre + " no encontrado");
  Asiento a;
  a.maquina =
      NzLong(c.db->ReadScalar("SELECT machineID FROM MovimientosCaja WHERE TransID = ?", {numero}));
  a.cajero = cajeroDe(c);
  a.aprobador = aprobacion(c, "anular el movimiento " + std::to_string(numero),
                           nivelExigido("NivelAprobacion"));
  a.accion = "anulacion";
  a.detalle = c.args.valor("motivo", "");
  a.movimiento = numero;
  a.monto = mov.Debitos - mov.Creditos;
  c.db->EnTransaccion([&] {
    auto previa = c.db->openrecordset("SELECT * FROM hostAnulaciones WHERE TransID = ?", {numero});
    if (!previa->Eof())
      throw Rechazo("El movimiento " + std::to_string(numero) + " ya fue anulado el " +
                    NzFecha(previa->Fields("Fecha")).toIsoText() + " por " +
                    NzTexto(previa->Fields("Operador")));
    // On a server the void is the server's function's: a till's login
    // moves no drawer and writes no void itself.
    if (enServidor(c)) {
      c.db->ReadScalar("SELECT caja_anular(?, ?, ?, ?)",
                       {numero, a.cajero, a.aprobador, a.detalle});
      return;
    }
    TransaccionEfectivo t;
    if (t.loadFromTransid(origenTransaccionEfectivo::OTE_MOVCAJA, numero))
      t.revertir();
    c.db->ExecuteSQL(
        "INSERT INTO hostAnulaciones (TransID, Fecha, Operador, Motivo) VALUES (?, getdate(), ?, "
        "?)",
        {numero, a.cajero, a.detalle});
    anotar(*c.db, a);
  });
  salida(c).mensaje(nombre + " anulado");
  return kExito;
}

namespace {

// A list of rows as the server's functions take them: JSON objects by the
// table's column names, amounts as their exact text.
template <class T, class F>
std::string filasJson(const std::vector<T>& lista, F fila) {
  std::string texto;
  for (const T& x : lista)
    texto += (texto.empty() ? "{" : ",{") + fila(x) + "}";
  return "[" + texto + "]";
}

std::string campo(const char* nombre, const std::string& valor, bool ultimo = false) {
  return "\"" + std::string(nombre) + "\":" + valor + (ultimo ? "" : ",");
}

// On a server the closing is the server's function's, in one call: a till's
// login writes no closing itself.
void registrarEnServidor(Contexto& c, Cierre& registro, const Asiento& a) {
  const std::string lineas = filasJson(registro.lineas, [](const LineaCierre& l) {
    return campo("codigomedio", json(l.medio)) + campo("esperadomn", l.esperadoMN.toMachineText()) +
           campo("esperadonominal", l.esperadoNominal.toMachineText()) +
           campo("tipocambio", textoDeTasa(l.tipoCambio)) +
           campo("contado", l.contado.toMachineText()) +
           campo("diferencia", l.diferencia.toMachineText(), true);
  });
  const std::string denominaciones = filasJson(registro.denominaciones, [](const Denominacion& d) {
    return campo("codigomedio", json(d.medio)) + campo("valor", d.valor.toMachineText()) +
           campo("cantidad", std::to_string(d.cantidad), true);
  });
  const std::string tipos = filasJson(registro.porTipo, [](const MontoMedio& t) {
    return campo("tipo", json(t.tipo)) + campo("codigomedio", json(t.medio)) +
           campo("montomn", t.montoMN.toMachineText()) +
           campo("montonominal", t.montoNominal.toMachineText(), true);
  });
  c.db->EnTransaccion([&] {
    registro.id =
        CLng(c.db->ReadScalar("SELECT caja_cerrar(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                              {registro.maquina, registro.fecha, registro.operador, lineas,
                               denominaciones, tipos, a.aprobador, a.accion, a.detalle, a.monto}));
  });
}

// Records the closing, its count note by note, what made up its expected
// amounts and its row of the trail, which names it.
void registrar(Contexto& c, Cierre& registro, Asiento a) {
  if (enServidor(c))
    return registrarEnServidor(c, registro, a);
  c.db->EnTransaccion([&] {
    c.db->ExecuteSQL("INSERT INTO hostCierres (MachineID, Fecha, Operador) VALUES (?, ?, ?)",
                     {registro.maquina, registro.fecha, registro.operador});
    registro.id = CLng(c.db->ReadScalar("SELECT scope_identity()"));
    for (const auto& l : registro.lineas)
      c.db->ExecuteSQL(
          "INSERT INTO hostCierreDetalles (idCierre, codigoMedio, esperadoMN, esperadoNominal, "
          "tipoCambio, contado, diferencia) VALUES (?, ?, ?, ?, ?, ?, ?)",
          {registro.id, l.medio, l.esperadoMN, l.esperadoNominal, l.tipoCambio, l.contado,
           l.diferencia});
    for (const auto& d : registro.denominaciones)
      c.db->ExecuteSQL(
          "INSERT INTO hostCierreDenominaciones (idCierre, codigoMedio, valor, cantidad) "
          "VALUES (?, ?, ?, ?)",
          {registro.id, d.medio, d.valor, d.cantidad});
    for (const auto& t : registro.porTipo)
      c.db->ExecuteSQL(
          "INSERT INTO hostCierreTipos (idCierre, tipo, codigoMedio, montoMN, montoNominal) "
          "VALUES (?, ?, ?, ?, ?)",
          {registro.id, t.tipo, t.medio, t.montoMN, t.montoNominal});
    a.detalle = "cierre " + std::to_string(registro.id) + "; " + a.detalle;
    anotar(*c.db, a);
  });
}

void reportar(Contexto& c, const Cierre& registro) {
  if (const auto pdf = c.args.valor("pdf"))
    pdfCierre(c, registro, *pdf);
  salida(c).cierres({registro});
}

// The closing that is read back: its lines, its count and its make-up, and
// who approved it, from its row of the trail.
void completar(Contexto& c, Cierre& cierre) {
  auto d = c.db->openrecordset(
      "SELECT * FROM hostCierreDetalles WHERE idCierre = ? ORDER BY codigoMedio", {cierre.id});
  for (; !d->Eof(); d->MoveNext())
    cierre.lineas.push_back({NzTexto(d->Fields("codigoMedio")), NzMoneda(d->Fields("esperadoMN")),
                             NzMoneda(d->Fields("esperadoNominal")),
                             NzDouble(d->Fields("tipoCambio")), NzMoneda(d->Fields("contado")),
                             NzMoneda(d->Fields("diferencia"))});
  auto n = c.db->openrecordset(
      "SELECT * FROM hostCierreDenominaciones WHERE idCierre = ? ORDER BY codigoMedio, valor DESC",
      {cierre.id});
  for (; !n->Eof(); n->MoveNext())
    cierre.denominaciones.push_back({NzTexto(n->Fields("codigoMedio")),
                                     NzMoneda(n->Fields("valor")),
                                     static_cast<std::int16_t>(NzLong(n->Fields("cantidad")))});
  auto t = c.db->openrecordset(
      "SELECT * FROM hostCierreTipos WHERE idCierre = ? ORDER BY tipo, codigoMedio", {cierre.id});
  for (; !t->Eof(); t->MoveNext())
    cierre.porTipo.push_back({NzTexto(t->Fields("codigoMedio")), NzMoneda(t->Fields("montoMN")),
                              NzMoneda(t->Fields("montoNominal")), NzTexto(t->Fields("tipo"))});
  cierre.aprobador = NzTexto(c.db->ReadScalar(
      "SELECT Aprobador FROM hostAuditoria WHERE Accion IN ('cierre', 'cierre forzado') AND "
      "Detalle LIKE ?",
      {"cierre " + std::to_string(cierre.id) + ";%"}));
}

// On a server, what waits in this till's journal goes first: a closing
// that left movements out would count a drawer the server does not have.
// What still waits refuses the closing, naming it, unless --forzar, which a
// supervisor approves and the trail records.
std::string pendientesAlCerrar(Contexto& c) {
  const auto diario = c.conServidor ? abrirDiario(false) : nullptr;
  if (!diario)
    return "";
  avisarEnvio(sincronizar(*c.db, *diario));
  std::string locales;
  for (const Pendiente& p : pendientes(*diario))
    locales += (locales.empty() ? "" : ", ") + std::to_string(p.numeroLocal);
  if (locales.empty())
    return "";
  if (!c.args.bandera("forzar"))
    throw Rechazo("Quedan movimientos de esta caja sin enviar al servidor (locales " + locales +
                  "): el cierre no los contaría; envíelos con caja sincronizar, o cierre con "
                  "--forzar; nada se guardó");
  return locales;
}

}  // namespace

int cierre(Contexto& c) {
  const std::int32_t m = estaMaquina(c);
  // What made up the expected amounts: every standing movement of the till.
  const Filtro deLaMaquina{" AND M.machineID = ?", {m}};
  std::vector<Denominacion> denominaciones;
  const auto contado = contados(c, denominaciones);
  Cierre registro{0,
                  m,
                  Fecha::now(),
                  cajeroDe(c),
                  lineasDeCierre(m, contado),
                  totalesDe(c, deLaMaquina, true),
                  denominaciones};
  // A partial count in the middle of a shift records nothing and needs no one.
  if (!c.args.bandera("parcial")) {
    const Asiento a = asientoDeCierre(c, registro, pendientesAlCerrar(c));
    registro.aprobador = a.aprobador;
    registrar(c, registro, a);
  }
  reportar(c, registro);
  return kExito;
}

int cierres(Contexto& c) {
  std::vector<Cierre> lista;
  const auto m = maquinaElegida(c);
  // One closing by its number, or 0 for all of them.
  const auto uno = static_cast<std::int32_t>(
      c.args.posicionales().empty()
          ? 0
          : enteroDe(c.args.posicionales().front(), "NUMERO", 1, kMaximo32));
  if (c.args.valor("pdf") && uno == 0)
    throw ErrorUso("--pdf es de un cierre: caja cierres NUMERO --pdf ARCHIVO");
  auto rs =
      uno ? c.db->openrecordset("SELECT * FROM hostCierres WHERE id = ?", {uno})
      : m ? c.db->openrecordset("SELECT * FROM hostCierres WHERE MachineID = ? ORDER BY id", {*m})
          : c.db->openrecordset("SELECT * FROM hostCierres ORDER BY id");
  for (; !rs->Eof(); rs->MoveNext())
    lista.push_back({NzLong(rs->Fields("id")),
                     NzLong(rs->Fields("MachineID")),
                     NzFecha(rs->Fields("Fecha")),
                     NzTexto(rs->Fields("Operador")),
                     {}});
  if (uno && lista.empty())
    throw Rechazo("Cierre " + std::to_string(uno) + " no encontrado");
  for (auto& cierre : lista)
    completar(c, cierre);
  if (uno)
    reportar(c, lista.front());
  else
    salida(c).cierres(lista);
  return kExito;
}

}  // namespace caja::app
