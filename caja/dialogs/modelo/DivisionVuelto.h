#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "caja/base/Collection.h"
#include "caja/base/Currency.h"
#include "caja/movement/CDetalleIngreso.h"

namespace caja {

class CobroVarelta;

// A way of handing change back: national cash ("EFE"), or a cash-like method
// of the collection, foreign ones in their own currency.
struct EntradaVuelto {
  std::string codigo;
  std::string titulo;
  double factor = 1.0;  // national currency per unit; 1 for national cash
  bool extranjera = false;
  Currency nominal;  // what the cashier hands back, in the method's unit
};

// The change of one collection split over the methods that can give it and,
// when the shop allows it, an amount credited to the customer instead. The
// arithmetic behind frmDefinirVuelto, without widgets.
class DivisionVuelto {
 public:
  // `cobro` gives the methods and the drawer's rate; `vuelto` is the change in
  // national currency; `conCredito` offers the credited amount.
  DivisionVuelto(const CobroVarelta& cobro, Currency vuelto, bool conCredito);

  Currency vuelto;
  std::vector<EntradaVuelto> entradas;  // national cash first
  bool conCredito;
  Currency credito;

  // The drawer's rate: foreign cash at it is shown with the foreign symbol.
  double tipoCambio() const { return tipoCambio_; }
  // The index that stands for the credited amount, after the entries.
  std::size_t indiceCredito() const { return entradas.size(); }
  // The entry of a method by its code in any letter case.
  std::optional<std::size_t> indiceDe(const std::string& codigo) const;
  Currency enMN(std::size_t i) const;
  // The change not yet given out or credited.
  Currency restante() const;

  // The suggestion of the collection dialog: whole notes of the foreign cash
  // at the drawer's rate, the rest in national cash rounded to the change
  // step; nothing credited.
  void sugerir();
  // Space: entry `i` (or the credit) takes what is still to be given out,
  // foreign amounts in whole cents.
  void completar(std::size_t i);

  // Why the split cannot be accepted, and the field at fault; nullopt when
  // it adds up to the change within a cent (or half the change step).
  struct Rechazo {
    std::string mensaje;
    std::optional<std::size_t> campo;
  };
  std::optional<Rechazo> validar() const;

  // The change lines, negative as money leaving the drawer.
  std::shared_ptr<Collection<CDetalleIngreso>> lineas() const;

 private:
  double tipoCambio_;
};

}  // namespace caja
