#pragma once

#include <exception>
#include <string>

#include "caja/base/Exporta.h"

namespace caja {

// Run-time error numbers the component relies on. They are the numbers a host
// language raises for the same faults, so hosts that test `Err.Number` keep working.
namespace err {
inline constexpr long kLlamadaInvalida = 5;       // invalid procedure call or argument
inline constexpr long kDesbordamiento = 6;        // overflow
inline constexpr long kDivisionPorCero = 11;      // division by zero
inline constexpr long kTiposNoCoinciden = 13;     // type mismatch
inline constexpr long kObjetoNoEstablecido = 91;  // object variable not set
inline constexpr long kUsoInvalidoNull = 94;      // invalid use of Null
inline constexpr long kMetodoNoAdmitido = 438;    // object does not support the member
inline constexpr long kClaveDuplicada = 457;      // key already in the collection
inline constexpr long kCampoNoEncontrado = 3265;  // recordset has no such field
inline constexpr long kErrorComponente = 10001;
inline constexpr long kErrorComponente2 = 10002;
}  // namespace err

// A raised error: number, source ("Class::Method") and a Spanish description.
class CAJA_EXPORT CajaError : public std::exception {
 public:
  CajaError(long number, std::string source, std::string description);

  long number() const noexcept { return number_; }
  const std::string& source() const noexcept { return source_; }
  const std::string& description() const noexcept { return description_; }
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  long number_;
  std::string source_;
  std::string description_;
  std::string what_;
};

// The run-time error `number` with the standard Spanish text of that number.
CAJA_EXPORT CajaError errorEjecucion(long number);

// The description of any error: a CajaError's own, otherwise what() says.
CAJA_EXPORT std::string descripcionDe(const std::exception& e);

}  // namespace caja
