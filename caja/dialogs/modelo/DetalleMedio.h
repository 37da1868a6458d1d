#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "caja/catalog/CMedioPago.h"
#include "caja/movement/CDetalleIngreso.h"

namespace caja {

// The particulars of one payment line behind `frmDetallesMedio`, without
// widgets: which fields the method's flags open, their checks and messages,
// and the acceptance that writes them to the line.
class DetalleMedio {
 public:
  enum class Campo { Monto, Emisor, Cuenta, IdTitular, NumDoc, ClaveAutorizacion, Denominaciones };
  struct Fila {
    Currency Denominacion;
    std::int16_t CantidadRecibida = 0;
  };
  struct Rechazo {
    Campo campo;
    std::string mensaje;
  };

  // Finds the line's method and takes the line's values; false, after
  // showing "ERROR: Medio de pago desconocido (code)", for an unknown code.
  bool preparar(std::shared_ptr<CDetalleIngreso> linea);

  bool abierto(Campo campo) const;
  // The help of the grid's count column (`numCantidad`).
  static const char* ayudaCantidad();
  static const char* ayuda(Campo campo);
  const CMedioPago& medio() const { return *medio_; }
  double factor() const { return factor_; }

  // The values being edited: texts as typed, the amount in the method's unit.
  std::string emisor, cuenta, idTitular, numDoc, claveAutorizacion;
  std::optional<Currency> montoRecibido;
  std::vector<Fila> filas;
  std::vector<std::string> emisores;  // the issuers known for the method
  // The value of a text field (the amount and the grid have their own).
  std::string& texto(Campo campo);

  // The check on leaving a text field: trims and upper-cases `texto` in place;
  // the message that keeps the focus there, or "". Empty fields other than
  // the issuer may be left. A new issuer asks the host's VerificarUsuario and
  // needs level 5.
  std::string validarCampo(Campo campo, std::string& texto);
  std::string validarMonto() const;
  // The grid callbacks.
  static std::string ValidateCell(int columna, Currency valor);
  static bool IsRowValid(const Fila& fila);
  static bool MayAddRow() { return true; }
  static bool MayDeleteRow() { return true; }
  static Fila FillNewRow() { return Fila{}; }

  // Writes the fields to the line when every check passes; the first
  // failure otherwise, with nothing written.
  std::optional<Rechazo> aceptar();

 private:
  std::shared_ptr<CDetalleIngreso> linea_;
  std::shared_ptr<CMedioPago> medio_;
  double factor_ = 1.0;
  std::string emisorAutorizado_;
};

}  // namespace caja
