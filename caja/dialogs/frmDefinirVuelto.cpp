#include "caja/dialogs/frmDefinirVuelto.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "caja/base/Formato.h"
#include "caja/dialogs/modelo/CobroVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"
#include "caja/uisupport/CajaNumerica.h"
#include "caja/uisupport/Protegido.h"

namespace caja {

namespace {

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

std::string moneda(Currency c) {
  return Format(Variant(c), kFormatoMoneda);
}

// "Dólares ($ a 36.50):" for foreign cash; the national cash needs no unit.
std::string rotulo(const EntradaVuelto& e, const std::string& simboloMEX, double tipoCambio) {
  if (!e.extranjera)
    return e.titulo + ":";
  const std::string unidad = e.factor == tipoCambio ? simboloMEX + " a " : "a ";
  return e.titulo + " (" + unidad + Format(Variant(e.factor), kFormatoMonto) + "):";
}

}  // namespace

frmDefinirVuelto::frmDefinirVuelto(DivisionVuelto& division, const std::string& simboloMEX,
                                   QWidget* parent)
    : QDialog(parent), division_(division) {
  setObjectName("frmDefinirVuelto");
  setWindowTitle("Vuelto");
  crearControles(simboloMEX);
  mostrar();
}

void frmDefinirVuelto::crearControles(const std::string& simboloMEX) {
  auto* formulario = new QFormLayout(this);
  lblVuelto = new QLabel(q(moneda(division_.vuelto)), this);
  lblVuelto->setObjectName("lblVuelto");
  QFont grande = lblVuelto->font();
  grande.setPointSize(grande.pointSize() + 4);
  grande.setBold(true);
  lblVuelto->setFont(grande);
  formulario->addRow("Vuelto a entregar:", lblVuelto);
  auto agregar = [&](const std::string& nombre, const std::string& texto) {
    auto* caja = new CajaNumerica(this);
    caja->setObjectName(q(nombre));
    const std::size_t i = txMontos_.size();
    connect(caja, &CajaNumerica::enter, this, protegerSlot([this, i] { alEnter(i); }));
    connect(caja, &CajaNumerica::espacio, this, protegerSlot([this, i] { alEspacio(i); }));
    connect(caja, &QLineEdit::textEdited, this, protegerSlot([this] { leer(); }));
    auto* etiqueta = new QLabel(q(texto), this);
    etiqueta->setObjectName(q("lbl" + nombre.substr(2)));
    formulario->addRow(etiqueta, caja);
    txMontos_.push_back(caja);
  };
  for (const auto& e : division_.entradas)
    agregar("txVuelto" + e.codigo, rotulo(e, simboloMEX, division_.tipoCambio()));
  if (division_.conCredito)
    agregar("txCredito", "Acreditado al cliente:");
  lblRestante = new QLabel(this);
  lblRestante->setObjectName("lblRestante");
  lblRestante->setFont(grande);
  formulario->addRow("Por repartir:", lblRestante);
  cbAceptar = new QPushButton("Aceptar", this);
  cbAceptar->setObjectName("cbAceptar");
  cbCancelar = new QPushButton("Cancelar", this);
  cbCancelar->setObjectName("cbCancelar");
  for (QPushButton* b : {cbAceptar, cbCancelar})
    b->setAutoDefault(false);
  connect(cbAceptar, &QPushButton::clicked, this, protegerSlot([this] { aceptar(); }));
  connect(cbCancelar, &QPushButton::clicked, this, &QDialog::reject);
  auto* botones = new QHBoxLayout;
  botones->addStretch();
  botones->addWidget(cbAceptar);
  botones->addWidget(cbCancelar);
  formulario->addRow(botones);
}

void frmDefinirVuelto::leer() {
  for (std::size_t i = 0; i < division_.entradas.size(); ++i)
    division_.entradas[i].nominal = entrada(i)->valor();
  if (division_.conCredito)
    division_.credito = entrada(division_.indiceCredito())->valor();
  lblRestante->setText(q(moneda(division_.restante())));
}

void frmDefinirVuelto::mostrar() {
  for (std::size_t i = 0; i < division_.entradas.size(); ++i)
    entrada(i)->setValor(division_.entradas[i].nominal);
  if (division_.conCredito)
    entrada(division_.indiceCredito())->setValor(division_.credito);
  lblRestante->setText(q(moneda(division_.restante())));
}

void frmDefinirVuelto::alEnter(std::size_t i) {
  leer();
  if (i + 1 < txMontos_.size())
    entrada(i + 1)->setFocus();
  else
    aceptar();
}

void frmDefinirVuelto::alEspacio(std::size_t i) {
  leer();
  division_.completar(i);
  mostrar();
  entrada(i)->selectAll();
}

void frmDefinirVuelto::aceptar() {
  leer();
  if (const auto rechazo = division_.validar()) {
    hostUtil().MostrarMensaje(rechazo->mensaje);
    entrada(rechazo->campo.value_or(0))->setFocus();
    return;
  }
  aceptado_ = true;
  accept();
}

bool frmDefinirVuelto::teclear(const std::string& codigo, Currency monto) {
  std::optional<std::size_t> i = division_.indiceDe(codigo);
  if (!i && division_.conCredito && codigo == "CREDITO")
    i = division_.indiceCredito();
  if (!i)
    return false;
  entrada(*i)->setValor(monto);
  leer();
  return true;
}

void frmDefinirVuelto::limpiar() {
  for (CajaNumerica* caja : txMontos_)
    caja->setValor(Currency{});
  leer();
}

bool frmDefinirVuelto::aceptarGuion() {
  protegido([&] { aceptar(); });
  return aceptado_;
}

bool VueltoDividido::detallarVuelto(const CobroVarelta& cobro, Currency monto,
                                    Currency& acreditable) {
  // The dialog reads the switch under its own spelling, with a capital A.
  DivisionVuelto division(cobro, monto,
                          lmGetSettingBool(kAppZOR, kSeccionVarelta, "AcreditarVueltos", false));
  division.sugerir();
  frmDefinirVuelto dialogo(division, LeerSimboloMEX(), padre_);
  const bool aceptado = guion_ ? guion_(dialogo) : dialogo.exec() == QDialog::Accepted;
  if (!aceptado || !dialogo.aceptado())
    return false;
  detalles_ = division.lineas();
  credito_ = division.credito;
  acreditable = division.credito;
  return true;
}

}  // namespace caja
