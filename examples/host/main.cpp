// A complete host of the component: a till on an SQLite file, one sale
// collected through the scripted entry of the collection dialog, saved all or
// nothing, and the saved movement printed. Run with QT_QPA_PLATFORM=offscreen
// where there is no display.
#include <caja/base/Currency.h>
#include <caja/base/Fecha.h>
#include <caja/dialogs/DialogosQt.h>
#include <caja/facade/CServiciosCaja.h>
#include <caja/host/IniSettingsStore.h>
#include <caja/host/SqliteFactoria.h>
#include <caja/movement/CVarelta.h>
#include <caja/service/Settings.h>
#include <caja/service/TransaccionHost.h>
#include <QApplication>
#include <iostream>

using caja::Currency;

int main(int argc, char** argv) try {
  QApplication app(argc, argv);
  caja::setSettingsStore(
      std::make_shared<caja::IniSettingsStore>(".", caja::IniSettingsStore::defaultUserDir()));
  caja::instalarDialogosQt();

  // A new file gets the schema. What the component needs of its host: an
  // open session for the till, the company's rate and the till's rate.
  auto db = caja::SqliteFactoria::Abrir(argc > 1 ? argv[1] : "ejemplo.db");
  db->ExecuteSQL(
      "INSERT INTO SesionesPOS (SessionID, MachineID, Operador, Apertura) "
      "VALUES (1, 1, 'CAJERO', getdate()) ON CONFLICT (SessionID) DO NOTHING");
  db->ExecuteSQL("INSERT INTO parametrosEmpresa (Fecha, TipoCambio) VALUES (getdate(), 36.5)");
  db->ExecuteSQL(
      "INSERT INTO hostEmpresa (id, Nombre, TipoCambioCaja) VALUES (1, 'Ejemplo', 36.5) "
      "ON CONFLICT (id) DO NOTHING");

  caja::CServiciosCaja servicios;
  servicios.Init(caja::Variant(), db);

  // The cashier's work, scripted: a sale of 100.00 plus 16.00 of tax, paid
  // with 120.00 in national cash. `servicios.Varelta` shows the dialog instead.
  auto mov =
      caja::CobrarSinMostrar("Venta de ejemplo", Currency::fromUnits(100), Currency::fromUnits(16),
                             Currency(), {{"EFE", Currency::fromUnits(120)}});
  if (!mov)
    return 1;

  {
    caja::TransaccionHost transaccion(*db);  // rolled back unless committed
    mov->Save(1, "CAJERO", "FAC", 1, "CLI", "C0001", "Venta de ejemplo", caja::Fecha::today());
    mov->commitTransEf();  // moves the till's balances
    transaccion.commit();
  }

  std::cout << "Movimiento " << mov->TransID << ": débitos " << mov->Debitos.toMachineText()
            << ", vuelto " << mov->Vuelto.toMachineText() << "\n";
  for (const auto& linea : mov->lineasEnMemoria())
    std::cout << "  " << linea->medio << " " << linea->Monto.toMachineText() << "\n";
  return 0;
} catch (const std::exception& e) {
  std::cerr << e.what() << "\n";
  return 1;
}
