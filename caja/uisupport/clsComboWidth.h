#pragma once

#include <QObject>

#include "caja/base/Variant.h"

class QComboBox;

namespace caja {

// Attached to one combo box: each time its list drops down, widens the list
// so that its longest item shows, within the screen, and never narrower than
// the box.
class clsComboWidth : public QObject {
  Q_OBJECT

 public:
  explicit clsComboWidth(QComboBox* combo);

  QComboBox* ComboBox() const { return combo_; }
  // The drop-down list's width in pixels.
  void AnchoDesplegable(int ancho);
  int AnchoDesplegable() const;
  // Widest item + 8 pixels, limited to `maxAncho` (0 or less: the screen
  // width − 16), and at least the box's own width.
  void AjustarAncho(const Variant& maxAncho);

 protected:
  bool eventFilter(QObject* objeto, QEvent* evento) override;

 private:
  QComboBox* combo_;
};

}  // namespace caja
