#include "caja/base/Currency.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::cur;
using test::numeroError;

TEST(Currency, ParsesMachineTextExactly) {
  EXPECT_EQ(cur("12.37").raw(), 123700);
  EXPECT_EQ(cur("-0.0001").raw(), -1);
  EXPECT_EQ(cur("922337203685477.5807").raw(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(cur("-922337203685477.5808").raw(), std::numeric_limits<std::int64_t>::min());
}

TEST(Currency, RefusesTextItCannotHoldExactly) {
  for (const char* malo :
       {"", "-", "1.", ".5", "1.23456", "1,5", "1e3", " 1", "922337203685477.5808", "abc"}) {
    SCOPED_TRACE(malo);
    EXPECT_FALSE(Currency::parse(malo).has_value());
  }
}

TEST(Currency, MachineTextDropsTrailingZeros) {
  EXPECT_EQ(cur("1234.50").toMachineText(), "1234.5");
  EXPECT_EQ(cur("100").toMachineText(), "100");
  EXPECT_EQ(cur("-0.05").toMachineText(), "-0.05");
  EXPECT_EQ(Currency::fromRaw(std::numeric_limits<std::int64_t>::min()).toMachineText(),
            "-922337203685477.5808");
}

TEST(Currency, SumsAreExactWhereDoublesDrift) {
  Currency total;
  for (int i = 0; i < 10; ++i)
    total += cur("0.1");
  EXPECT_EQ(total, cur("1"));
  EXPECT_EQ(cur("0.1") * std::int16_t{3}, cur("0.3"));
}

TEST(Currency, OverflowRaisesErrorSix) {
  EXPECT_EQ(numeroError([] { (void)(cur("922337203685477.5807") + cur("0.0001")); }), 6);
  EXPECT_EQ(numeroError([] { (void)(cur("-922337203685477.5808") - cur("0.0001")); }), 6);
  EXPECT_EQ(numeroError([] { (void)(-cur("-922337203685477.5808")); }), 6);
  EXPECT_EQ(numeroError([] { (void)(cur("922337203685477") * std::int16_t{2}); }), 6);
  EXPECT_EQ(numeroError([] { (void)Currency::fromUnits(922337203685478); }), 6);
}

TEST(Currency, IntFloorsTowardMinusInfinity) {
  EXPECT_EQ(Int(cur("10.9999")), cur("10"));
  EXPECT_EQ(Int(cur("-10.0001")), cur("-11"));
  EXPECT_EQ(Int(cur("-10")), cur("-10"));
}

}  // namespace
}  // namespace caja
