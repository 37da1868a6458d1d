#include "app/datos/Diario.h"

#include <cmath>
#include <iterator>
#include <sstream>

#include "app/datos/Json.h"
#include "app/datos/Sql.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/host/DialectoSql.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

// The documents the server holds as charged and not voided, since a day:
// what a till checks a sale's document against. Today's and yesterday's,
// where nearly every repeat happens, keep the copy small enough to take
// after every send; an older repeat is still named when it is sent.
const std::string kDocumentosCobrados =
    "SELECT M.TipoDocumento, M.NumeroDocumento, M.TransID, M.machineID FROM MovimientosCaja M "
    "WHERE " +
    enPie() + " AND " + kVentaConDocumento + " AND M.Fecha >= ?";
constexpr int kDiasDocumentos = 1;

// What a sale reads besides the movements: copied whole from the server.
constexpr const char* kReferencias[] = {"MediosPago",        "SesionesPOS", "SesionesCerradas",
                                        "parametrosEmpresa", "hostEmpresa", "hostEntidades",
                                        "hostSupervisores",  "hostCajeros", "generalEmisores"};

// A table's rows as the server holds them, read before the journal is
// written.
struct Copia {
  const Tabla& tabla;
  std::shared_ptr<Recordset> filas;
};

std::string columnasDe(const Tabla& t) {
  std::string columnas;
  for (const Columna& c : t.columnas)
    columnas += (columnas.empty() ? "" : ", ") + std::string(c.nombre);
  return columnas;
}

// The read of a whole table on the server, its columns in the schema's
// order; the people who may act, with their PIN hashes, through the
// server's function, which a till's login may call and no query of its own.
std::pair<std::string, Argumentos> lecturaDe(const char* tabla) {
  const Tabla& t = tablaDelEsquema(tabla);
  if (t.nombre == "hostSupervisores")
    return {"SELECT nombre, sal, hash, nivel FROM caja_personas('supervisor', NULL)", {}};
  if (t.nombre == "hostCajeros")
    return {"SELECT nombre, hash FROM caja_personas('cajero', NULL)", {}};
  return {"SELECT " + columnasDe(t) + " FROM " + std::string(t.nombre), {}};
}

// Replaces the journal's rows of the table with the copy's.
void escribir(HostSql& diario, const Copia& copia) {
  std::string marcas;
  for (std::size_t i = 0; i < copia.tabla.columnas.size(); ++i)
    marcas += marcas.empty() ? "?" : ", ?";
  const std::string tabla(copia.tabla.nombre);
  diario.ExecuteSQL("DELETE FROM " + tabla);
  const std::string insertar =
      "INSERT INTO " + tabla + " (" + columnasDe(copia.tabla) + ") VALUES (" + marcas + ")";
  for (auto& rs = *copia.filas; !rs.Eof(); rs.MoveNext()) {
    Argumentos fila;
    for (int i = 0; i < rs.FieldCount(); ++i)
      fila.push_back(rs.Fields(i));
    diario.ExecuteSQL(insertar, fila);
  }
}

// A value as JSON: money and numbers by their exact text, dates as the
// server reads them.
std::string valorJson(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Null:
    case VarType::Object:
      return "null";
    case VarType::Boolean:
      return v.asBool() ? "true" : "false";
    case VarType::Integer:
    case VarType::Long:
      return std::to_string(CLng(v));
    case VarType::Double:
      return std::isfinite(v.asDouble()) ? textoDeTasa(v.asDouble()) : "null";
    case VarType::Currency:
      return v.asCurrency().toMachineText();
    case VarType::Date:
      return json(v.asDate().toIsoText());
    case VarType::String:
      return json(v.asString());
  }
  return "null";
}

// The rows of a table that `donde` picks, each a JSON object by the
// server's (lower-case) column names, with the value of its first column:
// the row's own number, which its children point at.
struct FilaJson {
  std::string texto;
  std::int32_t numero;
};

std::vector<FilaJson> filasJson(HostSql& diario, const char* tabla, const std::string& donde,
                                const Argumentos& args) {
  const Tabla& t = tablaDelEsquema(tabla);
  auto rs = diario.openrecordset(
      "SELECT " + columnasDe(t) + " FROM " + std::string(t.nombre) + " WHERE " + donde, args);
  std::vector<FilaJson> filas;
  for (; !rs->Eof(); rs->MoveNext()) {
    std::string texto;
    for (std::size_t i = 0; i < t.columnas.size(); ++i)
      texto += std::string(texto.empty() ? "{" : ",") + json(lowerAscii(t.columnas[i].nombre)) +
               ":" + valorJson(rs->Fields(static_cast<int>(i)));
    filas.push_back({texto + "}", NzLong(rs->Fields(0))});
  }
  return filas;
}

std::vector<std::string> textos(const std::vector<FilaJson>& filas) {
  std::vector<std::string> lista;
  for (const FilaJson& f : filas)
    lista.push_back(f.texto);
  return lista;
}

std::string unidas(const std::vector<std::string>& partes) {
  std::string texto;
  for (const auto& p : partes)
    texto += (texto.empty() ? "" : ",") + p;
  return "[" + texto + "]";
}

// Rows with their children: {"fila": row, `hijos`: [child rows]}.
std::string conHijos(HostSql& diario, const std::vector<FilaJson>& filas, const char* hijos,
                     const char* tablaHija, const std::string& donde) {
  std::vector<std::string> partes;
  for (const FilaJson& f : filas)
    partes.push_back("{\"fila\":" + f.texto + ",\"" + hijos +
                     "\":" + unidas(textos(filasJson(diario, tablaHija, donde, {f.numero}))) + "}");
  return unidas(partes);
}

// A pending movement as the server's batch receiver takes it: its key, its
// header, lines with their coins, drawer transactions with their lines, how
// its change went back, and its void when the till voided it unsent.
std::string movimientoJson(HostSql& diario, const Pendiente& p) {
  const Argumentos local{p.numeroLocal};
  const auto cabecera = filasJson(diario, "MovimientosCaja", "TransID = ?", local);
  const auto vueltos = textos(filasJson(diario, "hostVueltos", "TransID = ?", local));
  return "{\"clave\":" + json(p.clave) + ",\"movimiento\":" + cabecera.at(0).texto +
         ",\"lineas\":" +
         conHijos(diario, filasJson(diario, "DetallesVarelta", "TransID = ? ORDER BY Id", local),
                  "denominaciones", "DetallesDenominacion", "idDetalle = ? ORDER BY Id") +
         ",\"transacciones\":" +
         conHijos(diario,
                  filasJson(diario, "transaccionesEfectivo",
                            "tipoTrans = 0 AND idOrigen = ? ORDER BY id", local),
                  "detalles", "transaccionEfectivoDetalles", "transID = ?") +
         ",\"vueltos\":" + unidas(vueltos) + ",\"importes\":" +
         unidas(textos(filasJson(diario, "hostImportes", "TransID = ?", local))) +
         ",\"anulaciones\":" +
         unidas(textos(filasJson(diario, "hostAnulaciones", "TransID = ?", local))) + "}";
}

// "3 (máquina 1)": a movement and the till that charged it.
std::string enCaja(std::int32_t numero, std::int32_t maquina) {
  return std::to_string(numero) + " (máquina " + std::to_string(maquina) + ")";
}

// Keeps a conflict in the journal once per movement and kind: whether it
// is new.
bool guardarConflicto(HostSql& diario, const char* clase, const Aviso& aviso) {
  if (!diario
           .ReadScalar("SELECT id FROM hostConflictos WHERE Clave = ? AND Clase = ?",
                       {aviso.clave, clase})
           .isEmpty())
    return false;
  diario.ExecuteSQL(
      "INSERT INTO hostConflictos (Fecha, Clave, Clase, NumeroLocal, MachineID, Detalle) "
      "VALUES (?, ?, ?, ?, ?, ?)",
      {Fecha::now().toIsoText(), aviso.clave, clase, aviso.numeroLocal, aviso.maquina,
       aviso.texto});
  return true;
}

Conflicto conflictoDeFila(Recordset& rs) {
  return {NzLong(rs.Fields("id")),           NzTexto(rs.Fields("Fecha")),
          NzTexto(rs.Fields("Clase")),       NzLong(rs.Fields("NumeroLocal")),
          NzLong(rs.Fields("MachineID")),    NzTexto(rs.Fields("Detalle")),
          NzTexto(rs.Fields("ResueltoPor")), NzTexto(rs.Fields("ResueltoEl"))};
}

// A document this till charged that the server's copy shows charged at
// another till too: the till that sent its sale first hears of it as well,
// once its copy has both. The trail has it already, from the other till.
void conflictosDeLaCopia(HostSql& diario) {
  auto rs = diario.openrecordset(
      "SELECT K.Clave, K.TransID, D.machineID, D.TipoDocumento, D.NumeroDocumento FROM "
      "hostDocumentosCobrados D INNER JOIN hostClaves K ON K.TransIDServidor = D.TransID WHERE "
      "EXISTS (SELECT 1 FROM hostDocumentosCobrados O WHERE O.TipoDocumento = D.TipoDocumento "
      "AND O.NumeroDocumento = D.NumeroDocumento AND O.machineID <> D.machineID)");
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string tipo = NzTexto(rs->Fields(3));
    const std::int32_t numero = NzLong(rs->Fields(4));
    std::vector<std::string> movimientos;
    for (auto todos = diario.openrecordset(
             "SELECT TransID, machineID FROM hostDocumentosCobrados WHERE TipoDocumento = ? AND "
             "NumeroDocumento = ? ORDER BY TransID",
             {tipo, numero});
         !todos->Eof(); todos->MoveNext())
      movimientos.push_back(enCaja(NzLong(todos->Fields(0)), NzLong(todos->Fields(1))));
    std::string lista;
    for (std::size_t i = 0; i < movimientos.size(); ++i)
      lista += (i == 0 ? "" : i + 1 == movimientos.size() ? " y " : ", ") + movimientos[i];
    guardarConflicto(diario, "documento",
                     {NzTexto(rs->Fields(0)), NzLong(rs->Fields(1)), NzLong(rs->Fields(2)),
                      "El documento " + tipo + " " + std::to_string(numero) +
                          " se cobró en más de una caja: movimientos " + lista});
  }
}

}  // namespace

void olvidarEnviados(HostSql& diario) {
  const auto dias =
      CLng(lmGetSettingCur(kAppZOR, "Diario", "DiasEnviados", Currency::fromUnits(30)));
  const Argumentos antes{Fecha::today() - Fecha(static_cast<double>(std::max(dias, 0)))};
  const std::string viejos =
      " IN (SELECT K.TransID FROM hostClaves K INNER JOIN MovimientosCaja M ON M.TransID = "
      "K.TransID WHERE K.TransIDServidor IS NOT NULL AND M.Fecha < ?)";
  diario.EnTransaccion([&] {
    diario.ExecuteSQL(
        "DELETE FROM DetallesDenominacion WHERE idDetalle IN (SELECT Id FROM DetallesVarelta "
        "WHERE TransID" +
            viejos + ")",
        antes);
    diario.ExecuteSQL(
        "DELETE FROM transaccionEfectivoDetalles WHERE transID IN (SELECT id FROM "
        "transaccionesEfectivo WHERE tipoTrans = 0 AND idOrigen" +
            viejos + ")",
        antes);
    diario.ExecuteSQL("DELETE FROM transaccionesEfectivo WHERE tipoTrans = 0 AND idOrigen" + viejos,
                      antes);
    for (const char* tabla :
         {"DetallesVarelta", "subDocsMC", "hostVueltos", "hostImportes", "hostAnulaciones"})
      diario.ExecuteSQL("DELETE FROM " + std::string(tabla) + " WHERE TransID" + viejos, antes);
    diario.ExecuteSQL("DELETE FROM hostClaves WHERE TransID" + viejos, antes);
    // Every movement of a journal has its key: one without is one just forgotten.
    diario.ExecuteSQL(
        "DELETE FROM MovimientosCaja WHERE Fecha < ? AND TransID NOT IN (SELECT TransID FROM "
        "hostClaves)",
        antes);
  });
}

// The server's answer for a sale of a document it already held as charged
// ("NUMBER:MACHINE ..."): both are kept, and the conflict is named once.
Aviso conflictoDe(const Pendiente& p, const std::string& previos, std::int32_t numero) {
  std::string nombrados;
  std::istringstream lista(previos);
  for (std::string par; lista >> par;) {
    const auto dos = par.find(':');
    nombrados += (nombrados.empty() ? "" : ", ") +
                 enCaja(std::stoi(par.substr(0, dos)), std::stoi(par.substr(dos + 1)));
  }
  const auto dos = p.documento.find(':');
  return {p.clave, p.numeroLocal, p.maquina,
          "El documento " + p.documento.substr(0, dos) + " " + p.documento.substr(dos + 1) +
              " se cobró en más de una caja: movimientos " + nombrados + " y " +
              enCaja(numero, p.maquina)};
}

std::vector<Conflicto> conflictos(HostSql& diario, bool todos) {
  std::vector<Conflicto> lista;
  auto rs = diario.openrecordset(std::string("SELECT * FROM hostConflictos") +
                                 (todos ? "" : " WHERE ResueltoPor = ''") + " ORDER BY id");
  for (; !rs->Eof(); rs->MoveNext())
    lista.push_back(conflictoDeFila(*rs));
  return lista;
}

std::optional<Conflicto> conflictoSinResolver(HostSql& diario, std::int32_t id) {
  auto rs =
      diario.openrecordset("SELECT * FROM hostConflictos WHERE id = ? AND ResueltoPor = ''", {id});
  if (rs->Eof())
    return std::nullopt;
  return conflictoDeFila(*rs);
}

void marcarResuelto(HostSql& diario, std::int32_t id, const std::string& aprobador) {
  diario.ExecuteSQL("UPDATE hostConflictos SET ResueltoPor = ?, ResueltoEl = ? WHERE id = ?",
                    {aprobador, Fecha::now().toIsoText(), id});
}

void guardarConflictos(HostSql& diario, const char* clase, const std::vector<Aviso>& avisos) {
  for (const Aviso& aviso : avisos) {
    if (!guardarConflicto(diario, clase, aviso))
      continue;
    Asiento a;
    a.maquina = aviso.maquina;
    a.accion = "conflicto";
    a.detalle = aviso.texto;
    anotar(diario, a);
  }
}

std::string loteJson(HostSql& diario, const std::vector<Pendiente>& lote) {
  std::vector<std::string> movimientos;
  for (const Pendiente& p : lote)
    movimientos.push_back(movimientoJson(diario, p));
  return unidas(movimientos);
}

std::map<std::string, std::pair<std::int32_t, std::string>> recibirLote(HostSql& servidor,
                                                                        const std::string& lote) {
  std::map<std::string, std::pair<std::int32_t, std::string>> respuesta;
  // One statement, its own transaction: one round trip.
  servidor.Reintentando([&] {
    respuesta.clear();
    auto rs =
        servidor.openrecordset("SELECT enviada, numero, previos FROM caja_recibir(?)", {lote});
    for (; !rs->Eof(); rs->MoveNext())
      respuesta[NzTexto(rs->Fields(0))] = {NzLong(rs->Fields(1)), NzTexto(rs->Fields(2))};
  });
  return respuesta;
}

void marcarEnviados(HostSql& diario,
                    const std::map<std::string, std::pair<std::int32_t, std::string>>& respuesta) {
  diario.EnTransaccion([&] {
    for (const auto& [clave, numero] : respuesta)
      diario.ExecuteSQL("UPDATE hostClaves SET TransIDServidor = ? WHERE Clave = ?",
                        {numero.first, clave});
  });
}

std::vector<Asiento> asientosSinEnviar(HostSql& diario) {
  return asientos(diario, NzLong(diario.ReadScalar("SELECT MAX(id) FROM hostAuditoriaEnviada")));
}

bool asientoRecibido(HostSql& servidor, const std::string& origen) {
  return !servidor.ReadScalar("SELECT id FROM hostAuditoria WHERE Origen = ?", {origen}).isEmpty();
}

void marcarAsientoEnviado(HostSql& diario, std::int64_t id) {
  diario.ExecuteSQL("INSERT INTO hostAuditoriaEnviada (id) VALUES (?)",
                    {static_cast<std::int32_t>(id)});
}

std::vector<MontoMedio> aporteDe(HostSql& diario) {
  std::map<std::string, MontoMedio> porMedio;
  const std::string pendiente =
      " INNER JOIN hostClaves K ON K.TransID = T.idOrigen AND T.tipoTrans = 0 WHERE "
      "K.TransIDServidor IS NULL";
  for (auto rs =
           diario.openrecordset("SELECT T.efectivoMN FROM transaccionesEfectivo T" + pendiente);
       !rs->Eof(); rs->MoveNext()) {
    auto& efe = porMedio.try_emplace("EFE", MontoMedio{"EFE", {}, {}}).first->second;
    efe.montoMN += NzMoneda(rs->Fields(0));
    efe.montoNominal += NzMoneda(rs->Fields(0));
  }
  for (auto rs = diario.openrecordset(
           "SELECT D.codigoMedio, D.valorMN, D.valorNominal FROM transaccionEfectivoDetalles D "
           "INNER JOIN transaccionesEfectivo T ON T.id = D.transID" +
           pendiente);
       !rs->Eof(); rs->MoveNext()) {
    const std::string medio = NzTexto(rs->Fields(0));
    auto& m = porMedio.try_emplace(medio, MontoMedio{medio, {}, {}}).first->second;
    m.montoMN += NzMoneda(rs->Fields(1));
    m.montoNominal += NzMoneda(rs->Fields(2));
  }
  std::vector<MontoMedio> aporte;
  for (const auto& [medio, m] : porMedio)
    aporte.push_back(m);
  return aporte;
}

void copiarReferencias(HostSql& servidor, HostSql& diario) {
  // Read together, in one snapshot and one round trip: other tills keep
  // saving meanwhile, and a drawer line made by another till's first sale
  // between two reads would reach the journal without its drawer.
  std::vector<const char*> tablas(std::begin(kReferencias), std::end(kReferencias));
  std::vector<std::pair<std::string, Argumentos>> lecturas;
  for (const char* t : tablas)
    lecturas.push_back(lecturaDe(t));
  lecturas.emplace_back(kDocumentosCobrados, Argumentos{Fecha::today() - Fecha(kDiasDocumentos)});
  tablas.push_back("hostDocumentosCobrados");
  for (const char* t : {"cvCaja", "cvCajaDetalles"}) {
    lecturas.push_back(lecturaDe(t));
    tablas.push_back(t);
  }
  lecturas.push_back(lecturaDe("hostIntentos"));
  const auto filas = servidor.LeerJuntas(lecturas);
  std::vector<Copia> copias, cajas;
  for (std::size_t i = 0; i < tablas.size(); ++i)
    (i + 2 < tablas.size() ? copias : cajas).push_back({tablaDelEsquema(tablas[i]), filas[i]});
  auto& intentos = *filas.back();
  // The journal is written only once all is read, in one short local
  // transaction: a sale at the till never waits on the link for its lock.
  diario.EnTransaccion([&] {
    for (const Copia& c : copias)
      escribir(diario, c);
    // Checked inside the journal's write transaction, so that no sale
    // slips in between; the drawer lines go first, since they point at
    // their drawer.
    if (pendientes(diario).empty()) {
      diario.ExecuteSQL("DELETE FROM cvCajaDetalles");
      for (const Copia& c : cajas)
        escribir(diario, c);
    }
    conflictosDeLaCopia(diario);
    // A lockout on the server (the shop's tills' wrong PINs add up there)
    // holds here too; this till's own count of wrong PINs stays its own.
    for (; !intentos.Eof(); intentos.MoveNext())
      diario.ExecuteSQL(
          "INSERT INTO hostIntentos (Rol, Nombre, Fallos, BloqueadoHasta) VALUES (?, ?, 0, ?) "
          "ON CONFLICT (Rol, Nombre) DO UPDATE SET "
          "BloqueadoHasta = MAX(BloqueadoHasta, excluded.BloqueadoHasta)",
          {intentos.Fields(0), intentos.Fields(1), intentos.Fields(3)});
  });
}

std::vector<Pendiente> pendientes(HostSql& diario) {
  std::vector<Pendiente> lista;
  auto rs = diario.openrecordset(
      "SELECT K.Clave, K.TransID, M.Fecha, M.TipoDocumento, M.NumeroDocumento, M.Debitos, "
      "M.Creditos, M.machineID FROM hostClaves K INNER JOIN MovimientosCaja M ON M.TransID = "
      "K.TransID "
      "WHERE K.TransIDServidor IS NULL ORDER BY K.TransID");
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string tipo = NzTexto(rs->Fields(3));
    lista.push_back({NzTexto(rs->Fields(0)), NzLong(rs->Fields(1)),
                     NzFecha(rs->Fields(2)).date().toString(),
                     tipo.empty() ? "" : tipo + ":" + std::to_string(NzLong(rs->Fields(4))),
                     NzMoneda(rs->Fields(5)), NzMoneda(rs->Fields(6)), NzLong(rs->Fields(7))});
  }
  return lista;
}

std::string cobradoSegunDiario(HostSql& diario, const std::string& tipo, std::int32_t numero) {
  const Variant servidor = diario.ReadScalar(
      "SELECT MIN(TransID) FROM hostDocumentosCobrados WHERE TipoDocumento = ? AND "
      "NumeroDocumento = ?",
      {tipo, numero});
  if (!servidor.isNull() && !servidor.isEmpty())
    return std::to_string(CLng(servidor));
  const Variant local = diario.ReadScalar(
      "SELECT MIN(M.TransID) FROM MovimientosCaja M WHERE " + std::string(kSinEnviar) + " AND " +
          enPie() + " AND M.TipoDocumento = ? AND M.NumeroDocumento = ? AND " + kVenta,
      {tipo, numero});
  return local.isNull() || local.isEmpty() ? "" : "local " + std::to_string(CLng(local));
}

std::int32_t numeroEnServidor(HostSql& diario, std::int32_t local) {
  auto rs =
      diario.openrecordset("SELECT TransIDServidor FROM hostClaves WHERE TransID = ?", {local});
  if (rs->Eof())
    return -1;
  return NzLong(rs->Fields(0));
}

std::int32_t numeroLocalDe(HostSql& diario, std::int32_t servidor) {
  return NzLong(
      diario.ReadScalar("SELECT TransID FROM hostClaves WHERE TransIDServidor = ?", {servidor}));
}

}  // namespace caja::app
