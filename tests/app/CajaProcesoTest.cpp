#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "base/Conversiones.h"
#include "host/SqliteFactoria.h"
#include "tests/support/Ayudas.h"

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

class CajaProceso : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(correr("init --demo").estado, 0); }

  std::string db() const { return (carpeta_.ruta() / "caja.db").string(); }

  Resultado correr(const std::string& argumentos) {
    const auto out = carpeta_.ruta() / "out", err = carpeta_.ruta() / "err";
    const std::string cmd = "env -u DISPLAY -u WAYLAND_DISPLAY " + std::string(CAJA_BIN) + " " +
                            argumentos + " --db " + db() + " >" + out.string() + " 2>" +
                            err.string() + " </dev/null";
    const int estado = std::system(cmd.c_str());
    return {WEXITSTATUS(estado), leer(out), leer(err)};
  }

  long contar(const std::string& sql) { return CLng(SqliteFactoria::Abrir(db())->ReadScalar(sql)); }
  Currency monto(const std::string& sql) {
    return CCur(SqliteFactoria::Abrir(db())->ReadScalar(sql));
  }

  test::CarpetaTemporal carpeta_;
};

TEST_F(CajaProceso, ScriptedSaleSavesItsLinesAndMovesTheDrawer) {
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

TEST_F(CajaProceso, ShortPaymentIsRefusedAndWritesNothing) {
  const Resultado r = correr("cobrar --venta 100 --iva 16 --pago EFE=100 --aceptar");
  EXPECT_EQ(r.estado, 1);
  EXPECT_NE(r.errores.find("Le faltan Bs. 16.00 para completar el monto"), std::string::npos)
      << r.errores;
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MovimientosCaja"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM transaccionesEfectivo"), 0);
}

TEST_F(CajaProceso, KilledInTheMiddleOfASaveLeavesNothingHalfWritten) {
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
          db().c_str(), static_cast<char*>(nullptr));
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

  auto base = SqliteFactoria::Abrir(db());
  EXPECT_EQ(CStr(base->ReadScalar("PRAGMA integrity_check")), "ok");
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MovimientosCaja"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM DetallesVarelta"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCaja"), 0);
  EXPECT_EQ(correr("cobrar --venta 100 --pago EFE=100 --aceptar").estado, 0);
}

}  // namespace
}  // namespace caja
