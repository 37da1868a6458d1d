#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "caja/dialogs/DialogosQt.h"
#include "caja/dialogs/frmDefinirMedioPago.h"
#include "caja/dialogs/frmDetallesMedio.h"
#include "caja/dialogs/frmVarelta.h"
#include "caja/service/CServiciosCaja.h"
#include "caja/uisupport/CajaNumerica.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

class Fachada : public ::testing::Test, protected test::ConSqlite {
 protected:
  void SetUp() override {
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Descripcion, Clase, Atributos, titulo, textoAyuda, "
        "posicion) VALUES "
        "('USD', 'Dólares', 8, 1024, 'Dólares', 'Efectivo en dólares', 1), "
        "('TDC', 'Tarjeta de crédito', 3, 32, 'Tarjeta de crédito', 'Pase la tarjeta', 2), "
        "('TDD', 'Tarjeta de débito', 6, 32, 'Tarjeta de débito', 'Pase la tarjeta', 3), "
        "('CHE', 'Cheque', 1, 14, 'Cheque', 'Datos del cheque', 4)");
    db->ExecuteSQL(
        "INSERT INTO hostEmpresa (id, ContribuyenteEspecial, porcentajeIGTF456, TipoCambioCaja) "
        "VALUES (1, 1, 3, 36.5)");
    instalarDialogosQt();
  }
};

TEST_F(Fachada, VareltaRoundsOpensTheDialogAndReturnsNothingOnCancel) {
  CServiciosCaja servicios;
  servicios.Init(Variant(), db);
  QString titulo, compra;
  QTimer::singleShot(50, [&] {
    QWidget* d = QApplication::activeModalWidget();
    titulo = d->windowTitle();
    compra = d->findChild<QLabel*>("lblMontoCompra")->text();
    QTest::mouseClick(d->findChild<QPushButton*>("cbCancelar"), Qt::LeftButton);
  });
  EXPECT_EQ(servicios.Varelta(Variant(100.005), Variant(cur("16")), Variant(), "Factura 7"),
            nullptr);
  EXPECT_EQ(titulo, "Factura 7");
  EXPECT_EQ(compra, "100.01");
}

// With CAJA_CAPTURAS naming a folder, keeps a picture of the dialog there.
// Installing the dialogs brings Qt's own Spanish texts to its message boxes.
TEST_F(Fachada, QtsStandardButtonsSpeakSpanish) {
  instalarDialogosQt();
  QMessageBox caja;
  caja.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel | QMessageBox::Yes |
                          QMessageBox::No);
  EXPECT_EQ(caja.button(QMessageBox::Ok)->text(), "Aceptar");
  EXPECT_EQ(caja.button(QMessageBox::Cancel)->text(), "Cancelar");
  EXPECT_EQ(caja.button(QMessageBox::Yes)->text().remove('&'), "Sí");
  EXPECT_EQ(caja.button(QMessageBox::No)->text().remove('&'), "No");
}

TEST_F(Fachada, Captura) {
  const QString carpeta = qEnvironmentVariable("CAJA_CAPTURAS");
  if (carpeta.isEmpty())
    GTEST_SKIP() << "CAJA_CAPTURAS no definida";
  InicializarEntorno(db);
  frmVarelta f;
  f.setWindowTitle("Cobro de la factura 7");
  f.preparar(cur("1250"), cur("200"), cur("50"));
  f.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&f));
  auto teclear = [&](const char* nombre, const char* teclas) {
    auto* c = f.findChild<CajaNumerica*>(nombre);
    c->setFocus();
    c->selectAll();
    QTest::keyClicks(c, teclas);
  };
  teclear("txEfectivo", "300");
  teclear("txMediosX(0)", "20");
  teclear("txMediosX(1)", "400");
  f.findChild<CajaNumerica*>("txMediosX(2)")->setFocus();
  ASSERT_TRUE(f.grab().save(carpeta + "/frmVarelta.png"));

  auto cheque = std::make_shared<CDetalleIngreso>();
  cheque->medio = "CHE";
  cheque->montoNominal = cur("250");
  cheque->CodigoEmisor = "BANESCO";
  frmDetallesMedio detalle;
  ASSERT_TRUE(detalle.preparar(cheque));
  detalle.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&detalle));
  ASSERT_TRUE(detalle.grab().save(carpeta + "/frmDetallesMedio.png"));

  frmDefinirMedioPago catalogo;
  catalogo.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&catalogo));
  catalogo.findChild<QListWidget*>("lstMedios")->setCurrentRow(0);
  ASSERT_TRUE(catalogo.grab().save(carpeta + "/frmDefinirMedioPago.png"));
}

}  // namespace
}  // namespace caja
