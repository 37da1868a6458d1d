#pragma once

#include <cstdint>
#include <string>

#include "caja/movement/CVarelta.h"

namespace caja {

// Parks the payment lines of an unsaved movement under a host key
// (`saveMovsCaja`, `saveDetallesCaja`, `saveDenominaciones`). `load` brings
// them back and consumes the entry; `revertir` discards it. No transaction:
// a failure part-way leaves the rows written so far.
class TempVarelta : public Objeto {
 public:
  std::int32_t Id = 0;
  std::string Key;

  // Stages every in-memory line, zero amounts included; registers issuers.
  void Save(const std::string& Key, CVarelta& mov);
  // Appends the staged lines to `mov.colDetalles`; silent for an unknown key.
  void load(const std::string& Key, CVarelta& mov);
  // Raises 10001 for an unknown key.
  void revertir(const std::string& Referencia);
};

}  // namespace caja
