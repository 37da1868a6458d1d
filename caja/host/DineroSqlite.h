#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace caja {

// A statement as the embedded file must run it, with what the host needs to
// read and bind its amounts.
//
// The file keeps money as integer ten-thousandths, the only exact arithmetic
// SQLite has. Written as it stands, hand-made SQL would then read 116.50 as
// 1165000 and a literal 50 as 0.0050. So each statement is read once before
// it is prepared: every expression is typed as an amount or not (money
// columns, SUM/MIN/MAX/AVG/ABS/ROUND/COALESCE/CASE over them, arithmetic,
// subqueries and the aliases of each), the numbers it meets an amount with
// are put in ten-thousandths (a literal rewritten exactly, a placeholder
// bound so, any other number multiplied), and the result columns that are
// amounts are marked for reading back as currency. A product by a literal
// or a bound value is kept exact in finer units, as the server's numeric
// keeps it, and rounded once, where it is read or stored: halves away from
// zero at the fourth decimal, as the server rounds. A statement whose
// amounts cannot be computed exactly this way (the product of two amounts,
// an amount inside a text function) is refused with the reason, never run
// scaled.
struct SentenciaTipada {
  std::string sql;  // the text SQLite prepares
  // Per result column: -1 when not an amount, else the amount's units as
  // 10^-(4 + n): 0 for ten-thousandths, 3 for Monto * 0.015.
  std::vector<int> escalas;
  std::vector<bool> marcasDinero;  // per placeholder, by number: bound in ten-thousandths
  // Result columns of a `*` over a table not in the schema, whose number is
  // known only once prepared: they sit at `estrellaIncierta` (-1: none) and
  // are read by their declared type alone.
  int estrellaIncierta = -1;
};

// Raises kErrorBaseDatos, with the reason in Spanish, for a statement whose
// amounts the file cannot compute, for a literal amount it cannot read, and
// for a statement nested deeper than SQLite itself would take. Statements
// other than SELECT, VALUES, INSERT, UPDATE, DELETE and WITH pass untouched.
SentenciaTipada tiparDinero(std::string_view sql);

// The units of result column `i` of a statement with `columnas` columns in
// all, as in SentenciaTipada::escalas; -1 when it is not an amount.
int escalaDeColumna(const SentenciaTipada& s, int i, int columnas);

}  // namespace caja
