#include "caja/dialogs/frmDetallesMedio.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QTest>

#include "caja/base/Conversiones.h"
#include "caja/dialogs/frmDefinirMedioPago.h"
#include "caja/uisupport/CajaNumerica.h"
#include "caja/uisupport/clsComboWidth.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

class Detalle : public ::testing::Test, protected test::ConSqlite {
 protected:
  void SetUp() override {
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Clase, Atributos, PorcentajeISLR, titulo, posicion) "
        "VALUES "
        "('TDC', 3, 32, 0, 'Tarjeta', 1), ('CHE', 1, 30, 0, 'Cheque', 2), "
        "('ZEL', 7, 64, 36.5, 'Zelle', 3), ('VAL', 7, 0, 0, 'Vale', 4), "
        "('BIL', 0, 1, 0, 'Billetes', 5)");
    db->ExecuteSQL(
        "INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) VALUES ('CHE', 'BANESCO')");
    db->SetVerificador([this](const std::string& m) {
      preguntas.push_back(m);
      return Variant(nivel);
    });
  }
  void TearDown() override { EXPECT_EQ(QApplication::topLevelWidgets().count(), 0); }

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
  int nivel = 0;
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

// Each field refuses to be left while invalid (a new issuer needs level 5);
// acceptance names the first empty field and writes nothing before it succeeds.
TEST_F(Detalle, FieldsHoldTheFocusUntilValidAndAcceptanceWritesTheLine) {
  auto f = abrir("CHE", false);
  QTest::keyClicks(campo(*f, "numMontoRecibido"), "10");
  aceptar(*f);
  EXPECT_EQ(entorno.util->mensajes, std::vector<std::string>{"Codigo de emisor inválido"});
  EXPECT_TRUE(linea->CodigoEmisor.empty());
  nivel = 4;
  EXPECT_FALSE(dejar(*f, "cbxEmisor", "bod"));
  EXPECT_EQ(preguntas, std::vector<std::string>{"Registrar nuevo emisor: BOD"});
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

TEST_F(Detalle, MethodWithoutFlagsShowsOnlyTheAmount) {
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
}

TEST_F(Detalle, DenominationRowsBecomeTheLinesCoins) {
  auto f = abrir("BIL");
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
}

// Saving a method rewrites no number the cashier did not touch: the widgets
// round (four decimals, two, a class list of 0-8), the stored values do not.
TEST_F(Detalle, CatalogueSavesUntouchedNumbersExactlyAsStored) {
  db->ExecuteSQL(
      "INSERT INTO MediosPago (Codigo, Clase, Atributos, PorcentajeISLR, "
      "PorcentajeRetencionEmisor, titulo, posicion) VALUES ('RAR', 12, 64, 39.80125, 0.125, "
      "'Raro', 9)");
  frmDefinirMedioPago f;
  f.show();
  auto* lista = f.findChild<QListWidget*>("lstMedios");
  lista->setCurrentItem(lista->findItems("RAR", Qt::MatchExactly).front());
  f.findChild<QLineEdit*>("txTitulo")->setText("Raro nuevo");
  ASSERT_TRUE(f.guardar());
  CMedioPago m;
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

}  // namespace
}  // namespace caja
