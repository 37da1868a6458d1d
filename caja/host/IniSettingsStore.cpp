#include "caja/host/IniSettingsStore.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "caja/base/CajaError.h"
#include "caja/base/Texto.h"
#include "caja/host/ArchivosPrivados.h"

namespace caja {

namespace {

namespace fs = std::filesystem;

struct Linea {
  std::string texto;       // the line as read, for lines kept verbatim
  std::string fin = "\n";  // its own line ending, written back as it was
  std::string seccion;     // section the line belongs to
  std::string clave;       // empty for headers, comments and other lines
  std::string valor;       // raw text after '='
};

constexpr std::string_view kMarcaUtf8 = "\xEF\xBB\xBF";

struct Archivo {
  bool marcaUtf8 = false;  // the file began with a byte-order mark, kept on writing
  std::vector<Linea> lineas;
};

std::string recortar(std::string_view t) {
  const auto inicio = t.find_first_not_of(" \t\r");
  if (inicio == std::string_view::npos)
    return "";
  const auto fin = t.find_last_not_of(" \t\r");
  return std::string(t.substr(inicio, fin - inicio + 1));
}

std::string escapar(const std::string& valor) {
  std::string r;
  for (char c : valor) {
    if (c == '\\') {
      r += "\\\\";
    } else if (c == '\r') {
      r += "\\r";
    } else if (c == '\n') {
      r += "\\n";
    } else {
      r += c;
    }
  }
  return r;
}

// A key as written: escaped like a value, and with '=' and a leading ';',
// '#' or '[' escaped too, so that it reads back as the same key.
std::string escaparClave(const std::string& clave) {
  std::string r;
  for (std::size_t i = 0; i < clave.size(); ++i) {
    const char c = clave[i];
    if (c == '=' || (i == 0 && (c == ';' || c == '#' || c == '[')))
      r += '\\';
    r += escapar(std::string(1, c));
  }
  return r;
}

std::string desescapar(const std::string& valor) {
  std::string r;
  for (std::size_t i = 0; i < valor.size(); ++i) {
    if (valor[i] != '\\' || i + 1 == valor.size()) {
      r += valor[i];
      continue;
    }
    const char c = valor[++i];
    r += c == 'r' ? '\r' : c == 'n' ? '\n' : c;
  }
  return r;
}

// The first '=' that a backslash does not escape.
std::size_t signoIgual(const std::string& texto) {
  for (std::size_t i = 0; i < texto.size(); ++i) {
    if (texto[i] == '\\')
      ++i;
    else if (texto[i] == '=')
      return i;
  }
  return std::string::npos;
}

Archivo leer(const fs::path& ruta) {
  Archivo a;
  std::ifstream in(ruta, std::ios::binary);
  std::string seccion;
  for (std::string texto; std::getline(in, texto);) {
    // A byte-order mark is no part of the first line.
    if (a.lineas.empty() && texto.rfind(kMarcaUtf8, 0) == 0) {
      texto.erase(0, kMarcaUtf8.size());
      a.marcaUtf8 = true;
    }
    Linea l{texto, "\n", seccion, {}, {}};
    if (!texto.empty() && texto.back() == '\r') {
      l.texto.pop_back();
      l.fin = "\r\n";
    }
    const std::string limpio = recortar(l.texto);
    if (limpio.size() >= 2 && limpio.front() == '[' && limpio.back() == ']') {
      seccion = limpio.substr(1, limpio.size() - 2);
      l.seccion = seccion;
    } else if (const auto igual = signoIgual(l.texto);
               igual != std::string::npos && limpio.front() != ';' && limpio.front() != '#') {
      l.clave = desescapar(recortar(std::string_view(l.texto).substr(0, igual)));
      l.valor = l.texto.substr(igual + 1);
    }
    a.lineas.push_back(std::move(l));
  }
  return a;
}

// Works on a const or a mutable file alike.
template <class A>
auto buscar(A& a, const std::string& seccion, const std::string& clave) -> decltype(&a.lineas[0]) {
  for (auto& l : a.lineas)
    if (!l.clave.empty() && equalsIgnoreCase(l.seccion, seccion) &&
        equalsIgnoreCase(l.clave, clave))
      return &l;
  return nullptr;
}

std::string sinComillas(std::string valor) {
  valor = recortar(valor);
  if (valor.size() >= 2 && (valor.front() == '"' || valor.front() == '\'') &&
      valor.back() == valor.front())
    return valor.substr(1, valor.size() - 2);
  return valor;
}

// The application's file in `dir`; its name, like everything else in the
// store, ignores letter case.
fs::path archivoDe(const std::string& dir, const std::string& app) {
  const std::string nombre = app + ".ini";
  std::error_code ec;
  for (fs::directory_iterator it(dir, ec), fin; !ec && it != fin; it.increment(ec))
    if (equalsIgnoreCase(it->path().filename().string(), nombre))
      return it->path();
  return fs::path(dir) / nombre;
}

void escribir(const fs::path& ruta, const Archivo& a) {
  crearCarpetaPrivada(ruta.parent_path());
  std::string contenido = a.marcaUtf8 ? std::string(kMarcaUtf8) : std::string();
  for (const auto& l : a.lineas)
    contenido += l.texto + l.fin;
  const fs::path temporal = ruta.string() + ".tmp";
  escribirArchivoPrivado(temporal, contenido);
  fs::rename(temporal, ruta);
}

}  // namespace

IniSettingsStore::IniSettingsStore(std::string installDir, std::string userDir)
    : installDir_(std::move(installDir)), userDir_(std::move(userDir)) {}

std::string IniSettingsStore::defaultUserDir() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg && *xdg)
    return (fs::path(xdg) / "caja").string();
  const char* home = std::getenv("HOME");
  return (fs::path(home ? home : ".") / ".config" / "caja").string();
}

std::string IniSettingsStore::ReadInstallValue(const std::string& app, const std::string& seccion,
                                               const std::string& clave) {
  const Archivo a = leer(archivoDe(installDir_, app));
  const Linea* l = buscar(a, seccion, clave);
  return l ? sinComillas(l->valor) : std::string{};
}

std::string IniSettingsStore::GetSetting(const std::string& app, const std::string& seccion,
                                         const std::string& clave, const std::string& defecto) {
  const Archivo a = leer(archivoDe(userDir_, app));
  const Linea* l = buscar(a, seccion, clave);
  return l ? desescapar(recortar(l->valor)) : defecto;
}

void IniSettingsStore::SaveSetting(const std::string& app, const std::string& seccion,
                                   const std::string& clave, const std::string& valor) {
  const fs::path ruta = archivoDe(userDir_, app);
  Archivo a = leer(ruta);
  const std::string linea = escaparClave(clave) + "=" + escapar(valor);
  if (auto* l = buscar(a, seccion, clave)) {
    l->texto = linea;
  } else {
    // After the last non-blank line of the section, or in a new section at the end.
    std::size_t donde = a.lineas.size();
    bool hallada = false;
    for (std::size_t i = 0; i < a.lineas.size(); ++i) {
      if (equalsIgnoreCase(a.lineas[i].seccion, seccion) && !recortar(a.lineas[i].texto).empty()) {
        donde = i + 1;
        hallada = true;
      }
    }
    if (!hallada) {
      a.lineas.push_back(Linea{"[" + seccion + "]", "\n", seccion, {}, {}});
      donde = a.lineas.size();
    }
    a.lineas.insert(a.lineas.begin() + static_cast<std::ptrdiff_t>(donde),
                    Linea{linea, "\n", seccion, clave, escapar(valor)});
  }
  escribir(ruta, a);
}

std::optional<SettingsStore::Pares> IniSettingsStore::GetAllSettings(const std::string& app,
                                                                     const std::string& seccion) {
  const Archivo a = leer(archivoDe(userDir_, app));
  bool existe = false;
  Pares pares;
  for (const auto& l : a.lineas) {
    if (!equalsIgnoreCase(l.seccion, seccion))
      continue;
    existe = true;
    if (!l.clave.empty())
      pares.emplace_back(l.clave, desescapar(recortar(l.valor)));
  }
  if (!existe)
    return std::nullopt;
  return pares;
}

}  // namespace caja
