#include "app/papeles/DocumentoPdf.h"

#include <QChart>
#include <QFontMetricsF>
#include <QGraphicsScene>
#include <QImage>
#include <QPageSize>
#include <numeric>

#include "app/datos/Tipos.h"
#include "caja/base/CajaError.h"
#include "caja/host/ArchivosPrivados.h"

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

void prepararArchivo(const std::string& archivo, const std::string& que) {
  try {
    escribirArchivoPrivado(archivo, "");
  } catch (const CajaError& e) {
    throw Rechazo(que + ": " + e.description());
  }
}

DocumentoPdf::DocumentoPdf(const std::string& archivo, const std::string& titulo)
    : pdf_((prepararArchivo(archivo, "El PDF"), q(archivo))) {
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

// Each column as wide as its widest text, header included, at `puntos`.
std::vector<double> DocumentoPdf::anchosNaturales(
    const std::vector<Columna>& columnas, const std::vector<std::vector<std::string>>& filas,
    double puntos) {
  const QFontMetricsF cabecera(fuente(puntos, true), &pdf_), celda(fuente(puntos), &pdf_);
  std::vector<double> anchos;
  for (std::size_t i = 0; i < columnas.size(); ++i) {
    double w = cabecera.horizontalAdvance(q(columnas[i].titulo));
    for (const auto& f : filas)
      if (i < f.size())
        w = std::max(w, celda.horizontalAdvance(q(f[i])));
    anchos.push_back(w + mm(3));
  }
  return anchos;
}

// The columns fit the page with their whole headers: a table wider than the
// page is set in a smaller type, down to 6 points, and what is left over is
// shared out. A table that goes on to a new page repeats its header there.
void DocumentoPdf::tabla(const std::vector<Columna>& columnas,
                         const std::vector<std::vector<std::string>>& filas) {
  constexpr double kPuntos = 9, kMinimo = 6;
  std::vector<double> anchos = anchosNaturales(columnas, filas, kPuntos);
  double total = std::accumulate(anchos.begin(), anchos.end(), 0.0);
  double puntos = kPuntos;
  if (total > ancho_) {
    puntos = std::max(kMinimo, kPuntos * ancho_ / total);
    anchos = anchosNaturales(columnas, filas, puntos);
    total = std::accumulate(anchos.begin(), anchos.end(), 0.0);
  }
  for (auto& w : anchos)
    w = total > ancho_ ? w * ancho_ / total
                       : w + (ancho_ - total) / static_cast<double>(anchos.size());
  const double alto = mm(5.5 * puntos / kPuntos);
  auto fila = [&](const std::vector<std::string>& celdas, bool cabecera) {
    p_.setFont(fuente(puntos, cabecera));
    double x = 0;
    for (std::size_t i = 0; i < columnas.size() && i < celdas.size(); ++i) {
      const int alineacion =
          (columnas[i].numero ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
      p_.drawText(QRectF(x + mm(1), y_, anchos[i] - mm(2), alto), alineacion, q(celdas[i]));
      x += anchos[i];
    }
    y_ += alto;
    if (cabecera)
      p_.drawLine(QPointF(0, y_), QPointF(ancho_, y_));
  };
  std::vector<std::string> cabecera;
  for (const auto& c : columnas)
    cabecera.push_back(c.titulo);
  reservar(2 * alto);
  fila(cabecera, true);
  for (const auto& f : filas) {
    if (y_ + alto > alto_) {
      reservar(alto_);
      fila(cabecera, true);
    }
    fila(f, false);
  }
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
  prepararArchivo(archivo, "La imagen");
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
