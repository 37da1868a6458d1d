#include <gtest/gtest.h>

#include "caja/base/Conversiones.h"
#include "caja/facade/CServiciosCaja.h"
#include "caja/movement/CDetalleIngreso.h"
#include "caja/movement/CVarelta.h"
#include "caja/movement/TempVarelta.h"
#include "caja/service/TransaccionHost.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::agregar;
using test::cur;
using test::numeroError;

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

  std::shared_ptr<test::PosExtGrabadora> ext = std::make_shared<test::PosExtGrabadora>();
  std::shared_ptr<CVarelta> mov = std::make_shared<CVarelta>();
};

TEST_F(GuardarFake, StatementsInOrderWithTheirArguments) {
  fake->alLeer(kMaquina, Variant(2));
  auto efe = agregar(*mov, "EFE", "100");
  auto che = agregar(*mov, "CHE", "50");
  che->CodigoEmisor = "BANESCO";
  che->Denominaciones->Add(test::denominacion("20", 2));
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

// Where the till comes from, in turn: the open session, the closed one, the
// setting, else an error that writes nothing. A failing statement names its
// step; a failing post procedure changes nothing; no drawer before a save. An
// explicit IGTF and rate are stored as given, the rate not read.
TEST_F(GuardarFake, MachineRateAndFailuresOfTheSave) {
  EXPECT_EQ(test::numeroError([&] { mov->commitTransEf(); }), 91);
  EXPECT_EQ(test::errorCompleto([&] { guardar(); }),
            "10002|cVarelta::Save|MachineID Invalido(DLL#8)");
  EXPECT_EQ(fake->sqls(), (std::vector<std::string>{"SELECT MAX(TipoCambio) FROM parametrosEmpresa",
                                                    kMaquina, kMaquinaCerrada}));
  fake->alLeer(kMaquinaCerrada, Variant(6));
  fake->alLeer(kMaquinaCerrada, Variant());
  guardar();
  EXPECT_EQ(mov->MachineID, 6);
  mov = std::make_shared<CVarelta>();
  entorno.settings->SetInstallValue("Nubetral", "General", "MachineID", "9");
  guardar();
  EXPECT_EQ(mov->MachineID, 9);

  fake->alLeer(kMaquina, Variant(2));
  mov = std::make_shared<CVarelta>();
  fake->llamadas.clear();
  guardar(cur("2.25"), 0.0);
  EXPECT_EQ(fake->sqls().front(), kMaquina);
  EXPECT_EQ(fake->llamadas[1].args[13], Variant(cur("2.25")));
  EXPECT_EQ(fake->llamadas[1].args[14], Variant(0.0));
  mov = std::make_shared<CVarelta>();
  ext->fallar = true;
  guardar();
  EXPECT_EQ(mov->TransID, 41);
  mov = std::make_shared<CVarelta>();
  gFactoria = std::make_shared<test::FallaEnSentencia>(fake, 3);
  EXPECT_EQ(test::errorCompleto([&] { guardar(); }),
            "-2147217900|CVarelta::Save|Falla inyectada en: " + kHeader + "(DLL#11)");
}

// Related documents: looked up by the movement's own document, then by the
// highest reference; added with their values spliced; a failing read is
// reported and gives nothing.
TEST_F(GuardarFake, RelatedDocuments) {
  CVarelta m;
  EXPECT_FALSE(m.LoadFromDocumento("FAC", 7));
  EXPECT_EQ(
      fake->sqls(),
      (std::vector<std::string>{
          "SELECT * FROM MovimientosCaja WHERE TipoDocumento = 'FAC' AND NumeroDocumento = 7;",
          "SELECT M.* FROM MovimientosCaja AS M, subDocsMC AS S WHERE s.TipoDoc = 'FAC' AND "
          "s.numDoc = 7 AND M.TransID = S.TransID AND S.ID IN   (SELECT MAX(ID) FROM "
          "subDocsMC WHERE TipoDoc = 'FAC' AND NumDoc = 7);"}));
  m.TransID = 41;
  EXPECT_TRUE(m.AddConcepto(cur("10.5"), cur("0"), "N'C", 7));
  EXPECT_EQ(fake->llamadas.back().sql,
            "INSERT INTO SubDocsMC (TransID, TipoDoc, NumDoc, Debitos, Creditos) VALUES (41, "
            "'N''C', 7, 10.5, 0);");
  EXPECT_TRUE(fake->llamadas.back().args.empty());
  gFactoria = std::make_shared<test::FallaEnSentencia>(fake, 1);
  EXPECT_EQ(CVarelta().Conceptos(), nullptr);
  ASSERT_EQ(entorno.util->errores.size(), 1u);
  EXPECT_EQ(entorno.util->errores[0].rfind("CMovimientoCaja::Conceptos|-2147217900|", 0), 0u);
}

TEST(NombreEntidad, BeforeInit) {
  EXPECT_EQ(CVarelta().NombreEntidadRelacionada(), "NombreEntidadRelacionada NO DISPONIBLE");
}

class SinBase : public ::testing::Test, protected test::ConFake {};

// Staging writes every line, none to the drawer; an unknown key cannot be
// reverted and loads nothing more.
TEST_F(SinBase, StagingSaveStagesEveryLineAndAnUnknownKeyIsRefused) {
  fake->alLeer("SELECT @@identity", Variant(5));
  fake->alLeer("SELECT scope_identity()", Variant(60));
  CVarelta mov;
  auto che = agregar(mov, "CHE", "0");
  che->CodigoEmisor = "BOD";
  che->Denominaciones->Add(test::denominacion("0.5", 3));
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

  fake->llamadas.clear();
  EXPECT_EQ(test::errorCompleto([&] { t.revertir("V-9"); }),
            "10001|ServiciosCaja.tempVarelta.Revertir|Referencia V-9 no registrada.");
  t.load("V-9", mov);
  EXPECT_EQ(fake->sqls(),
            (std::vector<std::string>{"SELECT id FROM saveMovsCaja WHERE clave = ?",
                                      "SELECT id FROM saveMovsCaja WHERE clave = ?"}));
}

class Movimiento : public test::PorMotor {
 protected:
  void sembrar() override {
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Clase, Atributos, titulo, posicion) VALUES "
        "('USD', 8, 1024, 'Dólares', 1), ('CHE', 1, 8, 'Cheque', 2), ('TDC', 3, 0, 'Visa', 3), "
        "('AMX', 2, 0, 'Amex', 4)");
    db->ExecuteSQL("INSERT INTO SesionesPOS (SessionID, MachineID) VALUES (1, 2)");
    db->ExecuteSQL("INSERT INTO SesionesCerradas (SessionID, MachineID) VALUES (9, 4)");
    db->ExecuteSQL("INSERT INTO parametrosEmpresa (TipoCambio) VALUES (36.5)");
    db->RegistrarProcedimiento("PostVarelta", [](std::vector<Variant>&) { return Variant(); });
  }

  std::shared_ptr<CVarelta> cobro() {
    auto mov = std::make_shared<CVarelta>();
    agregar(*mov, "EFE", "100");
    agregar(*mov, "USD", "365", "10");
    auto che = agregar(*mov, "CHE", "50");
    che->CodigoEmisor = "BANESCO";
    che->Denominaciones->Add(test::denominacion("20", 2));
    che->Denominaciones->Add(test::denominacion("10", 1));
    agregar(*mov, "TDC", "20");
    agregar(*mov, "AMX", "0.004");
    agregar(*mov, "EFE", "-5");
    mov->Debitos = cur("530");
    return mov;
  }
  void guardar(CVarelta& mov, std::int32_t sesion = 1, std::int32_t documento = 7) {
    mov.Save(sesion, "ANA", "FAC", documento, "CLI", "C1", "Venta", Fecha::fromYmd(2026, 11, 21));
  }
  long filas() {
    return contar(
        "SELECT (SELECT COUNT(*) FROM MovimientosCaja) + (SELECT COUNT(*) FROM "
        "DetallesVarelta) + (SELECT COUNT(*) FROM DetallesDenominacion) + (SELECT "
        "COUNT(*) FROM transaccionesEfectivo)");
  }
  Currency saldo(const std::string& sql) { return NzMoneda(db->ReadScalar(sql)); }
};

TEST_P(Movimiento, SavedMovementLoadsBackWithItsTotalsAndMovesTheDrawer) {
  auto mov = cobro();
  guardar(*mov);
  mov->commitTransEf();

  CVarelta leido;
  ASSERT_TRUE(leido.load(mov->TransID));
  EXPECT_EQ(leido.Operador, "ANA");
  EXPECT_EQ(leido.fecha, Fecha::fromYmd(2026, 11, 21));
  EXPECT_EQ(leido.tipoCambio, 36.5);
  EXPECT_EQ(leido.Debitos, cur("530"));
  auto lineas = leido.detalles();
  ASSERT_EQ(lineas->Count(), 5);  // the 0.004 line is not stored
  EXPECT_EQ(mov->colDetalles->Item(5)->Id, 0);
  EXPECT_EQ(mov->addDetalle("EFE", cur("-0.0099"), "", "", "", "", "", cur("0"), nullptr), 0);
  EXPECT_EQ(lineas->Item(2)->medio, "USD");
  EXPECT_EQ(lineas->Item(3)->Denominaciones->Count(), 2);
  EXPECT_EQ(lineas->Item(5)->Monto, cur("-5"));
  EXPECT_EQ(leido.Efectivo(), cur("95"));
  EXPECT_EQ(leido.EfectivoME(), cur("365"));
  EXPECT_EQ(leido.Cheques(), cur("50"));
  EXPECT_EQ(leido.TCVisa(), cur("20"));
  const Currency nueve = leido.Efectivo() + leido.TCVisa() + leido.TCMaster() + leido.TCAmex() +
                         leido.Cheques() + leido.OtrasTC() + leido.TDebito() + leido.OtrosMedios() +
                         leido.EfectivoME();
  EXPECT_EQ(nueve, cur("530"));
  EXPECT_EQ(contar("SELECT COUNT(*) FROM generalEmisores WHERE CodigoEmisor = 'BANESCO'"), 1);

  // Drawer of machine 2: national cash, the foreign cash, and the cheque,
  // which the drawer's rule counts for its attribute bit; never the card.
  EXPECT_EQ(saldo("SELECT efectivoMN FROM cvCaja WHERE MachineID = 2"), cur("95"));
  EXPECT_EQ(saldo("SELECT valorMN FROM cvCajaDetalles WHERE codigoMedio = 'USD'"), cur("365"));
  EXPECT_EQ(saldo("SELECT valorNominal FROM cvCajaDetalles WHERE codigoMedio = 'USD'"), cur("10"));
  EXPECT_EQ(saldo("SELECT valorMN FROM cvCajaDetalles WHERE codigoMedio = 'CHE'"), cur("50"));
  EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCajaDetalles WHERE codigoMedio = 'TDC'"), 0);

  const long antes = filas();
  EXPECT_EQ(test::errorCompleto([&] { guardar(*mov); }),
            "10001|CVarelta::Save|Intento de guardar movimiento de caja duplicado(DLL#9)");
  EXPECT_EQ(filas(), antes);
}

TEST_P(Movimiento, ClosedSessionSavesWithItsMachineButTheDrawerBeganWithZero) {
  auto mov = cobro();
  guardar(*mov, 9);
  mov->commitTransEf();
  EXPECT_EQ(contar("SELECT machineID FROM MovimientosCaja"), 4);
  EXPECT_EQ(contar("SELECT machineID FROM transaccionesEfectivo"), 0);
  EXPECT_EQ(saldo("SELECT efectivoMN FROM cvCaja WHERE MachineID = 0"), cur("95"));
}

TEST_P(Movimiento, LoadFromDocumentoPrefersTheHighestReference) {
  auto primero = cobro();
  guardar(*primero, 1, 100);
  auto segundo = cobro();
  guardar(*segundo, 1, 200);
  primero->AddConcepto(cur("10"), cur("0"), "NC", 5);
  segundo->AddConcepto(cur("20"), cur("0"), "NC", 5);
  CVarelta porDocumento;
  ASSERT_TRUE(porDocumento.LoadFromDocumento("FAC", 100));
  EXPECT_EQ(porDocumento.TransID, primero->TransID);
  CVarelta porReferencia;
  ASSERT_TRUE(porReferencia.LoadFromDocumento("NC", 5));
  EXPECT_EQ(porReferencia.TransID, segundo->TransID);
  EXPECT_FALSE(porReferencia.LoadFromDocumento("NC", 6));

  auto conceptos = segundo->Conceptos();
  ASSERT_EQ(conceptos->Count(), 1);
  EXPECT_EQ(conceptos->Item(1)->Debitos, cur("20"));
  CVarelta sinConceptos;
  sinConceptos.load(primero->TransID);
  sinConceptos.TransID = 0;
  auto propio = sinConceptos.Conceptos();
  ASSERT_EQ(propio->Count(), 1);
  EXPECT_EQ(propio->Item(1)->TipoDoc, "FAC");
  EXPECT_EQ(propio->Item(1)->NumeroDoc, 100);
}

TEST_P(Movimiento, DetallesOfAnUnsavedMovementIsItsOwnCollection) {
  CVarelta mov;
  EXPECT_EQ(mov.detalles(), mov.colDetalles);
  agregar(mov, "ZZZ", "1");
  EXPECT_EQ(test::numeroError([&] { mov.Cheques(); }), 91);
  auto efectivo = mov.detallesEfectivo();
  EXPECT_EQ(efectivo->Item("EFE")->valorMN, cur("1"));
}

// Statements of the save: 1 rate, 2 session, 3 header, 4 identity, 5 first
// line, 6 its identity, 7 catalogue read for "USD", 8 second line. Failing at
// one of them leaves the rows before it, unless the host wrapped the save.
TEST_P(Movimiento, OnlyAHostTransactionMakesAFailedSaveAllOrNothing) {
  struct Falla {
    int sentencia;
    bool envuelta;
    long movimientos;
    long lineas;
  };
  const Falla casos[] = {{5, false, 1, 0}, {8, false, 1, 1}, {5, true, 0, 0}, {8, true, 0, 0}};
  for (const Falla& f : casos) {
    SCOPED_TRACE("sentencia " + std::to_string(f.sentencia) + (f.envuelta ? ", envuelta" : ""));
    const long movimientos = contar("SELECT COUNT(*) FROM MovimientosCaja");
    const long lineas = contar("SELECT COUNT(*) FROM DetallesVarelta");
    auto falla = std::make_shared<test::FallaEnSentencia>(db, f.sentencia);
    gFactoria = falla;
    gMediosPago.reset();
    auto mov = std::make_shared<CVarelta>();
    agregar(*mov, "EFE", "100");
    agregar(*mov, "USD", "365", "10");
    agregar(*mov, "EFE", "5");
    auto intentar = [&] {
      guardar(*mov);
      mov->commitTransEf();
    };
    EXPECT_NE(test::numeroError([&] {
                if (!f.envuelta)
                  return intentar();
                TransaccionHost t(*falla);
                intentar();
                t.commit();
              }),
              0);
    gFactoria = db;
    EXPECT_EQ(contar("SELECT COUNT(*) FROM MovimientosCaja") - movimientos, f.movimientos);
    EXPECT_EQ(contar("SELECT COUNT(*) FROM DetallesVarelta") - lineas, f.lineas);
    EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCaja"), 0);
  }
}

TEST_P(Movimiento, StagingRoundTripKeepsOrderAndConsumesTheKey) {
  auto mov = cobro();
  TempVarelta t;
  t.Save("V-1", *mov);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM saveDetallesCaja"), 6);  // zero amounts staged too
  EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCaja"), 0);

  CVarelta retomado;
  agregar(retomado, "EFE", "1");
  t.load("v-1", retomado);
  ASSERT_EQ(retomado.colDetalles->Count(), 7);
  EXPECT_EQ(retomado.colDetalles->Item(2)->medio, "EFE");
  EXPECT_EQ(retomado.colDetalles->Item(3)->montoNominal, cur("10"));
  const auto che = retomado.colDetalles->Item(4);
  EXPECT_EQ(che->CodigoEmisor, "BANESCO");
  ASSERT_EQ(che->Denominaciones->Count(), 2);
  EXPECT_EQ(che->Denominaciones->Item(1)->Denominacion, cur("20"));
  EXPECT_EQ(che->Denominaciones->Item(2)->CantidadRecibida, 1);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM saveMovsCaja"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM saveDenominaciones"), 0);
  EXPECT_EQ(test::numeroError([&] { t.revertir("V-1"); }), 10001);

  t.Save("V-2", *mov);
  t.revertir("V-2");
  EXPECT_EQ(contar("SELECT COUNT(*) FROM saveDetallesCaja"), 0);
}

TEST_P(Movimiento, ActualizarSaldosEfectivoMovesBalancesWithoutTransactionRows) {
  auto mov = cobro();
  mov->actualizarSaldosEfectivo();
  EXPECT_EQ(saldo("SELECT efectivoMN FROM cvCaja WHERE MachineID = 1"), cur("95"));
  EXPECT_EQ(saldo("SELECT valorMN FROM cvCajaDetalles WHERE codigoMedio = 'USD'"), cur("365"));
  // The movement's rule: the cheque is not cash-like here.
  EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCajaDetalles WHERE codigoMedio = 'CHE'"), 0);
  EXPECT_EQ(contar("SELECT COUNT(*) FROM transaccionesEfectivo"), 0);
}

const char* const kLineaSimple =
    "<DIC>\r\nEFE\r\n1234.5\r\n\r\n\r\n\r\n\r\n\r\n0\r\n<DEC>\r\n"
    "\r\n\r\n\r\n\r\n\r\n\r\n\r\n<DEC/>\r\n<DIC/>\r\n";

// A plain line is nineteen lines; a voucher's line breaks travel as tabs and
// come back as CR LF, the card tracks never travel, and a confirmation
// without a voucher text is lost.
TEST(TextoDeLinea, PlainConfirmationAndDenominations) {
  CDetalleIngreso l;
  l.medio = "EFE";
  l.Monto = cur("1234.50");
  EXPECT_EQ(l.Serialize(), kLineaSimple);
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

  l.DetalleConfirmacion->TextoComprobante = "A\tB";
  leida.Deserialize(l.Serialize());
  EXPECT_EQ(leida.DetalleConfirmacion->TextoComprobante, "A\r\nB");
  l.DetalleConfirmacion->TextoComprobante = "";
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

TEST_F(SinBase, LoadInstanceIsNullSafeAndReadsDenominationsByPosition) {
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

TEST_F(SinBase, ToStringByKindOfMethod) {
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

TEST_P(Movimiento, IssuerKnownThroughEitherTable) {
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

TEST_P(Movimiento, DetallesEnRegistroReadsUntilTheFirstBadLine) {
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

CAJA_EN_CADA_MOTOR(Movimiento);

}  // namespace
}  // namespace caja
