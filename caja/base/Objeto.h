#pragma once

#include "caja/base/Exporta.h"

namespace caja {

// Root of every object a Variant can hold: host objects, pictures, the
// component's own classes when handed to a host procedure. Callers recover the
// interface they need with dynamic_pointer_cast, as a late-bound call would.
class CAJA_EXPORT Objeto {
 public:
  virtual ~Objeto() = default;
};

}  // namespace caja
