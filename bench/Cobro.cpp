// One recomputation of the collection with fifteen inputs, and opening the
// collection dialog offscreen on the embedded host: the two costs a cashier
// feels while typing and when a sale starts.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <filesystem>

#include "caja/dialogs/frmVarelta.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"

namespace {

using namespace caja;

void BM_Recalcular15(benchmark::State& state) {
  setSettingsStore(std::make_shared<MemoriaSettingsStore>());
  CobroVarelta cobro(Currency::fromUnits(1000), Currency::fromUnits(160), Currency{}, 36.5, 3.0,
                     OpcionesCobro{});
  for (int i = 0; i < 15; ++i) {
    DescriptorMedio d;
    d.Codigo = "M" + std::to_string(i);
    d.Factor = i % 3 == 0 ? 36.5 : 1.0;
    d.Tag = i % 3 == 0 ? "USD**" : (i % 2 ? "*" : "");
    d.valor = Currency::fromUnits(i + 1);
    cobro.medios.push_back(d);
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(cobro.recalcular());
}
BENCHMARK(BM_Recalcular15);

void BM_AbrirDialogo(benchmark::State& state) {
  const auto archivo = std::filesystem::temp_directory_path() / "caja-bench-dialogo.db";
  std::filesystem::remove(archivo);
  auto db = SqliteFactoria::Abrir(archivo.string());
  for (int i = 0; i < 15; ++i)
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Clase, Atributos, titulo, posicion) VALUES "
        "(?, 7, 0, ?, ?)",
        {Variant("M" + std::to_string(i)), Variant("Medio " + std::to_string(i)), Variant(i + 1)});
  setSettingsStore(std::make_shared<MemoriaSettingsStore>());
  InicializarEntorno(db);
  for (auto _ : state) {
    frmVarelta f;
    f.preparar(Currency::fromUnits(1000), Currency::fromUnits(160), Currency{});
    f.show();
    QApplication::processEvents();
  }
  gFactoria.reset();
}
BENCHMARK(BM_AbrirDialogo)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
