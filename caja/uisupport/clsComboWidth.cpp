#include "caja/uisupport/clsComboWidth.h"

#include "caja/uisupport/Protegido.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QEvent>
#include <QFontMetrics>
#include <QScreen>

#include "caja/base/Conversiones.h"

namespace caja {

namespace {
constexpr int kMargenItem = 8;
constexpr int kMargenPantalla = 16;
}  // namespace

clsComboWidth::clsComboWidth(QComboBox* combo) : QObject(combo), combo_(combo) {
  // The list's container is shown when the list drops down.
  combo_->view()->window()->installEventFilter(this);
}

void clsComboWidth::AnchoDesplegable(int ancho) {
  combo_->view()->setMinimumWidth(ancho);
}

int clsComboWidth::AnchoDesplegable() const {
  return combo_->view()->minimumWidth();
}

void clsComboWidth::AjustarAncho(const Variant& maxAncho) {
  const QFontMetrics medida(combo_->font());
  int mayor = 0;
  for (int i = 0; i < combo_->count(); ++i)
    mayor = std::max(mayor, medida.boundingRect(combo_->itemText(i)).width() + kMargenItem);
  int limite = CLng(maxAncho);
  if (limite <= 0)
    limite = combo_->screen()->geometry().width() - kMargenPantalla;
  mayor = std::min(mayor, limite);
  mayor = std::max(mayor, combo_->width());
  AnchoDesplegable(mayor);
}

bool clsComboWidth::eventFilter(QObject* objeto, QEvent* evento) {
  if (evento->type() == QEvent::Show)
    protegido([this] { AjustarAncho(Variant(std::int16_t{-1})); });
  return QObject::eventFilter(objeto, evento);
}

}  // namespace caja
