#include "app/ventana/Ventana.h"

#include <QApplication>
#include <QChartView>
#include <QCloseEvent>
#include <QDialog>
#include <QEventLoop>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <set>
#include <thread>

#include "app/acciones/EstaCaja.h"
#include "app/acciones/Jornada.h"
#include "app/acciones/Personas.h"
#include "app/datos/Carpeta.h"
#include "app/datos/Diario.h"
#include "app/datos/Json.h"
#include "app/papeles/Impresos.h"
#include "app/papeles/Informe.h"
#include "app/ventana/Formularios.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/drawer/SaldoCaja.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

QString q(const std::string& texto) {
  return QString::fromStdString(texto);
}

std::string monto(Currency c) {
  return Format(Variant(c), kFormatoMonto);
}

// Every few seconds the status line reads the journal again; the server is
// asked less often, off the window's thread.
constexpr int kCadaEstadoMs = 2000;
constexpr int kCadaServidor = 5;  // status readings

QTableWidgetItem* celda(const std::string& texto, bool derecha = false) {
  auto* c = new QTableWidgetItem(q(texto));
  c->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
  if (derecha)
    c->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
  return c;
}

}  // namespace

VentanaCaja::VentanaCaja(std::optional<std::string> db, std::optional<std::int32_t> maquina,
                         std::string operador)
    : db_(std::move(db)), maquinaDada_(maquina), firmas_(this, std::move(operador)) {
  setObjectName("ventanaCaja");
  setWindowTitle("Caja");
  // Where a sale is saved: the file, or this till's journal.
  local_ = PoliticaCaja::abrir(db_, Acceso::Guarda);
  crearControles();
}

VentanaCaja::~VentanaCaja() {
  *viva_ = false;
  if (sondeo_.joinable())
    sondeo_.join();
}

QWidget* VentanaCaja::boton(const char* tecla, const QString& texto, void (VentanaCaja::*acto)()) {
  auto* b = new QPushButton(QString(tecla) + "  " + texto, this);
  b->setObjectName(QString("bt") + tecla);
  b->setFocusPolicy(Qt::NoFocus);
  b->setMinimumHeight(44);
  connect(b, &QPushButton::clicked, this, [this, acto] { (this->*acto)(); });
  teclas_[QKeySequence(QString(tecla))[0].key()] = acto;
  return b;
}

void VentanaCaja::crearControles() {
  auto* centro = new QWidget(this);
  auto* capa = new QVBoxLayout(centro);
  cabecera_ = new QLabel(centro);
  cabecera_->setObjectName("lblCabecera");
  QFont grande = cabecera_->font();
  grande.setPointSizeF(grande.pointSizeF() * 1.3);
  grande.setBold(true);
  cabecera_->setFont(grande);
  capa->addWidget(cabecera_);

  auto* medio = new QHBoxLayout;
  movimientos_ = new QTableWidget(0, 7, centro);
  movimientos_->setObjectName("tbMovimientos");
  movimientos_->setHorizontalHeaderLabels(
      {"Número", "Hora", "Tipo", "Documento", "Total", "Medios", "Estado"});
  movimientos_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  movimientos_->verticalHeader()->hide();
  movimientos_->setSelectionBehavior(QAbstractItemView::SelectRows);
  movimientos_->setSelectionMode(QAbstractItemView::SingleSelection);
  movimientos_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  medio->addWidget(movimientos_, 3);

  auto* derecha = new QVBoxLayout;
  derecha->addWidget(new QLabel("Cajón", centro));
  cajon_ = new QTableWidget(0, 3, centro);
  cajon_->setObjectName("tbCajon");
  cajon_->setHorizontalHeaderLabels({"Medio", "Moneda nacional", "En su moneda"});
  cajon_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  cajon_->verticalHeader()->hide();
  cajon_->setFocusPolicy(Qt::NoFocus);
  derecha->addWidget(cajon_);
  tasa_ = new QLabel(centro);
  tasa_->setObjectName("lblTasa");
  derecha->addWidget(tasa_);
  medio->addLayout(derecha, 2);
  capa->addLayout(medio, 1);

  auto* teclas = new QGridLayout;
  const struct {
    const char* tecla;
    const char* texto;
    void (VentanaCaja::*acto)();
  } actos[] = {
      {"F2", "Venta", &VentanaCaja::vender},    {"F3", "Devolución", &VentanaCaja::devolver},
      {"F4", "Entrada", &VentanaCaja::entrada}, {"F5", "Salida", &VentanaCaja::salida},
      {"F6", "Anular", &VentanaCaja::anular},   {"F7", "Aparcar", &VentanaCaja::aparcar},
      {"F8", "Retomar", &VentanaCaja::retomar}, {"F9", "Recibo", &VentanaCaja::reimprimir},
      {"F10", "Tasa", &VentanaCaja::tasa},      {"F11", "Cierre", &VentanaCaja::cierre},
      {"F12", "Mes", &VentanaCaja::mes}};
  int i = 0;
  for (const auto& a : actos) {
    teclas->addWidget(boton(a.tecla, a.texto, a.acto), i / 6, i % 6);
    ++i;
  }
  capa->addLayout(teclas);
  setCentralWidget(centro);
  estado_ = new QLabel(this);
  estado_->setObjectName("lblEstado");
  statusBar()->addWidget(estado_, 1);
  reloj_ = new QTimer(this);
  connect(reloj_, &QTimer::timeout, this, [this] {
    static int vuelta = 0;
    try {
      estado();
      if (++vuelta % kCadaServidor == 0)
        preguntarServidor();
    } catch (const std::exception&) {
      // The line says what it could; the next reading tries again.
    }
  });
}

bool VentanaCaja::empezar() {
  maquina_ = estaMaquina(*local_.db, maquinaDada_ ? maquinaDada_ : maquinaConfigurada());
  while (hayPersonas(*local_.db, Rol::Cajero)) {
    try {
      cajeroDe(*local_.db, firmas_, [this] { return maquina_; });
      break;
    } catch (const Rechazo& e) {
      firmas_.olvidarCajero();
      if (std::string(e.what()).find("cancelado") != std::string::npos)
        return false;
      decir(e.what());
    }
  }
  if (const auto abierta = sesionAbiertaDe(*local_.db, maquina_)) {
    sesion_ = *abierta;
  } else {
    bool abierto = false;
    actuar([&] {
      hacer(Acceso::Cambia, [&](Puesto& p) { sesion_ = abrirSesion(p, maquina_); });
      abierto = true;
    });
    if (!abierto)
      return false;
  }
  refrescar();
  preguntarServidor();
  reloj_->start(kCadaEstadoMs);
  return true;
}

bool VentanaCaja::enLocal(Acceso acceso) const {
  return !local_.conServidor || acceso == Acceso::Guarda || acceso == Acceso::Diario;
}

Puesto VentanaCaja::puesto(Acceso acceso) {
  const Maquina maquina = [this] { return maquina_; };
  if (enLocal(acceso)) {
    PoliticaCaja::usar(local_);
    return {local_, firmas_, maquina};
  }
  remoto_ = PoliticaCaja::delServidor(conectar(), local_.uri);
  return {*remoto_, firmas_, maquina};
}

void VentanaCaja::hacer(Acceso acceso, const std::function<void(Puesto&)>& acto) {
  if (enLocal(acceso)) {
    Puesto p = puesto(acceso);
    acto(p);
    PoliticaCaja::despues(local_, acceso);
    return;
  }
  const auto servidor = conectar();
  fuera([&] {
    remoto_ = PoliticaCaja::delServidor(servidor, local_.uri);
    Puesto p{*remoto_, firmas_, [this] { return maquina_; }};
    acto(p);
    PoliticaCaja::despues(*remoto_, acceso);
  });
  remoto_.reset();
  PoliticaCaja::usar(local_);
}

// The connection is made off the window's thread, where a server that went
// away costs libpq's timeouts: the window goes on painting and says it
// waits, Escape giving up, with nothing done yet.
std::shared_ptr<HostSql> VentanaCaja::conectar() {
  // A server the status line found away is not waited on: the act is
  // refused at once, and the sales go on in the journal.
  if (!servidorEnLinea_)
    throw Rechazo(
        "El servidor no responde: esto se hace cuando vuelva la conexión (las ventas "
        "siguen guardándose en esta caja)");
  struct Espera {
    std::shared_ptr<HostSql> servidor;
    std::string error;
    bool lista = false;
  };
  auto espera = std::make_shared<Espera>();
  QDialog aviso(this);
  aviso.setObjectName("dlgConectando");
  aviso.setWindowTitle("Servidor");
  auto* capa = new QVBoxLayout(&aviso);
  capa->addWidget(new QLabel("Esperando al servidor… (Esc: volver sin hacer nada)", &aviso));
  QPointer<QDialog> dialogo(&aviso);
  std::thread([espera, dialogo, uri = local_.uri] {
    std::shared_ptr<HostSql> servidor;
    std::string error;
    try {
      servidor = PostgresFactoria::Conectar(uri);
    } catch (const CajaError& e) {
      error = e.description();
    } catch (const std::exception& e) {
      error = e.what();
    }
    if (!QCoreApplication::instance())
      return;
    QMetaObject::invokeMethod(qApp, [espera, dialogo, servidor, error] {
      espera->servidor = servidor;
      espera->error = error;
      espera->lista = true;
      if (dialogo)
        dialogo->accept();
    });
  }).detach();
  // Modal at once, so that no other act starts meanwhile.
  aviso.open();
  QEventLoop bucle;
  connect(&aviso, &QDialog::finished, &bucle, &QEventLoop::quit);
  if (!espera->lista)
    bucle.exec();
  if (!espera->lista)
    throw Rechazo("Se dejó de esperar al servidor: nada se hizo");
  if (!espera->servidor)
    throw Rechazo("El servidor no responde: " + espera->error);
  return espera->servidor;
}

namespace {

// A note that stays until the work it announces is done.
class NotaFija : public QDialog {
 public:
  using QDialog::QDialog;
  void reject() override {}
};

}  // namespace

// What talks to the server runs on a thread of its own while the window
// goes on painting behind a note. The cashier cannot close the note: once
// the server may be saving, backing out would leave the window unsure of
// what was saved. A name or a PIN the act asks for comes up over it (the
// window's Firmas bring the question to this thread). The status line
// waits meanwhile: it reads the journal the act may be sending from.
void VentanaCaja::fuera(const std::function<void()>& trabajo) {
  NotaFija nota(this);
  nota.setObjectName("dlgServidor");
  nota.setWindowTitle("Servidor");
  auto* capa = new QVBoxLayout(&nota);
  capa->addWidget(new QLabel("Trabajando con el servidor…", &nota));
  const bool leia = reloj_->isActive();
  reloj_->stop();
  ocupado_ = true;
  nota.open();
  bool listo = false;
  std::exception_ptr error;
  std::thread hilo([&] {
    try {
      trabajo();
    } catch (...) {
      error = std::current_exception();
    }
    // Said on the window's thread, where the wait below sees it.
    QMetaObject::invokeMethod(&nota, [&listo] { listo = true; });
  });
  // Events are handled until then, not a loop of its own: an application
  // told to quit meanwhile ends every loop at once, and this wait must not.
  while (!listo)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  hilo.join();
  nota.done(QDialog::Accepted);
  ocupado_ = false;
  if (leia)
    reloj_->start(kCadaEstadoMs);
  if (error)
    std::rethrow_exception(error);
}

void VentanaCaja::decir(const std::string& texto) {
  hostUtil().MostrarMensaje(texto);
}

void VentanaCaja::actuar(const std::function<void()>& acto) {
  try {
    acto();
  } catch (const Rechazo& e) {
    decir(e.what());
  } catch (const CajaError& e) {
    anotarError(e);
    decir(e.description());
  } catch (const std::exception& e) {
    decir(e.what());
  }
  try {
    remoto_.reset();
    PoliticaCaja::usar(local_);
    refrescar();
  } catch (const CajaError& e) {
    decir(e.description());
  }
}

std::optional<int> VentanaCaja::filaElegida() const {
  const int fila = movimientos_->currentRow();
  if (fila < 0 || fila >= static_cast<int>(filas_.size()))
    return std::nullopt;
  return fila;
}

QStringList VentanaCaja::medios() {
  QStringList lista;
  for (const auto& m : mediosDeLaCaja(*local_.db))
    lista << q(m->codigo + " " + (m->Titulo.empty() ? m->Descripcion : m->Titulo));
  return lista;
}

void VentanaCaja::imprimir(std::int32_t transId) {
  const auto ancho = static_cast<int>(
      lmGetSettingCur(kAppZOR, "Recibo", "Ancho", Currency::fromUnits(42)).toDouble());
  const std::string impresora = CStr(lmGetSetting(kAppZOR, "Recibo", "Impresora", ""));
  const ReciboListo r = reciboDe(local_, transId, anchoValido(ancho) ? ancho : 42);
  if (!impresora.empty())
    aImpresora(impresora, escposRecibo(r.lineas, r.conEfectivo));
  else
    mostrarTexto(this, "Recibo", textoRecibo(r.lineas));
}

void VentanaCaja::refrescar() {
  Filtro f;
  f.sesion = sesion_;
  filas_ = listar(local_, f).filas;
  const auto mediosDe = mediosPorMovimiento(*local_.db, f);
  std::set<std::int32_t> enConflicto;
  if (const auto diario = local_.diario())
    for (const auto& c : conflictos(*diario, false))
      enConflicto.insert(c.numeroLocal);
  movimientos_->setRowCount(static_cast<int>(filas_.size()));
  for (int i = 0; i < static_cast<int>(filas_.size()); ++i) {
    const FilaMovimiento& m = filas_[static_cast<std::size_t>(i)];
    const auto medios = mediosDe.find(m.transId);
    const bool conflicto = local_.enDiario && enConflicto.count(m.transId) > 0;
    const std::string estado = m.anulado   ? "anulado"
                               : conflicto ? "en conflicto"
                               : m.local   ? "por enviar"
                                           : "";
    const std::string celdas[] = {NumeroVisible{m.numero, m.local}.texto(),
                                  m.hora.timeOfDay().toString().substr(0, 5),
                                  m.tipo == "devolucion" ? "devolución" : m.tipo,
                                  m.documento,
                                  monto(m.debitos - m.creditos),
                                  medios == mediosDe.end() ? "" : medios->second,
                                  estado};
    for (int c = 0; c < 7; ++c) {
      auto* item = celda(celdas[c], c == 4);
      if (m.anulado) {
        QFont tachada = item->font();
        tachada.setStrikeOut(true);
        item->setFont(tachada);
        item->setForeground(Qt::gray);
      } else if (conflicto) {
        item->setBackground(QColor(255, 210, 210));
      } else if (m.local) {
        item->setForeground(QColor(0, 70, 160));
      }
      movimientos_->setItem(i, c, item);
    }
  }
  if (!filas_.empty() && movimientos_->currentRow() < 0)
    movimientos_->selectRow(static_cast<int>(filas_.size()) - 1);
  SaldoCaja saldo;
  saldo.load(maquina_);
  const int lineas = saldo.detalles ? saldo.detalles->Count() : 0;
  cajon_->setRowCount(lineas);
  for (int i = 0; i < lineas; ++i) {
    const auto& d = saldo.detalles->Item(i + 1);
    cajon_->setItem(i, 0, celda(d->codigoMedio));
    cajon_->setItem(i, 1, celda(monto(d->valorMN), true));
    cajon_->setItem(i, 2, celda(monto(d->valorNominal), true));
  }
  const double tasa = local_.db->TipoCambioCaja();
  tasa_->setText(q(tasa > 0 ? "Tasa: " + textoDeTasa(tasa) : "Sin tasa de cambio (F10)"));
  cabecera_->setText(q("Caja " + std::to_string(maquina_) + " · Sesión " + std::to_string(sesion_) +
                       " · " + firmas_.nombreDado(Rol::Cajero).value_or("CAJERO")));
  estado();
}

void VentanaCaja::estado() {
  if (!local_.conServidor) {
    estado_->setText(q("Base de datos de esta caja · " + std::to_string(filas_.size()) +
                       " movimientos en la sesión"));
    return;
  }
  const auto diario = local_.diario();
  const std::size_t esperan = diario ? pendientes(*diario).size() : 0;
  const std::size_t enConflicto = diario ? conflictos(*diario, false).size() : 0;
  const std::string ultimo = ultimoEnvio();
  estado_->setText(q(std::string(servidorEnLinea_ ? "Servidor en línea" : "Servidor sin conexión") +
                     " · por enviar: " + std::to_string(esperan) +
                     " · último envío: " + (ultimo.empty() ? "ninguno" : ultimo) +
                     " · conflictos: " + std::to_string(enConflicto)));
}

void VentanaCaja::preguntarServidor() {
  if (!local_.conServidor || sondeando_->exchange(true))
    return;
  if (sondeo_.joinable())
    sondeo_.join();
  // Off the window's thread: a server away costs the window nothing. The
  // answer comes back through the event loop, to a window still there; the
  // window waits for the look in progress before it goes.
  sondeo_ = std::thread([uri = local_.uri, viva = viva_, sondeando = sondeando_, this] {
    bool enLinea = false;
    try {
      PostgresFactoria::Conectar(uri);
      enLinea = true;
    } catch (const std::exception&) {
    }
    QMetaObject::invokeMethod(qApp, [viva, enLinea, this] {
      if (!*viva)
        return;
      servidorEnLinea_ = enLinea;
      local_.sinServidor = !enLinea;
      if (ocupado_)
        return;
      try {
        estado();
      } catch (const std::exception&) {
      }
    });
    *sondeando = false;
  });
}

// The acts' keys reach the window from whatever has the focus in it: the
// movements' table leaves them alone.
void VentanaCaja::keyPressEvent(QKeyEvent* evento) {
  const auto acto = teclas_.find(evento->key());
  if (acto == teclas_.end() || evento->modifiers() != Qt::NoModifier)
    return QMainWindow::keyPressEvent(evento);
  (this->*(acto->second))();
}

void VentanaCaja::closeEvent(QCloseEvent* evento) {
  if (cerrable_) {
    evento->accept();
    return;
  }
  // No key nor click ends the till by accident: it is typed.
  bool ok = false;
  const QString texto = QInputDialog::getText(
      this, "Cerrar el programa",
      "Escriba SALIR para cerrar el programa de la caja:", QLineEdit::Normal, {}, &ok);
  if (ok && texto.trimmed() == "SALIR")
    evento->accept();
  else
    evento->ignore();
}

void VentanaCaja::guardar(std::optional<Venta> v,
                          const std::function<std::int32_t(Puesto&, const Venta&)>& accion,
                          bool conRecibo) {
  if (!v)
    return;
  v->sesion = sesion_;
  std::int32_t id = 0;
  hacer(Acceso::Guarda, [&](Puesto& p) {
    id = accion(p, *v);
    alGuardar(id);
  });
  if (!conRecibo)
    return;
  refrescar();
  imprimir(id);
}

void VentanaCaja::vender() {
  actuar([this] {
    guardar(
        pedirVenta(this, "Venta"),
        [](Puesto& p, const Venta& v) {
          CobroDeVentana cobro;
          return app::vender(p, v, cobro);
        },
        true);
  });
}

void VentanaCaja::devolver() {
  actuar([this] {
    const auto fila = filaElegida();
    std::string documento;
    std::optional<Currency> resto;
    if (fila) {
      documento = filas_[static_cast<std::size_t>(*fila)].documento;
      if (const auto dos = documento.find(':'); dos != std::string::npos) {
        const CobroDocumento k =
            cobroParaDevolver(local_, documento.substr(0, dos),
                              static_cast<std::int32_t>(std::stol(documento.substr(dos + 1))));
        if (k.montosConocidos)
          resto = std::max(Currency{}, k.total - k.devuelto);
      }
    }
    guardar(
        pedirDevolucion(this, documento, resto),
        [](Puesto& p, const Venta& v) {
          CobroDeVentana cobro;
          return app::devolver(p, v, cobro);
        },
        true);
  });
}

void VentanaCaja::moverEfectivo(const char* clasificacion) {
  actuar([this, clasificacion] {
    guardar(
        pedirEfectivo(this, clasificacion, medios()),
        [](Puesto& p, const Venta& v) { return app::moverEfectivo(p, v); }, false);
  });
}

void VentanaCaja::entrada() {
  moverEfectivo(kEntrada);
}

void VentanaCaja::salida() {
  moverEfectivo(kSalida);
}

void VentanaCaja::anular() {
  actuar([this] {
    const auto fila = filaElegida();
    if (!fila)
      throw Rechazo("Elija el movimiento que se anula");
    const FilaMovimiento m = filas_[static_cast<std::size_t>(*fila)];
    const auto motivo =
        pedirTexto(this, q("Anular " + NumeroVisible{m.numero, m.local}.texto()), "Motivo", false);
    if (!motivo)
      return;
    // One the server has is voided there; one the journal still holds,
    // in the journal, and it goes to the server with its void.
    const Acceso acceso = local_.conServidor && !m.local ? Acceso::Cambia : Acceso::Guarda;
    const std::int32_t numero = acceso == Acceso::Cambia ? m.numero : m.transId;
    hacer(acceso, [&](Puesto& p) { app::anular(p, numero, p.almacen.nombreDe(numero), *motivo); });
  });
}

void VentanaCaja::aparcar() {
  actuar([this] {
    const auto a = pedirAparcado(this, medios());
    if (!a)
      return;
    CVarelta aparcado;
    hacer(Acceso::Servidor, [&](Puesto& p) { app::aparcar(p, a->clave, a->pagos, aparcado); });
  });
}

void VentanaCaja::retomar() {
  actuar([this] {
    const auto clave = pedirTexto(this, "Retomar lo aparcado", "Clave", true);
    if (!clave)
      return;
    auto v = pedirVenta(this, "Venta con lo aparcado");
    if (!v)
      return;
    v->sesion = sesion_;
    // The collection dialog is the window's: this act runs on its thread.
    Puesto p = puesto(Acceso::Servidor);
    CobroDeVentana cobro;
    app::vender(p, *v, cobro, &*clave);
  });
}

void VentanaCaja::reimprimir() {
  actuar([this] {
    const auto fila = filaElegida();
    if (!fila)
      throw Rechazo("Elija el movimiento cuyo recibo se imprime");
    imprimir(filas_[static_cast<std::size_t>(*fila)].transId);
  });
}

void VentanaCaja::tasa() {
  actuar([this] {
    const auto nueva = pedirTasa(this, local_.db->TipoCambioCaja());
    if (!nueva)
      return;
    hacer(Acceso::Cambia, [&](Puesto& p) { fijarTasaDeCaja(p, *nueva); });
  });
}

void VentanaCaja::cierre() {
  actuar([this] {
    auto arqueo = pedirArqueo(this, maquina_, esperadoDeCaja(maquina_));
    if (!arqueo)
      return;
    std::optional<Cierre> cerrado;
    hacer(Acceso::Cierre, [&](Puesto& p) { cerrado = cerrarCaja(p, *arqueo); });
    const Cierre& registro = *cerrado;
    // The report reads the company from the till's own data (the journal
    // keeps a copy): its chart is drawn on the window's thread.
    const auto pdf = carpetaDeDatos(true) / ("cierre-" + std::to_string(registro.id) + ".pdf");
    pdfCierre(*local_.db, registro, pdf.string());
    std::string resumen = "Cierre " + std::to_string(registro.id) + " de la máquina " +
                          std::to_string(registro.maquina) + "\nContó: " + registro.operador +
                          (registro.aprobador.empty() ? "" : "\nAutorizó: " + registro.aprobador) +
                          "\n\n";
    for (const auto& l : registro.lineas)
      resumen += l.medio + "  esperado " + monto(l.esperadoNominal) + "  contado " +
                 monto(l.contado) + "  diferencia " + monto(l.diferencia) + "\n";
    mostrarTexto(this, "Cierre de caja", resumen + "\nInforme: " + pdf.string());
  });
}

void VentanaCaja::mes() {
  actuar([this] {
    const Fecha hoy = Fecha::today();
    const std::string iso = hoy.toIsoText();
    const Fecha desde = Fecha::fromYmd(std::stoi(iso.substr(0, 4)), std::stoi(iso.substr(5, 2)), 1);
    Mes m;
    hacer(Acceso::Servidor, [&](Puesto& p) { m = mesDe(p.db(), desde, hoy, maquina_); });
    QDialog d(this);
    d.setObjectName("dlgMes");
    d.setWindowTitle("El mes");
    auto* capa = new QVBoxLayout(&d);
    auto* vista = new QChartView(graficoDelMes(m).release(), &d);
    vista->setRenderHint(QPainter::Antialiasing);
    capa->addWidget(vista);
    auto* cerrar = new QPushButton("Cerrar (Intro)", &d);
    cerrar->setDefault(true);
    QObject::connect(cerrar, &QPushButton::clicked, &d, &QDialog::accept);
    capa->addWidget(cerrar);
    d.resize(900, 520);
    d.exec();
  });
}

int ejecutarVentana(std::optional<std::string> db, std::optional<std::int32_t> maquina,
                    std::string operador) {
  VentanaCaja ventana(std::move(db), maquina, std::move(operador));
  if (!ventana.empezar())
    return 1;
  ventana.resize(1024, 768);
  ventana.show();
  return QApplication::exec();
}

}  // namespace caja::app
