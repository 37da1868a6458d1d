#include "caja/base/CajaError.h"

namespace caja {

CajaError::CajaError(long number, std::string source, std::string description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {
  what_ = std::to_string(number_) + " (" + source_ + "): " + description_;
}

namespace {

const char* textoError(long number) {
  switch (number) {
    case err::kLlamadaInvalida:
      return "Argumento o llamada a procedimiento no válida";
    case err::kDesbordamiento:
      return "Desbordamiento";
    case err::kDivisionPorCero:
      return "División por cero";
    case err::kTiposNoCoinciden:
      return "No coinciden los tipos";
    case err::kObjetoNoEstablecido:
      return "Variable de objeto o bloque With no establecido";
    case err::kUsoInvalidoNull:
      return "Uso no válido de Null";
    case err::kMetodoNoAdmitido:
      return "El objeto no admite esta propiedad o método";
    case err::kClaveDuplicada:
      return "Esta clave ya está asociada a un elemento de esta colección";
    case err::kCampoNoEncontrado:
      return "No se encontró el elemento en la colección que corresponde al nombre o al ordinal";
    default:
      return "Error definido por la aplicación o por el objeto";
  }
}

}  // namespace

CajaError errorEjecucion(long number) {
  return CajaError(number, "caja", textoError(number));
}

std::string descripcionDe(const std::exception& e) {
  const auto* propio = dynamic_cast<const CajaError*>(&e);
  return propio ? propio->description() : e.what();
}

}  // namespace caja
