#include "app/datos/Roles.h"

namespace caja::app {

namespace {

std::string lista(std::initializer_list<const char*> tablas) {
  std::string texto;
  for (const char* t : tablas)
    texto += (texto.empty() ? "" : ", ") + std::string(t);
  return texto;
}

// Whether the session's login is a till: a member of caja_caja that is not
// the administrator (who is one too). Superusers are members of both.
constexpr const char* kEsCaja =
    "CREATE OR REPLACE FUNCTION caja_es_caja() RETURNS boolean LANGUAGE sql STABLE "
    "SECURITY DEFINER SET search_path = public AS $$ "
    "SELECT pg_has_role(session_user, 'caja_caja', 'MEMBER') AND "
    "NOT pg_has_role(session_user, 'caja_admin', 'MEMBER') $$";

// The machine the administrator bound the session's login to, or NULL.
constexpr const char* kMaquinaDelLogin =
    "CREATE OR REPLACE FUNCTION caja_maquina_del_login() RETURNS integer LANGUAGE sql STABLE "
    "SECURITY DEFINER SET search_path = public AS $$ "
    "SELECT l.machineid FROM hostlogins l WHERE l.login = session_user $$";

// The machine a row of a till's table belongs to: its own column, or its
// parent's (a drawer line's drawer, a transaction line's transaction, a
// coin's line's movement, a closing's part's closing, a movement's part's
// movement).
constexpr const char* kMaquinaDeFila =
    R"sql(CREATE OR REPLACE FUNCTION caja_maquina_de_fila(tabla text, r jsonb)
RETURNS integer LANGUAGE sql STABLE SECURITY DEFINER SET search_path = public AS $$
  SELECT CASE
    WHEN tabla = 'cvcajadetalles' THEN
      (SELECT c.machineid FROM cvcaja c WHERE c.id = (r->>'idcec')::integer)
    WHEN tabla = 'transaccionefectivodetalles' THEN
      (SELECT t.machineid FROM transaccionesefectivo t WHERE t.id = (r->>'transid')::integer)
    WHEN tabla = 'detallesdenominacion' THEN
      (SELECT m.machineid FROM detallesvarelta d JOIN movimientoscaja m ON m.transid = d.transid
        WHERE d.id = (r->>'iddetalle')::integer)
    WHEN tabla LIKE 'hostcierre%' AND tabla <> 'hostcierres' THEN
      (SELECT c.machineid FROM hostcierres c WHERE c.id = (r->>'idcierre')::integer)
    WHEN r->>'machineid' IS NOT NULL THEN (r->>'machineid')::integer
    ELSE (SELECT m.machineid FROM movimientoscaja m WHERE m.transid = (r->>'transid')::integer)
  END $$)sql";

// Every write of a till's login to a table of a machine's money checks that
// the rows, before and after, are its own machine's; a row of the trail may
// also name no machine (0). Anyone else passes.
constexpr const char* kVigilar = R"sql(CREATE OR REPLACE FUNCTION caja_vigilar()
RETURNS trigger LANGUAGE plpgsql SECURITY DEFINER SET search_path = public AS $$
DECLARE
  propia integer;
  antes integer;
  despues integer;
BEGIN
  IF NOT caja_es_caja() THEN
    RETURN coalesce(NEW, OLD);
  END IF;
  propia := caja_maquina_del_login();
  IF TG_OP <> 'INSERT' THEN
    antes := caja_maquina_de_fila(TG_TABLE_NAME, to_jsonb(OLD));
  END IF;
  IF TG_OP <> 'DELETE' THEN
    despues := caja_maquina_de_fila(TG_TABLE_NAME, to_jsonb(NEW));
  END IF;
  IF (TG_OP <> 'INSERT' AND antes IS DISTINCT FROM propia)
     OR (TG_OP <> 'DELETE' AND despues IS DISTINCT FROM propia
         AND NOT (TG_TABLE_NAME = 'hostauditoria' AND despues = 0)) THEN
    RAISE EXCEPTION 'El usuario % es la caja de la máquina %: no puede tocar % de otra máquina',
      session_user, coalesce(propia::text, '(ninguna: caja maquina N --login)'), TG_TABLE_NAME
      USING ERRCODE = '42501';
  END IF;
  RETURN coalesce(NEW, OLD);
END $$)sql";

// The tables of a machine's money: its drawer, its drawer transactions, its
// sessions, its movements with all that hangs from them, its closings and
// its rows of the trail.
constexpr const char* kTablasDeMaquina[] = {"cvCaja",
                                            "cvCajaDetalles",
                                            "transaccionesEfectivo",
                                            "transaccionEfectivoDetalles",
                                            "SesionesPOS",
                                            "SesionesCerradas",
                                            "MovimientosCaja",
                                            "DetallesVarelta",
                                            "DetallesDenominacion",
                                            "subDocsMC",
                                            "hostVueltos",
                                            "hostImportes",
                                            "hostAnulaciones",
                                            "hostClaves",
                                            "hostCierres",
                                            "hostCierreDetalles",
                                            "hostCierreDenominaciones",
                                            "hostCierreTipos",
                                            "hostAuditoria"};

// The server's functions that write for a till, run with their owner's
// rights: the till writes those tables only through them.
constexpr const char* kFuncionesDeCaja[] = {
    "caja_recibir(text)",
    "caja_anotar(text, integer, text, text, text, text, integer, numeric, text)",
    "caja_personas(text, text)",
    "caja_anular(integer, text, text, text)",
    "caja_cerrar(integer, timestamp, text, text, text, text, text, text, text, numeric)",
    "caja_abrir_sesion(integer, text)",
    "caja_cerrar_sesion(integer)"};

}  // namespace

std::vector<std::string> sentenciasDeRoles() {
  // A movement with all of it, its key, its void (which takes its drawer
  // transaction back and moves the drawer), the drawers, sessions, closings
  // and the trail are written only by the server's functions
  // (kFuncionesDeCaja): nothing of them is granted.
  // Written once, then only read: the log. Closings and sessions are the
  // server's functions' too.
  const std::string historia = lista({"hostLog"});
  // The till's running state: parked lines.
  const std::string estado = lista({"saveMovsCaja", "saveDetallesCaja", "saveDenominaciones"});
  const std::string administracion =
      lista({"MediosPago", "hostEmpresa", "hostEntidades", "hostCajeros", "hostSupervisores",
             "generalEmisores", "parametrosEmpresa", "hostIntentos", "hostLogins"});
  std::vector<std::string> sentencias = {
      "DO $$ BEGIN "
      "IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'caja_caja') THEN "
      "CREATE ROLE caja_caja NOLOGIN; END IF; "
      "IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'caja_admin') THEN "
      "CREATE ROLE caja_admin NOLOGIN; END IF; END $$",
      "REVOKE CREATE ON SCHEMA public FROM PUBLIC",
      "GRANT USAGE ON SCHEMA public TO caja_caja, caja_admin",
      // What earlier versions granted goes first.
      "REVOKE INSERT, UPDATE, DELETE, TRUNCATE ON ALL TABLES IN SCHEMA public FROM caja_caja",
      "GRANT SELECT ON ALL TABLES IN SCHEMA public TO caja_caja",
      // The PIN hashes only through caja_personas, never by a query of its own.
      "REVOKE SELECT ON hostSupervisores, hostCajeros FROM caja_caja",
      "GRANT SELECT (Nombre, Nivel) ON hostSupervisores TO caja_caja",
      "GRANT SELECT (Nombre) ON hostCajeros TO caja_caja",
      "GRANT USAGE, SELECT ON ALL SEQUENCES IN SCHEMA public TO caja_caja",
      "GRANT INSERT ON " + historia + " TO caja_caja",
      "GRANT INSERT, UPDATE, DELETE ON " + estado + " TO caja_caja",
      // Wrong PINs are counted and set back, never deleted.
      "GRANT INSERT, UPDATE ON hostIntentos TO caja_caja",
      "GRANT caja_caja TO caja_admin",
      "GRANT INSERT, UPDATE, DELETE ON " + administracion + " TO caja_admin",
      kEsCaja,
      kMaquinaDelLogin,
      kMaquinaDeFila,
      kVigilar,
  };
  for (const char* f : kFuncionesDeCaja) {
    sentencias.push_back("ALTER FUNCTION " + std::string(f) +
                         " SECURITY DEFINER SET search_path = public");
    sentencias.push_back("REVOKE EXECUTE ON FUNCTION " + std::string(f) + " FROM PUBLIC");
    sentencias.push_back("GRANT EXECUTE ON FUNCTION " + std::string(f) + " TO caja_caja");
  }
  for (const char* t : kTablasDeMaquina)
    sentencias.push_back(
        "CREATE OR REPLACE TRIGGER caja_vigilar BEFORE INSERT OR UPDATE OR "
        "DELETE ON " +
        std::string(t) + " FOR EACH ROW EXECUTE FUNCTION caja_vigilar()");
  return sentencias;
}

void crearRoles(HostSql& servidor) {
  const auto sentencias = sentenciasDeRoles();
  servidor.EnTransaccion([&] {
    for (const auto& s : sentencias)
      servidor.ExecuteSQL(s);
  });
}

}  // namespace caja::app
