#include "app/Roles.h"

namespace caja::app {

namespace {

std::string lista(std::initializer_list<const char*> tablas) {
  std::string texto;
  for (const char* t : tablas)
    texto += (texto.empty() ? "" : ", ") + std::string(t);
  return texto;
}

}  // namespace

std::vector<std::string> sentenciasDeRoles() {
  // Written once, then only read: the history and the trail.
  const std::string historia =
      lista({"MovimientosCaja", "DetallesVarelta", "DetallesDenominacion", "subDocsMC",
             "SesionesCerradas", "generalEmisores", "hostLog", "hostVueltos", "hostImportes",
             "hostAnulaciones", "hostCierres", "hostCierreDetalles", "hostCierreDenominaciones",
             "hostCierreTipos", "hostClaves", "hostAuditoria"});
  // A void takes its movement's drawer transaction back, as the component
  // does; the movement, its lines and the void itself stay.
  const std::string transacciones = lista({"transaccionesEfectivo", "transaccionEfectivoDetalles"});
  // The till's running state: drawers, open sessions, parked lines, wrong
  // PINs, and the rate of the day.
  const std::string estado =
      lista({"cvCaja", "cvCajaDetalles", "SesionesPOS", "saveMovsCaja", "saveDetallesCaja",
             "saveDenominaciones", "hostIntentos", "parametrosEmpresa", "hostEmpresa"});
  const std::string administracion =
      lista({"MediosPago", "hostEmpresa", "hostEntidades", "hostCajeros", "hostSupervisores",
             "generalEmisores", "parametrosEmpresa", "hostIntentos"});
  return {
      "DO $$ BEGIN "
      "IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'caja_caja') THEN "
      "CREATE ROLE caja_caja NOLOGIN; END IF; "
      "IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'caja_admin') THEN "
      "CREATE ROLE caja_admin NOLOGIN; END IF; END $$",
      "REVOKE CREATE ON SCHEMA public FROM PUBLIC",
      "GRANT USAGE ON SCHEMA public TO caja_caja, caja_admin",
      "GRANT SELECT ON ALL TABLES IN SCHEMA public TO caja_caja",
      "GRANT USAGE, SELECT ON ALL SEQUENCES IN SCHEMA public TO caja_caja",
      "GRANT INSERT ON " + historia + " TO caja_caja",
      "GRANT INSERT, DELETE ON " + transacciones + " TO caja_caja",
      "GRANT INSERT, UPDATE, DELETE ON " + estado + " TO caja_caja",
      "GRANT caja_caja TO caja_admin",
      "GRANT INSERT, UPDATE, DELETE ON " + administracion + " TO caja_admin",
  };
}

}  // namespace caja::app
