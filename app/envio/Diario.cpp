#include "app/envio/Diario.h"

#include <QUuid>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "app/datos/Auditoria.h"
#include "app/controles/Autorizacion.h"
#include "app/envio/Enviador.h"
#include "app/linea/Salida.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/host/ArchivosPrivados.h"
#include "caja/host/DialectoSql.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

// Movements sent in one call: few round trips for a backlog, and a batch
// small enough that one the server refuses is soon sent again one by one.
constexpr std::size_t kLote = 100;

// The documents the server holds as charged and not voided, since a day:
// what a till checks a sale's document against. Today's and yesterday's,
// where nearly every repeat happens, keep the copy small enough to take
// after every send; an older repeat is still named when it is sent.
constexpr const char* kDocumentosCobrados =
    "SELECT M.TipoDocumento, M.NumeroDocumento, M.TransID, M.machineID FROM MovimientosCaja M "
    "LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID WHERE A.TransID IS NULL AND "
    "COALESCE(M.Clasificacion, '') = '' AND COALESCE(M.TipoDocumento, '') <> '' AND "
    "M.NumeroDocumento <> 0 AND M.Fecha >= ?";
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

// Sends a batch in one call, one server transaction; the journal marks
// each movement with the number the server gave it. Exactly once: the
// server keeps each key with its movement, so a batch whose answer was lost
// is answered again from the keys when it is sent once more.
void enviarLote(HostSql& servidor, HostSql& diario, const std::vector<Pendiente>& lote,
                Envio& envio) {
  std::vector<std::string> movimientos;
  for (const Pendiente& p : lote)
    movimientos.push_back(movimientoJson(diario, p));
  const std::string texto = unidas(movimientos);
  std::map<std::string, std::pair<std::int32_t, std::string>> respuesta;
  // One statement, its own transaction: one round trip.
  servidor.Reintentando([&] {
    respuesta.clear();
    auto rs =
        servidor.openrecordset("SELECT enviada, numero, previos FROM caja_recibir(?)", {texto});
    for (; !rs->Eof(); rs->MoveNext())
      respuesta[NzTexto(rs->Fields(0))] = {NzLong(rs->Fields(1)), NzTexto(rs->Fields(2))};
  });
  diario.EnTransaccion([&] {
    for (const Pendiente& p : lote)
      diario.ExecuteSQL("UPDATE hostClaves SET TransIDServidor = ? WHERE Clave = ?",
                        {respuesta.at(p.clave).first, p.clave});
  });
  for (const Pendiente& p : lote) {
    const auto& [numero, previos] = respuesta.at(p.clave);
    envio.enviados.emplace_back(p.numeroLocal, numero);
    if (!previos.empty())
      envio.conflictos.push_back(conflictoDe(p, previos, numero));
  }
}

// One movement alone, after its batch was refused: a refusal of its own is
// named, and it stays pending.
void enviarSolo(HostSql& servidor, HostSql& diario, const Pendiente& p, Envio& envio) {
  try {
    enviarLote(servidor, diario, {p}, envio);
  } catch (const CajaError& e) {
    if (e.number() == kErrorConexion)
      throw;
    envio.fallidos.push_back(
        {p.clave, p.numeroLocal, p.maquina,
         "Movimiento local " + std::to_string(p.numeroLocal) + " no enviado: " + e.description()});
  }
}

// The journal's trail rows the server has not got, in order, each with its
// movement's number on the server and, as its origin, its hash in the
// journal, which keeps a row from reaching the server twice. A row whose
// movement is not on the server yet waits, and those after it.
void enviarAuditoria(HostSql& servidor, HostSql& diario) {
  const std::int64_t enviadas =
      NzLong(diario.ReadScalar("SELECT MAX(id) FROM hostAuditoriaEnviada"));
  for (Asiento a : asientos(diario, enviadas)) {
    const auto fila = static_cast<std::int32_t>(a.id);
    if (a.movimiento) {
      a.movimiento = numeroEnServidor(diario, *a.movimiento);
      if (*a.movimiento <= 0)
        return;
    }
    a.origen = a.hash;
    servidor.EnTransaccion([&] {
      if (!servidor.ReadScalar("SELECT id FROM hostAuditoria WHERE Origen = ?", {a.origen})
               .isEmpty())
        return;
      anotar(servidor, a);
      contarEnServidor(servidor, a);
    });
    diario.ExecuteSQL("INSERT INTO hostAuditoriaEnviada (id) VALUES (?)", {fila});
  }
}

// Keeps each conflict of the run in the journal, once per movement and
// kind, with a row of the journal's trail, which reaches the server's with
// the rest: what went wrong is heard of, at the till and in the shop.
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

void guardarConflictos(HostSql& diario, const Envio& envio) {
  const std::pair<const char*, const std::vector<Aviso>*> clases[] = {
      {"documento", &envio.conflictos}, {"rechazo", &envio.fallidos}};
  diario.EnTransaccion([&] {
    for (const auto& [clase, avisos] : clases)
      for (const Aviso& aviso : *avisos) {
        if (!guardarConflicto(diario, clase, aviso))
          continue;
        Asiento a;
        a.maquina = aviso.maquina;
        a.accion = "conflicto";
        a.detalle = aviso.texto;
        anotar(diario, a);
      }
  });
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

// What the till sent is kept in the journal for "DiasEnviados" days (section
// "Diario" of ZOR, 30 unless set), so that it reprints a receipt while the
// server is away; older sent movements leave the journal, children first.
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

}  // namespace

std::vector<Conflicto> conflictos(HostSql& diario, bool todos) {
  std::vector<Conflicto> lista;
  auto rs = diario.openrecordset(std::string("SELECT * FROM hostConflictos") +
                                 (todos ? "" : " WHERE ResueltoPor = ''") + " ORDER BY id");
  for (; !rs->Eof(); rs->MoveNext())
    lista.push_back({NzLong(rs->Fields("id")), NzTexto(rs->Fields("Fecha")),
                     NzTexto(rs->Fields("Clase")), NzLong(rs->Fields("NumeroLocal")),
                     NzLong(rs->Fields("MachineID")), NzTexto(rs->Fields("Detalle")),
                     NzTexto(rs->Fields("ResueltoPor")), NzTexto(rs->Fields("ResueltoEl"))});
  return lista;
}

std::filesystem::path carpetaDeDatos(bool crear) {
  const char* xdg = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  const std::filesystem::path raiz =
      xdg && *xdg ? std::filesystem::path(xdg)
                  : std::filesystem::path(home ? home : ".") / ".local" / "share";
  if (crear)
    crearCarpetaPrivada(raiz / "caja");
  return raiz / "caja";
}

void anotarError(const CajaError& e) {
  const auto carpeta = carpetaDeDatos(false);
  if (!std::filesystem::is_directory(carpeta))
    return;
  const auto ruta = carpeta / "caja.log";
  crearArchivoPrivado(ruta);
  std::ofstream(ruta, std::ios::app) << Fecha::now().toIsoText() << " Error " << e.number() << " ("
                                     << e.source() << "): " << e.description() << '\n';
}

std::string rutaDiario(bool crearCarpeta) {
  return (carpetaDeDatos(crearCarpeta) / "diario.db").string();
}

std::shared_ptr<HostSql> abrirDiario(bool crear) {
  const std::string ruta = rutaDiario(crear);
  if (!crear && !std::filesystem::exists(ruta))
    return nullptr;
  return SqliteFactoria::Abrir(ruta);
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

Envio sincronizar(HostSql& servidor, HostSql& diario) {
  const Cerrojo enviando(carpetaDeDatos(true) / "envio.lock", true);
  Envio envio;
  const std::vector<Pendiente> lista = pendientes(diario);
  for (std::size_t desde = 0; desde < lista.size(); desde += kLote) {
    const std::vector<Pendiente> lote(
        lista.begin() + static_cast<std::ptrdiff_t>(desde),
        lista.begin() + static_cast<std::ptrdiff_t>(std::min(lista.size(), desde + kLote)));
    try {
      enviarLote(servidor, diario, lote, envio);
    } catch (const CajaError& e) {
      // A lost link ends the run. A batch the server refuses is sent again
      // a movement at a time, so that the one it refuses stays in the
      // journal, named, and does not hold back the others.
      if (e.number() == kErrorConexion)
        throw;
      for (const Pendiente& p : lote)
        enviarSolo(servidor, diario, p, envio);
    }
  }
  guardarConflictos(diario, envio);
  enviarAuditoria(servidor, diario);
  olvidarEnviados(diario);
  // Noted only when something went, so that a sale with nothing to send
  // writes nothing more.
  if (envio.fallidos.empty() && !envio.enviados.empty())
    anotarEnvio();
  return envio;
}

std::string cobradoSegunDiario(HostSql& diario, const std::string& tipo, std::int32_t numero) {
  const Variant servidor = diario.ReadScalar(
      "SELECT MIN(TransID) FROM hostDocumentosCobrados WHERE TipoDocumento = ? AND "
      "NumeroDocumento = ?",
      {tipo, numero});
  if (!servidor.isNull() && !servidor.isEmpty())
    return std::to_string(CLng(servidor));
  const Variant local = diario.ReadScalar(
      "SELECT MIN(M.TransID) FROM MovimientosCaja M INNER JOIN hostClaves K ON K.TransID = "
      "M.TransID LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID WHERE K.TransIDServidor "
      "IS NULL AND A.TransID IS NULL AND M.TipoDocumento = ? AND M.NumeroDocumento = ? AND "
      "COALESCE(M.Clasificacion, '') = ''",
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

void olvidarGuardado(CVarelta& mov) {
  mov.TransID = 0;
  for (const auto& d : *mov.colDetalles)
    d->Id = 0;
}

void avisarEnvio(const Envio& envio) {
  for (const auto* lista : {&envio.conflictos, &envio.fallidos})
    for (const Aviso& aviso : *lista)
      std::cerr << aviso.texto << std::endl;
}

void avisarDiarioSinActualizar(const std::exception& e) {
  const auto* error = dynamic_cast<const CajaError*>(&e);
  std::cerr << "El diario de esta caja no se actualizó: "
            << (error ? error->description() : e.what()) << std::endl;
}

std::string nuevaClave() {
  return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
}

}  // namespace caja::app
