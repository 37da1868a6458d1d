#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "caja/base/Currency.h"
#include "caja/dialogs/modelo/DescriptorMedio.h"
#include "caja/dialogs/modelo/Vuelto.h"
#include "caja/movement/CVarelta.h"
#include "caja/service/Recordset.h"

namespace caja {

// The settings that shape one collection, read once when it opens.
struct OpcionesCobro {
  bool AutoFill = false;
  bool AutoCierre = false;
  bool ExcluirIVAIGTF = false;
  bool ResaltarVuelto = false;
  bool IVA2602 = false;
  bool dividirVuelto = false;  // "VueltoDetallado" or "acreditarVueltos": the change-split dialog
  bool mostrarVuelto = true;   // "NoMostrarVuelto" "0" and no detailed or credited change
  Currency MaximaUnidadMonetaria = Currency::fromUnits(10000);
  Currency Tolerancia;
  std::string SimboloMEX = "$";
  std::string CodigoMEX = "USD";
  std::string nombreIVA = "I.V.A.:";
  std::string controlAutofill = "txEfectivo";

  static OpcionesCobro leer();
};

// The texts of the labels a recomputation refreshes.
struct Pantalla {
  std::string IGTF, lblTotal, lblNetoMN, lblNetoUSD, lblVuelto, lblVueltoUSD, lblVueltoMixto;
  Currency vuelto;  // received − net: negative while money is missing
};

// The collection behind `frmVarelta`, without widgets: the amounts of the
// sale, one descriptor per payment input, and the arithmetic of received
// amount, IGTF, change and acceptance. The dialog types into it and shows what
// it computes.
class CobroVarelta {
 public:
  static constexpr std::size_t kMaximoEntradas = 15;

  CobroVarelta(Currency MontoVenta, Currency MontoIVA, Currency MontoCredito, double tipoCambio,
               double tasaIGTF, OpcionesCobro opciones);

  // One input per row of the active methods, fifteen at most (later rows are
  // silently ignored); the rows of "SELECT * FROM MediosPago WHERE ...".
  void agregarMedios(Recordset& rs);
  static const char* const kConsultaMedios;

  // Amounts as opened, and the working state.
  Currency MontoVenta, MontoIVA, MontoCredito;
  Currency neto;         // net amount; each recomputation adds the IGTF
  Currency netoTrabajo;  // net amount the arithmetic starts from
  Currency montoIGTFApertura;
  double tipoCambio;
  double tasaIGTF;
  OpcionesCobro opciones;
  Currency efectivo;  // txEfectivo
  std::shared_ptr<CDetalleIngreso> particularesEfectivo;
  std::vector<DescriptorMedio> medios;

  // Opening labels, "#,##0.00".
  std::string textoMonto(Currency c) const;
  std::string netoUSD(Currency c) const;

  // The value of input `i` in national currency.
  Currency valorEnMN(std::size_t i) const;
  Currency TotalRecibido() const;
  Currency valorIGTF() const;
  // Refreshes the net amount and computes every label.
  Pantalla recalcular();
  // The amount counts as complete within one cent.
  static bool completo(Currency vuelto) { return vuelto >= Currency::fromRaw(-100); }

  // The space bar: completes input `i` (nullopt for txEfectivo) with what is missing.
  void completar(std::optional<std::size_t> i);
  // Status-bar help of the focused input (nullopt for txEfectivo).
  std::string ayuda(std::optional<std::size_t> i) const;
  // The plausibility questions when leaving an input, or "" when none is due.
  std::string preguntaExceso(std::optional<std::size_t> i) const;
  // The tax change: new tax, net recomputed from the sale alone, inputs cleared.
  void cambiarIVA(Currency nuevoIVA);
  // The AutoFill of the first activation.
  void autoLlenar();

  // The particulars of input `i` (nullopt for national cash), made on first
  // use with the input's method and current amount, for the detail dialog.
  std::shared_ptr<CDetalleIngreso> particulares(std::optional<std::size_t> i);
  // What the detail dialog accepted becomes the input's amount.
  void tomarParticulares(std::optional<std::size_t> i);

  // Builds the movement on acceptance; nullptr, after telling the cashier
  // why, when it cannot be accepted. `vuelto` breaks the change down.
  std::shared_ptr<CVarelta> LlenarVarelta(Vuelto& vuelto);
  std::shared_ptr<CVarelta> resultado;

 private:
  Currency recibidoSinAjuste(Currency& extranjero) const;
  double tolerancia() const;
  bool validarEnHost(std::shared_ptr<CVarelta>& mov) const;
};

}  // namespace caja
