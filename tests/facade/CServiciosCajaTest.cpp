#include "caja/facade/CServiciosCaja.h"

#include <gtest/gtest.h>

#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

// The divisor is 100 whatever the precision asked for: Varelta asks for 2.
TEST(RedondearMonto, HalvesGoUpNegativesTowardZeroAndTheDivisorIsFixed) {
  const struct {
    Variant valor;
    const char* esperado;
  } casos[] = {
      {Variant(cur("10.005")), "10.01"},
      {Variant(cur("-10.005")), "-10.00"},
      {Variant(10.005), "10.01"},
      {Variant("10.005"), "10.01"},
      {Variant(cur("10.0049")), "10.00"},
      {Variant(cur("-10.0051")), "-10.01"},
      {Variant(), "0"},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.esperado);
    EXPECT_EQ(RedondearMonto(c.valor, 2), cur(c.esperado));
  }
  EXPECT_EQ(RedondearMonto(Variant(cur("10.5")), 0), cur("0.11"));
}

// A company row with a fixed answer; `falla` makes its IGTF percentage unreadable.
struct EmpresaFija : Empresa {
  Variant especial;
  double porcentaje = 0.0;
  bool falla = false;
  std::string FormatoMEX() override { return "US$ #,##0.00"; }
  Variant ContribuyenteEspecial() override { return especial; }
  double porcentajeIGTF456() override {
    if (falla)
      throw CajaError(438, "Empresa", "sin propiedad");
    return porcentaje;
  }
};

class General : public ::testing::Test, protected test::ConFake {
 protected:
  void empresa(Variant especial, double porcentaje, bool falla = false) {
    fake->objetos["Empresa"] = [=] {
      auto e = std::make_shared<EmpresaFija>();
      e->especial = especial;
      e->porcentaje = porcentaje;
      e->falla = falla;
      return e;
    };
  }
};

class Oyente : public Listener2602Host {
 public:
  void Aplicar2602(Currency& Monto, bool& Aplicar) override {
    Monto = Monto + cur("1");
    Aplicar = true;
  }
};

// Creating one titles the application; Varelta needs the dialogs installed,
// rounds the amounts and relays the tax change to the listener.
TEST_F(General, ServiciosTitlesRoundsAndRelaysTheTaxChange) {
  CServiciosCaja servicios;
  EXPECT_EQ(entorno.util->titulo, "Varelta");
  EXPECT_EQ(test::numeroError([&] { servicios.Varelta(Variant(1), Variant(0), Variant(0), ""); }),
            91);
  auto dialogos = std::make_shared<test::DialogosFalsos>();
  setDialogosCaja(dialogos);
  EXPECT_EQ(servicios.Varelta(Variant(100.005), Variant(cur("16.0049")), Variant(), "Venta 1"),
            nullptr);
  EXPECT_EQ(dialogos->titulo, "Venta 1");
  EXPECT_EQ(dialogos->venta, cur("100.01"));
  EXPECT_EQ(dialogos->iva, cur("16"));
  EXPECT_EQ(dialogos->credito, cur("0"));
  EXPECT_EQ(dialogos->montoNotificado, cur("7"));  // no listener: nothing changes

  servicios.Listener2602 = std::make_shared<Oyente>();
  servicios.Varelta(Variant(1), Variant(0), Variant(0), "");
  EXPECT_EQ(dialogos->montoNotificado, cur("8"));
  EXPECT_TRUE(dialogos->cancelado);
}

// Init keeps the company's foreign format or falls back. Nothing before Init;
// a till rate of 0 reads as 1; IGTF applies only to special taxpayers (Null
// is not one, and an unreadable percentage is 0).
TEST_F(General, InitTillRateAndIgtfPercentage) {
  empresa(Variant(true), 3.0);
  InicializarEntorno(fake);
  EXPECT_EQ(gFormatoMEX, "US$ #,##0.00");
  EXPECT_EQ(gTemaUI, fake->tema);

  fake->objetos.clear();
  InicializarEntorno(fake);
  EXPECT_EQ(gFormatoMEX, "$#,##0.00");

  gFactoria.reset();
  EXPECT_EQ(test::numeroError([] { ObtenerTipoCambioCaja(); }), 91);
  InicializarEntorno(fake);
  const struct { double host, esperado; } casos[] = {{0.0, 1.0}, {36.5, 36.5}, {-2.0, -2.0}};
  for (const auto& c : casos) {
    fake->tipoCambioCaja = c.host;
    EXPECT_EQ(ObtenerTipoCambioCaja(), c.esperado);
  }
  empresa(Variant(true), 3.0);
  EXPECT_EQ(ObtenerPorcentajeIGTF(), 3.0);
  empresa(Variant::Null(), 3.0);
  EXPECT_EQ(ObtenerPorcentajeIGTF(), 0.0);
  empresa(Variant(false), 3.0);
  EXPECT_EQ(ObtenerPorcentajeIGTF(), 0.0);
  empresa(Variant(true), 3.0, true);
  EXPECT_EQ(ObtenerPorcentajeIGTF(), 0.0);
}

TEST_F(General, FormatearVueltoRoundsToTheChangeStep) {
  // The step applies to the amount as passed in: a double with more than
  // four decimals is not made currency first (12.37499 would be 12.375).
  const struct {
    const char* paso;
    Variant monto;
    const char* esperado;
  } casos[] = {
      {"0.05", Variant(cur("12.37")), "Bs. 12.35"},   {"0.05", Variant(cur("12.375")), "Bs. 12.40"},
      {"0.05", Variant(cur("-12.37")), "-Bs. 12.35"}, {"0", Variant(cur("12.37")), "Bs. 12.37"},
      {"0.50", Variant(cur("12.24")), "Bs. 12.00"},   {"0.50", Variant(cur("12.25")), "Bs. 12.50"},
      {"-1", Variant(cur("12.3749")), "Bs. 12.37"},   {"0.01", Variant(12.37499), "Bs. 12.37"},
      {"0.05", Variant(12.374999), "Bs. 12.35"},      {"0.01", Variant(-12.37501), "-Bs. 12.38"},
      {"0.01", Variant(-12.375), "-Bs. 12.37"},       {"0.0001", Variant(0.00004999), "Bs. 0.00"},
  };
  EXPECT_EQ(FormatearVuelto(Variant(cur("12.375"))), "Bs. 12.38");  // unset: cents
  EXPECT_EQ(LeerSimboloMEX(), "$");
  for (const auto& c : casos) {
    SCOPED_TRACE(std::string(c.paso) + " " + c.esperado);
    entorno.settings->SaveSetting("ZOR", "frmVarelta", "RedondeoVuelto", c.paso);
    EXPECT_EQ(FormatearVuelto(c.monto), c.esperado);
  }
}

// Cash is built in without a row; unknown codes are looked up again, known
// ones are cached under any letter case.
TEST_F(General, ObtenerMedioPagoCashBuiltInUnknownLookedUpAgainKnownCached) {
  std::string efe = "EFE";
  auto m = ObtenerMedioPago(efe);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(m->codigo, "EFE");
  EXPECT_EQ(m->Clase, ClaseIngresoSesion::Efectivo);
  EXPECT_EQ(m->tipoCambio(), 1.0);
  EXPECT_TRUE(fake->llamadas.empty());
  EXPECT_EQ(ObtenerMedioPago(efe), m);
  std::string zzz = "ZZZ";
  EXPECT_EQ(ObtenerMedioPago(zzz), nullptr);
  EXPECT_EQ(ObtenerMedioPago(zzz), nullptr);
  EXPECT_EQ(fake->llamadas.size(), 2u);

  // A database that fails while the method loads: the error is not the
  // caller's, the answer is Nothing, and nothing is cached.
  fake->alCargarMedio("USD", 8, 64, 36.0);
  std::string usd = "USD", minusculas = "usd";
  InicializarEntorno(std::make_shared<test::FallaEnSentencia>(fake, 1));
  EXPECT_EQ(ObtenerMedioPago(usd), nullptr);
  InicializarEntorno(fake);
  m = ObtenerMedioPago(usd);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(ObtenerMedioPago(minusculas), m);
  EXPECT_EQ(fake->llamadas.size(), 3u);
}

}  // namespace
}  // namespace caja
