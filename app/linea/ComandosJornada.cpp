// The commands of the till's day and of its papers: each parses its line,
// calls its action and prints what it did.

#include <QStringList>
#include <charconv>
#include <iostream>
#include <map>

#include "app/acciones/Empresa.h"
#include "app/acciones/EstaCaja.h"
#include "app/acciones/Jornada.h"
#include "app/datos/Carpeta.h"
#include "app/datos/Diario.h"
#include "app/envio/Enviador.h"
#include "app/envio/Envio.h"
#include "app/linea/Comandos.h"
#include "app/linea/Salida.h"
#include "app/papeles/Impresos.h"
#include "app/papeles/Informe.h"
#include "caja/base/Texto.h"
#include "caja/service/General.h"

namespace caja::app {

namespace {

Salida salida(Contexto& c) {
  return Salida(c.out, c.args.bandera("json"));
}

// The catalogue's spelling of a code typed in any letter case; ErrorUso for
// a code the catalogue does not have.
std::string codigoDe(std::string codigo, const char* opcion) {
  if (equalsIgnoreCase(codigo, "EFE"))
    return "EFE";
  const auto medio = ObtenerMedioPago(codigo);
  if (!medio)
    throw ErrorUso(std::string("Medio de pago desconocido en --") + opcion + ": " + codigo);
  return medio->codigo;
}

// A number as typed: digits with '.' for decimals, inside (minimo, maximo];
// ErrorUso with `error` otherwise.
double decimalDe(const std::string& texto, double minimo, double maximo, const std::string& error) {
  double valor = minimo;
  const auto [fin, ec] =
      std::from_chars(texto.data(), texto.data() + texto.size(), valor, std::chars_format::fixed);
  if (texto.empty() || texto.find_first_not_of("0123456789.") != std::string::npos ||
      ec != std::errc() || fin != texto.data() + texto.size() || valor < minimo ||
      !(valor <= maximo))
    throw ErrorUso(error);
  return valor;
}

// A rate as typed: above zero.
double tasaDe(const std::string& texto) {
  const double tasa = decimalDe(
      texto, 0, 1e12, "Tasa no válida: " + texto + " (un número mayor que 0, con punto decimal)");
  if (!(tasa > 0))
    throw ErrorUso("Tasa no válida: " + texto + " (un número mayor que 0, con punto decimal)");
  return tasa;
}

Filtro filtroDe(Contexto& c) {
  Filtro f;
  f.desde = c.args.fecha("desde");
  f.hasta = c.args.fecha("hasta");
  if (const auto s = c.args.entero("sesion", 0, kMaximo32))
    f.sesion = static_cast<std::int32_t>(*s);
  f.operador = c.args.valor("operador");
  return f;
}

// What was counted per method: amounts given whole, or notes and coins
// ("EFE:20x3,5x1"), kept in `denominaciones`; a method counted twice is a
// mistake of the command line.
std::map<std::string, Currency> contados(Contexto& c, std::vector<Denominacion>& denominaciones) {
  std::map<std::string, Currency> lista;
  auto anotar = [&](const std::string& codigo, Currency monto, const char* opcion) {
    if (!lista.emplace(codigoDe(codigo, opcion), monto).second)
      throw ErrorUso("El medio " + codigo + " se contó más de una vez");
  };
  for (const auto& texto : c.args.valores("contado")) {
    const auto [codigo, monto] = parDe(texto, "contado", '=');
    anotar(codigo, montoDe(monto, "--contado " + codigo), "contado");
  }
  // "EFE:20x4,5x1" and "EFE:20x4,EFE:5x1" alike: a piece names its method,
  // or counts for the one named last.
  std::map<std::string, Currency> porDenominaciones;
  for (const auto& texto : c.args.valores("denominaciones")) {
    std::string codigo;
    for (const QString& q : QString::fromStdString(texto).split(',')) {
      std::string pieza = q.toStdString();
      if (pieza.find(':') != std::string::npos) {
        const auto [medio, resto] = parDe(pieza, "denominaciones", ':');
        codigo = codigoDe(medio, "denominaciones");
        pieza = resto;
      }
      if (codigo.empty())
        throw ErrorUso("--denominaciones empieza por el medio: CODIGO:VALORxCANTIDAD,...");
      const auto x = pieza.find('x');
      if (x == std::string::npos)
        throw ErrorUso("Denominación no válida: " + pieza + " (use VALORxCANTIDAD)");
      const Currency valor = montoDe(pieza.substr(0, x), "--denominaciones " + codigo);
      const auto cantidad = static_cast<std::int16_t>(
          enteroDe(pieza.substr(x + 1), "--denominaciones " + codigo, 0, 32767));
      porDenominaciones[codigo] += valor * cantidad;
      denominaciones.push_back({codigo, valor, cantidad});
    }
  }
  for (const auto& [codigo, total] : porDenominaciones)
    anotar(codigo, total, "denominaciones");
  return lista;
}

void reportar(Contexto& c, const Cierre& registro) {
  if (const auto pdf = c.args.valor("pdf"))
    pdfCierre(c.db(), registro, *pdf);
  salida(c).cierres({registro});
}

std::pair<int, int> tamanoDe(Contexto& c) {
  const std::string texto = c.args.valor("tamano", "1200x700");
  const auto x = texto.find('x');
  if (x == std::string::npos)
    throw ErrorUso("Tamaño no válido: " + texto + " (use ANCHOxALTO, en píxeles)");
  return {static_cast<int>(enteroDe(texto.substr(0, x), "--tamano", 100, 8000)),
          static_cast<int>(enteroDe(texto.substr(x + 1), "--tamano", 100, 8000))};
}

// A percentage as typed: from 0 to 100.
double porcentajeDe(const std::string& texto) {
  return decimalDe(texto, 0, 100,
                   "--igtf no válido: " + texto + " (un porcentaje de 0 a 100, con punto decimal)");
}

// The server login of `caja maquina N --login USUARIO`.
void atarLogin(Contexto& c, const std::string& login) {
  if (!c.almacen.conServidor)
    throw ErrorUso("--login ata un usuario del servidor a su máquina: --db postgresql://...");
  if (c.args.posicionales().empty())
    throw ErrorUso("Uso: caja maquina N --login USUARIO --db postgresql://...");
  const auto n = static_cast<std::int32_t>(
      enteroDe(c.args.posicionales().front(), "la máquina", 1, kMaquinaMaxima));
  Puesto p = c.puesto();
  atarLoginDeCaja(p, login, n);
  salida(c).mensaje("El usuario " + login + " del servidor es la caja de la máquina " +
                    std::to_string(n));
}

}  // namespace

std::optional<std::int32_t> maquinaElegida(const LineaComandos& args) {
  if (const auto m = args.entero("maquina", 1, kMaquinaMaxima))
    return static_cast<std::int32_t>(*m);
  return maquinaConfigurada();
}

std::int32_t estaMaquinaDe(Contexto& c) {
  return estaMaquina(c.db(), maquinaElegida(c.args));
}

std::int32_t maquinaDe(Contexto& c) {
  if (const auto m = maquinaElegida(c.args))
    return *m;
  const auto s = c.args.entero("sesion", 1, kMaximo32);
  return maquinaDeLaSesion(
      c.db(), s ? std::optional<std::int32_t>(static_cast<std::int32_t>(*s)) : std::nullopt);
}

std::int32_t numeroDondeCorre(Contexto& c, const std::string& numero) {
  return app::numeroDondeCorre(c.almacen,
                               static_cast<std::int32_t>(enteroDe(numero, "NUMERO", 1, kMaximo32)));
}

void exigirServidor(Contexto& c) {
  if (!c.almacen.conServidor)
    throw ErrorUso(
        "--local nombra un movimiento del diario de una caja con servidor: aquí use NUMERO");
}

std::int32_t numeroNombrado(Contexto& c) {
  const auto local = c.args.entero("local", 1, kMaximo32);
  if (c.args.posicionales().empty() == !local.has_value())
    throw ErrorUso("Indique uno: NUMERO o --local NUMERO");
  if (!local) {
    const std::string& numero = c.args.posicionales().front();
    const std::int32_t n = numeroDondeCorre(c, numero);
    if (n == 0)
      throw Rechazo("El movimiento " + numero +
                    " no está en el diario de esta caja, y el servidor no responde");
    return n;
  }
  exigirServidor(c);
  const auto numero = static_cast<std::int32_t>(*local);
  if (c.almacen.enDiario)
    return numero;
  const auto diario = c.almacen.diario();
  const std::int32_t enServidor = diario ? numeroEnServidor(*diario, numero) : -1;
  if (enServidor <= 0)
    throw Rechazo("Movimiento local " + std::to_string(numero) + " no encontrado");
  return enServidor;
}

int columnasRecibo(const LineaComandos& args) {
  const auto ancho = args.entero("ancho", 1, 1000).value_or(42);
  if (!anchoValido(static_cast<int>(ancho)))
    throw ErrorUso("--ancho es 32 (papel de 58 mm), 42 o 48 (papel de 80 mm)");
  return static_cast<int>(ancho);
}

int sesion(Contexto& c) {
  const std::string accion = c.args.posicionales().empty() ? "" : c.args.posicionales().front();
  Puesto p = c.puesto();
  if (accion == "abrir") {
    const std::int32_t m = estaMaquinaDe(c);
    salida(c).sesion(abrirSesion(p, m), m);
    return kExito;
  }
  if (accion == "cerrar") {
    const auto dada = c.args.entero("sesion", 1, kMaximo32);
    const std::int32_t s = cerrarSesion(
        p, dada ? std::optional<std::int32_t>(static_cast<std::int32_t>(*dada)) : std::nullopt,
        dada ? 0 : estaMaquinaDe(c));
    salida(c).mensaje("Sesión " + std::to_string(s) + " cerrada");
    return kExito;
  }
  if (!accion.empty())
    throw ErrorUso("Uso: caja sesion [abrir --maquina N [--operador O] | cerrar [--sesion S]]");
  salida(c).sesiones(sesionesAbiertas(c.db()));
  return kExito;
}

int tasa(Contexto& c) {
  if (c.args.posicionales().empty()) {
    const double actual = c.db().TipoCambioCaja();
    if (actual <= 0)
      throw Rechazo("La caja no tiene tasa de cambio: fíjela con caja tasa VALOR");
    salida(c).tasa(actual);
    return kExito;
  }
  const double nueva = tasaDe(c.args.posicionales().front());
  Puesto p = c.puesto();
  fijarTasaDeCaja(p, nueva);
  salida(c).tasa(nueva);
  return kExito;
}

int movimientos(Contexto& c) {
  const Listado l = listar(c.almacen, filtroDe(c));
  salida(c).movimientos(l.filas, l.totales, l.porTipo, l.igtf, c.args.bandera("csv"));
  return kExito;
}

int anular(Contexto& c) {
  const std::int32_t numero = numeroNombrado(c);
  const std::string nombre = c.almacen.nombreDe(numero);
  Puesto p = c.puesto();
  anular(p, numero, nombre, c.args.valor("motivo", ""));
  salida(c).mensaje(nombre + " anulado");
  return kExito;
}

int cierre(Contexto& c) {
  Arqueo arqueo;
  arqueo.maquina = estaMaquinaDe(c);
  arqueo.contado = contados(c, arqueo.denominaciones);
  arqueo.parcial = c.args.bandera("parcial");
  arqueo.forzar = c.args.bandera("forzar");
  arqueo.alEnviar = avisarEnvio;
  Puesto p = c.puesto();
  reportar(c, cerrarCaja(p, arqueo));
  return kExito;
}

int cierres(Contexto& c) {
  // One closing by its number, or 0 for all of them.
  const auto uno = static_cast<std::int32_t>(
      c.args.posicionales().empty()
          ? 0
          : enteroDe(c.args.posicionales().front(), "NUMERO", 1, kMaximo32));
  if (c.args.valor("pdf") && uno == 0)
    throw ErrorUso("--pdf es de un cierre: caja cierres NUMERO --pdf ARCHIVO");
  const auto lista = cierresGuardados(c.db(), uno, maquinaElegida(c.args));
  if (uno && lista.empty())
    throw Rechazo("Cierre " + std::to_string(uno) + " no encontrado");
  if (uno)
    reportar(c, lista.front());
  else
    salida(c).cierres(lista);
  return kExito;
}

int recibo(Contexto& c) {
  const std::int32_t numero = numeroNombrado(c);
  const int ancho = columnasRecibo(c.args);
  const ReciboListo r = reciboDe(c.almacen, numero, ancho);
  const auto impresora = c.args.valor("impresora");
  const auto pdf = c.args.valor("pdf");
  if (impresora)
    aImpresora(*impresora, escposRecibo(r.lineas, r.conEfectivo));
  if (pdf)
    reciboPdf(r.lineas, ancho, *pdf);
  if (c.args.bandera("json"))
    c.out << jsonRecibo(r.lineas);
  else if (!impresora && !pdf)
    c.out << textoRecibo(r.lineas);
  return kExito;
}

void imprimirGuardado(Contexto& c, std::int32_t numero) {
  try {
    const ReciboListo r = reciboDe(c.almacen, numero, columnasRecibo(c.args));
    if (const auto impresora = c.args.valor("impresora"))
      aImpresora(*impresora, escposRecibo(r.lineas, r.conEfectivo));
    else
      c.out << textoRecibo(r.lineas);
  } catch (const std::exception& e) {
    std::cerr << "Movimiento " << numero << " guardado; el recibo no se imprimió: " << e.what()
              << std::endl;
  }
}

int informe(Contexto& c) {
  const auto desde = c.args.fecha("desde"), hasta = c.args.fecha("hasta");
  if (!desde || !hasta)
    throw ErrorUso("Indique --desde AAAA-MM-DD y --hasta AAAA-MM-DD");
  if (*hasta < *desde || (*hasta - *desde).serial() > 400)
    throw ErrorUso("--hasta va de --desde en adelante, a lo sumo 400 días");
  const auto m = c.args.entero("maquina", 1, kMaquinaMaxima);
  const Mes mes =
      mesDe(c.db(), *desde, *hasta,
            m ? std::optional<std::int32_t>(static_cast<std::int32_t>(*m)) : std::nullopt);
  if (const auto pdf = c.args.valor("pdf"))
    pdfDelMes(c.db(), mes, *pdf);
  if (const auto png = c.args.valor("png")) {
    const auto [ancho, alto] = tamanoDe(c);
    pngDelMes(mes, ancho, alto, *png);
  }
  if (c.args.bandera("json"))
    jsonDelMes(c.out, mes);
  else if (c.args.bandera("csv"))
    csvDelMes(c.out, mes);
  else if (!c.args.valor("pdf") && !c.args.valor("png"))
    textoDelMes(c.out, mes);
  return kExito;
}

int empresa(Contexto& c) {
  if (c.args.bandera("especial") && c.args.bandera("no-especial"))
    throw ErrorUso("Indique uno: --especial o --no-especial");
  CambioEmpresa cambio;
  cambio.nombre = c.args.valor("nombre");
  cambio.rif = c.args.valor("rif");
  cambio.direccion = c.args.valor("direccion");
  if (c.args.bandera("especial") || c.args.bandera("no-especial"))
    cambio.especial = c.args.bandera("especial");
  if (const auto igtf = c.args.valor("igtf"))
    cambio.igtf = porcentajeDe(*igtf);
  Puesto p = c.puesto();
  salida(c).empresa(cambiarEmpresa(p, cambio));
  return kExito;
}

int comandoMaquina(Contexto& c) {
  if (const auto login = c.args.valor("login")) {
    atarLogin(c, *login);
    return kExito;
  }
  if (!c.args.posicionales().empty()) {
    const auto n = static_cast<std::int32_t>(
        enteroDe(c.args.posicionales().front(), "la máquina", 1, kMaquinaMaxima));
    fijarMaquina(n);
    salida(c).maquina(n);
    return kExito;
  }
  const auto n = maquinaConfigurada();
  if (!n)
    throw Rechazo("Esta caja no tiene número de máquina: fíjelo con caja maquina N");
  salida(c).maquina(*n);
  return kExito;
}

int enviar(Contexto& c) {
  switch (app::enviar(c.almacen.uri, c.almacen.db, c.args.bandera("continuo"))) {
    case FinDeEnvio::OtroEnCurso:
      salida(c).mensaje("Ya hay un envío en curso en esta caja");
      return kExito;
    case FinDeEnvio::OtroSigue:
      return kExito;
    case FinDeEnvio::NadaEspera:
      salida(c).mensaje("Nada espera envío");
      return kExito;
    case FinDeEnvio::SinServidor:
      break;
  }
  return kError;
}

}  // namespace caja::app
