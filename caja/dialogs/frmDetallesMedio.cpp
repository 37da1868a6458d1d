#include "caja/dialogs/frmDetallesMedio.h"

#include <QComboBox>
#include <QFocusEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/uisupport/CajaNumerica.h"
#include "caja/uisupport/EstiloQt.h"
#include "caja/uisupport/Protegido.h"
#include "caja/uisupport/Twips.h"
#include "caja/uisupport/clsComboWidth.h"
#include "caja/uisupport/lmFormPlacement.h"

namespace caja {

namespace {

using Campo = DetalleMedio::Campo;

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

QLineEdit* campoTexto(const char* nombre, QWidget* padre) {
  auto* t = new QLineEdit(padre);
  t->setObjectName(nombre);
  return t;
}

}  // namespace

bool frmDetallesMedio::EditDetalle(const std::shared_ptr<CDetalleIngreso>& detalle,
                                   QWidget* parent) {
  frmDetallesMedio dialogo(parent);
  if (!dialogo.preparar(detalle))
    return false;
  dialogo.exec();
  return dialogo.aceptado();
}

frmDetallesMedio::frmDetallesMedio(QWidget* parent) : QDialog(parent) {
  setObjectName("frmDetallesMedio");
  setWindowTitle("Detalles del pago");
  setMinimumWidth(px(5400));
  crearControles();
}

frmDetallesMedio::~frmDetallesMedio() = default;

void frmDetallesMedio::crearControles() {
  numMontoRecibido = new CajaNumerica(this);
  numMontoRecibido->setObjectName("numMontoRecibido");
  cbxEmisor = new QComboBox(this);
  cbxEmisor->setObjectName("cbxEmisor");
  cbxEmisor->setEditable(true);
  cbxEmisor->setInsertPolicy(QComboBox::NoInsert);
  new clsComboWidth(cbxEmisor);
  txCuenta = campoTexto("txCuenta", this);
  txIdTitular = campoTexto("txIdTitular", this);
  txNumDoc = campoTexto("txNumDoc", this);
  txClaveAutorizacion = campoTexto("txClaveAutorizacion", this);
  flxDenominaciones = new QTableWidget(0, 2, this);
  flxDenominaciones->setObjectName("flxDenominaciones");
  flxDenominaciones->setHorizontalHeaderLabels({"Denominación", "Cantidad"});
  flxDenominaciones->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  lblDetallesDenominacion = new QLabel("Billetes y monedas (Insert agrega, Supr quita):", this);
  lblDetallesDenominacion->setObjectName("lblDetallesDenominacion");
  connect(flxDenominaciones, &QTableWidget::currentCellChanged, this,
          [this] { mostrarAyuda(Campo::Denominaciones); });
  // A cell changes while the grid commits its editor: a message box shown
  // there would close the editor under the grid's feet (and Qt then touches
  // the deleted editor), so the cell is checked once the commit is over.
  connect(flxDenominaciones, &QTableWidget::cellChanged, this, [this](int fila, int columna) {
    QTimer::singleShot(0, this,
                       [this, fila, columna] { protegido([&] { validarCelda(fila, columna); }); });
  });

  formulario_ = new QFormLayout;
  const std::tuple<const char*, const char*, QWidget*, Campo> filas[] = {
      {"lblMontoRecibido", "Monto recibido:", numMontoRecibido, Campo::Monto},
      {"lblCodigoEmisor", "Emisor:", cbxEmisor, Campo::Emisor},
      {"lblCuenta", "Cuenta:", txCuenta, Campo::Cuenta},
      {"lblIdTitular", "Identificación del titular:", txIdTitular, Campo::IdTitular},
      {"lblComprobante", "Número de documento:", txNumDoc, Campo::NumDoc},
      {"lblClaveAuth", "Clave de autorización:", txClaveAutorizacion, Campo::ClaveAutorizacion}};
  for (const auto& [nombre, texto, control, campo] : filas) {
    auto* etiqueta = new QLabel(texto, this);
    etiqueta->setObjectName(nombre);
    formulario_->addRow(etiqueta, control);
    campos_[control] = campo;
    control->installEventFilter(this);
  }
  flxDenominaciones->installEventFilter(this);
  campos_[flxDenominaciones] = Campo::Denominaciones;

  cbOk = new QPushButton("&Aceptar", this);
  cbOk->setObjectName("cbOk");
  cbCancelar = new QPushButton("&Cancelar", this);
  cbCancelar->setObjectName("cbCancelar");
  cbCancelar->setAutoDefault(false);
  connect(cbOk, &QPushButton::clicked, this, protegerSlot([this] { aceptar(); }));
  connect(cbCancelar, &QPushButton::clicked, this, &QDialog::reject);
  auto* botones = new QHBoxLayout;
  botones->addStretch();
  botones->addWidget(cbOk);
  botones->addWidget(cbCancelar);
  StatusBar1 = new QStatusBar(this);
  StatusBar1->setObjectName("StatusBar1");
  StatusBar1->setSizeGripEnabled(false);

  auto* todo = new QVBoxLayout(this);
  todo->addLayout(formulario_);
  todo->addWidget(lblDetallesDenominacion);
  todo->addWidget(flxDenominaciones);
  todo->addLayout(botones);
  todo->addWidget(StatusBar1);
}

bool frmDetallesMedio::preparar(const std::shared_ptr<CDetalleIngreso>& detalle) {
  if (!modelo_.preparar(detalle))
    return false;
  const bool conGrilla = modelo_.abierto(Campo::Denominaciones);
  flxDenominaciones->setVisible(conGrilla);
  lblDetallesDenominacion->setVisible(conGrilla);
  for (const auto& f : modelo_.filas) {
    const int fila = flxDenominaciones->rowCount();
    flxDenominaciones->insertRow(fila);
    flxDenominaciones->setItem(
        fila, 0, new QTableWidgetItem(q(Format(Variant(f.Denominacion), kFormatoMonto))));
    flxDenominaciones->setItem(
        fila, 1, new QTableWidgetItem(q(Format(Variant(f.CantidadRecibida), kFormatoCuenta))));
  }
  for (const auto& [objeto, campo] : campos_) {
    if (campo == Campo::Monto || campo == Campo::Denominaciones)
      continue;
    QWidget* control = campo == Campo::Emisor ? static_cast<QWidget*>(cbxEmisor) : texto(campo);
    control->setVisible(modelo_.abierto(campo));
    control->setEnabled(modelo_.abierto(campo));
    if (auto* etiqueta =
            qobject_cast<QFormLayout*>(layout()->itemAt(0)->layout())->labelForField(control))
      etiqueta->setVisible(modelo_.abierto(campo));
  }
  for (const auto& e : modelo_.emisores)
    cbxEmisor->addItem(q(e));
  cbxEmisor->setEditText(q(modelo_.emisor));
  for (Campo c : {Campo::Cuenta, Campo::IdTitular, Campo::NumDoc, Campo::ClaveAutorizacion})
    texto(c)->setText(q(modelo_.texto(c)));
  if (modelo_.montoRecibido) {
    numMontoRecibido->setValor(*modelo_.montoRecibido);
  } else {
    numMontoRecibido->clear();
  }
  cbOk->setIcon(iconoDe(CargarIconoArchivo("general_ok.ico")));
  cbCancelar->setIcon(iconoDe(CargarIconoArchivo("fie_cancel_back.ico")));
  aplicarEstilo(*this);
  adjustSize();
  RestaurarPosicion(*this);
  numMontoRecibido->setFocus();
  return true;
}

// The text box of a field: the issuer's combo edits in its line; the grid of
// denominations has none and answers with the amount, as the amount is the
// field a failed grid returns to.
QLineEdit* frmDetallesMedio::texto(Campo campo) const {
  if (campo == Campo::Emisor)
    return cbxEmisor->lineEdit();
  for (const auto& [control, c] : campos_) {
    if (c == campo && control != flxDenominaciones)
      return static_cast<QLineEdit*>(control);
  }
  return numMontoRecibido;
}

bool frmDetallesMedio::validar(Campo campo) {
  std::string mensaje;
  if (campo == Campo::Monto) {
    modelo_.montoRecibido.reset();
    if (!numMontoRecibido->text().trimmed().isEmpty())
      modelo_.montoRecibido = numMontoRecibido->valor();
    mensaje = modelo_.validarMonto();
  } else if (campo != Campo::Denominaciones) {
    std::string t = texto(campo)->text().toStdString();
    mensaje = modelo_.validarCampo(campo, t);
    modelo_.texto(campo) = t;
    texto(campo)->setText(q(t));
  }
  if (mensaje.empty())
    return true;
  validando_ = true;
  hostUtil().MostrarMensaje(mensaje);
  volverA(texto(campo));
  validando_ = false;
  return false;
}

void frmDetallesMedio::volverA(QWidget* control) {
  control->setFocus();
  // A focus change in progress may still move on: the field takes it back
  // after, without the field it passes through checking itself.
  QTimer::singleShot(0, control, [this, control] {
    validando_ = true;
    control->setFocus();
    validando_ = false;
  });
}

// The grid's help follows its column: the denomination, then its count.
void frmDetallesMedio::mostrarAyuda(Campo campo) {
  const bool cantidad = campo == Campo::Denominaciones && flxDenominaciones->currentColumn() == 1;
  StatusBar1->showMessage(q(cantidad ? DetalleMedio::ayudaCantidad() : DetalleMedio::ayuda(campo)));
}

bool frmDetallesMedio::eventFilter(QObject* objeto, QEvent* evento) {
  bool tomado = false;
  protegido([&] { tomado = filtrar(objeto, evento); });
  return tomado || QDialog::eventFilter(objeto, evento);
}

// The cashier's keys and focus changes on the fields; true when the event is
// taken here.
bool frmDetallesMedio::filtrar(QObject* objeto, QEvent* evento) {
  const auto it = campos_.find(objeto);
  if (it == campos_.end())
    return false;
  const Campo campo = it->second;
  if (evento->type() == QEvent::FocusIn) {
    mostrarAyuda(campo);
    ultimoCampo_ = campo;
  } else if (evento->type() == QEvent::FocusOut && !validando_ && campo != Campo::Denominaciones) {
    const auto razon = static_cast<QFocusEvent*>(evento)->reason();
    // Leaving for a message box or another window is not leaving the field;
    // Cancel never checks it, and a click on OK checks it there.
    const bool clicEnOk = focusWidget() == cbOk && razon == Qt::MouseFocusReason;
    if (razon != Qt::ActiveWindowFocusReason && razon != Qt::PopupFocusReason &&
        focusWidget() != cbCancelar && !clicEnOk && !isHidden())
      validar(campo);
  } else if (evento->type() == QEvent::KeyPress) {
    const int tecla = static_cast<QKeyEvent*>(evento)->key();
    if (campo == Campo::Denominaciones && tecla == Qt::Key_Insert && DetalleMedio::MayAddRow()) {
      const int fila = flxDenominaciones->rowCount();
      const QSignalBlocker sinValidar(flxDenominaciones);
      flxDenominaciones->insertRow(fila);
      const auto nueva = DetalleMedio::FillNewRow();
      flxDenominaciones->setItem(fila, 0,
                                 new QTableWidgetItem(q(nueva.Denominacion.toMachineText())));
      flxDenominaciones->setItem(fila, 1, new QTableWidgetItem("0"));
      flxDenominaciones->setCurrentCell(fila, 0);
      return true;
    }
    if (campo == Campo::Denominaciones && tecla == Qt::Key_Delete && DetalleMedio::MayDeleteRow() &&
        flxDenominaciones->currentRow() >= 0) {
      flxDenominaciones->removeRow(flxDenominaciones->currentRow());
      return true;
    }
    if (campo != Campo::Denominaciones && (tecla == Qt::Key_Return || tecla == Qt::Key_Enter)) {
      focusNextChild();
      return true;
    }
  }
  return false;
}

void frmDetallesMedio::validarCelda(int fila, int columna) {
  QTableWidgetItem* celda = flxDenominaciones->item(fila, columna);
  if (!celda || validando_)
    return;
  const auto d = Decimal::parseRegional(celda->text().toStdString());
  const Currency v = d ? d->toCurrency() : Currency{};
  const std::string mensaje = DetalleMedio::ValidateCell(columna, v);
  if (mensaje.empty())
    return;
  validando_ = true;
  hostUtil().MostrarMensaje(mensaje);
  flxDenominaciones->setCurrentCell(fila, columna);
  validando_ = false;
}

void frmDetallesMedio::leerTabla() {
  modelo_.filas.clear();
  for (int f = 0; f < flxDenominaciones->rowCount(); ++f) {
    auto celda = [&](int c) {
      const QTableWidgetItem* i = flxDenominaciones->item(f, c);
      const auto d = Decimal::parseRegional(i ? i->text().toStdString() : "0");
      return d ? d->toCurrency() : Currency{};
    };
    modelo_.filas.push_back({celda(0), CInt(Variant(celda(1)))});
  }
}

void frmDetallesMedio::aceptar() {
  if (ultimoCampo_ != Campo::Denominaciones && texto(ultimoCampo_)->isEnabled() &&
      !validar(ultimoCampo_))
    return;
  modelo_.montoRecibido.reset();
  if (!numMontoRecibido->text().trimmed().isEmpty())
    modelo_.montoRecibido = numMontoRecibido->valor();
  for (Campo c :
       {Campo::Emisor, Campo::Cuenta, Campo::IdTitular, Campo::NumDoc, Campo::ClaveAutorizacion})
    modelo_.texto(c) = texto(c)->text().toStdString();
  leerTabla();
  const auto rechazo = modelo_.aceptar();
  if (rechazo) {
    validando_ = true;
    hostUtil().MostrarMensaje(rechazo->mensaje);
    if (rechazo->campo == Campo::Denominaciones) {
      flxDenominaciones->setFocus();
    } else {
      texto(rechazo->campo)->setFocus();
    }
    validando_ = false;
    return;
  }
  aceptado_ = true;
  accept();
}

void frmDetallesMedio::done(int resultado) {
  GuardarPosicion(*this);
  QDialog::done(resultado);
}

}  // namespace caja
