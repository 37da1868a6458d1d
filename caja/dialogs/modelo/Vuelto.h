#pragma once

#include <memory>

#include "caja/base/Collection.h"
#include "caja/base/Currency.h"
#include "caja/movement/CDetalleIngreso.h"

namespace caja {

class CobroVarelta;

// The change object of a collection: how the change is handed back. This
// default gives the whole change as one national-cash line and nothing to
// credit; the change-split dialog (frmDefinirVuelto) replaces it when the shop
// splits or credits change.
class Vuelto {
 public:
  virtual ~Vuelto() = default;
  // Breaks `monto`, the change of the collection `cobro`, down; false when
  // the cashier cancels. Sets the amount that may be credited to the customer.
  virtual bool detallarVuelto(const CobroVarelta& cobro, Currency monto, Currency& acreditable);
  // The change lines; amounts negative, as money leaving the drawer.
  virtual std::shared_ptr<Collection<CDetalleIngreso>> detalles() const { return detalles_; }

 protected:
  std::shared_ptr<Collection<CDetalleIngreso>> detalles_ =
      std::make_shared<Collection<CDetalleIngreso>>();
};

}  // namespace caja
