#pragma once

#include <string>
#include <vector>

#include "caja/base/Exporta.h"
#include "caja/service/Recordset.h"

namespace caja {

// A recordset over rows already read into memory. The SQLite host answers with
// it so that no statement stays open between calls, and tests script answers with it.
class CAJA_INTERNO TablaRecordset : public Recordset {
 public:
  using Fila = std::vector<Variant>;

  TablaRecordset(std::vector<std::string> columnas, std::vector<Fila> filas);

  bool Eof() const override;
  void MoveNext() override;
  Variant Fields(const std::string& nombre) const override;
  Variant Fields(int indice) const override;
  int FieldCount() const override;
  void Close() override;

 private:
  const Fila& filaActual() const;

  std::vector<std::string> columnas_;
  std::vector<Fila> filas_;
  std::size_t actual_ = 0;
  bool cerrado_ = false;
};

}  // namespace caja
