#pragma once

#include <string>
#include <string_view>

#include "caja/base/Exporta.h"

namespace caja {

// Letter case folded the way the component's keys compare: ASCII only, as the
// codes and keys it compares are plain ASCII.
CAJA_INTERNO std::string lowerAscii(std::string_view texto);
CAJA_INTERNO std::string upperAscii(std::string_view texto);
// Upper case for the Spanish letters of UTF-8 text as well (á → Á, ñ → Ñ): the
// Latin-1 letters of the two-byte range.
CAJA_INTERNO std::string upperEspanol(std::string_view texto);
// Characters of UTF-8 text, not bytes.
CAJA_INTERNO std::size_t largoUtf8(std::string_view texto);
CAJA_INTERNO bool equalsIgnoreCase(std::string_view a, std::string_view b);
CAJA_INTERNO std::string trimBlanks(std::string_view texto);
// Every occurrence of `buscar` replaced, left to right; an empty `buscar` changes nothing.
CAJA_INTERNO std::string replaceAll(std::string_view texto, std::string_view buscar,
                                    std::string_view poner);

}  // namespace caja
