#pragma once

#include <QDialog>

#include "caja/base/Currency.h"

class QLabel;
class QLineEdit;
class QTimer;

namespace caja {

// The change to hand back, shown after an accepted collection. Any key (kept
// from every other control), a click on its texts or its timer closes it.
class frmShowVuelto : public QDialog {
  Q_OBJECT

 public:
  // Shows the window modally for a positive change; nothing for zero or less.
  // With a non-zero "LockVuelto" the timer stays off and only the cashier closes it.
  static void ShowVuelto(Currency monto, QWidget* parent = nullptr);

  static constexpr int kMilisegundos = 4000;

 protected:
  void keyPressEvent(QKeyEvent* evento) override;
  bool eventFilter(QObject* objeto, QEvent* evento) override;

 private:
  frmShowVuelto(Currency monto, bool bloqueado, QWidget* parent);
  void cerrar();

  QLineEdit* Text1;
  QLabel* Label1;
  QLabel* Label2;
  QTimer* Timer1;
};

}  // namespace caja
