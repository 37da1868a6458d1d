#pragma once

#include <memory>
#include <string>

#include "base/Currency.h"
#include "base/Variant.h"
#include "service/Factoria.h"

namespace caja {

// Process-wide state of the component, set by `CServiciosCaja::Init` and
// shared by every instance until the component is unloaded.
extern std::shared_ptr<Factoria> gFactoria;
extern std::shared_ptr<TemaUI> gTemaUI;
extern std::shared_ptr<Empresa> gEmpresa;
extern std::string gFormatoMEX;

inline constexpr const char* kFormatoMEXPorDefecto = "$#,##0.00";

// The host factory; error 91 before `Init`.
Factoria& factoria();

// Keeps the host factory, its theme and its company object. A company object
// that cannot be created leaves the default foreign-currency format.
void InicializarEntorno(const std::shared_ptr<Factoria>& host);

// The till's exchange rate; a host rate of exactly 0 means none and reads as 1.0.
double ObtenerTipoCambioCaja();
// The IGTF percentage when the company is a special taxpayer, else 0.
double ObtenerPorcentajeIGTF();
std::string LeerSimboloMEX();
std::shared_ptr<Objeto> CargarIconoArchivo(const std::string& archivo);
// An amount of change rounded to the step "RedondeoVuelto" (halves up) and
// written in the "Currency" format.
std::string FormatearVuelto(const Variant& monto);

}  // namespace caja
