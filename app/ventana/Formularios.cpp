#include "app/ventana/Formularios.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>
#include <charconv>

#include "caja/base/CajaError.h"
#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

QString q(const std::string& texto) {
  return QString::fromStdString(texto);
}

std::string texto(const QLineEdit& campo) {
  return campo.text().trimmed().toStdString();
}

// "TIPO:VALOR" split at the first colon; a Rechazo naming `que` when a part
// is missing.
std::pair<std::string, std::string> parDeCampo(const std::string& t, const std::string& que) {
  const auto dos = t.find(':');
  if (dos == std::string::npos || dos == 0 || dos + 1 == t.size())
    throw Rechazo(que + " no válido: " + t + " (TIPO:NÚMERO)");
  return {t.substr(0, dos), t.substr(dos + 1)};
}

std::string montoVisible(Currency c) {
  return Format(Variant(c), kFormatoMonto);
}

// Notes and coins of national cash, largest first.
const std::vector<Currency>& valoresDeEfectivo() {
  static const std::vector<Currency> valores = {
      Currency::fromUnits(100), Currency::fromUnits(50),  Currency::fromUnits(20),
      Currency::fromUnits(10),  Currency::fromUnits(5),   Currency::fromUnits(1),
      *Currency::parse("0.5"),  *Currency::parse("0.25"), *Currency::parse("0.1")};
  return valores;
}

QPushButton* botones(QDialog& dialogo, QLayout* donde) {
  auto* caja = new QDialogButtonBox(&dialogo);
  auto* aceptar = caja->addButton("Aceptar (Intro)", QDialogButtonBox::AcceptRole);
  caja->addButton("Volver (Esc)", QDialogButtonBox::RejectRole);
  aceptar->setDefault(true);
  aceptar->setAutoDefault(true);
  QObject::connect(caja, &QDialogButtonBox::accepted, &dialogo, &QDialog::accept);
  QObject::connect(caja, &QDialogButtonBox::rejected, &dialogo, &QDialog::reject);
  donde->addWidget(caja);
  return aceptar;
}

}  // namespace

Formulario::Formulario(QWidget* padre, const QString& titulo) : QDialog(padre) {
  setObjectName("formulario");
  setWindowTitle(titulo);
  forma_ = new QFormLayout(this);
  auto* fila = new QVBoxLayout;
  botones(*this, fila);
  forma_->addRow(fila);
}

QLineEdit* Formulario::campo(const QString& etiqueta, const char* nombre, const QString& valor) {
  auto* c = new QLineEdit(valor, this);
  c->setObjectName(nombre);
  forma_->insertRow(forma_->rowCount() - 1, etiqueta, c);
  return c;
}

QComboBox* Formulario::lista(const QString& etiqueta, const char* nombre,
                             const QStringList& opciones) {
  auto* c = new QComboBox(this);
  c->setObjectName(nombre);
  c->addItems(opciones);
  forma_->insertRow(forma_->rowCount() - 1, etiqueta, c);
  return c;
}

bool Formulario::pedir(std::function<void()> aceptable) {
  aceptable_ = std::move(aceptable);
  return exec() == QDialog::Accepted;
}

void Formulario::done(int resultado) {
  if (resultado == QDialog::Accepted && aceptable_) {
    // What is wrong is said and the form stays, as typed.
    try {
      aceptable_();
    } catch (const Rechazo& e) {
      hostUtil().MostrarMensaje(e.what());
      return;
    } catch (const CajaError& e) {
      hostUtil().MostrarMensaje(e.description());
      return;
    }
  }
  QDialog::done(resultado);
}

Currency montoDeCampo(const QLineEdit& campo, const std::string& que, bool opcional) {
  std::string t = texto(campo);
  if (t.empty() && opcional)
    return {};
  std::replace(t.begin(), t.end(), ',', '.');
  if (!t.empty() && t.front() != '-')
    if (const auto c = Currency::parse(t))
      return *c;
  throw Rechazo(que + ": " + (t.empty() ? "falta el monto" : "monto no válido, " + t));
}

std::optional<Venta> pedirVenta(QWidget* padre, const QString& titulo) {
  Formulario f(padre, titulo);
  auto* venta = f.campo("Venta sin IVA", "txVenta");
  auto* iva = f.campo("IVA", "txIVA");
  auto* credito = f.campo("Crédito", "txCredito");
  auto* documento = f.campo("Documento (TIPO:NÚMERO)", "txDocumento");
  auto* cliente = f.campo("Cliente (TIPO:CÓDIGO)", "txCliente", "CLI:C0001");
  venta->setFocus();
  Venta v;
  const bool aceptada = f.pedir([&] {
    v = Venta{};
    v.venta = montoDeCampo(*venta, "Venta");
    v.iva = montoDeCampo(*iva, "IVA", true);
    v.credito = montoDeCampo(*credito, "Crédito", true);
    if ((v.venta + v.iva - v.credito).isZero())
      throw Rechazo("No hay nada que cobrar: venta + IVA - crédito es 0");
    if (const std::string d = texto(*documento); !d.empty()) {
      const auto [tipo, numero] = parDeCampo(d, "Documento");
      std::int32_t n = 0;
      const auto [fin, ec] = std::from_chars(numero.data(), numero.data() + numero.size(), n);
      if (ec != std::errc() || fin != numero.data() + numero.size() || n < 0)
        throw Rechazo("Documento no válido: " + d + " (TIPO:NÚMERO)");
      v.conDocumento = true;
      v.tipoDoc = upperAscii(tipo);
      v.numDoc = n;
    }
    const auto [tipoEnt, codEnt] = parDeCampo(texto(*cliente), "Cliente");
    v.tipoEnt = tipoEnt;
    v.codEnt = codEnt;
    v.titulo = titulo.toStdString();
  });
  return aceptada ? std::optional<Venta>(v) : std::nullopt;
}

std::optional<Venta> pedirDevolucion(QWidget* padre, const std::string& documento,
                                     std::optional<Currency> resto) {
  Formulario f(padre, "Devolución");
  auto* monto = f.campo("Devuelto sin IVA", "txMonto", resto ? q(resto->toMachineText()) : "");
  auto* iva = f.campo("IVA devuelto", "txIVA");
  auto* doc = f.campo("Documento (TIPO:NÚMERO)", "txDocumento", q(documento));
  auto* motivo = f.campo("Motivo", "txMotivo");
  monto->setFocus();
  monto->selectAll();
  Venta v;
  const bool aceptada = f.pedir([&] {
    v = Venta{};
    v.venta = montoDeCampo(*monto, "Devuelto");
    v.iva = montoDeCampo(*iva, "IVA", true);
    if ((v.venta + v.iva).isZero())
      throw Rechazo("No hay nada que devolver");
    if (const std::string d = texto(*doc); !d.empty()) {
      const auto [tipo, numero] = parDeCampo(d, "Documento");
      v.conDocumento = true;
      v.tipoDoc = tipo;
      v.numDoc = static_cast<std::int32_t>(std::strtol(numero.c_str(), nullptr, 10));
    }
    v.titulo = texto(*motivo).empty() ? kTituloDevolucion : texto(*motivo);
  });
  return aceptada ? std::optional<Venta>(v) : std::nullopt;
}

std::optional<Venta> pedirEfectivo(QWidget* padre, const char* clasificacion,
                                   const QStringList& medios) {
  const bool sale = clasificacion == std::string(kSalida);
  Formulario f(padre, sale ? "Salida de efectivo" : "Entrada de efectivo");
  auto* medio = f.lista("Medio", "cbMedio", medios);
  auto* monto = f.campo("Monto, en su moneda", "txMonto");
  auto* motivo = f.campo(sale ? "Motivo (obligatorio)" : "Motivo", "txMotivo");
  monto->setFocus();
  Venta v;
  const bool aceptada = f.pedir([&] {
    v = Venta{};
    v.clasificacion = clasificacion;
    const Currency m = montoDeCampo(*monto, "Monto");
    if (m.isZero())
      throw Rechazo("Un monto de 0 no mueve nada");
    if (sale && texto(*motivo).empty())
      throw Rechazo("Diga por qué sale el dinero");
    v.pagos = {{medio->currentText().section(' ', 0, 0).toStdString(), m}};
    v.titulo = texto(*motivo).empty() ? kTituloEntrada : texto(*motivo);
  });
  return aceptada ? std::optional<Venta>(v) : std::nullopt;
}

std::optional<std::string> pedirTexto(QWidget* padre, const QString& titulo,
                                      const QString& etiqueta, bool obligatorio) {
  Formulario f(padre, titulo);
  auto* campo = f.campo(etiqueta, "txTexto");
  campo->setFocus();
  const bool aceptado = f.pedir([&] {
    if (obligatorio && texto(*campo).empty())
      throw Rechazo(etiqueta.toStdString() + ": falta");
  });
  return aceptado ? std::optional<std::string>(texto(*campo)) : std::nullopt;
}

std::optional<Aparcado> pedirAparcado(QWidget* padre, const QStringList& medios) {
  Formulario f(padre, "Aparcar un pago");
  auto* clave = f.campo("Clave", "txClave");
  auto* medio = f.lista("Medio", "cbMedio", medios);
  auto* monto = f.campo("Monto, en su moneda", "txMonto");
  clave->setFocus();
  Aparcado a;
  const bool aceptado = f.pedir([&] {
    if (texto(*clave).empty())
      throw Rechazo("Falta la clave");
    a = {texto(*clave),
         {{medio->currentText().section(' ', 0, 0).toStdString(), montoDeCampo(*monto, "Monto")}}};
  });
  return aceptado ? std::optional<Aparcado>(a) : std::nullopt;
}

std::optional<double> pedirTasa(QWidget* padre, double actual) {
  Formulario f(padre, "Tasa de cambio");
  auto* campo = f.campo("Tasa", "txTasa", actual > 0 ? QString::number(actual, 'g', 15) : "");
  campo->setFocus();
  campo->selectAll();
  double tasa = 0;
  const bool aceptada = f.pedir([&] {
    std::string t = texto(*campo);
    std::replace(t.begin(), t.end(), ',', '.');
    const auto [fin, ec] = std::from_chars(t.data(), t.data() + t.size(), tasa);
    if (t.empty() || ec != std::errc() || fin != t.data() + t.size() || !(tasa > 0) ||
        tasa > 1e12 || t.find_first_not_of("0123456789.") != std::string::npos)
      throw Rechazo("Tasa no válida: " + t + " (un número mayor que 0)");
  });
  return aceptada ? std::optional<double>(tasa) : std::nullopt;
}

namespace {

// The closing's form: a row per method of the drawer with what it expects,
// what was counted and the difference, and national cash's notes and coins.
class FormularioCierre : public QDialog {
 public:
  FormularioCierre(QWidget* padre, const std::vector<LineaCierre>& esperado)
      : QDialog(padre), esperado_(esperado) {
    setObjectName("formularioCierre");
    setWindowTitle("Cierre de caja");
    auto* capa = new QVBoxLayout(this);
    tabla_ = new QTableWidget(static_cast<int>(esperado.size()), 4, this);
    tabla_->setObjectName("tbContado");
    tabla_->setHorizontalHeaderLabels({"Medio", "Esperado", "Contado", "Diferencia"});
    tabla_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    tabla_->verticalHeader()->hide();
    for (int i = 0; i < static_cast<int>(esperado.size()); ++i) {
      const auto& l = esperado[static_cast<std::size_t>(i)];
      tabla_->setItem(i, 0, new QTableWidgetItem(q(l.medio)));
      tabla_->setItem(i, 1, new QTableWidgetItem(q(montoVisible(l.esperadoNominal))));
      auto* contado = new QLineEdit(this);
      contado->setObjectName(q("txContado" + l.medio));
      tabla_->setCellWidget(i, 2, contado);
      tabla_->setItem(i, 3, new QTableWidgetItem);
      contados_.push_back(contado);
      connect(contado, &QLineEdit::textChanged, this, [this] { recalcular(); });
    }
    capa->addWidget(new QLabel("Lo contado por medio, en su moneda:", this));
    capa->addWidget(tabla_);
    capa->addWidget(new QLabel("Efectivo por denominación (llena el contado de EFE):", this));
    auto* grilla = new QGridLayout;
    int columna = 0;
    for (const Currency valor : valoresDeEfectivo()) {
      auto* cantidad = new QSpinBox(this);
      cantidad->setObjectName(q("spDenominacion" + valor.toMachineText()));
      cantidad->setRange(0, 32767);
      grilla->addWidget(new QLabel(q(montoVisible(valor)), this), 0, columna);
      grilla->addWidget(cantidad, 1, columna++);
      piezas_.push_back({valor, cantidad});
      connect(cantidad, &QSpinBox::valueChanged, this, [this] { porDenominaciones(); });
    }
    capa->addLayout(grilla);
    diferencia_ = new QLabel(this);
    diferencia_->setObjectName("lblDiferencia");
    capa->addWidget(diferencia_);
    botones(*this, capa);
    if (!contados_.empty())
      contados_.front()->setFocus();
    recalcular();
    resize(720, 460);
  }

  std::map<std::string, Currency> contado;
  std::vector<Denominacion> denominaciones;

 protected:
  void done(int resultado) override {
    if (resultado == QDialog::Accepted) {
      try {
        leer();
      } catch (const Rechazo& e) {
        hostUtil().MostrarMensaje(e.what());
        return;
      }
    }
    QDialog::done(resultado);
  }

 private:
  struct Pieza {
    Currency valor;
    QSpinBox* cantidad;
  };

  int filaDe(const std::string& medio) const {
    for (std::size_t i = 0; i < esperado_.size(); ++i)
      if (equalsIgnoreCase(esperado_[i].medio, medio))
        return static_cast<int>(i);
    return -1;
  }

  void porDenominaciones() {
    Currency total;
    for (const auto& p : piezas_)
      total += p.valor * static_cast<std::int16_t>(p.cantidad->value());
    if (const int fila = filaDe("EFE"); fila >= 0)
      contados_[static_cast<std::size_t>(fila)]->setText(q(total.toMachineText()));
  }

  void recalcular() {
    std::string nota;
    for (std::size_t i = 0; i < esperado_.size(); ++i) {
      std::string dif;
      try {
        const Currency c = montoDeCampo(*contados_[i], esperado_[i].medio, true);
        dif = montoVisible(c - esperado_[i].esperadoNominal);
      } catch (const Rechazo&) {
        dif = "?";
      }
      tabla_->item(static_cast<int>(i), 3)->setText(q(dif));
      nota += (nota.empty() ? "" : "   ") + esperado_[i].medio + " " + dif;
    }
    diferencia_->setText(q("Diferencia: " + nota));
  }

  void leer() {
    contado.clear();
    denominaciones.clear();
    for (std::size_t i = 0; i < esperado_.size(); ++i)
      contado[esperado_[i].medio] = montoDeCampo(*contados_[i], esperado_[i].medio, true);
    for (const auto& p : piezas_)
      if (p.cantidad->value() > 0)
        denominaciones.push_back({"EFE", p.valor, static_cast<std::int16_t>(p.cantidad->value())});
  }

  std::vector<LineaCierre> esperado_;
  QTableWidget* tabla_;
  std::vector<QLineEdit*> contados_;
  std::vector<Pieza> piezas_;
  QLabel* diferencia_;
};

}  // namespace

std::optional<Arqueo> pedirArqueo(QWidget* padre, std::int32_t maquina,
                                  const std::vector<LineaCierre>& esperado) {
  FormularioCierre f(padre, esperado);
  if (f.exec() != QDialog::Accepted)
    return std::nullopt;
  Arqueo a;
  a.maquina = maquina;
  a.contado = f.contado;
  a.denominaciones = f.denominaciones;
  return a;
}

void mostrarTexto(QWidget* padre, const QString& titulo, const std::string& t) {
  QDialog d(padre);
  d.setObjectName("dlgTexto");
  d.setWindowTitle(titulo);
  auto* capa = new QVBoxLayout(&d);
  auto* area = new QPlainTextEdit(q(t), &d);
  area->setReadOnly(true);
  area->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  capa->addWidget(area);
  auto* cerrar = new QPushButton("Cerrar (Intro)", &d);
  cerrar->setDefault(true);
  QObject::connect(cerrar, &QPushButton::clicked, &d, &QDialog::accept);
  capa->addWidget(cerrar);
  cerrar->setFocus();
  d.resize(480, 560);
  d.exec();
}

}  // namespace caja::app
