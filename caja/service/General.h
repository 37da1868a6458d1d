#pragma once

#include <memory>
#include <string>

#include "caja/base/Collection.h"
#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Variant.h"
#include "caja/catalog/CMedioPago.h"
#include "caja/service/Factoria.h"

namespace caja {

// Process-wide state of the component, set by `CServiciosCaja::Init` and
// shared by every instance until the component is unloaded.
extern CAJA_INTERNO std::shared_ptr<Factoria> gFactoria;
extern CAJA_INTERNO std::shared_ptr<TemaUI> gTemaUI;
extern CAJA_INTERNO std::shared_ptr<Empresa> gEmpresa;
extern CAJA_INTERNO std::string gFormatoMEX;
// Payment methods by code (letter case ignored): created on first use, never emptied.
extern CAJA_INTERNO std::shared_ptr<Collection<CMedioPago>> gMediosPago;

inline constexpr const char* kFormatoMEXPorDefecto = "$#,##0.00";

// The host factory; error 91 before `Init`.
CAJA_INTERNO Factoria& factoria();

// Keeps the host factory, its theme and its company object. A company object
// that cannot be created leaves the default foreign-currency format.
CAJA_INTERNO void InicializarEntorno(const std::shared_ptr<Factoria>& host);

// The till's exchange rate; a host rate of exactly 0 means none and reads as 1.0.
CAJA_INTERNO double ObtenerTipoCambioCaja();
// The IGTF percentage when the company is a special taxpayer, else 0.
CAJA_INTERNO double ObtenerPorcentajeIGTF();
CAJA_INTERNO std::string LeerSimboloMEX();
// The method of a code through the cache. "EFE" is built in, without a table
// row; an unknown code gives nullptr and is not cached, so it is looked up
// again. A database error while the method loads gives nullptr too, and no error.
CAJA_INTERNO std::shared_ptr<CMedioPago> ObtenerMedioPago(std::string& codigo);
// Whether a method reaches the drawer: foreign cash, national cash, or any
// attribute bit at all: the drawer balances of shops count every method
// with attributes, and keep doing so. The cash movement uses a narrower rule
// of its own. Non-zero means true.
CAJA_INTERNO std::int32_t EsMedioEfectivo(const CMedioPago& medio);
CAJA_INTERNO std::shared_ptr<Objeto> CargarIconoArchivo(const std::string& archivo);
// An amount of change rounded to the step "RedondeoVuelto" (halves up) and
// written in the "Currency" format.
CAJA_INTERNO std::string FormatearVuelto(const Variant& monto);
// The step "RedondeoVuelto" (default 0.01), and an amount of change rounded to it.
CAJA_INTERNO Currency PasoVuelto();
CAJA_INTERNO Currency RedondearVuelto(const Variant& monto);

}  // namespace caja
