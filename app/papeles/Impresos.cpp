#include "app/papeles/Impresos.h"

#include <QFont>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <fstream>
#include <iostream>

#include "app/papeles/DocumentoPdf.h"
#include "app/acciones/Empresa.h"
#include "app/papeles/Recibo.h"
#include "app/linea/Salida.h"
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

void importes(Contexto& c, std::int32_t numero, DatosRecibo& d) {
  auto rs = c.db->openrecordset("SELECT Base, IVA, Credito FROM hostImportes WHERE TransID = ?",
                                {numero});
  if (rs->Eof())
    return;
  d.base = NzMoneda(rs->Fields(0));
  d.iva = NzMoneda(rs->Fields(1));
  d.credito = NzMoneda(rs->Fields(2));
}

// Who approved the movement, and who voided it, why and with whose
// approval: the trail's rows of the movement, and its void.
void aprobaciones(Contexto& c, std::int32_t numero, DatosRecibo& d) {
  auto rs = c.db->openrecordset(
      "SELECT Accion, Aprobador FROM hostAuditoria WHERE TransID = ? ORDER BY id", {numero});
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string accion = NzTexto(rs->Fields(0));
    (accion == "anulacion" ? d.aprobadorAnulacion : d.aprobador) = NzTexto(rs->Fields(1));
  }
  auto a = c.db->openrecordset("SELECT Operador, Motivo FROM hostAnulaciones WHERE TransID = ?",
                               {numero});
  if (a->Eof())
    return;
  d.anuladoPor = NzTexto(a->Fields(0));
  d.motivoAnulacion = NzTexto(a->Fields(1));
}

DatosRecibo datosRecibo(Contexto& c, std::int32_t numero) {
  CVarelta mov;
  if (!mov.load(numero))
    throw Rechazo("Movimiento " + std::to_string(numero) + " no encontrado");
  DatosRecibo d;
  const DatosEmpresa empresa = empresaDe(*c.db);
  d.empresa = empresa.nombre;
  d.rif = empresa.rif;
  d.direccion = empresa.direccion;
  const NumeroVisible visible = numeroVisible(c, numero);
  d.numero = visible.numero;
  d.local = visible.local;
  d.maquina =
      NzLong(c.db->ReadScalar("SELECT machineID FROM MovimientosCaja WHERE TransID = ?", {numero}));
  d.sesion = mov.Sesion;
  d.cajero = mov.Operador;
  if (!mov.TipoDocRel.empty() && mov.NumeroDocRel != 0)
    d.documento = mov.TipoDocRel + " " + std::to_string(mov.NumeroDocRel);
  d.tipo = tipoDe(mov.Clasificacion);
  d.fecha = mov.fecha;
  d.hora = mov.Hora;
  d.anulado = !c.db->ReadScalar("SELECT TransID FROM hostAnulaciones WHERE TransID = ?", {numero})
                   .isEmpty();
  for (const auto& v : vueltoDe(c, numero))
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
  importes(c, numero, d);
  d.igtf = mov.montoIGTF;
  d.total = mov.Creditos > mov.Debitos ? mov.Creditos : mov.Debitos;
  d.conEfectivo = d.conEfectivo || mov.detallesEfectivo()->Count() > 0;
  if (d.tipo != "venta" && mov.Descripcion != kTituloDevolucion &&
      mov.Descripcion != kTituloEntrada)
    d.motivo = mov.Descripcion;
  aprobaciones(c, numero, d);
  return d;
}

}  // namespace

std::string nombreEmpresa(Contexto& c) {
  return encabezadoEmpresa(empresaDe(*c.db));
}

int columnasRecibo(Contexto& c) {
  const auto ancho = c.args.entero("ancho", 1, 1000).value_or(42);
  if (!anchoValido(static_cast<int>(ancho)))
    throw ErrorUso("--ancho es 32 (papel de 58 mm), 42 o 48 (papel de 80 mm)");
  return static_cast<int>(ancho);
}

namespace {

void aImpresora(const std::string& ruta, const std::string& bytes) {
  std::ofstream salida(ruta, std::ios::binary | std::ios::app);
  salida << bytes;
  salida.flush();
  if (!salida)
    throw Rechazo("No se pudo escribir en la impresora " + ruta);
}

// The receipt on a page as wide as the roll (58 or 80 mm) and as long as
// it is, in a monospaced font sized so that the columns fill the width.
void aPdf(const std::vector<LineaRecibo>& lineas, int ancho, const std::string& archivo) {
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

}  // namespace

int recibo(Contexto& c) {
  const std::int32_t numero = numeroNombrado(c);
  const int ancho = columnasRecibo(c);
  const DatosRecibo d = datosRecibo(c, numero);
  const auto lineas = lineasRecibo(d, ancho);
  const auto impresora = c.args.valor("impresora");
  const auto pdf = c.args.valor("pdf");
  if (impresora)
    aImpresora(*impresora, escposRecibo(lineas, d.conEfectivo));
  if (pdf)
    aPdf(lineas, ancho, *pdf);
  if (c.args.bandera("json"))
    c.out << jsonRecibo(lineas);
  else if (!impresora && !pdf)
    c.out << textoRecibo(lineas);
  return kExito;
}

void imprimirGuardado(Contexto& c, std::int32_t numero) {
  try {
    const int ancho = columnasRecibo(c);
    const DatosRecibo d = datosRecibo(c, numero);
    const auto lineas = lineasRecibo(d, ancho);
    if (const auto impresora = c.args.valor("impresora"))
      aImpresora(*impresora, escposRecibo(lineas, d.conEfectivo));
    else
      c.out << textoRecibo(lineas);
  } catch (const std::exception& e) {
    std::cerr << "Movimiento " << numero << " guardado; el recibo no se imprimió: " << e.what()
              << std::endl;
  }
}

}  // namespace caja::app
