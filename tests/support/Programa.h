#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace caja::test {

// Runs the host program `programa` with `argumentos` as the till whose data
// folder is `datos` (XDG_DATA_HOME and XDG_CONFIG_HOME), without a display,
// its output discarded, with `entorno` added to its environment. Returns the
// wall time in milliseconds; a run that fails ends this process with 2.
double correrCaja(const char* programa, const std::filesystem::path& datos,
                  const std::vector<std::string>& argumentos,
                  const std::vector<std::pair<std::string, std::string>>& entorno = {});

// The value at fraction `p` (0.5: the median) of `v`, which is not empty.
double percentil(std::vector<double> v, double p);
// Prints a benchmark's figure beside its goal (at most `objetivo`), marked
// when it misses it; whether it meets it.
bool cumple(const char* que, double valor, double objetivo, const char* unidad);

}  // namespace caja::test
