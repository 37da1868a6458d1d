#pragma once

#include <QDialog>
#include <map>
#include <memory>

#include "caja/dialogs/modelo/DetalleMedio.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QStatusBar;
class QTableWidget;

namespace caja {

class CajaNumerica;

// The particulars of one payment line, the fields opened by its method's
// flags. A field that fails its check keeps the focus; nothing is written to
// the line until it is accepted.
class frmDetallesMedio : public QDialog {
  Q_OBJECT

 public:
  // Edits `detalle` modally; true when accepted. False without showing
  // anything when the line's method is unknown.
  static bool EditDetalle(const std::shared_ptr<CDetalleIngreso>& detalle,
                          QWidget* parent = nullptr);

  explicit frmDetallesMedio(QWidget* parent = nullptr);
  ~frmDetallesMedio() override;
  // The set-up of EditDetalle, without showing.
  bool preparar(const std::shared_ptr<CDetalleIngreso>& detalle);
  bool aceptado() const { return aceptado_; }

 protected:
  bool eventFilter(QObject* objeto, QEvent* evento) override;
  bool filtrar(QObject* objeto, QEvent* evento);
  void mostrarAyuda(DetalleMedio::Campo campo);
  void done(int resultado) override;

 private:
  void crearControles();
  QLineEdit* texto(DetalleMedio::Campo campo) const;
  bool validar(DetalleMedio::Campo campo);
  void volverA(QWidget* control);
  void leerTabla();
  void validarCelda(int fila, int columna);
  void aceptar();

  DetalleMedio modelo_;
  bool aceptado_ = false;
  bool validando_ = false;
  DetalleMedio::Campo ultimoCampo_ = DetalleMedio::Campo::Monto;
  CajaNumerica* numMontoRecibido;
  QComboBox* cbxEmisor;
  QLineEdit *txCuenta, *txIdTitular, *txNumDoc, *txClaveAutorizacion;
  QTableWidget* flxDenominaciones;
  QLabel* lblDetallesDenominacion;
  QPushButton *cbOk, *cbCancelar;
  QStatusBar* StatusBar1;
  QFormLayout* formulario_;
  std::map<QObject*, DetalleMedio::Campo> campos_;
};

}  // namespace caja
