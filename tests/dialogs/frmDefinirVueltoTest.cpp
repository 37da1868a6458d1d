#include "caja/dialogs/frmDefinirVuelto.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "caja/dialogs/modelo/CobroVarelta.h"
#include "caja/uisupport/CajaNumerica.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

// The change of 81.10 (630.00 paid with 20 USD at 36.50, IGTF 18.90), split
// over bolívares, dollars at the drawer's rate and euros, with credit offered.
class DefinirVuelto : public ::testing::Test, protected test::ConFake {
 protected:
  static CobroVarelta cobroDePrueba() {
    CobroVarelta cobro(cur("630"), {}, {}, 36.5, 3.0, OpcionesCobro{});
    cobro.medios.push_back(test::descriptor("USD", 36.5, "USD*", ClaseIngresoSesion::EfectivoME));
    cobro.medios.push_back(test::descriptor("EUR", 39.8, "ME"));
    return cobro;
  }
  void SetUp() override {
    dialogo.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialogo));
  }
  void TearDown() override {
    dialogo.close();
    EXPECT_EQ(QApplication::topLevelWidgets().count(), 1);  // the fixture's own dialog
  }
  CajaNumerica* caja(const char* nombre) { return dialogo.findChild<CajaNumerica*>(nombre); }
  QString restante() { return dialogo.findChild<QLabel*>("lblRestante")->text(); }
  void teclear(const char* nombre, const char* teclas) {
    caja(nombre)->setFocus();
    caja(nombre)->selectAll();
    QTest::keyClicks(caja(nombre), teclas);
  }

  static DivisionVuelto sugerida(const CobroVarelta& cobro) {
    DivisionVuelto d(cobro, cur("81.1"), true);
    d.sugerir();
    return d;
  }

  CobroVarelta cobro = cobroDePrueba();
  DivisionVuelto division = sugerida(cobro);
  frmDefinirVuelto dialogo{division, "$"};
};

TEST_F(DefinirVuelto, KeyboardSplitsTheChangeAndEnterAcceptsFromTheLastInput) {
  EXPECT_EQ(caja("txVueltoUSD")->valor(), cur("2"));  // the suggestion
  EXPECT_EQ(caja("txVueltoEFE")->valor(), cur("8.1"));
  EXPECT_EQ(restante(), "Bs. 0.00");
  teclear("txVueltoUSD", "1");
  EXPECT_EQ(restante(), "Bs. 36.50");
  teclear("txVueltoEFE", "4");
  QTest::keyClick(caja("txVueltoEFE"), Qt::Key_Space);
  EXPECT_EQ(caja("txVueltoEFE")->valor(), cur("44.6"));
  EXPECT_EQ(restante(), "Bs. 0.00");
  if (const QString carpeta = qEnvironmentVariable("CAJA_CAPTURAS"); !carpeta.isEmpty()) {
    ASSERT_TRUE(dialogo.grab().save(carpeta + "/frmDefinirVuelto.png"));
  }
  for (const char* siguiente : {"txVueltoUSD", "txVueltoEUR", "txCredito"}) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(QApplication::focusWidget(), caja(siguiente)) << siguiente;
  }
  QTest::keyClick(caja("txCredito"), Qt::Key_Return);
  EXPECT_TRUE(dialogo.aceptado());
  EXPECT_EQ(dialogo.result(), QDialog::Accepted);
  EXPECT_EQ(division.lineas()->Count(), 2);
}

TEST_F(DefinirVuelto, AnUnevenSplitIsRefusedAndEscapeCancels) {
  teclear("txVueltoUSD", "0");
  teclear("txVueltoEFE", "100");
  dialogo.findChild<QPushButton*>("cbAceptar")->click();
  ASSERT_EQ(entorno.util->mensajes.size(), 1u);
  EXPECT_EQ(entorno.util->mensajes[0], "El reparto excede el vuelto en Bs. 18.90");
  EXPECT_TRUE(dialogo.isVisible());
  EXPECT_EQ(QApplication::focusWidget(), caja("txVueltoEFE"));
  // Space in the credit takes what is missing once the cash is put right.
  teclear("txVueltoEFE", "80");
  QTest::keyClick(caja("txCredito"), Qt::Key_Space);
  EXPECT_EQ(caja("txCredito")->valor(), cur("1.1"));
  QTest::keyClick(caja("txCredito"), Qt::Key_Escape);
  EXPECT_FALSE(dialogo.aceptado());
  EXPECT_EQ(dialogo.result(), QDialog::Rejected);
}

}  // namespace
}  // namespace caja
