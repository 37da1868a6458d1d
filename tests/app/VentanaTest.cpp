// The till's window driven by keys, in-process, on each database: a whole
// day, and random keys.

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <cstdlib>
#include <random>

#include "app/datos/Demo.h"
#include "app/datos/Supervisores.h"
#include "app/ventana/Ventana.h"
#include "caja/base/Conversiones.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/service/Settings.h"
#include "tests/support/HostPrueba.h"
#include "tests/support/Modales.h"

namespace caja {
namespace {

using test::cuandoAparezca;
using test::cur;
using test::teclear;

QApplication& aplicacion() {
  static int argc = 1;
  static char nombre[] = "caja_app_tests";
  static char* argv[] = {nombre, nullptr};
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  // Never destroyed: the component's statics and the tests' own go first.
  static QApplication* app = new QApplication(argc, argv);
  return *app;
}

void intro() {
  QWidget* foco = QApplication::focusWidget();
  QTest::keyClick(foco ? foco : QApplication::activeModalWidget(), Qt::Key_Return);
}

// A till of the demo shop with a cashier and a supervisor; at a till on a
// server its journal lives in the test's folder and nothing is sent behind
// the test's back.
class Ventana : public test::PorMotor {
 protected:
  void sembrar() override {
    aplicacion();
    setenv("XDG_DATA_HOME", (carpeta.ruta() / "datos").c_str(), 1);
    setenv("CAJA_PRUEBA_SIN_ENVIADOR", "1", 1);
    app::crearDemo(*db);
    app::agregarCajero(*db, "ANA", "246802");
    app::agregarSupervisor(*db, "JEFE", "975302", 9);
    // Enter on a complete amount accepts the collection, as a quick till has it.
    entorno.settings->SaveSetting(kAppZOR, "frmVarelta", "AutoCierre", "1");
  }
  void TearDown() override {
    unsetenv("XDG_DATA_HOME");
    unsetenv("CAJA_PRUEBA_SIN_ENVIADOR");
  }

  // The credential dialog answered by `quien` with `pin`.
  static void firmar(const char* quien, const char* pin) {
    cuandoAparezca("dlgCredencial", [=](QWidget& d) {
      d.findChild<QComboBox*>("cbNombre")->setCurrentText(quien);
      teclear(d, "txPin", pin);
      intro();
    });
  }

  // The collection dialog paid in national cash, and the receipt closed.
  static void cobrarEnEfectivo(const char* efectivo) {
    cuandoAparezca("frmVarelta", [=](QWidget& d) {
      teclear(d, "txEfectivo", efectivo);
      intro();
    });
    cuandoAparezca("dlgTexto", [](QWidget&) { intro(); });
  }

  std::unique_ptr<app::VentanaCaja> abrir() {
    auto v = std::make_unique<app::VentanaCaja>(destino(), std::nullopt, "CAJERO");
    firmar("ANA", "246802");
    EXPECT_TRUE(v->empezar());
    v->resize(1024, 768);
    v->show();
    v->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(v.get()));
    return v;
  }

  void vender(app::VentanaCaja& v, const char* venta, const char* iva, const char* documento,
              const char* efectivo) {
    cuandoAparezca("formulario", [=](QWidget& f) {
      teclear(f, "txVenta", venta);
      teclear(f, "txIVA", iva);
      teclear(f, "txDocumento", documento);
      intro();
    });
    cobrarEnEfectivo(efectivo);
    tecla(v, Qt::Key_F2);
  }

  // A key as the keyboard gives it: to what has the focus.
  static void tecla(app::VentanaCaja& v, Qt::Key k) {
    QWidget* foco = QApplication::focusWidget();
    QTest::keyClick(foco ? foco : &v, k);
  }

  // The movements' table at row `fila`, by keys.
  static void elegir(app::VentanaCaja& v, int fila) {
    auto* tabla = v.findChild<QTableWidget*>("tbMovimientos");
    tabla->setFocus();
    QTest::keyClick(tabla, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < fila; ++i)
      QTest::keyClick(tabla, Qt::Key_Down);
  }

  // A SELECT of one number on the shop's database.
  double cifra(const std::string& sql) { return CDbl(db->ReadScalar(sql)); }
};

// Sign-in, three sales, a refund of the first, a withdrawal, a void of the
// second and the closing, by keys; the shop's database has each act once.
// EFE in the drawer: 116 + 58 + 232 - 50 - 20 - 58 (voided) = 278; the
// cashier counts 277, and a difference needs a supervisor (asked while the
// closing runs on the server, at a till on one).
TEST_P(Ventana, ACashiersWholeDayByKeys) {
  auto v = abrir();
  vender(*v, "100", "16", "FAC:1", "116");
  vender(*v, "50", "8", "FAC:2", "58");
  vender(*v, "200", "32", "FAC:3", "232");

  elegir(*v, 0);
  cuandoAparezca("formulario", [](QWidget& f) {
    // What FAC 1 may still give back, filled in: all it charged.
    EXPECT_EQ(Currency::parse(f.findChild<QLineEdit*>("txMonto")->text().toStdString()),
              cur("116"));
    teclear(f, "txMonto", "50");
    intro();
  });
  firmar("JEFE", "975302");
  cobrarEnEfectivo("50");
  tecla(*v, Qt::Key_F3);

  cuandoAparezca("formulario", [](QWidget& f) {
    teclear(f, "txMonto", "20");
    teclear(f, "txMotivo", "deposito en el banco");
    intro();
  });
  firmar("JEFE", "975302");
  tecla(*v, Qt::Key_F5);

  elegir(*v, 1);
  cuandoAparezca("formulario", [](QWidget& f) {
    teclear(f, "txTexto", "cobrado dos veces");
    intro();
  });
  firmar("JEFE", "975302");
  tecla(*v, Qt::Key_F6);

  auto* estado = v->findChild<QTableWidget*>("tbMovimientos");
  ASSERT_EQ(estado->rowCount(), 5);
  EXPECT_EQ(estado->item(1, 6)->text(), "anulado");

  cuandoAparezca("formularioCierre", [](QWidget& f) {
    teclear(f, "txContadoEFE", "277");
    EXPECT_EQ(f.findChild<QLabel*>("lblDiferencia")->text().toStdString(), "Diferencia: EFE -1.00");
    intro();
  });
  firmar("JEFE", "975302");
  cuandoAparezca("dlgTexto", [](QWidget&) { intro(); });
  tecla(*v, Qt::Key_F11);

  if (const char* captura = std::getenv("CAJA_CAPTURA_VENTANA"))
    v->grab().save(captura);

  EXPECT_EQ(cifra("SELECT COUNT(*) FROM MovimientosCaja"), 5);
  EXPECT_EQ(cifra("SELECT COUNT(*) FROM MovimientosCaja WHERE Clasificacion = 'DEVOLUCION'"), 1);
  EXPECT_EQ(cifra("SELECT M.NumeroDocumento FROM hostAnulaciones A INNER JOIN MovimientosCaja M "
                  "ON M.TransID = A.TransID"),
            2);
  EXPECT_EQ(cifra("SELECT COUNT(*) FROM hostCierres"), 1);
  EXPECT_EQ(db->ReadScalar("SELECT contado FROM hostCierreDetalles WHERE codigoMedio = 'EFE'"),
            Variant(cur("277")));
  EXPECT_EQ(db->ReadScalar("SELECT diferencia FROM hostCierreDetalles WHERE codigoMedio = 'EFE'"),
            Variant(cur("-1")));
  EXPECT_EQ(db->ReadScalar("SELECT Aprobador FROM hostAuditoria WHERE Accion = 'cierre'"),
            Variant("JEFE"));
  EXPECT_EQ(cifra("SELECT COUNT(*) FROM hostAuditoria WHERE Accion IN ('devolucion', 'salida', "
                  "'anulacion', 'cierre') AND Cajero = 'ANA'"),
            4);
  v->permitirCierre();
}

// Random keys into whatever has the focus, modal dialogs included: the
// window stays, and what was saved was saved whole, each movement with its
// key and the drawer moved by exactly the lines that stand.
TEST_P(Ventana, RandomKeysNeitherEndTheTillNorSaveHalfAMovement) {
  const int cuantas = std::atoi(std::getenv("CAJA_TECLAS_AL_AZAR") ?: "20000");
  auto v = abrir();
  const std::vector<int> teclas = {
      Qt::Key_0,         Qt::Key_1,       Qt::Key_2,      Qt::Key_5,      Qt::Key_9,
      Qt::Key_Period,    Qt::Key_A,       Qt::Key_S,      Qt::Key_F,      Qt::Key_Colon,
      Qt::Key_Tab,       Qt::Key_Backtab, Qt::Key_Up,     Qt::Key_Down,   Qt::Key_Space,
      Qt::Key_Backspace, Qt::Key_Return,  Qt::Key_Escape, Qt::Key_Escape, Qt::Key_F2,
      Qt::Key_F3,        Qt::Key_F4,      Qt::Key_F5,     Qt::Key_F6,     Qt::Key_F7,
      Qt::Key_F8,        Qt::Key_F9,      Qt::Key_F10,    Qt::Key_F11,    Qt::Key_F12};
  std::mt19937 azar(20261125);
  int enviadas = 0;
  QEventLoop bucle;
  std::function<void()> siguiente = [&] {
    QWidget* modal = QApplication::activeModalWidget();
    if (enviadas >= cuantas) {
      if (!modal)
        return bucle.quit();
      QTimer::singleShot(0, siguiente);
      QTest::keyClick(modal, Qt::Key_Escape);
      return;
    }
    // Scheduled before the key, whose dialog may hold this call: the next
    // key runs from that dialog's own loop. Keys come slower while the
    // window waits on the server, so that its acts there run too, not only
    // their Escape, and the keys go on after them.
    const QString nombre = modal ? modal->objectName() : QString();
    const bool esperando = nombre == "dlgConectando" || nombre == "dlgServidor";
    QTimer::singleShot(esperando ? 20 : 0, siguiente);
    ++enviadas;
    QWidget* destino = QApplication::focusWidget();
    if (!destino || (modal && !modal->isAncestorOf(destino) && destino != modal))
      destino = modal ? modal : v.get();
    QTest::keyClick(destino, static_cast<Qt::Key>(teclas[azar() % teclas.size()]));
  };
  QTimer::singleShot(0, siguiente);
  bucle.exec();
  EXPECT_EQ(enviadas, cuantas);
  EXPECT_TRUE(v->isVisible());
  auto local = app::PoliticaCaja::abrir(destino(), app::Acceso::Guarda);
  EXPECT_EQ(CLng(local.db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja M WHERE NOT EXISTS "
                                      "(SELECT 1 FROM hostClaves K WHERE K.TransID = M.TransID)")),
            0);
  SaldoCaja saldo;
  saldo.load(1);
  const auto efectivo = saldo.detalles ? saldo.detalles->Find("EFE") : nullptr;
  EXPECT_EQ(efectivo ? Variant(efectivo->valorNominal) : Variant(cur("0")),
            local.db->ReadScalar(
                "SELECT COALESCE(SUM(D.MontoNominal), 0) FROM DetallesVarelta D INNER JOIN "
                "MovimientosCaja M ON M.TransID = D.TransID WHERE D.Medio = 'EFE' AND NOT EXISTS "
                "(SELECT 1 FROM hostAnulaciones A WHERE A.TransID = M.TransID)"));
  std::cout << "teclas: " << enviadas << ", movimientos guardados: "
            << CLng(local.db->ReadScalar("SELECT COUNT(*) FROM MovimientosCaja")) << std::endl;
  v->permitirCierre();
}

CAJA_EN_CADA_MOTOR(Ventana);

}  // namespace
}  // namespace caja
