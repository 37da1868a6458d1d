#pragma once

#include <QDialog>
#include <functional>
#include <vector>

#include "caja/dialogs/modelo/DivisionVuelto.h"
#include "caja/dialogs/modelo/Vuelto.h"

class QLabel;
class QPushButton;

namespace caja {

class CajaNumerica;

// The change-split dialog: the change to hand back at the top, one input per
// method that can give change (national cash `txVueltoEFE`, then each
// cash-like method, foreign ones in their own currency), the credited amount
// (`txCredito`) when the shop credits change, and what is still to be given
// out, always in view. Enter moves on (and accepts from the last input),
// Space puts the remainder into the focused input, Escape cancels.
// Acceptance is refused, with the focus on the field at fault, while the
// split does not add up to the change.
class frmDefinirVuelto : public QDialog {
  Q_OBJECT

 public:
  frmDefinirVuelto(DivisionVuelto& division, const std::string& simboloMEX,
                   QWidget* parent = nullptr);

  // The scripted form of the cashier's work: types an amount into the input
  // of a method (or "CREDITO"); false for a code without an input.
  bool teclear(const std::string& codigo, Currency monto);
  // Empties every input, the suggestion included.
  void limpiar();
  // Runs the accept button; true when the split was accepted.
  bool aceptarGuion();
  bool aceptado() const { return aceptado_; }

 private:
  void crearControles(const std::string& simboloMEX);
  CajaNumerica* entrada(std::size_t i) const { return txMontos_.at(i); }
  void leer();
  void mostrar();
  void alEnter(std::size_t i);
  void alEspacio(std::size_t i);
  void aceptar();

  DivisionVuelto& division_;
  std::vector<CajaNumerica*> txMontos_;  // the entries, then the credit
  QLabel* lblVuelto;
  QLabel* lblRestante;
  QPushButton* cbAceptar;
  QPushButton* cbCancelar;
  bool aceptado_ = false;
};

// The change object of a shop that splits or credits change: it opens
// frmDefinirVuelto pre-filled with the suggestion. A script, when given,
// works the dialog instead of the cashier.
class VueltoDividido : public Vuelto {
 public:
  using Guion = std::function<bool(frmDefinirVuelto&)>;
  explicit VueltoDividido(QWidget* padre, Guion guion = {})
      : padre_(padre), guion_(std::move(guion)) {}
  bool detallarVuelto(const CobroVarelta& cobro, Currency monto, Currency& acreditable) override;
  // The credited amount of the last breakdown.
  Currency credito() const { return credito_; }

 private:
  QWidget* padre_;
  Guion guion_;
  Currency credito_;
};

}  // namespace caja
