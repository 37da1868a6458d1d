#include "caja/dialogs/modelo/DivisionVuelto.h"

#include <gtest/gtest.h>

#include "caja/dialogs/modelo/CobroVarelta.h"
#include "caja/service/Settings.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

// A sale of 630.00 paid with 20 USD at 36.50 (730.00) and 18.90 of IGTF: the
// change is 81.10. Dollars are cash at the drawer's rate, euros a foreign
// method of their own factor, the card gives no change.
class DivisionVueltoTest : public ::testing::Test, protected test::ConFake {
 protected:
  DivisionVueltoTest() : cobro(cur("630"), {}, {}, 36.5, 3.0, OpcionesCobro{}) {
    cobro.medios.push_back(test::descriptor("USD", 36.5, "USD*", ClaseIngresoSesion::EfectivoME));
    cobro.medios.push_back(test::descriptor("EUR", 39.8, "ME"));
    cobro.medios.push_back(test::descriptor("TDC", 1.0, "", ClaseIngresoSesion::TTCVisa));
  }
  DivisionVuelto division(bool conCredito = false) {
    return DivisionVuelto(cobro, cur("81.1"), conCredito);
  }
  CobroVarelta cobro;
};

TEST_F(DivisionVueltoTest, OffersNationalCashThenTheCashLikeMethods) {
  const auto d = division();
  ASSERT_EQ(d.entradas.size(), 3u);
  EXPECT_EQ(d.entradas[0].codigo, "EFE");
  EXPECT_EQ(d.entradas[1].codigo, "USD");
  EXPECT_EQ(d.entradas[2].codigo, "EUR");
  EXPECT_EQ(d.indiceDe("eur"), 2u);
  EXPECT_FALSE(d.indiceDe("TDC"));
}

// Whole dollars at the drawer's rate, the rest in bolívares rounded to the
// change step; a step of 0.50 leaves 0.10 unsplit, within half a step.
TEST_F(DivisionVueltoTest, SuggestionIsWholeForeignNotesAndTheRestRounded) {
  struct Caso {
    const char* paso;
    const char* efectivo;
    const char* restante;
  };
  for (const Caso& c : {Caso{"0.01", "8.1", "0"}, Caso{"0.5", "8", "0.1"}}) {
    SCOPED_TRACE(c.paso);
    entorno.settings->SaveSetting(kAppZOR, kSeccionVarelta, "RedondeoVuelto", c.paso);
    auto d = division();
    d.sugerir();
    EXPECT_EQ(d.entradas[1].nominal, cur("2"));
    EXPECT_EQ(d.entradas[0].nominal, cur(c.efectivo));
    EXPECT_EQ(d.restante(), cur(c.restante));
    EXPECT_FALSE(d.validar());
  }
}

// Space: what is missing, in the input's own unit; dollars in whole cents
// (81.10 / 36.50 = 2.2219 → 2.22, worth 81.03).
TEST_F(DivisionVueltoTest, CompletarPutsTheRemainderIntoOneInput) {
  auto d = division(true);
  d.completar(1);
  EXPECT_EQ(d.entradas[1].nominal, cur("2.22"));
  EXPECT_EQ(d.restante(), cur("0.07"));
  d.entradas[1].nominal = cur("1");
  d.completar(0);
  EXPECT_EQ(d.entradas[0].nominal, cur("44.6"));
  d.entradas[0].nominal = cur("40");
  d.completar(d.indiceCredito());
  EXPECT_EQ(d.credito, cur("4.6"));
  EXPECT_EQ(d.restante(), cur("0"));
}

TEST_F(DivisionVueltoTest, ValidationNamesTheFieldAtFault) {
  struct Caso {
    const char* efectivo;
    const char* dolares;
    const char* mensaje;
    std::optional<std::size_t> campo;
  };
  const Caso casos[] = {
      {"-1", "2", "El vuelto en Efectivo no puede ser negativo", 0},
      {"44.6", "1.005", "El vuelto en USD admite solo dos decimales", 1},
      {"100", "0", "El reparto excede el vuelto en Bs. 18.90", std::nullopt},
      {"0", "2.22", "Falta repartir Bs. 0.07 del vuelto", std::nullopt},
  };
  for (const Caso& c : casos) {
    SCOPED_TRACE(c.mensaje);
    auto d = division();
    d.entradas[0].nominal = cur(c.efectivo);
    d.entradas[1].nominal = cur(c.dolares);
    const auto rechazo = d.validar();
    ASSERT_TRUE(rechazo);
    EXPECT_EQ(rechazo->mensaje, c.mensaje);
    EXPECT_EQ(rechazo->campo, c.campo);
  }
}

// Each line leaves the drawer: negative, the foreign one at the method's rate.
TEST_F(DivisionVueltoTest, LinesAreNegativeAndForeignOnesCarryTheirNominal) {
  auto d = division();
  d.entradas[1].nominal = cur("1");
  d.entradas[0].nominal = cur("44.6");
  const auto lineas = d.lineas();
  ASSERT_EQ(lineas->Count(), 2);
  EXPECT_EQ(lineas->Item(1)->medio, "EFE");
  EXPECT_EQ(lineas->Item(1)->Monto, cur("-44.6"));
  EXPECT_EQ(lineas->Item(2)->medio, "USD");
  EXPECT_EQ(lineas->Item(2)->Monto, cur("-36.5"));
  EXPECT_EQ(lineas->Item(2)->montoNominal, cur("-1"));
}

}  // namespace
}  // namespace caja
