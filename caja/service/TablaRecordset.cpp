#include "caja/service/TablaRecordset.h"

#include "caja/base/CajaError.h"
#include "caja/base/Texto.h"

namespace caja {

namespace {
constexpr long kSinFilaActual = 3021;  // either BOF or EOF is true
}

TablaRecordset::TablaRecordset(std::vector<std::string> columnas, std::vector<Fila> filas)
    : columnas_(std::move(columnas)), filas_(std::move(filas)) {}

bool TablaRecordset::Eof() const {
  return cerrado_ || actual_ >= filas_.size();
}

void TablaRecordset::MoveNext() {
  if (Eof())
    throw CajaError(kSinFilaActual, "Recordset", "No hay un registro actual");
  ++actual_;
}

const TablaRecordset::Fila& TablaRecordset::filaActual() const {
  if (Eof())
    throw CajaError(kSinFilaActual, "Recordset", "No hay un registro actual");
  return filas_[actual_];
}

Variant TablaRecordset::Fields(const std::string& nombre) const {
  for (std::size_t i = 0; i < columnas_.size(); ++i)
    if (equalsIgnoreCase(columnas_[i], nombre))
      return filaActual().at(i);
  throw errorEjecucion(err::kCampoNoEncontrado);
}

Variant TablaRecordset::Fields(int indice) const {
  if (indice < 0 || indice >= FieldCount())
    throw errorEjecucion(err::kCampoNoEncontrado);
  return filaActual().at(static_cast<std::size_t>(indice));
}

int TablaRecordset::FieldCount() const {
  return static_cast<int>(columnas_.size());
}

void TablaRecordset::Close() {
  cerrado_ = true;
}

}  // namespace caja
