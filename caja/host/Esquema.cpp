#include "caja/host/DialectoSql.h"

#include "caja/base/CajaError.h"
#include "caja/host/HostSql.h"

namespace caja {

namespace {

using T = TipoColumna;

// The staging store keeps a movement's lines and coins in the same shape as
// the saved ones; only the owner they reference differs.
std::vector<Columna> lineas(std::string_view id, std::string_view referencia) {
  return {{id, T::Identidad, ""},
          {"TransID", T::Entero, referencia},
          {"Medio", T::Texto, ""},
          {"Monto", T::Dinero, "NOT NULL DEFAULT 0"},
          {"IdTitular", T::Texto, ""},
          {"NumeroCuenta", T::Texto, ""},
          {"NumeroDocumento", T::Texto, ""},
          {"ClaveAutorizacion", T::Texto, ""},
          {"Emisor", T::Texto, ""},
          {"MontoNominal", T::Dinero, "NOT NULL DEFAULT 0"}};
}

std::vector<Columna> denominaciones(std::string_view id, std::string_view referencia) {
  return {{id, T::Identidad, ""},
          {"idDetalle", T::Entero, referencia},
          {"Denominacion", T::Dinero, "NOT NULL DEFAULT 0"},
          {"CantidadRecibida", T::Corto, "NOT NULL DEFAULT 0"}};
}

// Identity tables hand out keys that are never reused, as the server
// database the component was written against does.
const std::vector<Tabla> kTablas = {
    {"MediosPago",
     {{"Codigo", T::Texto, "PRIMARY KEY"},
      {"Descripcion", T::Texto, "DEFAULT ''"},
      {"Atributos", T::Entero, "NOT NULL DEFAULT 0"},
      {"PorcentajeRetencionEmisor", T::Flotante, "NOT NULL DEFAULT 0"},
      {"PorcentajeISLR", T::Flotante, "NOT NULL DEFAULT 0"},
      {"CuentaActivo", T::Texto, "DEFAULT ''"},
      {"CuentaComisiones", T::Texto, "DEFAULT ''"},
      {"BancoRelacionado", T::Texto, "DEFAULT ''"},
      {"Clase", T::Entero, "NOT NULL DEFAULT 0"},
      {"titulo", T::Texto, "DEFAULT ''"},
      {"textoAyuda", T::Texto, "DEFAULT ''"},
      {"posicion", T::Corto, "NOT NULL DEFAULT 0"},
      {"isMedioElectronico", T::Corto, "NOT NULL DEFAULT 0"}},
     {}},
    {"MovimientosCaja",
     {{"TransID", T::Identidad, ""},
      {"Fecha", T::FechaHora, ""},
      {"Hora", T::FechaHora, ""},
      {"Sesion", T::Entero, ""},
      {"Operador", T::Texto, ""},
      {"TipoDocumento", T::Texto, ""},
      {"NumeroDocumento", T::Entero, ""},
      {"TipoEntidad", T::Texto, ""},
      {"CodigoEntidad", T::Texto, ""},
      {"Descripcion", T::Texto, ""},
      {"Debitos", T::Dinero, "NOT NULL DEFAULT 0"},
      {"Creditos", T::Dinero, "NOT NULL DEFAULT 0"},
      {"Clasificacion", T::Texto, ""},
      {"Beneficiario", T::Texto, ""},
      {"machineID", T::Entero, ""},
      {"MontoIGTF", T::Dinero, "DEFAULT 0"},
      {"tipoCambio", T::Flotante, "DEFAULT 0"}},
     {}},
    {"DetallesVarelta", lineas("Id", "REFERENCES MovimientosCaja (TransID)"), {}},
    {"DetallesDenominacion", denominaciones("Id", "REFERENCES DetallesVarelta (Id)"), {}},
    {"generalEmisores",
     {{"TipoDocumento", T::Texto, "NOT NULL"},
      {"CodigoEmisor", T::Texto, "NOT NULL"},
      {"Nombre", T::Texto, "DEFAULT ''"}},
     "PRIMARY KEY (TipoDocumento, CodigoEmisor)"},
    {"subDocsMC",
     {{"ID", T::Identidad, ""},
      {"TransID", T::Entero, "REFERENCES MovimientosCaja (TransID)"},
      {"TipoDoc", T::Texto, ""},
      {"NumDoc", T::Entero, ""},
      {"Debitos", T::Dinero, "NOT NULL DEFAULT 0"},
      {"Creditos", T::Dinero, "NOT NULL DEFAULT 0"}},
     {}},
    {"saveMovsCaja", {{"id", T::Identidad, ""}, {"clave", T::Texto, ""}}, {}},
    {"saveDetallesCaja", lineas("Id", "REFERENCES saveMovsCaja (id) ON DELETE CASCADE"), {}},
    {"saveDenominaciones",
     denominaciones("id", "REFERENCES saveDetallesCaja (Id) ON DELETE CASCADE"),
     {}},
    {"transaccionesEfectivo",
     {{"id", T::Identidad, ""},
      {"tipoTrans", T::Entero, "NOT NULL DEFAULT 0"},
      {"idOrigen", T::Entero, "NOT NULL DEFAULT 0"},
      {"machineID", T::Corto, "NOT NULL DEFAULT 0"},
      {"efectivoMN", T::Dinero, "NOT NULL DEFAULT 0"}},
     {}},
    {"transaccionEfectivoDetalles",
     {{"transID", T::Entero, "REFERENCES transaccionesEfectivo (id)"},
      {"codigoMedio", T::Texto, ""},
      {"valorMN", T::Dinero, "NOT NULL DEFAULT 0"},
      {"valorNominal", T::Dinero, "NOT NULL DEFAULT 0"}},
     {}},
    {"cvCaja",
     {{"id", T::Identidad, ""},
      {"MachineID", T::Corto, "NOT NULL"},
      {"efectivoMN", T::Dinero, "NOT NULL DEFAULT 0"}},
     {}},
    {"cvCajaDetalles",
     {{"id", T::Identidad, ""},
      {"idCec", T::Entero, "NOT NULL REFERENCES cvCaja (id)"},
      {"codigoMedio", T::Texto, "NOT NULL"},
      {"valorMN", T::Dinero, "NOT NULL DEFAULT 0"},
      {"valorNominal", T::Dinero, "NOT NULL DEFAULT 0"}},
     {}},
    {"SesionesPOS",
     {{"SessionID", T::Entero, "PRIMARY KEY"},
      {"MachineID", T::Entero, "NOT NULL DEFAULT 0"},
      {"Operador", T::Texto, ""},
      {"Apertura", T::FechaHora, ""}},
     {}},
    {"SesionesCerradas",
     {{"SessionID", T::Entero, "PRIMARY KEY"},
      {"MachineID", T::Entero, "NOT NULL DEFAULT 0"},
      {"Operador", T::Texto, ""},
      {"Apertura", T::FechaHora, ""},
      {"Cierre", T::FechaHora, ""}},
     {}},
    {"parametrosEmpresa",
     {{"id", T::Identidad, ""},
      {"Fecha", T::FechaHora, ""},
      {"TipoCambio", T::Flotante, "NOT NULL DEFAULT 0"}},
     {}},
    // The substitute host's own data: the company, entities, supervisors, log.
    {"hostEmpresa",
     {{"id", T::Entero, "PRIMARY KEY CHECK (id = 1)"},
      {"Nombre", T::Texto, "DEFAULT ''"},
      {"ContribuyenteEspecial", T::Bit, ""},
      {"porcentajeIGTF456", T::Flotante, "NOT NULL DEFAULT 0"},
      {"FormatoMEX", T::TextoExacto, "DEFAULT '$#,##0.00'"},
      {"TipoCambioCaja", T::Flotante, "NOT NULL DEFAULT 0"},
      {"Rif", T::TextoExacto, "NOT NULL DEFAULT ''"},
      {"Direccion", T::TextoExacto, "NOT NULL DEFAULT ''"}},
     {}},
    {"hostEntidades",
     {{"Tipo", T::Texto, "NOT NULL"},
      {"Codigo", T::Texto, "NOT NULL"},
      {"Nombre", T::Texto, "NOT NULL DEFAULT ''"}},
     "PRIMARY KEY (Tipo, Codigo)"},
    {"hostSupervisores",
     {{"Nombre", T::Texto, "PRIMARY KEY"},
      {"Sal", T::TextoExacto, "NOT NULL"},
      {"Hash", T::TextoExacto, "NOT NULL"},
      {"Nivel", T::Entero, "NOT NULL DEFAULT 5"}},
     {}},
    {"hostLog",
     {{"id", T::Identidad, ""}, {"Fecha", T::FechaHora, ""}, {"Mensaje", T::TextoExacto, ""}},
     {}},
    // The host program's day: how change went back, voided movements and
    // closing counts.
    {"hostVueltos",
     {{"TransID", T::Entero, "NOT NULL REFERENCES MovimientosCaja (TransID)"},
      {"Medio", T::Texto, "NOT NULL"},
      {"Monto", T::Dinero, "NOT NULL DEFAULT 0"},
      {"MontoNominal", T::Dinero, "NOT NULL DEFAULT 0"}},
     {}},
    // What a sale or a refund was made of, as the host handed it over:
    // its base, its tax and the credit taken off, for its receipt.
    {"hostImportes",
     {{"TransID", T::Entero, "PRIMARY KEY REFERENCES MovimientosCaja (TransID)"},
      {"Base", T::Dinero, "NOT NULL DEFAULT 0"},
      {"IVA", T::Dinero, "NOT NULL DEFAULT 0"},
      {"Credito", T::Dinero, "NOT NULL DEFAULT 0"}},
     {}},
    {"hostAnulaciones",
     {{"TransID", T::Entero, "PRIMARY KEY REFERENCES MovimientosCaja (TransID)"},
      {"Fecha", T::FechaHora, ""},
      {"Operador", T::Texto, ""},
      {"Motivo", T::TextoExacto, "DEFAULT ''"}},
     {}},
    {"hostCierres",
     {{"id", T::Identidad, ""},
      {"MachineID", T::Entero, "NOT NULL"},
      {"Fecha", T::FechaHora, ""},
      {"Operador", T::Texto, ""}},
     {}},
    {"hostCierreDetalles",
     {{"idCierre", T::Entero, "NOT NULL REFERENCES hostCierres (id)"},
      {"codigoMedio", T::Texto, "NOT NULL"},
      {"esperadoMN", T::Dinero, "NOT NULL DEFAULT 0"},
      {"esperadoNominal", T::Dinero, "NOT NULL DEFAULT 0"},
      {"tipoCambio", T::Flotante, "NOT NULL DEFAULT 0"},
      {"contado", T::Dinero, "NOT NULL DEFAULT 0"},
      {"diferencia", T::Dinero, "NOT NULL DEFAULT 0"}},
     "PRIMARY KEY (idCierre, codigoMedio)"},
    // Each movement's key made at the till, for sending a till's journal to
    // the server exactly once; in the journal, the number the server gave
    // it once sent.
    {"hostClaves",
     {{"Clave", T::TextoExacto, "PRIMARY KEY"},
      {"TransID", T::Entero, "NOT NULL REFERENCES MovimientosCaja (TransID)"},
      {"TransIDServidor", T::Entero, ""}},
     {}},
    // What a closing counted note by note, and what made up its expected
    // amounts per kind of movement, for its report.
    {"hostCierreDenominaciones",
     {{"idCierre", T::Entero, "NOT NULL REFERENCES hostCierres (id)"},
      {"codigoMedio", T::Texto, "NOT NULL"},
      {"valor", T::Dinero, "NOT NULL"},
      {"cantidad", T::Entero, "NOT NULL"}},
     {}},
    {"hostCierreTipos",
     {{"idCierre", T::Entero, "NOT NULL REFERENCES hostCierres (id)"},
      {"tipo", T::Texto, "NOT NULL"},
      {"codigoMedio", T::Texto, "NOT NULL"},
      {"montoMN", T::Dinero, "NOT NULL DEFAULT 0"},
      {"montoNominal", T::Dinero, "NOT NULL DEFAULT 0"}},
     "PRIMARY KEY (idCierre, tipo, codigoMedio)"},
    // Who may act at the till: cashiers (an Argon2id hash of each PIN), the
    // wrong PINs in a row per person and how long a person stays locked out.
    {"hostCajeros",
     {{"Nombre", T::Texto, "PRIMARY KEY"}, {"Hash", T::TextoExacto, "NOT NULL"}},
     {}},
    {"hostIntentos",
     {{"Rol", T::Texto, "NOT NULL"},
      {"Nombre", T::Texto, "NOT NULL"},
      {"Fallos", T::Entero, "NOT NULL DEFAULT 0"},
      {"BloqueadoHasta", T::TextoExacto, "NOT NULL DEFAULT ''"}},
     "PRIMARY KEY (Rol, Nombre)"},
    // The audit trail: each row carries the previous row's hash and its own,
    // so that a row changed or removed breaks the chain. Numbered by the
    // program, one after the other, under a lock. A row a till's journal
    // recorded offline reaches the server with the journal row's hash as its
    // `Origen`.
    {"hostAuditoria",
     {{"id", T::Entero, "PRIMARY KEY"},
      {"Fecha", T::TextoExacto, "NOT NULL"},
      {"MachineID", T::Entero, "NOT NULL DEFAULT 0"},
      {"Cajero", T::TextoExacto, "NOT NULL DEFAULT ''"},
      {"Aprobador", T::TextoExacto, "NOT NULL DEFAULT ''"},
      {"Accion", T::TextoExacto, "NOT NULL"},
      {"Detalle", T::TextoExacto, "NOT NULL DEFAULT ''"},
      {"TransID", T::Entero, ""},
      {"Monto", T::Dinero, "NOT NULL DEFAULT 0"},
      {"Origen", T::TextoExacto, "NOT NULL DEFAULT ''"},
      {"HashPrevio", T::TextoExacto, "NOT NULL"},
      {"Hash", T::TextoExacto, "NOT NULL"},
      // On a server: the login that sent the row and the server's time.
      {"Login", T::TextoExacto, "NOT NULL DEFAULT ''"},
      {"FechaServidor", T::TextoExacto, "NOT NULL DEFAULT ''"}},
     {}},
    // In a till's journal: the rows of its trail already on the server.
    {"hostAuditoriaEnviada", {{"id", T::Entero, "PRIMARY KEY"}}, {}},
    // In a till's journal: the documents the server holds as charged lately
    // and not voided, so that a till tells a document charged already
    // without a round trip.
    {"hostDocumentosCobrados",
     {{"TipoDocumento", T::Texto, "NOT NULL"},
      {"NumeroDocumento", T::Entero, "NOT NULL"},
      {"TransID", T::Entero, "NOT NULL"},
      {"machineID", T::Entero, ""}},
     {}},
    // On a server: the machine each till's login acts for, set by the
    // administrator (caja maquina N --login ROL); no till may write it.
    {"hostLogins",
     {{"Login", T::TextoExacto, "PRIMARY KEY"}, {"MachineID", T::Entero, "NOT NULL"}},
     {}},
    // In a till's journal: what went wrong while sending (a document charged
    // at two tills, a movement the server refused), kept until a supervisor
    // acknowledges it. Last of the schema, so that a database made before
    // it is completed.
    {"hostConflictos",
     {{"id", T::Identidad, ""},
      {"Fecha", T::TextoExacto, "NOT NULL"},
      {"Clave", T::TextoExacto, "NOT NULL"},
      {"Clase", T::TextoExacto, "NOT NULL"},
      {"NumeroLocal", T::Entero, "NOT NULL"},
      {"MachineID", T::Entero, "NOT NULL DEFAULT 0"},
      {"Detalle", T::TextoExacto, "NOT NULL"},
      {"ResueltoPor", T::TextoExacto, "NOT NULL DEFAULT ''"},
      {"ResueltoEl", T::TextoExacto, "NOT NULL DEFAULT ''"}},
     {}},
};

const std::vector<Indice> kIndices = {
    {"ixMovimientosCajaDocumento", "MovimientosCaja", "TipoDocumento, NumeroDocumento"},
    {"ixDetallesVareltaTransID", "DetallesVarelta", "TransID"},
    {"ixDetallesVareltaMedio", "DetallesVarelta", "Medio, Emisor"},
    {"ixDetallesDenominacion", "DetallesDenominacion", "idDetalle"},
    {"ixSubDocsMC", "subDocsMC", "TipoDoc, NumDoc"},
    {"ixSaveMovsCajaClave", "saveMovsCaja", "clave"},
    {"ixSaveDetallesCaja", "saveDetallesCaja", "TransID"},
    {"ixSaveDenominaciones", "saveDenominaciones", "idDetalle"},
    {"ixTransaccionesEfectivoOrigen", "transaccionesEfectivo", "tipoTrans, idOrigen"},
    {"ixTransaccionEfectivoDetalles", "transaccionEfectivoDetalles", "transID"},
    {"ixCvCajaMachineID", "cvCaja", "MachineID"},
    {"ixCvCajaDetalles", "cvCajaDetalles", "idCec, codigoMedio"},
    {"ixHostAuditoriaOrigen", "hostAuditoria", "Origen"},
    {"ixHostDocumentosCobrados", "hostDocumentosCobrados", "TipoDocumento, NumeroDocumento"},
};

const std::vector<std::pair<std::string_view, std::string_view>> kAgregadas = {
    {"hostEmpresa", "Rif"},
    {"hostEmpresa", "Direccion"},
    {"hostAuditoria", "Login"},
    {"hostAuditoria", "FechaServidor"},
};

}  // namespace

const std::vector<std::pair<std::string_view, std::string_view>>& columnasAgregadas() {
  return kAgregadas;
}

const std::vector<Tabla>& tablasEsquema() {
  return kTablas;
}

const Tabla& tablaDelEsquema(std::string_view nombre) {
  for (const Tabla& t : kTablas)
    if (t.nombre == nombre)
      return t;
  throw CajaError(kErrorBaseDatos, "caja", "Tabla desconocida: " + std::string(nombre));
}

const std::vector<Indice>& indicesEsquema() {
  return kIndices;
}

}  // namespace caja
