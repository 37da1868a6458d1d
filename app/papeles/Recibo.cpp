#include "app/papeles/Recibo.h"

#include <cstdint>
#include <initializer_list>

#include "caja/base/Texto.h"

namespace caja::app {

namespace {

// The first `n` characters (not bytes) of a UTF-8 text, and the rest.
std::pair<std::string, std::string> cortar(const std::string& texto, std::size_t n) {
  std::size_t i = 0;
  for (std::size_t caracteres = 0; i < texto.size() && caracteres < n; ++caracteres)
    do
      ++i;
    while (i < texto.size() && (static_cast<unsigned char>(texto[i]) & 0xC0) == 0x80);
  return {texto.substr(0, i), texto.substr(i)};
}

// The text in lines of at most `n` characters, broken at spaces where it can.
std::vector<std::string> partir(std::string texto, std::size_t n) {
  std::vector<std::string> lineas;
  while (largoUtf8(texto) > n) {
    auto [linea, resto] = cortar(texto, n);
    if (const auto espacio = linea.rfind(' '); espacio != std::string::npos && espacio > 0) {
      resto = linea.substr(espacio + 1) + resto;
      linea.resize(espacio);
    }
    lineas.push_back(linea);
    texto = resto;
  }
  lineas.push_back(texto);
  return lineas;
}

class Papel {
 public:
  explicit Papel(std::size_t columnas) : n_(columnas) {}

  // Centred, bold when `negrita`.
  void titulo(const std::string& texto, bool negrita = true) {
    for (const auto& parte : partir(texto, n_))
      lineas_.push_back({std::string((n_ - largoUtf8(parte)) / 2, ' ') + parte, negrita});
  }
  void texto(const std::string& texto) {
    for (const auto& parte : partir(texto, n_))
      lineas_.push_back({parte});
  }
  // A caption on the left and an amount on the right; the caption on lines
  // of its own when both do not fit.
  void importe(const std::string& leyenda, Currency c) {
    const std::string cifra = montoImpreso(c);
    if (largoUtf8(leyenda) + 1 + cifra.size() > n_) {
      texto(leyenda);
      lineas_.push_back({std::string(n_ - std::min(n_, cifra.size()), ' ') + cifra});
      return;
    }
    lineas_.push_back({leyenda + std::string(n_ - largoUtf8(leyenda) - cifra.size(), ' ') + cifra});
  }
  void raya() { lineas_.push_back({std::string(n_, '-')}); }
  std::vector<LineaRecibo> lineas() && { return std::move(lineas_); }

 private:
  std::size_t n_;
  std::vector<LineaRecibo> lineas_;
};

// What the paper calls each kind of movement, and its total; a sale last.
struct Clase {
  const char* tipo;
  const char* titulo;
  const char* total;
};
constexpr Clase kClases[] = {{"devolucion", "DEVOLUCIÓN", "Total devuelto"},
                             {"entrada", "ENTRADA DE EFECTIVO", "Total ingresado"},
                             {"salida", "SALIDA DE EFECTIVO", "Total retirado"},
                             {"venta", "RECIBO DE PAGO", "Total"}};

const Clase& claseDe(const std::string& tipo) {
  for (const Clase& c : kClases)
    if (tipo == c.tipo)
      return c;
  return kClases[std::size(kClases) - 1];
}

void pagos(Papel& p, const DatosRecibo& d) {
  for (const auto& pago : d.pagos) {
    p.importe(pago.medio, pago.monto);
    if (pago.extranjero)
      p.texto("  " + pago.codigo + " " + montoImpreso(pago.montoNominal) + " x " + pago.tasa);
    if (!pago.cuenta.empty())
      p.texto("  Cuenta " + enmascarar(pago.cuenta));
    if (!pago.documento.empty())
      p.texto("  Número " + enmascarar(pago.documento));
  }
}

void vuelto(Papel& p, const DatosRecibo& d) {
  for (const auto& v : d.vuelto) {
    if (v.codigo == "CREDITO") {
      p.importe("Acreditado al cliente", v.monto);
      continue;
    }
    p.importe("Vuelto " + v.medio, v.monto);
    if (v.montoNominal != v.monto)
      p.texto("  " + v.codigo + " " + montoImpreso(v.montoNominal));
  }
}

// What the total is made of: base, tax, credit and IGTF.
void importes(Papel& p, const DatosRecibo& d) {
  if (d.base)
    p.importe("Base imponible", *d.base);
  if (d.iva)
    p.importe("IVA", *d.iva);
  if (d.credito && !d.credito->isZero())
    p.importe("Crédito", -*d.credito);
  if (!d.igtf.isZero())
    p.importe("IGTF", d.igtf);
  p.importe(claseDe(d.tipo).total, d.total);
}

void anulacion(Papel& p, const DatosRecibo& d) {
  p.raya();
  if (!d.anuladoPor.empty())
    p.texto("Anuló: " + d.anuladoPor);
  if (!d.aprobadorAnulacion.empty())
    p.texto("Autorizó la anulación: " + d.aprobadorAnulacion);
  if (!d.motivoAnulacion.empty())
    p.texto("Motivo de la anulación: " + d.motivoAnulacion);
}

// A UTF-8 code point at `i`, which moves past it; 0xFFFD for a broken one.
std::uint32_t puntoDeCodigo(const std::string& s, std::size_t& i) {
  const auto b = static_cast<unsigned char>(s[i++]);
  const int extra = b < 0x80 ? 0 : b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : -1;
  if (extra < 0)
    return 0xFFFD;
  std::uint32_t cp = extra == 0 ? b : b & (0x3F >> extra);
  for (int k = 0; k < extra; ++k) {
    if (i >= s.size() || (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80)
      return 0xFFFD;
    cp = (cp << 6) | (static_cast<unsigned char>(s[i++]) & 0x3F);
  }
  return cp;
}

// Code page 850, what thermal printers take for Spanish: the letters of the
// language and its signs; anything else prints as '?'.
char cp850(std::uint32_t cp) {
  static const std::pair<std::uint32_t, unsigned char> kTabla[] = {
      {0xE1, 0xA0}, {0xE9, 0x82}, {0xED, 0xA1}, {0xF3, 0xA2}, {0xFA, 0xA3}, {0xF1, 0xA4},
      {0xD1, 0xA5}, {0xFC, 0x81}, {0xDC, 0x9A}, {0xC1, 0xB5}, {0xC9, 0x90}, {0xCD, 0xD6},
      {0xD3, 0xE0}, {0xDA, 0xE9}, {0xBF, 0xA8}, {0xA1, 0xAD}, {0xBA, 0xA7}, {0xAA, 0xA6}};
  if (cp >= 0x20 && cp < 0x7F)
    return static_cast<char>(cp);
  for (const auto& [unicode, byte] : kTabla)
    if (unicode == cp)
      return static_cast<char>(byte);
  return '?';
}

std::string bytes(std::initializer_list<unsigned char> lista) {
  return std::string(lista.begin(), lista.end());
}

}  // namespace

std::string montoImpreso(Currency c) {
  std::string texto = c.toMachineText();
  const auto punto = texto.find('.');
  if (punto == std::string::npos)
    return texto + ".00";
  return texto.size() - punto == 2 ? texto + "0" : texto;
}

bool anchoValido(int columnas) {
  return columnas == 32 || columnas == 42 || columnas == 48;
}

std::string enmascarar(const std::string& numero) {
  const std::size_t n = largoUtf8(numero);
  if (n <= 4)
    return numero;
  return std::string(n - 4, '*') + cortar(numero, n - 4).second;
}

std::vector<LineaRecibo> lineasRecibo(const DatosRecibo& d, int columnas) {
  Papel p(static_cast<std::size_t>(columnas));
  if (!d.empresa.empty())
    p.titulo(d.empresa);
  if (!d.rif.empty())
    p.titulo("RIF " + d.rif, false);
  if (!d.direccion.empty())
    p.titulo(d.direccion, false);
  p.titulo(claseDe(d.tipo).titulo);
  if (d.anulado)
    p.titulo("*** ANULADO ***");
  p.texto((d.local ? "Movimiento local " : "Movimiento ") + std::to_string(d.numero));
  p.texto(d.fecha.date().toString() + " " + d.hora.timeOfDay().toString());
  p.texto("Caja " + std::to_string(d.maquina) + "  Sesión " + std::to_string(d.sesion));
  p.texto("Cajero: " + d.cajero);
  if (!d.documento.empty())
    p.texto("Documento: " + d.documento);
  else if (d.tipo == "devolucion")
    p.texto("Documento: sin documento");
  if (!d.motivo.empty())
    p.texto("Motivo: " + d.motivo);
  p.raya();
  pagos(p, d);
  p.raya();
  importes(p, d);
  vuelto(p, d);
  if (!d.aprobador.empty())
    p.texto("Autorizó: " + d.aprobador);
  if (d.anulado)
    anulacion(p, d);
  return std::move(p).lineas();
}

std::string textoRecibo(const std::vector<LineaRecibo>& lineas) {
  std::string texto;
  for (const auto& l : lineas)
    texto += l.texto + '\n';
  return texto;
}

std::string escposRecibo(const std::vector<LineaRecibo>& lineas, bool abrirCajon) {
  std::string b = bytes({0x1B, '@', 0x1B, 't', 2});
  for (const auto& l : lineas) {
    if (l.titulo)
      b += bytes({0x1B, 'E', 1});
    for (std::size_t i = 0; i < l.texto.size();)
      b += cp850(puntoDeCodigo(l.texto, i));
    b += '\n';
    if (l.titulo)
      b += bytes({0x1B, 'E', 0});
  }
  if (abrirCajon)
    b += bytes({0x1B, 'p', 0, 25, 250});
  return b + bytes({0x1B, 'd', 4, 0x1D, 'V', 'B', 0});
}

}  // namespace caja::app
