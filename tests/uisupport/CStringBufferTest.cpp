#include "caja/uisupport/CStringBuffer.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/support/Ayudas.h"

namespace caja {
namespace {

using test::numeroError;

// Each row: a buffer holding `inicial`, one operation, then its value,
// length and capacity (blocks of 65,536).
TEST(CStringBuffer, OperationsOnTheBuffer) {
  std::int32_t cuenta = 0;
  const struct {
    const char* nombre;
    std::string inicial;
    std::function<void(CStringBuffer&)> op;
    std::string valor;
    std::int32_t largo, capacidad;
  } casos[] = {
      {"new", "", [](CStringBuffer&) {}, "", 0, 65536},
      {"appendLN", "abc", [](CStringBuffer& b) { b.appendLN("d"); }, "abc\r\nd", 6, 65536},
      {"Remove inside", "abcdefghij", [&](CStringBuffer& b) { b.Remove(3, cuenta = 2); },
       "abefghij", 8, 65536},
      {"Remove past the end", "abcdefghij", [&](CStringBuffer& b) { b.Remove(5, cuenta = 5); },
       "abcd", 4, 65536},
      {"Insert", "abcd", [](CStringBuffer& b) { b.Insert(2, "xy"); }, "axybcd", 6, 65536},
      // As long as the contents: appended, by design.
      {"Insert as long", "abcd", [](CStringBuffer& b) { b.Insert(2, "wxyz"); }, "abcdwxyz", 8,
       65536},
      {"Insert at the end", "abcd", [](CStringBuffer& b) { b.Insert(5, "e"); }, "abcde", 5, 65536},
      {"grows one block", "", [](CStringBuffer& b) { b.Append(std::string(200000, 'x')); },
       std::string(131072, 'x'), 200000, 131072},
      {"next text does not fit", std::string(65530, 'a'),
       [](CStringBuffer& b) { b.Append("0123456789"); }, std::string(65530, 'a') + "0123456789",
       65540, 131072},
      // Replace works on the whole block: two more characters, two more of capacity.
      {"Replace", "a-b-c", [](CStringBuffer& b) { b.Replace("-", "--"); }, "a--b--c", 7, 65538},
      {"Replace in an empty one recounts from the first NUL", "",
       [](CStringBuffer& b) { b.Replace("x", "y"); }, std::string(65536, '\0'), 65536, 65536},
      {"value write", "hola mundo", [](CStringBuffer& b) { b.value("chao"); }, "chao", 4, 65536},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.nombre);
    CStringBuffer b;
    b.Append(c.inicial);
    c.op(b);
    EXPECT_EQ(b.value(), c.valor);
    EXPECT_EQ(b.length(), c.largo);
    EXPECT_EQ(b.capacity(), c.capacidad);
  }
  EXPECT_EQ(cuenta, 6);  // Remove hands back the count it removed past the end
}

TEST(CStringBuffer, ErrorsOfPositionAndOfAReplacedNul) {
  CStringBuffer b;
  b.Append("abcd");
  EXPECT_EQ(numeroError([&] { b.Insert(7, "x"); }), 5);
  b.Replace(std::string(1, '\0'), " ");
  EXPECT_EQ(b.length(), -1);
  EXPECT_EQ(numeroError([&] { b.value(); }), 5);
}

}  // namespace
}  // namespace caja
