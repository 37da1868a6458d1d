#include "caja/dialogs/frmShowVuelto.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QVBoxLayout>

#include "caja/base/Conversiones.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"
#include "caja/uisupport/EstiloQt.h"
#include "caja/uisupport/Protegido.h"
#include "caja/uisupport/lmFormPlacement.h"

namespace caja {

void frmShowVuelto::ShowVuelto(Currency monto, QWidget* parent) {
  if (monto <= Currency{})
    return;
  const std::int16_t bloqueo =
      CInt(Variant(Val(CStr(lmGetSetting(kAppZOR, kSeccionVarelta, "LockVuelto", "1")))));
  frmShowVuelto ventana(monto, bloqueo != 0, parent);
  ventana.exec();
}

frmShowVuelto::frmShowVuelto(Currency monto, bool bloqueado, QWidget* parent) : QDialog(parent) {
  setObjectName("frmShowVuelto");
  setWindowTitle("Vuelto");
  Label1 = new QLabel("Vuelto", this);
  Label1->setObjectName("Label1");
  Text1 = new QLineEdit(QString::fromStdString(FormatearVuelto(Variant(monto))), this);
  Text1->setObjectName("Text1");
  Text1->setReadOnly(true);
  Text1->setAlignment(Qt::AlignCenter);
  Text1->setFocusPolicy(Qt::NoFocus);
  QFont grande = Text1->font();
  grande.setPointSize(grande.pointSize() + 14);
  grande.setBold(true);
  Text1->setFont(grande);
  Label2 = new QLabel("Pulse cualquier tecla para continuar", this);
  Label2->setObjectName("Label2");
  auto* disposicion = new QVBoxLayout(this);
  for (QWidget* w : std::initializer_list<QWidget*>{Label1, Text1, Label2}) {
    disposicion->addWidget(w);
    w->installEventFilter(this);
  }
  Timer1 = new QTimer(this);
  Timer1->setObjectName("Timer1");
  Timer1->setSingleShot(true);
  Timer1->setInterval(kMilisegundos);
  connect(Timer1, &QTimer::timeout, this, protegerSlot([this] { cerrar(); }));
  if (!bloqueado)
    Timer1->start();
  aplicarEstilo(*this);
}

void frmShowVuelto::keyPressEvent(QKeyEvent* evento) {
  evento->accept();  // swallowed: the key reaches nothing else
  protegido([this] { cerrar(); });
}

bool frmShowVuelto::eventFilter(QObject* objeto, QEvent* evento) {
  if (evento->type() == QEvent::MouseButtonPress &&
      (objeto == Label1 || objeto == Label2 || objeto == Text1)) {
    protegido([this] { cerrar(); });
    return true;
  }
  return QDialog::eventFilter(objeto, evento);
}

void frmShowVuelto::cerrar() {
  Timer1->stop();
  GuardarPosicion(*this);
  hide();
  done(QDialog::Accepted);
}

}  // namespace caja
