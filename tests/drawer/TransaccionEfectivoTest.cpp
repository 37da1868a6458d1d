#include "caja/drawer/TransaccionEfectivo.h"

#include <gtest/gtest.h>

#include "caja/base/Conversiones.h"
#include "caja/drawer/SaldoCaja.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

class TransaccionFake : public ::testing::Test, protected test::ConFake {
 protected:
  std::vector<test::FakeFactoria::Llamada> desde(std::size_t n) const {
    return {fake->llamadas.begin() + static_cast<long>(n), fake->llamadas.end()};
  }
};

TEST_F(TransaccionFake, GrabarWritesHeaderThenEachLineBeforeItsBalance) {
  fake->alCargarMedio("USD", 8, 0);
  fake->alCargarMedio("TDC", 3, 0);  // not cash-like: never reaches the drawer
  TransaccionEfectivo t;
  t.beginProcess(Variant(4));
  t.addDetalle("EFE", cur("100"), cur("5"));
  t.addDetalle("USD", cur("400"), cur("10"));
  t.addDetalle("usd", cur("200"), cur("5"));
  t.addDetalle("TDC", cur("50"), cur("50"));
  t.addDetalle("USD", cur("0"), cur("10"));
  EXPECT_EQ(t.EfectivoMN, cur("100"));
  const std::size_t antes = fake->llamadas.size();
  fake->alLeer("SELECT scope_identity()", Variant(77));
  fake->alLeer("SELECT id FROM CVCaja WHERE MachineID = ?", Variant(12));
  fake->alLeer("SELECT COUNT(*) FROM CVCaja WHERE machineID = ?", Variant(1));
  t.grabar(origenTransaccionEfectivo::OTE_MOVCAJA, 55);

  const auto ll = desde(antes);
  const std::vector<std::string> esperadas = {
      "INSERT INTO transaccionesEfectivo (tipoTrans, idOrigen, machineID, efectivoMN) VALUES (?, "
      "?, ?, ?)",
      "SELECT scope_identity()",
      "SELECT COUNT(*) FROM CVCaja WHERE machineID = ?",
      "SELECT id FROM CVCaja WHERE MachineID = ?",
      "UPDATE cvCaja SET efectivoMN = efectivoMN + ? WHERE id = ?",
      "INSERT INTO transaccionEfectivoDetalles (transID, codigoMedio, valorMN, valorNominal) "
      "VALUES (?, ?, ?, ?)",
      "SELECT COUNT(*) FROM CVCaja WHERE machineID = ?",
      "SELECT id FROM CVCaja WHERE MachineID = ?",
      "SELECT id FROM CVCajaDetalles WHERE idCEC = ? AND codigoMedio = ?",
      "INSERT INTO CVCajaDetalles (idCec, codigoMedio) VALUES (?, ?)",
      "SELECT scope_identity()",
      "UPDATE CVCajaDetalles SET valorMN = valorMN + ?, valorNominal = valorNominal + ? "
      "WHERE id = ?",
  };
  std::vector<std::string> sqls;
  for (const auto& l : ll)
    sqls.push_back(l.sql);
  EXPECT_EQ(sqls, esperadas);
  EXPECT_EQ(ll[0].args, test::valores(0, 55, std::int16_t{4}, cur("100")));
  EXPECT_EQ(ll[4].args, test::valores(cur("100"), 12));
  // One line for "USD" and "usd": 600 for 15, at 40.
  EXPECT_EQ(ll[5].args, test::valores(77, "USD", cur("600"), cur("15")));
  EXPECT_EQ(ll[11].args, test::valores(cur("600"), cur("15"), 77));
}

// Nothing to write writes nothing; before beginProcess only national cash
// is taken.
TEST_F(TransaccionFake, NothingToWriteAndNothingBeforeBeginProcess) {
  TransaccionEfectivo t;
  t.beginProcess(Variant(1));
  t.addDetalle("USD", cur("0"), cur("10"));
  t.grabar(origenTransaccionEfectivo::OTE_MOVCAJA, 1);
  EXPECT_TRUE(fake->llamadas.empty());
  fake->alCargarMedio("USD", 8, 0);
  TransaccionEfectivo antes;
  antes.addDetalle("EFE", cur("5"), cur("0"));
  EXPECT_EQ(antes.EfectivoMN, cur("5"));
  EXPECT_EQ(test::numeroError([&] { antes.addDetalle("USD", cur("5"), cur("1")); }), 91);
  EXPECT_EQ(test::numeroError([&] { antes.grabar(origenTransaccionEfectivo::OTE_MOVCAJA, 1); }),
            91);
}

TEST_F(TransaccionFake, RevertirJoinsItsSixPiecesExactly) {
  TransaccionEfectivo t;
  t.Id = 31;
  t.MachineID = 2;
  t.EfectivoMN = cur("12.5");
  t.revertir();
  ASSERT_EQ(fake->llamadas.size(), 4u);
  EXPECT_EQ(fake->llamadas[0].sql,
            "UPDATE cvCaja SET efectivoMN = efectivoMN - ? WHERE machineID = ?");
  EXPECT_EQ(fake->llamadas[0].args, test::valores(cur("12.5"), std::int16_t{2}));
  EXPECT_EQ(
      fake->llamadas[1].sql,
      "UPDATE cvCajaDetalles SET valorMN = cvCajaDetalles.valorMN - D.valorMN, valorNominal = "
      "cvCajaDetalles.valorNominal - D.ValorNominal FROM (SELECT d.*, cv.id AS CEC FROM "
      "(SELECT * FROM transaccionEfectivodetalles WHERE transID = ?) D INNER JOIN "
      "TransaccionesEfectivo te ON D.transID = te.id INNER JOIN cvCaja CV ON cv.machineID = "
      "te.machineID) D WHERE D.CEC = idCec AND D.codigoMedio = cvCajaDetalles.codigoMedio");
  EXPECT_EQ(fake->llamadas[1].args, test::valores(31));
  EXPECT_EQ(fake->llamadas[2].sql, "DELETE FROM transaccionEfectivoDetalles WHERE transId = ?");
  EXPECT_EQ(fake->llamadas[3].sql, "DELETE FROM TransaccionesEfectivo WHERE id = ?");
}

class TransaccionEnBase : public test::PorMotor {
 protected:
  void sembrar() override {
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Clase, Atributos, titulo, posicion) VALUES "
        "('USD', 8, 1024, 'Dólares', 1), ('TDC', 3, 0, 'Tarjeta', 2)");
  }
  Currency efectivo(int maquina) {
    return NzMoneda(db->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE MachineID = ?", {maquina}));
  }
  Currency detalle(int maquina, const char* columna) {
    return NzMoneda(db->ReadScalar(std::string("SELECT D.") + columna +
                                       " FROM cvCajaDetalles D JOIN cvCaja C ON C.id = D.idCec "
                                       "WHERE C.MachineID = ? AND D.codigoMedio = 'USD'",
                                   {maquina}));
  }
  void grabar(int maquina, int documento, const char* efe, const char* usdMN, const char* usd) {
    TransaccionEfectivo t;
    t.beginProcess(Variant(maquina));
    t.addDetalle("EFE", cur(efe), cur(efe));
    t.addDetalle("USD", cur(usdMN), cur(usd));
    t.addDetalle("TDC", cur("99"), cur("99"));
    t.grabar(origenTransaccionEfectivo::OTE_MOVCAJA, documento);
  }
};

// The first save of a till creates its rows, the next ones add; reverting
// one takes back exactly its amounts, from its own till only.
TEST_P(TransaccionEnBase, GrabarAddsToItsTillAndRevertirTakesItBack) {
  grabar(1, 10, "150", "400", "10");
  grabar(2, 20, "70", "40", "1");
  grabar(1, 11, "30", "200", "5");
  EXPECT_EQ(efectivo(1), cur("180"));
  EXPECT_EQ(detalle(1, "valorMN"), cur("600"));
  EXPECT_EQ(detalle(1, "valorNominal"), cur("15"));
  EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCaja"), 2);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM transaccionEfectivoDetalles"), 3);
  TransaccionEfectivo t;
  ASSERT_TRUE(t.loadFromTransid(origenTransaccionEfectivo::OTE_MOVCAJA, 11));
  EXPECT_EQ(t.MachineID, 1);
  EXPECT_EQ(t.EfectivoMN, cur("30"));
  t.revertir();
  EXPECT_EQ(efectivo(1), cur("150"));
  EXPECT_EQ(detalle(1, "valorMN"), cur("400"));
  EXPECT_EQ(detalle(1, "valorNominal"), cur("10"));
  EXPECT_EQ(efectivo(2), cur("70"));
  EXPECT_EQ(detalle(2, "valorMN"), cur("40"));
  EXPECT_EQ(contar("SELECT COUNT(*) FROM transaccionesEfectivo"), 2);
  EXPECT_FALSE(t.loadFromTransid(origenTransaccionEfectivo::OTE_MOVCAJA, 11));
  EXPECT_FALSE(t.loadFromTransid(origenTransaccionEfectivo::OTE_ORIGENT, 10));
}

// Money leaving the drawer is valued at the drawer's own rate (3000 for 100:
// 30 each); with no drawer yet, a nominal that cancels out keeps the amounts.
TEST_P(TransaccionEnBase, OutgoingMoneyIsValuedAtTheDrawersRate) {
  grabar(1, 10, "0", "3000", "100");
  for (const int maquina : {1, 5}) {
    TransaccionEfectivo t;
    t.beginProcess(Variant(maquina));
    if (maquina == 5)
      t.addDetalle("USD", cur("400"), cur("10"));
    t.addDetalle("USD", maquina == 1 ? cur("-500") : cur("-400"), cur("-10"));
    t.grabar(origenTransaccionEfectivo::OTE_MOVCAJA, 12);
  }
  EXPECT_EQ(detalle(1, "valorMN"), cur("2700"));
  EXPECT_EQ(detalle(1, "valorNominal"), cur("90"));
  EXPECT_EQ(detalle(5, "valorMN"), cur("0"));
  EXPECT_EQ(detalle(5, "valorNominal"), cur("-400"));
}

DetalleEfectivo linea(const char* mn, const char* nominal) {
  DetalleEfectivo d;
  d.valorMN = cur(mn);
  d.valorNominal = cur(nominal);
  return d;
}

// A method's rate is derived from its amounts and rounded.
TEST_P(TransaccionEnBase, SaldoLoadReadsNationalCashFirstThenEachMethodOfItsTillOnly) {
  EXPECT_EQ(linea("1000", "3").tipoCambio(), 333.3333);
  EXPECT_EQ(linea("2", "3").tipoCambio(), 0.6667);
  EXPECT_EQ(linea("500", "0").tipoCambio(), 1.0);
  DetalleEfectivo d = linea("100", "4");
  d.tipoCambio(50.0);
  EXPECT_EQ(d.tipoCambio(), 25.0);
  EXPECT_EQ(test::numeroError([] { linea("922337203685477", "0.0001").tipoCambio(); }), 6);
  const std::string caja = "INSERT INTO cvCaja (MachineID, efectivoMN) VALUES (?, ?)";
  db->ExecuteSQL(caja, {2, cur("1500.5")});
  db->ExecuteSQL(caja, {3, cur("99")});
  const std::string detalle =
      "INSERT INTO cvCajaDetalles (idCec, codigoMedio, valorMN, valorNominal) VALUES (?, ?, ?, ?)";
  db->ExecuteSQL(detalle, {1, "USD", cur("1000"), cur("3")});
  db->ExecuteSQL(detalle, {1, "TDC", cur("250"), cur("0")});
  db->ExecuteSQL(detalle, {2, "EUR", cur("80"), cur("2")});
  SaldoCaja saldo;
  ASSERT_TRUE(saldo.load(2));
  EXPECT_EQ(saldo.Id, 1);
  EXPECT_EQ(saldo.saldoMonedaNacional, cur("1500.5"));
  ASSERT_EQ(saldo.detalles->Count(), 3);
  EXPECT_EQ(saldo.detalles->Item(1)->codigoMedio, "EFE");
  EXPECT_EQ(saldo.detalles->Item(1)->valorMN, cur("1500.5"));
  EXPECT_EQ(saldo.tipoCambio("EFE"), 1.0);
  EXPECT_DOUBLE_EQ(saldo.tipoCambio("usd"), 1000.0 / 3.0);
  EXPECT_EQ(saldo.tipoCambio("TDC"), 1.0);
  EXPECT_EQ(saldo.tipoCambio("EUR"), 0.0);  // another till's method
  EXPECT_EQ(
      saldo.makeDetalleEfectivo(Variant("X"), Variant(cur("5")), Variant(cur("5")))->tipoCambio(),
      1.0);
  EXPECT_EQ(test::numeroError([&] {
              saldo.makeDetalleEfectivo(Variant("X"), Variant(cur("5")), Variant(cur("0")));
            }),
            11);  // a rate from a zero nominal

  SaldoCaja sinFila;  // a till without a balance row
  EXPECT_EQ(sinFila.tipoCambio("EFE"), 0.0);
  sinFila.saldoMonedaNacional = cur("5");
  sinFila.Id = 42;
  EXPECT_FALSE(sinFila.load(9));
  EXPECT_EQ(sinFila.saldoMonedaNacional, cur("0"));
  EXPECT_EQ(sinFila.Id, 42);
  EXPECT_EQ(sinFila.detalles->Count(), 0);
}

CAJA_EN_CADA_MOTOR(TransaccionEnBase);

}  // namespace
}  // namespace caja
