#include "uisupport/CajaNumerica.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QRegularExpressionValidator>
#include <QTimer>

#include "base/Decimal.h"
#include "base/Formato.h"
#include "base/Regional.h"

namespace caja {

CajaNumerica::CajaNumerica(QWidget* parent) : QLineEdit(parent) {
  const QString decimal = QRegularExpression::escape(QString(QChar(regional().separadorDecimal)));
  setValidator(new QRegularExpressionValidator(
      QRegularExpression("-?[0-9]{0,15}(" + decimal + "[0-9]{0,4})?"), this));
  setAlignment(Qt::AlignRight);
  setValor(Currency{});
}

Currency CajaNumerica::valor() const {
  const auto d = Decimal::parseRegional(text().toStdString());
  if (!d)
    return Currency{};
  try {
    return d->toCurrency();
  } catch (const std::exception&) {
    return Currency{};
  }
}

void CajaNumerica::setValor(Currency valor) {
  setText(QString::fromStdString(Format(Variant(valor), "0.00##")));
}

void CajaNumerica::keyPressEvent(QKeyEvent* evento) {
  switch (evento->key()) {
    case Qt::Key_Space:
      evento->accept();
      emit espacio();
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      evento->accept();
      emit enter();
      return;
    default:
      QLineEdit::keyPressEvent(evento);
  }
}

void CajaNumerica::focusInEvent(QFocusEvent* evento) {
  QLineEdit::focusInEvent(evento);
  QTimer::singleShot(0, this, &QLineEdit::selectAll);
  emit enfocada();
}

void CajaNumerica::focusOutEvent(QFocusEvent* evento) {
  QLineEdit::focusOutEvent(evento);
  if (evento->reason() != Qt::ActiveWindowFocusReason && evento->reason() != Qt::PopupFocusReason)
    emit dejada();
}

}  // namespace caja
