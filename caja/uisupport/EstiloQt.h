#pragma once

#include <QIcon>
#include <QWidget>
#include <memory>

#include "caja/base/Objeto.h"
#include "caja/service/ObjetosHost.h"

namespace caja {

// A host theme that can style Qt forms. Hosts whose `TemaUI` implements it
// get every dialog of the component styled; others leave Qt's own look.
class TemaUIQt : public TemaUI {
 public:
  virtual void estilizar(QWidget& formulario) = 0;
};

// Styles a form with the theme the host gave at `Init`, if it can.
void aplicarEstilo(QWidget& formulario);
// The icon of a picture from the host's `loadFileIcon`; empty when there is none.
QIcon iconoDe(const std::shared_ptr<Objeto>& imagen);

}  // namespace caja
