#include "app/datos/Consultas.h"

#include <algorithm>
#include <map>
#include <utility>

#include "app/datos/Json.h"
#include "app/datos/Sql.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

std::optional<std::int32_t> enteroSiHay(const Variant& v) {
  if (v.isEmpty() || v.isNull())
    return std::nullopt;
  return CLng(v);
}

// Every row the statement reads, each made by `fila` from the recordset.
template <class F>
auto leerFilas(HostSql& db, const std::string& sql, const Argumentos& args, F fila) {
  std::vector<decltype(fila(std::declval<Recordset&>()))> lista;
  for (auto rs = db.openrecordset(sql, args); !rs->Eof(); rs->MoveNext())
    lista.push_back(fila(*rs));
  return lista;
}

// "TIPO:NUMERO", or nothing for a movement without a document (cash in and out).
std::string documentoDe(const std::string& tipo, std::int32_t numero) {
  return tipo.empty() ? "" : tipo + ":" + std::to_string(numero);
}

// The filter as SQL conditions on MovimientosCaja M, and their values.
std::pair<std::string, Argumentos> condicionesDe(const Filtro& f) {
  std::string condiciones;
  Argumentos args;
  if (f.desde) {
    condiciones += " AND M.Fecha >= ?";
    args.emplace_back(*f.desde);
  }
  if (f.hasta) {
    condiciones += " AND M.Fecha < ?";
    args.emplace_back(*f.hasta + Fecha(1.0));
  }
  if (f.sesion) {
    condiciones += " AND M.Sesion = ?";
    args.emplace_back(*f.sesion);
  }
  if (f.maquina) {
    condiciones += " AND M.machineID = ?";
    args.emplace_back(*f.maquina);
  }
  if (f.operador) {
    condiciones += " AND M.Operador = ?";
    args.emplace_back(*f.operador);
  }
  return {condiciones, args};
}

// A range of days, on the date column `columna`, of `maquinaColumna`'s machine when given.
std::pair<std::string, Argumentos> diasEntre(const char* columna, const char* maquinaColumna,
                                             Fecha desde, Fecha hasta,
                                             std::optional<std::int32_t> maquina) {
  std::string condicion = std::string(columna) + " >= ? AND " + columna + " < ?";
  Argumentos a{desde, hasta + Fecha(1.0)};
  if (maquina) {
    condicion += std::string(" AND ") + maquinaColumna + " = ?";
    a.emplace_back(*maquina);
  }
  return {condicion, a};
}

// The closing as the server's function takes it: JSON arrays of rows by
// column name, amounts as their exact text.
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

void registrarEnServidor(HostSql& db, Cierre& registro, const Asiento& a) {
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
  db.EnTransaccion([&] {
    registro.id =
        CLng(db.ReadScalar("SELECT caja_cerrar(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                           {registro.maquina, registro.fecha, registro.operador, lineas,
                            denominaciones, tipos, a.aprobador, a.accion, a.detalle, a.monto}));
  });
}

// The closing read back: its lines, its count and its make-up, and who
// approved it, from its row of the trail.
void completar(HostSql& db, Cierre& cierre) {
  auto d = db.openrecordset(
      "SELECT * FROM hostCierreDetalles WHERE idCierre = ? ORDER BY codigoMedio", {cierre.id});
  for (; !d->Eof(); d->MoveNext())
    cierre.lineas.push_back({NzTexto(d->Fields("codigoMedio")), NzMoneda(d->Fields("esperadoMN")),
                             NzMoneda(d->Fields("esperadoNominal")),
                             NzDouble(d->Fields("tipoCambio")), NzMoneda(d->Fields("contado")),
                             NzMoneda(d->Fields("diferencia"))});
  auto n = db.openrecordset(
      "SELECT * FROM hostCierreDenominaciones WHERE idCierre = ? ORDER BY codigoMedio, valor DESC",
      {cierre.id});
  for (; !n->Eof(); n->MoveNext())
    cierre.denominaciones.push_back({NzTexto(n->Fields("codigoMedio")),
                                     NzMoneda(n->Fields("valor")),
                                     static_cast<std::int16_t>(NzLong(n->Fields("cantidad")))});
  auto t = db.openrecordset(
      "SELECT * FROM hostCierreTipos WHERE idCierre = ? ORDER BY tipo, codigoMedio", {cierre.id});
  for (; !t->Eof(); t->MoveNext())
    cierre.porTipo.push_back({NzTexto(t->Fields("codigoMedio")), NzMoneda(t->Fields("montoMN")),
                              NzMoneda(t->Fields("montoNominal")), NzTexto(t->Fields("tipo"))});
  cierre.aprobador = NzTexto(db.ReadScalar(
      "SELECT Aprobador FROM hostAuditoria WHERE Accion IN ('cierre', 'cierre forzado') AND "
      "Detalle LIKE ?",
      {"cierre " + std::to_string(cierre.id) + ";%"}));
}

}  // namespace

bool esServidor(HostSql& db) {
  return dynamic_cast<PostgresFactoria*>(&db) != nullptr;
}

std::vector<SesionAbierta> sesionesAbiertas(HostSql& db) {
  return leerFilas(db, "SELECT * FROM SesionesPOS ORDER BY SessionID", {}, [](Recordset& rs) {
    return SesionAbierta{NzLong(rs.Fields("SessionID")), NzLong(rs.Fields("MachineID")),
                         NzTexto(rs.Fields("Operador")), NzFecha(rs.Fields("Apertura"))};
  });
}

std::optional<std::int32_t> sesionAbiertaDe(HostSql& db, std::int32_t maquina) {
  return enteroSiHay(
      db.ReadScalar("SELECT MIN(SessionID) FROM SesionesPOS WHERE MachineID = ?", {maquina}));
}

std::optional<std::int32_t> maquinaDeSesion(HostSql& db, std::int32_t sesion) {
  return enteroSiHay(
      db.ReadScalar("SELECT MachineID FROM SesionesPOS WHERE SessionID = ?", {sesion}));
}

bool sesionCerrada(HostSql& db, std::int32_t sesion) {
  return !db.ReadScalar("SELECT MachineID FROM SesionesCerradas WHERE SessionID = ?", {sesion})
              .isEmpty();
}

std::int32_t maquinaDeLaSesion(HostSql& db, std::optional<std::int32_t> sesion) {
  auto rs =
      sesion ? db.openrecordset("SELECT MachineID FROM SesionesPOS WHERE SessionID = ?", {*sesion})
             : db.openrecordset("SELECT MachineID FROM SesionesPOS");
  std::int32_t maquina = 0;
  int abiertas = 0;
  for (; !rs->Eof(); rs->MoveNext(), ++abiertas)
    maquina = NzLong(rs->Fields("MachineID"));
  return abiertas == 1 ? maquina : 0;
}

std::set<std::int32_t> maquinasConSesiones(HostSql& db) {
  std::set<std::int32_t> maquinas;
  for (const char* tabla : {"SesionesPOS", "SesionesCerradas"})
    for (auto rs = db.openrecordset(std::string("SELECT DISTINCT MachineID FROM ") + tabla);
         !rs->Eof(); rs->MoveNext())
      maquinas.insert(NzLong(rs->Fields(0)));
  return maquinas;
}

std::int32_t abrirSesionDe(HostSql& db, std::int32_t maquina, const std::string& cajero) {
  // On a server the server's function opens it: a till's login writes no
  // session itself.
  if (esServidor(db))
    return CLng(db.ReadScalar("SELECT caja_abrir_sesion(?, ?)", {maquina, cajero}));
  if (const auto abierta = sesionAbiertaDe(db, maquina))
    return -*abierta;
  const std::int32_t nueva =
      1 + std::max(NzLong(db.ReadScalar("SELECT MAX(SessionID) FROM SesionesPOS")),
                   NzLong(db.ReadScalar("SELECT MAX(SessionID) FROM SesionesCerradas")));
  db.ExecuteSQL(
      "INSERT INTO SesionesPOS (SessionID, MachineID, Operador, Apertura) "
      "VALUES (?, ?, ?, getdate())",
      {nueva, maquina, cajero});
  return nueva;
}

long cerrarSesionDe(HostSql& db, std::int32_t sesion) {
  if (esServidor(db))
    return CLng(db.ReadScalar("SELECT caja_cerrar_sesion(?)", {sesion}));
  const long movidas = db.ExecuteSQL(
      "INSERT INTO SesionesCerradas (SessionID, MachineID, Operador, Apertura, "
      "Cierre) SELECT SessionID, MachineID, Operador, Apertura, getdate() FROM "
      "SesionesPOS WHERE SessionID = ?",
      {sesion});
  db.ExecuteSQL("DELETE FROM SesionesPOS WHERE SessionID = ?", {sesion});
  return movidas;
}

bool hayTasa(HostSql& db) {
  const Variant tasa = db.ReadScalar("SELECT MAX(TipoCambio) FROM parametrosEmpresa");
  return db.TipoCambioCaja() > 0 && !tasa.isEmpty() && !tasa.isNull() && CDbl(tasa) > 0;
}

void fijarTasa(HostSql& db, double tasa) {
  // Save takes the largest rate of parametrosEmpresa: one row keeps it the current one.
  db.ExecuteSQL("DELETE FROM parametrosEmpresa");
  db.ExecuteSQL("INSERT INTO parametrosEmpresa (Fecha, TipoCambio) VALUES (getdate(), ?)", {tasa});
  db.ExecuteSQL(
      "INSERT INTO hostEmpresa (id, TipoCambioCaja) VALUES (1, ?) "
      "ON CONFLICT (id) DO UPDATE SET TipoCambioCaja = excluded.TipoCambioCaja",
      {tasa});
}

std::vector<FilaMovimiento> filasDe(HostSql& db, const Filtro& f) {
  const auto [condiciones, args] = condicionesDe(f);
  std::vector<FilaMovimiento> filas;
  auto rs = db.openrecordset(
      "SELECT M.TransID, M.Fecha, M.Hora, M.Sesion, M.Operador, M.TipoDocumento, "
      "M.NumeroDocumento, M.Debitos, M.Creditos, M.MontoIGTF, M.Clasificacion, " +
          anuladoComo() + " FROM MovimientosCaja M WHERE 1 = 1" + condiciones +
          " ORDER BY M.TransID",
      args);
  for (; !rs->Eof(); rs->MoveNext())
    filas.push_back(
        {NzLong(rs->Fields("TransID")), NzFecha(rs->Fields("Fecha")), NzFecha(rs->Fields("Hora")),
         NzLong(rs->Fields("Sesion")), NzTexto(rs->Fields("Operador")),
         documentoDe(NzTexto(rs->Fields("TipoDocumento")), NzLong(rs->Fields("NumeroDocumento"))),
         NzMoneda(rs->Fields("Debitos")), NzMoneda(rs->Fields("Creditos")),
         NzMoneda(rs->Fields("MontoIGTF")), CLng(rs->Fields("Anulado")) != 0,
         tipoDe(NzTexto(rs->Fields("Clasificacion"))), false, NzLong(rs->Fields("TransID"))});
  return filas;
}

std::vector<MontoMedio> totalesDe(HostSql& db, const Filtro& f, bool porTipo) {
  const auto [condiciones, args] = condicionesDe(f);
  std::map<std::pair<std::string, std::string>, MontoMedio> grupos;
  auto rs = db.openrecordset(
      "SELECT D.Medio, D.Monto, D.MontoNominal, M.Clasificacion FROM DetallesVarelta D "
      "INNER JOIN MovimientosCaja M ON M.TransID = D.TransID WHERE " +
          enPie() + condiciones,
      args);
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

std::map<std::int32_t, std::string> mediosPorMovimiento(HostSql& db, const Filtro& f) {
  const auto [condiciones, args] = condicionesDe(f);
  std::map<std::int32_t, std::string> medios;
  auto rs = db.openrecordset(
      "SELECT D.TransID, D.Medio FROM DetallesVarelta D INNER JOIN MovimientosCaja M ON "
      "M.TransID = D.TransID WHERE 1 = 1" +
          condiciones + " ORDER BY D.TransID, D.Id",
      args);
  for (; !rs->Eof(); rs->MoveNext()) {
    std::string& lista = medios[NzLong(rs->Fields(0))];
    const std::string medio = NzTexto(rs->Fields(1));
    if ((" " + lista + ",").find(" " + medio + ",") == std::string::npos)
      lista += (lista.empty() ? "" : ", ") + medio;
  }
  return medios;
}

std::int32_t maquinaDeMovimiento(HostSql& db, std::int32_t transId) {
  return NzLong(
      db.ReadScalar("SELECT machineID FROM MovimientosCaja WHERE TransID = ?", {transId}));
}

std::optional<std::int32_t> cobradoEn(HostSql& db, const std::string& tipo, std::int32_t numero) {
  return enteroSiHay(db.ReadScalar("SELECT MIN(M.TransID) FROM MovimientosCaja M WHERE " + enPie() +
                                       " AND " + kVenta +
                                       " AND M.TipoDocumento = ? AND M.NumeroDocumento = ?",
                                   {tipo, numero}));
}

void anotarVuelto(HostSql& db, std::int32_t transId, const std::string& medio, Currency monto,
                  Currency nominal) {
  db.ExecuteSQL("INSERT INTO hostVueltos (TransID, Medio, Monto, MontoNominal) VALUES (?, ?, ?, ?)",
                {transId, medio, monto, nominal});
}

std::vector<MontoMedio> vueltoDe(HostSql& db, std::int32_t transId) {
  return leerFilas(db, "SELECT * FROM hostVueltos WHERE TransID = ?", {transId}, [](Recordset& rs) {
    return MontoMedio{NzTexto(rs.Fields("Medio")), NzMoneda(rs.Fields("Monto")),
                      NzMoneda(rs.Fields("MontoNominal"))};
  });
}

void anotarImportes(HostSql& db, std::int32_t transId, const Importes& i) {
  db.ExecuteSQL("INSERT INTO hostImportes (TransID, Base, IVA, Credito) VALUES (?, ?, ?, ?)",
                {transId, i.base, i.iva, i.credito});
}

std::optional<Importes> importesDe(HostSql& db, std::int32_t transId) {
  auto rs =
      db.openrecordset("SELECT Base, IVA, Credito FROM hostImportes WHERE TransID = ?", {transId});
  if (rs->Eof())
    return std::nullopt;
  return Importes{NzMoneda(rs->Fields(0)), NzMoneda(rs->Fields(1)), NzMoneda(rs->Fields(2))};
}

void anotarClave(HostSql& db, const std::string& clave, std::int32_t transId) {
  db.ExecuteSQL("INSERT INTO hostClaves (Clave, TransID) VALUES (?, ?)", {clave, transId});
}

std::optional<Anulacion> anulacionDe(HostSql& db, std::int32_t transId) {
  auto rs = db.openrecordset(
      "SELECT Fecha, Operador, Motivo FROM hostAnulaciones WHERE TransID = ?", {transId});
  if (rs->Eof())
    return std::nullopt;
  return Anulacion{NzFecha(rs->Fields(0)), NzTexto(rs->Fields(1)), NzTexto(rs->Fields(2))};
}

void anotarAnulacion(HostSql& db, std::int32_t transId, const std::string& cajero,
                     const std::string& motivo) {
  db.ExecuteSQL(
      "INSERT INTO hostAnulaciones (TransID, Fecha, Operador, Motivo) VALUES (?, getdate(), ?, ?)",
      {transId, cajero, motivo});
}

void anularEnServidor(HostSql& db, std::int32_t transId, const std::string& cajero,
                      const std::string& aprobador, const std::string& motivo) {
  db.ReadScalar("SELECT caja_anular(?, ?, ?, ?)", {transId, cajero, aprobador, motivo});
}

std::vector<std::pair<std::string, std::string>> aprobacionesDe(HostSql& db, std::int32_t transId) {
  return leerFilas(db, "SELECT Accion, Aprobador FROM hostAuditoria WHERE TransID = ? ORDER BY id",
                   {transId}, [](Recordset& rs) {
                     return std::pair{NzTexto(rs.Fields(0)), NzTexto(rs.Fields(1))};
                   });
}

std::vector<std::string> documentosRepetidos(HostSql& db) {
  auto rs = db.openrecordset(
      "SELECT M.TipoDocumento, M.NumeroDocumento, M.TransID, M.machineID FROM MovimientosCaja M "
      "WHERE " +
      enPie() + " AND " + kVentaConDocumento +
      " AND EXISTS (SELECT 1 FROM MovimientosCaja O WHERE " + enPie("O") +
      " AND COALESCE(O.Clasificacion, '') = '' AND O.TipoDocumento = M.TipoDocumento AND "
      "O.NumeroDocumento = M.NumeroDocumento AND O.machineID <> M.machineID) ORDER BY "
      "M.TipoDocumento, M.NumeroDocumento, M.TransID");
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

std::vector<std::shared_ptr<CMedioPago>> mediosDelCatalogo(HostSql& db) {
  std::vector<std::shared_ptr<CMedioPago>> lista;
  auto rs = db.openrecordset("SELECT * FROM MediosPago ORDER BY posicion, Codigo");
  for (; !rs->Eof(); rs->MoveNext()) {
    auto m = std::make_shared<CMedioPago>();
    m->loadInstance(*rs);
    lista.push_back(m);
  }
  return lista;
}

std::string catalogoComoTexto(HostSql& db) {
  std::string texto;
  auto rs = db.openrecordset("SELECT * FROM MediosPago ORDER BY Codigo");
  for (; !rs->Eof(); rs->MoveNext())
    for (int i = 0; i < rs->FieldCount(); ++i)
      texto += NzTexto(rs->Fields(i)) + '\x1f';
  return texto;
}

bool hayCatalogo(HostSql& db) {
  return CLng(db.ReadScalar("SELECT COUNT(*) FROM MediosPago")) > 0;
}

bool claveAparcada(HostSql& db, const std::string& clave) {
  return CLng(db.ReadScalar("SELECT COUNT(*) FROM saveMovsCaja WHERE clave = ?", {clave})) > 0;
}

void registrarCierre(HostSql& db, Cierre& registro, Asiento a) {
  // On a server the closing is the server's function's, in one call: a
  // till's login writes no closing itself.
  if (esServidor(db))
    return registrarEnServidor(db, registro, a);
  db.EnTransaccion([&] {
    db.ExecuteSQL("INSERT INTO hostCierres (MachineID, Fecha, Operador) VALUES (?, ?, ?)",
                  {registro.maquina, registro.fecha, registro.operador});
    registro.id = CLng(db.ReadScalar("SELECT scope_identity()"));
    for (const auto& l : registro.lineas)
      db.ExecuteSQL(
          "INSERT INTO hostCierreDetalles (idCierre, codigoMedio, esperadoMN, esperadoNominal, "
          "tipoCambio, contado, diferencia) VALUES (?, ?, ?, ?, ?, ?, ?)",
          {registro.id, l.medio, l.esperadoMN, l.esperadoNominal, l.tipoCambio, l.contado,
           l.diferencia});
    for (const auto& d : registro.denominaciones)
      db.ExecuteSQL(
          "INSERT INTO hostCierreDenominaciones (idCierre, codigoMedio, valor, cantidad) "
          "VALUES (?, ?, ?, ?)",
          {registro.id, d.medio, d.valor, d.cantidad});
    for (const auto& t : registro.porTipo)
      db.ExecuteSQL(
          "INSERT INTO hostCierreTipos (idCierre, tipo, codigoMedio, montoMN, montoNominal) "
          "VALUES (?, ?, ?, ?, ?)",
          {registro.id, t.tipo, t.medio, t.montoMN, t.montoNominal});
    a.detalle = "cierre " + std::to_string(registro.id) + "; " + a.detalle;
    anotar(db, a);
  });
}

std::vector<Cierre> cierresGuardados(HostSql& db, std::int32_t uno,
                                     std::optional<std::int32_t> maquina) {
  std::vector<Cierre> lista;
  auto rs = uno       ? db.openrecordset("SELECT * FROM hostCierres WHERE id = ?", {uno})
            : maquina ? db.openrecordset(
                            "SELECT * FROM hostCierres WHERE MachineID = ? ORDER BY id", {*maquina})
                      : db.openrecordset("SELECT * FROM hostCierres ORDER BY id");
  for (; !rs->Eof(); rs->MoveNext())
    lista.push_back({NzLong(rs->Fields("id")),
                     NzLong(rs->Fields("MachineID")),
                     NzFecha(rs->Fields("Fecha")),
                     NzTexto(rs->Fields("Operador")),
                     {}});
  for (auto& cierre : lista)
    completar(db, cierre);
  return lista;
}

std::vector<MovimientoDelDia> movimientosEntre(HostSql& db, Fecha desde, Fecha hasta,
                                               std::optional<std::int32_t> maquina) {
  const auto [condicion, a] = diasEntre("M.Fecha", "M.machineID", desde, hasta, maquina);
  return leerFilas(db,
                   "SELECT M.Fecha, M.Clasificacion, M.Debitos, M.Creditos, M.MontoIGTF, " +
                       anuladoComo() + " FROM MovimientosCaja M WHERE " + condicion,
                   a, [](Recordset& rs) {
                     return MovimientoDelDia{
                         NzFecha(rs.Fields("Fecha")),      NzTexto(rs.Fields("Clasificacion")),
                         NzMoneda(rs.Fields("Debitos")),   NzMoneda(rs.Fields("Creditos")),
                         NzMoneda(rs.Fields("MontoIGTF")), CLng(rs.Fields("Anulado")) != 0};
                   });
}

std::vector<LineaDelDia> lineasDeVentasEntre(HostSql& db, Fecha desde, Fecha hasta,
                                             std::optional<std::int32_t> maquina) {
  const auto [condicion, a] = diasEntre("M.Fecha", "M.machineID", desde, hasta, maquina);
  return leerFilas(
      db,
      "SELECT M.Fecha, D.Medio, D.Monto FROM DetallesVarelta D INNER JOIN MovimientosCaja M ON "
      "M.TransID = D.TransID WHERE " +
          enPie() + " AND " + kVenta + " AND " + condicion,
      a, [](Recordset& rs) {
        return LineaDelDia{NzFecha(rs.Fields("Fecha")), NzTexto(rs.Fields("Medio")),
                           NzMoneda(rs.Fields("Monto"))};
      });
}

std::vector<DiferenciaDelDia> diferenciasEntre(HostSql& db, Fecha desde, Fecha hasta,
                                               std::optional<std::int32_t> maquina) {
  const auto [condicion, a] = diasEntre("C.Fecha", "C.MachineID", desde, hasta, maquina);
  return leerFilas(db,
                   "SELECT C.Fecha, D.diferencia, D.tipoCambio FROM hostCierreDetalles D INNER "
                   "JOIN hostCierres C ON C.id = D.idCierre WHERE " +
                       condicion,
                   a, [](Recordset& rs) {
                     return DiferenciaDelDia{NzFecha(rs.Fields("Fecha")),
                                             NzMoneda(rs.Fields("diferencia")),
                                             NzDouble(rs.Fields("tipoCambio"))};
                   });
}

DatosEmpresa empresaDe(HostSql& db) {
  DatosEmpresa e;
  auto rs = db.openrecordset(
      "SELECT Nombre, Rif, Direccion, ContribuyenteEspecial, porcentajeIGTF456 FROM hostEmpresa "
      "WHERE id = 1");
  if (rs->Eof())
    return e;
  e.nombre = NzTexto(rs->Fields(0));
  e.rif = NzTexto(rs->Fields(1));
  e.direccion = NzTexto(rs->Fields(2));
  e.especial = !rs->Fields(3).isNull() && CBool(rs->Fields(3));
  e.igtf = NzDouble(rs->Fields(4));
  return e;
}

void guardarEmpresa(HostSql& db, const DatosEmpresa& e) {
  db.ExecuteSQL(
      "INSERT INTO hostEmpresa (id, Nombre, Rif, Direccion, ContribuyenteEspecial, "
      "porcentajeIGTF456) VALUES (1, ?, ?, ?, ?, ?) ON CONFLICT (id) DO UPDATE SET "
      "Nombre = excluded.Nombre, Rif = excluded.Rif, Direccion = excluded.Direccion, "
      "ContribuyenteEspecial = excluded.ContribuyenteEspecial, "
      "porcentajeIGTF456 = excluded.porcentajeIGTF456",
      {e.nombre, e.rif, e.direccion, Variant(e.especial), e.igtf});
}

void atarLogin(HostSql& db, const std::string& login, std::int32_t maquina) {
  db.ExecuteSQL(
      "INSERT INTO hostLogins (Login, MachineID) VALUES (?, ?) ON CONFLICT (Login) DO UPDATE "
      "SET MachineID = excluded.MachineID",
      {login, maquina});
}

CobroDocumento cobroDe(HostSql& db, const std::string& tipo, std::int32_t numero,
                       bool soloSinEnviar) {
  CobroDocumento k;
  const Argumentos doc{tipo, numero};
  const std::string donde = " WHERE " + enPie() +
                            " AND M.TipoDocumento = ? AND M.NumeroDocumento = ?" +
                            (soloSinEnviar ? std::string(" AND ") + kSinEnviar : std::string());
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

}  // namespace caja::app
