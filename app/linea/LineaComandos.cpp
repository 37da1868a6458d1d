#include "app/linea/LineaComandos.h"

#include <QCommandLineParser>
#include <QRegularExpression>
#include <QUtf8StringView>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <set>

#include "caja/base/CajaError.h"
#include "caja/base/Decimal.h"

namespace caja::app {

const std::vector<Opcion> kOpcionesGenerales = {
    {"db", "ARCHIVO|URI",
     "la base de datos: un archivo SQLite (por omisión $XDG_DATA_HOME/caja/caja.db) o un "
     "servidor postgresql://USUARIO@SERVIDOR:PUERTO/BASE"},
    {"json", nullptr, "salida en JSON"},
};

namespace {

std::string guiones(const std::string& nombre) {
  return (nombre.size() == 1 ? "-" : "--") + nombre;
}

// Every option of every command, once: the parser learns which take values.
QList<QCommandLineOption> todasLasOpciones(const std::vector<DefinicionComando>& comandos) {
  QList<QCommandLineOption> lista{QCommandLineOption(QStringList{"h", "help"})};
  std::set<std::string> vistas;
  auto agregar = [&](const Opcion& o) {
    if (!vistas.insert(o.nombre).second)
      return;
    lista.append(o.valor ? QCommandLineOption(o.nombre, o.ayuda, o.valor)
                         : QCommandLineOption(o.nombre, o.ayuda));
  };
  for (const Opcion& o : kOpcionesGenerales)
    agregar(o);
  for (const auto& c : comandos)
    std::for_each(c.opciones.begin(), c.opciones.end(), agregar);
  return lista;
}

const Opcion* opcionDe(const DefinicionComando& comando, const std::string& nombre) {
  for (const auto* lista : {&kOpcionesGenerales, &comando.opciones})
    for (const Opcion& o : *lista)
      if (nombre == o.nombre)
        return &o;
  return nullptr;
}

// QCommandLineParser speaks English; the cashier reads Spanish.
std::string errorEnEspanol(const QCommandLineParser& parser) {
  if (!parser.unknownOptionNames().isEmpty())
    return "Opción desconocida: " + guiones(parser.unknownOptionNames().front().toStdString()) +
           " (caja --help lista las opciones)";
  const auto falta = QRegularExpression("Missing value after '([^']*)'").match(parser.errorText());
  if (falta.hasMatch())
    return "Falta el valor de " + falta.captured(1).toStdString();
  return parser.errorText().toStdString();
}

// A word like "-5" in place of a word of the command is a number with a
// sign, which no value of the program takes, not an option: said as such rather than as an unknown
// option "5".
void rechazarNegativo(const char* palabra) {
  if (palabra[0] == '-' &&
      (std::isdigit(static_cast<unsigned char>(palabra[1])) || palabra[1] == '.'))
    throw ErrorUso(std::string("Número no válido: ") + palabra +
                   " (los montos, las tasas y los números se escriben sin signo)");
}

QStringList argumentosUtf8(int argc, char** argv) {
  QStringList lista;
  for (int i = 0; i < argc; ++i) {
    const QUtf8StringView texto(argv[i]);
    if (!texto.isValidUtf8())
      throw ErrorUso("El argumento " + std::to_string(i) + " no es texto UTF-8 válido");
    // After an option it is that option's value, which the option checks.
    if (i > 0 && std::string_view(argv[i - 1]).rfind("--", 0) != 0)
      rechazarNegativo(argv[i]);
    lista.append(texto.toString());
  }
  return lista;
}

}  // namespace

LineaComandos::LineaComandos(int argc, char** argv,
                             const std::vector<DefinicionComando>& comandos) {
  QCommandLineParser parser;
  parser.addOptions(todasLasOpciones(comandos));
  if (!parser.parse(argumentosUtf8(argc, argv)))
    throw ErrorUso(errorEnEspanol(parser));
  QStringList palabras = parser.positionalArguments();
  ayuda_ = parser.isSet("help");
  if (palabras.isEmpty()) {
    if (ayuda_)
      return;
    throw ErrorUso("Falta el comando (caja --help lista los comandos)");
  }
  comando_ = palabras.takeFirst().toStdString();
  const auto it = std::find_if(comandos.begin(), comandos.end(),
                               [&](const auto& c) { return comando_ == c.nombre; });
  if (it == comandos.end())
    throw ErrorUso("Comando desconocido: " + comando_ + " (caja --help lista los comandos)");
  definicion_ = &*it;
  if (ayuda_)
    return;
  for (const QString& q : palabras)
    posicionales_.push_back(q.toStdString());
  for (const QString& q : parser.optionNames()) {
    const std::string nombre = q.toStdString();
    const Opcion* o = opcionDe(*definicion_, nombre);
    if (!o)
      throw ErrorUso("La opción " + guiones(nombre) + " no es de caja " + comando_ + " (caja " +
                     comando_ + " --help lista las suyas)");
    if (valores_.count(nombre) && !o->repetible)
      throw ErrorUso("La opción " + guiones(nombre) + " se dio más de una vez");
    auto& lista = valores_[nombre];
    if (!o->valor)
      continue;
    // The parser takes the next word as the value whatever it is; an option
    // there means the value was left out.
    const std::string valor =
        parser.values(q).at(static_cast<qsizetype>(lista.size())).toStdString();
    if (valor.rfind("--", 0) == 0)
      throw ErrorUso("Falta el valor de " + guiones(nombre));
    lista.push_back(valor);
  }
  if (posicionales_.size() < definicion_->minimoPosicionales ||
      posicionales_.size() > definicion_->maximoPosicionales)
    throw ErrorUso("Uso: caja " + comando_ + " " + definicion_->argumentos);
}

std::optional<std::string> LineaComandos::valor(const std::string& nombre) const {
  auto it = valores_.find(nombre);
  if (it == valores_.end() || it->second.empty())
    return std::nullopt;
  return it->second.back();
}

std::vector<std::string> LineaComandos::valores(const std::string& nombre) const {
  auto it = valores_.find(nombre);
  return it == valores_.end() ? std::vector<std::string>{} : it->second;
}

std::optional<std::int64_t> LineaComandos::entero(const std::string& nombre, std::int64_t minimo,
                                                  std::int64_t maximo) const {
  const auto texto = valor(nombre);
  if (!texto)
    return std::nullopt;
  return enteroDe(*texto, "--" + nombre, minimo, maximo);
}

std::optional<Currency> LineaComandos::monto(const std::string& nombre) const {
  const auto texto = valor(nombre);
  if (!texto)
    return std::nullopt;
  return montoDe(*texto, "--" + nombre);
}

std::optional<Fecha> LineaComandos::fecha(const std::string& nombre) const {
  const auto texto = valor(nombre);
  if (!texto)
    return std::nullopt;
  Fecha f;
  if (texto->size() != 10 || !Fecha::parse(*texto, f))
    throw ErrorUso("Fecha no válida para --" + nombre + ": " + *texto + " (use AAAA-MM-DD)");
  return f;
}

std::string textoAyuda(const std::vector<DefinicionComando>& comandos,
                       const DefinicionComando* comando) {
  auto opciones = [](const std::vector<Opcion>& lista) {
    std::string s;
    for (const Opcion& o : lista) {
      std::string nombre =
          "--" + std::string(o.nombre) + (o.valor ? std::string(" ") + o.valor : "");
      if (o.repetible)
        nombre += " ...";
      nombre.resize(std::max<std::size_t>(nombre.size() + 2, 28), ' ');
      s += "  " + nombre + o.ayuda + "\n";
    }
    return s;
  };
  if (comando) {
    return "Uso: caja " + std::string(comando->nombre) + " " + comando->argumentos + "\n" +
           comando->ayuda + "\n\nOpciones:\n" + opciones(comando->opciones) +
           opciones(kOpcionesGenerales) + "  -h, --help                  esta ayuda\n";
  }
  std::string s = "Uso: caja COMANDO [opciones]\n\nComandos:\n";
  for (const auto& c : comandos) {
    std::string nombre = c.nombre;
    nombre.resize(std::max<std::size_t>(nombre.size() + 2, 14), ' ');
    s += "  " + nombre + c.ayuda + "\n";
  }
  return s + "\nOpciones de todos los comandos:\n" + opciones(kOpcionesGenerales) +
         "  -h, --help                  esta ayuda; caja COMANDO --help, la de un comando\n";
}

std::pair<std::string, std::string> parDe(const std::string& texto, const char* opcion,
                                          char separador) {
  const auto dos = texto.find(separador);
  if (dos == std::string::npos || dos == 0 || dos + 1 == texto.size())
    throw ErrorUso(std::string("Valor no válido para --") + opcion + ": " + texto);
  return {texto.substr(0, dos), texto.substr(dos + 1)};
}

Currency montoDe(const std::string& texto, const std::string& que) {
  if (!texto.empty() && texto.front() != '-') {
    if (const auto c = Currency::parse(texto))
      return *c;
    if (const auto d = Decimal::parseRegional(texto);
        d && d->escala <= 4 && texto.find_first_not_of("0123456789.") == std::string::npos)
      throw CajaError(err::kDesbordamiento, "caja",
                      "El monto " + texto + " de " + que +
                          " está fuera del rango de la moneda (-922337203685477.5807 a "
                          "922337203685477.5807)");
  }
  throw ErrorUso("Monto no válido para " + que + ": " + texto +
                 " (un número sin signo, con punto decimal y hasta cuatro decimales)");
}

std::int64_t enteroDe(const std::string& texto, const std::string& que, std::int64_t minimo,
                      std::int64_t maximo) {
  std::int64_t n = 0;
  const auto [fin, ec] = std::from_chars(texto.data(), texto.data() + texto.size(), n);
  if (ec != std::errc() || fin != texto.data() + texto.size() || n < minimo || n > maximo)
    throw ErrorUso("Número no válido para " + que + ": " + texto + " (de " +
                   std::to_string(minimo) + " a " + std::to_string(maximo) + ")");
  return n;
}

}  // namespace caja::app
