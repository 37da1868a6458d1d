#include <gtest/gtest.h>

#include "caja/base/Conversiones.h"
#include "caja/movement/CVarelta.h"
#include "caja/movement/TempVarelta.h"
#include "tests/support/HostPrueba.h"
#include "tests/support/PosExtGrabadora.h"

namespace caja {
namespace {

using test::cur;

const std::string kHeader =
    "INSERT INTO MovimientosCaja (Fecha, Hora, Sesion, Operador, TipoDocumento, NumeroDocumento, "
    "TipoEntidad, CodigoEntidad, Descripcion, Debitos, Creditos, Clasificacion, Beneficiario, "
    "machineID, MontoIGTF, tipoCambio) VALUES (?, getdate(), ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
    "?, ?)";
const std::string kLinea =
    "INSERT INTO DetallesVarelta (TransID, Medio, Monto, IdTitular, NumeroCuenta, NumeroDocumento, "
    "ClaveAutorizacion, Emisor, MontoNominal) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)";
const std::string kEmisor =
    "INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) SELECT ?, ? WHERE NOT "
    "Exists(SELECT * FROM generalEmisores WHERE TipoDocumento = ? AND CodigoEmisor = ?)";
const std::string kDenominacion =
    "INSERT INTO DetallesDenominacion (idDetalle, Denominacion, CantidadRecibida) VALUES (?, ?, ?)";
const std::string kMaquina = "SELECT MachineID FROM SesionesPOS WHERE SessionID = ?";
const std::string kMaquinaCerrada = "SELECT MachineID FROM SesionesCerradas WHERE SessionID = ?";

std::shared_ptr<CDetalleIngreso> linea(const char* medio, const char* monto,
                                       const char* emisor = "") {
  auto d = std::make_shared<CDetalleIngreso>();
  d->medio = medio;
  d->Monto = cur(monto);
  d->montoNominal = cur(monto);
  d->CodigoEmisor = emisor;
  return d;
}

class GuardarFake : public ::testing::Test, protected test::ConFake {
 protected:
  void SetUp() override {
    fake->objetos["posExt"] = [this] { return ext; };
    fake->alLeer("SELECT MAX(TipoCambio) FROM parametrosEmpresa", Variant(36.5));
    fake->alLeer("SELECT IDENT_CURRENT('MovimientosCaja')", Variant(41));
    fake->alLeer("SELECT @@IDENTITY", Variant(900));
    mov->Debitos = cur("150");
    mov->montoIGTF = cur("1.5");
  }
  void guardar(Currency igtf = Currency{}, double tc = -1.0) {
    mov->Save(3, "ANA", "FAC", 7, "CLI", "C1", "Venta", Fecha::fromYmd(2026, 11, 21), Variant(), "",
              "", igtf, tc);
  }
  bool escribio() const {
    for (const auto& l : fake->llamadas)
      if (l.tipo == test::FakeFactoria::Tipo::Execute)
        return true;
    return false;
  }

  std::shared_ptr<test::PosExtGrabadora> ext = std::make_shared<test::PosExtGrabadora>();
  std::shared_ptr<CVarelta> mov = std::make_shared<CVarelta>();
};

TEST_F(GuardarFake, StatementsInOrderWithTheirArguments) {
  fake->alLeer(kMaquina, Variant(2));
  auto efe = linea("EFE", "100");
  auto che = linea("CHE", "50", "BANESCO");
  auto billete = std::make_shared<CDetalleDenominacion>();
  billete->Denominacion = cur("20");
  billete->CantidadRecibida = 2;
  che->Denominaciones->Add(billete);
  mov->colDetalles->Add(efe);
  mov->colDetalles->Add(che);
  guardar();

  const std::vector<std::string> esperadas = {"SELECT MAX(TipoCambio) FROM parametrosEmpresa",
                                              kMaquina,
                                              kHeader,
                                              "SELECT IDENT_CURRENT('MovimientosCaja')",
                                              kLinea,
                                              "SELECT @@IDENTITY",
                                              "SELECT * FROM MediosPago WHERE Codigo = 'CHE'",
                                              kLinea,
                                              "SELECT @@IDENTITY",
                                              kEmisor,
                                              kDenominacion};
  EXPECT_EQ(fake->sqls(), esperadas);
  EXPECT_EQ(fake->llamadas[1].args, test::valores(3));
  EXPECT_EQ(fake->llamadas[2].args,
            test::valores(Fecha::fromYmd(2026, 11, 21), 3, "ANA", "FAC", 7, "CLI", "C1", "Venta",
                          cur("150"), cur("0"), "", "", 2, cur("1.5"), 36.5));
  EXPECT_EQ(fake->llamadas[7].args,
            test::valores(41, "CHE", cur("50"), "", "", "", "", "BANESCO", cur("50")));
  EXPECT_EQ(fake->llamadas[9].args, test::valores("CHE", "BANESCO", "CHE", "BANESCO"));
  EXPECT_EQ(fake->llamadas[10].args, test::valores(900, cur("20"), std::int16_t{2}));
  EXPECT_EQ(mov->TransID, 41);
  EXPECT_EQ(efe->Id, 900);
  EXPECT_EQ(mov->MachineID, 2);
  EXPECT_EQ(ext->llamadas, std::vector<std::string>{"PostVarelta"});
  EXPECT_EQ(ext->recibido, mov);
}

TEST_F(GuardarFake, ExplicitRateAndIgtfAreStoredAsGiven) {
  fake->alLeer(kMaquina, Variant(2));
  guardar(cur("2.25"), 0.0);
  EXPECT_EQ(fake->sqls().front(), kMaquina);
  EXPECT_EQ(fake->llamadas[1].args[13], Variant(cur("2.25")));
  EXPECT_EQ(fake->llamadas[1].args[14], Variant(0.0));
}

TEST_F(GuardarFake, NoMachineAnywhere) {
  EXPECT_EQ(test::errorCompleto([&] { guardar(); }),
            "10002|cVarelta::Save|MachineID Invalido(DLL#8)");
  EXPECT_FALSE(escribio());
}

TEST_F(GuardarFake, MachineFromClosedSessionOrSettings) {
  fake->alLeer(kMaquinaCerrada, Variant(6));
  fake->alLeer(kMaquinaCerrada, Variant());
  guardar();
  EXPECT_EQ(mov->MachineID, 6);

  auto otro = std::make_shared<CVarelta>();
  entorno.settings->SetInstallValue("Nubetral", "General", "MachineID", "9");
  mov = otro;
  guardar();
  EXPECT_EQ(mov->MachineID, 9);
}

TEST_F(GuardarFake, HostFailureKeepsItsNumberAndTellsTheStep) {
  auto falla = std::make_shared<test::FallaEnSentencia>(fake, 3);
  gFactoria = falla;
  fake->alLeer(kMaquina, Variant(2));
  EXPECT_EQ(test::errorCompleto([&] { guardar(); }),
            "-2147217900|CVarelta::Save|Falla inyectada en: " + kHeader + "(DLL#11)");
}

TEST_F(GuardarFake, PostProcedureErrorsAreSwallowed) {
  fake->alLeer(kMaquina, Variant(2));
  ext->fallar = true;
  guardar();
  EXPECT_EQ(mov->TransID, 41);
}

TEST_F(GuardarFake, LinesUnderACentAreNeverStored) {
  fake->alLeer(kMaquina, Variant(2));
  auto diminuta = linea("EFE", "0.0099");
  auto negativa = linea("EFE", "-5");
  mov->colDetalles->Add(diminuta);
  mov->colDetalles->Add(negativa);
  guardar();
  int lineas = 0;
  for (const auto& l : fake->llamadas)
    lineas += l.sql == kLinea;
  EXPECT_EQ(lineas, 1);
  EXPECT_EQ(diminuta->Id, 0);
  EXPECT_EQ(negativa->Id, 900);
  EXPECT_EQ(mov->addDetalle("EFE", cur("-0.0099"), "", "", "", "", "", cur("0"), nullptr), 0);
}

TEST_F(GuardarFake, CommitBeforeSaveRaises91) {
  EXPECT_EQ(test::numeroError([&] { mov->commitTransEf(); }), 91);
}

TEST_F(GuardarFake, LoadFromDocumentoFallsBackToTheRelatedDocuments) {
  CVarelta m;
  EXPECT_FALSE(m.LoadFromDocumento("FAC", 7));
  EXPECT_EQ(
      fake->sqls(),
      (std::vector<std::string>{
          "SELECT * FROM MovimientosCaja WHERE TipoDocumento = 'FAC' AND NumeroDocumento = 7;",
          "SELECT M.* FROM MovimientosCaja AS M, subDocsMC AS S WHERE s.TipoDoc = 'FAC' AND "
          "s.numDoc = 7 AND M.TransID = S.TransID AND S.ID IN   (SELECT MAX(ID) FROM "
          "subDocsMC WHERE TipoDoc = 'FAC' AND NumDoc = 7);"}));
}

TEST_F(GuardarFake, AddConceptoSplicesItsValues) {
  CVarelta m;
  m.TransID = 41;
  EXPECT_TRUE(m.AddConcepto(cur("10.5"), cur("0"), "N'C", 7));
  EXPECT_EQ(fake->llamadas.back().sql,
            "INSERT INTO SubDocsMC (TransID, TipoDoc, NumDoc, Debitos, Creditos) VALUES (41, "
            "'N''C', 7, 10.5, 0);");
  EXPECT_TRUE(fake->llamadas.back().args.empty());
}

TEST_F(GuardarFake, ConceptosReportsItsErrorsAndReturnsNothing) {
  gFactoria = std::make_shared<test::FallaEnSentencia>(fake, 1);
  CVarelta m;
  EXPECT_EQ(m.Conceptos(), nullptr);
  ASSERT_EQ(entorno.util->errores.size(), 1u);
  EXPECT_EQ(entorno.util->errores[0].rfind("CMovimientoCaja::Conceptos|-2147217900|", 0), 0u);
}

TEST(NombreEntidad, BeforeInit) {
  EXPECT_EQ(CVarelta().NombreEntidadRelacionada(), "NombreEntidadRelacionada NO DISPONIBLE");
}

class StagingFake : public ::testing::Test, protected test::ConFake {};

TEST_F(StagingFake, SaveStagesEveryLineWithoutTouchingTheDrawer) {
  fake->alLeer("SELECT @@identity", Variant(5));
  fake->alLeer("SELECT scope_identity()", Variant(60));
  CVarelta mov;
  auto che = linea("CHE", "0", "BOD");
  auto moneda = std::make_shared<CDetalleDenominacion>();
  moneda->Denominacion = cur("0.5");
  moneda->CantidadRecibida = 3;
  che->Denominaciones->Add(moneda);
  mov.colDetalles->Add(che);
  TempVarelta t;
  t.Save("V-1", mov);
  EXPECT_EQ(t.Id, 5);
  EXPECT_EQ(fake->sqls(),
            (std::vector<std::string>{
                "INSERT INTO saveMovsCaja (clave) Values (?)", "SELECT @@identity",
                "INSERT INTO saveDetallesCaja (TransID, Medio, Monto, IdTitular, NumeroCuenta, "
                "NumeroDocumento, ClaveAutorizacion, Emisor, MontoNominal) VALUES (?, ?, ?, ?, ?, "
                "?, ?, ?, ?)",
                "SELECT scope_identity()", kEmisor,
                "INSERT INTO saveDenominaciones (idDetalle, Denominacion, CantidadRecibida) VALUES "
                "(?, ?, ?)"}));
  EXPECT_EQ(fake->llamadas[2].args[0], Variant(5));
  EXPECT_EQ(fake->llamadas[5].args, test::valores(60, cur("0.5"), std::int16_t{3}));
}

TEST_F(StagingFake, RevertirOfAnUnknownKey) {
  TempVarelta t;
  EXPECT_EQ(test::errorCompleto([&] { t.revertir("V-9"); }),
            "10001|ServiciosCaja.tempVarelta.Revertir|Referencia V-9 no registrada.");
  CVarelta mov;
  t.load("V-9", mov);
  EXPECT_EQ(fake->sqls(),
            (std::vector<std::string>{"SELECT id FROM saveMovsCaja WHERE clave = ?",
                                      "SELECT id FROM saveMovsCaja WHERE clave = ?"}));
}

}  // namespace
}  // namespace caja
