#include "app/linea/Salida.h"

#include "app/datos/Carpeta.h"

#include <QString>
#include <charconv>
#include <cstdio>
#include <iomanip>

#include "caja/base/Formato.h"
#include "caja/base/Texto.h"

namespace caja::app {

namespace {

std::string monto(Currency c) {
  return Format(Variant(c), kFormatoMonto);
}
// A kind of movement or an act of the trail as people read it: the
// machine's words ("devolucion", "anulacion", "catalogo") are kept without
// accents in the database, JSON and CSV, where programs read them.
std::string paraLeer(const std::string& palabra) {
  static const std::pair<const char*, const char*> kAcentos[] = {
      {"devolucion", "devolución"}, {"anulacion", "anulación"}, {"catalogo", "catálogo"}};
  for (const auto& [sin, con] : kAcentos)
    if (palabra.rfind(sin, 0) == 0)
      return con + palabra.substr(std::string(sin).size());
  return palabra;
}
// Pads to `ancho` characters, counting UTF-8 sequences as one.
std::string columna(const std::string& texto, std::size_t ancho) {
  const std::size_t n = largoUtf8(texto);
  return texto + std::string(ancho > n ? ancho - n : 0, ' ');
}

// A JSON array of strings.
std::string jsonLista(const std::vector<std::string>& textos) {
  std::string texto = "[";
  for (std::size_t i = 0; i < textos.size(); ++i)
    texto += (i ? "," : "") + json(textos[i]);
  return texto + "]";
}

std::string numero(Currency c) {
  return c.toMachineText();
}

std::string numero(double d) {
  return textoDeTasa(d);
}

std::string lineasJson(Collection<CDetalleIngreso>& lineas) {
  std::string s = "[";
  for (const auto& d : lineas) {
    if (s.size() > 1)
      s += ",";
    s += "{\"id\":" + std::to_string(d->Id) + ",\"medio\":" + json(d->medio) +
         ",\"monto\":" + numero(d->Monto) + ",\"montoNominal\":" + numero(d->montoNominal) +
         ",\"emisor\":" + json(d->CodigoEmisor) + ",\"documento\":" + json(d->NumeroDocumento) +
         "}";
  }
  return s + "]";
}

void lineasTexto(std::ostream& out, Collection<CDetalleIngreso>& lineas) {
  for (const auto& d : lineas)
    out << "  " << std::left << std::setw(6) << d->medio << std::right << std::setw(24)
        << monto(d->Monto) << std::setw(24) << monto(d->montoNominal) << '\n';
}

// Totals per method, with their kind when they have one.
std::string totalesJson(const std::vector<MontoMedio>& totales) {
  std::string s = "[";
  for (const auto& t : totales) {
    if (s.size() > 1)
      s += ",";
    s += "{" + (t.tipo.empty() ? "" : "\"tipo\":" + json(t.tipo) + ",") +
         "\"medio\":" + json(t.medio) + ",\"montoMN\":" + numero(t.montoMN) +
         ",\"montoNominal\":" + numero(t.montoNominal) + "}";
  }
  return s + "]";
}

void totalesTexto(std::ostream& out, const std::vector<MontoMedio>& totales) {
  for (const auto& t : totales)
    out << "  " << (t.tipo.empty() ? "" : columna(paraLeer(t.tipo), 12)) << columna(t.medio, 6)
        << std::right << std::setw(24) << monto(t.montoMN) << std::setw(24) << monto(t.montoNominal)
        << '\n';
}

}  // namespace

void Salida::movimiento(CVarelta& mov, const std::vector<MontoMedio>& vuelto, NumeroVisible n) {
  auto lineas = mov.detalles();
  const std::pair<const char*, Currency> totales[] = {
      {"Efectivo", mov.Efectivo()},    {"TCVisa", mov.TCVisa()},
      {"TCMaster", mov.TCMaster()},    {"TCAmex", mov.TCAmex()},
      {"Cheques", mov.Cheques()},      {"OtrasTC", mov.OtrasTC()},
      {"TDebito", mov.TDebito()},      {"OtrosMedios", mov.OtrosMedios()},
      {"EfectivoME", mov.EfectivoME()}};
  auto conceptos = mov.Conceptos();
  if (json_) {
    out_ << "{\"numero\":" << n.numero << ",\"local\":" << (n.local ? "true" : "false")
         << ",\"fecha\":" << json(mov.fecha.toString()) << ",\"sesion\":" << mov.Sesion
         << ",\"operador\":" << json(mov.Operador) << ",\"documento\":"
         << (mov.TipoDocRel.empty() ? "null"
                                    : json(mov.TipoDocRel + ":" + std::to_string(mov.NumeroDocRel)))
         << ",\"debitos\":" << numero(mov.Debitos) << ",\"creditos\":" << numero(mov.Creditos)
         << ",\"igtf\":" << numero(mov.montoIGTF) << ",\"tipoCambio\":" << numero(mov.tipoCambio)
         << ",\"lineas\":" << lineasJson(*lineas) << ",\"totales\":{";
    for (std::size_t i = 0; i < std::size(totales); ++i)
      out_ << (i ? "," : "") << json(totales[i].first) << ":" << numero(totales[i].second);
    out_ << "},\"conceptos\":[";
    bool primero = true;
    for (const auto& c : conceptos ? *conceptos : Collection<CDocsMovCaja>{}) {
      out_ << (primero ? "" : ",") << "{\"tipo\":" << json(c->TipoDoc)
           << ",\"numero\":" << c->NumeroDoc << ",\"debitos\":" << numero(c->Debitos)
           << ",\"creditos\":" << numero(c->Creditos) << "}";
      primero = false;
    }
    out_ << "],\"vuelto\":[";
    for (std::size_t i = 0; i < vuelto.size(); ++i)
      out_ << (i ? "," : "") << "{\"medio\":" << json(vuelto[i].medio)
           << ",\"monto\":" << numero(vuelto[i].montoMN)
           << ",\"montoNominal\":" << numero(vuelto[i].montoNominal) << "}";
    out_ << "]}\n";
    return;
  }
  out_ << "Movimiento " << n.texto() << "  " << mov.fecha.toString() << "  sesión " << mov.Sesion
       << "  operador " << mov.Operador << "\n"
       << (mov.TipoDocRel.empty()
               ? "Sin documento"
               : "Documento " + mov.TipoDocRel + " " + std::to_string(mov.NumeroDocRel))
       << "  débitos " << monto(mov.Debitos) << "  créditos " << monto(mov.Creditos) << "  IGTF "
       << monto(mov.montoIGTF) << "\n"
       << "Líneas (medio, monto, nominal):\n";
  lineasTexto(out_, *lineas);
  out_ << "Totales:";
  for (const auto& [nombre, valor] : totales)
    if (!valor.isZero())
      out_ << "  " << nombre << " " << monto(valor);
  out_ << "\nConceptos:";
  if (conceptos)
    for (const auto& c : *conceptos)
      out_ << "  " << c->TipoDoc << " " << c->NumeroDoc << " (" << monto(c->Debitos) << " / "
           << monto(c->Creditos) << ")";
  out_ << "\n";
  if (vuelto.empty())
    return;
  out_ << "Vuelto (medio, monto, nominal; CREDITO: acreditado al cliente):\n";
  for (const auto& v : vuelto)
    out_ << "  " << std::left << std::setw(8) << v.medio << std::right << std::setw(22)
         << monto(v.montoMN) << std::setw(24) << monto(v.montoNominal) << '\n';
}

void Salida::saldo(SaldoCaja& saldo) {
  if (json_) {
    out_ << "{\"maquina\":" << saldo.idCaja << ",\"medios\":[";
    bool primero = true;
    for (const auto& d : *saldo.detalles) {
      out_ << (primero ? "" : ",") << "{\"medio\":" << json(d->codigoMedio)
           << ",\"valorMN\":" << numero(d->valorMN)
           << ",\"valorNominal\":" << numero(d->valorNominal)
           << ",\"tipoCambio\":" << numero(saldo.tipoCambio(d->codigoMedio)) << "}";
      primero = false;
    }
    out_ << "]}\n";
    return;
  }
  out_ << "Caja de la máquina " << saldo.idCaja << " (medio, moneda nacional, nominal, tasa):\n";
  for (const auto& d : *saldo.detalles)
    out_ << "  " << std::left << std::setw(6) << d->codigoMedio << std::right << std::setw(24)
         << monto(d->valorMN) << std::setw(24) << monto(d->valorNominal) << std::setw(12)
         << Format(Variant(saldo.tipoCambio(d->codigoMedio)), "#,##0.0000") << '\n';
}

void Salida::medios(const std::vector<std::shared_ptr<CMedioPago>>& medios) {
  if (json_) {
    out_ << "[";
    for (std::size_t i = 0; i < medios.size(); ++i) {
      const auto& m = *medios[i];
      out_ << (i ? "," : "") << "{\"codigo\":" << json(m.codigo) << ",\"titulo\":" << json(m.Titulo)
           << ",\"clase\":" << static_cast<int>(m.Clase) << ",\"atributos\":" << m.Atributos
           << ",\"factor\":" << numero(m.FactorCambio()) << ",\"posicion\":" << m.posicion << "}";
    }
    out_ << "]\n";
    return;
  }
  for (const auto& m : medios)
    out_ << columna(m->codigo, 6) << columna(m->Titulo, 22)
         << columna(CaptionsClaseIngreso().at(static_cast<std::size_t>(m->Clase) % 9), 14)
         << " atributos " << columna(std::to_string(m->Atributos), 6) << " factor "
         << m->FactorCambio() << '\n';
}

void Salida::lineas(const std::string& titulo, Collection<CDetalleIngreso>& lineas) {
  if (json_) {
    out_ << "{\"clave\":" << json(titulo) << ",\"lineas\":" << lineasJson(lineas) << "}\n";
    return;
  }
  out_ << titulo << ":\n";
  lineasTexto(out_, lineas);
}

void Salida::mensaje(const std::string& texto) {
  if (json_) {
    out_ << "{\"mensaje\":" << json(texto) << "}\n";
  } else {
    out_ << texto << '\n';
  }
}

void Salida::sesion(std::int32_t numero, std::int32_t maquina) {
  if (json_)
    out_ << "{\"sesion\":" << numero << ",\"maquina\":" << maquina << "}\n";
  else
    out_ << numero << '\n';
}

void Salida::maquina(std::int32_t numero) {
  if (json_)
    out_ << "{\"maquina\":" << numero << "}\n";
  else
    out_ << "Máquina de esta caja: " << numero << '\n';
}

void Salida::empresa(const DatosEmpresa& e) {
  if (json_) {
    out_ << "{\"nombre\":" << json(e.nombre) << ",\"rif\":" << json(e.rif)
         << ",\"direccion\":" << json(e.direccion)
         << ",\"especial\":" << (e.especial ? "true" : "false") << ",\"igtf\":" << numero(e.igtf)
         << "}\n";
    return;
  }
  out_ << "Nombre: " << e.nombre << "\nRIF: " << e.rif << "\nDirección: " << e.direccion
       << "\nContribuyente especial: " << (e.especial ? "sí" : "no") << "\nIGTF: " << numero(e.igtf)
       << " %\n";
}

void Salida::sesiones(const std::vector<SesionAbierta>& lista) {
  if (json_) {
    out_ << "[";
    for (std::size_t i = 0; i < lista.size(); ++i)
      out_ << (i ? "," : "") << "{\"sesion\":" << lista[i].sesion
           << ",\"maquina\":" << lista[i].maquina << ",\"operador\":" << json(lista[i].operador)
           << ",\"apertura\":" << json(lista[i].apertura.toIsoText()) << "}";
    out_ << "]\n";
    return;
  }
  if (lista.empty())
    out_ << "No hay sesiones abiertas\n";
  for (const auto& s : lista)
    out_ << "Sesión " << s.sesion << "  máquina " << s.maquina << "  operador " << s.operador
         << "  abierta " << s.apertura.toIsoText() << '\n';
}

void Salida::tasa(double valor) {
  if (json_)
    out_ << "{\"tasa\":" << numero(valor) << "}\n";
  else
    out_ << "Tasa de la caja: " << numero(valor) << '\n';
}

void Salida::movimientos(const std::vector<FilaMovimiento>& filas,
                         const std::vector<MontoMedio>& totales,
                         const std::vector<MontoMedio>& porTipo, Currency igtf, bool conCsv) {
  if (json_) {
    out_ << "{\"movimientos\":[";
    for (std::size_t i = 0; i < filas.size(); ++i) {
      const auto& f = filas[i];
      out_ << (i ? "," : "") << "{\"numero\":" << f.numero
           << ",\"local\":" << (f.local ? "true" : "false") << ",\"tipo\":" << json(f.tipo)
           << ",\"fecha\":" << json(f.fecha.date().toString())
           << ",\"hora\":" << json(f.hora.timeOfDay().toString()) << ",\"sesion\":" << f.sesion
           << ",\"operador\":" << json(f.operador) << ",\"documento\":" << json(f.documento)
           << ",\"debitos\":" << numero(f.debitos) << ",\"creditos\":" << numero(f.creditos)
           << ",\"igtf\":" << numero(f.igtf) << ",\"anulado\":" << (f.anulado ? "true" : "false")
           << "}";
    }
    out_ << "],\"totales\":" << totalesJson(totales) << ",\"porTipo\":" << totalesJson(porTipo)
         << ",\"igtf\":" << numero(igtf) << "}\n";
    return;
  }
  if (conCsv) {
    out_ << "numero,fecha,hora,sesion,operador,documento,debitos,creditos,igtf,anulado,tipo\r\n";
    for (const auto& f : filas)
      out_ << NumeroVisible{f.numero, f.local}.texto() << ',' << f.fecha.date().toString() << ','
           << f.hora.timeOfDay().toString() << ',' << f.sesion << ',' << csv(f.operador) << ','
           << csv(f.documento) << ',' << numero(f.debitos) << ',' << numero(f.creditos) << ','
           << numero(f.igtf) << ',' << (f.anulado ? "si" : "no") << ',' << f.tipo << "\r\n";
    out_ << "\r\nmedio,montoMN,montoNominal\r\n";
    for (const auto& t : totales)
      out_ << csv(t.medio) << ',' << numero(t.montoMN) << ',' << numero(t.montoNominal) << "\r\n";
    out_ << "IGTF," << numero(igtf) << ",\r\n";
    out_ << "\r\ntipo,medio,montoMN,montoNominal\r\n";
    for (const auto& t : porTipo)
      out_ << t.tipo << ',' << csv(t.medio) << ',' << numero(t.montoMN) << ','
           << numero(t.montoNominal) << "\r\n";
    return;
  }
  out_ << "Número  Tipo        Fecha       Hora      Sesión  Operador    Documento         Débitos"
          "        Créditos     IGTF\n";
  for (const auto& f : filas)
    out_ << columna(NumeroVisible{f.numero, f.local}.texto(), 8) << std::left
         << columna(paraLeer(f.tipo), 12) << f.fecha.date().toString() << "  "
         << f.hora.timeOfDay().toString() << "  " << std::setw(8) << f.sesion
         << columna(f.operador, 12) << columna(f.documento, 12) << std::right << std::setw(14)
         << monto(f.debitos) << std::setw(16) << monto(f.creditos) << std::setw(9) << monto(f.igtf)
         << (f.anulado ? "  ANULADO" : "") << '\n';
  out_ << "Totales por medio (moneda nacional, nominal), sin los anulados:\n";
  totalesTexto(out_, totales);
  out_ << "  " << columna("IGTF", 6) << std::setw(24) << monto(igtf) << '\n';
  out_ << "Por tipo de movimiento y medio:\n";
  totalesTexto(out_, porTipo);
}

void Salida::cierres(const std::vector<Cierre>& lista) {
  if (json_) {
    out_ << "[";
    for (std::size_t i = 0; i < lista.size(); ++i) {
      const auto& c = lista[i];
      out_ << (i ? "," : "") << "{\"cierre\":" << c.id << ",\"maquina\":" << c.maquina
           << ",\"fecha\":" << json(c.fecha.toIsoText()) << ",\"operador\":" << json(c.operador)
           << ",\"medios\":[";
      for (std::size_t j = 0; j < c.lineas.size(); ++j) {
        const auto& l = c.lineas[j];
        out_ << (j ? "," : "") << "{\"medio\":" << json(l.medio)
             << ",\"esperadoMN\":" << numero(l.esperadoMN)
             << ",\"esperadoNominal\":" << numero(l.esperadoNominal)
             << ",\"tipoCambio\":" << numero(l.tipoCambio) << ",\"contado\":" << numero(l.contado)
             << ",\"diferencia\":" << numero(l.diferencia) << "}";
      }
      out_ << "]";
      if (!c.porTipo.empty())
        out_ << ",\"porTipo\":" << totalesJson(c.porTipo);
      out_ << "}";
    }
    out_ << "]\n";
    return;
  }
  if (lista.empty())
    out_ << "No hay cierres registrados\n";
  for (const auto& c : lista) {
    out_ << (c.id ? "Cierre " + std::to_string(c.id) : std::string("Arqueo parcial, no registrado"))
         << "  máquina " << c.maquina << "  " << c.fecha.toIsoText() << "  operador " << c.operador
         << "\n"
         << "  medio    esperado (MN)   esperado (nominal)      tasa         contado      "
            "diferencia\n";
    for (const auto& l : c.lineas)
      out_ << "  " << columna(l.medio, 6) << std::right << std::setw(16) << monto(l.esperadoMN)
           << std::setw(21) << monto(l.esperadoNominal) << std::setw(10)
           << Format(Variant(l.tipoCambio), "#,##0.0000") << std::setw(16) << monto(l.contado)
           << std::setw(16) << monto(l.diferencia) << '\n';
    if (!c.porTipo.empty()) {
      out_ << "  Lo esperado por tipo de movimiento y medio, sin los anulados:\n";
      totalesTexto(out_, c.porTipo);
    }
  }
}

namespace {

std::vector<std::string> textosDe(const std::vector<Aviso>& avisos) {
  std::vector<std::string> textos;
  for (const Aviso& a : avisos)
    textos.push_back(a.texto);
  return textos;
}

std::string conflictoJson(const Conflicto& c) {
  return "{\"numero\":" + std::to_string(c.id) + ",\"fecha\":" + json(c.fecha) +
         ",\"clase\":" + json(c.clase) + ",\"local\":" + std::to_string(c.numeroLocal) +
         ",\"maquina\":" + std::to_string(c.maquina) + ",\"detalle\":" + json(c.detalle) +
         ",\"resueltoPor\":" + json(c.resueltoPor) + ",\"resueltoEl\":" + json(c.resueltoEl) + "}";
}

std::string conflictosJson(const std::vector<Conflicto>& lista) {
  std::vector<std::string> partes;
  for (const Conflicto& c : lista)
    partes.push_back(conflictoJson(c));
  std::string texto;
  for (const auto& p : partes)
    texto += (texto.empty() ? "" : ",") + p;
  return "[" + texto + "]";
}

void conflictosTexto(std::ostream& out, const std::vector<Conflicto>& lista) {
  for (const Conflicto& c : lista) {
    out << "  " << std::left << std::setw(4) << c.id << c.fecha << "  " << c.detalle;
    if (!c.resueltoPor.empty())
      out << "  (resuelto por " << c.resueltoPor << " el " << c.resueltoEl << ")";
    out << '\n';
  }
}

}  // namespace

void Salida::pendientes(const std::vector<Pendiente>& lista,
                        const std::vector<Conflicto>& sinResolver) {
  if (json_) {
    out_ << "{\"pendientes\":[";
    for (std::size_t i = 0; i < lista.size(); ++i) {
      const auto& p = lista[i];
      out_ << (i ? "," : "") << "{\"local\":" << p.numeroLocal << ",\"clave\":" << json(p.clave)
           << ",\"fecha\":" << json(p.fecha) << ",\"documento\":" << json(p.documento)
           << ",\"debitos\":" << numero(p.debitos) << ",\"creditos\":" << numero(p.creditos) << "}";
    }
    out_ << "],\"conflictos\":" << conflictosJson(sinResolver)
         << ",\"ultimoEnvio\":" << json(ultimoEnvio()) << "}\n";
    return;
  }
  if (!lista.empty())
    out_ << "Local   Fecha       Documento          Débitos        Créditos\n";
  for (const Pendiente& p : lista)
    out_ << columna(std::to_string(p.numeroLocal), 8) << columna(p.fecha, 12)
         << columna(p.documento, 12) << std::right << std::setw(14) << monto(p.debitos)
         << std::setw(16) << monto(p.creditos) << std::left << '\n';
  out_ << lista.size() << " movimientos pendientes de envío\n";
  if (!sinResolver.empty()) {
    out_ << sinResolver.size()
         << " conflictos sin resolver (caja conflictos --resolver N --autoriza SUPERVISOR):\n";
    conflictosTexto(out_, sinResolver);
  }
  if (const std::string cuando = ultimoEnvio(); !cuando.empty())
    out_ << "Último envío sin rechazos: " << cuando << '\n';
}

void Salida::conflictos(const std::vector<Conflicto>& deLaCaja,
                        const std::vector<std::string>& repetidos) {
  if (json_) {
    out_ << "{\"conflictos\":" << conflictosJson(deLaCaja)
         << ",\"documentosRepetidos\":" << jsonLista(repetidos) << "}\n";
    return;
  }
  out_ << "Conflictos de esta caja:";
  out_ << (deLaCaja.empty() ? " ninguno\n" : "\n");
  conflictosTexto(out_, deLaCaja);
  out_ << "Documentos cobrados en más de una caja:";
  out_ << (repetidos.empty() ? " ninguno\n" : "\n");
  for (const auto& r : repetidos)
    out_ << "  " << r << '\n';
}

void Salida::envio(const Envio& envio) {
  if (json_) {
    out_ << "{\"enviados\":[";
    for (std::size_t i = 0; i < envio.enviados.size(); ++i)
      out_ << (i ? "," : "") << "{\"local\":" << envio.enviados[i].first
           << ",\"servidor\":" << envio.enviados[i].second << "}";
    out_ << "],\"conflictos\":" << jsonLista(textosDe(envio.conflictos))
         << ",\"fallidos\":" << jsonLista(textosDe(envio.fallidos)) << "}\n";
    return;
  }
  for (const auto& [local, servidor] : envio.enviados)
    out_ << "Movimiento local " << local << " enviado: " << servidor << " en el servidor\n";
  out_ << envio.enviados.size() << " movimientos enviados\n";
}

void Salida::esperanEnvio(const std::vector<Pendiente>& lista,
                          const std::vector<MontoMedio>& aporte) {
  out_ << "\nEsperan envío en esta caja, y no están en estas cifras:\n";
  pendientes(lista, {});
  out_ << "Lo que suman a las cajas (medio, moneda nacional, nominal):\n";
  totalesTexto(out_, aporte);
}

void Salida::nombres(const std::vector<std::string>& lista) {
  if (!json_) {
    for (const auto& n : lista)
      out_ << n << '\n';
    return;
  }
  out_ << jsonLista(lista) << '\n';
}

void Salida::auditoria(const std::vector<Asiento>& filas, bool conCsv) {
  const auto movimiento = [](const Asiento& a) {
    return a.movimiento ? std::to_string(*a.movimiento) : std::string();
  };
  if (json_) {
    out_ << "[";
    for (std::size_t i = 0; i < filas.size(); ++i) {
      const auto& a = filas[i];
      out_ << (i ? "," : "") << "{\"fila\":" << a.id << ",\"fecha\":" << json(a.fecha)
           << ",\"maquina\":" << a.maquina << ",\"cajero\":" << json(a.cajero)
           << ",\"aprobador\":" << json(a.aprobador) << ",\"accion\":" << json(a.accion)
           << ",\"detalle\":" << json(a.detalle)
           << ",\"movimiento\":" << (a.movimiento ? movimiento(a) : "null")
           << ",\"monto\":" << numero(a.monto) << ",\"hashPrevio\":" << json(a.hashPrevio)
           << ",\"hash\":" << json(a.hash) << "}";
    }
    out_ << "]\n";
    return;
  }
  if (conCsv) {
    out_ << "fila,fecha,maquina,cajero,aprobador,accion,detalle,movimiento,monto,hashPrevio,"
            "hash\r\n";
    for (const auto& a : filas)
      out_ << a.id << ',' << a.fecha << ',' << a.maquina << ',' << csv(a.cajero) << ','
           << csv(a.aprobador) << ',' << csv(a.accion) << ',' << csv(a.detalle) << ','
           << movimiento(a) << ',' << numero(a.monto) << ',' << a.hashPrevio << ',' << a.hash
           << "\r\n";
    return;
  }
  if (filas.empty())
    out_ << "La auditoría no tiene filas\n";
  for (const auto& a : filas)
    out_ << std::left << std::setw(6) << a.id << a.fecha << "  máq. " << std::setw(4) << a.maquina
         << columna(paraLeer(a.accion), 20) << columna(a.cajero, 12) << columna(a.aprobador, 12)
         << columna(movimiento(a), 8) << std::right << std::setw(16) << monto(a.monto) << "  "
         << a.detalle << '\n';
}

}  // namespace caja::app
