#include "caja/dialogs/frmVarelta.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEventLoop>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <functional>
#include <map>
#include <random>

#include "caja/base/Conversiones.h"
#include "caja/dialogs/DialogosQt.h"
#include "caja/dialogs/frmDefinirMedioPago.h"
#include "caja/dialogs/frmDefinirVuelto.h"
#include "caja/dialogs/frmDetallesMedio.h"
#include "caja/dialogs/frmShowVuelto.h"
#include "caja/dialogs/modelo/CobroVarelta.h"
#include "caja/facade/CServiciosCaja.h"
#include "caja/host/QtHostUtil.h"
#include "caja/uisupport/CajaNumerica.h"
#include "caja/uisupport/clsComboWidth.h"
#include "tests/support/HostPrueba.h"
#include "tests/support/Modales.h"

namespace caja {
namespace {

using test::cuandoAparezca;
using test::cur;
using test::teclear;

// A catalogue with a method of each kind the dialogs treat apart: foreign
// cash subject to IGTF and counted by denominations, a card with an
// authorisation key, foreign transfers, a hidden one, a cheque with account,
// number, issuer and holder, one without particulars, national notes, euros
// subject to IGTF, a zero factor and an indexed one.
class Dialogo : public ::testing::Test, protected test::ConBase {
 protected:
  void SetUp() override {
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Clase, Atributos, PorcentajeISLR, titulo, textoAyuda, "
        "posicion) VALUES ('USD', 8, 1025, 0, 'Dólares', 'Efectivo en dólares', 1), "
        "('TDC', 3, 32, 0, 'Tarjeta de crédito', 'Pase la tarjeta', 2), "
        "('ZEL', 7, 64, 36.5, 'Zelle', 'Transferencia en dólares', 3), "
        "('OCU', 7, 0, 0, 'Oculto', '', 0), ('CHE', 1, 30, 0, 'Cheque', '', 4), "
        "('VAL', 7, 0, 0, 'Vale', '', 5), ('BIL', 0, 1, 0, 'Billetes', '', 6), "
        "('EUR', 7, 1088, 39.8, 'Euros', '', 7), ('CER', 7, 64, 0, 'Factor cero', '', 8), "
        "('IDX', 7, 512, 1.5, 'Indexado', '', 9)");
    tasa(36.0);
  }
  void TearDown() override { EXPECT_EQ(QApplication::topLevelWidgets().count(), 0); }
  void tasa(double t) {
    db->ExecuteSQL(
        "INSERT OR REPLACE INTO hostEmpresa (id, ContribuyenteEspecial, porcentajeIGTF456, "
        "TipoCambioCaja) VALUES (1, 1, 3, ?)",
        {Variant(t)});
  }
  void ajuste(const char* clave, const char* valor, const char* seccion = "frmVarelta") {
    entorno.settings->SaveSetting("ZOR", seccion, clave, valor);
  }
  std::unique_ptr<frmVarelta> abrir(const char* venta, const char* iva, const char* credito = "0",
                                    bool devolucion = false) {
    auto f = std::make_unique<frmVarelta>();
    f->preparar(cur(venta), cur(iva), cur(credito));
    if (devolucion)
      f->comoDevolucion();
    f->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(f.get()));
    return f;
  }
  template <class W>
  static W* hijo(QWidget& f, const char* nombre) {
    W* w = f.findChild<W*>(nombre);
    EXPECT_NE(w, nullptr) << nombre;
    return w;
  }
  static QString texto(QWidget& f, const char* etiqueta) {
    return hijo<QLabel>(f, etiqueta)->text();
  }
};

TEST_F(Dialogo, InputsFollowTheCatalogueWithTheirMarks) {
  auto f = abrir("100", "16");
  EXPECT_EQ(hijo<QLabel>(*f, "tituloMediosX(0)")->text(), "Dólares");
  EXPECT_EQ(hijo<QLineEdit>(*f, "txMediosX(0)")->property("Tag").toString(), "USD**");
  EXPECT_EQ(hijo<QLineEdit>(*f, "txMediosX(2)")->property("Tag").toString(), "ME");
  EXPECT_EQ(f->findChild<QLineEdit*>("txMediosX(9)"), nullptr);  // posicion 0 is hidden
  EXPECT_EQ(texto(*f, "lblTotal"), "116.00");
  EXPECT_EQ(texto(*f, "lblNetoUSD"), "3.22");
  EXPECT_EQ(texto(*f, "Label3"), "USD");
  EXPECT_EQ(f->height(), 8040 / 15);  // nine inputs; each one more adds to the height
  EXPECT_EQ(frmVarelta::altoFormulario(10), 8505);
  EXPECT_EQ(frmVarelta::altoFormulario(15), 10830);
  EXPECT_EQ(hijo<QStatusBar>(*f, "StatusBar1")->currentMessage(),
            "Introduzca el monto cobrado en efectivo de curso legal");
  f.reset();
  // Rate 1.0, no foreign currency in use: until the form is first shown the
  // change stands in the foreign change's place (8040 - 2340 twips); the
  // resize then places it by the form's height (8040 - 2895), at any rate.
  tasa(0.0);
  f = std::make_unique<frmVarelta>();
  f->preparar(cur("100"), cur("16"), cur("0"));
  auto arriba = [&](const char* nombre) { return hijo<QLabel>(*f, nombre)->y(); };
  EXPECT_EQ(arriba("lblVuelto"), 380);
  EXPECT_EQ(arriba("Label5"), 380);
  EXPECT_EQ(hijo<QWidget>(*f, "Frame1")->height(), 3795 / 15);
  f->show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(f.get()));
  EXPECT_EQ(arriba("lblVuelto"), 343);
  EXPECT_EQ(arriba("Label5"), 343);
  for (const char* nombre : {"Label3", "lblNetoUSD", "lblVueltoUSD", "lblVueltoMixto"})
    EXPECT_TRUE(hijo<QLabel>(*f, nombre)->isHidden()) << nombre;
  EXPECT_FALSE(hijo<QLabel>(*f, "lblVuelto")->isHidden());
}

// Typed unseen: a change split the shop asks for is taken as suggested (a
// split dialog shown here would hang the test); a method without an input or
// a short payment gives nothing.
TEST_F(Dialogo, CobrarSinMostrarTypesThePaymentsAndAccepts) {
  ajuste("VueltoDetallado", "True");
  const auto mov =
      CobrarSinMostrar("Venta", cur("100"), cur("16"), cur("0"), {{"EFE", cur("120")}});
  ASSERT_NE(mov, nullptr);
  EXPECT_EQ(mov->Vuelto, cur("4"));
  EXPECT_EQ(mov->Debitos, cur("116"));
  EXPECT_EQ(CobrarSinMostrar("Venta", cur("100"), cur("16"), cur("0"), {{"NOE", cur("120")}}),
            nullptr);
  EXPECT_EQ(CobrarSinMostrar("Venta", cur("100"), cur("16"), cur("0"), {{"EFE", cur("50")}}),
            nullptr);
}

// Every recomputation may accept: after a validated input, after Space in
// txEfectivo. The lines of each accepted collection are kept for
// DetallesEnRegistro, replacing those of the one before.
TEST_F(Dialogo, AutoCierreAcceptsOnAnyRecomputationAndTheLinesAreKept) {
  ajuste("AutoCierre", "1");
  for (const bool espacio : {false, true}) {
    SCOPED_TRACE(espacio ? "Space" : "116 Enter");
    auto f = abrir("100", "16");
    auto* efectivo = hijo<CajaNumerica>(*f, "txEfectivo");
    if (espacio) {
      teclear(*f, "txMediosX(1)", "16");
      QTest::keyClick(hijo<CajaNumerica>(*f, "txMediosX(1)"), Qt::Key_Return);
      QTest::keyClick(efectivo, Qt::Key_Space);
    } else {
      teclear(*f, "txEfectivo", "116");
      EXPECT_EQ(f->Recibido(), cur("116"));
      EXPECT_EQ(f->descriptorM(0).Codigo, "USD");
      EXPECT_EQ(f->CodigoCondicion(), "CONTADO");
      QTest::keyClick(efectivo, Qt::Key_Return);
    }
    EXPECT_EQ(f->result(), QDialog::Accepted);
    ASSERT_NE(f->resultado(), nullptr);
    EXPECT_EQ(f->resultado()->Debitos, cur("116"));
    const auto leidas = CServiciosCaja().DetallesEnRegistro();
    ASSERT_EQ(leidas->Count(), espacio ? 2 : 1);
    EXPECT_EQ(leidas->Item(1)->medio, "EFE");
    EXPECT_EQ(leidas->Item(1)->Monto, cur(espacio ? "100" : "116"));
  }
}

// 4.40 USD at 36 is 158.40, 42.40 above the net of 116.00: beyond a margin of
// 40. The IGTF of those dollars (capped at 3.48) is not yet part of the net
// the question compares with; with it, 38.92 would ask nothing.
TEST_F(Dialogo, TheExcessQuestionComparesWithTheNetOfTheLastValidatedInput) {
  ajuste("MaximaUnidadMonetaria", "40");
  auto f = abrir("100", "16");
  teclear(*f, "txMediosX(0)", "4.4");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  EXPECT_EQ(entorno.util->preguntas,
            std::vector<std::string>{"Está seguro\r(el monto parece excesivo)"});
}

TEST_F(Dialogo, OneCentShortTriesToAcceptTwoCentsDoNot) {
  ajuste("AutoCierre", "1");
  auto f = abrir("100", "16");
  teclear(*f, "txEfectivo", "115.98");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  EXPECT_TRUE(entorno.util->mensajes.empty());
  EXPECT_EQ(texto(*f, "lblVuelto"), "-Bs. 0.02");
  teclear(*f, "txEfectivo", "115.99");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  // Complete within a cent, so the dialog tries; national cash alone cannot absorb the cent.
  EXPECT_EQ(entorno.util->mensajes,
            std::vector<std::string>{"Faltan Bs. 0.01 para completar el monto."});
  EXPECT_EQ(f->resultado(), nullptr);
}

TEST_F(Dialogo, ForeignCashBearsIgtfShowsTheChangeAndSpaceCompletes) {
  auto f = abrir("100", "0");
  auto* dolares = hijo<CajaNumerica>(*f, "txMediosX(0)");
  dolares->setFocus();
  EXPECT_EQ(hijo<QStatusBar>(*f, "StatusBar1")->currentMessage(),
            "Efectivo en dólares (Dólares = 2.78)");
  teclear(*f, "txMediosX(0)", "5");
  QTest::keyClick(dolares, Qt::Key_Return);
  EXPECT_EQ(texto(*f, "IGTF"), "3.00");  // 180 × 3% = 5.40, capped at 3.00
  EXPECT_EQ(texto(*f, "lblNetoMN"), "103.00");
  EXPECT_EQ(texto(*f, "lblVuelto"), "Bs. 77.00");
  EXPECT_EQ(texto(*f, "lblVueltoUSD"), "$ 2.14");
  EXPECT_EQ(texto(*f, "lblVueltoMixto"), "$ 2.00 + Bs. 5.00");
  // Space completes the focused input with what is missing.
  f = abrir("100", "16");
  teclear(*f, "txEfectivo", "16");
  auto* tarjeta = hijo<CajaNumerica>(*f, "txMediosX(1)");
  tarjeta->setFocus();
  EXPECT_EQ(hijo<QStatusBar>(*f, "StatusBar1")->currentMessage(), "Pase la tarjeta");
  QTest::keyClick(tarjeta, Qt::Key_Space);
  EXPECT_EQ(tarjeta->text(), "100.00");
  // A foreign method kept without a rate settles nothing, and says so.
  auto* sinTasa = hijo<CajaNumerica>(*f, "txMediosX(7)");
  sinTasa->setFocus();
  EXPECT_EQ(hijo<QStatusBar>(*f, "StatusBar1")->currentMessage(),
            " (Factor cero sin tasa de cambio)");
  QTest::keyClick(sinTasa, Qt::Key_Space);
  EXPECT_EQ(sinTasa->text(), "0.00");
  EXPECT_TRUE(entorno.util->mensajes.empty());
}

// A refund reads as one: what is handed back is typed and shown positive,
// nothing says change, and only the exact amount is accepted.
TEST_F(Dialogo, ARefundReadsAsOneAndAcceptsOnlyTheExactAmount) {
  ajuste("AutoCierre", "1");
  auto f = abrir("-40", "0", "0", true);
  EXPECT_EQ(texto(*f, "Label1"), "A devolver:");
  EXPECT_EQ(texto(*f, "lblConcepto"), "Neto a devolver:");
  EXPECT_EQ(texto(*f, "lblMontoCompra"), "40.00");
  EXPECT_EQ(texto(*f, "lblNetoMN"), "40.00");
  EXPECT_EQ(texto(*f, "Label5"), "Falta:");
  EXPECT_EQ(texto(*f, "lblVuelto"), "Bs. 40.00");
  for (const char* vuelto : {"lblVueltoUSD", "lblVueltoMixto"})
    EXPECT_FALSE(hijo<QLabel>(*f, vuelto)->isVisible()) << vuelto;
  auto* efectivo = hijo<CajaNumerica>(*f, "txEfectivo");
  efectivo->setFocus();
  EXPECT_EQ(hijo<QStatusBar>(*f, "StatusBar1")->currentMessage(),
            "Introduzca lo que se devuelve en efectivo de curso legal");
  const struct {
    const char* tecleado;
    const char* porDevolver;
  } inexactos[] = {{"30", "Bs. 10.00"}, {"50", "-Bs. 10.00"}};
  for (const auto& [tecleado, porDevolver] : inexactos) {
    teclear(*f, "txEfectivo", tecleado);
    QTest::keyClick(efectivo, Qt::Key_Return);
    EXPECT_EQ(f->resultado(), nullptr) << tecleado;
    EXPECT_EQ(texto(*f, "lblVuelto"), porDevolver);
  }
  hijo<QPushButton>(*f, "cbAceptar")->click();
  EXPECT_EQ(
      entorno.util->mensajes,
      std::vector<std::string>{"Lo entregado debe sumar exactamente el monto de la devolución"});
  teclear(*f, "txEfectivo", "40");
  QTest::keyClick(efectivo, Qt::Key_Return);
  ASSERT_NE(f->resultado(), nullptr);
  EXPECT_EQ(f->resultado()->colDetalles->Item(1)->Monto, cur("-40"));
  EXPECT_EQ(f->resultado()->Creditos, cur("40"));
  EXPECT_TRUE(f->resultado()->Vuelto.isZero());
  // Space fills in what is still to be handed back.
  f = abrir("-40", "-6.4", "0", true);
  efectivo = hijo<CajaNumerica>(*f, "txEfectivo");
  efectivo->setFocus();
  QTest::keyClick(efectivo, Qt::Key_Space);
  EXPECT_EQ(efectivo->text(), "46.40");
  ASSERT_NE(f->resultado(), nullptr);
  EXPECT_EQ(f->resultado()->Creditos, cur("46.4"));
}

// The detail dialog's amount becomes the input's.
TEST_F(Dialogo, F2TakesTheParticularsOfTheFocusedLine) {
  auto f = abrir("100", "16");
  teclear(*f, "txEfectivo", "66");
  teclear(*f, "txMediosX(1)", "40");
  cuandoAparezca("frmDetallesMedio", [](QWidget& d) {
    auto* monto = d.findChild<CajaNumerica*>("numMontoRecibido");
    EXPECT_EQ(monto->valor(), cur("40"));
    monto->selectAll();
    QTest::keyClicks(monto, "50");
    auto* clave = d.findChild<QLineEdit*>("txClaveAutorizacion");
    clave->setFocus();
    QTest::keyClicks(clave, "ab12");
    QTest::mouseClick(d.findChild<QPushButton*>("cbOk"), Qt::LeftButton);
  });
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_F2);
  EXPECT_EQ(hijo<QLineEdit>(*f, "txMediosX(1)")->text(), "50.00");
  QTest::mouseClick(hijo<QPushButton>(*f, "cbAceptar"), Qt::LeftButton);
  ASSERT_NE(f->resultado(), nullptr);
  EXPECT_EQ(f->resultado()->colDetalles->Item(2)->medio, "TDC");
  EXPECT_EQ(f->resultado()->colDetalles->Item(2)->ClaveAutorizacion, "AB12");
}

TEST_F(Dialogo, TaxChangeGoesThroughTheListener) {
  ajuste("IVA2602", "1", "Config");
  auto f = abrir("100", "16", "10");
  Currency recibido;
  f->Aplicar2602 = [&](Currency& monto, bool&) {
    recibido = monto;
    monto = cur("8");
  };
  teclear(*f, "txEfectivo", "50");
  QTest::mouseClick(hijo<QLabel>(*f, "lblImpuesto"), Qt::LeftButton);
  EXPECT_EQ(recibido, cur("16"));
  EXPECT_EQ(texto(*f, "lblImpuesto"), "8.00");
  EXPECT_EQ(texto(*f, "lblTotal"), "108.00");
  EXPECT_EQ(texto(*f, "lblNetoMN"), "108.00");  // the credit is not taken again
  EXPECT_EQ(hijo<QLineEdit>(*f, "txEfectivo")->text(), "0.00");
}

// The whole collection: Escape brings nothing back; an accepted one shows
// its change as lblVuelto shows it, rounded to the change step (12.37 at 0.05
// is 12.35), and unrounded at step 0 a change of 0.004 shows as 0.00 and opens
// no window (within the tolerance, that change is not given back at all).
TEST_F(Dialogo, CobrarShowsTheChangeAsShownThenReturnsTheMovement) {
  const struct {
    const char *paso, *efectivo, *mostrado, *linea;
  } casos[] = {{"0.01", nullptr, "", ""},
               {"0.05", "128.37", "Bs. 12.35", "116"},
               {"0", "116.004", "", "116.004"}};
  for (const auto& c : casos) {
    SCOPED_TRACE(c.efectivo ? c.efectivo : "Escape");
    ajuste("RedondeoVuelto", c.paso);
    frmVarelta f;
    auto mostrado = std::make_shared<QString>();
    cuandoAparezca("frmVarelta", [&c, mostrado](QWidget& d) {
      if (!c.efectivo)
        return QTest::keyClick(&d, Qt::Key_Escape);
      teclear(d, "txEfectivo", c.efectivo);
      QTimer::singleShot(300, [mostrado] {
        QWidget* w = QApplication::activeModalWidget();
        if (w && w->objectName() == "frmShowVuelto") {
          *mostrado = w->findChild<QLineEdit*>("Text1")->text();
          QTest::keyClick(w, Qt::Key_A);
        }
      });
      QTest::mouseClick(d.findChild<QPushButton*>("cbAceptar"), Qt::LeftButton);
    });
    auto mov = f.Cobrar(cur("100"), cur("16"), cur("0"));
    QTest::qWait(400);
    EXPECT_EQ(mostrado->toStdString(), c.mostrado);
    ASSERT_EQ(mov != nullptr, c.efectivo != nullptr);
    if (mov) {
      EXPECT_EQ(mov->colDetalles->Item(1)->Monto, cur(c.linea));
    }
  }
}

TEST_F(Dialogo, ChangeWindowIsNotShownForNothingAndItsTimerFollowsTheLock) {
  frmShowVuelto::ShowVuelto(cur("0"));
  frmShowVuelto::ShowVuelto(cur("-1"));
  bool activo = true;
  cuandoAparezca("frmShowVuelto", [&](QWidget& v) {
    activo = v.findChild<QTimer*>("Timer1")->isActive();
    QTest::mouseClick(v.findChild<QLabel*>("Label2"), Qt::LeftButton);
  });
  frmShowVuelto::ShowVuelto(cur("5"));
  EXPECT_FALSE(activo);  // "LockVuelto" defaults to "1"
  ajuste("LockVuelto", "0");
  cuandoAparezca("frmShowVuelto", [&](QWidget& v) {
    activo = v.findChild<QTimer*>("Timer1")->isActive();
    QTest::keyClick(&v, Qt::Key_Return);
  });
  frmShowVuelto::ShowVuelto(cur("5"));
  EXPECT_TRUE(activo);
}

TEST_F(Dialogo, FacadeRoundsOpensTheDialogReturnsNothingOnCancelAndQtSpeaksSpanish) {
  instalarDialogosQt();
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
  // Installing the dialogs brings Qt's own Spanish texts to its message boxes.
  QMessageBox caja;
  caja.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel | QMessageBox::Yes |
                          QMessageBox::No);
  EXPECT_EQ(caja.button(QMessageBox::Ok)->text(), "Aceptar");
  EXPECT_EQ(caja.button(QMessageBox::Cancel)->text(), "Cancelar");
  EXPECT_EQ(caja.button(QMessageBox::Yes)->text().remove('&'), "Sí");
  EXPECT_EQ(caja.button(QMessageBox::No)->text().remove('&'), "No");
}

// The change of 81.10 (630.00 paid with 20 USD at 36.50, IGTF 18.90), split
// over bolívares, dollars at the drawer's rate and euros, with credit offered.
class DefinirVuelto : public ::testing::Test, protected test::ConFake {
 protected:
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

  static DivisionVuelto sugerida(const CobroVarelta& cobro) {
    DivisionVuelto d(cobro, cur("81.1"), true);
    d.sugerir();
    return d;
  }

  CobroVarelta cobro = test::cobroConVuelto();
  DivisionVuelto division = sugerida(cobro);
  frmDefinirVuelto dialogo{division, "$"};
};

// Space puts what is missing into one input, in its own unit: dollars in whole
// cents (81.10 / 36.50 = 2.2219, so 2.22, worth 81.03). An uneven split is
// refused with the focus on the cash; Enter walks the inputs and accepts from
// the last; every line leaves the drawer, negative, the foreign one at the
// method's rate.
TEST_F(DefinirVuelto, KeyboardSplitsTheChangeAndEnterAcceptsFromTheLastInput) {
  EXPECT_EQ(caja("txVueltoUSD")->valor(), cur("2"));  // the suggestion
  EXPECT_EQ(caja("txVueltoEFE")->valor(), cur("8.1"));
  EXPECT_EQ(restante(), "Bs. 0.00");
  teclear(dialogo, "txVueltoEFE", "0");
  QTest::keyClick(caja("txVueltoUSD"), Qt::Key_Space);
  EXPECT_EQ(caja("txVueltoUSD")->valor(), cur("2.22"));
  EXPECT_EQ(restante(), "Bs. 0.07");
  teclear(dialogo, "txVueltoUSD", "0");
  teclear(dialogo, "txVueltoEFE", "100");
  dialogo.findChild<QPushButton*>("cbAceptar")->click();
  EXPECT_EQ(entorno.util->mensajes,
            std::vector<std::string>{"El reparto excede el vuelto en Bs. 18.90"});
  EXPECT_TRUE(dialogo.isVisible());
  EXPECT_EQ(QApplication::focusWidget(), caja("txVueltoEFE"));
  teclear(dialogo, "txVueltoEFE", "80");
  QTest::keyClick(caja("txCredito"), Qt::Key_Space);
  EXPECT_EQ(caja("txCredito")->valor(), cur("1.1"));
  teclear(dialogo, "txCredito", "0");
  teclear(dialogo, "txVueltoUSD", "1");
  teclear(dialogo, "txVueltoEFE", "4");
  QTest::keyClick(caja("txVueltoEFE"), Qt::Key_Space);
  EXPECT_EQ(caja("txVueltoEFE")->valor(), cur("44.6"));
  EXPECT_EQ(restante(), "Bs. 0.00");
  for (const char* siguiente : {"txVueltoUSD", "txVueltoEUR", "txCredito"}) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(QApplication::focusWidget(), caja(siguiente)) << siguiente;
  }
  QTest::keyClick(caja("txCredito"), Qt::Key_Return);
  EXPECT_TRUE(dialogo.aceptado());
  EXPECT_EQ(dialogo.result(), QDialog::Accepted);
  const auto lineas = division.lineas();
  ASSERT_EQ(lineas->Count(), 2);
  EXPECT_EQ(lineas->Item(1)->medio, "EFE");
  EXPECT_EQ(lineas->Item(1)->Monto, cur("-44.6"));
  EXPECT_EQ(lineas->Item(2)->medio, "USD");
  EXPECT_EQ(lineas->Item(2)->Monto, cur("-36.5"));
  EXPECT_EQ(lineas->Item(2)->montoNominal, cur("-1"));
}

TEST_F(DefinirVuelto, EscapeCancels) {
  QTest::keyClick(caja("txCredito"), Qt::Key_Escape);
  EXPECT_FALSE(dialogo.aceptado());
  EXPECT_EQ(dialogo.result(), QDialog::Rejected);
}

class Detalle : public Dialogo {
 protected:
  void SetUp() override {
    Dialogo::SetUp();
    db->ExecuteSQL(
        "INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) VALUES ('CHE', 'BANESCO')");
    db->SetVerificador([this](const std::string& m) {
      preguntas.push_back(m);
      return Variant(nivel);
    });
  }

  std::unique_ptr<frmDetallesMedio> abrir(const char* medio, bool conMonto = true) {
    linea = std::make_shared<CDetalleIngreso>();
    linea->medio = medio;
    auto f = std::make_unique<frmDetallesMedio>();
    EXPECT_TRUE(f->preparar(linea));
    f->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(f.get()));
    // The amount comes first: it refuses to be left empty.
    if (conMonto) {
      EXPECT_TRUE(dejar(*f, "numMontoRecibido", "10"));
    }
    return f;
  }
  static QLineEdit* campo(QWidget& f, const char* nombre) {
    if (std::string(nombre) == "cbxEmisor")
      return f.findChild<QComboBox*>(nombre)->lineEdit();
    return f.findChild<QLineEdit*>(nombre);
  }
  // Types into a field and tries to leave it with Tab; true when the focus left.
  bool dejar(QWidget& f, const char* nombre, const char* texto) {
    QLineEdit* c = campo(f, nombre);
    c->setFocus();
    c->selectAll();
    c->setText("");
    // keyClicks types ASCII only; other letters arrive as the text they make.
    if (QString(texto).toLatin1() == QByteArray(texto)) {
      QTest::keyClicks(c, texto);
    } else {
      c->setText(texto);
    }
    QTest::keyClick(c, Qt::Key_Tab);
    QApplication::processEvents();
    // The issuer's text box hands its focus to its combo.
    const QWidget* duenio = c->focusProxy() ? c->focusProxy() : c;
    return QApplication::focusWidget() != duenio;
  }
  void aceptar(QWidget& f) { QTest::mouseClick(f.findChild<QPushButton*>("cbOk"), Qt::LeftButton); }

  std::shared_ptr<CDetalleIngreso> linea;
  std::vector<std::string> preguntas;
  double nivel = 0;
};

TEST_F(Detalle, AuthorisationCodeOfFourToSixCharacters) {
  auto f = abrir("TDC");
  const struct {
    const char* clave;
    bool sale;
  } casos[] = {{"123", false}, {"1234567", false}, {"1234", true}, {"123456", true}};
  for (const auto& c : casos) {
    SCOPED_TRACE(c.clave);
    entorno.util->mensajes.clear();
    EXPECT_EQ(dejar(*f, "txClaveAutorizacion", c.clave), c.sale);
    if (!c.sale) {
      EXPECT_EQ(entorno.util->mensajes,
                std::vector<std::string>{"La clave debe contener de cuatro a seis caracteres"});
    }
  }
}

// Each field refuses to be left while invalid (a new issuer needs level 5,
// however close to it a level is);
// acceptance names the first empty field and writes nothing before it succeeds.
TEST_F(Detalle, FieldsHoldTheFocusUntilValidAndAcceptanceWritesTheLine) {
  auto f = abrir("CHE", false);
  QTest::keyClicks(campo(*f, "numMontoRecibido"), "10");
  aceptar(*f);
  EXPECT_EQ(entorno.util->mensajes, std::vector<std::string>{"Codigo de emisor inválido"});
  EXPECT_TRUE(linea->CodigoEmisor.empty());
  nivel = 4.9;
  EXPECT_FALSE(dejar(*f, "cbxEmisor", "bod"));
  EXPECT_EQ(preguntas, std::vector<std::string>{"Registrar nuevo emisor: BOD"});
  EXPECT_EQ(entorno.util->mensajes.back(), "Emisor no autorizado: BOD");
  nivel = 5;
  EXPECT_TRUE(dejar(*f, "cbxEmisor", "bod"));
  EXPECT_FALSE(dejar(*f, "txCuenta", "1234567"));
  EXPECT_FALSE(dejar(*f, "txCuenta", "123456789012345678901"));
  EXPECT_TRUE(dejar(*f, "txCuenta", "  cta-0102ñ  "));
  EXPECT_EQ(campo(*f, "txCuenta")->text(), "CTA-0102Ñ");
  EXPECT_TRUE(dejar(*f, "txIdTitular", "v1234567"));
  EXPECT_TRUE(dejar(*f, "txNumDoc", "000778"));
  aceptar(*f);
  ASSERT_TRUE(f->aceptado());
  EXPECT_EQ(linea->NumeroCuenta, "CTA-0102Ñ");
  EXPECT_EQ(linea->IdTitular, "V1234567");
  EXPECT_EQ(linea->CodigoEmisor, "BOD");
  EXPECT_EQ(linea->Monto, cur("10"));

  auto zelle = abrir("ZEL");  // a foreign method: nominal and national value
  aceptar(*zelle);
  ASSERT_TRUE(zelle->aceptado());
  EXPECT_EQ(linea->montoNominal, cur("10"));
  EXPECT_EQ(linea->Monto, cur("365"));
}

TEST_F(Detalle, WhatEachMethodShowsAndTheDenominationsGrid) {
  auto f = abrir("VAL", false);
  EXPECT_FALSE(dejar(*f, "numMontoRecibido", "0"));
  EXPECT_EQ(entorno.util->mensajes.back(), "Por favor, escriba un valor positivo");
  entorno.util->mensajes.clear();
  campo(*f, "numMontoRecibido")->clear();
  for (const char* nombre : {"txCuenta", "txIdTitular", "txNumDoc", "txClaveAutorizacion"})
    EXPECT_FALSE(f->findChild<QLineEdit*>(nombre)->isVisible()) << nombre;
  EXPECT_FALSE(f->findChild<QComboBox*>("cbxEmisor")->isVisible());
  EXPECT_FALSE(f->findChild<QWidget*>("flxDenominaciones")->isVisible());
  EXPECT_TRUE(f->findChild<CajaNumerica*>("numMontoRecibido")->isVisible());
  aceptar(*f);  // the amount is checked as if left
  EXPECT_EQ(entorno.util->mensajes, std::vector<std::string>{"Por favor, introduzca un monto"});
  EXPECT_FALSE(f->aceptado());

  linea->medio = "ZZZ";  // an unknown method shows nothing
  EXPECT_FALSE(frmDetallesMedio::EditDetalle(linea));
  EXPECT_EQ(entorno.util->mensajes.back(), "ERROR: Medio de pago desconocido (ZZZ)");

  entorno.util->mensajes.clear();
  f = abrir("BIL");  // the denominations' grid, with the help of each column
  auto* grilla = f->findChild<QWidget*>("flxDenominaciones");
  ASSERT_TRUE(grilla->isVisible());
  grilla->setFocus();
  QTest::keyClick(grilla, Qt::Key_Insert);
  auto* barra = f->findChild<QStatusBar*>("StatusBar1");
  EXPECT_EQ(barra->currentMessage(), "Denominación (valor unitario) de los valores recibidos");
  QTest::keyClick(grilla, Qt::Key_Right);
  EXPECT_EQ(barra->currentMessage(),
            "Cantidad de unidades recibidas de la denominacion seleccionada");
  aceptar(*f);
  EXPECT_EQ(entorno.util->mensajes,
            std::vector<std::string>{"Por favor, introduzca un valor positivo"});
}

TEST_F(Detalle, CatalogueCreatesEditsAndRefusesToDeleteAUsedMethod) {
  frmDefinirMedioPago f;
  f.show();
  f.nuevo();
  f.findChild<QLineEdit*>("txCodigo")->setText("efe");
  EXPECT_FALSE(f.guardar());
  EXPECT_EQ(entorno.util->mensajes.back(), "Codigo reservado");

  f.findChild<QLineEdit*>("txCodigo")->setText("div");
  f.findChild<QCheckBox*>("chkMonedaExtranjera")->setChecked(true);
  EXPECT_FALSE(f.guardar());
  EXPECT_EQ(entorno.util->mensajes.back(),
            "Un medio en moneda extranjera necesita un factor de cambio mayor que cero");
  f.findChild<QCheckBox*>("chkMonedaExtranjera")->setChecked(false);

  f.findChild<QLineEdit*>("txCodigo")->setText("pmv");
  f.findChild<QLineEdit*>("txTitulo")->setText("Pago móvil");
  f.findChild<QCheckBox*>("chkControlNumero")->setChecked(true);
  ASSERT_TRUE(f.guardar());
  CMedioPago m;
  ASSERT_TRUE(m.load("PMV"));
  EXPECT_EQ(m.Titulo, "Pago móvil");
  EXPECT_EQ(m.Atributos, ControlNumero);

  f.findChild<QLineEdit*>("txTitulo")->setText("Pago móvil BDV");
  ASSERT_TRUE(f.guardar());
  m.load("PMV");
  EXPECT_EQ(m.Titulo, "Pago móvil BDV");

  db->ExecuteSQL("INSERT INTO MovimientosCaja (Sesion) VALUES (1)");
  db->ExecuteSQL("INSERT INTO DetallesVarelta (TransID, Medio, Monto) VALUES (1, 'PMV', 5)");
  entorno.util->respuestas = {true};
  EXPECT_FALSE(f.eliminar());
  EXPECT_EQ(entorno.util->mensajes.back(),
            "Hay movimientos con el medio seleccionado: eliminacion no permitida");
  EXPECT_TRUE(m.load("PMV"));

  // Saving rewrites no number the cashier did not touch: the widgets round
  // (four decimals, two, a class list of 0-8), the stored values do not.
  db->ExecuteSQL(
      "INSERT INTO MediosPago (Codigo, Clase, Atributos, PorcentajeISLR, "
      "PorcentajeRetencionEmisor, titulo, posicion) VALUES ('RAR', 12, 64, 39.80125, 0.125, "
      "'Raro', 9)");
  f.cargarLista();
  auto* lista = f.findChild<QListWidget*>("lstMedios");
  lista->setCurrentItem(lista->findItems("RAR", Qt::MatchExactly).front());
  f.findChild<QLineEdit*>("txTitulo")->setText("Raro nuevo");
  ASSERT_TRUE(f.guardar());
  ASSERT_TRUE(m.load("RAR"));
  EXPECT_EQ(m.Titulo, "Raro nuevo");
  EXPECT_EQ(m.PorcentajeISLR, 39.80125);
  EXPECT_EQ(m.PorcentajeRetencionEmisor, 0.125);
  EXPECT_EQ(static_cast<int>(m.Clase), 12);
}

TEST_F(Detalle, PlacementIsRestoredUnlessOffEveryScreen) {
  const std::string seccion = "CONFIG\\FormPlacement\\frmDefinirMedioPago";
  for (const auto& [clave, valor] :
       {std::pair{"Left", "1500"}, {"Top", "750"}, {"Width", "9000"}, {"Height", "6000"}})
    entorno.settings->SaveSetting("ZOR", seccion, clave, valor);
  {
    frmDefinirMedioPago f;
    EXPECT_EQ(f.pos(), QPoint(100, 50));
    EXPECT_EQ(f.size(), QSize(600, 400));
    f.move(30, 40);
    f.reject();
  }
  EXPECT_EQ(entorno.settings->GetSetting("ZOR", seccion, "Left", "-100"), "450");
  entorno.settings->SaveSetting("ZOR", seccion, "Left", "9999999");
  frmDefinirMedioPago lejos;
  EXPECT_EQ(lejos.pos(), QPoint(0, 0));  // off every screen: left where Qt puts it
}

TEST(ComboWidth, ListFitsItsLongestItemWithinTheScreen) {
  QComboBox combo;
  combo.resize(120, 24);
  clsComboWidth ancho(&combo);
  ancho.AjustarAncho(Variant(std::int16_t{-1}));
  EXPECT_EQ(ancho.AnchoDesplegable(), 120);  // an empty list is as wide as the box

  combo.addItem(QString(400, 'W'));
  const int pantalla = combo.screen()->geometry().width();
  ancho.AjustarAncho(Variant(0));
  EXPECT_EQ(ancho.AnchoDesplegable(), pantalla - 16);
  ancho.AjustarAncho(Variant(300));
  EXPECT_EQ(ancho.AnchoDesplegable(), 300);

  combo.clear();
  combo.addItem("Banco");
  const int item = QFontMetrics(combo.font()).boundingRect("Banco").width() + 8;
  combo.resize(10, 24);
  ancho.AjustarAncho(Variant(-1));
  EXPECT_EQ(ancho.AnchoDesplegable(), item);
}

// The keyboard monkey: random keys from a fixed seed typed into the real
// dialogs, offscreen, the way a hurried cashier might: digits, separators,
// Space, Enter, Tab, F2, Escape, arrows, letters, very long numbers. A dialog
// that opens another (F2's detail dialog) gets the keys while it is open. No
// exception may reach Qt, the dialogs must keep answering, and every accepted
// movement must add up. Messages and questions are real message boxes, which
// take the focus and give it back as they close; no window may open more than
// 50 times in a row without a key reaching the dialog itself (a handler that
// fails again each time the focus comes back would hold the till for ever).
// Keys per dialog: 20,000 unless CAJA_MONO_TECLAS says otherwise.
int teclasPorDialogo() {
  const int pedidas = qEnvironmentVariableIntValue("CAJA_MONO_TECLAS");
  return pedidas > 0 ? pedidas : 20000;
}

// Counts the windows other than the dialog as they open, by kind and text.
class Aperturas : public QObject {
 public:
  explicit Aperturas(QWidget*& dialogo) : dialogo_(dialogo) { qApp->installEventFilter(this); }
  ~Aperturas() override { qApp->removeEventFilter(this); }
  void teclaAlDialogo() { veces_.clear(); }
  QString atascada;  // the first window opened more than 50 times in a row

 protected:
  bool eventFilter(QObject* objeto, QEvent* evento) override {
    auto* w = qobject_cast<QWidget*>(objeto);
    if (evento->type() != QEvent::Show || !w || !w->isWindow() || !dialogo_ || w == dialogo_)
      return false;
    const auto* caja = qobject_cast<QMessageBox*>(w);
    const QString clave =
        QString(w->metaObject()->className()) + ": " + (caja ? caja->text() : w->windowTitle());
    if (++veces_[clave] > 50 && atascada.isEmpty()) {
      atascada = clave;
      dialogo_->hide();  // so that the loop ends and the test can report it
    }
    return false;
  }

 private:
  QWidget*& dialogo_;
  std::map<QString, int> veces_;
};

// Real message boxes, after which the window that was active gets the focus
// back as a desktop's window manager gives it (the offscreen platform does not).
class MensajesDeEscritorio : public QtHostUtil {
 public:
  void MostrarMensaje(const std::string& texto) override {
    devolverFoco([&] { QtHostUtil::MostrarMensaje(texto); });
  }
  bool Preguntar(const std::string& texto) override {
    bool si = false;
    devolverFoco([&] { si = QtHostUtil::Preguntar(texto); });
    return si;
  }

 private:
  static void devolverFoco(const std::function<void()>& caja) {
    QPointer<QWidget> activa = QApplication::activeWindow();
    caja();
    if (activa && activa->isVisible())
      QApplication::setActiveWindow(activa);
  }
};

class Mono : public Dialogo {
 protected:
  void SetUp() override {
    Dialogo::SetUp();
    InicializarEntorno(db);
    setHostUtil(std::make_shared<MensajesDeEscritorio>());
  }

  // Types `teclas` random keys into whatever window has the keyboard, opening
  // the dialog again with `abrir` whenever it has closed.
  void aporrear(const std::function<QWidget*()>& abrir, int teclas) {
    std::mt19937 azar(20261122);
    const auto mostrar = [&abrir] {
      QWidget* w = abrir();
      w->show();
      return w;
    };
    QWidget* dialogo = mostrar();
    Aperturas aperturas(dialogo);
    int hechas = 0;
    QEventLoop bucle;
    // Each step schedules the next before it types: a key that opens a modal
    // dialog runs the next steps inside that dialog's own event loop.
    std::function<void()> paso = [&] {
      if (hechas >= teclas || !aperturas.atascada.isEmpty()) {
        if (QApplication::activeModalWidget()) {
          QTimer::singleShot(0, paso);
          QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
        } else {
          bucle.quit();
        }
        return;
      }
      if (!QApplication::activeModalWidget() && !dialogo->isVisible()) {
        alCerrar(dialogo);
        delete dialogo;
        dialogo = nullptr;
        dialogo = mostrar();
      }
      QWidget* destino = QApplication::activeModalWidget();
      if (!destino)
        destino = dialogo;
      if (destino == dialogo)
        aperturas.teclaAlDialogo();
      if (QWidget* foco = destino->focusWidget())
        destino = foco;
      ++hechas;
      QTimer::singleShot(0, paso);
      try {
        pulsar(destino, azar);
      } catch (const std::exception& e) {
        ADD_FAILURE() << "una excepción salió de un manejador: " << e.what();
      }
    };
    QTimer::singleShot(0, paso);
    bucle.exec();
    alCerrar(dialogo);
    delete dialogo;
    EXPECT_EQ(aperturas.atascada.toStdString(), "") << "abierta más de 50 veces seguidas";
    EXPECT_EQ(hechas, teclas);
  }

  static void pulsar(QWidget* destino, std::mt19937& azar) {
    static const Qt::Key kTeclas[] = {
        Qt::Key_0,       Qt::Key_1,      Qt::Key_5,         Qt::Key_9,      Qt::Key_Period,
        Qt::Key_Comma,   Qt::Key_Minus,  Qt::Key_Space,     Qt::Key_Return, Qt::Key_Tab,
        Qt::Key_Backtab, Qt::Key_F2,     Qt::Key_Left,      Qt::Key_Right,  Qt::Key_Up,
        Qt::Key_Down,    Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_Insert, Qt::Key_A,
        Qt::Key_E,       Qt::Key_Home,   Qt::Key_End};
    const unsigned tirada = azar() % 100;
    if (tirada < 2) {
      QTest::keyClick(destino, Qt::Key_Escape);
    } else if (tirada < 6) {
      static const char* const kLargos[] = {"99999999999999", "922337203685477.5807",
                                            "1e30",           "123456789012345.6789",
                                            "32768",          "0.00001"};
      QTest::keyClicks(destino, kLargos[azar() % std::size(kLargos)]);
    } else {
      QTest::keyClick(destino, kTeclas[azar() % std::size(kTeclas)]);
    }
  }

  // Every accepted collection: its lines add up to debits less credits.
  void alCerrar(QWidget* dialogo) {
    auto* f = qobject_cast<frmVarelta*>(dialogo);
    const auto mov = f && f->result() == QDialog::Accepted ? f->resultado() : nullptr;
    if (!mov)
      return;
    ++aceptados;
    Currency suma;
    for (const auto& d : *mov->colDetalles)
      suma += d->Monto;
    EXPECT_EQ(suma, mov->Debitos - mov->Creditos);
  }
  int aceptados = 0;
};

// Once with the change window, once with the change split by the cashier
// (its own dialog, credit offered) in its place.
TEST_F(Mono, CollectionDialogSurvivesRandomKeys) {
  ajuste("AutoCierre", "1");
  ajuste("AcreditarVueltos", "1");
  for (const char* dividido : {"0", "1"}) {
    ajuste("VueltoDetallado", dividido);
    aceptados = 0;
    aporrear(
        [] {
          auto* f = new frmVarelta;
          f->preparar(cur("1250.5"), cur("200.08"), cur("50"));
          return f;
        },
        teclasPorDialogo());
    EXPECT_GT(aceptados, 0) << "VueltoDetallado=" << dividido;
  }
}

TEST_F(Mono, RefundDialogSurvivesRandomKeys) {
  ajuste("AutoCierre", "1");
  aporrear(
      [] {
        auto* f = new frmVarelta;
        f->preparar(cur("-120.5"), cur("-19.28"), cur("0"));
        f->comoDevolucion();
        return f;
      },
      teclasPorDialogo());
  EXPECT_GT(aceptados, 0);
}

TEST_F(Mono, DetailAndCatalogueDialogsSurviveRandomKeys) {
  aporrear(
      [] {
        auto linea = std::make_shared<CDetalleIngreso>();
        linea->medio = "USD";
        auto* f = new frmDetallesMedio;
        f->preparar(linea);
        return static_cast<QWidget*>(f);
      },
      teclasPorDialogo());
  aporrear([] { return static_cast<QWidget*>(new frmDefinirMedioPago); }, teclasPorDialogo());
}

}  // namespace
}  // namespace caja
