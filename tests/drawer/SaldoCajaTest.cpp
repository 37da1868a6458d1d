#include "caja/drawer/SaldoCaja.h"

#include <gtest/gtest.h>

#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

DetalleEfectivo linea(const char* mn, const char* nominal) {
  DetalleEfectivo d;
  d.valorMN = cur(mn);
  d.valorNominal = cur(nominal);
  return d;
}

TEST(DetalleEfectivo, RateIsDerivedFromTheAmountsAndRounded) {
  EXPECT_EQ(linea("1000", "3").tipoCambio(), 333.3333);
  EXPECT_EQ(linea("2", "3").tipoCambio(), 0.6667);
  EXPECT_EQ(linea("500", "0").tipoCambio(), 1.0);
  DetalleEfectivo d = linea("100", "4");
  d.tipoCambio(50.0);
  EXPECT_EQ(d.tipoCambio(), 25.0);
  EXPECT_EQ(test::numeroError([] { linea("922337203685477", "0.0001").tipoCambio(); }), 6);
}

class SaldoEnBase : public test::PorMotor {};

TEST_P(SaldoEnBase, LoadReadsNationalCashFirstThenEachMethod) {
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
  EXPECT_EQ(saldo.detalles->Item("USD")->tipoCambio(), 333.3333);
  EXPECT_EQ(saldo.tipoCambio("TDC"), 1.0);
  EXPECT_EQ(saldo.tipoCambio("EUR"), 0.0);  // another till's method
}

TEST_P(SaldoEnBase, TillWithoutBalanceRow) {
  SaldoCaja saldo;
  EXPECT_EQ(saldo.tipoCambio("EFE"), 0.0);
  saldo.saldoMonedaNacional = cur("5");
  saldo.Id = 42;
  EXPECT_FALSE(saldo.load(9));
  EXPECT_EQ(saldo.saldoMonedaNacional, cur("0"));
  EXPECT_EQ(saldo.Id, 42);
  EXPECT_EQ(saldo.detalles->Count(), 0);
}

TEST_P(SaldoEnBase, MakeDetalleEfectivoDividesByZeroOnlyWhenAmountsDiffer) {
  SaldoCaja saldo;
  EXPECT_EQ(
      saldo.makeDetalleEfectivo(Variant("X"), Variant(cur("5")), Variant(cur("5")))->tipoCambio(),
      1.0);
  EXPECT_EQ(test::numeroError([&] {
              saldo.makeDetalleEfectivo(Variant("X"), Variant(cur("5")), Variant(cur("0")));
            }),
            11);
}

INSTANTIATE_TEST_SUITE_P(Motores, SaldoEnBase, ::testing::ValuesIn(test::motores()),
                         test::nombreMotor);

}  // namespace
}  // namespace caja
