#include "caja/host/IniSettingsStore.h"

#include <gtest/gtest.h>

#include <fstream>

#include "caja/base/Conversiones.h"

#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::cur;

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

// Both decimal separators, under either regional setting; a missing key
// gives the default itself, never its regional text read back.
TEST_F(IniSettings, CurrencyAcceptsCommaOrDotUnderAnyRegionalSetting) {
  escribirIni("[frmVarelta]\nTolerancia=5,5\nRedondeoVuelto=5.5\nMaximaUnidadMonetaria=mucho\n");
  for (const Regional& r : {Regional{}, Regional{',', '.', "Bs. #,##0.00"}}) {
    SCOPED_TRACE(std::string(1, r.separadorDecimal));
    test::RegionalTemporal regional(r);
    EXPECT_EQ(lmGetSettingCur("ZOR", "frmVarelta", "Tolerancia", cur("0")), cur("5.5"));
    EXPECT_EQ(lmGetSettingCur("ZOR", "frmVarelta", "RedondeoVuelto", cur("0.01")), cur("5.5"));
    EXPECT_EQ(lmGetSettingCur("ZOR", "frmVarelta", "MaximaUnidadMonetaria", cur("10000")),
              cur("10000"));
    EXPECT_EQ(lmGetSettingCur("ZOR", "frmVarelta", "NoEsta", cur("0.01")), cur("0.01"));
  }
}

TEST_F(IniSettings, SavedMultiLineValuesReadBackWholeFromANewStore) {
  const std::string linea = "<DIC>\r\nEFE\r\n10.5\r\nC:\\tmp\r\n<DIC/>\r\n";
  store_->SaveSetting("ZOR", "frmVarelta\\Detalles", "1", linea);
  store_->SaveSetting("ZOR", "frmVarelta\\Detalles", "2", "otra");
  store_->SaveSetting("ZOR", "frmVarelta", "AutoFill", "1");
  IniSettingsStore otro(instalacion().string(), usuario().string());
  const auto pares = otro.GetAllSettings("zor", "FRMVARELTA\\detalles");
  ASSERT_TRUE(pares.has_value());
  ASSERT_EQ(pares->size(), 2u);
  EXPECT_EQ((*pares)[0].second, linea);
  EXPECT_EQ((*pares)[1], (std::pair<std::string, std::string>{"2", "otra"}));
  EXPECT_FALSE(otro.GetAllSettings("ZOR", "NoExiste").has_value());
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

TEST_F(IniSettings, SaveReplacesTheValueInPlace) {
  store_->SaveSetting("ZOR", "CONFIG\\FormPlacement\\frmVarelta", "Left", "10");
  store_->SaveSetting("ZOR", "config\\formplacement\\FRMVARELTA", "LEFT", "20");
  EXPECT_EQ(store_->GetSetting("ZOR", "CONFIG\\FormPlacement\\frmVarelta", "Left", "-100"), "20");
  const auto pares = store_->GetAllSettings("ZOR", "CONFIG\\FormPlacement\\frmVarelta");
  EXPECT_EQ(pares->size(), 1u);
}

}  // namespace
}  // namespace caja
