#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "base/Conversiones.h"
#include "base/Texto.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

struct Resultado {
  int estado;
  std::string salida, errores;
};

std::string leer(const std::filesystem::path& p) {
  std::ifstream in(p);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

class CajaProceso : public test::PorMotor {
 protected:
  void SetUp() override {
    test::PorMotor::SetUp();
    if (!IsSkipped()) {
      ASSERT_EQ(correr("init --demo").estado, 0);
    }
  }

  std::string caja(const std::string& argumentos) const {
    return "env -u DISPLAY -u WAYLAND_DISPLAY " + std::string(CAJA_BIN) + " " + argumentos +
           " --db '" + destino() + "'";
  }

  Resultado correr(const std::string& argumentos) {
    const auto out = carpeta.ruta() / "out", err = carpeta.ruta() / "err";
    const std::string cmd =
        caja(argumentos) + " >" + out.string() + " 2>" + err.string() + " </dev/null";
    const int estado = std::system(cmd.c_str());
    return {WEXITSTATUS(estado), leer(out), leer(err)};
  }

  Currency monto(const std::string& sql) { return CCur(db->ReadScalar(sql)); }
};

TEST_P(CajaProceso, ScriptedSaleSavesItsLinesAndMovesTheDrawer) {
  const Resultado r = correr(
      "cobrar --venta 100 --iva 16 --pago EFE=50 --pago USD=2 --pago TDC=0.5 --aceptar --json");
  ASSERT_EQ(r.estado, 0) << r.errores;
  EXPECT_NE(r.salida.find("\"debitos\":118.19"), std::string::npos) << r.salida;
  // 50 + 2 × 36.50 + 0.50 = 123.50 received; IGTF 3% of 73.00 = 2.19; change 5.31 off the cash.
  EXPECT_EQ(monto("SELECT Monto FROM DetallesVarelta WHERE Medio = 'EFE'"), cur("44.69"));
  EXPECT_EQ(monto("SELECT Monto FROM DetallesVarelta WHERE Medio = 'USD'"), cur("73"));
  EXPECT_EQ(monto("SELECT MontoNominal FROM DetallesVarelta WHERE Medio = 'USD'"), cur("2"));
  EXPECT_EQ(monto("SELECT Monto FROM DetallesVarelta WHERE Medio = 'TDC'"), cur("0.5"));
  EXPECT_EQ(monto("SELECT MontoIGTF FROM MovimientosCaja"), cur("2.19"));
  EXPECT_EQ(monto("SELECT efectivoMN FROM cvCaja WHERE MachineID = 1"), cur("44.69"));
  EXPECT_EQ(monto("SELECT valorNominal FROM cvCajaDetalles WHERE codigoMedio = 'USD'"), cur("2"));

  const Resultado saldo = correr("saldo --maquina 1");
  EXPECT_NE(saldo.salida.find("USD"), std::string::npos);
}

TEST_P(CajaProceso, ShortPaymentIsRefusedAndWritesNothing) {
  const Resultado r = correr("cobrar --venta 100 --iva 16 --pago EFE=100 --aceptar");
  EXPECT_EQ(r.estado, 1);
  EXPECT_NE(r.errores.find("Le faltan Bs. 16.00 para completar el monto"), std::string::npos)
      << r.errores;
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MovimientosCaja"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM transaccionesEfectivo"), 0);
}

TEST_P(CajaProceso, KilledInTheMiddleOfASaveLeavesNothingHalfWritten) {
  int tubo[2];
  ASSERT_EQ(pipe(tubo), 0);
  const pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    dup2(tubo[1], STDERR_FILENO);
    close(tubo[0]);
    setenv("CAJA_PRUEBA_PAUSA_MS", "20000", 1);
    unsetenv("DISPLAY");
    execl(CAJA_BIN, CAJA_BIN, "cobrar", "--venta", "100", "--pago", "EFE=100", "--aceptar", "--db",
          destino().c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  close(tubo[1]);
  std::string errores;
  char buf[256];
  for (ssize_t n;
       errores.find("guardando") == std::string::npos && (n = read(tubo[0], buf, sizeof buf)) > 0;)
    errores.append(buf, static_cast<std::size_t>(n));
  ASSERT_NE(errores.find("guardando"), std::string::npos) << errores;
  kill(pid, SIGKILL);
  waitpid(pid, nullptr, 0);
  close(tubo[0]);

  if (motor == test::Motor::Sqlite) {
    EXPECT_EQ(CStr(db->ReadScalar("PRAGMA integrity_check")), "ok");
  }
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MovimientosCaja"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM DetallesVarelta"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCaja"), 0);
  EXPECT_EQ(correr("cobrar --venta 100 --pago EFE=100 --aceptar").estado, 0);
}

TEST_P(CajaProceso, AmountsBeyondDoublePrecisionReadBackExactly) {
  const Resultado venta =
      correr("cobrar --venta 9999999999999.99 --iva 0 --pago EFE=9999999999999.99 --aceptar");
  ASSERT_EQ(venta.estado, 0) << venta.errores;
  const Resultado mov = correr("movimiento 1 --json");
  EXPECT_NE(mov.salida.find("\"debitos\":9999999999999.99,"), std::string::npos) << mov.salida;
  EXPECT_NE(mov.salida.find("\"monto\":9999999999999.99,"), std::string::npos) << mov.salida;
  const Resultado saldo = correr("saldo --json");
  EXPECT_NE(saldo.salida.find("\"valorMN\":9999999999999.99,"), std::string::npos) << saldo.salida;
}

TEST_P(CajaProceso, ASaleThatWouldOverflowTheDrawerIsRefusedWhole) {
  const std::string venta =
      "cobrar --venta 500000000000000 --iva 0 --pago EFE=500000000000000 "
      "--aceptar";
  ASSERT_EQ(correr(venta).estado, 0);
  const Resultado segunda = correr(venta);
  EXPECT_EQ(segunda.estado, 3);
  EXPECT_NE(segunda.errores.find("fuera del rango de la moneda"), std::string::npos)
      << segunda.errores;
  EXPECT_NE(segunda.errores.find("500000000000000"), std::string::npos) << segunda.errores;
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MovimientosCaja"), 1);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM DetallesVarelta"), 1);
  const Resultado saldo = correr("saldo --json");
  EXPECT_EQ(saldo.estado, 0) << saldo.errores;
  EXPECT_NE(saldo.salida.find("\"valorMN\":500000000000000,"), std::string::npos) << saldo.salida;
}

// Eight tills (processes) sell fifty times each at once. Sale i of till t is
// for t·1000 + i + i/100, paid 10 by debit card and the rest plus 5 in cash,
// so each movement's lines tell which sale they belong to.
TEST_P(CajaProceso, EightTillsAtOnceSaveEachSaleOnceUnderItsOwnNumber) {
  constexpr int kCajas = 8, kVentas = 50;
  for (int t = 2; t <= kCajas; ++t)
    db->ExecuteSQL("INSERT INTO SesionesPOS (SessionID, MachineID) VALUES (?, ?)", {t, t});
  const auto fallos = carpeta.ruta() / "fallos";
  std::string guion;
  for (int t = 1; t <= kCajas; ++t) {
    const std::string T = std::to_string(t);
    guion += "(for i in $(seq 1 " + std::to_string(kVentas) + "); do c=$(printf %02d $i); " +
             caja("cobrar --venta $((" + T + "000 + i)).$c --iva 0 --pago TDD=10 --pago EFE=$((" +
                  T + "000 + i - 5)).$c --sesion " + T + " --documento FAC:$i --aceptar") +
             " >/dev/null 2>>" + fallos.string() + " </dev/null || echo caja " + T +
             " venta $i >>" + fallos.string() + "; done) & ";
  }
  ASSERT_EQ(std::system(("bash -c '" + replaceAll(guion, "'", "'\\''") + " wait'").c_str()), 0);
  EXPECT_EQ(leer(fallos), "");

  std::map<std::int32_t, std::map<std::string, Currency>> lineas;
  for (auto rs = db->openrecordset("SELECT TransID, Medio, Monto FROM DetallesVarelta"); !rs->Eof();
       rs->MoveNext())
    lineas[CLng(rs->Fields("TransID"))][CStr(rs->Fields("Medio"))] += CCur(rs->Fields("Monto"));
  std::map<int, Currency> efectivoDeCaja;
  std::set<std::pair<int, int>> vistas;
  for (auto rs = db->openrecordset("SELECT * FROM MovimientosCaja"); !rs->Eof(); rs->MoveNext()) {
    const int t = CLng(rs->Fields("Sesion")), i = CLng(rs->Fields("NumeroDocumento"));
    SCOPED_TRACE("caja " + std::to_string(t) + " venta " + std::to_string(i));
    EXPECT_TRUE(vistas.insert({t, i}).second) << "guardada dos veces";
    EXPECT_EQ(CLng(rs->Fields("machineID")), t);
    const Currency venta =
        Currency::fromUnits(t * 1000 + i) + Currency::fromRaw(static_cast<std::int64_t>(i) * 100);
    EXPECT_EQ(CCur(rs->Fields("Debitos")), venta);
    const auto& suyas = lineas[CLng(rs->Fields("TransID"))];
    EXPECT_EQ(suyas.size(), 2u);
    EXPECT_EQ(suyas.count("TDD") ? suyas.at("TDD") : Currency{}, cur("10"));
    EXPECT_EQ(suyas.count("EFE") ? suyas.at("EFE") : Currency{}, venta - cur("10"));
    efectivoDeCaja[t] += venta - cur("10");
  }
  EXPECT_EQ(vistas.size(), static_cast<std::size_t>(kCajas * kVentas));
  for (int t = 1; t <= kCajas; ++t) {
    SCOPED_TRACE("caja " + std::to_string(t));
    EXPECT_EQ(monto("SELECT efectivoMN FROM cvCaja WHERE MachineID = " + std::to_string(t)),
              efectivoDeCaja[t]);
  }
}

INSTANTIATE_TEST_SUITE_P(Motores, CajaProceso, ::testing::ValuesIn(test::motores()),
                         test::nombreMotor);

}  // namespace
}  // namespace caja
