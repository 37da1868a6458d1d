#include "caja/dialogs/frmVarelta.h"

#include <QApplication>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>

#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/dialogs/frmDefinirVuelto.h"
#include "caja/dialogs/frmDetallesMedio.h"
#include "caja/dialogs/frmShowVuelto.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"
#include "caja/uisupport/CajaNumerica.h"
#include "caja/uisupport/EstiloQt.h"
#include "caja/uisupport/Protegido.h"
#include "caja/uisupport/Twips.h"
#include "caja/uisupport/lmFormPlacement.h"

namespace caja {

namespace {

// A flag raised for the extent of a scope, lowered also when an error leaves it.
class Bandera {
 public:
  explicit Bandera(bool& bandera) : bandera_(bandera) { bandera_ = true; }
  ~Bandera() { bandera_ = false; }
  Bandera(const Bandera&) = delete;
  Bandera& operator=(const Bandera&) = delete;

 private:
  bool& bandera_;
};

// The form's design, in twips.
constexpr int kAncho = 9480;
constexpr int kAltoBase = 8040;
constexpr int kPasoEntrada = 465;
constexpr int kEntradasEnAltoBase = 9;
constexpr int kColumnaMontos = 4440;
constexpr int kAnchoMontos = 4920;
constexpr int kFilaMonto = 450;

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

QLabel* etiqueta(QWidget* padre, const char* nombre, const QString& texto = {}) {
  auto* l = new QLabel(texto, padre);
  l->setObjectName(nombre);
  return l;
}

void colocar(QWidget* w, int izquierda, int arriba, int ancho, int alto) {
  w->setGeometry(px(izquierda), px(arriba), px(ancho), px(alto));
}

}  // namespace

frmVarelta::frmVarelta(QWidget* parent) : QDialog(parent) {
  setObjectName("frmVarelta");
  crearControles();
}

frmVarelta::~frmVarelta() = default;

int frmVarelta::altoFormulario(std::size_t entradas) {
  const int extra =
      entradas > kEntradasEnAltoBase ? static_cast<int>(entradas) - kEntradasEnAltoBase : 0;
  return kAltoBase + kPasoEntrada * extra;
}

void frmVarelta::crearControles() {
  lblEfectivo1 = etiqueta(this, "lblEfectivo1", "Efectivo");
  colocar(lblEfectivo1, 120, 90, 2160, 330);
  txEfectivo = new CajaNumerica(this);
  txEfectivo->setObjectName("txEfectivo");
  colocar(txEfectivo, 2400, 60, 1800, 375);
  conectarEntrada(txEfectivo, std::nullopt);

  Frame1 = new QGroupBox("Montos", this);
  Frame1->setObjectName("Frame1");
  // One row per amount: caption control, its text, value control.
  const struct {
    const char* leyenda;
    const char* texto;
    const char* valor;
    QLabel** destino;
    QLabel** leyendaDestino;
  } filas[] = {
      {"Label1", "Monto de la compra:", "lblMontoCompra", &lblMontoCompra, nullptr},
      {"lblIVA", "", "lblImpuesto", &lblImpuesto, &lblIVA},
      {"Label2", "Total:", "lblTotal", &lblTotal, nullptr},
      {"Label4", "Notas de crédito:", "lblNotasCredito", &lblNotasCredito, nullptr},
      {"Label10", "IGTF:", "IGTF", &IGTF, nullptr},
      {"lblConcepto", "Neto a cobrar:", "lblNetoMN", &lblNetoMN, nullptr},
      {"Label3", "", "lblNetoUSD", &lblNetoUSD, &Label3},
  };
  int arriba = 300;
  for (const auto& f : filas) {
    QLabel* leyenda = etiqueta(Frame1, f.leyenda, f.texto);
    colocar(leyenda, 120, arriba, 2280, 330);
    QLabel* valor = etiqueta(Frame1, f.valor);
    valor->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    colocar(valor, 2400, arriba, 2280, 330);
    *f.destino = valor;
    if (f.leyendaDestino)
      *f.leyendaDestino = leyenda;
    arriba += kFilaMonto;
  }
  lblImpuesto->installEventFilter(this);
  QFont grande = lblNetoMN->font();
  grande.setBold(true);
  lblNetoMN->setFont(grande);

  Label5 = etiqueta(this, "Label5", "Vuelto:");
  lblVuelto = etiqueta(this, "lblVuelto");
  lblVueltoUSD = etiqueta(this, "lblVueltoUSD");
  lblVueltoMixto = etiqueta(this, "lblVueltoMixto");
  QFont vuelto = lblVuelto->font();
  vuelto.setPointSize(vuelto.pointSize() + 6);
  vuelto.setBold(true);
  for (QLabel* l : {Label5, lblVuelto})
    l->setFont(vuelto);
  for (QLabel* l : {lblVuelto, lblVueltoUSD, lblVueltoMixto})
    l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

  cbAceptar = new QPushButton("&Aceptar", this);
  cbAceptar->setObjectName("cbAceptar");
  cbCancelar = new QPushButton("&Cancelar", this);
  cbCancelar->setObjectName("cbCancelar");
  cbCancelar->setAutoDefault(false);
  connect(cbAceptar, &QPushButton::clicked, this, protegerSlot([this] { aceptar(); }));
  connect(cbCancelar, &QPushButton::clicked, this, &QDialog::reject);
  cbDetalles = new QPushButton("&Detalles (F2)", this);
  cbDetalles->setObjectName("cbDetalles");
  cbDetalles->setAutoDefault(false);
  cbDetalles->setFocusPolicy(Qt::NoFocus);
  connect(cbDetalles, &QPushButton::clicked, this, protegerSlot([this] { editarDetalle(); }));

  StatusBar1 = new QStatusBar(this);
  StatusBar1->setObjectName("StatusBar1");
  StatusBar1->setSizeGripEnabled(false);
  posicionar(kAltoBase);
}

void frmVarelta::conectarEntrada(CajaNumerica* caja, std::optional<std::size_t> indice) {
  connect(caja, &CajaNumerica::enfocada, this,
          [this, indice] { StatusBar1->showMessage(q(ayuda(indice))); });
  connect(caja, &QLineEdit::textEdited, this, protegerSlot([this, caja] { alTeclear(caja); }));
  connect(caja, &CajaNumerica::espacio, this, protegerSlot([this, indice] {
            leerEntradas();
            if (devolucion_)
              completarDevolucion(indice);
            else
              cobro_->completar(indice);
            mostrarEntradas();
            if (!indice)
              recalcular(true);
          }));
  connect(caja, &CajaNumerica::enter, this, [this] { focusNextChild(); });
  connect(caja, &CajaNumerica::dejada, this, [this, indice] { alDejar(indice); });
}

// Each digit typed refreshes the labels; the net amount stays that of the
// last validated input until this one is left and validated.
void frmVarelta::alTeclear(CajaNumerica* caja) {
  autoRechazado_ = false;
  leerEntradas();
  const Currency netoValidado = cobro_->neto;
  try {
    recalcular(false);
  } catch (const CajaError&) {
    // A value the sale cannot hold (beyond the currency range once
    // converted) is refused as it is typed.
    caja->undo();
    leerEntradas();
    recalcular(false);
  }
  cobro_->neto = netoValidado;
}

void frmVarelta::preparar(Currency venta, Currency iva, Currency credito) {
  const double tasa = ObtenerTipoCambioCaja();
  double igtf = 0.0;
  try {
    igtf = ObtenerPorcentajeIGTF();
  } catch (const std::exception&) {
    // Errors reading the IGTF rate leave it at 0.
  }
  cobro_ = std::make_unique<CobroVarelta>(venta, iva, credito, tasa, igtf, OpcionesCobro::leer());
  auto rs = factoria().openrecordset(CobroVarelta::kConsultaMedios);
  cobro_->agregarMedios(*rs);
  for (std::size_t i = 0; i < cobro_->medios.size(); ++i)
    crearEntradaMedio(i);
  lblIVA->setText(q(cobro_->opciones.nombreIVA));
  aplicarEstilo(*this);
  aplicarTasa();
  cbAceptar->setIcon(iconoDe(CargarIconoArchivo("general_ok.ico")));
  cbCancelar->setIcon(iconoDe(CargarIconoArchivo("fie_cancel_back.ico")));
  resaltarVuelto();
  setFixedSize(px(kAncho), px(altoFormulario(cobro_->medios.size())));
  RestaurarPosicion(*this);
  Label3->setText(q(cobro_->opciones.CodigoMEX));

  lblMontoCompra->setText(q(cobro_->textoMonto(venta)));
  lblImpuesto->setText(q(cobro_->textoMonto(iva)));
  lblTotal->setText(q(cobro_->textoMonto(iva + venta)));
  lblNotasCredito->setText(q(cobro_->textoMonto(credito)));
  lblNetoMN->setText(q(cobro_->textoMonto(cobro_->neto)));
  lblNetoUSD->setText(q(cobro_->netoUSD(cobro_->neto)));
  setTabOrder(txEfectivo, txMediosX.empty() ? static_cast<QWidget*>(cbAceptar) : txMediosX.front());
  for (std::size_t i = 0; i + 1 < txMediosX.size(); ++i)
    setTabOrder(txMediosX[i], txMediosX[i + 1]);
  if (!txMediosX.empty())
    setTabOrder(txMediosX.back(), cbAceptar);
  setTabOrder(cbAceptar, cbCancelar);
  recalcular(false);
}

void frmVarelta::crearEntradaMedio(std::size_t i) {
  const int fila = static_cast<int>(i);
  auto* titulo = etiqueta(this, "", q(cobro_->medios[i].Titulo));
  titulo->setObjectName(QString("tituloMediosX(%1)").arg(fila));
  colocar(titulo, 120, 540 + kPasoEntrada * fila, 2160, 330);
  auto* caja = new CajaNumerica(this);
  caja->setObjectName(QString("txMediosX(%1)").arg(fila));
  caja->setProperty("Tag", q(cobro_->medios[i].Tag));
  colocar(caja, 2400, 525 + kPasoEntrada * fila, 1800, 375);
  conectarEntrada(caja, i);
  tituloMediosX.push_back(titulo);
  txMediosX.push_back(caja);
}

// With national currency alone the foreign amounts are hidden, the amounts
// frame shrinks, and the national change moves up to the foreign change's
// place, its caption to the change's new top. Those two moves last until the
// form's first resize (when it is shown), which places every change label by
// the form's height whatever the rate: cashiers find the change where it
// stands at any rate, and code reading the set-up sees the moved labels.
void frmVarelta::aplicarTasa() {
  const bool soloNacional = cobro_->tipoCambio == 1.0;
  for (QWidget* w :
       std::initializer_list<QWidget*>{Label3, lblNetoUSD, lblVueltoUSD, lblVueltoMixto})
    w->setVisible(!soloNacional);
  colocar(Frame1, kColumnaMontos, 0, kAnchoMontos, soloNacional ? 3795 : 3900);
  if (!soloNacional)
    return;
  lblVuelto->move(lblVuelto->x(), lblVueltoUSD->y());
  Label5->move(Label5->x(), lblVuelto->y());
}

void frmVarelta::resaltarVuelto() {
  if (!cobro_->opciones.ResaltarVuelto || cobro_->tipoCambio == 1.0)
    return;
  // The change labels take the accept button's colours.
  const QPalette boton = cbAceptar->palette();
  for (QLabel* l : {lblVuelto, lblVueltoUSD, lblVueltoMixto}) {
    QPalette p = l->palette();
    p.setColor(QPalette::Window, boton.color(QPalette::Button));
    p.setColor(QPalette::WindowText, boton.color(QPalette::ButtonText));
    l->setAutoFillBackground(true);
    l->setPalette(p);
  }
}

// The controls tied to the form's bottom edge; `h` is its inner height in twips.
void frmVarelta::posicionar(int h) {
  colocar(Label5, kColumnaMontos, h - 2895, 1800, 480);
  colocar(lblVuelto, kColumnaMontos + 1800, h - 2895, kAnchoMontos - 1800, 480);
  colocar(lblVueltoUSD, kColumnaMontos, h - 2340, kAnchoMontos, 400);
  colocar(lblVueltoMixto, kColumnaMontos, h - 1785, kAnchoMontos, 400);
  colocar(cbAceptar, kColumnaMontos, h - 990, 2280, 540);
  colocar(cbCancelar, kColumnaMontos + 2640, h - 990, 2280, 540);
  colocar(cbDetalles, 120, h - 990, 2280, 540);
  colocar(StatusBar1, 0, h - 330, kAncho, 330);
}

void frmVarelta::resizeEvent(QResizeEvent* evento) {
  QDialog::resizeEvent(evento);
  posicionar(height() * kTwipsPorPixel);
}

void frmVarelta::showEvent(QShowEvent* evento) {
  QDialog::showEvent(evento);
  if (activado_)
    return;
  activado_ = true;
  try {
    cobro_->autoLlenar();
  } catch (const std::exception&) {
    // An AutoFill that fails simply stops.
  }
  protegido([&] {
    mostrarEntradas();
    recalcular(false);
  });
  txEfectivo->setFocus();
  // Opening recomputes and may accept too, once the dialog's own event loop
  // runs: accepting inside showEvent would end exec() before it began.
  QTimer::singleShot(0, this, [this] { protegido([this] { recalcular(true); }); });
}

void frmVarelta::mostrarEntradas() {
  txEfectivo->setValor(comoSeTeclea(cobro_->efectivo));
  for (std::size_t i = 0; i < txMediosX.size(); ++i)
    txMediosX[i]->setValor(comoSeTeclea(cobro_->medios[i].valor));
}

void frmVarelta::leerEntradas() {
  cobro_->efectivo = comoSeTeclea(txEfectivo->valor());
  for (std::size_t i = 0; i < txMediosX.size(); ++i)
    cobro_->medios[i].valor = comoSeTeclea(txMediosX[i]->valor());
}

Currency frmVarelta::comoSeTeclea(Currency monto) const {
  return devolucion_ ? -monto : monto;
}

std::string frmVarelta::ayuda(std::optional<std::size_t> indice) const {
  if (!devolucion_)
    return cobro_->ayuda(indice);
  return "Introduzca lo que se devuelve en " +
         (indice ? cobro_->medios.at(*indice).Titulo : std::string("efectivo de curso legal"));
}

void frmVarelta::comoDevolucion() {
  devolucion_ = true;
  // Money the shop pays out has no change: the split and the change window
  // are for money that comes in. Where the change was, what is still to be
  // handed back ("Falta", negative when more was typed).
  cobro_->opciones.dividirVuelto = false;
  cobro_->opciones.mostrarVuelto = false;
  Label5->setText("Falta:");
  for (QLabel* l : {lblVueltoUSD, lblVueltoMixto})
    l->hide();
  for (const auto& [nombre, texto] :
       {std::pair{"Label1", "A devolver:"}, std::pair{"lblConcepto", "Neto a devolver:"}})
    if (auto* leyenda = Frame1->findChild<QLabel*>(nombre))
      leyenda->setText(texto);
  mostrarEntradas();
  mostrarSinSigno();
  recalcular(false);
}

// Space in a refund: the input takes what is still to be handed back, in
// its method's currency.
void frmVarelta::completarDevolucion(std::optional<std::size_t> indice) {
  Currency& entrada = indice ? cobro_->medios.at(*indice).valor : cobro_->efectivo;
  entrada = Currency{};
  const Currency falta = cobro_->recalcular().vuelto;
  const double factor = indice ? cobro_->medios[*indice].Factor : 1.0;
  if (falta > Currency{} && factor != 0)
    entrada = -CCur(falta.toDouble() / factor);
}

// A refund's amounts as what is handed back: the model works on them
// negative, the cashier reads them positive.
void frmVarelta::mostrarSinSigno() {
  if (!devolucion_)
    return;
  for (QLabel* l :
       {lblMontoCompra, lblImpuesto, lblTotal, lblNotasCredito, IGTF, lblNetoMN, lblNetoUSD})
    l->setText(l->text().remove('-'));
}

// Complete: a collection once the change is not negative; a refund when
// what is handed back is exactly what is owed, to the cent.
bool frmVarelta::completo(Currency vuelto) const {
  return devolucion_ ? Abs(vuelto) < Currency::fromRaw(100) : CobroVarelta::completo(vuelto);
}

void frmVarelta::recalcular(bool autoaceptar) {
  if (recalculando_ || !cobro_)
    return;
  const Bandera enCurso(recalculando_);
  const Pantalla p = cobro_->recalcular();
  IGTF->setText(q(p.IGTF));
  lblTotal->setText(q(p.lblTotal));
  lblNetoMN->setText(q(p.lblNetoMN));
  lblNetoUSD->setText(q(p.lblNetoUSD));
  lblVuelto->setText(q(p.lblVuelto));
  lblVueltoUSD->setText(q(p.lblVueltoUSD));
  lblVueltoMixto->setText(q(p.lblVueltoMixto));
  mostrarSinSigno();
  QWidget* foco = QApplication::focusWidget();
  if (autoaceptar && cobro_->opciones.AutoCierre && isVisible() && !aceptando_ && !autoRechazado_ &&
      foco != cbCancelar && completo(p.vuelto) && foco != cbAceptar)
    cbAceptar->click();
}

void frmVarelta::alDejar(std::optional<std::size_t> indice) {
  if (!cobro_ || aceptando_)
    return;
  leerEntradas();
  const std::string pregunta = cobro_->preguntaExceso(indice);
  if (!pregunta.empty() && !hostUtil().Preguntar(pregunta)) {
    QWidget* caja = indice ? static_cast<QWidget*>(txMediosX[*indice]) : txEfectivo;
    caja->setFocus();
    return;
  }
  recalcular(true);
}

bool frmVarelta::eventFilter(QObject* objeto, QEvent* evento) {
  if (objeto == lblImpuesto && evento->type() == QEvent::MouseButtonRelease) {
    protegido([this] { cambiarIVA(); });
    return true;
  }
  return QDialog::eventFilter(objeto, evento);
}

void frmVarelta::done(int resultado) {
  GuardarPosicion(*this);
  QDialog::done(resultado);
}

void frmVarelta::keyPressEvent(QKeyEvent* evento) {
  if (evento->key() == Qt::Key_F2) {
    protegido([this] { editarDetalle(); });
    return;
  }
  QDialog::keyPressEvent(evento);
}

void frmVarelta::editarDetalle() {
  std::optional<std::size_t> indice;
  QWidget* foco = QApplication::focusWidget();
  for (std::size_t i = 0; i < txMediosX.size(); ++i)
    if (foco == txMediosX[i])
      indice = i;
  if (!indice && foco != txEfectivo)
    return;
  leerEntradas();
  if (!frmDetallesMedio::EditDetalle(cobro_->particulares(indice), this))
    return;
  cobro_->tomarParticulares(indice);
  mostrarEntradas();
  autoRechazado_ = false;
  recalcular(true);
}

void frmVarelta::cambiarIVA() {
  if (!cobro_->opciones.IVA2602)
    return;
  Currency monto = LeerMonto(lblImpuesto->text().toStdString());
  bool cancelar = false;
  if (Aplicar2602)
    Aplicar2602(monto, cancelar);
  if (cancelar)
    return;
  cobro_->cambiarIVA(monto);
  lblImpuesto->setText(q(cobro_->textoMonto(monto)));
  lblTotal->setText(q(cobro_->textoMonto(cobro_->neto)));
  mostrarSinSigno();
  mostrarEntradas();
  recalcular(true);
}

// The movement of the typed amounts, through the change object the shop
// uses; nullptr when it cannot be accepted. An error LlenarVarelta does not
// catch is reported under its location.
std::shared_ptr<CVarelta> frmVarelta::llenar() {
  leerEntradas();
  recalcular(false);
  if (cobro_->opciones.dividirVuelto)
    vuelto_ = std::make_unique<VueltoDividido>(this, guionVuelto);
  else
    vuelto_ = std::make_unique<Vuelto>();
  try {
    return cobro_->LlenarVarelta(*vuelto_);
  } catch (const CajaError& e) {
    hostUtil().ReportarError(e, "frmVarelta::LlenarVarelta");
    return nullptr;
  }
}

void frmVarelta::aceptar() {
  if (aceptando_)
    return;
  if (devolucion_) {
    leerEntradas();
    if (!completo(cobro_->recalcular().vuelto)) {
      hostUtil().MostrarMensaje("Lo entregado debe sumar exactamente el monto de la devolución");
      autoRechazado_ = true;
      txEfectivo->setFocus();
      return;
    }
  }
  std::shared_ptr<CVarelta> mov;
  {
    const Bandera enCurso(aceptando_);
    mov = llenar();
  }
  if (!mov) {
    autoRechazado_ = true;
    txEfectivo->setFocus();
    return;
  }
  cobro_->resultado = mov;
  recordarLineas(*mov);
  accept();
}

// The lines of each accepted collection are kept in section
// "frmVarelta\Detalles", replacing the previous collection's, for
// CServiciosCaja::DetallesEnRegistro. An empty key after the last line ends
// the reading there, so lines of an earlier, longer collection are not read.
void frmVarelta::recordarLineas(CVarelta& mov) {
  try {
    int n = 0;
    for (const auto& linea : mov.lineasEnMemoria())
      settingsStore().SaveSetting(kAppZOR, "frmVarelta\\Detalles", "Linea" + std::to_string(++n),
                                  linea->Serialize());
    settingsStore().SaveSetting(kAppZOR, "frmVarelta\\Detalles", "Linea" + std::to_string(n + 1),
                                "");
  } catch (const std::exception&) {
    // The settings store is a convenience: the collection stands without it.
  }
}

// The input of a method, by its code in any letter case: nullopt inside for
// national cash, nullopt outside when the method has no input.
std::optional<std::optional<std::size_t>> frmVarelta::entradaDe(const std::string& codigo) const {
  if (equalsIgnoreCase(codigo, "EFE"))
    return std::optional<std::size_t>{};
  for (std::size_t i = 0; i < txMediosX.size(); ++i)
    if (equalsIgnoreCase(cobro_->medios[i].Codigo, codigo))
      return std::optional<std::size_t>{i};
  return std::nullopt;
}

bool frmVarelta::teclear(const std::string& codigo, Currency monto) {
  const auto entrada = entradaDe(codigo);
  if (!entrada)
    return false;
  (*entrada ? txMediosX[**entrada] : txEfectivo)->setValor(monto);
  leerEntradas();
  recalcular(false);
  return true;
}

bool frmVarelta::precargar(const CDetalleIngreso& linea) {
  const auto entrada = entradaDe(linea.medio);
  if (!entrada)
    return false;
  leerEntradas();
  const auto p = cobro_->particulares(*entrada);
  p->montoNominal += linea.montoNominal;
  p->IdTitular = linea.IdTitular;
  p->NumeroCuenta = linea.NumeroCuenta;
  p->NumeroDocumento = linea.NumeroDocumento;
  p->ClaveAutorizacion = linea.ClaveAutorizacion;
  p->CodigoEmisor = linea.CodigoEmisor;
  for (const auto& d : *linea.Denominaciones)
    p->Denominaciones->Add(d);
  cobro_->tomarParticulares(*entrada);
  mostrarEntradas();
  recalcular(false);
  return true;
}

bool frmVarelta::aceptarGuion() {
  aceptar();
  return resultado() != nullptr;
}

std::shared_ptr<CVarelta> frmVarelta::Cobrar(Currency venta, Currency iva, Currency credito) {
  preparar(venta, iva, credito);
  return mostrar();
}

std::shared_ptr<CVarelta> frmVarelta::mostrar() {
  if (exec() != QDialog::Accepted)
    return nullptr;
  if (cobro_->opciones.mostrarVuelto)
    // The change as lblVuelto shows it: one that shows as 0.00 opens no window.
    frmShowVuelto::ShowVuelto(LeerMonto(lblVuelto->text().toStdString()));
  return cobro_->resultado;
}

}  // namespace caja
