#include "app/controles/DialogoCredencial.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace caja::app {

std::optional<Credencial> credencialEnDialogo(const std::string& titulo, const std::string& para,
                                              const std::vector<std::string>& nombres,
                                              const std::string& dado, QWidget* padre) {
  QDialog dialogo(padre);
  dialogo.setObjectName("dlgCredencial");
  dialogo.setWindowTitle(QString::fromStdString(titulo));
  auto* forma = new QFormLayout(&dialogo);
  forma->addRow(new QLabel(QString::fromStdString(para), &dialogo));
  auto* nombre = new QComboBox(&dialogo);
  nombre->setObjectName("cbNombre");
  for (const auto& n : nombres)
    nombre->addItem(QString::fromStdString(n));
  if (!dado.empty())
    nombre->setCurrentText(QString::fromStdString(dado));
  auto* pin = new QLineEdit(&dialogo);
  pin->setObjectName("txPin");
  pin->setEchoMode(QLineEdit::Password);
  forma->addRow("Nombre", nombre);
  forma->addRow("PIN", pin);
  auto* botones = new QDialogButtonBox(&dialogo);
  botones->addButton("&Aceptar", QDialogButtonBox::AcceptRole)->setDefault(true);
  botones->addButton("&Cancelar", QDialogButtonBox::RejectRole);
  forma->addRow(botones);
  QObject::connect(botones, &QDialogButtonBox::accepted, &dialogo, &QDialog::accept);
  QObject::connect(botones, &QDialogButtonBox::rejected, &dialogo, &QDialog::reject);
  pin->setFocus();
  if (dialogo.exec() != QDialog::Accepted)
    return std::nullopt;
  return Credencial{nombre->currentText().toStdString(), pin->text().toStdString()};
}

}  // namespace caja::app
