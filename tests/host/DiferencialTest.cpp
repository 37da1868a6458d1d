// Report SQL written by hand must answer the same on the embedded file as on
// the server, or be refused on the file with its reason: random statements
// over the money columns (aggregates, arithmetic with literals and bound
// values, comparisons, rows, GROUP BY/HAVING, subqueries, CASE, COALESCE,
// UNION, CAST, ROUND) run on the same sales in both, their rows compared as
// sets of typed values. CAJA_DIFERENCIAL sets how many (3,000 by default);
// CAJA_DIFERENCIAL_SEMILLA the first seed.
#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>

#include "caja/base/Conversiones.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;

class Generador {
 public:
  explicit Generador(unsigned semilla) : azar_(semilla) {}

  struct Sentencia {
    std::string sql;
    Argumentos args;
  };

  Sentencia sentencia() {
    args_.clear();
    std::string sql;
    switch (entre(0, 6)) {
      case 0:
        sql = "SELECT " + agregado("d") + ", " + agregado("d") + " FROM DetallesVarelta d" +
              donde("d");
        break;
      case 1:
        sql = "SELECT d.Medio, " + agregado("d") + " FROM DetallesVarelta d" + donde("d") +
              " GROUP BY d.Medio" +
              (moneda() ? " HAVING " + agregado("d") + ' ' + comparador() + ' ' + literal() : "");
        break;
      case 2:
        sql = "SELECT d.Id, " + monto("d", 2) + " FROM DetallesVarelta d" + donde("d");
        break;
      case 3:
        sql = "SELECT m.TransID, (SELECT " + agregado("d") +
              " FROM DetallesVarelta d WHERE d.TransID = m.TransID) FROM MovimientosCaja m" +
              donde("m");
        break;
      case 4:
        sql = "SELECT " + monto("d", 1) + " FROM DetallesVarelta d" + donde("d") +
              " UNION ALL SELECT " + monto("m", 1) + " FROM MovimientosCaja m" + donde("m");
        break;
      case 5:
        sql = "SELECT t.TransID, " + agregado("t") +
              " FROM (SELECT TransID, SUM(Monto) AS total, MAX(MontoNominal) AS nominal FROM "
              "DetallesVarelta GROUP BY TransID) t" +
              donde("t") + " GROUP BY t.TransID";
        break;
      default:
        sql = "SELECT " + agregado("d") +
              " FROM DetallesVarelta d JOIN MovimientosCaja m ON "
              "m.TransID = d.TransID" +
              donde(moneda() ? "d" : "m");
    }
    return {sql, args_};
  }

 private:
  int entre(int desde, int hasta) { return std::uniform_int_distribution(desde, hasta)(azar_); }
  bool moneda() { return entre(0, 1) == 0; }

  std::string columna(const std::string& t) {
    static const std::vector<std::string> lineas{"Monto", "MontoNominal"};
    static const std::vector<std::string> movimientos{"Debitos", "Creditos", "MontoIGTF"};
    static const std::vector<std::string> totales{"total", "nominal"};
    const auto& cs = t == "d" ? lineas : t == "m" ? movimientos : totales;
    return t + "." + cs[static_cast<std::size_t>(entre(0, static_cast<int>(cs.size()) - 1))];
  }

  // An amount as a shop writes it: up to four decimals, a few with five.
  std::string literal() {
    const long long raw = entre(-20000, 2000000);
    std::string texto = Currency::fromRaw(raw).toMachineText();
    if (entre(0, 9) == 0)
      texto += texto.find('.') == std::string::npos ? ".00005" : "5";
    return texto;
  }

  std::string factor() {
    static const char* const kFactores[] = {"2", "3", "0.5", "0.015", "1.16", "0.07", "-1", "36.5"};
    return kFactores[entre(0, 7)];
  }

  // Numbered, since the text is not built in the order it is drawn.
  std::string marca(const char* valor) {
    args_.emplace_back(cur(valor));
    return "?" + std::to_string(args_.size());
  }

  std::string monto(const std::string& t, int hondura) {
    if (hondura <= 0)
      return columna(t);
    const std::string m = monto(t, hondura - 1);
    switch (entre(0, 12)) {
      case 0:
        return m + " + " + literal();
      case 1:
        return m + " - " + literal();
      case 2:
        return m + " * " + factor();
      case 3:
        return factor() + " * " + m;
      case 4:
        return m + " / " + factor();
      case 5:
        return m + " * " + marca("0.15");
      case 6:
        return "ROUND(" + m + ", " + std::to_string(entre(0, 4)) + ")";
      case 7:
        return "CAST(" + m + " AS DECIMAL(19," + std::to_string(entre(0, 4)) + "))";
      case 8:
        return "CASE WHEN " + condicion(t) + " THEN " + m + " ELSE " + literal() + " END";
      case 9:
        return "COALESCE(" + m + ", " + literal() + ")";
      case 10:
        return "ABS(-(" + m + "))";
      case 11:
        return "(" + m + ") / NULLIF(" + columna(t) + ", 0)";
      default:
        return m + " + " + marca("0.0001");
    }
  }

  std::string agregado(const std::string& t) {
    const std::string m = monto(t, entre(0, 2));
    switch (entre(0, 5)) {
      case 0:
        return "SUM(" + m + ")";
      case 1:
        return "MIN(" + m + ")";
      case 2:
        return "MAX(" + m + ")";
      case 3:
        return "AVG(" + m + ")";
      case 4:
        return "COUNT(*)";
      default:
        return "ROUND(SUM(" + m + ") / 3, 2)";
    }
  }

  std::string comparador() {
    static const char* const kComparadores[] = {"=", "<>", "<", "<=", ">", ">="};
    return kComparadores[entre(0, 5)];
  }

  std::string condicion(const std::string& t) {
    const std::string m = monto(t, entre(0, 1));
    switch (entre(0, 5)) {
      case 0:
        return m + ' ' + comparador() + ' ' + literal();
      case 1:
        return m + ' ' + comparador() + " -" + marca("-16.5");
      case 2:
        return m + " BETWEEN " + literal() + " AND " + literal();
      case 3:
        return m + " IN (" + literal() + ", " + columna(t) + ", 50)";
      case 4:
        return "(" + columna(t) + ", " + columna(t) + ") = (" + literal() + ", " + literal() + ")";
      default:
        return m + " > 0 AND " + columna(t) + " < " + literal();
    }
  }

  std::string donde(const std::string& t) {
    if (entre(0, 2) == 0)
      return {};
    return " WHERE " + condicion(t);
  }

  std::mt19937 azar_;
  Argumentos args_;
};

// A row's values as comparable text: the type and the exact value.
std::string valor(const Variant& v) {
  switch (v.type()) {
    case VarType::Null:
    case VarType::Empty:
      return "nulo";
    case VarType::Currency:
      return "moneda " + v.asCurrency().toMachineText();
    case VarType::Integer:
    case VarType::Long:
      return "entero " + std::to_string(CLng(v));
    default:
      return "otro " + CStr(v);
  }
}

std::multiset<std::string> filas(HostSql& db, const Generador::Sentencia& s) {
  std::multiset<std::string> r;
  for (auto rs = db.openrecordset(s.sql, s.args); !rs->Eof(); rs->MoveNext()) {
    std::string fila;
    for (int i = 0; i < rs->FieldCount(); ++i)
      fila += valor(rs->Fields(i)) + "; ";
    r.insert(fila);
  }
  return r;
}

void sembrar(HostSql& db, unsigned semilla) {
  std::mt19937 azar(semilla);
  const auto monto = [&] {
    return Variant(Currency::fromRaw(std::uniform_int_distribution(0, 5000000)(azar) *
                                     (std::uniform_int_distribution(0, 3)(azar) ? 1 : 25)));
  };
  static const char* const kMedios[] = {"EFE", "USD", "TDD", "CHQ"};
  for (int t = 1; t <= 30; ++t) {
    db.ExecuteSQL("INSERT INTO MovimientosCaja (Debitos, Creditos, MontoIGTF) VALUES (?, ?, ?)",
                  {monto(), monto(), t % 4 ? monto() : Variant::Null()});
    for (int l = 0; l < 1 + t % 3; ++l)
      db.ExecuteSQL(
          "INSERT INTO DetallesVarelta (TransID, Medio, Monto, MontoNominal) VALUES (?, ?, ?, ?)",
          {Variant(t), Variant(kMedios[(t + l) % 4]), monto(), monto()});
  }
}

TEST(Diferencial, ReportsReadTheSameOnTheFileAndOnTheServerOrAreRefused) {
  test::ConBase archivo(test::Motor::Sqlite);
  test::ConBase servidor(test::Motor::Postgres);
  if (!servidor.db)
    GTEST_SKIP() << "sin servidor PostgreSQL de prueba (CAJA_PRUEBA_PG)";
  sembrar(*archivo.db, 7);
  sembrar(*servidor.db, 7);
  const char* cuantas = std::getenv("CAJA_DIFERENCIAL");
  const char* semilla = std::getenv("CAJA_DIFERENCIAL_SEMILLA");
  const int total = cuantas ? std::atoi(cuantas) : 3000;
  Generador generador(semilla ? static_cast<unsigned>(std::atoi(semilla)) : 2026);
  int iguales = 0, rehusadas = 0, diferentes = 0;
  for (int i = 0; i < total; ++i) {
    const Generador::Sentencia s = generador.sentencia();
    std::multiset<std::string> enServidor;
    std::string errorServidor;
    try {
      enServidor = filas(*servidor.db, s);
    } catch (const CajaError& e) {
      errorServidor = e.description();
    }
    try {
      const std::multiset<std::string> enArchivo = filas(*archivo.db, s);
      if (errorServidor.empty() && enArchivo == enServidor) {
        ++iguales;
        continue;
      }
      ++diferentes;
      ADD_FAILURE() << s.sql << "\n  servidor: "
                    << (errorServidor.empty() ? std::to_string(enServidor.size()) + " filas"
                                              : errorServidor)
                    << (enServidor.empty() ? "" : ", " + *enServidor.begin())
                    << "\n  archivo: " << enArchivo.size() << " filas"
                    << (enArchivo.empty() ? "" : ", " + *enArchivo.begin());
    } catch (const CajaError& e) {
      // The file's own refusal names its reason; the server's refusal is shared.
      EXPECT_EQ(e.number(), kErrorBaseDatos) << s.sql;
      EXPECT_FALSE(e.description().empty());
      if (std::getenv("CAJA_DIFERENCIAL_MOTIVOS"))
        std::cout << e.description() << "\n";
      ++rehusadas;
    }
    if (diferentes >= 20)
      break;
  }
  std::cout << iguales << " iguales, " << rehusadas << " rehusadas en el archivo, " << diferentes
            << " diferentes\n";
  EXPECT_GT(iguales, total * 3 / 4);
}

// Statements that once read differently on the file, each kept as a row:
// a count compared with a bound amount (bound as text, SQLite ordered it
// above every number), and an average times a factor, which the server
// keeps exact to sixteen digits before the product (the six amounts of
// movement 31 average 17.2052833..., times 3 is 51.61584999... there,
// 51.6158 read back).
TEST(Diferencial, StatementsThatOnceDifferedReadTheSame) {
  test::ConBase archivo(test::Motor::Sqlite);
  test::ConBase servidor(test::Motor::Postgres);
  if (!servidor.db)
    GTEST_SKIP() << "sin servidor PostgreSQL de prueba (CAJA_PRUEBA_PG)";
  for (HostSql* db : {archivo.db.get(), servidor.db.get()}) {
    sembrar(*db, 7);
    db->ExecuteSQL("INSERT INTO MovimientosCaja (Debitos, Creditos) VALUES (0, 0)");
    for (const char* nominal : {"17.2052", "17.2052", "17.2052", "17.2052", "17.2052", "17.2057"})
      db->ExecuteSQL(
          "INSERT INTO DetallesVarelta (TransID, Medio, Monto, MontoNominal) VALUES (31, 'USD', "
          "?, ?)",
          {cur(nominal), cur(nominal)});
  }
  const Generador::Sentencia casos[] = {
      {"SELECT COUNT(*) FROM DetallesVarelta HAVING COUNT(*) > ?", {cur("0")}},
      {"SELECT COUNT(*) FROM DetallesVarelta HAVING COUNT(*) > ?", {cur("1000.5")}},
      {"SELECT COUNT(*) FROM DetallesVarelta WHERE TransID < ?", {cur("2.5")}},
      {"SELECT AVG(MontoNominal) * 3 FROM DetallesVarelta WHERE TransID = 31", {}},
      {"SELECT 3 * AVG(MontoNominal) FROM DetallesVarelta WHERE TransID = 31", {}},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.sql);
    EXPECT_EQ(filas(*archivo.db, c), filas(*servidor.db, c));
  }
  EXPECT_EQ(filas(*servidor.db, casos[3]), std::multiset<std::string>{"moneda 51.6158; "});
}

}  // namespace
}  // namespace caja
