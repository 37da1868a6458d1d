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
    // The substitute host's own data: the company, entities, log.
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
    {"hostLog",
     {{"id", T::Identidad, ""}, {"Fecha", T::FechaHora, ""}, {"Mensaje", T::TextoExacto, ""}},
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
};

const std::vector<std::pair<std::string_view, std::string_view>> kAgregadas = {
    {"hostEmpresa", "Rif"},
    {"hostEmpresa", "Direccion"},
};

// The program's schema, once added: what every table list below follows
// the component's with.
EsquemaPrograma& programa() {
  static EsquemaPrograma esquema;
  return esquema;
}

template <typename T>
std::vector<T> unidos(const std::vector<T>& propios, const std::vector<T>& delPrograma) {
  std::vector<T> todos = propios;
  todos.insert(todos.end(), delPrograma.begin(), delPrograma.end());
  return todos;
}

struct Esquema {
  std::vector<Tabla> tablas;
  std::vector<Indice> indices;
  std::vector<std::pair<std::string_view, std::string_view>> agregadas;
};

Esquema& esquema() {
  static Esquema e{kTablas, kIndices, kAgregadas};
  return e;
}

}  // namespace

void agregarEsquemaPrograma(const EsquemaPrograma& delPrograma) {
  programa() = delPrograma;
  esquema() = {unidos(kTablas, delPrograma.tablas), unidos(kIndices, delPrograma.indices),
               unidos(kAgregadas, delPrograma.agregadas)};
}

const std::vector<const char*>& funcionesPrograma() {
  return programa().funciones;
}

const std::string& testigoPrograma() {
  return programa().testigo;
}

const std::vector<std::pair<std::string_view, std::string_view>>& columnasAgregadas() {
  return esquema().agregadas;
}

const std::vector<Tabla>& tablasEsquema() {
  return esquema().tablas;
}

const Tabla& tablaDelEsquema(std::string_view nombre) {
  for (const Tabla& t : tablasEsquema())
    if (t.nombre == nombre)
      return t;
  throw CajaError(kErrorBaseDatos, "caja", "Tabla desconocida: " + std::string(nombre));
}

const std::vector<Indice>& indicesEsquema() {
  return esquema().indices;
}

}  // namespace caja
