#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "caja/base/CajaError.h"
#include "caja/host/HostSql.h"

namespace caja::app {

// The program's data folder, $XDG_DATA_HOME/caja (~/.local/share/caja),
// made when `crear`.
std::filesystem::path carpetaDeDatos(bool crear);
// Appends the error, with its number and source, to the till's log
// (caja.log in the data folder, 0600) when the folder exists: what the
// cashier read without its number, for whoever looks into it.
void anotarError(const CajaError& e);
// The journal file in it: diario.db.
std::string rutaDiario(bool crearCarpeta);
// The journal, created when `crear`; nullptr when it is not there.
std::shared_ptr<HostSql> abrirDiario(bool crear);
// When the last batch with nothing refused ended, or empty.
std::string ultimoEnvio();
// Notes now as the time of the last batch that sent with nothing refused.
void anotarEnvio();

}  // namespace caja::app
