#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sqlite3.h>
#include <fstream>
#include <limits>
#include <thread>

#include "caja/base/Conversiones.h"
#include "caja/host/DialectoSql.h"
#include "caja/host/IniSettingsStore.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;
using test::numeroError;

class IniSettings : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(instalacion());
    store_ = std::make_shared<IniSettingsStore>(instalacion().string(), usuario().string());
    setSettingsStore(store_);
  }
  void TearDown() override { setSettingsStore(nullptr); }

  std::filesystem::path instalacion() const { return carpeta_.ruta() / "instalacion"; }
  std::filesystem::path usuario() const { return carpeta_.ruta() / "usuario"; }
  void escribirIni(const std::string& contenido) {
    std::ofstream(instalacion() / "ZOR.ini", std::ios::binary) << contenido;
  }

  test::CarpetaTemporal carpeta_;
  std::shared_ptr<IniSettingsStore> store_;
};

// The installation file wins over the per-user value; an empty value there
// falls through. Booleans that do not convert, malformed files and missing
// keys give the default; a value longer than the reader's buffer is cut.
TEST_F(IniSettings, InstallationFileFirstThenUserThenDefault) {
  store_->SaveSetting("ZOR", "frmVarelta", "AutoFill", "0");
  store_->SaveSetting("ZOR", "frmVarelta", "SimboloMEX", "US$");
  const struct {
    std::string ini, clave, defecto, esperado;
  } casos[] = {
      {"[frmVarelta]\nAutoFill = 1\nSimboloMEX=\n", "AutoFill", "0", "1"},
      {"[frmVarelta]\nAutoFill = 1\nSimboloMEX=\n", "SimboloMEX", "$", "US$"},
      {"[frmVarelta]\nAutoFill = 1\n", "CodigoMEX", "USD", "USD"},
      {std::string("\x01\x02garbage\n[frmVarelta\n=sin clave\n\0\xff", 24), "CodigoMEX", "USD",
       "USD"},
      {"[frmVarelta]\nnombreIVA=" + std::string(1500, 'x') + "\n", "nombreIVA", "",
       std::string(1023, 'x')},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.clave);
    escribirIni(c.ini);
    EXPECT_EQ(CStr(lmGetSetting("ZOR", "frmVarelta", c.clave, c.defecto)), c.esperado);
  }
  escribirIni("[frmVarelta]\nExcluirIVAIGTF=abc\nResaltarVuelto=True\n[Config]\nIVA2602=-1\n");
  EXPECT_TRUE(lmGetSettingBool("ZOR", "frmVarelta", "ExcluirIVAIGTF", true));
  EXPECT_FALSE(lmGetSettingBool("ZOR", "frmVarelta", "ExcluirIVAIGTF", false));
  EXPECT_TRUE(lmGetSettingBool("ZOR", "frmVarelta", "ResaltarVuelto", false));
  EXPECT_TRUE(lmGetSettingBool("ZOR", "CONFIG", "iva2602", false));
}

// Both decimal separators, under either regional setting; the leading
// number of a text, 0 for a text without one; the default for a missing key
// (never its regional text read back) and for a value beyond the range.
TEST_F(IniSettings, CurrencyIsTheTextsNumericValueUnderAnyRegionalSetting) {
  const struct {
    const char* texto;
    const char* esperado;
  } casos[] = {
      {"5,5", "5.5"},
      {"5.5", "5.5"},
      {"5abc", "5"},
      {"mucho", "0"},
      {" - 1 2,5x", "-12.5"},
      {"0.00005", "0"},
      {"0.00015", "0.0002"},
      {"1.2.3", "1.2"},
      {"99999999999999999", "7"},
      {"922337203685477,5808", "922337203685477"},
  };
  for (const Regional& r : {Regional{}, Regional{',', '.', "Bs. #,##0.00"}}) {
    test::RegionalTemporal regional(r);
    for (const auto& c : casos) {
      SCOPED_TRACE(std::string(1, r.separadorDecimal) + " " + c.texto);
      escribirIni(std::string("[frmVarelta]\nTolerancia=") + c.texto + "\n");
      EXPECT_EQ(lmGetSettingCur("ZOR", "frmVarelta", "Tolerancia", cur("7")), cur(c.esperado));
    }
    EXPECT_EQ(lmGetSettingCur("ZOR", "frmVarelta", "NoEsta", cur("0.01")), cur("0.01"));
  }
}

// A key saved again under another letter case replaces the value in place.
TEST_F(IniSettings, SavedMultiLineValuesReadBackWholeFromANewStore) {
  const std::string linea = "<DIC>\r\nEFE\r\n10.5\r\nC:\\tmp\r\n<DIC/>\r\n";
  store_->SaveSetting("ZOR", "frmVarelta\\Detalles", "1", linea);
  store_->SaveSetting("ZOR", "frmVarelta\\Detalles", "2", "otra");
  store_->SaveSetting("ZOR", "frmVarelta", "AutoFill", "1");
  store_->SaveSetting("ZOR", "FRMVARELTA", "autofill", "0");
  IniSettingsStore otro(instalacion().string(), usuario().string());
  const auto pares = otro.GetAllSettings("zor", "FRMVARELTA\\detalles");
  ASSERT_TRUE(pares.has_value());
  ASSERT_EQ(pares->size(), 2u);
  EXPECT_EQ((*pares)[0].second, linea);
  EXPECT_EQ((*pares)[1], (std::pair<std::string, std::string>{"2", "otra"}));
  EXPECT_FALSE(otro.GetAllSettings("ZOR", "NoExiste").has_value());
  EXPECT_EQ(otro.GetAllSettings("ZOR", "frmVarelta")->size(), 1u);
  EXPECT_EQ(otro.GetSetting("ZOR", "frmVarelta", "AutoFill", "?"), "0");
  EXPECT_FALSE(std::filesystem::exists(usuario() / "ZOR.ini.tmp"));
}

// The per-user file as another program may have left it: a byte-order mark,
// CR CR LF endings, values with blanks around. Saving one key keeps every
// other byte, and keys that look like comments or hold '=' survive.
TEST_F(IniSettings, UserFileKeepsItsBytesAndAnyKey) {
  std::filesystem::create_directories(usuario());
  const std::string antes = "\xEF\xBB\xBF[frmVarelta]\r\nAutoFill= 1 \r\r\nLockVuelto=0\n";
  std::ofstream(usuario() / "ZOR.ini", std::ios::binary) << antes;
  EXPECT_EQ(store_->GetSetting("ZOR", "frmVarelta", "AutoFill", "0"), "1");
  for (const char* clave : {";comentario", "#almohadilla", "a=b", "[corchete"}) {
    SCOPED_TRACE(clave);
    store_->SaveSetting("ZOR", "frmVarelta", clave, clave);
    EXPECT_EQ(store_->GetSetting("ZOR", "frmVarelta", clave, "?"), clave);
  }
  std::ifstream in(usuario() / "ZOR.ini", std::ios::binary);
  const std::string despues((std::istreambuf_iterator<char>(in)), {});
  EXPECT_EQ(despues.substr(0, antes.size()), antes);
  EXPECT_EQ(store_->GetSetting("ZOR", "frmVarelta", "a", "?"), "?");
}

// Settings and the embedded file are their owner's alone, whatever the
// umask: new folders 0700, files (the database's WAL too) 0600.
TEST_F(IniSettings, NewFilesAndFoldersAreTheOwnersAlone) {
  namespace fs = std::filesystem;
  const mode_t antes = ::umask(022);
  auto modo = [](const fs::path& p) { return fs::status(p).permissions() & fs::perms::all; };
  const auto soloDueno = fs::perms::owner_read | fs::perms::owner_write;
  store_->SaveSetting("ZOR", "frmVarelta", "AutoFill", "1");
  EXPECT_EQ(modo(usuario()), fs::perms::owner_all);
  EXPECT_EQ(modo(usuario() / "ZOR.ini"), soloDueno);
  const fs::path archivo = carpeta_.ruta() / "caja.db";
  {
    auto db = SqliteFactoria::Abrir(archivo.string());
    db->ExecuteSQL("INSERT INTO parametrosEmpresa (Fecha, TipoCambio) VALUES (getdate(), 1)");
    EXPECT_EQ(modo(archivo), soloDueno);
    if (fs::exists(archivo.string() + "-wal")) {
      EXPECT_EQ(modo(archivo.string() + "-wal"), soloDueno);
    }
  }
  ::umask(antes);
}

// Only the dialect's own constructs change, and never inside a literal, a
// quoted name or a comment.
TEST(DialectoSql, MapsIdentityAndNumbersMarkersOutsideLiterals) {
  struct Caso {
    const char* sql;
    const char* sqlite;
    const char* postgres;
    int marcas;
  };
  const Caso casos[] = {
      {"SELECT @@IDENTITY", "SELECT last_insert_rowid()", "SELECT scope_identity()", 0},
      {"SELECT @@identity, '@@IDENTITY'", "SELECT last_insert_rowid(), '@@IDENTITY'",
       "SELECT scope_identity(), '@@IDENTITY'", 0},
      {"VALUES (?, getdate(), ?)", "VALUES (?, getdate(), ?)", "VALUES ($1, getdate(), $2)", 2},
      {"SELECT 'it''s ?', \"?\" -- ?\n, ?", "SELECT 'it''s ?', \"?\" -- ?\n, ?",
       "SELECT 'it''s ?', \"?\" -- ?\n, $1", 1},
      {"SELECT '@@IDENTITY", "SELECT '@@IDENTITY", "SELECT '@@IDENTITY", 0},
      // Names quoted as SQLite also quotes them hold no placeholder either.
      {"SELECT [a?], `b?` WHERE x > ?", "SELECT [a?], `b?` WHERE x > ?",
       "SELECT [a?], `b?` WHERE x > $1", 1},
  };
  for (const Caso& c : casos) {
    SCOPED_TRACE(c.sql);
    int marcas = -1;
    EXPECT_EQ(traducirSql(c.sql, kDialectoSqlite, marcas), c.sqlite);
    EXPECT_EQ(marcas, c.marcas);
    EXPECT_EQ(traducirSql(c.sql, kDialectoPostgres, marcas), c.postgres);
    EXPECT_EQ(marcas, c.marcas);
  }
}

// The behaviour both hosts share, run on each.
class Host : public test::PorMotor {
 protected:
  long contarFilas(const std::string& tabla) {
    return CLng(db->ReadScalar("SELECT COUNT(*) FROM " + tabla));
  }
  std::int32_t insertarMovimiento(HostSql& host) {
    host.ExecuteSQL(
        "INSERT INTO MovimientosCaja (Fecha, Hora, Sesion, Debitos, Creditos, machineID, "
        "MontoIGTF, tipoCambio) VALUES (?, getdate(), ?, ?, ?, ?, ?, ?)",
        test::valores(Fecha::fromYmd(2026, 11, 21), 7, cur("10.5"), cur("0"), 1, cur("0.3"), 36.5));
    return CLng(host.ReadScalar("SELECT IDENT_CURRENT('MovimientosCaja')"));
  }
  std::int32_t insertarMovimiento() { return insertarMovimiento(*db); }
};

// A header row with getdate() read back by its identity. Two tills insert
// in turn: each reads back its own identities, never the other's, as
// IDENT_CURRENT, scope_identity() and @@IDENTITY.
TEST_P(Host, EachConnectionReadsItsOwnIdentities) {
  auto otra = otraConexion();
  EXPECT_TRUE(otra->ReadScalar("SELECT IDENT_CURRENT('MovimientosCaja')").isNull());
  const Fecha antes = Fecha::now();
  const std::int32_t mia = insertarMovimiento();
  const std::int32_t suya = insertarMovimiento(*otra);
  EXPECT_EQ(mia, 1);
  EXPECT_EQ(suya, 2);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT IDENT_CURRENT('MovimientosCaja')")), mia);
  EXPECT_EQ(CLng(db->ReadScalar("SELECT scope_identity()")), mia);
  EXPECT_EQ(CLng(otra->ReadScalar("SELECT @@IDENTITY")), suya);
  EXPECT_EQ(CLng(otra->ReadScalar("SELECT ident_current('movimientoscaja')")), suya);

  auto rs = db->openrecordset("SELECT * FROM MovimientosCaja WHERE TransID = " +
                              db->NumeroDB(Variant(mia)));
  ASSERT_FALSE(rs->Eof());
  EXPECT_EQ(rs->Fields("fecha"), Variant(Fecha::fromYmd(2026, 11, 21)));
  ASSERT_EQ(rs->Fields("Hora").type(), VarType::Date);
  EXPECT_GE(rs->Fields("Hora").asDate().serial(), antes.serial() - 1.0 / 86400);
  EXPECT_EQ(rs->Fields("Debitos"), Variant(cur("10.5")));
  EXPECT_EQ(rs->Fields("tipoCambio"), Variant(36.5));
  EXPECT_EQ(rs->Fields("Operador"), Variant::Null());
  EXPECT_EQ(numeroError([&] { rs->Fields("NoExiste"); }), 3265);
}

// Money is exact across the whole range; the database itself refuses a value
// or a sum beyond it, naming the amount, and the row keeps what it had.
TEST_P(Host, MoneyIsExactAcrossTheRangeAndRefusedBeyondIt) {
  db->ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, ?)", {Variant(1)});
  const std::string sumar = "UPDATE cvCaja SET efectivoMN = efectivoMN + ? WHERE id = 1";
  for (int i = 0; i < 10; ++i)
    db->ExecuteSQL(sumar, {Variant(cur("0.1"))});
  EXPECT_EQ(db->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE id = 1"), Variant(cur("1")));
  const std::string poner = "UPDATE cvCaja SET efectivoMN = ? WHERE id = 1";
  // Amounts a double cannot hold, and both ends of the range.
  for (const char* texto : {"294980071765.4567", "9999999999999.99", "922337203685477.5807",
                            "-922337203685477.5807", "0.0001", "500000000000000"}) {
    SCOPED_TRACE(texto);
    db->ExecuteSQL(poner, {Variant(cur(texto))});
    EXPECT_EQ(db->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE id = 1"), Variant(cur(texto)));
  }
  const std::string error =
      test::errorCompleto([&] { db->ExecuteSQL(sumar, {Variant(cur("500000000000000"))}); });
  EXPECT_EQ(error.substr(0, 2), "6|");
  EXPECT_NE(error.find("fuera del rango de la moneda"), std::string::npos) << error;
  EXPECT_NE(error.find("500000000000000"), std::string::npos) << error;
  // The most negative int64 is one ten-thousandth beyond the range.
  EXPECT_EQ(numeroError([&] {
              db->ExecuteSQL(poner, {Currency::fromRaw(std::numeric_limits<std::int64_t>::min())});
            }),
            6);
  EXPECT_EQ(db->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE id = 1"),
            Variant(cur("500000000000000")));
}

// Surplus values are ignored, missing ones refused; spliced text stays inside
// its literal; numbers and money are spliced as decimal text whatever the
// regional separator. A failure carries the database's own message.
TEST_P(Host, ArgumentsSplicedValuesAndFailures) {
  const std::string insertar = "INSERT INTO MediosPago (Codigo, Clase, titulo) VALUES (?, ?, ?)";
  Argumentos args{Variant("USD"), Variant(8), Variant("Dólares"), Variant("sobra")};
  EXPECT_EQ(db->ExecuteSQL(insertar, args), 1);
  args.resize(2);
  args[0] = Variant("ZEL");
  EXPECT_EQ(numeroError([&] { db->ExecuteSQL(insertar, args); }), kErrorBaseDatos);
  EXPECT_EQ(contarFilas("MediosPago"), 1);
  // Codes compare without regard to case, as the server collation does.
  EXPECT_EQ(db->ReadScalar("SELECT Clase FROM MediosPago WHERE Codigo = 'usd'"), Variant(8));
  const std::string malo = "X'); DROP TABLE MediosPago; --";
  EXPECT_EQ(db->StringDB("O'Brien"), "'O''Brien'");
  db->ExecuteSQL("INSERT INTO MediosPago (Codigo) VALUES (" + db->StringDB(malo) + ")");
  EXPECT_EQ(
      CStr(db->ReadScalar("SELECT Codigo FROM MediosPago WHERE Codigo = " + db->StringDB(malo))),
      malo);
  EXPECT_EQ(numeroError([&] { db->ExecuteSQL("SELECT 1; DROP TABLE MediosPago"); }),
            kErrorBaseDatos);
  EXPECT_EQ(contarFilas("MediosPago"), 2);

  test::RegionalTemporal coma({',', '.', "Bs. #,##0.00"});
  EXPECT_EQ(db->NumeroDB(Variant(cur("1234.5"))), "1234.5");
  EXPECT_EQ(db->NumeroDB(Variant(-0.25)), "-0.25");
  EXPECT_EQ(db->NumeroDB(Variant(42)), "42");
  EXPECT_EQ(db->NumeroDB(Variant::Null()), "NULL");
  const std::string error = test::errorCompleto(
      [&] { db->ExecuteSQL("INSERT INTO NoExiste (a) VALUES (?)", {Variant(1)}); });
  EXPECT_EQ(error, motor == test::Motor::Sqlite
                       ? "-2147217900|SqliteFactoria|no such table: NoExiste"
                       : "-2147217900|PostgresFactoria|relation \"noexiste\" does not exist");
  EXPECT_TRUE(db->ReadScalar("SELECT id FROM cvCaja WHERE MachineID = 99").isEmpty());
}

// Report SQL written by hand reads the same amounts on both databases:
// literals, aggregates, arithmetic and subqueries over money columns, each
// result a Currency. Rows are seeded with literal amounts.
TEST_P(Host, HandWrittenReportsReadAmountsAsOnTheServer) {
  for (const char* sql : {
           "INSERT INTO cvCaja (MachineID, efectivoMN) VALUES (1, 116.50), (2, '3.25')",
           "INSERT INTO MovimientosCaja (Debitos, MontoIGTF) VALUES (116.5, 3.25), (50, NULL)",
           "INSERT INTO DetallesVarelta (TransID, Medio, Monto) VALUES (1, 'EFE', 100), "
           "(1, 'USD', 16.50), (2, 'EFE', 50.00), (2, 'TDD', 0.07)",
       })
    db->ExecuteSQL(sql);
  const struct {
    std::string sql;
    Argumentos args;
    std::string montos;  // the last column of each row
  } casos[] = {
      {"SELECT efectivoMN FROM cvCaja WHERE MachineID = 1", {}, "116.5"},
      {"SELECT SUM(efectivoMN) FROM cvCaja", {}, "119.75"},
      {"SELECT MIN(efectivoMN), MAX(efectivoMN) FROM cvCaja", {}, "116.5"},
      {"SELECT MIN(efectivoMN) FROM cvCaja", {}, "3.25"},
      {"SELECT efectivoMN * 2 - 0.5 FROM cvCaja WHERE MachineID = 1", {}, "232.5"},
      {"SELECT efectivoMN / 4 FROM cvCaja WHERE MachineID = 2", {}, "0.8125"},
      {"SELECT SUM(CASE WHEN Medio = 'EFE' THEN Monto ELSE 0 END) FROM DetallesVarelta", {}, "150"},
      {"SELECT SUM(COALESCE(MontoIGTF, 1.5)) FROM MovimientosCaja", {}, "4.75"},
      {"SELECT t.total FROM (SELECT TransID, SUM(Monto) AS total FROM DetallesVarelta "
       "GROUP BY TransID) t WHERE t.total > 100",
       {},
       "116.5"},
      {"SELECT (SELECT MAX(Monto) FROM DetallesVarelta) - 0.01", {}, "99.99"},
      {"SELECT Medio, SUM(Monto) FROM DetallesVarelta GROUP BY Medio ORDER BY Medio",
       {},
       "150;0.07;16.5"},
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE Monto = 50", {}, "50"},
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE Monto BETWEEN 16.5 AND 100", {}, "166.5"},
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE Monto < ?", {Variant(1)}, "0.07"},
      {"SELECT SUM(D.Monto) FROM DetallesVarelta D JOIN MovimientosCaja M "
       "ON M.TransID = D.TransID WHERE M.Debitos > 100",
       {},
       "116.5"},
      {"SELECT AVG(Monto) FROM DetallesVarelta", {}, "41.6425"},
      {"SELECT ROUND(Monto, 1) FROM DetallesVarelta WHERE Medio = 'TDD'", {}, "0.1"},
      // A subquery in the result list, over sources of its own.
      {"SELECT TransID, (SELECT SUM(Monto) FROM DetallesVarelta d WHERE d.TransID = m.TransID) "
       "AS lineas FROM MovimientosCaja m ORDER BY TransID",
       {},
       "116.5;50.07"},
      // Row values, element by element, also against a subquery's row.
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE (Monto, MontoNominal) = (50, 0)", {}, "50"},
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE (TransID, Monto) IN "
       "(SELECT TransID, Debitos - 16.5 FROM MovimientosCaja)",
       {},
       "100"},
      // The scale of a CAST, and halves away from zero at the fourth decimal:
      // 166.57 is 166.6; 0.07 * 0.015 = 0.00105 and 0.0701 / 2 = 0.03505
      // round up, alone, rounded, or in a compound's branch.
      {"SELECT CAST(SUM(Monto) AS DECIMAL(19,1)) FROM DetallesVarelta", {}, "166.6"},
      {"SELECT Monto * 0.015 FROM DetallesVarelta WHERE Medio = 'TDD'", {}, "0.0011"},
      {"SELECT ROUND(Monto * 0.015, 4) FROM DetallesVarelta WHERE Medio = 'TDD'", {}, "0.0011"},
      {"SELECT (Monto + 0.0001) / 2 FROM DetallesVarelta WHERE Medio = 'TDD'", {}, "0.0351"},
      {"SELECT (Monto + 0.0001) / 2 FROM DetallesVarelta WHERE Medio = 'TDD' "
       "UNION ALL SELECT 0 FROM DetallesVarelta WHERE 1 = 0",
       {},
       "0.0351"},
      // Placeholders as SQLite numbers them, typed by their values where the
      // server would type them otherwise.
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE Monto > ? * 2", {cur("0.5")}, "166.5"},
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE Monto > -?", {cur("1")}, "166.57"},
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE Monto >= ?1 AND Monto <= ?1 + 50",
       {cur("50")},
       "150"},
      {"SELECT SUM(Monto) FROM DetallesVarelta WHERE Monto = :m OR MontoNominal = :m + 1",
       {cur("16.5")},
       "16.5"},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.sql);
    std::string montos;
    for (auto rs = db->openrecordset(c.sql, c.args); !rs->Eof(); rs->MoveNext()) {
      const Variant v = rs->Fields(rs->FieldCount() - 1);
      ASSERT_EQ(v.type(), VarType::Currency) << CStr(v);
      montos += (montos.empty() ? "" : ";") + v.asCurrency().toMachineText();
    }
    EXPECT_EQ(montos, c.montos);
  }
  EXPECT_EQ(db->ExecuteSQL("DELETE FROM DetallesVarelta WHERE (Monto, MontoNominal) = (0.07, 0)"),
            1);
  EXPECT_EQ(db->ReadScalar("SELECT -?", {Variant(5)}), Variant(-5));
  db->ExecuteSQL("UPDATE cvCaja SET efectivoMN = 500000000000000");
  EXPECT_EQ(numeroError([&] { db->ReadScalar("SELECT SUM(efectivoMN) FROM cvCaja"); }), 6);
}

// A statement no database can run is an error of the host, never a crash:
// placeholders out of SQLite's range, a name glued to a placeholder.
TEST_P(Host, MalformedStatementsAreTheHostsErrors) {
  const struct {
    std::string sql, texto;
  } casos[] = {
      {"SELECT Monto FROM DetallesVarelta WHERE Monto > ?0", "debe estar entre ?1 y ?32766"},
      {"SELECT Monto FROM DetallesVarelta WHERE Monto > ?99999999999", "entre ?1 y ?32766"},
      {"SELECT Monto FROM DetallesVarelta WHERE Monto = ?MontoIGTF", ""},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.sql.substr(0, 60));
    const std::string error = test::errorCompleto([&] { db->ReadScalar(c.sql, {cur("1")}); });
    EXPECT_EQ(error.rfind(std::to_string(kErrorBaseDatos) + "|", 0), 0u) << error;
    EXPECT_NE(error.find(c.texto), std::string::npos) << error;
  }
}

// Reads sent together answer each in its order; a failing one raises the
// database's error and leaves the connection usable, in or out of the
// caller's transaction.
TEST_P(Host, ReadsTogetherAnswerInOrder) {
  const std::int32_t mov = insertarMovimiento();
  const auto lecturas = db->LeerJuntas(
      {{"SELECT Debitos FROM MovimientosCaja WHERE TransID = ?", {mov}},
       {"SELECT COUNT(*) FROM MovimientosCaja WHERE Debitos > ?", test::valores(cur("10.49"))},
       {"SELECT Debitos FROM MovimientosCaja WHERE TransID = ?", {mov + 1}}});
  ASSERT_EQ(lecturas.size(), 3u);
  EXPECT_EQ(lecturas[0]->Fields(0), Variant(cur("10.5")));
  EXPECT_EQ(CLng(lecturas[1]->Fields(0)), 1);
  EXPECT_TRUE(lecturas[2]->Eof());
  for (const bool enTransaccion : {false, true}) {
    SCOPED_TRACE(enTransaccion);
    if (enTransaccion)
      db->BeginTrans();
    EXPECT_EQ(numeroError([&] {
                db->LeerJuntas({{"SELECT 1", {}}, {"SELECT NoExiste FROM MovimientosCaja", {}}});
              }),
              kErrorBaseDatos);
    if (enTransaccion)
      db->Rollback();
    EXPECT_EQ(contarFilas("MovimientosCaja"), 1);
  }
}

TEST_P(Host, HostObjects) {
  EXPECT_EQ(crearObjeto<Empresa>(*db, "Empresa")->ContribuyenteEspecial(), Variant::Null());
  db->ExecuteSQL(
      "INSERT INTO hostEmpresa (id, ContribuyenteEspecial, porcentajeIGTF456, FormatoMEX, "
      "TipoCambioCaja) VALUES (1, ?, 3, 'US$ #,##0.00', 36.5)",
      {Variant(true)});
  db->ExecuteSQL("INSERT INTO hostEntidades (Tipo, Codigo, Nombre) VALUES ('CLI', 'C1', 'Ana')");
  auto empresa = crearObjeto<Empresa>(*db, "empresa");
  EXPECT_EQ(empresa->ContribuyenteEspecial(), Variant(true));
  EXPECT_EQ(empresa->porcentajeIGTF456(), 3.0);
  EXPECT_EQ(empresa->FormatoMEX(), "US$ #,##0.00");
  EXPECT_EQ(db->TipoCambioCaja(), 36.5);

  auto inst = crearObjeto<Instanciador>(*db, "Instanciador");
  EXPECT_EQ(inst->Entidad("cli", "c1")->Nombre(), "Ana");
  EXPECT_EQ(inst->Entidad("CLI", "C2"), nullptr);

  db->RegistrarProcedimiento("PostVarelta", [](std::vector<Variant>& a) { return a.at(0); });
  auto ext = crearObjeto<PosExt>(*db, "posExt");
  std::vector<Variant> args{Variant(5)};
  EXPECT_EQ(ext->Run("postvarelta", args), Variant(5));
  EXPECT_TRUE(db->ExisteProcedimiento("PostVarelta", ext));
  EXPECT_EQ(numeroError([&] { ext->Run("ValidarVarelta", args); }), 438);
  EXPECT_EQ(numeroError([&] { db->CrearObjeto("Otro"); }), 429);
}

// A program's own tables and functions are created with the component's,
// also in a database the component alone made before: its money checked
// like the component's, its function there on a server.
TEST_P(Host, TheProgramsSchemaJoinsTheComponentsInADatabaseMadeBefore) {
  using T = TipoColumna;
  struct Olvidar {
    ~Olvidar() { agregarEsquemaPrograma({}); }
  } olvidar;
  EXPECT_EQ(numeroError([&] { db->ReadScalar("SELECT COUNT(*) FROM progCuentas"); }),
            kErrorBaseDatos);
  agregarEsquemaPrograma(
      {{{"progCuentas", {{"id", T::Identidad, ""}, {"Saldo", T::Dinero, "NOT NULL"}}, {}}},
       {{"ixProgCuentas", "progCuentas", "Saldo"}},
       {},
       {"CREATE OR REPLACE FUNCTION prog_doble(m numeric) RETURNS numeric LANGUAGE sql AS "
        "$$ SELECT m * 2 $$"},
       "prog_doble(numeric)"});
  auto otra = otraConexion();
  otra->ExecuteSQL("INSERT INTO progCuentas (Saldo) VALUES (?)", test::valores(cur("0.0035")));
  EXPECT_EQ(otra->ReadScalar("SELECT Saldo FROM progCuentas"), Variant(cur("0.0035")));
  EXPECT_EQ(numeroError([&] {
              otra->ExecuteSQL("UPDATE progCuentas SET Saldo = Saldo + ?",
                               test::valores(cur("922337203685477.5807")));
            }),
            6);
  if (motor == test::Motor::Postgres) {
    EXPECT_EQ(otra->ReadScalar("SELECT prog_doble(Saldo) FROM progCuentas"), Variant(cur("0.007")));
  }
  // The component's own data is untouched.
  EXPECT_EQ(CLng(otra->ReadScalar("SELECT COUNT(*) FROM MediosPago")), contarFilas("MediosPago"));
}

CAJA_EN_CADA_MOTOR(Host);

class SoloSqlite : public ::testing::Test, protected test::ConBase {};

// WAL and foreign keys on; opening again keeps what is there, and a file
// that cannot be created is a clear error.
TEST_F(SoloSqlite, OpensInWalWithForeignKeys) {
  EXPECT_EQ(CStr(db->ReadScalar("PRAGMA journal_mode")), "wal");
  db->ExecuteSQL("INSERT INTO parametrosEmpresa (TipoCambio) VALUES (?)", {Variant(36.0)});
  db = otraConexion();
  EXPECT_EQ(CLng(db->ReadScalar("PRAGMA foreign_keys")), 1);
  EXPECT_EQ(CDbl(db->ReadScalar("SELECT MAX(TipoCambio) FROM parametrosEmpresa")), 36.0);
  EXPECT_EQ(test::numeroError(
                [&] { SqliteFactoria::Abrir((carpeta.ruta() / "no" / "hay" / "x.db").string()); }),
            kErrorBaseDatos);
}

// Tills that start together open a new file at once: each one waits its turn
// to make it WAL and create the schema, none is refused for a lock.
TEST(SqliteNuevo, TillsOpeningANewFileTogetherAllGetIt) {
  test::CarpetaTemporal carpeta;
  for (int vuelta = 0; vuelta < 40; ++vuelta) {
    const std::string archivo = (carpeta.ruta() / (std::to_string(vuelta) + ".db")).string();
    std::vector<std::string> errores(8);
    std::vector<std::thread> cajas;
    for (auto& error : errores)
      cajas.emplace_back(
          [&] { error = test::errorCompleto([&] { SqliteFactoria::Abrir(archivo); }); });
    for (auto& caja : cajas)
      caja.join();
    for (const auto& error : errores)
      EXPECT_EQ(error, "sin error") << "vuelta " << vuelta;
  }
}

// What the embedded file cannot compute exactly is refused with its reason,
// never run on ten-thousandths; an outside reader of the file (SQLite alone,
// without the host's functions, as the sqlite3 tool) reads decimal views.
TEST_F(SoloSqlite, AmountsItCannotComputeAreRefusedAndOutsideReadersGetDecimals) {
  db->ExecuteSQL("INSERT INTO cvCaja (MachineID, efectivoMN) VALUES (1, -116.5), (2, 0.07)");
  const struct {
    std::string sql, motivo;
  } casos[] = {
      {"INSERT INTO cvCaja (MachineID, efectivoMN) VALUES (3, '3,25')",
       "Monto literal no válido en la sentencia: '3,25'"},
      {"UPDATE cvCaja SET efectivoMN = 1e3", "Monto literal no válido en la sentencia: 1e3"},
      {"SELECT efectivoMN * 0.0000000001 * 0.000000001 FROM cvCaja",
       "Un producto con más de 22 decimales no se calcula exactamente"},
      {"SELECT efectivoMN * efectivoMN FROM cvCaja", "El producto de dos montos no es un monto"},
      {"SELECT printf('%d', efectivoMN) FROM cvCaja", "La función printf no admite montos"},
      {"SELECT efectivoMN || ' Bs.' FROM cvCaja", "Un monto no se une a un texto"},
      {"INSERT INTO hostLog (Mensaje) SELECT efectivoMN FROM cvCaja",
       "Un monto no puede guardarse en una columna que no es de montos"},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.sql);
    const std::string error = test::errorCompleto([&] { db->ExecuteSQL(c.sql); });
    EXPECT_EQ(error.rfind("-2147217900|SqliteFactoria|" + c.motivo, 0), 0u) << error;
  }
  EXPECT_EQ(db->ReadScalar("SELECT CAST(SUM(efectivoMN) AS TEXT) FROM cvCaja"),
            Variant("-116.4300"));
  // What only SQLite takes: aliases in HAVING and inside an ORDER BY term,
  // typed by what they alias, and a collation on a literal amount; and what
  // it refuses, a nesting deeper than its parser takes, refused before it
  // exhausts the stack.
  for (const char* sql : {
           "SELECT COUNT(*) AS Debitos FROM cvCaja HAVING Debitos > 1",
           "SELECT MachineID, SUM(efectivoMN) AS s FROM cvCaja GROUP BY MachineID "
           "ORDER BY s > 0.05 DESC",
           "SELECT MachineID FROM cvCaja WHERE efectivoMN = 0.07 COLLATE NOCASE",
       })
    EXPECT_EQ(CStr(db->ReadScalar(sql)), "2") << sql;
  EXPECT_EQ(test::errorCompleto([&] {
              db->ReadScalar("SELECT " + std::string(5000, '(') + "1" + std::string(5000, ')'));
            }),
            "-2147217900|SqliteFactoria|La sentencia anida más de 100 niveles de paréntesis, "
            "subconsultas u operadores");

  sqlite3* lector = nullptr;
  ASSERT_EQ(sqlite3_open(destino().c_str(), &lector), SQLITE_OK);
  std::string leido;
  sqlite3_exec(
      lector, "SELECT MachineID, efectivoMN FROM v_cvCaja ORDER BY MachineID",
      [](void* d, int, char** v, char**) {
        *static_cast<std::string*>(d) += std::string(v[0]) + "=" + v[1] + ";";
        return 0;
      },
      &leido, nullptr);
  sqlite3_close(lector);
  EXPECT_EQ(leido, "1=-116.5000;2=0.0700;");
}

// A file of the first schema, money as floating point, written as that
// version did: whole amounts stored as INTEGER, the rest as REAL.
TEST(MigracionSqlite, MoneyOfTheFloatingPointSchemaIsConvertedOnceAndExactly) {
  test::CarpetaTemporal carpeta;
  const std::string archivo = (carpeta.ruta() / "antigua.db").string();
  {
    Dialecto antiguo = kDialectoSqlite;
    antiguo.chequeoDinero = "";
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(archivo.c_str(), &db), SQLITE_OK);
    std::string esquema;
    for (const Tabla& t : tablasEsquema())
      esquema += crearTabla(t, antiguo) + ";";
    esquema +=
        "INSERT INTO cvCaja (MachineID, efectivoMN) VALUES (1, 294980071765.4567), (2, 5), "
        "(3, 9999999999999.99), (4, -0.1);"
        "INSERT INTO cvCajaDetalles (idCec, codigoMedio, valorMN, valorNominal) VALUES "
        "(1, 'USD', 36.5, 1);"
        "DELETE FROM cvCaja WHERE MachineID = 4;";
    ASSERT_EQ(sqlite3_exec(db, esquema.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
  }
  for (int vez = 0; vez < 2; ++vez) {
    SCOPED_TRACE(vez ? "segunda apertura" : "primera apertura");
    auto db = SqliteFactoria::Abrir(archivo);
    EXPECT_EQ(CLng(db->ReadScalar("PRAGMA user_version")), SqliteFactoria::kVersionEsquema);
    const auto efectivo = [&](int maquina) {
      return db->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE MachineID = ?", {maquina});
    };
    EXPECT_EQ(efectivo(1), Variant(cur("294980071765.4567")));
    EXPECT_EQ(efectivo(2), Variant(cur("5")));
    EXPECT_EQ(efectivo(3), Variant(cur("9999999999999.99")));
    EXPECT_EQ(db->ReadScalar("SELECT valorMN FROM cvCajaDetalles"), Variant(cur("36.5")));
    EXPECT_EQ(CLng(db->ReadScalar("PRAGMA foreign_keys")), 1);
  }
  // The new rows check the range, and identities go on after the deleted one.
  auto db = SqliteFactoria::Abrir(archivo);
  EXPECT_EQ(test::numeroError([&] {
              db->ExecuteSQL("UPDATE cvCaja SET efectivoMN = efectivoMN * 10000 WHERE id = 3");
            }),
            6);
  db->ExecuteSQL("INSERT INTO cvCaja (MachineID) VALUES (5)");
  EXPECT_EQ(CLng(db->ReadScalar("SELECT IDENT_CURRENT('cvCaja')")), 5);
}

// Server-only behaviour: connecting, and losing the connection mid-save.
class SoloPostgres : public ::testing::Test, protected test::ConBase {
 protected:
  SoloPostgres() : ConBase(test::Motor::Postgres) {}
  void SetUp() override {
    if (!db)
      GTEST_SKIP() << "sin servidor PostgreSQL de prueba (CAJA_PRUEBA_PG)";
  }
};

// Deferred writes go with the next read, in their order: the read sees
// them, ExecuteSQL returns 0 for them, and one that fails is raised by that
// read, with its own amounts, before the read runs; a rollback drops what
// waits, and a commit sends it.
TEST_F(SoloPostgres, DeferredWritesGoWithTheNextReadInOrder) {
  auto pg = PostgresFactoria::Conectar(destino());
  pg->DiferirEscrituras(true);
  const std::string insertar = "INSERT INTO cvCaja (efectivoMN, MachineID) VALUES (?, ?)";
  const std::string sumar = "UPDATE cvCaja SET efectivoMN = efectivoMN + ? WHERE MachineID = 1";
  pg->BeginTrans();
  EXPECT_EQ(pg->ExecuteSQL(insertar, test::valores(cur("1.5"), 1)), 0);
  EXPECT_EQ(pg->ExecuteSQL(sumar, test::valores(cur("2.25"))), 0);
  EXPECT_EQ(pg->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE MachineID = 1"),
            Variant(cur("3.75")));
  pg->ExecuteSQL(sumar, test::valores(cur("922337203685477")));
  const std::string error =
      test::errorCompleto([&] { pg->ReadScalar("SELECT COUNT(*) FROM cvCaja"); });
  EXPECT_EQ(error.rfind("6|", 0), 0u) << error;
  EXPECT_NE(error.find("922337203685477"), std::string::npos) << error;
  pg->Rollback();
  pg->BeginTrans();
  pg->ExecuteSQL(insertar, test::valores(cur("7"), 2));
  pg->Rollback();
  pg->BeginTrans();
  pg->ExecuteSQL(insertar, test::valores(cur("9"), 3));
  pg->CommitTrans();
  EXPECT_EQ(contar("SELECT COUNT(*) FROM cvCaja"), 1);
  EXPECT_EQ(db->ReadScalar("SELECT efectivoMN FROM cvCaja WHERE MachineID = 3"), Variant(cur("9")));
}

// A failed connection says why in one line; a connection lost in the middle
// of a transaction is a clear error and leaves nothing half saved.
TEST_F(SoloPostgres, ConnectionFailuresAreClearAndLeaveNothing) {
  const std::string malaBase = destino() + "_no_existe";
  const std::string error = test::errorCompleto([&] { PostgresFactoria::Conectar(malaBase); });
  EXPECT_EQ(error, "-2147217843|PostgresFactoria|No se pudo conectar con la base de datos " +
                       malaBase + ": la base de datos no existe");
  const std::string sinServidor = test::errorCompleto(
      [&] { PostgresFactoria::Conectar("postgresql://127.0.0.1:1/caja?connect_timeout=2"); });
  EXPECT_NE(sinServidor.find(": el servidor no responde"), std::string::npos) << sinServidor;
  EXPECT_EQ(sinServidor.find('\n'), std::string::npos);
  auto caida = otraConexion();
  const Variant pid = caida->ReadScalar("SELECT pg_backend_pid()");
  caida->BeginTrans();
  caida->ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, ?)", {Variant(1)});
  db->ReadScalar("SELECT pg_terminate_backend(?)", {pid});
  const std::string perdida = test::errorCompleto(
      [&] { caida->ExecuteSQL("INSERT INTO CVCaja (efectivoMN, MachineID) VALUES (0, 2)"); });
  EXPECT_EQ(
      perdida.rfind("-2147217843|PostgresFactoria|Se perdió la conexión con la base de datos", 0),
      0u)
      << perdida;
  EXPECT_EQ(CLng(db->ReadScalar("SELECT COUNT(*) FROM cvCaja")), 0);
}

}  // namespace
}  // namespace caja
