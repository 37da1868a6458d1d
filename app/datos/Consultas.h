#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/datos/Auditoria.h"
#include "app/datos/Tipos.h"
#include "caja/catalog/CMedioPago.h"
#include "caja/host/HostSql.h"

// Every statement the till's actions send, each behind a function named for
// what it reads or writes. A movement "stands" while it has no void
// (hostAnulaciones): one rule, written once, in the source of these.
namespace caja::app {

// A server, where the program's own writes of the till's day go through the
// server's functions.
bool esServidor(HostSql& db);

// Sessions.
std::vector<SesionAbierta> sesionesAbiertas(HostSql& db);
// The open session of `maquina` (the lowest, should it have two).
std::optional<std::int32_t> sesionAbiertaDe(HostSql& db, std::int32_t maquina);
// The machine of the open session `sesion`.
std::optional<std::int32_t> maquinaDeSesion(HostSql& db, std::int32_t sesion);
bool sesionCerrada(HostSql& db, std::int32_t sesion);
// The machine of the only open session, or of `sesion`; 0 when that is not one.
std::int32_t maquinaDeLaSesion(HostSql& db, std::optional<std::int32_t> sesion);
// The machines with sessions, open or closed.
std::set<std::int32_t> maquinasConSesiones(HostSql& db);
// Opens a session of `maquina`, numbered after every session there was:
// its number, or minus the number of the one it has open already.
std::int32_t abrirSesionDe(HostSql& db, std::int32_t maquina, const std::string& cajero);
// Moves the session to the closed ones: how many moved (0: it was not open).
long cerrarSesionDe(HostSql& db, std::int32_t sesion);

// The till's rate: whether the rate table has one above zero, and setting it.
bool hayTasa(HostSql& db);
void fijarTasa(HostSql& db, double tasa);

// Which movements a listing and its totals take.
struct Filtro {
  std::optional<Fecha> desde, hasta;  // days, `hasta` included
  std::optional<std::int32_t> sesion, maquina;
  std::optional<std::string> operador;
};
// The movements, numbered as the database numbers them.
std::vector<FilaMovimiento> filasDe(HostSql& db, const Filtro& f);
// Totals of the movements that stand, per method or per kind and method;
// added here rather than by the database so that no sum leaves Currency.
std::vector<MontoMedio> totalesDe(HostSql& db, const Filtro& f, bool porTipo);

// The methods each movement of the filter used, "EFE, USD", by its number.
std::map<std::int32_t, std::string> mediosPorMovimiento(HostSql& db, const Filtro& f);

std::int32_t maquinaDeMovimiento(HostSql& db, std::int32_t transId);
// The movement that charged the document and stands, or nothing.
std::optional<std::int32_t> cobradoEn(HostSql& db, const std::string& tipo, std::int32_t numero);

// What a saved movement keeps beside it: how its change went back (each
// method and the credited amount, "CREDITO"), what the sale was made of,
// and the key the till made for it.
void anotarVuelto(HostSql& db, std::int32_t transId, const std::string& medio, Currency monto,
                  Currency nominal);
std::vector<MontoMedio> vueltoDe(HostSql& db, std::int32_t transId);
struct Importes {
  Currency base, iva, credito;
};
void anotarImportes(HostSql& db, std::int32_t transId, const Importes& i);
std::optional<Importes> importesDe(HostSql& db, std::int32_t transId);
void anotarClave(HostSql& db, const std::string& clave, std::int32_t transId);

// A movement's void.
struct Anulacion {
  Fecha fecha;
  std::string operador, motivo;
};
std::optional<Anulacion> anulacionDe(HostSql& db, std::int32_t transId);
void anotarAnulacion(HostSql& db, std::int32_t transId, const std::string& cajero,
                     const std::string& motivo);
// The void on a server, by its function: drawer, void and trail in one call.
void anularEnServidor(HostSql& db, std::int32_t transId, const std::string& cajero,
                      const std::string& aprobador, const std::string& motivo);
// The trail's acts about a movement, in order: (act, approver).
std::vector<std::pair<std::string, std::string>> aprobacionesDe(HostSql& db, std::int32_t transId);

// The documents charged, standing, at more than one till, one line each:
// "FAC 1002: movimientos 3 (máquina 1), 4 (máquina 2)".
std::vector<std::string> documentosRepetidos(HostSql& db);

// The catalogue: its rows in the till's order, and all of it as one text,
// to tell whether a dialog changed it.
std::vector<std::shared_ptr<CMedioPago>> mediosDelCatalogo(HostSql& db);
std::string catalogoComoTexto(HostSql& db);
// Whether the catalogue has any method (a journal that never took its copy has none).
bool hayCatalogo(HostSql& db);

// Whether lines are parked under `clave`.
bool claveAparcada(HostSql& db, const std::string& clave);

// Closings: recorded with their count, note by note and per kind, and their
// row of the trail (which names it); read back whole.
void registrarCierre(HostSql& db, Cierre& cierre, Asiento a);
// One closing (`uno`), or all of them, of `maquina` when given.
std::vector<Cierre> cierresGuardados(HostSql& db, std::int32_t uno,
                                     std::optional<std::int32_t> maquina);

// A range of days' movements, lines and closings, for the month's report.
struct MovimientoDelDia {
  Fecha fecha;
  std::string clasificacion;
  Currency debitos, creditos, igtf;
  bool anulado;
};
struct LineaDelDia {
  Fecha fecha;
  std::string medio;
  Currency monto;
};
struct DiferenciaDelDia {
  Fecha fecha;
  Currency diferencia;
  double tipoCambio;
};
std::vector<MovimientoDelDia> movimientosEntre(HostSql& db, Fecha desde, Fecha hasta,
                                               std::optional<std::int32_t> maquina);
// The lines of the sales that stand.
std::vector<LineaDelDia> lineasDeVentasEntre(HostSql& db, Fecha desde, Fecha hasta,
                                             std::optional<std::int32_t> maquina);
std::vector<DiferenciaDelDia> diferenciasEntre(HostSql& db, Fecha desde, Fecha hasta,
                                               std::optional<std::int32_t> maquina);

// The shop's data.
DatosEmpresa empresaDe(HostSql& db);
void guardarEmpresa(HostSql& db, const DatosEmpresa& e);

// On a server: binds a till's login to its machine.
void atarLogin(HostSql& db, const std::string& login, std::int32_t maquina);

// A refund answers to its sale: what the sales of a document charged and
// what its refunds gave back, voided movements left out, in total (national
// currency, IGTF not counted) and per method (in the method's own currency,
// a sale's change taken off).
struct CobroDocumento {
  bool cobrado = false;         // some sale of it stands
  bool montosConocidos = true;  // false: known charged, but not what for
  Currency total, devuelto;
  std::map<std::string, Currency> pagado, dado;
};
// On `db`; only what waits to be sent when `soloSinEnviar` (a till's journal).
CobroDocumento cobroDe(HostSql& db, const std::string& tipo, std::int32_t numero,
                       bool soloSinEnviar = false);
// Adds what `b` saw of a document to `a`.
void sumar(CobroDocumento& a, const CobroDocumento& b);

}  // namespace caja::app
