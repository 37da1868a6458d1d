#include "app/Salida.h"

#include <cstdio>
#include <iomanip>

#include "base/Formato.h"
#include "base/Texto.h"

namespace caja::app {

namespace {

std::string monto(Currency c) {
  return Format(Variant(c), kFormatoMonto);
}
// Pads to `ancho` characters, counting UTF-8 sequences as one.
std::string columna(const std::string& texto, std::size_t ancho) {
  const std::size_t n = largoUtf8(texto);
  return texto + std::string(ancho > n ? ancho - n : 0, ' ');
}

std::string numero(Currency c) {
  return c.toMachineText();
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

}  // namespace

std::string json(const std::string& texto) {
  std::string s = "\"";
  for (unsigned char c : texto) {
    if (c == '"' || c == '\\') {
      s += '\\';
      s += static_cast<char>(c);
    } else if (c < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04x", c);
      s += buf;
    } else {
      s += static_cast<char>(c);
    }
  }
  return s + "\"";
}

void Salida::movimiento(CVarelta& mov) {
  auto lineas = mov.detalles();
  const std::pair<const char*, Currency> totales[] = {
      {"Efectivo", mov.Efectivo()},    {"TCVisa", mov.TCVisa()},
      {"TCMaster", mov.TCMaster()},    {"TCAmex", mov.TCAmex()},
      {"Cheques", mov.Cheques()},      {"OtrasTC", mov.OtrasTC()},
      {"TDebito", mov.TDebito()},      {"OtrosMedios", mov.OtrosMedios()},
      {"EfectivoME", mov.EfectivoME()}};
  auto conceptos = mov.Conceptos();
  if (json_) {
    out_ << "{\"numero\":" << mov.Numero() << ",\"fecha\":" << json(mov.fecha.toString())
         << ",\"sesion\":" << mov.Sesion << ",\"operador\":" << json(mov.Operador)
         << ",\"documento\":" << json(mov.TipoDocRel + ":" + std::to_string(mov.NumeroDocRel))
         << ",\"debitos\":" << numero(mov.Debitos) << ",\"creditos\":" << numero(mov.Creditos)
         << ",\"igtf\":" << numero(mov.montoIGTF) << ",\"tipoCambio\":" << mov.tipoCambio
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
    out_ << "]}\n";
    return;
  }
  out_ << "Movimiento " << mov.Numero() << "  " << mov.fecha.toString() << "  sesión " << mov.Sesion
       << "  operador " << mov.Operador << "\n"
       << "Documento " << mov.TipoDocRel << " " << mov.NumeroDocRel << "  débitos "
       << monto(mov.Debitos) << "  créditos " << monto(mov.Creditos) << "  IGTF "
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
}

void Salida::saldo(SaldoCaja& saldo) {
  if (json_) {
    out_ << "{\"maquina\":" << saldo.idCaja << ",\"medios\":[";
    bool primero = true;
    for (const auto& d : *saldo.detalles) {
      out_ << (primero ? "" : ",") << "{\"medio\":" << json(d->codigoMedio)
           << ",\"valorMN\":" << numero(d->valorMN)
           << ",\"valorNominal\":" << numero(d->valorNominal)
           << ",\"tipoCambio\":" << saldo.tipoCambio(d->codigoMedio) << "}";
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
           << ",\"factor\":" << m.FactorCambio() << ",\"posicion\":" << m.posicion << "}";
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

}  // namespace caja::app
