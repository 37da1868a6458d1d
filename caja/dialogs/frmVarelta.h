#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "caja/dialogs/modelo/CobroVarelta.h"

class QLabel;
class QPushButton;
class QStatusBar;
class QGroupBox;

namespace caja {

class CajaNumerica;
class frmDefinirVuelto;

// The collection dialog: the sale's amounts, national cash and one input per
// active payment method, the running change, and acceptance. The arithmetic is
// `CobroVarelta`'s; this class lays out the controls, relays the cashier's keys
// and shows what the model computes. Enter moves on, Space completes the
// focused input with what is missing, Escape cancels.
class frmVarelta : public QDialog {
  Q_OBJECT

 public:
  explicit frmVarelta(QWidget* parent = nullptr);
  ~frmVarelta() override;

  // The whole collection: loads, shows modally, shows the change on
  // acceptance; the filled movement, or nullptr when cancelled.
  std::shared_ptr<CVarelta> Cobrar(Currency MontoVenta, Currency MontoIVA, Currency MontoCredito);
  // Loading and opening without showing: what `Cobrar` does before `exec`.
  void preparar(Currency MontoVenta, Currency MontoIVA, Currency MontoCredito);
  // What `Cobrar` does after `preparar`: shows the dialog modally, then the change.
  std::shared_ptr<CVarelta> mostrar();
  // After `preparar` with negative amounts: the dialog of a refund. It reads
  // "A devolver", the cashier types (and `teclear` takes) what is handed
  // back as positive amounts, no change is shown, and it accepts only what
  // adds up exactly to the refund.
  void comoDevolucion();

  // The tax-change event: amount and cancel flag, both changeable by the listener.
  std::function<void(Currency& monto, bool& cancelar)> Aplicar2602;

  // The scripted form of the cashier's work, for hosts that automate a sale:
  // types an amount into the input of a method ("EFE" for national cash) and
  // presses accept. False for a code without an input.
  bool teclear(const std::string& codigo, Currency monto);
  // Runs the accept button; true when the movement was filled.
  bool aceptarGuion();
  // Adds a line taken up again (a parked one) to the input of its method,
  // particulars and counted coins included. False for a code without an input.
  bool precargar(const CDetalleIngreso& linea);

  // What works the change-split dialog when the shop splits change, in place
  // of the cashier (for hosts that automate a sale); empty: the cashier does.
  std::function<bool(frmDefinirVuelto&)> guionVuelto;
  // The change object of the last acceptance: how the change was handed back.
  const Vuelto* cambio() const { return vuelto_.get(); }

  // Read-only properties a host may ask of the form. The component collects
  // cash sales only: no credit condition, no customer of its own.
  Currency valorIGTF() const { return cobro_->valorIGTF(); }
  const DescriptorMedio& descriptorM(std::size_t i) const { return cobro_->medios.at(i); }
  Currency TotalRecibido() const { return cobro_->TotalRecibido(); }
  Currency Recibido() const { return cobro_->TotalRecibido(); }
  bool isCredito() const { return false; }
  std::string CodigoCliente() const { return {}; }
  std::string CodigoCondicion() const { return "CONTADO"; }
  bool AplicarCreditos() const { return false; }

  CobroVarelta& cobro() { return *cobro_; }
  std::shared_ptr<CVarelta> resultado() const { return cobro_ ? cobro_->resultado : nullptr; }
  // Inner height in twips for a given number of inputs.
  static int altoFormulario(std::size_t entradas);

 protected:
  void resizeEvent(QResizeEvent* evento) override;
  void showEvent(QShowEvent* evento) override;
  bool eventFilter(QObject* objeto, QEvent* evento) override;
  void keyPressEvent(QKeyEvent* evento) override;
  void done(int resultado) override;

 private:
  std::optional<std::optional<std::size_t>> entradaDe(const std::string& codigo) const;
  void crearControles();
  void crearEntradaMedio(std::size_t i);
  void conectarEntrada(CajaNumerica* caja, std::optional<std::size_t> indice);
  void aplicarTasa();
  void resaltarVuelto();
  void mostrarEntradas();
  void leerEntradas();
  // An input's amount as the model keeps it and back: negated in a refund.
  Currency comoSeTeclea(Currency monto) const;
  std::string ayuda(std::optional<std::size_t> indice) const;
  void mostrarSinSigno();
  void completarDevolucion(std::optional<std::size_t> indice);
  bool completo(Currency vuelto) const;
  // Refreshes the labels; `autoaceptar` lets a complete amount accept the dialog.
  void recalcular(bool autoaceptar);
  void alTeclear(CajaNumerica* caja);
  void alDejar(std::optional<std::size_t> indice);
  void cambiarIVA();
  std::shared_ptr<CVarelta> llenar();
  void recordarLineas(CVarelta& mov);
  void aceptar();
  // F2: the particulars of the focused input's payment line.
  void editarDetalle();
  void posicionar(int h);

  std::unique_ptr<CobroVarelta> cobro_;
  std::unique_ptr<Vuelto> vuelto_;
  bool recalculando_ = false;
  bool activado_ = false;
  bool aceptando_ = false;
  bool devolucion_ = false;
  // A refused acceptance is not retried by itself until the cashier types again.
  bool autoRechazado_ = false;

  QGroupBox* Frame1 = nullptr;
  QLabel *lblMontoCompra, *lblImpuesto, *lblIVA, *lblTotal, *lblNotasCredito, *lblNetoMN,
      *lblNetoUSD, *Label3, *IGTF, *lblVuelto, *lblVueltoUSD, *lblVueltoMixto, *Label5,
      *lblEfectivo1;
  CajaNumerica* txEfectivo = nullptr;
  std::vector<CajaNumerica*> txMediosX;
  std::vector<QLabel*> tituloMediosX;
  QPushButton *cbAceptar, *cbCancelar, *cbDetalles;
  QStatusBar* StatusBar1 = nullptr;
};

}  // namespace caja
