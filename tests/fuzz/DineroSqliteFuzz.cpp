// Any text handed to the embedded host as SQL goes through the placeholder
// numbering and the money reader before SQLite sees it: neither may crash,
// hang or leak, whatever the text. Their own refusal (CajaError) is an answer.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "caja/base/CajaError.h"
#include "caja/host/DialectoSql.h"
#include "caja/host/DineroSqlite.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t largo) {
  const std::string_view sql(reinterpret_cast<const char*>(datos), largo);
  try {
    int marcas = 0;
    const caja::SentenciaTipada s =
        caja::tiparDinero(caja::traducirSql(sql, caja::kDialectoSqlite, marcas));
    for (int i = 0; i < static_cast<int>(s.escalas.size()) + 2; ++i)
      caja::escalaDeColumna(s, i, static_cast<int>(s.escalas.size()) + 1);
  } catch (const caja::CajaError&) {
  }
  return 0;
}
