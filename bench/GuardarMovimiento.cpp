// Movements saved and committed per second on the embedded SQLite host, each
// one wrapped in a host transaction as the host program does, against the
// very same statements issued straight to SQLite by a bare loop: one
// transaction per sale, statements prepared once. The ratio printed at the
// end is the component's overhead (target: at most 1.25).

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <map>

#include "caja/host/SqliteFactoria.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/FactoriaEnvoltorio.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"

namespace {

using namespace caja;
namespace fs = std::filesystem;

// Records each statement the component issues, then lets the host run it.
class Grabadora : public FactoriaEnvoltorio {
 public:
  using FactoriaEnvoltorio::FactoriaEnvoltorio;
  std::vector<std::pair<std::string, Argumentos>> sentencias;

  long ExecuteSQL(const std::string& s, const Argumentos& a = {}) override {
    sentencias.emplace_back(s, a);
    return host().ExecuteSQL(s, a);
  }
  Variant ReadScalar(const std::string& s, const Argumentos& a = {}) override {
    sentencias.emplace_back(s, a);
    return host().ReadScalar(s, a);
  }
  std::shared_ptr<Recordset> openrecordset(const std::string& s,
                                           const Argumentos& a = {}) override {
    sentencias.emplace_back(s, a);
    return host().openrecordset(s, a);
  }
};

fs::path archivoNuevo(const char* nombre) {
  const fs::path ruta = fs::temp_directory_path() / nombre;
  for (const char* sufijo : {"", "-wal", "-shm"})
    fs::remove(ruta.string() + sufijo);
  return ruta;
}

std::shared_ptr<SqliteFactoria> hostDePrueba(const char* nombre) {
  auto db = SqliteFactoria::Abrir(archivoNuevo(nombre).string());
  db->ExecuteSQL(
      "INSERT INTO MediosPago (Codigo, Clase, Atributos, titulo, posicion) VALUES "
      "('USD', 8, 1024, 'Dólares', 1), ('TDC', 3, 0, 'Visa', 2)");
  db->ExecuteSQL("INSERT INTO SesionesPOS (SessionID, MachineID) VALUES (1, 2)");
  db->ExecuteSQL("INSERT INTO parametrosEmpresa (TipoCambio) VALUES (36.5)");
  return db;
}

std::shared_ptr<CVarelta> venta(int lineas) {
  static const char* const kMedios[] = {"EFE", "USD", "TDC"};
  auto mov = std::make_shared<CVarelta>();
  for (int i = 0; i < lineas; ++i) {
    auto d = std::make_shared<CDetalleIngreso>();
    d->medio = kMedios[i % (lineas == 2 ? 2 : 3)];
    d->montoNominal = Currency::fromUnits(10 + i);
    d->Monto = d->medio == "USD" ? d->montoNominal * std::int16_t{36} : d->montoNominal;
    mov->colDetalles->Add(d);
  }
  return mov;
}

void cobrar(int lineas);

// One sale on a host of its own, so the bare loop starts from the same drawer rows.
void cobrarEn(const std::shared_ptr<HostSql>& host, int lineas) {
  InicializarEntorno(host);
  cobrar(lineas);
  gFactoria.reset();
  gMediosPago.reset();
}

void guardar(CVarelta& mov) {
  mov.Save(1, "ANA", "FAC", 1, "CLI", "C1", "", Fecha::fromYmd(2026, 11, 21));
  mov.commitTransEf();
}

void cobrar(int lineas) {
  guardar(*venta(lineas));
}

// As the host program saves: one host transaction around the save.
void cobrarEnvuelto(HostSql& host, int lineas) {
  auto mov = venta(lineas);
  host.EnTransaccion([&] { guardar(*mov); });
}

// Seconds per movement of each repetition, wall clock and processor time:
// the commit waits for the disk, whose time varies far more than the work.
struct Tiempos {
  std::vector<double> reloj, cpu;
};
std::map<std::string, Tiempos> segundosPorMovimiento;

double cpuAhora() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

// Keeps the seconds per movement of a finished loop for the final ratio.
void anotar(benchmark::State& state, const std::string& nombre,
            std::chrono::steady_clock::time_point inicio, double cpuInicio) {
  const std::chrono::duration<double> total = std::chrono::steady_clock::now() - inicio;
  const auto vueltas = static_cast<double>(state.iterations());
  segundosPorMovimiento[nombre].reloj.push_back(total.count() / vueltas);
  segundosPorMovimiento[nombre].cpu.push_back((cpuAhora() - cpuInicio) / vueltas);
  state.counters["mov/s"] = benchmark::Counter(vueltas, benchmark::Counter::kIsRate);
}

double mediana(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

void BM_Componente(benchmark::State& state) {
  const int lineas = static_cast<int>(state.range(0));
  setSettingsStore(std::make_shared<MemoriaSettingsStore>());
  const auto host = hostDePrueba("caja-bench-componente.db");
  InicializarEntorno(host);
  const auto inicio = std::chrono::steady_clock::now();
  const double cpuInicio = cpuAhora();
  for (auto _ : state)
    cobrarEnvuelto(*host, lineas);
  anotar(state, "componente/" + std::to_string(lineas), inicio, cpuInicio);
  gFactoria.reset();
  gMediosPago.reset();
}

// The dialect the bare loop needs, token for token what the host does.
std::string aSqlite(std::string sql) {
  const std::pair<const char*, const char*> cambios[] = {
      {"getdate()", "datetime('now','localtime')"},
      {"@@IDENTITY", "last_insert_rowid()"},
      {"scope_identity()", "last_insert_rowid()"},
      {"IDENT_CURRENT('MovimientosCaja')", "last_insert_rowid()"}};
  for (const auto& [de, a] : cambios)
    for (auto p = sql.find(de); p != std::string::npos; p = sql.find(de, p))
      sql.replace(p, std::string(de).size(), a);
  return sql;
}

void enlazar(sqlite3_stmt* st, int i, const Variant& v) {
  switch (v.type()) {
    case VarType::Integer:
      sqlite3_bind_int(st, i, v.asInteger());
      break;
    case VarType::Long:
      sqlite3_bind_int(st, i, v.asLong());
      break;
    case VarType::Double:
      sqlite3_bind_double(st, i, v.asDouble());
      break;
    case VarType::Currency:
      sqlite3_bind_int64(st, i, v.asCurrency().raw());
      break;
    case VarType::String:
      sqlite3_bind_text(st, i, v.asString().c_str(), -1, SQLITE_TRANSIENT);
      break;
    case VarType::Date:
      sqlite3_bind_text(st, i, v.asDate().toIsoText().c_str(), -1, SQLITE_TRANSIENT);
      break;
    default:
      sqlite3_bind_null(st, i);
  }
}

void BM_Directo(benchmark::State& state) {
  const int lineas = static_cast<int>(state.range(0));
  // Capture a sale's statements as the component issues them once the
  // till's drawer rows exist: the steady state of a working day.
  setSettingsStore(std::make_shared<MemoriaSettingsStore>());
  auto grabadora = std::make_shared<Grabadora>(hostDePrueba("caja-bench-captura.db"));
  InicializarEntorno(grabadora);
  cobrar(lineas);
  grabadora->sentencias.clear();
  cobrar(lineas);
  gFactoria.reset();
  gMediosPago.reset();
  std::vector<std::pair<std::string, Argumentos>> sentencias;
  for (auto& [sql, args] : grabadora->sentencias)
    if (sql.rfind("SELECT * FROM MediosPago", 0) != 0)
      sentencias.emplace_back(aSqlite(sql), args);

  cobrarEn(hostDePrueba("caja-bench-directo.db"), lineas);
  sqlite3* db = nullptr;
  sqlite3_open((fs::temp_directory_path() / "caja-bench-directo.db").c_str(), &db);
  sqlite3_exec(db, "PRAGMA journal_mode = WAL; PRAGMA foreign_keys = ON;", nullptr, nullptr,
               nullptr);
  std::vector<std::pair<sqlite3_stmt*, const Argumentos*>> preparadas;
  for (const auto& [sql, args] : sentencias) {
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr);
    preparadas.emplace_back(st, &args);
  }
  const auto inicio = std::chrono::steady_clock::now();
  const double cpuInicio = cpuAhora();
  for (auto _ : state) {
    sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    for (const auto& [st, args] : preparadas) {
      for (int i = 0; i < sqlite3_bind_parameter_count(st); ++i)
        enlazar(st, i + 1, (*args)[static_cast<std::size_t>(i)]);
      while (sqlite3_step(st) == SQLITE_ROW) {
      }
      sqlite3_reset(st);
    }
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
  }
  for (const auto& [st, args] : preparadas)
    sqlite3_finalize(st);
  anotar(state, "directo/" + std::to_string(lineas), inicio, cpuInicio);
  sqlite3_close(db);
}

// Five repetitions each: the final ratio takes their medians.
void configurar(benchmark::internal::Benchmark* b) {
  b->Arg(2)->Arg(6)->Unit(benchmark::kMillisecond)->MinTime(0.5)->Repetitions(5);
  b->ReportAggregatesOnly(true);
}
BENCHMARK(BM_Componente)->Apply(configurar);
BENCHMARK(BM_Directo)->Apply(configurar);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  for (const char* lineas : {"2", "6"}) {
    const auto c = segundosPorMovimiento.find(std::string("componente/") + lineas);
    const auto d = segundosPorMovimiento.find(std::string("directo/") + lineas);
    if (c == segundosPorMovimiento.end() || d == segundosPorMovimiento.end())
      continue;
    std::printf("venta de %s lineas: componente/directo = %.2f (reloj, mediana), %.2f (cpu)\n",
                lineas, mediana(c->second.reloj) / mediana(d->second.reloj),
                mediana(c->second.cpu) / mediana(d->second.cpu));
  }
  return 0;
}
