// Tills on a server that goes away and comes back. The tests stop and start
// the test server itself (pg_ctlcluster, as scripts/test runs them under
// pg_virtualenv), so ctest runs this program alone.

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <fstream>

#include <cstdlib>
#include <random>
#include <thread>

#include "caja/base/Conversiones.h"
#include "tests/support/Enlace.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

class SinConexion : public ::testing::Test, protected test::ConBase {
 protected:
  SinConexion() : ConBase(test::Motor::Postgres) {}

  void SetUp() override {
    if (!db || !std::getenv("PGVERSION"))
      GTEST_SKIP() << "sin servidor PostgreSQL de prueba bajo pg_virtualenv";
    ASSERT_EQ(caja(1, "init --demo --maquina 1"), 0);
    ASSERT_EQ(caja(1, "supervisor --agregar ANA", "246802"), 0);
    // Each till knows its number, from its own settings.
    for (int maquina = 2; maquina <= 4; ++maquina) {
      ASSERT_EQ(caja(maquina, "maquina " + std::to_string(maquina)), 0);
      ASSERT_EQ(caja(maquina, "sesion abrir"), 0);
    }
  }

  // The test server, stopped or started.
  static void servidor(const char* accion) {
    const std::string cmd =
        std::string("pg_ctlcluster \"$PGVERSION\" regress ") + accion + " -m fast >/dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0) << accion;
  }

  // Whether a saved movement starts the till's sender; the other tests
  // send by hand, when they choose.
  bool conEnviador = false;
  // Where the tills find the server: straight, or through a link.
  std::string servidorDeCajas = destino();

  // The tills' server logins, one per till bound to its machine, with this
  // prefix; empty while the tills use the test's user.
  std::string logins;

  // Makes the roles, and a login per till bound to its machine by the
  // administrator, their passwords where libpq finds them: from here on
  // each till is its own login, as in a shop.
  void comoCajas() {
    ASSERT_EQ(caja(1, "init --roles"), 0);
    const auto db = otraConexion();
    const std::string prefijo = "caja" + std::to_string(getpid()) + "_";
    std::ofstream claves(carpeta.ruta() / "pgpass");
    for (int maquina = 1; maquina <= 4; ++maquina) {
      const std::string login = prefijo + std::to_string(maquina);
      db->ExecuteSQL("CREATE ROLE " + login + " LOGIN PASSWORD 'secreto' IN ROLE caja_caja");
      ASSERT_EQ(caja(1, "maquina " + std::to_string(maquina) + " --login " + login), 0);
      claves << "*:*:*:" << login << ":secreto\n";
    }
    claves.close();
    std::filesystem::permissions(carpeta.ruta() / "pgpass", std::filesystem::perms::owner_read);
    logins = prefijo;
  }

  // The command line of till `maquina` (session `maquina`), each with its
  // own data folder and so its own journal, and its own login once the
  // tills have theirs.
  std::string linea(int maquina, const std::string& argumentos) const {
    const auto datos = carpeta.ruta() / ("caja" + std::to_string(maquina));
    std::string uri = servidorDeCajas, entorno;
    if (!logins.empty()) {
      uri.insert(uri.find("://") + 3, logins + std::to_string(maquina) + "@");
      entorno = "-u PGPASSWORD PGPASSFILE=" + (carpeta.ruta() / "pgpass").string() + " ";
    }
    return std::string("env -u DISPLAY ") + entorno +
           (conEnviador ? "" : "CAJA_PRUEBA_SIN_ENVIADOR=1 ") + "XDG_DATA_HOME=" + datos.string() +
           " XDG_CONFIG_HOME=" + datos.string() + " " + CAJA_BIN + " " + argumentos + " --db '" +
           uri + "'";
  }

  // `pin`, when given, is the one line the command reads.
  int caja(int maquina, const std::string& argumentos, const std::string& pin = "") const {
    const std::string entrada = pin.empty() ? " </dev/null" : "";
    const std::string cmd = (pin.empty() ? "" : "echo " + pin + " | ") +
                            linea(maquina, argumentos) + " >/dev/null 2>&1" + entrada;
    return WEXITSTATUS(std::system(cmd.c_str()));
  }

  // What the command prints on both outputs; its exit status in `estado`.
  // `pin`, when given, is the one line the command reads.
  std::string salida(int maquina, const std::string& argumentos, int* estado = nullptr,
                     const std::string& pin = "") const {
    std::string texto;
    const std::string entrada = pin.empty() ? "" : "echo " + pin + " | ";
    FILE* p = popen((entrada + linea(maquina, argumentos) + " 2>&1").c_str(), "r");
    char buf[256];
    while (p && fgets(buf, sizeof buf, p))
      texto += buf;
    const int fin = p ? pclose(p) : -1;
    if (estado)
      *estado = WEXITSTATUS(fin);
    return texto;
  }

  // Sale i at till `maquina`: i Bs. in cash, plus `tarjeta` by debit card.
  static std::string venta(int maquina, int i, int tarjeta = 0) {
    return "cobrar --venta " + std::to_string(i + tarjeta) + " --pago EFE=" + std::to_string(i) +
           (tarjeta ? " --pago TDD=" + std::to_string(tarjeta) : "") + " --sesion " +
           std::to_string(maquina) + " --aceptar";
  }

  // Till `maquina`'s drawer on the server: its national cash, or one other
  // method's line.
  static Currency cajon(HostSql& db, int maquina, const char* medio = nullptr) {
    if (!medio)
      return CCur(db.ReadScalar("SELECT efectivoMN FROM cvCaja WHERE MachineID = ?", {maquina}));
    return CCur(db.ReadScalar(
        "SELECT D.valorMN FROM cvCajaDetalles D INNER JOIN cvCaja C ON C.id = D.idCec WHERE "
        "C.MachineID = ? AND D.codigoMedio = ?",
        {maquina, medio}));
  }

  // Until till `maquina` has nothing waiting (two minutes at most).
  void esperarEnvio(int maquina) const {
    for (int s = 0; s < 240; ++s) {
      if (salida(maquina, "pendientes").find("0 movimientos pendientes") != std::string::npos)
        return;
      std::this_thread::sleep_for(std::chrono::milliseconds(500));
    }
    ADD_FAILURE() << "la caja " << maquina << " no envió lo pendiente";
  }
};

// Four tills behind one link, 50 sales each of 1 to 50 Bs. in cash and 10
// by card, their senders shipping behind them: the server is away for
// sales 16 to 35 and the link loses every packet for sales 36 to 45. Every
// sale is reported saved. Offline, till 1's drawer holds all it sold (1 +
// ... + 35 = 630), and 600 of it is taken out. In the end every movement is
// on the server once and the drawers are exact per method. Each till is
// its own server login, bound to its machine.
TEST_F(SinConexion, FourTillsKeepSellingAndEachSaleReachesTheServerOnce) {
  test::EnlaceDemorado enlace(std::chrono::milliseconds(0));
  servidorDeCajas = enlace.uri(destino());
  comoCajas();
  conEnviador = true;
  for (int i = 1; i <= 50; ++i) {
    if (i == 16)
      servidor("stop");
    if (i == 36) {
      EXPECT_NE(salida(1, "saldo --json").find("\"medio\":\"EFE\",\"valorMN\":630,"),
                std::string::npos)
          << salida(1, "saldo --json");
      ASSERT_EQ(caja(1, "salida --pago EFE=600 --motivo Banco --sesion 1 --autoriza ANA", "246802"),
                0);
      enlace.perder(true);
      servidor("start");
    }
    if (i == 46)
      enlace.perder(false);
    for (int maquina = 1; maquina <= 4; ++maquina)
      ASSERT_EQ(caja(maquina, venta(maquina, i, 10)), 0) << maquina << " " << i;
  }
  const auto db = otraConexion();
  for (int maquina = 1; maquina <= 4; ++maquina) {
    esperarEnvio(maquina);
    // 1 + 2 + ... + 50, less the withdrawal at till 1; 50 × 10 by card.
    EXPECT_EQ(cajon(*db, maquina), cur(maquina == 1 ? "675" : "1275"));
    EXPECT_EQ(cajon(*db, maquina, "TDD"), cur("500"));
  }
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")), 201);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(DISTINCT Clave) FROM hostClaves")), 201);
  // The withdrawal approved offline reaches the server's trail once, under
  // the number the server gave its movement, after the supervisor's row
  // and the four logins', sent by till 1's login.
  EXPECT_EQ(CLng(db->ReadScalar(
                "SELECT COUNT(*) FROM hostAuditoria A INNER JOIN MovimientosCaja M ON M.TransID = "
                "A.TransID WHERE A.id = 6 AND A.Accion = 'salida' AND A.Aprobador = 'ANA' AND "
                "A.Origen <> '' AND M.Creditos = 600 AND A.Login = ?",
                {logins + "1"})),
            1);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM hostAuditoria")), 6);
  EXPECT_NE(salida(1, "auditoria --verificar").find("íntegra: 6 filas"), std::string::npos);
}

// Two senders of one till started at once, the link slow enough that the
// first still works when the second starts: one sends, the other says so
// and ends, and each movement is on the server once.
TEST_F(SinConexion, TwoSendersStartedAtOnceSendOnce) {
  test::EnlaceDemorado enlace(std::chrono::milliseconds(300));
  servidorDeCajas = enlace.uri(destino());
  for (int i = 1; i <= 5; ++i)
    ASSERT_EQ(caja(1, venta(1, i)), 0) << i;
  FILE* uno = popen((linea(1, "enviar") + " 2>&1").c_str(), "r");
  FILE* otro = popen((linea(1, "enviar") + " 2>&1").c_str(), "r");
  std::string dicho;
  char buf[256];
  for (FILE* p : {uno, otro}) {
    while (p && fgets(buf, sizeof buf, p))
      dicho += buf;
    EXPECT_EQ(WEXITSTATUS(pclose(p)), 0);
  }
  EXPECT_NE(dicho.find("Ya hay un envío en curso en esta caja"), std::string::npos) << dicho;
  EXPECT_NE(dicho.find("Nada espera envío"), std::string::npos) << dicho;
  const auto db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")), 5);
  EXPECT_EQ(cajon(*db, 1), cur("15"));
}

// Counted on the link: a sale after the till's first opens no connection;
// sending a three-line sale costs one round trip more than a send with
// nothing waiting (connection, copy and all); the component's own save of
// such a sale straight through PostgresFactoria, as a host that saves
// directly does, costs one per statement, or one per read with its writes
// deferred.
TEST_F(SinConexion, RoundTripsOfASaveAreCounted) {
  test::EnlaceDemorado enlace(std::chrono::milliseconds(0));
  servidorDeCajas = enlace.uri(destino());
  const std::string tresLineas =
      "cobrar --venta 100 --pago EFE=10 --pago USD=1 --pago TDD=60 --sesion 1 --aceptar";
  ASSERT_EQ(caja(1, tresLineas), 0);
  ASSERT_EQ(caja(1, "sincronizar"), 0);
  enlace.contarDesdeCero();
  ASSERT_EQ(caja(1, "sincronizar"), 0);
  const long sinNada = enlace.idasYVueltas();
  // The sale itself never opens a connection: the cashier waits on nothing
  // the link does.
  const long conexiones = enlace.conexiones();
  ASSERT_EQ(caja(1, tresLineas), 0);
  EXPECT_EQ(enlace.conexiones(), conexiones);
  enlace.contarDesdeCero();
  ASSERT_EQ(caja(1, "sincronizar"), 0);
  // One; a flight the network splits in two may count twice.
  EXPECT_LE(enlace.idasYVueltas() - sinNada, 2);

  // BEGIN, COMMIT and one for each statement, a new one prepared in the
  // same flight: 29 when this was written (47 with a flight of its own for
  // each preparation); with its writes deferred, one for each read and the
  // COMMIT: 18. A little room for split flights.
  EXPECT_LE(test::idasYVueltasDelGuardado(enlace, destino(), false), 31);
  EXPECT_LE(test::idasYVueltasDelGuardado(enlace, destino(), true), 20);
}

// Tills 1 and 2 charge invoice 77 offline, and session 2 is closed on the
// server before till 2 comes back: both sales are kept, till 2's in its
// closed session, and the second to arrive names both movements and their
// tills (the server numbered the two online sales 1 and 2). The conflict is
// heard of: listed at the till and on the server, recorded once in the
// trail, and sincronizar exits 1 until a supervisor acknowledges it. While
// the server is away, till 1 reprints its sent sale under the server's
// number, lists its unsent one as local, and refuses to close in words.
TEST_F(SinConexion, ADocumentChargedAtTwoTillsIsKeptAtBothAndNamed) {
  for (int maquina : {1, 2}) {
    ASSERT_EQ(caja(maquina, venta(maquina, 1)), 0);
    ASSERT_EQ(caja(maquina, "sincronizar"), 0);
  }
  servidor("stop");
  for (int maquina : {1, 2})
    ASSERT_EQ(caja(maquina, venta(maquina, 30) + " --documento FAC:77"), 0) << maquina;
  int sinServidor = 0;
  for (const char* recibo : {"recibo 1", "recibo --local 1"}) {
    const std::string papel = salida(1, recibo, &sinServidor);
    EXPECT_EQ(sinServidor, 0) << recibo;
    EXPECT_NE(papel.find("\nMovimiento 1\n"), std::string::npos) << papel;
  }
  EXPECT_NE(salida(1, "movimientos --csv").find("\r\nlocal 2,"), std::string::npos);
  const std::string cierre = salida(1, "cierre --contado EFE=31", &sinServidor);
  EXPECT_EQ(sinServidor, 1);
  EXPECT_NE(cierre.find("El cierre necesita el servidor, que no responde; esperan envío en esta "
                        "caja 1 movimientos"),
            std::string::npos)
      << cierre;
  EXPECT_EQ(cierre.find("Error"), std::string::npos) << cierre;
  // A till that never had the server has no copy to sell from, and says so.
  int nueva = 0;
  EXPECT_NE(salida(9, venta(1, 5), &nueva).find("Esta caja aún no tiene su copia"),
            std::string::npos);
  EXPECT_EQ(nueva, 3);
  servidor("start");
  ASSERT_EQ(caja(3, "sesion cerrar --sesion 2"), 0);
  EXPECT_EQ(caja(1, "sincronizar"), 0);
  int estado = 0;
  EXPECT_NE(salida(2, "sincronizar", &estado)
                .find("El documento FAC 77 se cobró en más de una caja: movimientos 3 (máquina 1) "
                      "y 4 (máquina 2)"),
            std::string::npos);
  EXPECT_EQ(estado, 1);
  const auto db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("SELECT Sesion FROM MovimientosCaja WHERE TransID = 4")), 2);
  EXPECT_EQ(
      CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja WHERE TipoDocumento = 'FAC' AND "
                          "NumeroDocumento = 77")),
      2);

  EXPECT_NE(salida(2, "pendientes").find("1 conflictos sin resolver"), std::string::npos);
  EXPECT_NE(salida(2, "pendientes --json").find("\"clase\":\"documento\",\"local\":2,"),
            std::string::npos);
  salida(2, "sincronizar", &estado);
  EXPECT_EQ(estado, 1);
  EXPECT_NE(salida(1, "conflictos").find("FAC 77: movimientos 3 (máquina 1), 4 (máquina 2)"),
            std::string::npos);
  const auto conflictos = [&] {
    return CLng(db->ReadScalar("SELECT COUNT(*) FROM hostAuditoria WHERE Accion = 'conflicto'"));
  };
  EXPECT_EQ(conflictos(), 1);
  // Till 1, which sent its sale first, hears of it once its copy has both.
  salida(1, "sincronizar", &estado);
  EXPECT_EQ(estado, 1);
  EXPECT_NE(salida(1, "pendientes")
                .find("El documento FAC 77 se cobró en más de una caja: "
                      "movimientos 3 (máquina 1) y 4 (máquina 2)"),
            std::string::npos);
  EXPECT_EQ(conflictos(), 1);
  EXPECT_EQ(caja(2, "conflictos --resolver 1 --autoriza ANA", "1111"), 1);
  EXPECT_EQ(caja(2, "conflictos --resolver 1 --autoriza ANA", "246802"), 0);
  EXPECT_EQ(caja(2, "conflictos --resolver 1 --autoriza ANA", "246802"), 1);
  EXPECT_EQ(caja(2, "sincronizar"), 0);
  EXPECT_EQ(conflictos(), 1);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM hostAuditoria WHERE Accion = 'conflicto "
                                "resuelto' AND Aprobador = 'ANA' AND MachineID = 2")),
            1);
  EXPECT_EQ(salida(2, "conflictos").find("Conflictos de esta caja: ninguno"), 0u);
}

// Wrong PINs add up across tills: three of the supervisor's at till 1 and
// two at till 2, each refused at its till alone, reach the server with the
// trail and lock the supervisor there; after its next copy till 1 refuses
// the right PIN too, until the lock ends.
TEST_F(SinConexion, WrongPinsAtSeveralTillsLockThePersonAtAll) {
  for (int maquina : {1, 2})
    ASSERT_EQ(caja(maquina, venta(maquina, 50)), 0);
  const auto salidaCon = [&](int maquina, const char* pin) {
    return caja(
        maquina,
        "salida --pago EFE=1 --motivo Banco --autoriza ANA --sesion " + std::to_string(maquina),
        pin);
  };
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(salidaCon(1, "000000"), 1);
  EXPECT_EQ(caja(1, "sincronizar"), 0);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(salidaCon(2, "000000"), 1);
  EXPECT_EQ(caja(2, "sincronizar"), 0);
  const auto db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM hostAuditoria WHERE Accion = 'bloqueo' AND "
                                "Aprobador = 'ANA'")),
            1);
  EXPECT_EQ(caja(1, "sincronizar"), 0);
  int estado = 0;
  EXPECT_NE(
      salida(1, "salida --pago EFE=1 --motivo Banco --autoriza ANA --sesion 1", &estado, "246802")
          .find("está bloqueado hasta"),
      std::string::npos);
  EXPECT_EQ(estado, 1);
}

// The server stops while a sale is being saved (the test hook holds the save
// open after the movement's rows are written): the sale, saved in the
// journal, is whole and reported saved, and reaches the server once when
// it returns.
TEST_F(SinConexion, ALinkLostInTheMiddleOfASaveKeepsTheSaleWhole) {
  const std::string cmd =
      "CAJA_PRUEBA_PAUSA_MS=3000 " + linea(1, venta(1, 42)) + " 2>&1 </dev/null";
  FILE* p = popen(cmd.c_str(), "r");
  ASSERT_NE(p, nullptr);
  std::string texto;
  char buf[256];
  while (texto.find("guardando") == std::string::npos && fgets(buf, sizeof buf, p))
    texto += buf;
  servidor("stop");
  while (fgets(buf, sizeof buf, p))
    texto += buf;
  EXPECT_EQ(WEXITSTATUS(pclose(p)), 0) << texto;
  servidor("start");
  ASSERT_EQ(caja(1, "sincronizar"), 0);
  const auto db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")), 1);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM DetallesVarelta")), 1);
  EXPECT_EQ(cajon(*db, 1), cur("42"));
}

// The server refuses one of three offline sales (a check the test adds; the
// journal numbers them 2 to 4): the other two are sent, the refused one
// stays pending and named, the till still sells, it cannot close while the
// refused one waits, and once the server takes it the journal empties and
// the till closes.
TEST_F(SinConexion, AMovementTheServerRefusesWaitsWithoutHoldingBackTheRest) {
  ASSERT_EQ(caja(1, venta(1, 1)), 0);
  ASSERT_EQ(caja(1, "sincronizar"), 0);
  servidor("stop");
  for (int i = 65; i <= 67; ++i)
    ASSERT_EQ(caja(1, venta(1, i) + " --documento FAC:" + std::to_string(i)), 0) << i;
  servidor("start");
  const auto db = otraConexion();
  db->ExecuteSQL("ALTER TABLE MovimientosCaja ADD CONSTRAINT prueba CHECK (NumeroDocumento <> 66)");
  int estado = 0;
  EXPECT_NE(salida(1, "sincronizar", &estado).find("Movimiento local 3 no enviado: "),
            std::string::npos);
  EXPECT_EQ(estado, 3);
  EXPECT_NE(salida(1, "pendientes").find("1 movimientos pendientes"), std::string::npos);
  // The server's balance says so, and adds what waits at the till.
  const std::string saldo = salida(1, "saldo");
  EXPECT_NE(saldo.find("Cifras del servidor; esperan envío en esta caja 1 movimientos"),
            std::string::npos)
      << saldo;
  EXPECT_NE(saldo.find("  EFE                      66.00                   66.00\n"),
            std::string::npos)
      << saldo;
  EXPECT_NE(salida(1, "pendientes --json").find("[{\"local\":3,"), std::string::npos);
  EXPECT_NE(salida(1, "cierre --maquina 1 --contado EFE=133", &estado)
                .find("Quedan movimientos de esta caja sin enviar al servidor (locales 3)"),
            std::string::npos);
  EXPECT_EQ(estado, 1);
  EXPECT_EQ(caja(1, venta(1, 5)), 0);
  db->ExecuteSQL("ALTER TABLE MovimientosCaja DROP CONSTRAINT prueba");
  // Refused inserts took numbers of the server's sequence: the number is not asserted.
  const std::string json = salida(1, "sincronizar --json");
  EXPECT_EQ(json.rfind("{\"enviados\":[{\"local\":3,\"servidor\":", 0), 0u) << json;
  EXPECT_NE(json.find("}],\"conflictos\":[],\"fallidos\":[]}"), std::string::npos) << json;
  // 1 + 65 + 66 + 67 + 5.
  EXPECT_EQ(cajon(*db, 1), cur("204"));
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")), 5);
  EXPECT_EQ(caja(1, "cierre --maquina 1 --contado EFE=204"), 0);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM hostCierres")), 1);
}

// A sale voided at the till before it was sent: the void is the journal's,
// frees the document at once, and reaches the server with its movement,
// which then moves no drawer; its row of the trail names the server's
// number.
TEST_F(SinConexion, AVoidAtTheTillTravelsWithItsMovement) {
  ASSERT_EQ(caja(1, venta(1, 7) + " --documento FAC:9"), 0);
  EXPECT_NE(salida(1, "anular 1 --local 1").find("Indique uno"), std::string::npos);
  ASSERT_EQ(caja(1, "anular --local 1 --motivo error --autoriza ANA", "246802"), 0);
  ASSERT_EQ(caja(1, venta(1, 8) + " --documento FAC:9"), 0);
  // Its receipt, reprinted by the journal's number: the journal's while it
  // waits, the server's once sent.
  EXPECT_NE(salida(1, "recibo --local 2").find("Movimiento local 2"), std::string::npos);
  ASSERT_EQ(caja(1, "sincronizar"), 0);
  EXPECT_NE(salida(1, "recibo --local 2").find("Movimiento 2\n"), std::string::npos);
  const auto db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")), 2);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT A.TransID FROM hostAnulaciones A INNER JOIN "
                                "MovimientosCaja M ON M.TransID = A.TransID WHERE M.Debitos = 7 "
                                "AND A.Motivo = 'error'")),
            1);
  EXPECT_EQ(cajon(*db, 1), cur("8"));
  EXPECT_EQ(CLng(db->ReadScalar(
                "SELECT COUNT(*) FROM hostAuditoria WHERE Accion = 'anulacion' AND TransID = 1")),
            1);
}

// The first sale saved offline starts the till's sender, which backs off
// while the server is away; another sender started meanwhile exits at once.
// When the server returns the sender ships what waits by itself, once, and
// ends.
TEST_F(SinConexion, TheSenderShipsBehindTheCashierAndOnlyOneRunsAtATime) {
  conEnviador = true;
  ASSERT_EQ(caja(1, venta(1, 1)), 0);
  servidor("stop");
  for (int i = 2; i <= 4; ++i)
    ASSERT_EQ(caja(1, venta(1, i)), 0) << i;
  for (int otro = 0; otro < 2; ++otro)
    EXPECT_NE(salida(1, "enviar").find("Ya hay un envío en curso en esta caja"), std::string::npos);
  servidor("start");
  std::string quedan;
  for (int s = 0; s < 90; ++s) {
    quedan = salida(1, "pendientes");
    if (quedan.find("0 movimientos pendientes") != std::string::npos)
      break;
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
  EXPECT_NE(quedan.find("0 movimientos pendientes"), std::string::npos) << quedan;
  EXPECT_NE(quedan.find("Último envío sin rechazos: "), std::string::npos) << quedan;
  const auto db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")), 4);
  EXPECT_EQ(cajon(*db, 1), cur("10"));  // 1 + 2 + 3 + 4
}

// A till killed at random points while it sends its journal: after a last
// sincronizar every movement is on the server once. CAJA_MATANZAS sets how
// many kills (5 by default, 50 or more for the long run).
TEST_F(SinConexion, KilledWhileSendingNeitherLosesNorRepeatsAMovement) {
  const char* veces = std::getenv("CAJA_MATANZAS");
  const int matanzas = veces ? std::atoi(veces) : 5;
  const int ventas = std::max(matanzas, 10);
  // The journal takes its first copy with the first sale, the server there.
  ASSERT_EQ(caja(1, venta(1, 1)), 0);
  servidor("stop");
  for (int i = 2; i <= ventas; ++i)
    ASSERT_EQ(caja(1, venta(1, i)), 0) << i;
  servidor("start");
  std::mt19937 azar(20261124);
  for (int k = 0; k < matanzas; ++k) {
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      setpgid(0, 0);
      execl("/bin/sh", "sh", "-c", (linea(1, "sincronizar") + " >/dev/null 2>&1").c_str(), nullptr);
      _exit(127);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(azar() % 150));
    kill(-pid, SIGKILL);
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  ASSERT_EQ(caja(1, "sincronizar"), 0);
  const auto db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")), ventas);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(DISTINCT Clave) FROM hostClaves")), ventas);
}

}  // namespace
}  // namespace caja
