#include "tests/support/FakeFactoria.h"

#include "caja/base/CajaError.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"

namespace caja::test {

template <class T>
T FakeFactoria::siguiente(std::map<std::string, std::deque<T>>& guion, const std::string& sql,
                          T defecto) {
  auto it = guion.find(sql);
  if (it == guion.end() || it->second.empty())
    return defecto;
  T valor = it->second.front();
  if (it->second.size() > 1)
    it->second.pop_front();
  return valor;
}

void FakeFactoria::alLeer(const std::string& sql, Variant valor) {
  escalares_[sql].push_back(std::move(valor));
}

void FakeFactoria::alAbrir(const std::string& sql, std::vector<std::string> columnas,
                           std::vector<TablaRecordset::Fila> filas) {
  tablas_[sql].push_back({std::move(columnas), std::move(filas)});
}

const std::vector<std::string> FakeFactoria::kColumnasMedio = {
    "Codigo",         "descripcion",  "Atributos",        "PorcentajeRetencionEmisor",
    "PorcentajeISLR", "CuentaActivo", "CuentaComisiones", "BancoRelacionado",
    "Clase",          "titulo",       "textoAyuda",       "isMedioElectronico",
    "posicion"};

void FakeFactoria::alCargarMedio(const std::string& codigo, int clase, int atributos, double islr) {
  alAbrir("SELECT * FROM MediosPago WHERE Codigo = '" + codigo + "'", kColumnasMedio,
          {{Variant(codigo), Variant(""), Variant(atributos), Variant(0.0), Variant(islr),
            Variant(""), Variant(""), Variant(""), Variant(clase), Variant(""), Variant(""),
            Variant(0), Variant(1)}});
}

void FakeFactoria::alEjecutar(const std::string& sql, long filasAfectadas) {
  ejecuciones_[sql].push_back(filasAfectadas);
}

std::vector<std::string> FakeFactoria::sqls() const {
  std::vector<std::string> r;
  for (const auto& l : llamadas)
    r.push_back(l.sql);
  return r;
}

std::shared_ptr<Objeto> FakeFactoria::CrearObjeto(const std::string& clase) {
  auto it = objetos.find(clase);
  if (it == objetos.end())
    throw CajaError(429, "FakeFactoria", "No se puede crear " + clase);
  return it->second();
}

long FakeFactoria::ExecuteSQL(const std::string& sql, const Argumentos& args) {
  llamadas.push_back({sql, args});
  return siguiente(ejecuciones_, sql, 1L);
}

Variant FakeFactoria::ReadScalar(const std::string& sql, const Argumentos& args) {
  llamadas.push_back({sql, args});
  return siguiente(escalares_, sql, Variant());
}

std::shared_ptr<caja::Recordset> FakeFactoria::openrecordset(const std::string& sql,
                                                             const Argumentos& args) {
  llamadas.push_back({sql, args});
  const Tabla t = siguiente(tablas_, sql, Tabla{});
  return std::make_shared<TablaRecordset>(t.columnas, t.filas);
}

std::string FakeFactoria::NumeroDB(const Variant& numero) {
  return toDecimal(numero).toMachineText();
}

std::string FakeFactoria::StringDB(const std::string& texto) {
  return "'" + replaceAll(texto, "'", "''") + "'";
}

bool FakeFactoria::ExisteProcedimiento(const std::string& nombre, const std::shared_ptr<Objeto>&) {
  return objetos.count("proc:" + nombre) > 0;
}

std::shared_ptr<Objeto> FakeFactoria::loadFileIcon(const std::string& archivo) {
  return std::make_shared<Imagen>(archivo);
}

void FallaEnSentencia::contar(const std::string& sql) {
  if (++contadas_ == falla_)
    throw CajaError(-2147217900, "FallaEnSentencia", "Falla inyectada en: " + sql);
}

long FallaEnSentencia::ExecuteSQL(const std::string& sql, const Argumentos& args) {
  contar(sql);
  return host().ExecuteSQL(sql, args);
}

Variant FallaEnSentencia::ReadScalar(const std::string& sql, const Argumentos& args) {
  contar(sql);
  return host().ReadScalar(sql, args);
}

std::shared_ptr<caja::Recordset> FallaEnSentencia::openrecordset(const std::string& sql,
                                                                 const Argumentos& args) {
  contar(sql);
  return host().openrecordset(sql, args);
}

}  // namespace caja::test
