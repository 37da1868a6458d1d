#include "host/SqliteFactoria.h"

#include <gtest/gtest.h>

#include "base/Conversiones.h"
#include "service/TransaccionHost.h"
#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::cur;
using test::numeroError;

class Sqlite : public ::testing::Test {
 protected:
  std::string archivo() const { return (carpeta_.ruta() / "caja.db").string(); }
  void SetUp() override { db_ = SqliteFactoria::Abrir(archivo()); }

  long contar(const std::string& tabla) {
    return CLng(db_->ReadScalar("SELECT COUNT(*) FROM " + tabla));
  }
  std::int32_t insertarMovimiento() {
    db_->ExecuteSQL(
        "INSERT INTO MovimientosCaja (Fecha, Hora, Sesion, Debitos, Creditos, machineID, "
        "MontoIGTF, "
        "tipoCambio) VALUES (?, getdate(), ?, ?, ?, ?, ?, ?)",
        {Variant(Fecha::fromYmd(2026, 11, 21)), Variant(7), Variant(cur("10.5")), Variant(cur("0")),
         Variant(1), Variant(cur("0.3")), Variant(36.5)});
    return CLng(db_->ReadScalar("SELECT IDENT_CURRENT('MovimientosCaja')"));
  }

  test::CarpetaTemporal carpeta_;
  std::shared_ptr<SqliteFactoria> db_;
};

TEST_F(Sqlite, OpensInWalWithForeignKeys) {
  EXPECT_EQ(CStr(db_->ReadScalar("PRAGMA journal_mode")), "wal");
  EXPECT_EQ(CLng(db_->ReadScalar("PRAGMA foreign_keys")), 1);
  // Opening again keeps what is there.
  db_->ExecuteSQL("INSERT INTO parametrosEmpresa (TipoCambio) VALUES (?)", {Variant(36.0)});
  db_ = SqliteFactoria::Abrir(archivo());
  EXPECT_EQ(CDbl(db_->ReadScalar("SELECT MAX(TipoCambio) FROM parametrosEmpresa")), 36.0);
}

TEST_F(Sqlite, HeaderInsertWithGetdateAndIdentCurrent) {
  const Fecha antes = Fecha::now();
  const std::int32_t id = insertarMovimiento();
  EXPECT_EQ(id, 1);
  EXPECT_EQ(insertarMovimiento(), 2);
  auto rs = db_->openrecordset("SELECT * FROM MovimientosCaja WHERE TransID = " +
                               db_->NumeroDB(Variant(id)));
  ASSERT_FALSE(rs->Eof());
  EXPECT_EQ(rs->Fields("fecha"), Variant(Fecha::fromYmd(2026, 11, 21)));
  ASSERT_EQ(rs->Fields("Hora").type(), VarType::Date);
  EXPECT_GE(rs->Fields("Hora").asDate().serial(), antes.serial() - 1.0 / 86400);
  EXPECT_EQ(rs->Fields("Debitos"), Variant(cur("10.5")));
  EXPECT_EQ(rs->Fields("montoIGTF"), Variant(cur("0.3")));
  EXPECT_EQ(rs->Fields("tipoCambio"), Variant(36.5));
  EXPECT_EQ(rs->Fields("Operador"), Variant::Null());
  EXPECT_EQ(numeroError([&] { rs->Fields("NoExiste"); }), 3265);
}

TEST_F(Sqlite, IdentityOfTheLastInsert) {
  const std::int32_t trans = insertarMovimiento();
  db_->ExecuteSQL("INSERT INTO DetallesVarelta (TransID, Medio, Monto) VALUES (?, ?, ?)",
                  {Variant(trans), Variant("EFE"), Variant(cur("5"))});
  EXPECT_EQ(db_->ReadScalar("SELECT @@IDENTITY"), Variant(1));
  db_->ExecuteSQL("INSERT INTO saveMovsCaja (clave) Values (?)", {Variant("V-1")});
  db_->ExecuteSQL("INSERT INTO saveMovsCaja (clave) Values (?)", {Variant("V-2")});
  EXPECT_EQ(db_->ReadScalar("SELECT @@identity"), Variant(2));
  EXPECT_EQ(db_->ReadScalar("SELECT scope_identity()"), Variant(2));
  // A literal that spells the token is left alone.
  EXPECT_EQ(db_->ReadScalar("SELECT '@@IDENTITY'"), Variant("@@IDENTITY"));
}

TEST_F(Sqlite, InsertSelectWhereNotExistsRegistersOnce) {
  const std::string sql =
      "INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) SELECT ?, ? WHERE NOT "
      "Exists(SELECT * FROM generalEmisores WHERE TipoDocumento = ? AND CodigoEmisor = ?)";
  const Argumentos args{Variant("CHE"), Variant("BANESCO"), Variant("CHE"), Variant("BANESCO")};
  EXPECT_EQ(db_->ExecuteSQL(sql, args), 1);
  EXPECT_EQ(db_->ExecuteSQL(sql, args), 0);
  EXPECT_EQ(CLng(db_->ReadScalar(
                "SELECT count(*) FROM generalEmisores WHERE TipoDocumento = ? AND codigoEmisor = ?",
                {Variant("che"), Variant("banesco")})),
            1);
}

TEST_F(Sqlite, UpdateFromSubtractsEachDetailOfTheTransaction) {
  db_->ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, ?)", {Variant(3)});
  const Variant idCec = db_->ReadScalar("SELECT id FROM CVCaja WHERE MachineID = ?", {Variant(3)});
  db_->ExecuteSQL("INSERT INTO CVCajaDetalles (idCec, codigoMedio) VALUES (?, ?)",
                  {idCec, Variant("USD")});
  const Variant idDet = db_->ReadScalar("SELECT scope_identity()");
  db_->ExecuteSQL(
      "UPDATE CVCajaDetalles SET valorMN = valorMN + ?, valorNominal = valorNominal + ? WHERE id = "
      "?",
      {Variant(cur("4000")), Variant(cur("100")), idDet});
  db_->ExecuteSQL(
      "INSERT INTO transaccionesEfectivo (tipoTrans, idOrigen, machineID, efectivoMN) VALUES (?, "
      "?, "
      "?, ?)",
      {Variant(0), Variant(9), Variant(std::int16_t{3}), Variant(cur("0"))});
  const Variant trans = db_->ReadScalar("SELECT scope_identity()");
  db_->ExecuteSQL(
      "INSERT INTO transaccionEfectivoDetalles (transID, codigoMedio, valorMN, valorNominal) "
      "VALUES "
      "(?, ?, ?, ?)",
      {trans, Variant("usd"), Variant(cur("1500.25")), Variant(cur("37.5"))});
  const long filas = db_->ExecuteSQL(
      std::string("UPDATE cvCajaDetalles ") +
          "SET valorMN = cvCajaDetalles.valorMN - D.valorMN, valorNominal = "
          "cvCajaDetalles.valorNominal - D.ValorNominal " +
          "FROM (SELECT d.*, cv.id AS CEC FROM (SELECT * FROM transaccionEfectivodetalles WHERE "
          "transID = ?) D " +
          "INNER JOIN TransaccionesEfectivo te ON D.transID = te.id " +
          "INNER JOIN cvCaja CV ON cv.machineID = te.machineID) D " +
          "WHERE D.CEC = idCec AND D.codigoMedio = cvCajaDetalles.codigoMedio",
      {trans});
  EXPECT_EQ(filas, 1);
  auto rs = db_->openrecordset("SELECT * FROM CVCajaDetalles WHERE idCEC = ?", {idCec});
  EXPECT_EQ(rs->Fields("valorMN"), Variant(cur("2499.75")));
  EXPECT_EQ(rs->Fields("valorNominal"), Variant(cur("62.5")));
}

TEST_F(Sqlite, MoneyAddedInSqlReadsBackExact) {
  db_->ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, ?)", {Variant(1)});
  for (int i = 0; i < 10; ++i)
    db_->ExecuteSQL("UPDATE cvCaja SET efectivoMN = efectivoMN + ? WHERE id = ?",
                    {Variant(cur("0.1")), Variant(1)});
  EXPECT_EQ(db_->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE id = 1"), Variant(cur("1")));
}

TEST_F(Sqlite, SurplusValuesAreIgnoredMissingOnesRefused) {
  const std::string insertar =
      "INSERT INTO MediosPago (Codigo, Descripcion, Atributos, PorcentajeRetencionEmisor, "
      "PorcentajeISLR, CuentaActivo, CuentaComisiones, BancoRelacionado, Clase, titulo, "
      "textoAyuda, "
      "posicion, isMedioElectronico) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
  Argumentos args{Variant("USD"),
                  Variant("Dolares"),
                  Variant(1088),
                  Variant(0.0),
                  Variant(36.5),
                  Variant(""),
                  Variant(""),
                  Variant(""),
                  Variant(8),
                  Variant("Dólares"),
                  Variant(""),
                  Variant(std::int16_t{1}),
                  Variant(std::int16_t{0}),
                  Variant("USD")};
  EXPECT_EQ(db_->ExecuteSQL(insertar, args), 1);
  args.resize(12);
  args[0] = Variant("ZEL");
  EXPECT_EQ(numeroError([&] { db_->ExecuteSQL(insertar, args); }), kErrorBaseDatos);
  EXPECT_EQ(contar("MediosPago"), 1);
  // Codes compare without regard to case, as the server collation does.
  EXPECT_EQ(db_->ReadScalar("SELECT Clase FROM MediosPago WHERE Codigo = 'usd'"), Variant(8));
}

TEST_F(Sqlite, SplicedQuotesStayInsideTheirLiteral) {
  const std::string malo = "X'); DROP TABLE MediosPago; --";
  EXPECT_EQ(db_->StringDB("O'Brien"), "'O''Brien'");
  db_->ExecuteSQL("INSERT INTO MediosPago (Codigo) VALUES (" + db_->StringDB(malo) + ")");
  EXPECT_EQ(
      CStr(db_->ReadScalar("SELECT Codigo FROM MediosPago WHERE Codigo = " + db_->StringDB(malo))),
      malo);
  EXPECT_EQ(numeroError([&] { db_->ExecuteSQL("SELECT 1; DROP TABLE MediosPago"); }),
            kErrorBaseDatos);
  EXPECT_EQ(contar("MediosPago"), 1);
}

TEST_F(Sqlite, NumeroDBIgnoresTheRegionalSeparatorAndSplicesMoneyAsStored) {
  test::RegionalTemporal coma({',', '.', "Bs. #,##0.00"});
  EXPECT_EQ(db_->NumeroDB(Variant(cur("1234.5"))), "12345000");
  EXPECT_EQ(db_->NumeroDB(Variant(-0.25)), "-0.25");
  EXPECT_EQ(db_->NumeroDB(Variant(42)), "42");
  EXPECT_EQ(db_->NumeroDB(Variant::Null()), "NULL");
}

TEST_F(Sqlite, FailuresCarrySqlitesMessageAndWriteNothing) {
  EXPECT_EQ(test::errorCompleto(
                [&] { db_->ExecuteSQL("INSERT INTO NoExiste (a) VALUES (?)", {Variant(1)}); }),
            "-2147217900|SqliteFactoria|no such table: NoExiste");
  EXPECT_EQ(numeroError(
                [&] { SqliteFactoria::Abrir((carpeta_.ruta() / "no" / "hay" / "x.db").string()); }),
            kErrorBaseDatos);
  EXPECT_TRUE(db_->ReadScalar("SELECT id FROM cvCaja WHERE MachineID = 99").isEmpty());
}

TEST_F(Sqlite, StagedLinesCascadeFromTheirKey) {
  db_->ExecuteSQL("INSERT INTO saveMovsCaja (clave) Values (?)", {Variant("V-1")});
  db_->ExecuteSQL("INSERT INTO saveDetallesCaja (TransID, Medio, Monto) VALUES (1, 'EFE', 5)");
  db_->ExecuteSQL(
      "INSERT INTO saveDenominaciones (idDetalle, Denominacion, CantidadRecibida) VALUES (1, 5, "
      "1)");
  EXPECT_EQ(db_->ExecuteSQL("DELETE FROM saveMovsCaja WHERE clave = ?", {Variant("v-1")}), 1);
  EXPECT_EQ(contar("saveDetallesCaja"), 0);
  EXPECT_EQ(contar("saveDenominaciones"), 0);
}

TEST_F(Sqlite, HostTransactionIsAllOrNothing) {
  try {
    TransaccionHost t(*db_);
    db_->ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, ?)", {Variant(1)});
    db_->ExecuteSQL("INSERT INTO NoExiste (a) VALUES (1)");
    t.commit();
  } catch (const CajaError&) {
  }
  EXPECT_EQ(contar("cvCaja"), 0);
  {
    TransaccionHost t(*db_);
    db_->ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, ?)", {Variant(1)});
    t.commit();
  }
  EXPECT_EQ(contar("cvCaja"), 1);
}

TEST_F(Sqlite, HostObjects) {
  EXPECT_EQ(crearObjeto<Empresa>(*db_, "Empresa")->ContribuyenteEspecial(), Variant::Null());
  db_->ExecuteSQL(
      "INSERT INTO hostEmpresa (id, ContribuyenteEspecial, porcentajeIGTF456, FormatoMEX, "
      "TipoCambioCaja) VALUES (1, 1, 3, 'US$ #,##0.00', 36.5)");
  db_->ExecuteSQL("INSERT INTO hostEntidades (Tipo, Codigo, Nombre) VALUES ('CLI', 'C1', 'Ana')");
  auto empresa = crearObjeto<Empresa>(*db_, "empresa");
  EXPECT_EQ(empresa->ContribuyenteEspecial(), Variant(true));
  EXPECT_EQ(empresa->porcentajeIGTF456(), 3.0);
  EXPECT_EQ(empresa->FormatoMEX(), "US$ #,##0.00");
  EXPECT_EQ(db_->TipoCambioCaja(), 36.5);

  auto inst = crearObjeto<Instanciador>(*db_, "Instanciador");
  EXPECT_EQ(inst->Entidad("cli", "c1")->Nombre(), "Ana");
  EXPECT_EQ(inst->Entidad("CLI", "C2"), nullptr);

  db_->RegistrarProcedimiento("PostVarelta", [](std::vector<Variant>& a) { return a.at(0); });
  auto ext = crearObjeto<PosExt>(*db_, "posExt");
  std::vector<Variant> args{Variant(5)};
  EXPECT_EQ(ext->Run("postvarelta", args), Variant(5));
  EXPECT_TRUE(db_->ExisteProcedimiento("PostVarelta", ext));
  EXPECT_EQ(numeroError([&] { ext->Run("ValidarVarelta", args); }), 438);
  EXPECT_EQ(numeroError([&] { db_->CrearObjeto("Otro"); }), 429);
}

}  // namespace
}  // namespace caja
