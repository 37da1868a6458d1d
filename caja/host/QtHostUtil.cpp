#include "caja/host/QtHostUtil.h"

#include <QApplication>
#include <QMessageBox>

namespace caja {

namespace {
QString q(const std::string& s) {
  return QString::fromStdString(s);
}
}  // namespace

void QtHostUtil::MostrarMensaje(const std::string& texto) {
  QMessageBox::information(QApplication::activeWindow(), QApplication::applicationDisplayName(),
                           q(texto));
}

bool QtHostUtil::Preguntar(const std::string& texto) {
  return QMessageBox::question(QApplication::activeWindow(), QApplication::applicationDisplayName(),
                               q(texto), QMessageBox::Yes | QMessageBox::No,
                               QMessageBox::Yes) == QMessageBox::Yes;
}

void QtHostUtil::ReportarError(const CajaError& error, const std::string& ubicacion) {
  QMessageBox::warning(QApplication::activeWindow(), QApplication::applicationDisplayName(),
                       q("Error " + std::to_string(error.number()) + " en " + ubicacion + ":\n" +
                         error.description()));
}

void QtHostUtil::EstablecerTitulo(const std::string& titulo) {
  QApplication::setApplicationDisplayName(q(titulo));
}

std::string QtHostUtil::Titulo() const {
  return QApplication::applicationDisplayName().toStdString();
}

}  // namespace caja
