#include "app/datos/Demo.h"

#include "caja/catalog/CMedioPago.h"

namespace caja::app {

namespace {

constexpr double kTasa = 36.5;

struct MedioDemo {
  const char* codigo;
  const char* descripcion;
  std::int32_t atributos;
  double factor;
  ClaseIngresoSesion clase;
  const char* titulo;
  const char* ayuda;
  bool electronico;
};

}  // namespace

void crearDemo(HostSql& db) {
  const MedioDemo medios[] = {
      {"USD", "Dólares en efectivo", ControlDenominaciones | SujetoIGTF, 0,
       ClaseIngresoSesion::EfectivoME, "Dólares", "Efectivo en dólares a la tasa de la caja",
       false},
      {"EUR", "Euros en efectivo", monedaExtranjera | SujetoIGTF, 39.8,
       ClaseIngresoSesion::OtrosMedios, "Euros", "Efectivo en euros a su propio factor", false},
      {"IDX", "Vale indexado", IndexadoMonedaExtranjera, 1.5, ClaseIngresoSesion::OtrosMedios,
       "Vale indexado", "Vales de 1,5 dólares a la tasa del día", false},
      {"CHE", "Cheque", ControlEmisor | ControlIDCuenta | ControlNumero | ControlIDTitular, 0,
       ClaseIngresoSesion::Cheques, "Cheque", "Banco, cuenta y número del cheque", false},
      {"TDD", "Tarjeta de débito", ControlClaveAutorizacion, 0, ClaseIngresoSesion::TDebito,
       "Tarjeta de débito", "Código de autorización del punto de venta", true},
      {"TDC", "Tarjeta de crédito", ControlClaveAutorizacion | ControlEmisor, 0,
       ClaseIngresoSesion::TTCVisa, "Tarjeta de crédito", "Emisor y código de autorización", true},
      {"TRF", "Transferencia", ControlNumero | ControlEmisor, 0, ClaseIngresoSesion::OtrosMedios,
       "Transferencia", "Banco y número de referencia", true},
  };
  std::int16_t posicion = 1;
  for (const auto& m : medios) {
    CMedioPago medio;
    medio.ActualizarDescriptivos(m.codigo, m.descripcion, m.atributos, 0.0, m.factor, "", "", "",
                                 static_cast<std::int32_t>(m.clase), m.titulo, m.ayuda, posicion++,
                                 m.electronico);
  }
  db.ExecuteSQL(
      "INSERT INTO SesionesPOS (SessionID, MachineID, Operador, Apertura) "
      "VALUES (1, 1, 'CAJERO', getdate()) ON CONFLICT (SessionID) DO NOTHING");
  db.ExecuteSQL("INSERT INTO parametrosEmpresa (Fecha, TipoCambio) VALUES (getdate(), ?)", {kTasa});
  db.ExecuteSQL(
      "INSERT INTO hostEmpresa (id, Nombre, ContribuyenteEspecial, porcentajeIGTF456, "
      "FormatoMEX, TipoCambioCaja) VALUES (1, 'Comercial Demo, C.A.', ?, 3, '$#,##0.00', ?) "
      "ON CONFLICT (id) DO UPDATE SET Nombre = excluded.Nombre, "
      "ContribuyenteEspecial = excluded.ContribuyenteEspecial, "
      "porcentajeIGTF456 = excluded.porcentajeIGTF456, FormatoMEX = excluded.FormatoMEX, "
      "TipoCambioCaja = excluded.TipoCambioCaja",
      {Variant(true), kTasa});
  db.ExecuteSQL(
      "INSERT INTO hostEntidades (Tipo, Codigo, Nombre) VALUES "
      "('CLI', 'C0001', 'Cliente de contado') ON CONFLICT (Tipo, Codigo) DO NOTHING");
}

}  // namespace caja::app
