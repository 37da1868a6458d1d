#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "caja/base/Exporta.h"

namespace caja {

// The kinds of column the schema uses, named by what they hold rather than
// by any one database's type names.
enum class TipoColumna {
  Identidad,    // integer key handed out by the database
  Entero,       // 32-bit integer
  Corto,        // 16-bit integer
  Dinero,       // currency: exact, four decimals, inside the currency range
  Flotante,     // double (exchange rates, percentages)
  FechaHora,    // date and time to the second
  Texto,        // compared without regard to letter case
  TextoExacto,  // compared byte for byte (hashes, formats, log text)
  Bit,          // boolean flag
};

// One column of the schema, written once for every database.
struct CAJA_INTERNO Columna {
  std::string_view nombre;
  TipoColumna tipo;
  std::string_view resto;  // constraints after the type: NOT NULL, DEFAULT, REFERENCES...
};

// A table of the schema: its columns in order and its table constraints.
struct CAJA_INTERNO Tabla {
  std::string_view nombre;
  std::vector<Columna> columnas;
  std::string_view restricciones;  // table constraints, such as a composite key
};

// An index on `columnas` (a comma-separated list) of `tabla`.
struct CAJA_INTERNO Indice {
  std::string_view nombre;
  std::string_view tabla;
  std::string_view columnas;
};

// What differs between the databases the component's SQL Server dialect is
// mapped onto. Everything else (literal scanning, placeholder numbering, the
// shape of the schema) is shared, so the two hosts cannot drift apart.
struct CAJA_INTERNO Dialecto {
  std::string_view fuente;             // the host named as the source of its errors
  std::string_view identidadConexion;  // replaces @@IDENTITY
  bool marcasNumeradas;                // '?' becomes $1..$n
  std::string_view tipoIdentidad, tipoEntero, tipoCorto, tipoDinero, tipoFlotante, tipoFechaHora,
      tipoTexto, tipoTextoExacto, tipoBit;
  std::string_view chequeoDinero;  // CHECK keeping a money column in range; {c} is the column
};

// SQLite: money as integer ten-thousandths, which its integer arithmetic keeps
// exact; a sum that overflows becomes REAL and the check refuses it.
extern CAJA_INTERNO const Dialecto kDialectoSqlite;
// PostgreSQL: money as NUMERIC(19,4), limited to the currency range.
extern CAJA_INTERNO const Dialecto kDialectoPostgres;

// Limits of the currency type as SQL text and as ten-thousandths. The most
// negative int64 is left out so that the range is symmetric.
inline constexpr std::string_view kMaximoDineroTexto = "922337203685477.5807";
inline constexpr long long kMaximoDineroDiezmilesimas = 9223372036854775807LL;

// The most placeholders a statement may number: SQLite's default limit,
// well inside what the server takes.
inline constexpr int kMaximoMarcas = 32766;

// Placeholders numbered as SQLite numbers them, so that both databases bind
// the same value to the same placeholder: '?' takes the number after the
// highest so far, '?NNN' the NNN-th, and a name (':a', '@a', '$a') the number
// of its first use. A number outside 1..kMaximoMarcas raises kErrorBaseDatos.
class CAJA_INTERNO NumeracionMarcas {
 public:
  explicit NumeracionMarcas(std::string_view fuente) : fuente_(fuente) {}
  // The 1-based number of the placeholder written `texto`.
  int numero(std::string_view texto);
  // The highest number given: how many values the statement takes.
  int cuantas() const { return mayor_; }

 private:
  std::string_view fuente_;
  int mayor_ = 0;
  std::vector<std::pair<std::string, int>> nombres_;
};

// Length of what no placeholder is read inside, starting at `i`: a string
// literal ('it''s'), a quoted name ("a", `a` or [a]), a comment, or the
// server's cast "::"; 0 when none starts there. The dialect's translation
// and the money reader both scan with it, so that they number the same
// placeholders.
CAJA_INTERNO std::size_t largoIntocable(std::string_view sql, std::size_t i);

// Length of the placeholder that starts at `i` ('?', '?NNN', ':name', '@name',
// '$name'), or 0 when none does.
CAJA_INTERNO std::size_t largoMarca(std::string_view sql, std::size_t i);

// The statement as the database must receive it: @@IDENTITY mapped to the
// connection's own last identity and, where the dialect numbers them, each
// placeholder written $N with its SQLite number. String literals, quoted
// identifiers and comments pass untouched. `marcas` receives the number of
// values the statement takes.
CAJA_INTERNO std::string traducirSql(std::string_view sql, const Dialecto& dialecto, int& marcas);

// CREATE TABLE IF NOT EXISTS for `tabla`, under the name `nombre` (the
// table's own when empty).
CAJA_INTERNO std::string crearTabla(const Tabla& tabla, const Dialecto& dialecto,
                                    std::string_view nombre = {});
CAJA_INTERNO std::string crearIndice(const Indice& indice);
// ALTER TABLE ... ADD COLUMN for the column `columna` of `tabla`; IF NOT
// EXISTS where the dialect has it (the server's).
CAJA_INTERNO std::string agregarColumna(const Tabla& tabla, std::string_view columna,
                                        const Dialecto& dialecto);
// For a table with money columns on the embedded file: a view "v_<table>"
// with every column of the table, the amounts as exact decimal text
// ("116.5000"), written with SQLite's own functions so that any reader of the
// file (the sqlite3 tool, a report program) gets them. Empty for a table
// without money.
CAJA_INTERNO std::string crearVistaDecimal(const Tabla& tabla);

// The schema both hosts create: every table of the component and of the
// substitute host, then those the embedding program added, in an order where
// each table comes after those it references.
CAJA_INTERNO const std::vector<Tabla>& tablasEsquema();
CAJA_INTERNO const std::vector<Indice>& indicesEsquema();
// The schema's table named `nombre`; kErrorBaseDatos when there is none.
CAJA_INTERNO const Tabla& tablaDelEsquema(std::string_view nombre);
// Columns added to a table after databases were made with it: (table, column).
CAJA_INTERNO const std::vector<std::pair<std::string_view, std::string_view>>& columnasAgregadas();

// What a program that embeds the component keeps of its own in the same
// database: its tables (after the component's), their indexes, the columns
// it added later, and on a server its functions, created before the tables.
// Both hosts create it with the component's schema, in the same
// transaction; `testigo` names a function (as "f(text)") whose absence makes
// a server database take the functions again.
struct EsquemaPrograma {
  std::vector<Tabla> tablas;
  std::vector<Indice> indices;
  std::vector<std::pair<std::string_view, std::string_view>> agregadas;
  std::vector<const char*> funciones;
  std::string testigo;
};
// Adds the program's schema to every database opened from now on; called
// once, before the first one is opened.
CAJA_INTERNO void agregarEsquemaPrograma(const EsquemaPrograma& esquema);
// The server functions of the program's schema, and its witness (empty when
// none was added).
CAJA_INTERNO const std::vector<const char*>& funcionesPrograma();
CAJA_INTERNO const std::string& testigoPrograma();

}  // namespace caja
