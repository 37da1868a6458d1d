#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "caja/dialogs/DialogosQt.h"
#include "caja/dialogs/frmVarelta.h"
#include "caja/service/CServiciosCaja.h"
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

}  // namespace
}  // namespace caja
