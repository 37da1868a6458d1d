#include "app/datos/Esquema.h"

#include "caja/host/DialectoSql.h"

namespace caja::app {

namespace {

using T = TipoColumna;

const std::vector<Tabla> kTablas = {
    {"hostSupervisores",
     {{"Nombre", T::Texto, "PRIMARY KEY"},
      {"Sal", T::TextoExacto, "NOT NULL"},
      {"Hash", T::TextoExacto, "NOT NULL"},
      {"Nivel", T::Entero, "NOT NULL DEFAULT 5"}},
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
    {"ixHostAuditoriaOrigen", "hostAuditoria", "Origen"},
    {"ixHostDocumentosCobrados", "hostDocumentosCobrados", "TipoDocumento, NumeroDocumento"},
};

const std::vector<std::pair<std::string_view, std::string_view>> kAgregadas = {
    {"hostAuditoria", "Login"},
    {"hostAuditoria", "FechaServidor"},
};

// What a till's sender calls: a batch of movements from its journal, as a
// JSON array, saved in one call. Each element carries its key, the header
// row, its lines with their coins, its drawer transactions with their lines,
// how its change went back and its void if the till voided it before
// sending it, every row by its column names; identities
// are the server's own (OVERRIDING USER VALUE) and each child row points at
// its parent's new one. A key the server has already answers with the
// movement it names, so a batch sent twice saves nothing twice. For each
// element it answers the key, the server's number and, for a sale of a
// document already charged and not voided, those movements as
// "NUMBER:MACHINE" separated by blanks.
constexpr const char* kRecibir = R"sql(CREATE OR REPLACE FUNCTION caja_recibir(lote text)
RETURNS TABLE (enviada text, numero integer, previos text) LANGUAGE plpgsql AS $$
DECLARE
  m jsonb; cab jsonb; l jsonb; t jsonb; d jsonb;
  linea integer; trans integer; cec integer; det integer; maquina integer;
BEGIN
  FOR m IN SELECT value FROM jsonb_array_elements(lote::jsonb) LOOP
    enviada := m->>'clave';
    cab := m->'movimiento';
    previos := '';
    SELECT k.transid INTO numero FROM hostclaves k WHERE k.clave = enviada;
    IF FOUND THEN
      RETURN NEXT;
      CONTINUE;
    END IF;
    IF coalesce(cab->>'tipodocumento', '') <> '' AND coalesce((cab->>'numerodocumento')::integer, 0) <> 0
       AND coalesce(cab->>'clasificacion', '') = ''
       AND coalesce(jsonb_array_length(m->'anulaciones'), 0) = 0 THEN
      SELECT coalesce(string_agg(p.transid || ':' || coalesce(p.machineid, 0), ' ' ORDER BY p.transid), '')
        INTO previos FROM movimientoscaja p LEFT JOIN hostanulaciones a ON a.transid = p.transid
       WHERE p.tipodocumento = cab->>'tipodocumento'
         AND p.numerodocumento = (cab->>'numerodocumento')::integer
         AND a.transid IS NULL AND coalesce(p.clasificacion, '') = '';
    END IF;
    PERFORM caja_comprobar(m);
    INSERT INTO movimientoscaja OVERRIDING USER VALUE
      SELECT r.* FROM jsonb_populate_record(NULL::movimientoscaja, cab) r RETURNING transid INTO numero;
    FOR l IN SELECT value FROM jsonb_array_elements(m->'lineas') LOOP
      INSERT INTO detallesvarelta OVERRIDING USER VALUE
        SELECT r.* FROM jsonb_populate_record(NULL::detallesvarelta,
                                              l->'fila' || jsonb_build_object('transid', numero)) r
        RETURNING id INTO linea;
      IF coalesce(l->'fila'->>'emisor', '') <> '' THEN
        INSERT INTO generalemisores (tipodocumento, codigoemisor)
          SELECT l->'fila'->>'medio', l->'fila'->>'emisor' WHERE NOT EXISTS (
            SELECT * FROM generalemisores g
             WHERE g.tipodocumento = l->'fila'->>'medio' AND g.codigoemisor = l->'fila'->>'emisor');
      END IF;
      INSERT INTO detallesdenominacion OVERRIDING USER VALUE
        SELECT r.* FROM jsonb_array_elements(l->'denominaciones') x,
          jsonb_populate_record(NULL::detallesdenominacion, x.value || jsonb_build_object('iddetalle', linea)) r;
    END LOOP;
    FOR t IN SELECT value FROM jsonb_array_elements(m->'transacciones') LOOP
      INSERT INTO transaccionesefectivo OVERRIDING USER VALUE
        SELECT r.* FROM jsonb_populate_record(NULL::transaccionesefectivo,
                                              t->'fila' || jsonb_build_object('idorigen', numero)) r
        RETURNING id, machineid INTO trans, maquina;
      SELECT c.id INTO cec FROM cvcaja c WHERE c.machineid = maquina ORDER BY c.id LIMIT 1;
      IF cec IS NULL THEN
        INSERT INTO cvcaja (efectivomn, machineid) VALUES (0, maquina) RETURNING id INTO cec;
      END IF;
      UPDATE cvcaja SET efectivomn = efectivomn + (t->'fila'->>'efectivomn')::numeric WHERE id = cec;
      FOR d IN SELECT value FROM jsonb_array_elements(t->'detalles') LOOP
        INSERT INTO transaccionefectivodetalles
          SELECT r.* FROM jsonb_populate_record(NULL::transaccionefectivodetalles,
                                                d || jsonb_build_object('transid', trans)) r;
        SELECT c.id INTO det FROM cvcajadetalles c
         WHERE c.idcec = cec AND c.codigomedio = d->>'codigomedio' ORDER BY c.id LIMIT 1;
        IF det IS NULL THEN
          INSERT INTO cvcajadetalles (idcec, codigomedio) VALUES (cec, d->>'codigomedio')
            RETURNING id INTO det;
        END IF;
        UPDATE cvcajadetalles SET valormn = valormn + (d->>'valormn')::numeric,
               valornominal = valornominal + (d->>'valornominal')::numeric WHERE id = det;
      END LOOP;
    END LOOP;
    INSERT INTO hostvueltos
      SELECT r.* FROM jsonb_array_elements(m->'vueltos') x,
        jsonb_populate_record(NULL::hostvueltos, x.value || jsonb_build_object('transid', numero)) r;
    INSERT INTO hostimportes
      SELECT r.* FROM jsonb_array_elements(coalesce(m->'importes', '[]')) x,
        jsonb_populate_record(NULL::hostimportes, x.value || jsonb_build_object('transid', numero)) r;
    INSERT INTO hostanulaciones
      SELECT r.* FROM jsonb_array_elements(coalesce(m->'anulaciones', '[]')) x,
        jsonb_populate_record(NULL::hostanulaciones, x.value || jsonb_build_object('transid', numero)) r;
    INSERT INTO hostclaves (clave, transid) VALUES (enviada, numero);
    RETURN NEXT;
  END LOOP;
END $$)sql";

// What the server checks of a movement a till sends, before saving any of
// it, so that a till's word is not taken for what its lines say: its session
// is its machine's, its date is neither before the machine's last closing
// nor after tomorrow, its lines add up to its totals, and its drawer
// transaction moves national cash by its cash lines and each other method
// by the nominal amount of its lines. A failed check raises, and the batch
// with it; the till's sender then names the movement.
constexpr const char* kComprobar = R"sql(CREATE OR REPLACE FUNCTION caja_comprobar(m jsonb)
RETURNS void LANGUAGE plpgsql AS $$
DECLARE
  cab jsonb := m->'movimiento';
  maquina integer := (cab->>'machineid')::integer;
  sesion integer := (cab->>'sesion')::integer;
  fecha date := (cab->>'fecha')::timestamp::date;
  cierre date;
  lineas numeric;
  t jsonb; d jsonb;
BEGIN
  IF NOT EXISTS (SELECT FROM sesionespos s WHERE s.sessionid = sesion AND s.machineid = maquina)
     AND NOT EXISTS (SELECT FROM sesionescerradas s WHERE s.sessionid = sesion AND s.machineid = maquina) THEN
    RAISE EXCEPTION 'La sesión % no es de la máquina %', sesion, maquina;
  END IF;
  IF fecha > current_date + 1 THEN
    RAISE EXCEPTION 'La fecha % es posterior a mañana', fecha;
  END IF;
  SELECT max(c.fecha)::date INTO cierre FROM hostcierres c WHERE c.machineid = maquina;
  IF fecha < cierre THEN
    RAISE EXCEPTION 'La fecha % es anterior al último cierre de la máquina % (%)', fecha, maquina, cierre;
  END IF;
  SELECT coalesce(sum((x.value->'fila'->>'monto')::numeric), 0) INTO lineas
    FROM jsonb_array_elements(m->'lineas') x;
  IF lineas <> coalesce((cab->>'debitos')::numeric, 0) - coalesce((cab->>'creditos')::numeric, 0) THEN
    RAISE EXCEPTION 'Las líneas suman %, y el movimiento dice % de débitos y % de créditos', lineas,
      cab->>'debitos', cab->>'creditos';
  END IF;
  FOR t IN SELECT value FROM jsonb_array_elements(m->'transacciones') LOOP
    SELECT coalesce(sum((x.value->'fila'->>'monto')::numeric), 0) INTO lineas
      FROM jsonb_array_elements(m->'lineas') x WHERE x.value->'fila'->>'medio' = 'EFE';
    IF (t->'fila'->>'efectivomn')::numeric <> lineas OR (t->'fila'->>'machineid')::integer <> maquina THEN
      RAISE EXCEPTION 'La caja no se mueve como dicen las líneas del movimiento';
    END IF;
    FOR d IN SELECT value FROM jsonb_array_elements(t->'detalles') LOOP
      SELECT sum((x.value->'fila'->>'montonominal')::numeric) INTO lineas
        FROM jsonb_array_elements(m->'lineas') x WHERE x.value->'fila'->>'medio' = d->>'codigomedio';
      IF lineas IS NULL OR (lineas <> 0 AND (d->>'valornominal')::numeric <> lineas) THEN
        RAISE EXCEPTION 'La caja no se mueve en % como dicen las líneas del movimiento',
          d->>'codigomedio';
      END IF;
    END LOOP;
  END LOOP;
END $$)sql";

// The trail's append on a server: numbered, chained and hashed here, under
// the trail's lock, with the login that sent the row and the server's time
// beside the till's own (`fecha`, empty for now). The hash is the program's:
// SHA-256 of each field, as text, preceded by its length in bytes.
constexpr const char* kAnotar = R"sql(CREATE OR REPLACE FUNCTION caja_anotar(fecha text,
  maquina integer, cajero text, aprobador text, accion text, detalle text, movimiento integer,
  monto numeric, origen text) RETURNS integer LANGUAGE plpgsql AS $$
DECLARE
  fila integer; previo text; texto text;
  login text := session_user;
  servidor text := to_char(clock_timestamp(), 'YYYY-MM-DD HH24:MI:SS');
BEGIN
  PERFORM pg_advisory_xact_lock(1635083369);
  SELECT a.id, a.hash INTO fila, previo FROM hostauditoria a ORDER BY a.id DESC LIMIT 1;
  fila := coalesce(fila, 0) + 1;
  previo := coalesce(previo, repeat('0', 64));
  fecha := coalesce(nullif(fecha, ''), servidor);
  SELECT string_agg(octet_length(v) || ':' || v || ';', '' ORDER BY n) INTO texto
    FROM unnest(ARRAY[fila::text, fecha, maquina::text, cajero, aprobador, accion, detalle,
                      coalesce(movimiento::text, ''), trim_scale(monto)::text, origen, previo,
                      login, servidor]) WITH ORDINALITY AS c(v, n);
  INSERT INTO hostauditoria (id, fecha, machineid, cajero, aprobador, accion, detalle, transid,
                             monto, origen, hashprevio, hash, login, fechaservidor)
  VALUES (fila, fecha, maquina, cajero, aprobador, accion, detalle, movimiento, monto, origen,
          previo, encode(sha256(convert_to(texto, 'UTF8')), 'hex'), login, servidor);
  RETURN fila;
END $$)sql";

// A void on the server, in one call: the movement's drawer transaction
// taken back from its drawer and deleted, as the component's void does, the
// void recorded and its row of the trail appended (caja_anotar). A movement
// voided already, or not there, is refused.
constexpr const char* kAnular = R"sql(CREATE OR REPLACE FUNCTION caja_anular(numero integer,
  cajero text, aprobador text, motivo text) RETURNS void LANGUAGE plpgsql AS $$
DECLARE
  maquina integer; monto numeric; t record;
BEGIN
  SELECT m.machineid, m.debitos - m.creditos INTO maquina, monto FROM movimientoscaja m
   WHERE m.transid = numero FOR UPDATE;
  IF NOT FOUND THEN
    RAISE EXCEPTION 'Movimiento % no encontrado', numero;
  END IF;
  IF EXISTS (SELECT FROM hostanulaciones a WHERE a.transid = numero) THEN
    RAISE EXCEPTION 'El movimiento % ya fue anulado', numero;
  END IF;
  FOR t IN SELECT * FROM transaccionesefectivo te WHERE te.tipotrans = 0 AND te.idorigen = numero LOOP
    UPDATE cvcaja SET efectivomn = efectivomn - t.efectivomn WHERE machineid = t.machineid;
    UPDATE cvcajadetalles c SET valormn = c.valormn - d.valormn,
           valornominal = c.valornominal - d.valornominal
      FROM transaccionefectivodetalles d, cvcaja v
     WHERE d.transid = t.id AND v.machineid = t.machineid AND c.idcec = v.id
       AND c.codigomedio = d.codigomedio;
    DELETE FROM transaccionefectivodetalles WHERE transid = t.id;
    DELETE FROM transaccionesefectivo WHERE id = t.id;
  END LOOP;
  INSERT INTO hostanulaciones (transid, fecha, operador, motivo)
  VALUES (numero, getdate(), cajero, motivo);
  PERFORM caja_anotar('', maquina, cajero, aprobador, 'anulacion', motivo, numero, monto, '');
END $$)sql";

// A closing on the server, in one call: its header, its count per method,
// note by note and per kind of movement (JSON arrays of rows by column
// name, amounts as exact text), and its row of the trail, which names it.
// Its number is answered.
constexpr const char* kCerrar = R"sql(CREATE OR REPLACE FUNCTION caja_cerrar(maquina integer,
  fecha timestamp, operador text, lineas text, denominaciones text, tipos text, aprobador text,
  accion text, detalle text, monto numeric) RETURNS integer LANGUAGE plpgsql AS $$
DECLARE
  cierre integer;
BEGIN
  INSERT INTO hostcierres (machineid, fecha, operador) VALUES (maquina, fecha, operador)
    RETURNING id INTO cierre;
  INSERT INTO hostcierredetalles
    SELECT r.* FROM jsonb_array_elements(lineas::jsonb) x,
      jsonb_populate_record(NULL::hostcierredetalles, x.value || jsonb_build_object('idcierre', cierre)) r;
  INSERT INTO hostcierredenominaciones
    SELECT r.* FROM jsonb_array_elements(denominaciones::jsonb) x,
      jsonb_populate_record(NULL::hostcierredenominaciones,
                            x.value || jsonb_build_object('idcierre', cierre)) r;
  INSERT INTO hostcierretipos
    SELECT r.* FROM jsonb_array_elements(tipos::jsonb) x,
      jsonb_populate_record(NULL::hostcierretipos, x.value || jsonb_build_object('idcierre', cierre)) r;
  PERFORM caja_anotar('', maquina, operador, aprobador, accion,
                      'cierre ' || cierre || '; ' || detalle, NULL, monto, '');
  RETURN cierre;
END $$)sql";

// A till's session opened or closed on the server: opened with the next
// number no session has had (minus the open one's when its machine has one
// open already), closed by moving it to the closed ones (how many moved).
constexpr const char* kAbrirSesion =
    R"sql(CREATE OR REPLACE FUNCTION caja_abrir_sesion(maquina integer,
  operador text) RETURNS integer LANGUAGE plpgsql AS $$
DECLARE
  abierta integer; nueva integer;
BEGIN
  SELECT s.sessionid INTO abierta FROM sesionespos s WHERE s.machineid = maquina;
  IF FOUND THEN
    RETURN -abierta;
  END IF;
  SELECT 1 + greatest((SELECT coalesce(max(sessionid), 0) FROM sesionespos),
                      (SELECT coalesce(max(sessionid), 0) FROM sesionescerradas)) INTO nueva;
  INSERT INTO sesionespos (sessionid, machineid, operador, apertura)
  VALUES (nueva, maquina, operador, getdate());
  RETURN nueva;
END $$)sql";
constexpr const char* kCerrarSesion =
    R"sql(CREATE OR REPLACE FUNCTION caja_cerrar_sesion(sesion integer)
RETURNS integer LANGUAGE plpgsql AS $$
DECLARE
  movidas integer;
BEGIN
  INSERT INTO sesionescerradas (sessionid, machineid, operador, apertura, cierre)
    SELECT s.sessionid, s.machineid, s.operador, s.apertura, getdate() FROM sesionespos s
     WHERE s.sessionid = sesion;
  GET DIAGNOSTICS movidas = ROW_COUNT;
  DELETE FROM sesionespos WHERE sessionid = sesion;
  RETURN movidas;
END $$)sql";

// The people who may act at a till, with their PIN hashes: what a till
// checks a PIN against and copies to its journal, to approve offline. With
// the roles, a till's login reads the hashes only through this function;
// `cual` NULL for all of them, else the one of that name, compared as the
// name column compares (letter case aside).
constexpr const char* kPersonas =
    R"sql(CREATE OR REPLACE FUNCTION caja_personas(quien text, cual text)
RETURNS TABLE (nombre text, sal text, hash text, nivel integer) LANGUAGE plpgsql STABLE AS $$
BEGIN
  IF quien = 'supervisor' THEN
    RETURN QUERY SELECT s.nombre::text, s.sal::text, s.hash::text, s.nivel::integer
      FROM hostsupervisores s WHERE cual IS NULL OR s.nombre = cual;
  ELSE
    RETURN QUERY SELECT c.nombre::text, ''::text, c.hash::text, 0
      FROM hostcajeros c WHERE cual IS NULL OR c.nombre = cual;
  END IF;
END $$)sql";

}  // namespace

void agregarEsquema() {
  agregarEsquemaPrograma(
      {kTablas,
       kIndices,
       kAgregadas,
       {kComprobar, kRecibir, kAnotar, kAnular, kCerrar, kAbrirSesion, kCerrarSesion, kPersonas},
       "caja_recibir(text)"});
}

}  // namespace caja::app
