#include "app/papeles/Informe.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QLegend>
#include <QStackedBarSeries>
#include <QValueAxis>
#include <map>
#include <set>

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

// One day of the month.
struct Dia {
  std::map<std::string, Currency> entradas;  // sales per method, national currency
  Currency devoluciones, anulaciones, salidas, igtf, diferencias;
};

struct Mes {
  Fecha desde, hasta;
  std::optional<std::int32_t> maquina;
  std::set<std::string> medios;
  std::map<std::string, Dia> dias;  // by "yyyy-mm-dd", every day of the range
  Dia total;
};

std::string dia(const Variant& fecha) {
  return NzFecha(fecha).date().toString();
}

// The movements' part: sales' lines per method, and per movement what it
// was; voided movements count as voids alone. Added here rather than by the
// database so that no sum ever leaves Currency.
void movimientosDelMes(Contexto& c, Mes& mes, const std::string& condicion, const Argumentos& a) {
  auto rs = c.db->openrecordset(
      "SELECT M.Fecha, M.Clasificacion, M.Debitos, M.Creditos, M.MontoIGTF, A.TransID AS Anulado "
      "FROM MovimientosCaja M LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID WHERE " +
          condicion,
      a);
  for (; !rs->Eof(); rs->MoveNext()) {
    Dia& d = mes.dias[dia(rs->Fields("Fecha"))];
    const std::string tipo = tipoDe(NzTexto(rs->Fields("Clasificacion")));
    if (!rs->Fields("Anulado").isNull())
      d.anulaciones += NzMoneda(rs->Fields("Debitos")) - NzMoneda(rs->Fields("Creditos"));
    else if (tipo == "devolucion")
      d.devoluciones += NzMoneda(rs->Fields("Creditos"));
    else if (tipo == "salida")
      d.salidas += NzMoneda(rs->Fields("Creditos"));
    else if (tipo == "venta")
      d.igtf += NzMoneda(rs->Fields("MontoIGTF"));
  }
  auto lineas = c.db->openrecordset(
      "SELECT M.Fecha, D.Medio, D.Monto FROM DetallesVarelta D INNER JOIN MovimientosCaja M ON "
      "M.TransID = D.TransID LEFT JOIN hostAnulaciones A ON A.TransID = M.TransID WHERE "
      "A.TransID IS NULL AND COALESCE(M.Clasificacion, '') = '' AND " +
          condicion,
      a);
  for (; !lineas->Eof(); lineas->MoveNext()) {
    const std::string medio = NzTexto(lineas->Fields("Medio"));
    mes.medios.insert(medio);
    mes.dias[dia(lineas->Fields("Fecha"))].entradas[medio] += NzMoneda(lineas->Fields("Monto"));
  }
}

// The closings' differences, each valued in national currency at its rate.
void cierresDelMes(Contexto& c, Mes& mes) {
  std::string condicion = "C.Fecha >= ? AND C.Fecha < ?";
  Argumentos a{mes.desde, mes.hasta + Fecha(1.0)};
  if (mes.maquina) {
    condicion += " AND C.MachineID = ?";
    a.emplace_back(*mes.maquina);
  }
  auto rs = c.db->openrecordset(
      "SELECT C.Fecha, D.diferencia, D.tipoCambio FROM hostCierreDetalles D INNER JOIN "
      "hostCierres C ON C.id = D.idCierre WHERE " +
          condicion,
      a);
  for (; !rs->Eof(); rs->MoveNext())
    mes.dias[dia(rs->Fields("Fecha"))].diferencias +=
        CCur(NzMoneda(rs->Fields("diferencia")).toDouble() * NzDouble(rs->Fields("tipoCambio")));
}

Mes mesDe(Contexto& c) {
  Mes mes;
  const auto desde = c.args.fecha("desde"), hasta = c.args.fecha("hasta");
  if (!desde || !hasta)
    throw ErrorUso("Indique --desde AAAA-MM-DD y --hasta AAAA-MM-DD");
  if (*hasta < *desde || (*hasta - *desde).serial() > 400)
    throw ErrorUso("--hasta va de --desde en adelante, a lo sumo 400 días");
  mes.desde = *desde;
  mes.hasta = *hasta;
  if (const auto m = c.args.entero("maquina", 1, 32767))
    mes.maquina = static_cast<std::int32_t>(*m);
  for (Fecha f = mes.desde; !(mes.hasta < f); f = f + Fecha(1.0))
    mes.dias[f.date().toString()];
  std::string condicion = "M.Fecha >= ? AND M.Fecha < ?";
  Argumentos a{mes.desde, mes.hasta + Fecha(1.0)};
  if (mes.maquina) {
    condicion += " AND M.machineID = ?";
    a.emplace_back(*mes.maquina);
  }
  movimientosDelMes(c, mes, condicion, a);
  cierresDelMes(c, mes);
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

void pdfDelMes(Contexto& c, const Mes& mes, const std::string& archivo) {
  DocumentoPdf doc(archivo, "Informe");
  doc.titulo("Informe del " + mes.desde.date().toString() + " al " + mes.hasta.date().toString());
  doc.parrafo(nombreEmpresa(c) + (mes.maquina ? " · máquina " + std::to_string(*mes.maquina)
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

std::pair<int, int> tamanoDe(Contexto& c) {
  const std::string texto = c.args.valor("tamano", "1200x700");
  const auto x = texto.find('x');
  if (x == std::string::npos)
    throw ErrorUso("Tamaño no válido: " + texto + " (use ANCHOxALTO, en píxeles)");
  return {static_cast<int>(enteroDe(texto.substr(0, x), "--tamano", 100, 8000)),
          static_cast<int>(enteroDe(texto.substr(x + 1), "--tamano", 100, 8000))};
}

}  // namespace

void pdfCierre(Contexto& c, const Cierre& k, const std::string& archivo) {
  DocumentoPdf doc(archivo, k.id ? "Cierre de caja" : "Arqueo parcial");
  doc.titulo(k.id ? "Cierre de caja " + std::to_string(k.id) : "Arqueo parcial, no registrado");
  if (const std::string nombre = nombreEmpresa(c); !nombre.empty())
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

int informe(Contexto& c) {
  const Mes mes = mesDe(c);
  if (const auto pdf = c.args.valor("pdf"))
    pdfDelMes(c, mes, *pdf);
  if (const auto png = c.args.valor("png")) {
    const auto [ancho, alto] = tamanoDe(c);
    guardarPng(barrasDelMes(mes), ancho, alto, *png);
  }
  if (c.args.bandera("json"))
    jsonDelMes(c.out, mes);
  else if (c.args.bandera("csv"))
    csvDelMes(c.out, mes);
  else if (!c.args.valor("pdf") && !c.args.valor("png"))
    textoDelMes(c.out, mes);
  return kExito;
}

}  // namespace caja::app
