#pragma once

#include <QDialog>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/acciones/Jornada.h"
#include "app/acciones/Venta.h"

class QComboBox;
class QFormLayout;
class QLineEdit;

namespace caja::app {

// A form of labelled fields in order: Enter accepts once `aceptable` takes
// the values (else it says why and the form stays), Escape backs out with
// nothing done.
class Formulario : public QDialog {
 public:
  Formulario(QWidget* padre, const QString& titulo);
  QLineEdit* campo(const QString& etiqueta, const char* nombre, const QString& valor = {});
  QComboBox* lista(const QString& etiqueta, const char* nombre, const QStringList& opciones);
  // Whether it was accepted.
  bool pedir(std::function<void()> aceptable);

 protected:
  void done(int resultado) override;

 private:
  QFormLayout* forma_;
  std::function<void()> aceptable_;
};

// An amount typed in a field: digits with '.' or ',' for decimals, at most
// four; empty is 0 when `opcional`. A Rechazo naming `que` otherwise.
Currency montoDeCampo(const QLineEdit& campo, const std::string& que, bool opcional = false);

// The forms of the till's acts; nothing when the cashier backs out.
// A sale: amount, IVA, credit, document (TIPO:NUMERO) and customer.
std::optional<Venta> pedirVenta(QWidget* padre, const QString& titulo);
// A refund of `documento` (empty for none), `resto` still refundable filled in.
std::optional<Venta> pedirDevolucion(QWidget* padre, const std::string& documento,
                                     std::optional<Currency> resto);
// Cash in or out: the method, the amount and why.
std::optional<Venta> pedirEfectivo(QWidget* padre, const char* clasificacion,
                                   const QStringList& medios);
// A text, such as a void's reason or a parking key; `obligatorio` refuses empty.
std::optional<std::string> pedirTexto(QWidget* padre, const QString& titulo,
                                      const QString& etiqueta, bool obligatorio);
// Lines to park: a key and one line.
struct Aparcado {
  std::string clave;
  std::vector<Pago> pagos;
};
std::optional<Aparcado> pedirAparcado(QWidget* padre, const QStringList& medios);
// The till's rate.
std::optional<double> pedirTasa(QWidget* padre, double actual);
// The closing count: per method what was counted, national cash also by
// notes and coins, the difference against the drawer shown as it is typed.
std::optional<Arqueo> pedirArqueo(QWidget* padre, std::int32_t maquina,
                                  const std::vector<LineaCierre>& esperado);

// A text shown in a fixed-width font (a receipt, a closing's summary)
// until Enter or Escape.
void mostrarTexto(QWidget* padre, const QString& titulo, const std::string& texto);

}  // namespace caja::app
