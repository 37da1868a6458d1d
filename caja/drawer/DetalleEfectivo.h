#pragma once

#include <string>

#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"

namespace caja {

// One payment method's amount in a drawer or a drawer transaction: its value
// in national currency and its amount in the method's own unit.
class CAJA_EXPORT DetalleEfectivo : public Objeto {
 public:
  std::string codigoMedio;
  Currency valorNominal;
  Currency valorMN;

  // Always derived from the two amounts, rounded to four decimals; 1 without a
  // nominal amount. The amounts are the single source of the rate.
  double tipoCambio() const;
  // Kept, rounded to four decimals, and never read back: the amounts are what
  // the balance rows store, so a rate set here cannot disagree with them.
  void tipoCambio(double valor);

 private:
  Currency tasaGuardada_;
};

}  // namespace caja
