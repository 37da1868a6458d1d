#include "caja/catalog/CMedioPago.h"

#include <gtest/gtest.h>

#include "caja/base/Conversiones.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::numeroError;

const std::vector<std::string>& kColumnas = test::FakeFactoria::kColumnasMedio;

TablaRecordset::Fila filaUSD() {
  return test::valores("USD", "Dolares", 64 | 1024, 0.0, 36.5, "1101", "", "", 8, "Dólares",
                       "Efectivo en dólares", std::int16_t{0}, std::int16_t{2});
}

class MedioPagoFake : public ::testing::Test, protected test::ConFake {};

TEST_F(MedioPagoFake, LoadQuotesTheCodeAndReadsEveryColumn) {
  fake->alAbrir("SELECT * FROM MediosPago WHERE Codigo = 'USD'", kColumnas, {filaUSD()});
  CMedioPago m;
  ASSERT_TRUE(m.load("USD"));
  EXPECT_EQ(m.Descripcion, "Dolares");
  EXPECT_EQ(m.Atributos, 1088);
  EXPECT_EQ(m.Clase, ClaseIngresoSesion::EfectivoME);
  EXPECT_EQ(m.Titulo, "Dólares");
  EXPECT_EQ(m.posicion, 2);
  EXPECT_FALSE(m.isMedioElectronico);
  EXPECT_EQ(m.tipoCambio(), 36.5);

  CMedioPago otro;
  otro.Descripcion = "sin cambios";
  EXPECT_FALSE(otro.load("O'X"));
  EXPECT_EQ(fake->llamadas.back().sql, "SELECT * FROM MediosPago WHERE Codigo = 'O''X'");
  EXPECT_EQ(otro.Descripcion, "sin cambios");

  auto nula = filaUSD();  // a NULL text column cannot be read
  nula[1] = Variant::Null();
  fake->alAbrir("SELECT * FROM MediosPago WHERE Codigo = 'NUL'", kColumnas, {nula});
  EXPECT_EQ(numeroError([&] { m.load("NUL"); }), 94);
}

TEST_F(MedioPagoFake, ActualizarInsertsOnlyWhenTheUpdateTouchedNothingEliminarOnlyUnused) {
  const std::string update =
      "UPDATE MediosPago SET Descripcion = ?, Atributos = ?, PorcentajeRetencionEmisor = ?, "
      "PorcentajeISLR = ?, CuentaActivo = ?, CuentaComisiones = ?, BancoRelacionado = ?, Clase = "
      "?, titulo = ?, textoAyuda = ?, posicion = ?, isMedioElectronico = ? WHERE Codigo = ?";
  fake->alEjecutar(update, 0);
  fake->alEjecutar(update, 1);
  CMedioPago m;
  m.ActualizarDescriptivos("TDC", "Tarjeta", 32, 1.5, 0.0, "1102", "5101", "BANCO", 3, "Tarjeta",
                           "Pase la tarjeta", 4, true);
  ASSERT_EQ(fake->llamadas.size(), 3u);
  EXPECT_EQ(fake->llamadas[0].sql, update);
  const Argumentos esperados =
      test::valores("Tarjeta", 32, 1.5, 0.0, "1102", "5101", "BANCO", 3, "Tarjeta",
                    "Pase la tarjeta", std::int16_t{4}, std::int16_t{1}, "TDC");
  EXPECT_EQ(fake->llamadas[0].args, esperados);
  EXPECT_EQ(fake->llamadas[1].sql,
            "INSERT INTO MediosPago (Codigo, Descripcion, Atributos, PorcentajeRetencionEmisor, "
            "PorcentajeISLR, CuentaActivo, CuentaComisiones, BancoRelacionado, Clase, titulo, "
            "textoAyuda, posicion, isMedioElectronico) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
            "?)");
  ASSERT_EQ(fake->llamadas[1].args.size(), 14u);
  EXPECT_EQ(fake->llamadas[1].args.front(), Variant("TDC"));
  EXPECT_EQ(fake->llamadas[1].args[12], Variant(std::int16_t{1}));
  EXPECT_EQ(fake->llamadas[1].args.back(), Variant("TDC"));
  EXPECT_EQ(fake->llamadas[2].sql, "SELECT * FROM MediosPago WHERE Codigo = 'TDC'");

  fake->llamadas.clear();  // a row that exists is only updated
  m.ActualizarDescriptivos("TDC", "", 0, 0, 0, "", "", "", 0, "", "", 0, false);
  EXPECT_EQ(fake->llamadas.size(), 2u);
  EXPECT_EQ(fake->llamadas[0].args[11], Variant(std::int16_t{0}));

  fake->llamadas.clear();  // a method in use is never deleted
  const std::string contar = "SELECT COUNT(*) FROM DetallesVarelta WHERE Medio = 'CHE'";
  fake->alLeer(contar, Variant(2));
  EXPECT_EQ(test::errorCompleto([&] { m.Eliminar("CHE"); }),
            "10001|CMedioPago::Eliminar|Hay movimientos con el medio seleccionado: eliminacion "
            "no permitida");
  EXPECT_EQ(fake->sqls(), std::vector<std::string>{contar});

  m.Eliminar("ZEL");
  EXPECT_EQ(fake->llamadas.back().sql, "DELETE FROM MediosPago WHERE Codigo = 'ZEL'");
}

TEST_F(MedioPagoFake, FactorCambio) {
  fake->tipoCambioCaja = 40.0;
  const struct {
    ClaseIngresoSesion clase;
    std::int32_t atributos;
    double porcentajeISLR, tipoCambio, factor;
  } casos[] = {
      {ClaseIngresoSesion::TTCVisa, 0, 12.0, 1.0, 1.0},
      {ClaseIngresoSesion::EfectivoME, 64, 36.0, 36.0, 40.0},      // the class test comes first
      {ClaseIngresoSesion::OtrosMedios, 64 | 512, 2.0, 2.0, 2.0},  // plain factor wins
      {ClaseIngresoSesion::OtrosMedios, 512, 1.5, 1.5, 60.0},
      {ClaseIngresoSesion::OtrosMedios, 64, 0.0, 0.0, 0.0},  // no default for a zero factor
  };
  for (const auto& c : casos) {
    CMedioPago m;
    m.Clase = c.clase;
    m.Atributos = c.atributos;
    m.PorcentajeISLR = c.porcentajeISLR;
    EXPECT_EQ(m.tipoCambio(), c.tipoCambio);
    EXPECT_EQ(m.FactorCambio(), c.factor);
  }
  fake->tipoCambioCaja = 0.0;
  CMedioPago indexado;
  indexado.Atributos = IndexadoMonedaExtranjera;
  indexado.tipoCambio(2.5);
  EXPECT_EQ(indexado.FactorCambio(), 2.5);
}

TEST_F(MedioPagoFake, CreateNewAsksThenRunsTheDialogInCreationContext) {
  auto dialogos = std::make_shared<test::DialogosFalsos>();
  setDialogosCaja(dialogos);
  CMedioPago m;
  EXPECT_FALSE(m.CreateNew("ZEL"));
  EXPECT_EQ(entorno.util->preguntas,
            std::vector<std::string>{"Desea registrar el medio de pago ZEL"});
  EXPECT_EQ(dialogos->codigoNuevo, "");

  entorno.util->respuestas = {true, true};
  dialogos->contextoDejado = 3;
  EXPECT_TRUE(m.CreateNew("ZEL"));
  EXPECT_EQ(dialogos->codigoNuevo, "ZEL");
  EXPECT_EQ(dialogos->contextoRecibido, 3);
  EXPECT_EQ(fake->llamadas.back().sql, "SELECT * FROM MediosPago WHERE Codigo = 'ZEL'");
  dialogos->contextoDejado = 0;
  EXPECT_FALSE(m.CreateNew("ZEL"));
}

TEST(ClaseIngresoSesion, CaptionIndexIsTheClassValue) {
  struct Lista : ControlLista {
    std::vector<std::string> items{"viejo"};
    void Clear() override { items.clear(); }
    void AddItem(const std::string& t) override { items.push_back(t); }
  } lista;
  LlenarClasesIngreso(lista);
  ASSERT_EQ(lista.items.size(), 9u);
  EXPECT_EQ(lista.items[static_cast<int>(ClaseIngresoSesion::TTCAmex)], "TC AMEX");
  EXPECT_EQ(lista.items[static_cast<int>(ClaseIngresoSesion::TDebito)], "T.DEBITO");
  EXPECT_EQ(lista.items[static_cast<int>(ClaseIngresoSesion::EfectivoME)], "Efectivo USD");
}

class MedioPagoEnBase : public test::PorMotor {};

TEST_P(MedioPagoEnBase, InsertUpdateReloadAndGuardedDelete) {
  CMedioPago m;
  m.ActualizarDescriptivos("TDC", "Tarjeta", 32, 0, 0, "", "", "", 3, "Tarjeta", "", 4, true);
  EXPECT_EQ(contar("SELECT isMedioElectronico FROM MediosPago WHERE Codigo = 'TDC'"), 1);
  m.ActualizarDescriptivos("TDC", "Tarjeta de crédito", 32, 0, 0, "", "", "", 3, "Crédito", "", 5,
                           true);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MediosPago"), 1);
  CMedioPago leido;
  ASSERT_TRUE(leido.load("tdc"));
  EXPECT_EQ(leido.Descripcion, "Tarjeta de crédito");
  EXPECT_EQ(leido.posicion, 5);
  EXPECT_TRUE(leido.isMedioElectronico);

  db->ExecuteSQL("INSERT INTO MovimientosCaja (Sesion) VALUES (1)");
  db->ExecuteSQL("INSERT INTO DetallesVarelta (TransID, Medio, Monto) VALUES (1, 'TDC', 5)");
  EXPECT_EQ(numeroError([&] { m.Eliminar("TDC"); }), 10001);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MediosPago"), 1);
  db->ExecuteSQL("DELETE FROM DetallesVarelta");
  m.Eliminar("TDC");
  EXPECT_EQ(contar("SELECT COUNT(*) FROM MediosPago"), 0);
}

CAJA_EN_CADA_MOTOR(MedioPagoEnBase);

}  // namespace
}  // namespace caja
