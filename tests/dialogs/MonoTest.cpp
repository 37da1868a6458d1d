// Random keys from a fixed seed typed into the real dialogs, offscreen, the
// way a hurried cashier might: digits, separators, Space, Enter, Tab, F2,
// Escape, arrows, letters, very long numbers. A dialog that opens another
// (F2's detail dialog) gets the keys while it is open. No exception may reach
// Qt, the dialogs must keep answering, and every accepted movement must add up.

#include <gtest/gtest.h>

#include <QApplication>
#include <QEventLoop>
#include <QTest>
#include <QTimer>
#include <functional>
#include <random>

#include "caja/base/Conversiones.h"
#include "caja/dialogs/frmDefinirMedioPago.h"
#include "caja/dialogs/frmDetallesMedio.h"
#include "caja/dialogs/frmVarelta.h"
#include "caja/service/General.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

// Keys per dialog: 20,000 unless CAJA_MONO_TECLAS says otherwise.
int teclasPorDialogo() {
  const int pedidas = qEnvironmentVariableIntValue("CAJA_MONO_TECLAS");
  return pedidas > 0 ? pedidas : 20000;
}

class Mono : public ::testing::Test, protected test::ConSqlite {
 protected:
  void SetUp() override {
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Clase, Atributos, PorcentajeISLR, titulo, posicion) "
        "VALUES ('USD', 8, 1025, 0, 'Dólares', 1), ('EUR', 7, 1088, 39.8, 'Euros', 2), "
        "('CHE', 1, 30, 0, 'Cheque', 3), ('TDC', 3, 36, 0, 'Tarjeta', 4), "
        "('CER', 7, 64, 0, 'Factor cero', 5), ('IDX', 7, 512, 1.5, 'Indexado', 6)");
    db->ExecuteSQL(
        "INSERT INTO hostEmpresa (id, ContribuyenteEspecial, porcentajeIGTF456, TipoCambioCaja) "
        "VALUES (1, ?, 3, 36.5)",
        {Variant(true)});
    InicializarEntorno(db);
  }

  // Types `teclas` random keys into whatever window has the keyboard, opening
  // the dialog again with `abrir` whenever it has closed.
  void teclear(const std::function<QWidget*()>& abrir, int teclas) {
    std::mt19937 azar(20261122);
    const auto mostrar = [&abrir] {
      QWidget* w = abrir();
      w->show();
      return w;
    };
    QWidget* dialogo = mostrar();
    int hechas = 0;
    QEventLoop bucle;
    // Each step schedules the next before it types: a key that opens a modal
    // dialog runs the next steps inside that dialog's own event loop.
    std::function<void()> paso = [&] {
      if (hechas >= teclas) {
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
        dialogo = mostrar();
      }
      QWidget* destino = QApplication::activeModalWidget();
      if (!destino)
        destino = dialogo;
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
  virtual void alCerrar(QWidget*) {}
};

class MonoCobro : public Mono {
 protected:
  void alCerrar(QWidget* dialogo) override {
    auto* f = static_cast<frmVarelta*>(dialogo);
    const auto mov = f->result() == QDialog::Accepted ? f->resultado() : nullptr;
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
TEST_F(MonoCobro, CollectionDialogSurvivesRandomKeys) {
  entorno.settings->SaveSetting("ZOR", "frmVarelta", "AutoCierre", "1");
  entorno.settings->SaveSetting("ZOR", "frmVarelta", "AcreditarVueltos", "1");
  for (const char* dividido : {"0", "1"}) {
    entorno.settings->SaveSetting("ZOR", "frmVarelta", "VueltoDetallado", dividido);
    aceptados = 0;
    teclear(
        [] {
          auto* f = new frmVarelta;
          f->preparar(cur("1250.5"), cur("200.08"), cur("50"));
          return f;
        },
        teclasPorDialogo());
    EXPECT_GT(aceptados, 0) << "VueltoDetallado=" << dividido;
  }
}

TEST_F(Mono, DetailAndCatalogueDialogsSurviveRandomKeys) {
  teclear(
      [] {
        auto linea = std::make_shared<CDetalleIngreso>();
        linea->medio = "USD";
        auto* f = new frmDetallesMedio;
        f->preparar(linea);
        return static_cast<QWidget*>(f);
      },
      teclasPorDialogo());
  teclear([] { return static_cast<QWidget*>(new frmDefinirMedioPago); }, teclasPorDialogo());
}

}  // namespace
}  // namespace caja
