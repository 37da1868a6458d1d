#include "app/acciones/Devolucion.h"

#include <gtest/gtest.h>

#include "app/linea/Comandos.h"
#include "tests/support/HostPrueba.h"

namespace caja::app {
namespace {

using test::cur;

// A sale, its lines, and what it was made of when the till kept it.
void mover(HostSql& db, std::int32_t numero, const char* clase, const char* deb, const char* cre,
           const char* igtf, std::vector<std::pair<const char*, const char*>> lineas,
           const char* importes = nullptr) {
  db.ExecuteSQL(
      "INSERT INTO MovimientosCaja (Fecha, TipoDocumento, NumeroDocumento, Debitos, Creditos, "
      "MontoIGTF, Clasificacion) VALUES (getdate(), 'FAC', ?, ?, ?, ?, ?)",
      {numero, cur(deb), cur(cre), cur(igtf), clase});
  const Variant id = db.ReadScalar("SELECT MAX(TransID) FROM MovimientosCaja");
  for (const auto& [medio, monto] : lineas)
    db.ExecuteSQL(
        "INSERT INTO DetallesVarelta (TransID, Medio, Monto, MontoNominal) VALUES (?, ?, ?, ?)",
        {id, medio, cur(monto), cur(monto)});
  if (importes)
    db.ExecuteSQL("INSERT INTO hostImportes (TransID, Base, IVA, Credito) VALUES (?, ?, 0, 0)",
                  {id, cur(importes)});
}

// Invoice 1: 116.00 (16.00 cash, 100.00 by card), 30.00 of it refunded in
// cash. Invoice 2 was voided. Invoice 3, saved before its amounts were
// kept, charged 58.00 with 3.00 of IGTF: 55.00 refundable.
TEST(Devolucion, ARefundAnswersToWhatItsDocumentCharged) {
  test::ConBase base;
  HostSql& db = *base.db;
  mover(db, 1, "", "116", "0", "0", {{"EFE", "16"}, {"TDC", "100"}}, "116");
  mover(db, 1, kDevolucion, "0", "30", "0", {{"EFE", "-30"}}, "30");
  mover(db, 2, "", "40", "0", "0", {{"EFE", "40"}}, "40");
  db.ExecuteSQL(
      "INSERT INTO hostAnulaciones (TransID, Fecha, Operador, Motivo) VALUES (3, "
      "getdate(), 'ANA', '')");
  mover(db, 3, "", "58", "0", "3", {{"USD", "58"}});
  const struct {
    std::int32_t documento;
    const char* total;
    std::map<std::string, Currency> porMedio;
    bool forzada;
    const char* rechazo;  // nullptr: it goes
  } casos[] = {
      {1, "86", {{"EFE", cur("86")}}, false, nullptr},
      {1, "86.01", {}, false, "cobró 116.00 y ya se devolvió 30.00: no caben 86.01 más"},
      {1, "86", {{"TDC", cur("86")}}, false, nullptr},
      {1, "20", {{"tdc", cur("20")}}, false, nullptr},
      {1, "5", {{"USD", cur("5")}}, false, "se pagó con 0.00 en USD"},
      {1, "86.01", {}, true, nullptr},
      {2, "1", {}, false, "El documento FAC 2 no consta cobrado"},
      {9, "1", {}, false, "no consta cobrado"},
      {9, "1", {}, true, nullptr},
      {3, "55", {{"USD", cur("55")}}, false, nullptr},
      {3, "55.01", {}, false, "cobró 55.00"},
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(std::to_string(c.documento) + " " + c.total);
    const CobroDocumento cobro = cobroDe(db, "FAC", c.documento);
    const std::string documento = "FAC " + std::to_string(c.documento);
    if (!c.rechazo) {
      EXPECT_NO_THROW(
          exigirDevolucionCubierta(cobro, documento, cur(c.total), c.porMedio, c.forzada));
      continue;
    }
    try {
      exigirDevolucionCubierta(cobro, documento, cur(c.total), c.porMedio, c.forzada);
      ADD_FAILURE() << "no se rechazó";
    } catch (const Rechazo& e) {
      EXPECT_NE(std::string(e.what()).find(c.rechazo), std::string::npos) << e.what();
    }
  }
}

}  // namespace
}  // namespace caja::app
