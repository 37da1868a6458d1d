#include "caja/base/Collection.h"

#include <gtest/gtest.h>

#include "caja/base/Variant.h"
#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::numeroError;

struct Cosa {
  int n;
};

TEST(Collection, KeysIgnoreCaseAndKeepInsertionOrder) {
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
  c.Remove("Usd");
  EXPECT_EQ(c.Count(), 2);
  EXPECT_EQ(c.Find("USD"), nullptr);
}

TEST(Collection, ErrorNumbers) {
  Collection<Cosa> c;
  c.Add(std::make_shared<Cosa>(Cosa{1}), "USD");
  EXPECT_EQ(numeroError([&] { c.Add(std::make_shared<Cosa>(Cosa{2}), "usd"); }), 457);
  EXPECT_EQ(numeroError([&] { c.Item("EUR"); }), 5);
  EXPECT_EQ(numeroError([&] { c.Item(0); }), 5);
  EXPECT_EQ(numeroError([&] { c.Item(2); }), 5);
  EXPECT_EQ(c.Count(), 1);
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
