#pragma once

#include <filesystem>
#include <string>

#include "caja/base/Exporta.h"

namespace caja {

// Files that hold sales, PIN hashes and settings are their owner's alone:
// created with mode 0600, in folders created with mode 0700. Existing files
// and folders keep the mode their owner gave them.

// Creates the folder and any missing parent (each new one 0700).
CAJA_INTERNO void crearCarpetaPrivada(const std::filesystem::path& carpeta);
// Creates `archivo` empty with mode 0600 when it does not exist yet.
CAJA_INTERNO void crearArchivoPrivado(const std::filesystem::path& archivo);
// Writes `contenido` to `archivo`, created or truncated, with mode 0600.
CAJA_INTERNO void escribirArchivoPrivado(const std::filesystem::path& archivo,
                                         const std::string& contenido);

}  // namespace caja
