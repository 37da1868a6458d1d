#include "caja/base/Conversiones.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "caja/base/Collection.h"
#include "caja/base/Currency.h"
#include "caja/base/Formato.h"
#include "caja/base/Variant.h"
#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::cur;
using test::numeroError;

TEST(CLngAndCInt, RoundHalvesToEvenWithinTheirRange) {
  const struct {
    double valor;
    std::int32_t esperado;
  } casos[] = {{2.5, 2},   {3.5, 4},       {-2.5, -2},
               {-3.5, -4}, {2.5000001, 3}, {-2147483648.5, -2147483648}};
  for (const auto& c : casos) {
    SCOPED_TRACE(c.valor);
    EXPECT_EQ(CLng(Variant(c.valor)), c.esperado);
  }
  EXPECT_EQ(CLng(Variant(cur("2.5"))), 2);
  EXPECT_EQ(CLng(Variant("3.5")), 4);
  EXPECT_EQ(numeroError([] { CLng(Variant(2147483647.5)); }), 6);
  EXPECT_EQ(numeroError([] { CLng(Variant(-2147483649.0)); }), 6);
  EXPECT_EQ(numeroError([] { CLng(Variant::Null()); }), 94);
  EXPECT_EQ(numeroError([] { CLng(Variant("abc")); }), 13);
  EXPECT_EQ(CLng(Variant()), 0);
  EXPECT_EQ(CLng(Variant(true)), -1);
  EXPECT_EQ(CLng(Variant(2147483647.0)), 2147483647);
  EXPECT_EQ(CInt(Variant(32766.5)), 32766);
  EXPECT_EQ(CInt(Variant(-32768.5)), -32768);
  EXPECT_EQ(numeroError([] { CInt(Variant(32767.5)); }), 6);
  EXPECT_EQ(numeroError([] { CInt(Variant("40000")); }), 6);
}

TEST(CCur, RoundsTheFifthDecimalHalfToEvenAndOverflowRaisesSix) {
  EXPECT_EQ(CCur(Variant("0.00005")), cur("0"));
  EXPECT_EQ(CCur(Variant("0.00015")), cur("0.0002"));
  EXPECT_EQ(CCur(Variant("-0.00025")), cur("-0.0002"));
  EXPECT_EQ(CCur(Variant("1,234.56789")), cur("1234.5679"));
  EXPECT_EQ(CCur(1.0 / 3.0), cur("0.3333"));
  EXPECT_EQ(CCur(-2.0 / 3.0), cur("-0.6667"));
  EXPECT_EQ(CCur(Variant(true)), cur("-1"));
  EXPECT_EQ(numeroError([] { CCur(1e15); }), 6);
  EXPECT_EQ(numeroError([] { CCur(Variant("922337203685477.58075")); }), 6);
  EXPECT_EQ(CCur(Variant("922337203685477.58065")), cur("922337203685477.5806"));
}

TEST(CDblCBoolAndCStr, HostLanguageTextForms) {
  EXPECT_EQ(CDbl(Variant("1.5e3")), 1500.0);
  EXPECT_EQ(CDbl(Variant(" -2.25 ")), -2.25);
  EXPECT_EQ(numeroError([] { CDbl(Variant("1e400")); }), 6);
  EXPECT_TRUE(CBool(Variant("True")));
  EXPECT_FALSE(CBool(Variant("falso")));
  EXPECT_FALSE(CBool(Variant("0")));
  EXPECT_TRUE(CBool(Variant("-1")));
  EXPECT_FALSE(CBool(Variant()));
  EXPECT_EQ(numeroError([] { CBool(Variant("abc")); }), 13);
  EXPECT_EQ(numeroError([] { CBool(Variant::Null()); }), 94);
  EXPECT_EQ(CStr(Variant(cur("1234.50"))), "1234.5");
  EXPECT_EQ(CStr(Variant(0.1 + 0.2)), "0.3");
  EXPECT_EQ(CStr(Variant(1e20)), "1E+20");
  EXPECT_EQ(CStr(Variant(0.00001)), "1E-05");
  EXPECT_EQ(CStr(Variant(true)), "True");
  EXPECT_EQ(CStr(Variant()), "");
  EXPECT_EQ(numeroError([] { CStr(Variant::Null()); }), 94);
}

TEST(ValAndInt, DotDecimalsWhateverTheRegionAndFloors) {
  const struct {
    const char* texto;
    double esperado;
  } casos[] = {{"  12 34.5xyz", 1234.5},
               {"-1.2.3", -1.2},
               {"", 0.0},
               {"abc", 0.0},
               {"+7", 7.0},
               {"1e3", 1.0},
               {"1-2", 1.0},
               {"1234,5", 1234.0}};
  for (const auto& c : casos) {
    SCOPED_TRACE(c.texto);
    EXPECT_EQ(Val(c.texto), c.esperado);
  }
  test::RegionalTemporal coma({',', '.', "Bs. #,##0.00"});
  EXPECT_EQ(Val("1234,5"), 1234.0);
  EXPECT_EQ(Val("1234.5"), 1234.5);
  EXPECT_EQ(Int(2.5), 2.0);
  EXPECT_EQ(Int(-2.5), -3.0);
  EXPECT_EQ(Int(-2.0), -2.0);
}

TEST(Currency, ParsesMachineTextExactlyOrNotAtAll) {
  EXPECT_EQ(cur("12.37").raw(), 123700);
  EXPECT_EQ(cur("-0.0001").raw(), -1);
  EXPECT_EQ(cur("922337203685477.5807").raw(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(cur("-922337203685477.5808").raw(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(cur("1234.50").toMachineText(), "1234.5");  // trailing zeros dropped
  EXPECT_EQ(cur("100").toMachineText(), "100");
  EXPECT_EQ(cur("-0.05").toMachineText(), "-0.05");
  EXPECT_EQ(Currency::fromRaw(std::numeric_limits<std::int64_t>::min()).toMachineText(),
            "-922337203685477.5808");
  for (const char* malo :
       {"", "-", "1.", ".5", "1.23456", "1,5", "1e3", " 1", "922337203685477.5808", "abc"}) {
    SCOPED_TRACE(malo);
    EXPECT_FALSE(Currency::parse(malo).has_value());
  }
}

TEST(Currency, SumsAreExactIntFloorsAndOverflowRaisesSix) {
  Currency total;
  for (int i = 0; i < 10; ++i)
    total += cur("0.1");
  EXPECT_EQ(total, cur("1"));
  EXPECT_EQ(cur("0.1") * std::int16_t{3}, cur("0.3"));
  EXPECT_EQ(Int(cur("10.9999")), cur("10"));
  EXPECT_EQ(Int(cur("-10.0001")), cur("-11"));
  EXPECT_EQ(Int(cur("-10")), cur("-10"));
  EXPECT_EQ(numeroError([] { (void)(cur("922337203685477.5807") + cur("0.0001")); }), 6);
  EXPECT_EQ(numeroError([] { (void)(cur("-922337203685477.5808") - cur("0.0001")); }), 6);
  EXPECT_EQ(numeroError([] { (void)(-cur("-922337203685477.5808")); }), 6);
  EXPECT_EQ(numeroError([] { (void)(cur("922337203685477") * std::int16_t{2}); }), 6);
  EXPECT_EQ(numeroError([] { (void)Currency::fromUnits(922337203685478); }), 6);
}

TEST(Format, AmountsRoundHalfAwayFromZero) {
  const struct {
    const char* valor;
    std::string_view patron;
    const char* esperado;
  } casos[] = {
      {"1234.565", kFormatoMonto, "1,234.57"},
      {"-1234.565", kFormatoMonto, "-1,234.57"},
      {"0.005", kFormatoMonto, "0.01"},
      {"-0.004", kFormatoMonto, "0.00"},
      {"1234567.891", kFormatoMonto, "1,234,567.89"},
      {"2.5", kFormatoCuenta, "3"},
      {"-2.5", kFormatoCuenta, "-3"},
      {"1000", kFormatoCuenta, "1,000"},
      {"0.4", kFormatoCuenta, "0"},
      {"1234.5", "$#,##0.00", "$1,234.50"},
      {"12.35", kFormatoMoneda, "Bs. 12.35"},
      {"-5", kFormatoMoneda, "-Bs. 5.00"},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(std::string(c.valor) + " " + std::string(c.patron));
    EXPECT_EQ(Format(Variant(cur(c.valor)), c.patron), c.esperado);
  }
}

TEST(Format, DoublesRoundOnTheirDecimalValueNullAndText) {
  // 1.005 is 1.00499999... in binary; the decimal value 1.005 is what is rounded.
  EXPECT_EQ(Format(Variant(1.005), kFormatoMonto), "1.01");
  EXPECT_EQ(Format(Variant(2.675), kFormatoMonto), "2.68");
  EXPECT_EQ(Format(Variant::Null(), kFormatoMonto), "");
  EXPECT_EQ(Format(Variant("abc"), kFormatoMonto), "abc");
  EXPECT_EQ(Format(Variant("1234.5"), kFormatoMonto), "1,234.50");
}

// What a label shows is read back with LeerMonto: the symbol's own dot is not
// a decimal point. Under ',' as decimal separator a '.' groups digits.
TEST(Format, WritesAndReadsBackTheRegionalSeparators) {
  EXPECT_EQ(LeerMonto("Bs. 1,234.50"), cur("1234.5"));
  EXPECT_EQ(LeerMonto("-Bs. 0.01"), cur("-0.01"));
  EXPECT_EQ(LeerMonto("(Bs. 5.00)"), cur("-5"));
  EXPECT_EQ(test::numeroError([] { LeerMonto("Bs."); }), 13);
  test::RegionalTemporal coma({',', '.', "#,##0.00 Bs"});
  EXPECT_EQ(Format(Variant(cur("1234.5")), kFormatoMonto), "1.234,50");
  EXPECT_EQ(Format(Variant(cur("1234.5")), kFormatoMoneda), "1.234,50 Bs");
  EXPECT_EQ(LeerMonto("1.234,50 Bs"), cur("1234.5"));
  EXPECT_EQ(CStr(Variant(cur("1234.5"))), "1234,5");
  EXPECT_EQ(CCur(Variant("1.234,5")), cur("1234.5"));
  EXPECT_EQ(CCur(Variant("5.5")), cur("55"));
}

struct Cosa {
  int n;
};

TEST(Collection, KeysIgnoreCaseKeepInsertionOrderAndRaiseTheirNumbers) {
  Collection<Cosa> c;
  c.Add(std::make_shared<Cosa>(Cosa{1}), "USD");
  c.Add(std::make_shared<Cosa>(Cosa{2}));
  c.Add(std::make_shared<Cosa>(Cosa{3}), "EFE");
  EXPECT_EQ(c.Item("usd")->n, 1);
  EXPECT_EQ(c.Item(2)->n, 2);
  std::vector<int> orden;
  for (const auto& x : c)
    orden.push_back(x->n);
  EXPECT_EQ(orden, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(numeroError([&] { c.Add(std::make_shared<Cosa>(Cosa{2}), "usd"); }), 457);
  EXPECT_EQ(numeroError([&] { c.Item("EUR"); }), 5);
  EXPECT_EQ(numeroError([&] { c.Item(0); }), 5);
  EXPECT_EQ(numeroError([&] { c.Item(4); }), 5);
  c.Remove("Usd");
  EXPECT_EQ(c.Count(), 2);
  EXPECT_EQ(c.Find("USD"), nullptr);
}

TEST(Variant, ObjectAccessRaisesLikeALateBoundCall) {
  struct Otro : Objeto {};
  EXPECT_EQ(numeroError([] { objetoDe<Collection<Cosa>>(Variant()); }), 91);
  EXPECT_EQ(numeroError([] { objetoDe<Collection<Cosa>>(Variant(std::make_shared<Otro>())); }), 13);
  auto c = std::make_shared<Collection<Cosa>>();
  EXPECT_EQ(objetoDe<Collection<Cosa>>(Variant(c)), c);
}

TEST(Fecha, SerialDaysFromTheHostOrigin) {
  EXPECT_EQ(Fecha::fromYmd(1899, 12, 30).serial(), 0.0);
  EXPECT_EQ(Fecha::fromYmd(1900, 1, 1).serial(), 2.0);
  EXPECT_EQ(Fecha::fromYmd(2026, 11, 21).serial(), 46347.0);
  EXPECT_EQ(Fecha(46347.5).toIsoText(), "2026-11-21 12:00:00");
  Fecha leida;
  ASSERT_TRUE(Fecha::parse("2026-11-21 12:00:00", leida));
  EXPECT_EQ(leida.serial(), 46347.5);
  EXPECT_FALSE(Fecha::parse("2026-13-01", leida));
}

}  // namespace
}  // namespace caja
