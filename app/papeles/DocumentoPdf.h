#pragma once

#include <QPainter>
#include <QPdfWriter>
#include <memory>
#include <string>
#include <vector>

class QChart;

namespace caja::app {

// A report on A4 paper, written top to bottom: titles, paragraphs, tables,
// charts and a signature line, a new page whenever the next piece does not
// fit. Amounts arrive as text, exactly as the database holds them; charts
// are for looking.
class DocumentoPdf {
 public:
  struct Columna {
    std::string titulo;
    bool numero = true;  // right-aligned
  };

  // Raises Rechazo when the file cannot be written.
  DocumentoPdf(const std::string& archivo, const std::string& titulo);
  ~DocumentoPdf();
  DocumentoPdf(const DocumentoPdf&) = delete;
  DocumentoPdf& operator=(const DocumentoPdf&) = delete;

  void titulo(const std::string& texto);
  void subtitulo(const std::string& texto);
  void parrafo(const std::string& texto);
  void tabla(const std::vector<Columna>& columnas,
             const std::vector<std::vector<std::string>>& filas);
  void grafico(std::unique_ptr<QChart> grafico, double altoMm);
  // Lines to sign side by side, each with its caption below.
  void firmas(const std::vector<std::string>& leyendas);

 private:
  double mm(double milimetros) const;
  // Moves to a new page unless `alto` still fits on this one.
  void reservar(double alto);
  void linea(const std::string& texto, const QFont& fuente);
  std::vector<double> anchosNaturales(const std::vector<Columna>& columnas,
                                      const std::vector<std::vector<std::string>>& filas,
                                      double puntos);

  QPdfWriter pdf_;
  QPainter p_;
  double y_ = 0, ancho_ = 0, alto_ = 0;
};

// Makes `archivo` ready to be written, empty and its owner's alone (0600):
// papers carry sales. A Rechazo naming `que` when it cannot be written, before
// any painter tries it: "`que`: No se pudo escribir ARCHIVO: why".
void prepararArchivo(const std::string& archivo, const std::string& que);

// The chart drawn in `destino` of any painter, laid out at `logico` size.
void dibujarGrafico(QPainter& p, std::unique_ptr<QChart> grafico, const QRectF& destino,
                    const QSizeF& logico);
// The chart as a PNG of `ancho` × `alto` pixels on white.
void guardarPng(std::unique_ptr<QChart> grafico, int ancho, int alto, const std::string& archivo);

}  // namespace caja::app
