#include "caja/service/CServiciosCaja.h"

#include <gtest/gtest.h>

#include "caja/service/CNotifTrans.h"
#include "tests/support/Ayudas.h"
#include "tests/support/DialogosFalsos.h"
#include "tests/support/HostUtilGuion.h"

namespace caja {
namespace {

using test::cur;

TEST(RedondearMonto, HalvesGoUpNegativesTowardZero) {
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
}

TEST(RedondearMonto, DividesByAFixedHundred) {
  // Intended: the divisor is 100 whatever the precision asked for.
  EXPECT_EQ(RedondearMonto(Variant(cur("10.5")), 0), cur("0.11"));
}

class Oyente : public Listener2602Host {
 public:
  void Aplicar2602(Currency& Monto, bool& Aplicar) override {
    Monto = Monto + cur("1");
    Aplicar = true;
  }
};

TEST(CServiciosCaja, CreationTitlesTheApplication) {
  auto util = std::make_shared<test::HostUtilGuion>();
  setHostUtil(util);
  CServiciosCaja servicios;
  EXPECT_EQ(util->titulo, "Varelta");
  setHostUtil(nullptr);
}

TEST(CServiciosCaja, VareltaRoundsTheAmountsAndRelaysTheTaxChange) {
  auto dialogos = std::make_shared<test::DialogosFalsos>();
  setDialogosCaja(dialogos);
  CServiciosCaja servicios;
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
  setDialogosCaja(nullptr);
}

TEST(CServiciosCaja, WithoutDialogsVareltaRaises91) {
  CServiciosCaja servicios;
  EXPECT_EQ(test::numeroError([&] { servicios.Varelta(Variant(1), Variant(0), Variant(0), ""); }),
            91);
}

TEST(CNotifTrans, RaisesItsEventWithTheArgumentsByReference) {
  CNotifTrans n;
  std::int16_t a = 3;
  std::string b = "x";
  n.NotificarCambioTransaccion(a, b);  // nobody listens: nothing happens
  n.CambioTransaccion = [](std::int16_t& x, std::string& y) {
    EXPECT_EQ(x, 3);
    EXPECT_EQ(y, "x");
    x = 4;
    y = "y";
  };
  n.NotificarCambioTransaccion(a, b);
  EXPECT_EQ(a, 4);
  EXPECT_EQ(b, "y");
}

}  // namespace
}  // namespace caja
