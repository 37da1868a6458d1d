#include "caja/dialogs/modelo/CobroVarelta.h"

#include <gtest/gtest.h>

#include "tests/support/HostPrueba.h"
#include "tests/support/PosExtGrabadora.h"

namespace caja {
namespace {

using test::cur;

DescriptorMedio medio(const char* codigo, double factor, const char* tag,
                      ClaseIngresoSesion clase = ClaseIngresoSesion::OtrosMedios) {
  DescriptorMedio d;
  d.Codigo = codigo;
  d.Titulo = codigo;
  d.TextoAyuda = "Pago con " + std::string(codigo);
  d.Factor = factor;
  d.Tag = tag;
  d.Clase = clase;
  return d;
}

class Cobro : public ::testing::Test, protected test::ConFake {
 protected:
  CobroVarelta nuevo(const char* neto, double tasa = 1.0, double igtf = 0.0,
                     OpcionesCobro o = OpcionesCobro{}) {
    return CobroVarelta(cur(neto), cur("0"), cur("0"), tasa, igtf, o);
  }
};

TEST_F(Cobro, InputsFromTheCatalogueWithTheirTagAndFactor) {
  const std::vector<std::string> columnas = {
      "codigo",     "Clase",     "Titulo",        "isMedioElectronico",
      "TextoAyuda", "Atributos", "PorcentajeISLR"};
  auto fila = [](const char* c, int clase, int atributos, double islr) {
    return TablaRecordset::Fila{Variant(c),  Variant(clase),     Variant(c),   Variant(0),
                                Variant(""), Variant(atributos), Variant(islr)};
  };
  std::vector<TablaRecordset::Fila> filas = {
      fila("USD", 8, 64 | 1024, 36.0), fila("IDX", 7, 64 | 512, 2.0),
      fila("EUR", 7, 64 | 1024, 35.0), fila("TDC", 3, 1024, 9.0), fila("CHE", 1, 8, 5.0)};
  for (int i = 0; i < 11; ++i)
    filas.push_back(fila("OTR", 7, 0, 0.0));
  TablaRecordset rs({columnas.begin(), columnas.end()}, filas);
  CobroVarelta c = nuevo("100", 40.0);
  c.agregarMedios(rs);
  ASSERT_EQ(c.medios.size(), 15u);  // the sixteenth row is never shown
  const struct {
    const char* tag;
    double factor;
  } esperados[] = {{"USD**", 40.0}, {"ME", 80.0}, {"ME*", 35.0}, {"*", 1.0}, {"", 1.0}};
  for (std::size_t i = 0; i < std::size(esperados); ++i) {
    SCOPED_TRACE(c.medios[i].Codigo);
    EXPECT_EQ(c.medios[i].Tag, esperados[i].tag);
    EXPECT_EQ(c.medios[i].Factor, esperados[i].factor);
  }
}

TEST_F(Cobro, CashEqualToTheNetLeavesNoChange) {
  CobroVarelta c(cur("100"), cur("16"), cur("0"), 1.0, 0.0, OpcionesCobro{});
  c.efectivo = cur("116");
  const Pantalla p = c.recalcular();
  EXPECT_EQ(p.vuelto, cur("0"));
  EXPECT_EQ(p.lblVuelto, "Bs. 0.00");
  EXPECT_EQ(p.lblTotal, "116.00");
  EXPECT_TRUE(CobroVarelta::completo(p.vuelto));
  EXPECT_TRUE(CobroVarelta::completo(cur("-0.01")));
  EXPECT_FALSE(CobroVarelta::completo(cur("-0.02")));
}

TEST_F(Cobro, ForeignRoundingSnapsUpToHalfAForeignCent) {
  const struct {
    const char* efectivo;
    const char* dolares;
    const char* recibido;
  } casos[] = {
      {"0", "2.775", "100"},        // 99.90: 0.10 ≤ 0.18, snapped
      {"0.8", "2.75", "99.8"},      // 0.20 > 0.18
      {"0.996", "2.75", "99.996"},  // 0.004
      {"0.995", "2.75", "99.995"},  // exactly 0.005 is not snapped either
  };
  for (const auto& k : casos) {
    SCOPED_TRACE(k.recibido);
    CobroVarelta c = nuevo("100", 36.0);
    c.medios.push_back(medio("USD", 36.0, "USD"));
    c.efectivo = cur(k.efectivo);
    c.medios[0].valor = cur(k.dolares);
    EXPECT_EQ(c.TotalRecibido(), cur(k.recibido));
  }
  CobroVarelta local = nuevo("100", 36.0);
  local.efectivo = cur("99.99");
  EXPECT_EQ(local.TotalRecibido(), cur("99.99"));
}

TEST_F(Cobro, IgtfIsCappedAtTheOpeningAmount) {
  CobroVarelta c = nuevo("100", 1.0, 3.0);
  EXPECT_EQ(c.montoIGTFApertura, cur("3"));
  c.medios.push_back(medio("TDC", 1.0, "*"));
  c.medios[0].valor = cur("200");
  EXPECT_EQ(c.valorIGTF(), cur("3"));
  c.medios[0].valor = cur("50");
  EXPECT_EQ(c.valorIGTF(), cur("1.5"));
}

TEST_F(Cobro, IgtfLeavesTheTaxOutAndRoundsHalfUpToCents) {
  OpcionesCobro o;
  o.ExcluirIVAIGTF = true;
  CobroVarelta c(cur("100"), cur("16"), cur("0"), 1.0, 3.0, o);
  c.medios.push_back(medio("TDC", 1.0, "*"));
  c.medios[0].valor = cur("116");
  EXPECT_EQ(c.valorIGTF(), cur("3"));  // 3.48 × 100 ÷ 116

  CobroVarelta medio5 = nuevo("100", 1.0, 2.5);
  medio5.medios.push_back(medio("TDC", 1.0, "*"));
  medio5.medios[0].valor = cur("5");
  EXPECT_EQ(medio5.valorIGTF(), cur("0.13"));  // 0.125
}

TEST_F(Cobro, ChangeLabelsFollowTheChangeStep) {
  entorno.settings->SaveSetting("ZOR", "frmVarelta", "RedondeoVuelto", "0.50");
  CobroVarelta c = nuevo("100");
  c.efectivo = cur("112.26");
  EXPECT_EQ(c.recalcular().lblVuelto, "Bs. 12.50");
  c.efectivo = cur("112.24");
  EXPECT_EQ(c.recalcular().lblVuelto, "Bs. 12.00");
  entorno.settings->SaveSetting("ZOR", "frmVarelta", "RedondeoVuelto", "0");
  c.efectivo = cur("112.2637");
  EXPECT_EQ(c.recalcular().vuelto, cur("12.2637"));
}

TEST_F(Cobro, ForeignAndMixedChange) {
  CobroVarelta c = nuevo("100", 36.0);
  c.efectivo = cur("180");
  Pantalla p = c.recalcular();
  EXPECT_EQ(p.lblVueltoUSD, "$ 2.22");
  EXPECT_EQ(p.lblVueltoMixto, "$ 2.00 + Bs. 8.00");
  c.efectivo = cur("20");
  p = c.recalcular();
  EXPECT_EQ(p.lblVueltoUSD, "$ -2.22");
  EXPECT_EQ(p.lblVueltoMixto, "$ -2.00 + -Bs. 8.00");
}

TEST_F(Cobro, SpaceFillIncludesTheIgtfOfThePaymentOnce) {
  CobroVarelta c = nuevo("100", 40.0, 3.0);
  c.medios.push_back(medio("USD", 40.0, "USD**", ClaseIngresoSesion::EfectivoME));
  c.efectivo = cur("20");
  c.completar(std::size_t{0});
  EXPECT_EQ(c.medios[0].valor, cur("2.06"));  // (80 + 2.40) ÷ 40

  c.completar(std::nullopt);
  EXPECT_EQ(c.efectivo, cur("20.072"));  // 100 + IGTF 2.472 (not yet in cents) − 82.40
  c.efectivo = cur("150");
  c.completar(std::size_t{0});
  EXPECT_EQ(c.medios[0].valor, cur("0"));  // nothing missing: the input stays at 0
}

TEST_F(Cobro, HelpTellsHowMuchForeignCurrencySettlesTheRest) {
  CobroVarelta c = nuevo("100", 40.0);
  c.medios.push_back(medio("USD", 40.0, "USD"));
  c.medios.push_back(medio("TDC", 1.0, ""));
  EXPECT_EQ(c.ayuda(std::nullopt), "Introduzca el monto cobrado en efectivo de curso legal");
  EXPECT_EQ(c.ayuda(std::size_t{0}), "Pago con USD (USD = 2.50)");
  EXPECT_EQ(c.ayuda(std::size_t{1}), "Pago con TDC");
}

TEST_F(Cobro, PlausibilityQuestions) {
  CobroVarelta c = nuevo("100", 20000.0);
  c.medios.push_back(medio("USD", 20000.0, "USD"));
  c.efectivo = cur("10100");
  EXPECT_EQ(c.preguntaExceso(std::nullopt), "");
  c.efectivo = cur("10100.01");
  EXPECT_EQ(c.preguntaExceso(std::nullopt), "El monto parece excesivo.\r\nEs correcto?");
  c.medios[0].valor = cur("1");  // one note never counts as excessive
  EXPECT_EQ(c.preguntaExceso(std::size_t{0}), "");
  c.medios[0].valor = cur("2");
  EXPECT_EQ(c.preguntaExceso(std::size_t{0}), "Está seguro\r(el monto parece excesivo)");
}

TEST_F(Cobro, TaxChangeIgnoresTheCreditAndClearsTheInputs) {
  CobroVarelta c(cur("100"), cur("16"), cur("10"), 1.0, 0.0, OpcionesCobro{});
  c.efectivo = cur("50");
  c.cambiarIVA(cur("8"));
  EXPECT_EQ(c.neto, cur("108"));
  EXPECT_EQ(c.netoTrabajo, cur("108"));
  EXPECT_EQ(c.efectivo, cur("0"));
}

TEST_F(Cobro, AutoFillByLegacyName) {
  OpcionesCobro o;
  o.AutoFill = true;
  o.controlAutofill = "TXCHEQUES";
  CobroVarelta c = CobroVarelta(cur("100"), cur("0"), cur("0"), 1.0, 0.0, o);
  c.medios.push_back(medio("TDC", 1.0, "", ClaseIngresoSesion::TTCVisa));
  c.medios.push_back(medio("CHE", 1.0, "", ClaseIngresoSesion::Cheques));
  c.autoLlenar();
  EXPECT_EQ(c.medios[1].valor, cur("100"));
  c.medios[1].valor = cur("0");
  c.opciones.controlAutofill = "txefectivo";  // cash needs the exact name
  c.autoLlenar();
  EXPECT_EQ(c.efectivo, cur("0"));
}

class Llenar : public Cobro {
 protected:
  std::shared_ptr<CVarelta> llenar(CobroVarelta& c) {
    Vuelto v;
    c.recalcular();
    return c.LlenarVarelta(v);
  }
};

TEST_F(Llenar, SnapWithinToleranceAndForeignLineAbsorbsTheRest) {
  CobroVarelta c = nuevo("100");
  c.medios.push_back(medio("IDX", 2.5, "ME"));
  c.medios[0].valor = cur("39.998");  // 99.995
  auto mov = llenar(c);
  ASSERT_NE(mov, nullptr);
  EXPECT_EQ(mov->colDetalles->Item(1)->Monto, cur("100"));
  EXPECT_EQ(mov->colDetalles->Item(1)->montoNominal, cur("39.998"));
  EXPECT_EQ(mov->Debitos, cur("100"));
}

TEST_F(Llenar, ShortfallOfTwoCentsIsRefused) {
  CobroVarelta c = nuevo("100");
  c.efectivo = cur("99.98");
  EXPECT_EQ(llenar(c), nullptr);
  EXPECT_EQ(entorno.util->mensajes,
            std::vector<std::string>{"Le faltan Bs. 0.02 para completar el monto"});
}

TEST_F(Llenar, RateFortyAbsorbsFifteenCentsInTheForeignLine) {
  CobroVarelta c = nuevo("100", 40.0);
  c.medios.push_back(medio("USD", 40.0, "USD"));
  c.efectivo = cur("3.85");
  c.medios[0].valor = cur("2.4");
  auto mov = llenar(c);
  ASSERT_NE(mov, nullptr);
  EXPECT_EQ(mov->colDetalles->Item(1)->Monto, cur("3.85"));
  EXPECT_EQ(mov->colDetalles->Item(2)->Monto, cur("96.15"));
  EXPECT_EQ(mov->Debitos, cur("100"));
}

TEST_F(Llenar, ChangeComesOffTheCashLineOrBecomesALine) {
  CobroVarelta c = nuevo("105");
  c.medios.push_back(medio("TDC", 1.0, ""));
  c.efectivo = cur("20");
  c.medios[0].valor = cur("90");
  auto mov = llenar(c);
  ASSERT_NE(mov, nullptr);
  EXPECT_EQ(mov->Vuelto, cur("5"));
  EXPECT_EQ(mov->colDetalles->Item(1)->Monto, cur("15"));
  EXPECT_EQ(mov->Debitos, cur("105"));

  CobroVarelta soloTarjeta = nuevo("100");
  soloTarjeta.medios.push_back(medio("TDC", 1.0, ""));
  soloTarjeta.medios[0].valor = cur("110");
  mov = llenar(soloTarjeta);
  ASSERT_EQ(mov->colDetalles->Count(), 2);
  EXPECT_EQ(mov->colDetalles->Item(2)->medio, "EFE");
  EXPECT_EQ(mov->colDetalles->Item(2)->Monto, cur("-10"));
  EXPECT_EQ(mov->Debitos, cur("100"));
}

TEST_F(Llenar, NegativeTotalIsRecordedAsCredit) {
  CobroVarelta c(cur("0"), cur("0"), cur("50"), 1.0, 0.0, OpcionesCobro{});
  c.efectivo = cur("-50");
  auto mov = llenar(c);
  ASSERT_NE(mov, nullptr);
  EXPECT_EQ(mov->Creditos, cur("50"));
  EXPECT_EQ(mov->Debitos, cur("0"));
}

TEST_F(Llenar, IgtfIsRecordedAndTheResultKept) {
  CobroVarelta c = nuevo("100", 1.0, 3.0);
  c.medios.push_back(medio("TDC", 1.0, "*"));
  c.medios[0].valor = cur("103");
  auto mov = llenar(c);
  ASSERT_NE(mov, nullptr);
  EXPECT_EQ(mov->montoIGTF, cur("3"));
  c.resultado = mov;
  Vuelto v;
  EXPECT_EQ(c.LlenarVarelta(v), mov);
}

TEST_F(Llenar, HostValidation) {
  auto ext = std::make_shared<test::PosExtGrabadora>();
  fake->objetos["posExt"] = [&] { return ext; };
  CobroVarelta c = nuevo("10");
  c.efectivo = cur("10");
  ASSERT_NE(llenar(c), nullptr);  // no "ValidarVarelta": accepted
  EXPECT_TRUE(ext->llamadas.empty());

  fake->objetos["proc:ValidarVarelta"] = [] { return nullptr; };
  auto otro = std::make_shared<CVarelta>();
  ext->alCorrer = [&](std::vector<Variant>& args) { args[0] = Variant(otro); };
  EXPECT_EQ(llenar(c), otro);
  ext->esValido = Variant(false);
  EXPECT_EQ(llenar(c), nullptr);

  ext->fallar = true;
  EXPECT_EQ(llenar(c), nullptr);
  EXPECT_EQ(fake->logs, std::vector<std::string>{"ERROR: no existe en ValidarVarelta"});
  EXPECT_EQ(entorno.util->mensajes.back(), "ERROR: no existe en ValidarVarelta");
}

TEST_F(Llenar, MissingExtensionIsOnlyLogged) {
  CobroVarelta c = nuevo("10");
  c.efectivo = cur("10");
  EXPECT_NE(llenar(c), nullptr);
  ASSERT_EQ(fake->logs.size(), 1u);
  EXPECT_EQ(fake->logs[0].rfind("ERROR en frmVarelta-posExt: ", 0), 0u);
}

}  // namespace
}  // namespace caja
