#include "caja/base/Formato.h"

#include <gtest/gtest.h>

#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::cur;

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

TEST(Format, DoublesRoundOnTheirDecimalValue) {
  // 1.005 is 1.00499999... in binary; the decimal value 1.005 is what is rounded.
  EXPECT_EQ(Format(Variant(1.005), kFormatoMonto), "1.01");
  EXPECT_EQ(Format(Variant(2.675), kFormatoMonto), "2.68");
}

TEST(Format, NullEmptyAndText) {
  EXPECT_EQ(Format(Variant::Null(), kFormatoMonto), "");
  EXPECT_EQ(Format(Variant("abc"), kFormatoMonto), "abc");
  EXPECT_EQ(Format(Variant("1234.5"), kFormatoMonto), "1,234.50");
}

TEST(Format, WritesTheRegionalSeparators) {
  test::RegionalTemporal coma({',', '.', "#,##0.00 Bs"});
  EXPECT_EQ(Format(Variant(cur("1234.5")), kFormatoMonto), "1.234,50");
  EXPECT_EQ(Format(Variant(cur("1234.5")), kFormatoMoneda), "1.234,50 Bs");
  EXPECT_EQ(LeerMonto("1.234,50 Bs"), cur("1234.5"));
}

// What a label shows, read back: the symbol's own dot is not a decimal point.
TEST(LeerMonto, ReadsBackWhatALabelShows) {
  EXPECT_EQ(LeerMonto("Bs. 1,234.50"), cur("1234.5"));
  EXPECT_EQ(LeerMonto("-Bs. 0.01"), cur("-0.01"));
  EXPECT_EQ(LeerMonto("(Bs. 5.00)"), cur("-5"));
  EXPECT_EQ(test::numeroError([] { LeerMonto("Bs."); }), 13);
}

}  // namespace
}  // namespace caja
