#pragma once

#include <QLineEdit>

#include "caja/base/Currency.h"

namespace caja {

// The numeric box of the dialogs: an amount typed with the regional decimal
// separator. Space and Enter are the cashier's keys, reported as signals and
// kept from the box; the whole text is selected on entry so typing replaces it.
class CajaNumerica : public QLineEdit {
  Q_OBJECT

 public:
  explicit CajaNumerica(QWidget* parent = nullptr);

  // The amount typed; 0 for an empty or unreadable text.
  Currency valor() const;
  void setValor(Currency valor);

 signals:
  void espacio();
  void enter();
  void enfocada();
  // Focus left for another control of the same window (not for a message box).
  void dejada();

 protected:
  void keyPressEvent(QKeyEvent* evento) override;
  void focusInEvent(QFocusEvent* evento) override;
  void focusOutEvent(QFocusEvent* evento) override;
};

}  // namespace caja
