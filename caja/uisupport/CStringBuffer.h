#pragma once

#include <cstdint>
#include <string>

#include "caja/base/Objeto.h"

namespace caja {

// A growable text buffer for long SQL and messages: the text in use followed
// by NUL fill up to the capacity, grown one block of 65,536 characters at a
// time. Positions are 1-based. The cash movement's statements, its only
// users, never reach the boundaries below; they are kept as the buffer's
// documented behaviour, so that a longer statement fails the same known way:
// - growing adds one block however large the addition, so a text longer than
//   the free room plus a block is cut at the buffer's end while `length`
//   still counts it whole;
// - `appendLN` puts the line break before the text;
// - `Remove` reaching the end also removes the last character when
//   start + count equals the length, and rewrites `count`;
// - `Insert` of a text exactly as long as the contents appends it instead;
// - `Replace` takes an empty text for a full buffer, and a buffer with no
//   NUL gets length −1 (reading `value` then raises error 5).
// Position arithmetic is 32-bit with overflow raising error 6.
class CStringBuffer : public Objeto {
 public:
  static constexpr std::int32_t kBloque = 0x10000;

  CStringBuffer();

  void Append(const std::string& texto);
  void appendLN(const std::string& texto);
  void Remove(std::int32_t inicio, std::int32_t& cuenta);
  void Insert(std::int32_t posicion, const std::string& texto);
  void Replace(const std::string& buscar, const std::string& poner);
  std::string value() const;
  void value(const std::string& texto);

  std::int32_t length() const { return largo_; }
  std::int32_t capacity() const { return capacidad_; }

 private:
  void crear();
  void asegurarEspacio(std::int32_t n);
  // Overwrites from `posicion` without ever extending the buffer.
  void sobrescribir(std::int32_t posicion, const std::string& texto);
  std::string medio(std::int32_t posicion, std::int32_t cuantos) const;

  std::string buffer_;
  std::int32_t largo_ = 0;
  std::int32_t capacidad_ = 0;
};

}  // namespace caja
