#pragma once

#include <QDialog>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

namespace caja {

class CMedioPago;

// The payment-method catalogue: browse by code, edit every field, create and
// delete. "EFE" is reserved for national cash; a method used by stored
// payment lines cannot be deleted.
class frmDefinirMedioPago : public QDialog {
  Q_OBJECT

 public:
  explicit frmDefinirMedioPago(QWidget* parent = nullptr);

  // The entry of CMedioPago::CreateNew: the code to register, then the
  // creation context (3), shown modally; `contexto` is left 0 when nothing
  // was saved.
  void SetCodigo(const std::string& codigo);
  void SetContexto(std::int16_t& contexto);

  // Saves the fields through ActualizarDescriptivos; false with a message when refused.
  bool guardar();
  bool eliminar();
  void nuevo();
  void cargarLista();

 protected:
  void done(int resultado) override;

 private:
  void mostrar(const CMedioPago& medio);
  void seleccionar(const QString& codigo);

  QListWidget* lstMedios;
  QLineEdit *txCodigo, *txDescripcion, *txTitulo, *txTextoAyuda, *txCuentaActivo,
      *txCuentaComisiones, *txBancoRelacionado;
  QComboBox* cbxClase;
  QSpinBox* numPosicion;
  QDoubleSpinBox *numTipoCambio, *numRetencion;
  QCheckBox* chkElectronico;
  std::vector<QCheckBox*> chkAtributos;
  QPushButton *cbNuevo, *cbGuardar, *cbEliminar, *cbCerrar;
  bool guardado_ = false;
  // The record as shown, and the numeric fields changed since: a field left
  // alone saves the stored value, not the rounding the widget shows.
  std::unique_ptr<CMedioPago> mostrado_;
  std::set<QWidget*> editados_;
};

}  // namespace caja
