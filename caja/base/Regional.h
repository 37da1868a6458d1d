#pragma once

#include <string>

#include "caja/base/Exporta.h"

namespace caja {

// The machine's regional settings as the host language sees them. One value
// for the whole process, set by the host; the payment-line text form only
// round-trips with '.', so that is the default.
struct CAJA_INTERNO Regional {
  char separadorDecimal = '.';
  char separadorMiles = ',';
  // The "Currency" named format: a display pattern whose number part follows
  // the same rules as the explicit patterns.
  std::string formatoMoneda = "Bs. #,##0.00";
};

CAJA_INTERNO const Regional& regional();
CAJA_INTERNO void setRegional(const Regional& valor);

}  // namespace caja
