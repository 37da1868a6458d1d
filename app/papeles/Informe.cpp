#include "app/papeles/Informe.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QLegend>
#include <QStackedBarSeries>
#include <QValueAxis>
#include <cmath>
#include <map>
#include <set>

#include "app/datos/Json.h"
#include "app/papeles/DocumentoPdf.h"
#include "app/papeles/Impresos.h"
#include "app/papeles/Recibo.h"
#include "caja/base/Conversiones.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

QString q(const std::string& texto) {
  return QString::fromStdString(texto);
}

std::unique_ptr<QChart> graficoDe(QAbstractBarSeries* serie, const QStringList& categorias,
                                  const std::string& titulo) {
  auto g = std::make_unique<QChart>();
  g->setAnimationOptions(QChart::NoAnimation);
  g->setTitle(q(titulo));
  g->addSeries(serie);
  auto* x = new QBarCategoryAxis;
  x->append(categorias);
  g->addAxis(x, Qt::AlignBottom);
  serie->attachAxis(x);
  auto* y = new QValueAxis;
  y->setLabelFormat("%.0f");
  g->addAxis(y, Qt::AlignLeft);
  serie->attachAxis(y);
  // A chart with nothing in it still has a scale to show.
  if (y->min() == y->max() || std::isnan(y->min()) || std::isnan(y->max()))
    y->setRange(0, 1);
  y->applyNiceNumbers();
  g->legend()->setAlignment(Qt::AlignBottom);
  return g;
}

// Expected against counted per method, in each method's currency.
std::unique_ptr<QChart> barrasCierre(const std::vector<LineaCierre>& lineas) {
  auto* esperado = new QBarSet("Esperado");
  auto* contado = new QBarSet("Contado");
  QStringList medios;
  for (const auto& l : lineas) {
    *esperado << l.esperadoNominal.toDouble();
    *contado << l.contado.toDouble();
    medios << q(l.medio);
  }
  auto* serie = new QBarSeries;
  serie->append(esperado);
  serie->append(contado);
  return graficoDe(serie, medios, "Esperado y contado por medio, en su moneda");
}

std::string dia(Fecha fecha) {
  return fecha.date().toString();
}

// The movements' part: sales' lines per method, and per movement what it
// was; voided movements count as voids alone. Added here rather than by the
// database so that no sum ever leaves Currency.
void movimientosDelMes(HostSql& db, Mes& mes) {
  for (const auto& m : movimientosEntre(db, mes.desde, mes.hasta, mes.maquina)) {
    Dia& d = mes.dias[dia(m.fecha)];
    const std::string tipo = tipoDe(m.clasificacion);
    if (m.anulado)
      d.anulaciones += m.debitos - m.creditos;
    else if (tipo == "devolucion")
      d.devoluciones += m.creditos;
    else if (tipo == "salida")
      d.salidas += m.creditos;
    else if (tipo == "venta")
      d.igtf += m.igtf;
  }
  for (const auto& l : lineasDeVentasEntre(db, mes.desde, mes.hasta, mes.maquina)) {
    mes.medios.insert(l.medio);
    mes.dias[dia(l.fecha)].entradas[l.medio] += l.monto;
  }
}

// The closings' differences, each valued in national currency at its rate.
void cierresDelMes(HostSql& db, Mes& mes) {
  for (const auto& c : diferenciasEntre(db, mes.desde, mes.hasta, mes.maquina))
    mes.dias[dia(c.fecha)].diferencias += CCur(c.diferencia.toDouble() * c.tipoCambio);
}

}  // namespace

Mes mesDe(HostSql& db, Fecha desde, Fecha hasta, std::optional<std::int32_t> maquina) {
  Mes mes;
  mes.desde = desde;
  mes.hasta = hasta;
  mes.maquina = maquina;
  for (Fecha f = mes.desde; !(mes.hasta < f); f = f + Fecha(1.0))
    mes.dias[f.date().toString()];
  movimientosDelMes(db, mes);
  cierresDelMes(db, mes);
  for (const auto& [fecha, d] : mes.dias) {
    for (const auto& [medio, monto] : d.entradas)
      mes.total.entradas[medio] += monto;
    mes.total.devoluciones += d.devoluciones;
    mes.total.anulaciones += d.anulaciones;
    mes.total.salidas += d.salidas;
    mes.total.igtf += d.igtf;
    mes.total.diferencias += d.diferencias;
  }
  return mes;
}

namespace {

// A day's figures in the order of the columns: each method, then the rest.
std::vector<std::string> cifras(const Mes& mes, const Dia& d) {
  std::vector<std::string> fila;
  for (const auto& medio : mes.medios) {
    const auto it = d.entradas.find(medio);
    fila.push_back(montoImpreso(it == d.entradas.end() ? Currency{} : it->second));
  }
  for (Currency c : {d.devoluciones, d.anulaciones, d.salidas, d.igtf, d.diferencias})
    fila.push_back(montoImpreso(c));
  return fila;
}

std::vector<std::string> columnasDe(const Mes& mes) {
  std::vector<std::string> columnas(mes.medios.begin(), mes.medios.end());
  for (const char* c : {"devoluciones", "anulaciones", "salidas", "igtf", "diferencias"})
    columnas.push_back(c);
  return columnas;
}

std::unique_ptr<QChart> barrasDelMes(const Mes& mes) {
  auto* serie = new QStackedBarSeries;
  for (const auto& medio : mes.medios) {
    auto* barras = new QBarSet(q(medio));
    for (const auto& [fecha, d] : mes.dias) {
      const auto it = d.entradas.find(medio);
      *barras << (it == d.entradas.end() ? 0.0 : it->second.toDouble());
    }
    serie->append(barras);
  }
  QStringList dias;
  for (const auto& [fecha, d] : mes.dias)
    dias << q(fecha.substr(8));
  return graficoDe(serie, dias, "Ventas por día y medio (moneda nacional)");
}

}  // namespace

void csvDelMes(std::ostream& out, const Mes& mes) {
  out << "fecha";
  for (const auto& col : columnasDe(mes))
    out << ',' << csv(col);
  out << "\r\n";
  auto fila = [&](const std::string& fecha, const Dia& d) {
    out << fecha;
    for (const auto& cifra : cifras(mes, d))
      out << ',' << cifra;
    out << "\r\n";
  };
  for (const auto& [fecha, d] : mes.dias)
    fila(fecha, d);
  fila("total", mes.total);
}

namespace {

void jsonDia(std::ostream& out, const Mes& mes, const Dia& d) {
  out << "\"entradas\":{";
  bool primero = true;
  for (const auto& medio : mes.medios) {
    const auto it = d.entradas.find(medio);
    out << (primero ? "" : ",") << json(medio) << ':'
        << (it == d.entradas.end() ? Currency{} : it->second).toMachineText();
    primero = false;
  }
  out << "},\"devoluciones\":" << d.devoluciones.toMachineText()
      << ",\"anulaciones\":" << d.anulaciones.toMachineText()
      << ",\"salidas\":" << d.salidas.toMachineText() << ",\"igtf\":" << d.igtf.toMachineText()
      << ",\"diferencias\":" << d.diferencias.toMachineText();
}

}  // namespace

void jsonDelMes(std::ostream& out, const Mes& mes) {
  out << "{\"desde\":" << json(mes.desde.date().toString())
      << ",\"hasta\":" << json(mes.hasta.date().toString())
      << ",\"maquina\":" << (mes.maquina ? std::to_string(*mes.maquina) : "null") << ",\"dias\":[";
  bool primero = true;
  for (const auto& [fecha, d] : mes.dias) {
    out << (primero ? "" : ",") << "{\"fecha\":" << json(fecha) << ',';
    jsonDia(out, mes, d);
    out << '}';
    primero = false;
  }
  out << "],\"total\":{";
  jsonDia(out, mes, mes.total);
  out << "}}\n";
}

void textoDelMes(std::ostream& out, const Mes& mes) {
  const auto columnas = columnasDe(mes);
  out << "fecha     ";
  for (const auto& col : columnas)
    out << ' ' << std::string(col.size() < 14 ? 14 - col.size() : 0, ' ') << col;
  out << '\n';
  auto fila = [&](const std::string& fecha, const Dia& d) {
    out << fecha << std::string(fecha.size() < 10 ? 10 - fecha.size() : 0, ' ');
    for (const auto& cifra : cifras(mes, d))
      out << ' ' << std::string(cifra.size() < 14 ? 14 - cifra.size() : 0, ' ') << cifra;
    out << '\n';
  };
  for (const auto& [fecha, d] : mes.dias)
    fila(fecha, d);
  fila("total", mes.total);
}

void pdfDelMes(HostSql& db, const Mes& mes, const std::string& archivo) {
  DocumentoPdf doc(archivo, "Informe");
  doc.titulo("Informe del " + mes.desde.date().toString() + " al " + mes.hasta.date().toString());
  doc.parrafo(nombreEmpresa(db) + (mes.maquina ? " · máquina " + std::to_string(*mes.maquina)
                                               : " · todas las máquinas"));
  doc.grafico(barrasDelMes(mes), 90);
  std::vector<DocumentoPdf::Columna> columnas{{"Fecha", false}};
  for (const auto& col : columnasDe(mes))
    columnas.push_back({col});
  std::vector<std::vector<std::string>> filas;
  auto fila = [&](const std::string& fecha, const Dia& d) {
    filas.push_back({fecha});
    for (const auto& cifra : cifras(mes, d))
      filas.back().push_back(cifra);
  };
  for (const auto& [fecha, d] : mes.dias)
    fila(fecha, d);
  fila("Total", mes.total);
  doc.tabla(columnas, filas);
}

std::unique_ptr<QChart> graficoDelMes(const Mes& mes) {
  return barrasDelMes(mes);
}

void pngDelMes(const Mes& mes, int ancho, int alto, const std::string& archivo) {
  guardarPng(barrasDelMes(mes), ancho, alto, archivo);
}

void pdfCierre(HostSql& db, const Cierre& k, const std::string& archivo) {
  DocumentoPdf doc(archivo, k.id ? "Cierre de caja" : "Arqueo parcial");
  doc.titulo(k.id ? "Cierre de caja " + std::to_string(k.id) : "Arqueo parcial, no registrado");
  if (const std::string nombre = nombreEmpresa(db); !nombre.empty())
    doc.parrafo(nombre);
  doc.parrafo("Máquina " + std::to_string(k.maquina) + " · " + k.fecha.toIsoText());
  doc.parrafo("Contó: " + k.operador);
  doc.parrafo(k.aprobador.empty() ? "Sin diferencia que autorizar" : "Autorizó: " + k.aprobador);
  doc.subtitulo("Por medio");
  std::vector<std::vector<std::string>> filas;
  for (const auto& l : k.lineas)
    filas.push_back({l.medio, textoDeTasa(l.tipoCambio), montoImpreso(l.esperadoMN),
                     montoImpreso(l.esperadoNominal), montoImpreso(l.contado),
                     montoImpreso(l.diferencia)});
  doc.tabla(
      {{"Medio", false}, {"Tasa"}, {"Esperado MN"}, {"Esperado"}, {"Contado"}, {"Diferencia"}},
      filas);
  doc.grafico(barrasCierre(k.lineas), 70);
  if (!k.denominaciones.empty()) {
    doc.subtitulo("Lo contado por denominación");
    filas.clear();
    for (const auto& d : k.denominaciones)
      filas.push_back({d.medio, montoImpreso(d.valor), std::to_string(d.cantidad),
                       montoImpreso(d.valor * d.cantidad)});
    doc.tabla({{"Medio", false}, {"Valor"}, {"Cantidad"}, {"Total"}}, filas);
  }
  if (!k.porTipo.empty()) {
    doc.subtitulo("Lo esperado por tipo de movimiento y medio (sin los anulados)");
    filas.clear();
    for (const auto& t : k.porTipo)
      filas.push_back(
          {t.tipo + " " + t.medio, montoImpreso(t.montoMN), montoImpreso(t.montoNominal)});
    doc.tabla({{"Tipo y medio", false}, {"Moneda nacional"}, {"En su moneda"}}, filas);
  }
  doc.firmas(
      {"Contó: " + k.operador, k.aprobador.empty() ? "Supervisor" : "Autorizó: " + k.aprobador});
}

}  // namespace caja::app
