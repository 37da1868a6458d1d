#include "app/DocumentoPdf.h"

#include <QChart>
#include <QGraphicsScene>
#include <QImage>
#include <QPageSize>

#include "app/Comandos.h"

namespace caja::app {

namespace {

constexpr double kMargenMm = 15.0;

QString q(const std::string& texto) {
  return QString::fromStdString(texto);
}

QFont fuente(double puntos, bool negrita = false) {
  QFont f("DejaVu Sans");
  f.setPointSizeF(puntos);
  f.setBold(negrita);
  return f;
}

}  // namespace

DocumentoPdf::DocumentoPdf(const std::string& archivo, const std::string& titulo)
    : pdf_(q(archivo)) {
  pdf_.setTitle(q(titulo));
  pdf_.setCreator("caja");
  pdf_.setResolution(300);
  pdf_.setPageSize(QPageSize(QPageSize::A4));
  pdf_.setPageMargins(QMarginsF(kMargenMm, kMargenMm, kMargenMm, kMargenMm),
                      QPageLayout::Millimeter);
  if (!p_.begin(&pdf_))
    throw Rechazo("No se pudo escribir el PDF " + archivo);
  const QRect pagina = pdf_.pageLayout().paintRectPixels(pdf_.resolution());
  ancho_ = pagina.width();
  alto_ = pagina.height();
}

DocumentoPdf::~DocumentoPdf() {
  p_.end();
}

double DocumentoPdf::mm(double milimetros) const {
  return milimetros * pdf_.resolution() / 25.4;
}

void DocumentoPdf::reservar(double alto) {
  if (y_ + alto <= alto_ || y_ == 0)
    return;
  pdf_.newPage();
  y_ = 0;
}

void DocumentoPdf::linea(const std::string& texto, const QFont& f) {
  p_.setFont(f);
  const QRectF caja(0, y_, ancho_, alto_);
  const QRectF usado = p_.boundingRect(caja, Qt::TextWordWrap, q(texto));
  reservar(usado.height());
  p_.drawText(QRectF(0, y_, ancho_, usado.height()), Qt::TextWordWrap, q(texto));
  y_ += usado.height() + mm(1.5);
}

void DocumentoPdf::titulo(const std::string& texto) {
  linea(texto, fuente(16, true));
}

void DocumentoPdf::subtitulo(const std::string& texto) {
  y_ += mm(2);
  linea(texto, fuente(11, true));
}

void DocumentoPdf::parrafo(const std::string& texto) {
  linea(texto, fuente(9.5));
}

// The first column takes half as much again as the others.
void DocumentoPdf::tabla(const std::vector<Columna>& columnas,
                         const std::vector<std::vector<std::string>>& filas) {
  const double unidad = ancho_ / (static_cast<double>(columnas.size()) + 0.5);
  const double alto = mm(5.5);
  auto fila = [&](const std::vector<std::string>& celdas, bool cabecera) {
    reservar(alto);
    p_.setFont(fuente(9, cabecera));
    double x = 0;
    for (std::size_t i = 0; i < columnas.size() && i < celdas.size(); ++i) {
      const double w = i == 0 ? 1.5 * unidad : unidad;
      const int alineacion =
          (columnas[i].numero ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
      p_.drawText(QRectF(x + mm(1), y_, w - mm(2), alto), alineacion, q(celdas[i]));
      x += w;
    }
    y_ += alto;
    if (cabecera)
      p_.drawLine(QPointF(0, y_), QPointF(ancho_, y_));
  };
  std::vector<std::string> cabecera;
  for (const auto& c : columnas)
    cabecera.push_back(c.titulo);
  fila(cabecera, true);
  for (const auto& f : filas)
    fila(f, false);
  y_ += mm(3);
}

void DocumentoPdf::grafico(std::unique_ptr<QChart> grafico, double altoMm) {
  const double alto = mm(altoMm);
  reservar(alto);
  dibujarGrafico(p_, std::move(grafico), QRectF(0, y_, ancho_, alto),
                 QSizeF(900, 900 * alto / ancho_));
  y_ += alto + mm(3);
}

void DocumentoPdf::firmas(const std::vector<std::string>& leyendas) {
  reservar(mm(30));
  y_ += mm(20);
  const double cada = ancho_ / static_cast<double>(leyendas.size());
  p_.setFont(fuente(9));
  for (std::size_t i = 0; i < leyendas.size(); ++i) {
    const double x = cada * static_cast<double>(i);
    p_.drawLine(QPointF(x, y_), QPointF(x + cada - mm(10), y_));
    p_.drawText(QRectF(x, y_ + mm(1), cada - mm(10), mm(6)), Qt::AlignLeft, q(leyendas[i]));
  }
  y_ += mm(8);
}

void dibujarGrafico(QPainter& p, std::unique_ptr<QChart> grafico, const QRectF& destino,
                    const QSizeF& logico) {
  QGraphicsScene escena;
  grafico->setGeometry(QRectF(QPointF(0, 0), logico));
  escena.addItem(grafico.release());  // the scene owns it from here
  escena.setSceneRect(QRectF(QPointF(0, 0), logico));
  escena.render(&p, destino, QRectF(QPointF(0, 0), logico));
}

void guardarPng(std::unique_ptr<QChart> grafico, int ancho, int alto, const std::string& archivo) {
  QImage imagen(ancho, alto, QImage::Format_RGB32);
  imagen.fill(Qt::white);
  {
    QPainter p(&imagen);
    p.setRenderHint(QPainter::Antialiasing);
    dibujarGrafico(p, std::move(grafico), QRectF(0, 0, ancho, alto), QSizeF(ancho, alto));
  }
  if (!imagen.save(q(archivo), "PNG"))
    throw Rechazo("No se pudo escribir la imagen " + archivo);
}

}  // namespace caja::app
