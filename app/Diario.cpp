#include "app/Diario.h"

#include <QUuid>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>

#include "app/Auditoria.h"
#include "app/Enviador.h"
#include "caja/base/Conversiones.h"
#include "caja/host/ArchivosPrivados.h"
#include "caja/host/DialectoSql.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/TransaccionHost.h"

namespace caja::app {

namespace {

// What a sale reads besides the movements: copied whole from the server.
constexpr const char* kReferencias[] = {"MediosPago",        "SesionesPOS", "SesionesCerradas",
                                        "parametrosEmpresa", "hostEmpresa", "hostEntidades",
                                        "hostSupervisores",  "hostCajeros", "generalEmisores"};

const Tabla& tablaDe(const std::string& nombre) {
  for (const Tabla& t : tablasEsquema())
    if (t.nombre == nombre)
      return t;
  throw CajaError(kErrorBaseDatos, "caja", "Tabla desconocida: " + nombre);
}

void copiarTabla(HostSql& servidor, HostSql& diario, const Tabla& t) {
  std::string columnas, marcas;
  for (const Columna& c : t.columnas) {
    columnas += (columnas.empty() ? "" : ", ") + std::string(c.nombre);
    marcas += marcas.empty() ? "?" : ", ?";
  }
  const std::string tabla(t.nombre);
  diario.ExecuteSQL("DELETE FROM " + tabla);
  auto rs = servidor.openrecordset("SELECT " + columnas + " FROM " + tabla);
  const std::string insertar =
      "INSERT INTO " + tabla + " (" + columnas + ") VALUES (" + marcas + ")";
  for (; !rs->Eof(); rs->MoveNext()) {
    Argumentos fila;
    for (int i = 0; i < rs->FieldCount(); ++i)
      fila.push_back(rs->Fields(i));
    diario.ExecuteSQL(insertar, fila);
  }
}

// The drawers as the server holds them; the details go first, since they
// point at their drawer.
void copiarCajasEn(HostSql& servidor, HostSql& diario) {
  diario.ExecuteSQL("DELETE FROM cvCajaDetalles");
  copiarTabla(servidor, diario, tablaDe("cvCaja"));
  copiarTabla(servidor, diario, tablaDe("cvCajaDetalles"));
}

// Reads the server in one snapshot. Other tills keep saving while the
// journal copies: read table by table, a drawer line made by another till's
// first sale between two reads would reach the journal without its drawer.
void enUnaInstantanea(HostSql& servidor, const std::function<void()>& lectura) {
  TransaccionHost transaccion(servidor);
  servidor.ExecuteSQL("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY");
  lectura();
  transaccion.commit();
}

// The movement of the journal as saved there, with how its change went back.
struct Guardado {
  CVarelta mov;
  std::vector<Argumentos> vueltos;  // Medio, Monto, MontoNominal
};

Guardado leerDelDiario(HostSql& diario, std::int32_t local) {
  Guardado g;
  g.mov.load(local);
  auto rs = diario.openrecordset(
      "SELECT Medio, Monto, MontoNominal FROM hostVueltos WHERE TransID = ?", {local});
  for (; !rs->Eof(); rs->MoveNext())
    g.vueltos.push_back({rs->Fields(0), rs->Fields(1), rs->Fields(2)});
  return g;
}

// "3 (máquina 1)": a movement and the till that charged it.
std::string enCaja(std::int32_t numero, std::int32_t maquina) {
  return std::to_string(numero) + " (máquina " + std::to_string(maquina) + ")";
}

// A sale of a document the server already holds as charged (not voided):
// both are kept, and the conflict is named. A sale without a document
// (number 0, what `cobrar` records when none is given) is never one.
std::string conflictoDe(HostSql& servidor, const CVarelta& mov) {
  if (mov.TipoDocRel.empty() || mov.NumeroDocRel == 0 || !mov.Clasificacion.empty())
    return "";
  auto rs = servidor.openrecordset(
      "SELECT M.TransID, M.machineID FROM MovimientosCaja M LEFT JOIN hostAnulaciones A ON "
      "A.TransID = M.TransID WHERE M.TipoDocumento = ? AND M.NumeroDocumento = ? AND A.TransID "
      "IS NULL AND COALESCE(M.Clasificacion, '') = '' ORDER BY M.TransID",
      {mov.TipoDocRel, mov.NumeroDocRel});
  std::string previos;
  for (; !rs->Eof(); rs->MoveNext())
    previos += (previos.empty() ? "" : ", ") + enCaja(CLng(rs->Fields(0)), NzLong(rs->Fields(1)));
  if (previos.empty())
    return "";
  return "El documento " + mov.TipoDocRel + " " + std::to_string(mov.NumeroDocRel) +
         " se cobró en más de una caja: movimientos " + previos + " y ";
}

// One movement to the server in one transaction, unless the server has its
// key already; the server's number either way.
std::int32_t enviar(HostSql& servidor, Guardado& g, const std::string& clave,
                    std::string& conflicto) {
  std::int32_t numero = 0;
  servidor.EnTransaccion(
      [&] {
        const Variant previo =
            servidor.ReadScalar("SELECT TransID FROM hostClaves WHERE Clave = ?", {clave});
        if (!previo.isEmpty()) {
          numero = CLng(previo);
          return;
        }
        conflicto = conflictoDe(servidor, g.mov);
        CVarelta& m = g.mov;
        olvidarGuardado(m);
        m.Save(m.Sesion, m.Operador, m.TipoDocRel, m.NumeroDocRel, m.TipoEntidad, m.CodigoEntidad,
               m.Descripcion, m.fecha, Variant(), m.Clasificacion, m.Beneficiario, m.montoIGTF,
               m.tipoCambio);
        m.commitTransEf();
        for (auto v : g.vueltos) {
          v.insert(v.begin(), m.TransID);
          servidor.ExecuteSQL(
              "INSERT INTO hostVueltos (TransID, Medio, Monto, MontoNominal) VALUES (?, ?, ?, ?)",
              v);
        }
        servidor.ExecuteSQL("INSERT INTO hostClaves (Clave, TransID) VALUES (?, ?)",
                            {clave, m.TransID});
        numero = m.TransID;
      },
      [&] { olvidarGuardado(g.mov); });
  return numero;
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
      if (servidor.ReadScalar("SELECT id FROM hostAuditoria WHERE Origen = ?", {a.origen})
              .isEmpty())
        anotar(servidor, a);
    });
    diario.ExecuteSQL("INSERT INTO hostAuditoriaEnviada (id) VALUES (?)", {fila});
  }
}

}  // namespace

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
  enUnaInstantanea(servidor, [&] {
    diario.EnTransaccion([&] {
      for (const char* tabla : kReferencias)
        copiarTabla(servidor, diario, tablaDe(tabla));
      copiarCajasEn(servidor, diario);
    });
  });
}

void copiarCajas(HostSql& servidor, HostSql& diario) {
  enUnaInstantanea(servidor,
                   [&] { diario.EnTransaccion([&] { copiarCajasEn(servidor, diario); }); });
}

std::vector<Pendiente> pendientes(HostSql& diario) {
  std::vector<Pendiente> lista;
  auto rs = diario.openrecordset(
      "SELECT K.Clave, K.TransID, M.Fecha, M.TipoDocumento, M.NumeroDocumento, M.Debitos, "
      "M.Creditos FROM hostClaves K INNER JOIN MovimientosCaja M ON M.TransID = K.TransID "
      "WHERE K.TransIDServidor IS NULL ORDER BY K.TransID");
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string tipo = NzTexto(rs->Fields(3));
    lista.push_back({NzTexto(rs->Fields(0)), NzLong(rs->Fields(1)),
                     NzFecha(rs->Fields(2)).date().toString(),
                     tipo.empty() ? "" : tipo + ":" + std::to_string(NzLong(rs->Fields(4))),
                     NzMoneda(rs->Fields(5)), NzMoneda(rs->Fields(6))});
  }
  return lista;
}

Envio sincronizar(const std::shared_ptr<HostSql>& servidor,
                  const std::shared_ptr<HostSql>& diario) {
  const Cerrojo enviando(carpetaDeDatos(true) / "envio.lock", true);
  Envio envio;
  for (const Pendiente& p : pendientes(*diario)) {
    try {
      InicializarEntorno(diario);
      Guardado g = leerDelDiario(*diario, p.numeroLocal);
      InicializarEntorno(servidor);
      std::string conflicto;
      const std::int32_t numero = enviar(*servidor, g, p.clave, conflicto);
      diario->ExecuteSQL("UPDATE hostClaves SET TransIDServidor = ? WHERE Clave = ?",
                         {numero, p.clave});
      envio.enviados.emplace_back(p.numeroLocal, numero);
      if (!conflicto.empty())
        envio.conflictos.push_back(
            conflicto +
            enCaja(numero,
                   NzLong(servidor->ReadScalar(
                       "SELECT machineID FROM MovimientosCaja WHERE TransID = ?", {numero}))));
    } catch (const CajaError& e) {
      // A movement the server refuses stays in the journal, named, and does
      // not hold back the ones after it; a lost link ends the run.
      if (e.number() == kErrorConexion)
        throw;
      envio.fallidos.push_back("Movimiento local " + std::to_string(p.numeroLocal) +
                               " no enviado: " + e.description());
    }
  }
  InicializarEntorno(servidor);
  enviarAuditoria(*servidor, *diario);
  // Noted only when something went, so that a sale with nothing to send
  // writes nothing more.
  if (envio.fallidos.empty() && !envio.enviados.empty())
    anotarEnvio();
  return envio;
}

std::int32_t numeroEnServidor(HostSql& diario, std::int32_t local) {
  auto rs =
      diario.openrecordset("SELECT TransIDServidor FROM hostClaves WHERE TransID = ?", {local});
  if (rs->Eof())
    return -1;
  return NzLong(rs->Fields(0));
}

void olvidarGuardado(CVarelta& mov) {
  mov.TransID = 0;
  for (const auto& d : *mov.colDetalles)
    d->Id = 0;
}

void avisarEnvio(const Envio& envio) {
  for (const auto* lista : {&envio.conflictos, &envio.fallidos})
    for (const auto& linea : *lista)
      std::cerr << linea << std::endl;
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
