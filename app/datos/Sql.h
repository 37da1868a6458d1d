#pragma once

#include <string>

// Pieces of SQL the queries of the till's data share, for MovimientosCaja M.
namespace caja::app {

// The movement stands: it has no void. The one place that says so.
inline std::string enPie(const char* movimiento = "M") {
  return std::string("NOT EXISTS (SELECT 1 FROM hostAnulaciones A WHERE A.TransID = ") +
         movimiento + ".TransID)";
}
// 1 for a voided movement, as the column "Anulado".
inline std::string anuladoComo() {
  return "CASE WHEN " + enPie() + " THEN 0 ELSE 1 END AS Anulado";
}
// A sale, and a sale of a document.
inline constexpr const char* kVenta = "COALESCE(M.Clasificacion, '') = ''";
inline constexpr const char* kVentaConDocumento =
    "COALESCE(M.Clasificacion, '') = '' AND COALESCE(M.TipoDocumento, '') <> '' AND "
    "M.NumeroDocumento <> 0";
// In a till's journal: the movement waits to be sent.
inline constexpr const char* kSinEnviar =
    "M.TransID IN (SELECT TransID FROM hostClaves WHERE TransIDServidor IS NULL)";

}  // namespace caja::app
