#pragma once

#include <string>

#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"
#include "caja/base/Variant.h"

namespace caja {

// A forward-only recordset as the host hands it out: fields by name (letter
// case ignored) or by position, an end-of-set test and a move to the next row.
// An unknown field raises 3265; reading a field at the end of the set raises 3021.
class CAJA_EXPORT Recordset : public Objeto {
 public:
  virtual bool Eof() const = 0;
  virtual void MoveNext() = 0;
  virtual Variant Fields(const std::string& nombre) const = 0;
  virtual Variant Fields(int indice) const = 0;
  virtual int FieldCount() const = 0;
  virtual void Close() = 0;
};

}  // namespace caja
