#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "caja/service/Factoria.h"
#include "caja/service/FactoriaEnvoltorio.h"
#include "caja/service/TablaRecordset.h"

namespace caja::test {

// A host that records every statement with its arguments and answers from a
// script, so that tests can check SQL byte for byte.
class FakeFactoria : public Factoria {
 public:
  struct Llamada {
    std::string sql;
    Argumentos args;
  };

  std::vector<Llamada> llamadas;
  std::vector<std::string> logs;
  double tipoCambioCaja = 0.0;
  std::map<std::string, std::function<std::shared_ptr<Objeto>()>> objetos;  // by class name

  // Answers for the next statements whose text is exactly `sql`, in order.
  // Once a queue is used up, its last answer repeats.
  void alLeer(const std::string& sql, Variant valor);
  void alAbrir(const std::string& sql, std::vector<std::string> columnas,
               std::vector<TablaRecordset::Fila> filas);
  void alEjecutar(const std::string& sql, long filasAfectadas);
  // The catalogue row `CMedioPago::load` reads for `codigo` (its columns:
  // kColumnasMedio); the rest blank.
  static const std::vector<std::string> kColumnasMedio;
  void alCargarMedio(const std::string& codigo, int clase, int atributos, double islr = 0.0);

  // The SQL texts in the order they were issued.
  std::vector<std::string> sqls() const;

  std::shared_ptr<Objeto> CrearObjeto(const std::string& clase) override;
  long ExecuteSQL(const std::string& sql, const Argumentos& args = {}) override;
  Variant ReadScalar(const std::string& sql, const Argumentos& args = {}) override;
  std::shared_ptr<caja::Recordset> openrecordset(const std::string& sql,
                                                 const Argumentos& args = {}) override;
  std::string NumeroDB(const Variant& numero) override;
  std::string StringDB(const std::string& texto) override;
  bool ExisteProcedimiento(const std::string& nombre,
                           const std::shared_ptr<Objeto>& dueno) override;
  void Log(const std::string& mensaje) override { logs.push_back(mensaje); }
  Variant VerificarUsuario(const std::string&) override { return Variant(0); }
  std::shared_ptr<Objeto> loadFileIcon(const std::string& archivo) override;
  double TipoCambioCaja() override { return tipoCambioCaja; }
  std::shared_ptr<caja::TemaUI> TemaUI() override { return tema; }
  void BeginTrans() override { llamadas.push_back({"BEGIN", {}}); }
  void CommitTrans() override { llamadas.push_back({"COMMIT", {}}); }
  void Rollback() override { llamadas.push_back({"ROLLBACK", {}}); }

  std::shared_ptr<caja::TemaUI> tema = std::make_shared<caja::TemaUI>();

 private:
  struct Tabla {
    std::vector<std::string> columnas;
    std::vector<TablaRecordset::Fila> filas;
  };
  template <class T>
  static T siguiente(std::map<std::string, std::deque<T>>& guion, const std::string& sql,
                     T defecto);

  std::map<std::string, std::deque<Variant>> escalares_;
  std::map<std::string, std::deque<Tabla>> tablas_;
  std::map<std::string, std::deque<long>> ejecuciones_;
};

// Wraps any host and makes its Nth statement (ExecuteSQL, ReadScalar or
// openrecordset, counted from 1) raise instead of running.
class FallaEnSentencia : public FactoriaEnvoltorio {
 public:
  FallaEnSentencia(std::shared_ptr<Factoria> host, int n)
      : FactoriaEnvoltorio(std::move(host)), falla_(n) {}

  long ExecuteSQL(const std::string& sql, const Argumentos& args = {}) override;
  Variant ReadScalar(const std::string& sql, const Argumentos& args = {}) override;
  std::shared_ptr<caja::Recordset> openrecordset(const std::string& sql,
                                                 const Argumentos& args = {}) override;

 private:
  void contar(const std::string& sql);

  int falla_;
  int contadas_ = 0;
};

}  // namespace caja::test
