#include "app/papeles/Impresos.h"

#include <QFont>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <fstream>
#include <iostream>

#include "app/datos/Consultas.h"
#include "app/datos/Json.h"
#include "app/papeles/DocumentoPdf.h"
#include "caja/base/Conversiones.h"
#include "caja/catalog/CMedioPago.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

// A method as the customer reads it: the catalogue's title.
std::string nombreDeMedio(std::string codigo) {
  const auto medio = ObtenerMedioPago(codigo);
  if (medio && !medio->Titulo.empty())
    return medio->Titulo;
  return codigo == "EFE" ? "Efectivo" : codigo;
}

PagoRecibo pagoDe(const CDetalleIngreso& linea) {
  PagoRecibo p;
  p.medio = nombreDeMedio(linea.medio);
  p.codigo = linea.medio;
  p.montoNominal = linea.montoNominal;
  p.monto = linea.Monto;
  p.extranjero = linea.montoNominal != linea.Monto && !linea.montoNominal.isZero();
  if (p.extranjero)
    p.tasa = textoDeTasa(linea.Monto.toDouble() / linea.montoNominal.toDouble());
  p.cuenta = linea.NumeroCuenta;
  p.documento = linea.NumeroDocumento;
  return p;
}

// Who approved the movement, and who voided it, why and with whose
// approval: the trail's rows of the movement, and its void.
void aprobaciones(HostSql& db, std::int32_t numero, DatosRecibo& d) {
  for (const auto& [accion, aprobador] : aprobacionesDe(db, numero))
    (accion == "anulacion" ? d.aprobadorAnulacion : d.aprobador) = aprobador;
  if (const auto anulacion = anulacionDe(db, numero)) {
    d.anuladoPor = anulacion->operador;
    d.motivoAnulacion = anulacion->motivo;
  }
}

DatosRecibo datosRecibo(Almacen& a, std::int32_t numero) {
  HostSql& db = *a.db;
  CVarelta mov;
  if (!mov.load(numero))
    throw Rechazo("Movimiento " + std::to_string(numero) + " no encontrado");
  DatosRecibo d;
  const DatosEmpresa empresa = empresaDe(db);
  d.empresa = empresa.nombre;
  d.rif = empresa.rif;
  d.direccion = empresa.direccion;
  const NumeroVisible visible = numeroVisible(a, numero);
  d.numero = visible.numero;
  d.local = visible.local;
  d.maquina = maquinaDeMovimiento(db, numero);
  d.sesion = mov.Sesion;
  d.cajero = mov.Operador;
  if (!mov.TipoDocRel.empty() && mov.NumeroDocRel != 0)
    d.documento = mov.TipoDocRel + " " + std::to_string(mov.NumeroDocRel);
  d.tipo = tipoDe(mov.Clasificacion);
  d.fecha = mov.fecha;
  d.hora = mov.Hora;
  d.anulado = anulacionDe(db, numero).has_value();
  for (const auto& v : vueltoDe(db, numero))
    d.vuelto.push_back({nombreDeMedio(v.medio), v.medio, v.montoNominal, v.montoMN});
  // A sale's change is kept as lines below zero: it prints once, as change.
  const bool venta = d.tipo == "venta", conVuelto = !d.vuelto.empty();
  const auto lineas = mov.detalles();
  for (const auto& linea : *lineas) {
    const bool esVuelto = venta && linea->Monto < Currency{};
    if (!esVuelto)
      d.pagos.push_back(pagoDe(*linea));
    else if (!conVuelto)
      d.vuelto.push_back(
          {nombreDeMedio(linea->medio), linea->medio, -linea->montoNominal, -linea->Monto});
  }
  for (const auto& v : d.vuelto)
    d.conEfectivo = d.conEfectivo || v.codigo != "CREDITO";
  if (const auto i = importesDe(db, numero)) {
    d.base = i->base;
    d.iva = i->iva;
    d.credito = i->credito;
  }
  d.igtf = mov.montoIGTF;
  d.total = mov.Creditos > mov.Debitos ? mov.Creditos : mov.Debitos;
  d.conEfectivo = d.conEfectivo || mov.detallesEfectivo()->Count() > 0;
  if (d.tipo != "venta" && mov.Descripcion != kTituloDevolucion &&
      mov.Descripcion != kTituloEntrada)
    d.motivo = mov.Descripcion;
  aprobaciones(db, numero, d);
  return d;
}

}  // namespace

std::string encabezadoEmpresa(const DatosEmpresa& e) {
  return e.nombre + (e.rif.empty() ? "" : (e.nombre.empty() ? "RIF " : " · RIF ") + e.rif);
}

std::string nombreEmpresa(HostSql& db) {
  return encabezadoEmpresa(empresaDe(db));
}

void aImpresora(const std::string& ruta, const std::string& bytes) {
  std::ofstream salida(ruta, std::ios::binary | std::ios::app);
  salida << bytes;
  salida.flush();
  if (!salida)
    throw Rechazo("No se pudo escribir en la impresora " + ruta);
}

// The receipt on a page as wide as the roll (58 or 80 mm) and as long as
// it is, in a monospaced font sized so that the columns fill the width.
void reciboPdf(const std::vector<LineaRecibo>& lineas, int ancho, const std::string& archivo) {
  constexpr double kMargenMm = 3.0, kPuntosPorMm = 72.0 / 25.4, kInterlinea = 1.25;
  const double papelMm = ancho == 32 ? 58.0 : 80.0;
  // A monospaced character is 0.6 of the font's size wide.
  const double puntos = (papelMm - 2 * kMargenMm) * kPuntosPorMm / (ancho * 0.6);
  const double altoMm =
      2 * kMargenMm + static_cast<double>(lineas.size() + 1) * puntos * kInterlinea / kPuntosPorMm;
  prepararArchivo(archivo, "El PDF");
  QPdfWriter pdf(QString::fromStdString(archivo));
  pdf.setTitle("Recibo");
  pdf.setCreator("caja");
  pdf.setPageSize(QPageSize(QSizeF(papelMm, altoMm), QPageSize::Millimeter));
  pdf.setPageMargins(QMarginsF(kMargenMm, kMargenMm, kMargenMm, kMargenMm),
                     QPageLayout::Millimeter);
  QPainter p;
  if (!p.begin(&pdf))
    throw Rechazo("No se pudo escribir el PDF " + archivo);
  QFont fuente("DejaVu Sans Mono");
  fuente.setStyleHint(QFont::Monospace);
  fuente.setPointSizeF(puntos);
  const double paso = pdf.resolution() * puntos * kInterlinea / 72.0;
  double y = paso;
  for (const auto& l : lineas) {
    fuente.setBold(l.titulo);
    p.setFont(fuente);
    p.drawText(QPointF(0, y), QString::fromStdString(l.texto));
    y += paso;
  }
  p.end();
}

// The lines as JSON, for a host that prints them its own way.
std::string jsonRecibo(const std::vector<LineaRecibo>& lineas) {
  std::string texto = "{\"lineas\":[";
  for (std::size_t i = 0; i < lineas.size(); ++i)
    texto += std::string(i ? "," : "") + "{\"texto\":" + json(lineas[i].texto) +
             ",\"titulo\":" + (lineas[i].titulo ? "true" : "false") + "}";
  return texto + "]}\n";
}

ReciboListo reciboDe(Almacen& a, std::int32_t numero, int ancho) {
  const DatosRecibo d = datosRecibo(a, numero);
  return {lineasRecibo(d, ancho), d.conEfectivo};
}

}  // namespace caja::app
