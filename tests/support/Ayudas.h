#pragma once

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "caja/base/CajaError.h"
#include "caja/base/Currency.h"
#include "caja/base/Regional.h"
#include "caja/base/Variant.h"
#include "caja/dialogs/modelo/CobroVarelta.h"
#include "caja/dialogs/modelo/DescriptorMedio.h"
#include "caja/movement/CVarelta.h"

namespace caja {
// Failures show an amount as its text, not its bytes.
inline void PrintTo(const Currency& c, std::ostream* os) {
  *os << c.toMachineText();
}
}  // namespace caja

namespace caja::test {

// A currency from its machine text; the test's own literal.
inline Currency cur(const char* texto) {
  return Currency::parse(texto).value();
}

// A list of values (statement arguments, a recordset row) as Variants.
template <class... T>
std::vector<Variant> valores(T&&... v) {
  return {Variant(std::forward<T>(v))...};
}

// The input of a payment method in the collection, titled with its code.
inline DescriptorMedio descriptor(const char* codigo, double factor, const char* tag,
                                  ClaseIngresoSesion clase = ClaseIngresoSesion::OtrosMedios) {
  DescriptorMedio d;
  d.Codigo = d.Titulo = codigo;
  d.TextoAyuda = "Pago con " + std::string(codigo);
  d.Factor = factor;
  d.Tag = tag;
  d.Clase = clase;
  return d;
}

// A sale of 630.00 paid with 20 USD at 36.50 (730.00) and 18.90 of IGTF: the
// change is 81.10. Dollars are cash at the drawer's rate, euros a foreign
// method of their own factor, the card gives no change.
inline CobroVarelta cobroConVuelto() {
  CobroVarelta cobro(cur("630"), {}, {}, 36.5, 3.0, OpcionesCobro{});
  cobro.medios.push_back(descriptor("USD", 36.5, "USD*", ClaseIngresoSesion::EfectivoME));
  cobro.medios.push_back(descriptor("EUR", 39.8, "ME"));
  cobro.medios.push_back(descriptor("TDC", 1.0, "", ClaseIngresoSesion::TTCVisa));
  return cobro;
}

// A payment line of `medio` for `monto`, its nominal the same unless given,
// added to `mov`.
inline std::shared_ptr<CDetalleIngreso> agregar(CVarelta& mov, const char* medio, const char* monto,
                                                const char* nominal = nullptr) {
  auto d = std::make_shared<CDetalleIngreso>();
  d->medio = medio;
  d->Monto = cur(monto);
  d->montoNominal = cur(nominal ? nominal : monto);
  mov.colDetalles->Add(d);
  return d;
}

inline std::shared_ptr<CDetalleDenominacion> denominacion(const char* valor, std::int16_t n) {
  auto d = std::make_shared<CDetalleDenominacion>();
  d->Denominacion = cur(valor);
  d->CantidadRecibida = n;
  return d;
}

// The number of the CajaError `f` raises, or 0 when it raises none.
inline long numeroError(const std::function<void()>& f) {
  try {
    f();
  } catch (const CajaError& e) {
    return e.number();
  }
  return 0;
}

// "number|source|description" of the CajaError `f` raises, or "sin error":
// one string compares all three at once.
inline std::string errorCompleto(const std::function<void()>& f) {
  try {
    f();
  } catch (const CajaError& e) {
    return std::to_string(e.number()) + "|" + e.source() + "|" + e.description();
  }
  return "sin error";
}

// Sets the regional settings for one test and puts the defaults back after.
class RegionalTemporal {
 public:
  explicit RegionalTemporal(const Regional& valor) { setRegional(valor); }
  ~RegionalTemporal() { setRegional(Regional{}); }
};

// A fresh folder under the system's temporary directory, removed afterwards.
class CarpetaTemporal {
 public:
  CarpetaTemporal();
  ~CarpetaTemporal();
  const std::filesystem::path& ruta() const { return ruta_; }

 private:
  std::filesystem::path ruta_;
};

}  // namespace caja::test
