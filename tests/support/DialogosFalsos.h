#pragma once

#include <string>

#include "caja/service/DialogosCaja.h"

namespace caja::test {

// Dialogs that record how they were opened and answer from fields.
class DialogosFalsos : public DialogosCaja {
 public:
  std::string titulo;
  Currency venta, iva, credito;
  Currency montoNotificado = Currency::fromUnits(7);
  bool cancelado = false;
  std::string codigoNuevo;
  std::int16_t contextoRecibido = 0;
  std::int16_t contextoDejado = 0;
  std::function<void(const std::string&)> alCrear;

  std::shared_ptr<CVarelta> Cobrar(const std::string& t, Currency v, Currency i, Currency c,
                                   Aplicar2602 alCambiarIVA) override {
    titulo = t;
    venta = v;
    iva = i;
    credito = c;
    alCambiarIVA(montoNotificado, cancelado);
    return nullptr;
  }
  void DefinirMediosPago() override {}
  void DefinirMedioPagoNuevo(const std::string& codigo, std::int16_t& contexto) override {
    codigoNuevo = codigo;
    contextoRecibido = contexto;
    if (alCrear)
      alCrear(codigo);
    contexto = contextoDejado;
  }
};

}  // namespace caja::test
