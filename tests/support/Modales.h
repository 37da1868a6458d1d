#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <functional>

namespace caja::test {

// Runs `hacer` on the modal window named `nombre` once it is the active one
// (a modal dialog blocks the caller: this runs from its event loop).
inline void cuandoAparezca(const char* nombre, std::function<void(QWidget&)> hacer,
                           int intentos = 300) {
  QTimer::singleShot(10, [=] {
    QWidget* w = QApplication::activeModalWidget();
    if (w && w->objectName() == nombre) {
      hacer(*w);
    } else if (intentos > 0) {
      cuandoAparezca(nombre, hacer, intentos - 1);
    } else {
      ADD_FAILURE() << nombre << " never appeared";
    }
  });
}

// Types `teclas` over the whole text of the field `nombre` of `w`.
inline void teclear(QWidget& w, const char* nombre, const char* teclas) {
  auto* campo = w.findChild<QLineEdit*>(nombre);
  ASSERT_NE(campo, nullptr) << nombre;
  campo->setFocus();
  campo->selectAll();
  QTest::keyClicks(campo, teclas);
}

}  // namespace caja::test
