#include "caja/movement/CDetalleIngreso.h"

#include <gtest/gtest.h>

#include "caja/base/Conversiones.h"
#include "caja/service/CServiciosCaja.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;
using test::numeroError;

const char* const kLineaSimple =
    "<DIC>\r\nEFE\r\n1234.5\r\n\r\n\r\n\r\n\r\n\r\n0\r\n<DEC>\r\n"
    "\r\n\r\n\r\n\r\n\r\n\r\n\r\n<DEC/>\r\n<DIC/>\r\n";

TEST(TextoDeLinea, PlainLineIsNineteenLines) {
  CDetalleIngreso l;
  l.medio = "EFE";
  l.Monto = cur("1234.50");
  EXPECT_EQ(l.Serialize(), kLineaSimple);
}

TEST(TextoDeLinea, ConfirmationAndDenominations) {
  CDetalleIngreso l;
  l.medio = "TDC";
  l.Monto = cur("100");
  l.IdTitular = "V123";
  l.NumeroCuenta = "0102";
  l.NumeroDocumento = "778";
  l.ClaveAutorizacion = "A1B2";
  l.CodigoEmisor = "VISA";
  l.montoNominal = cur("100");
  l.DetalleConfirmacion = std::make_shared<CDetalleConfirmacion>();
  l.DetalleConfirmacion->TextoComprobante = "APROBADA\r\nGRACIAS";
  l.DetalleConfirmacion->Id = "T9";
  l.DetalleConfirmacion->TipoMedio = "CREDITO";
  l.DetalleConfirmacion->CodigoEmisor = "VISA";
  l.DetalleConfirmacion->Track1 = "%B4111";
  l.DetalleConfirmacion->Track2 = ";4111=";
  l.DetalleConfirmacion->Monto = cur("100.25");
  l.Denominaciones->Add(test::denominacion("20", 3));
  l.Denominaciones->Add(test::denominacion("0.5", 2));
  EXPECT_EQ(l.Serialize(),
            "<DIC>\r\nTDC\r\n100\r\nV123\r\n0102\r\n778\r\nA1B2\r\nVISA\r\n100\r\n<DEC>\r\n"
            "APROBADA\tGRACIAS\r\nT9\r\nCREDITO\r\nVISA\r\n\r\n\r\n100.25\r\n<DEC/>\r\n"
            "<DEN>\r\n20\r\n3\r\n0.5\r\n2\r\n<DEN/>\r\n<DIC/>\r\n");

  CDetalleIngreso leida;
  leida.Deserialize(l.Serialize());
  EXPECT_EQ(leida.Serialize(), l.Serialize());
  ASSERT_NE(leida.DetalleConfirmacion, nullptr);
  EXPECT_EQ(leida.DetalleConfirmacion->TextoComprobante, "APROBADA\r\nGRACIAS");
  EXPECT_EQ(leida.DetalleConfirmacion->Track1, "");
  EXPECT_EQ(leida.DetalleConfirmacion->Track2, "");
  EXPECT_EQ(leida.DetalleConfirmacion->Referencia, "778");
  ASSERT_EQ(leida.Denominaciones->Count(), 2);
  EXPECT_EQ(leida.Denominaciones->Item(2)->valor(), cur("1"));
}

TEST(TextoDeLinea, VoucherTabsComeBackAsLineBreaksAndAnEmptyVoucherIsLost) {
  CDetalleIngreso l;
  l.DetalleConfirmacion = std::make_shared<CDetalleConfirmacion>();
  l.DetalleConfirmacion->TextoComprobante = "A\tB";
  CDetalleIngreso leida;
  leida.Deserialize(l.Serialize());
  EXPECT_EQ(leida.DetalleConfirmacion->TextoComprobante, "A\r\nB");

  l.DetalleConfirmacion->TextoComprobante = "";
  l.DetalleConfirmacion->Id = "T9";
  leida.Deserialize(l.Serialize());
  EXPECT_EQ(leida.DetalleConfirmacion, nullptr);
}

TEST(TextoDeLinea, BadFirstLineRaisesAndChangesNothing) {
  for (const char* malo : {"", "<DIC >\r\nEFE\r\n", "DIC\r\n", "\r\n<DIC>\r\n"}) {
    SCOPED_TRACE(malo);
    CDetalleIngreso l;
    l.medio = "USD";
    EXPECT_EQ(test::errorCompleto([&] { l.Deserialize(malo); }),
              "10001|CDetalleVarelta::Deserialize|Estructura invalida");
    EXPECT_EQ(l.medio, "USD");
  }
}

TEST(TextoDeLinea, DamagedTextsStopSilentlyKeepingWhatWasRead) {
  CDetalleIngreso cortada;
  cortada.medio = "USD";
  cortada.Deserialize("<DIC>");
  EXPECT_EQ(cortada.medio, "USD");
  cortada.Deserialize("<DIC>\r\nCHE\r\n12.5\r\n");
  EXPECT_EQ(cortada.medio, "CHE");
  EXPECT_EQ(cortada.Monto, cur("12.5"));

  // A count beyond 16 bits stops the reading before that element is added.
  const std::string cabeza =
      std::string(kLineaSimple).substr(0, std::string(kLineaSimple).size() - 8);
  CDetalleIngreso fuera;
  fuera.Deserialize(cabeza + "<DEN>\r\n5\r\n2\r\n10\r\n40000\r\n<DEN/>\r\n<DIC/>\r\n");
  EXPECT_EQ(fuera.Denominaciones->Count(), 1);

  // A wrong closing line is swallowed; the denominations stay.
  CDetalleIngreso cierre;
  cierre.Deserialize(cabeza + "<DEN>\r\n5\r\n2\r\n<DEN/>\r\nXXX\r\n");
  EXPECT_EQ(cierre.Denominaciones->Count(), 1);

  // A huge block with no end runs the 16-bit line counter out and stops.
  std::string enorme = cabeza + "<DEN>\r\n";
  for (int i = 0; i < 20000; ++i)
    enorme += "1\r\n1\r\n";
  CDetalleIngreso grande;
  grande.Deserialize(enorme);
  EXPECT_EQ(grande.Denominaciones->Count(), 16374);
}

// Reading appends to the denominations the line has; under a comma decimal
// separator the amount does not come back whole (the text form is the host
// language's, not a machine text).
TEST(TextoDeLinea, DenominationsAreAppendedAndACommaSeparatorDoesNotRoundTrip) {
  CDetalleIngreso l;
  l.Denominaciones->Add(test::denominacion("100", 1));
  CDetalleIngreso otra;
  otra.Denominaciones->Add(test::denominacion("20", 3));
  otra.Denominaciones->Add(test::denominacion("5", 1));
  l.Deserialize(otra.Serialize());
  EXPECT_EQ(l.Denominaciones->Count(), 3);
  EXPECT_EQ(l.Denominaciones->Item(1)->Denominacion, cur("100"));

  test::RegionalTemporal coma({',', '.', "Bs. #,##0.00"});
  otra.Monto = cur("1234.5");
  l.Deserialize(otra.Serialize());
  EXPECT_EQ(l.Monto, cur("1234"));
}

TEST(EvalVar, NamesIgnoreCase) {
  CDetalleIngreso l;
  l.Monto = cur("1234.5");
  l.ClaveAutorizacion = "A1";
  Variant v, s;
  EXPECT_TRUE(l.EvalVar(Variant("tipocambio"), v, s));
  EXPECT_EQ(v, Variant(std::int16_t{1}));
  EXPECT_EQ(s, Variant("1.00"));
  EXPECT_TRUE(l.EvalVar(Variant("Monto"), v, s));
  EXPECT_EQ(v, Variant(cur("1234.5")));
  EXPECT_EQ(s, Variant("1,234.50"));
  EXPECT_TRUE(l.EvalVar(Variant("ClaveConformacion"), v, s));
  EXPECT_EQ(s, Variant("A1"));
  l.montoNominal = cur("30");
  EXPECT_TRUE(l.EvalVar(Variant("TIPOCAMBIO"), v, s));
  EXPECT_EQ(s, Variant("41.15"));
  // It never fails: an unknown name, or none at all, is false and leaves the buffers.
  for (const Variant& nombre : {Variant("XYZ"), Variant::Null(), Variant()}) {
    EXPECT_FALSE(l.EvalVar(nombre, v, s));
    EXPECT_EQ(s, Variant("41.15"));
  }
}

class LineaFake : public ::testing::Test, protected test::ConFake {};

TEST_F(LineaFake, LoadInstanceIsNullSafeAndReadsDenominationsByPosition) {
  TablaRecordset fila({"Id", "TransID", "Medio", "Monto", "IdTitular", "NumeroCuenta",
                       "NumeroDocumento", "ClaveAutorizacion", "Emisor", "MontoNominal"},
                      {test::valores(7, 3, "CHE", cur("50"), Variant::Null(), Variant::Null(),
                                     "001", Variant::Null(), "BANESCO", Variant::Null())});
  const std::string sqlDen =
      "SELECT * FROM DetallesDenominacion WHERE idDetalle = 7 ORDER BY idDetalle";
  fake->alAbrir(sqlDen, {"x", "y", "z", "w"}, {test::valores(1, 7, cur("20"), std::int16_t{2})});
  CDetalleIngreso destino;
  CDetalleIngreso().loadInstance(fila, &destino);
  EXPECT_EQ(destino.Id, 7);
  EXPECT_EQ(destino.IdTitular, "");
  EXPECT_EQ(destino.CodigoEmisor, "BANESCO");
  EXPECT_EQ(destino.montoNominal, cur("0"));
  EXPECT_EQ(fake->sqls(), std::vector<std::string>{sqlDen});
  ASSERT_EQ(destino.Denominaciones->Count(), 1);
  EXPECT_EQ(destino.Denominaciones->Item(1)->valor(), cur("40"));
}

TEST_F(LineaFake, ToStringByKindOfMethod) {
  fake->alCargarMedio("USD", 7, 64, 36.5);
  fake->alCargarMedio("TDD", 7, 0, 36.5);
  CDetalleIngreso l;
  l.medio = "EFE";
  l.Monto = cur("1234.5");
  EXPECT_EQ(l.ToString(), "EFECTIVO Bs. 1,234.50");
  l.medio = "ZZZ";
  EXPECT_EQ(l.ToString(), "MEDIO INVALIDO (ZZZ) Bs. 1,234.50");
  l.medio = "TDD";
  EXPECT_EQ(l.ToString(), "TDD Bs. 1,234.50");
  l.medio = "USD";
  l.Monto = cur("3650");
  l.montoNominal = cur("100");
  EXPECT_EQ(l.ToString(), "100.00USD x Bs. 36.50");
  l.montoNominal = cur("0");
  EXPECT_EQ(numeroError([&] { l.ToString(); }), 11);
}

class LineaEnBase : public test::PorMotor {};

TEST_P(LineaEnBase, IssuerKnownThroughEitherTable) {
  CDetalleIngreso l;
  l.medio = "CHE";
  EXPECT_FALSE(l.ExisteEmisor("BANESCO"));
  db->ExecuteSQL(
      "INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) VALUES ('CHE', 'BANESCO')");
  EXPECT_TRUE(l.ExisteEmisor("banesco"));
  db->ExecuteSQL("INSERT INTO MovimientosCaja (Sesion) VALUES (1)");
  db->ExecuteSQL("INSERT INTO DetallesVarelta (TransID, Medio, Emisor) VALUES (1, 'CHE', 'BOD')");
  EXPECT_TRUE(l.ExisteEmisor("BOD"));
  l.medio = "TDC";
  EXPECT_FALSE(l.ExisteEmisor("BOD"));
}

TEST_P(LineaEnBase, DetallesEnRegistroReadsUntilTheFirstBadLine) {
  CServiciosCaja servicios;
  EXPECT_EQ(servicios.DetallesEnRegistro()->Count(), 0);
  CDetalleIngreso l;
  l.medio = "CHE";
  entorno.settings->SaveSetting("ZOR", "frmVarelta\\Detalles", "1", l.Serialize());
  entorno.settings->SaveSetting("ZOR", "frmVarelta\\Detalles", "2", "basura");
  entorno.settings->SaveSetting("ZOR", "frmVarelta\\Detalles", "3", l.Serialize());
  auto lineas = servicios.DetallesEnRegistro();
  ASSERT_EQ(lineas->Count(), 1);
  EXPECT_EQ(lineas->Item(1)->medio, "CHE");
}

INSTANTIATE_TEST_SUITE_P(Motores, LineaEnBase, ::testing::ValuesIn(test::motores()),
                         test::nombreMotor);

}  // namespace
}  // namespace caja
