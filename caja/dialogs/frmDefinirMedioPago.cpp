#include "caja/dialogs/frmDefinirMedioPago.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>

#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/catalog/CMedioPago.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"
#include "caja/uisupport/EstiloQt.h"
#include "caja/uisupport/Protegido.h"
#include "caja/uisupport/lmFormPlacement.h"

namespace caja {

namespace {

QString q(const std::string& s) {
  return QString::fromStdString(s);
}
std::string s(const QLineEdit* t) {
  return t->text().trimmed().toStdString();
}

const std::pair<const char*, std::int32_t> kAtributos[] = {
    {"chkControlDenominaciones", ControlDenominaciones},
    {"chkControlIDCuenta", ControlIDCuenta},
    {"chkControlNumero", ControlNumero},
    {"chkControlEmisor", ControlEmisor},
    {"chkControlIDTitular", ControlIDTitular},
    {"chkControlClaveAutorizacion", ControlClaveAutorizacion},
    {"chkMonedaExtranjera", monedaExtranjera},
    {"chkRequiereClaveSupervisor", RequiereClaveSupervisor},
    {"chkUsaVPOS", UsaVPOS},
    {"chkIndexadoMonedaExtranjera", IndexadoMonedaExtranjera},
    {"chkSujetoIGTF", SujetoIGTF}};
const char* const kLeyendas[] = {"Denominaciones",
                                 "Cuenta",
                                 "Número",
                                 "Emisor",
                                 "Titular",
                                 "Clave de autorización",
                                 "Moneda extranjera",
                                 "Clave de supervisor",
                                 "VPOS",
                                 "Indexado",
                                 "Sujeto a IGTF"};

// The combo box as the catalogue fills its list of legacy classes.
class ListaCombo : public ControlLista {
 public:
  explicit ListaCombo(QComboBox* c) : combo_(c) {}
  void Clear() override { combo_->clear(); }
  void AddItem(const std::string& texto) override { combo_->addItem(q(texto)); }

 private:
  QComboBox* combo_;
};

QLineEdit* linea(QWidget* padre, const char* nombre) {
  auto* l = new QLineEdit(padre);
  l->setObjectName(nombre);
  return l;
}

QPushButton* boton(QWidget* padre, const char* nombre, const char* texto) {
  auto* b = new QPushButton(texto, padre);
  b->setObjectName(nombre);
  b->setAutoDefault(false);
  return b;
}

}  // namespace

frmDefinirMedioPago::frmDefinirMedioPago(QWidget* parent) : QDialog(parent) {
  setObjectName("frmDefinirMedioPago");
  setWindowTitle("Medios de pago");
  lstMedios = new QListWidget(this);
  lstMedios->setObjectName("lstMedios");
  txCodigo = linea(this, "txCodigo");
  txDescripcion = linea(this, "txDescripcion");
  txTitulo = linea(this, "txTitulo");
  txTextoAyuda = linea(this, "txTextoAyuda");
  txCuentaActivo = linea(this, "txCuentaActivo");
  txCuentaComisiones = linea(this, "txCuentaComisiones");
  txBancoRelacionado = linea(this, "txBancoRelacionado");
  cbxClase = new QComboBox(this);
  cbxClase->setObjectName("cbxClase");
  ListaCombo lista(cbxClase);
  LlenarClasesIngreso(lista);
  numPosicion = new QSpinBox(this);
  numPosicion->setObjectName("numPosicion");
  numPosicion->setRange(0, 32767);
  numTipoCambio = new QDoubleSpinBox(this);
  numTipoCambio->setObjectName("numTipoCambio");
  numTipoCambio->setDecimals(4);
  numTipoCambio->setRange(0, 1e9);
  numRetencion = new QDoubleSpinBox(this);
  numRetencion->setObjectName("numRetencion");
  numRetencion->setRange(0, 100);
  chkElectronico = new QCheckBox("Medio electrónico", this);
  chkElectronico->setObjectName("chkElectronico");

  auto* formulario = new QFormLayout;
  formulario->addRow("Código:", txCodigo);
  formulario->addRow("Descripción:", txDescripcion);
  formulario->addRow("Título en el cobro:", txTitulo);
  formulario->addRow("Texto de ayuda:", txTextoAyuda);
  formulario->addRow("Posición (0 lo oculta):", numPosicion);
  formulario->addRow("Clase:", cbxClase);
  formulario->addRow("Factor de cambio / % ISLR:", numTipoCambio);
  formulario->addRow("% retención del emisor:", numRetencion);
  formulario->addRow("Cuenta de activo:", txCuentaActivo);
  formulario->addRow("Cuenta de comisiones:", txCuentaComisiones);
  formulario->addRow("Banco relacionado:", txBancoRelacionado);
  formulario->addRow(chkElectronico);
  auto* atributos = new QGridLayout;
  for (std::size_t i = 0; i < std::size(kAtributos); ++i) {
    auto* c = new QCheckBox(kLeyendas[i], this);
    c->setObjectName(kAtributos[i].first);
    atributos->addWidget(c, static_cast<int>(i / 2), static_cast<int>(i % 2));
    chkAtributos.push_back(c);
  }
  formulario->addRow(atributos);

  cbNuevo = boton(this, "cbNuevo", "&Nuevo");
  cbGuardar = boton(this, "cbGuardar", "&Guardar");
  cbEliminar = boton(this, "cbEliminar", "&Eliminar");
  cbCerrar = boton(this, "cbCerrar", "&Cerrar");
  connect(numTipoCambio, &QDoubleSpinBox::valueChanged, this,
          [this] { editados_.insert(numTipoCambio); });
  connect(numRetencion, &QDoubleSpinBox::valueChanged, this,
          [this] { editados_.insert(numRetencion); });
  connect(cbxClase, &QComboBox::currentIndexChanged, this, [this] { editados_.insert(cbxClase); });
  connect(cbNuevo, &QPushButton::clicked, this, protegerSlot([this] { nuevo(); }));
  connect(cbGuardar, &QPushButton::clicked, this, protegerSlot([this] { guardar(); }));
  connect(cbEliminar, &QPushButton::clicked, this, protegerSlot([this] { eliminar(); }));
  connect(cbCerrar, &QPushButton::clicked, this, &QDialog::reject);
  connect(lstMedios, &QListWidget::currentTextChanged, this,
          [this](const QString& codigo) { protegido([&] { seleccionar(codigo); }); });
  auto* botones = new QHBoxLayout;
  for (QPushButton* b : {cbNuevo, cbGuardar, cbEliminar, cbCerrar})
    botones->addWidget(b);
  auto* derecha = new QVBoxLayout;
  derecha->addLayout(formulario);
  derecha->addLayout(botones);
  auto* todo = new QHBoxLayout(this);
  todo->addWidget(lstMedios, 1);
  todo->addLayout(derecha, 3);
  aplicarEstilo(*this);
  cargarLista();
  RestaurarPosicion(*this);
}

void frmDefinirMedioPago::cargarLista() {
  lstMedios->clear();
  auto rs = factoria().openrecordset("SELECT Codigo FROM MediosPago ORDER BY Codigo");
  for (; !rs->Eof(); rs->MoveNext())
    lstMedios->addItem(q(NzTexto(rs->Fields(0))));
}

void frmDefinirMedioPago::seleccionar(const QString& codigo) {
  CMedioPago medio;
  if (!codigo.isEmpty() && medio.load(codigo.toStdString()))
    mostrar(medio);
}

void frmDefinirMedioPago::mostrar(const CMedioPago& m) {
  txCodigo->setText(q(m.codigo));
  txCodigo->setReadOnly(!m.codigo.empty());
  txDescripcion->setText(q(m.Descripcion));
  txTitulo->setText(q(m.Titulo));
  txTextoAyuda->setText(q(m.TextoAyuda));
  txCuentaActivo->setText(q(m.CuentaActivo));
  txCuentaComisiones->setText(q(m.CuentaComisiones));
  txBancoRelacionado->setText(q(m.BancoRelacionado));
  cbxClase->setCurrentIndex(static_cast<int>(m.Clase));
  numPosicion->setValue(m.posicion);
  numTipoCambio->setValue(m.PorcentajeISLR);
  numRetencion->setValue(m.PorcentajeRetencionEmisor);
  chkElectronico->setChecked(m.isMedioElectronico);
  for (std::size_t i = 0; i < chkAtributos.size(); ++i)
    chkAtributos[i]->setChecked((m.Atributos & kAtributos[i].second) != 0);
  mostrado_ = std::make_unique<CMedioPago>(m);
  editados_.clear();
}

void frmDefinirMedioPago::nuevo() {
  mostrar(CMedioPago{});
  txCodigo->setReadOnly(false);
  txCodigo->setFocus();
}

void frmDefinirMedioPago::SetCodigo(const std::string& codigo) {
  nuevo();
  txCodigo->setText(q(codigo));
  txDescripcion->setFocus();
}

void frmDefinirMedioPago::SetContexto(std::int16_t& contexto) {
  guardado_ = false;
  exec();
  contexto = guardado_ ? contexto : 0;
}

bool frmDefinirMedioPago::guardar() {
  const std::string codigo = upperEspanol(s(txCodigo));
  if (codigo.empty()) {
    hostUtil().MostrarMensaje("Indique el código del medio de pago");
    txCodigo->setFocus();
    return false;
  }
  CMedioPago existente;
  if (equalsIgnoreCase(codigo, "EFE") && !existente.load(codigo)) {
    hostUtil().MostrarMensaje("Codigo reservado");
    txCodigo->setFocus();
    return false;
  }
  std::int32_t atributos = 0;
  for (std::size_t i = 0; i < chkAtributos.size(); ++i)
    if (chkAtributos[i]->isChecked())
      atributos |= kAtributos[i].second;
  CMedioPago medio;
  try {
    // The factor typed here is kept as the PorcentajeISLR value, its storage.
    const bool nuevos = !mostrado_;
    const double retencion = nuevos || editados_.count(numRetencion)
                                 ? numRetencion->value()
                                 : mostrado_->PorcentajeRetencionEmisor;
    const double factor = nuevos || editados_.count(numTipoCambio) ? numTipoCambio->value()
                                                                   : mostrado_->PorcentajeISLR;
    // The collection dialog multiplies every amount of a foreign method by its
    // factor: without one the method would take money worth nothing.
    if ((atributos & monedaExtranjera) && factor <= 0) {
      hostUtil().MostrarMensaje(
          "Un medio en moneda extranjera necesita un factor de cambio mayor que cero");
      numTipoCambio->setFocus();
      return false;
    }
    const std::int32_t clase = nuevos || editados_.count(cbxClase)
                                   ? cbxClase->currentIndex()
                                   : static_cast<std::int32_t>(mostrado_->Clase);
    medio.ActualizarDescriptivos(
        codigo, s(txDescripcion), atributos, retencion, factor, s(txCuentaActivo),
        s(txCuentaComisiones), s(txBancoRelacionado), clase, s(txTitulo), s(txTextoAyuda),
        static_cast<std::int16_t>(numPosicion->value()), chkElectronico->isChecked());
  } catch (const CajaError& e) {
    hostUtil().MostrarMensaje(e.description());
    return false;
  }
  guardado_ = true;
  cargarLista();
  const auto hallados = lstMedios->findItems(q(codigo), Qt::MatchFixedString);
  if (!hallados.isEmpty())
    lstMedios->setCurrentItem(hallados.front());
  return true;
}

bool frmDefinirMedioPago::eliminar() {
  const std::string codigo = s(txCodigo);
  if (codigo.empty())
    return false;
  if (!hostUtil().Preguntar("Desea eliminar el medio de pago " + codigo))
    return false;
  try {
    CMedioPago().Eliminar(codigo);
  } catch (const CajaError& e) {
    hostUtil().MostrarMensaje(e.description());
    return false;
  }
  cargarLista();
  nuevo();
  return true;
}

void frmDefinirMedioPago::done(int resultado) {
  GuardarPosicion(*this);
  QDialog::done(resultado);
}

}  // namespace caja
