#include <gtest/gtest.h>

#include "caja/service/General.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

class ObtenerMedio : public ::testing::Test, protected test::ConFake {};

TEST_F(ObtenerMedio, CashIsBuiltInWithoutATableRow) {
  std::string efe = "EFE";
  auto m = ObtenerMedioPago(efe);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(m->codigo, "EFE");
  EXPECT_EQ(m->Clase, ClaseIngresoSesion::Efectivo);
  EXPECT_EQ(m->tipoCambio(), 1.0);
  EXPECT_TRUE(fake->llamadas.empty());
  EXPECT_EQ(ObtenerMedioPago(efe), m);
}

TEST_F(ObtenerMedio, UnknownCodesAreLookedUpAgainKnownOnesCached) {
  std::string zzz = "ZZZ";
  EXPECT_EQ(ObtenerMedioPago(zzz), nullptr);
  EXPECT_EQ(ObtenerMedioPago(zzz), nullptr);
  EXPECT_EQ(fake->llamadas.size(), 2u);

  fake->alCargarMedio("USD", 8, 64, 36.0);
  std::string usd = "USD", minusculas = "usd";
  auto m = ObtenerMedioPago(usd);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(ObtenerMedioPago(minusculas), m);
  EXPECT_EQ(fake->llamadas.size(), 3u);
}

TEST_F(ObtenerMedio, EsMedioEfectivoCountsAnyAttributeBit) {
  const struct {
    ClaseIngresoSesion clase;
    std::int32_t atributos;
    bool efectivo;
  } casos[] = {
      {ClaseIngresoSesion::Efectivo, 0, true},     {ClaseIngresoSesion::EfectivoME, 0, true},
      {ClaseIngresoSesion::TTCVisa, 0, false},     {ClaseIngresoSesion::TTCVisa, 4, true},
      {ClaseIngresoSesion::OtrosMedios, 64, true},
  };
  for (const auto& c : casos) {
    CMedioPago m;
    m.Clase = c.clase;
    m.Atributos = c.atributos;
    EXPECT_EQ(EsMedioEfectivo(m) != 0, c.efectivo);
  }
}

}  // namespace
}  // namespace caja
