#include "base/Variant.h"

namespace caja {

bool Variant::isNumeric() const {
  switch (type()) {
    case VarType::Boolean:
    case VarType::Integer:
    case VarType::Long:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Date:
      return true;
    default:
      return false;
  }
}

}  // namespace caja
