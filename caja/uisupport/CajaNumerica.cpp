#include "caja/uisupport/CajaNumerica.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QRegularExpressionValidator>
#include <QTimer>

#include "caja/base/Decimal.h"
#include "caja/base/Formato.h"
#include "caja/base/Regional.h"
#include "caja/uisupport/Protegido.h"

namespace caja {

CajaNumerica::CajaNumerica(QWidget* parent) : QLineEdit(parent) {
  const QString decimal = QRegularExpression::escape(QString(QChar(regional().separadorDecimal)));
  setValidator(new QRegularExpressionValidator(
      QRegularExpression("-?[0-9]{0,14}(" + decimal + "[0-9]{0,4})?"), this));
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

// The listeners of the box's signals run inside these handlers: each runs
// protected, so that no error of theirs reaches Qt.
void CajaNumerica::keyPressEvent(QKeyEvent* evento) {
  protegido([&] {
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
      case Qt::Key_Comma:
      case Qt::Key_Period:
        // The cashier's decimal key, whichever the keyboard has, is the
        // regional decimal separator; a grouping separator is never typed.
        evento->accept();
        insert(QString(QChar(regional().separadorDecimal)));
        emit textEdited(text());
        return;
      default:
        QLineEdit::keyPressEvent(evento);
    }
  });
}

void CajaNumerica::focusInEvent(QFocusEvent* evento) {
  QLineEdit::focusInEvent(evento);
  QTimer::singleShot(0, this, &QLineEdit::selectAll);
  protegido([&] { emit enfocada(); });
}

void CajaNumerica::focusOutEvent(QFocusEvent* evento) {
  QLineEdit::focusOutEvent(evento);
  if (evento->reason() != Qt::ActiveWindowFocusReason && evento->reason() != Qt::PopupFocusReason)
    protegido([&] { emit dejada(); });
}

}  // namespace caja
