#include "caja/uisupport/CStringBuffer.h"

#include <gtest/gtest.h>

#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::numeroError;

CStringBuffer con(const std::string& texto) {
  CStringBuffer b;
  b.Append(texto);
  return b;
}

TEST(CStringBuffer, NewBufferIsEmptyWithOneBlock) {
  CStringBuffer b;
  EXPECT_EQ(b.value(), "");
  EXPECT_EQ(b.capacity(), 65536);
}

TEST(CStringBuffer, AppendLnPutsTheBreakBeforeTheText) {
  CStringBuffer b = con("abc");
  b.appendLN("d");
  EXPECT_EQ(b.value(), "abc\r\nd");
}

TEST(CStringBuffer, RemoveInsideAndAtTheEnd) {
  CStringBuffer b = con("abcdefghij");
  std::int32_t cuenta = 2;
  b.Remove(3, cuenta);
  EXPECT_EQ(b.value(), "abefghij");
  EXPECT_EQ(cuenta, 2);

  CStringBuffer c = con("abcdefghij");
  cuenta = 5;
  c.Remove(5, cuenta);
  EXPECT_EQ(c.value(), "abcd");
  EXPECT_EQ(cuenta, 6);
}

TEST(CStringBuffer, InsertBoundaries) {
  CStringBuffer b = con("abcd");
  b.Insert(2, "xy");
  EXPECT_EQ(b.value(), "axybcd");

  CStringBuffer igual = con("abcd");
  igual.Insert(2, "wxyz");  // as long as the contents: appended, by design
  EXPECT_EQ(igual.value(), "abcdwxyz");

  CStringBuffer alFinal = con("abcd");
  alFinal.Insert(5, "e");
  EXPECT_EQ(alFinal.value(), "abcde");
  EXPECT_EQ(numeroError([&] { alFinal.Insert(7, "x"); }), 5);
}

TEST(CStringBuffer, GrowsOneBlockAtATime) {
  CStringBuffer b;
  const std::string largo(200000, 'x');
  b.Append(largo);
  EXPECT_EQ(b.length(), 200000);
  EXPECT_EQ(b.capacity(), 131072);
  EXPECT_EQ(b.value(), std::string(131072, 'x'));
}

TEST(CStringBuffer, GrowsWhenTheNextTextDoesNotFit) {
  CStringBuffer b = con(std::string(65530, 'a'));
  b.Append("0123456789");
  EXPECT_EQ(b.capacity(), 131072);
  EXPECT_EQ(b.value().substr(65528), "aa0123456789");
}

TEST(CStringBuffer, ReplaceRecountsFromTheFirstNul) {
  CStringBuffer b = con("a-b-c");
  b.Replace("-", "--");
  EXPECT_EQ(b.value(), "a--b--c");

  CStringBuffer vacio;
  vacio.Replace("x", "y");
  EXPECT_EQ(vacio.length(), 65536);
  EXPECT_EQ(vacio.value(), std::string(65536, '\0'));
}

TEST(CStringBuffer, ReplaceOfEveryNulLeavesLengthMinusOne) {
  CStringBuffer b = con("ab");
  b.Replace(std::string(1, '\0'), " ");
  EXPECT_EQ(b.length(), -1);
  EXPECT_EQ(numeroError([&] { b.value(); }), 5);
}

TEST(CStringBuffer, ValueWriteStartsOver) {
  CStringBuffer b = con("hola mundo");
  b.value("chao");
  EXPECT_EQ(b.value(), "chao");
  EXPECT_EQ(b.length(), 4);
}

}  // namespace
}  // namespace caja
