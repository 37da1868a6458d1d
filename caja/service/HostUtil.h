#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/CajaError.h"
#include "caja/base/Currency.h"
#include "caja/base/Exporta.h"
#include "caja/base/Fecha.h"
#include "caja/base/Variant.h"

namespace caja {

// The host suite's process-wide utility object: messages, yes/no questions,
// error reports and the application title. The host installs its own; until
// then a console one answers every question with "no".
class CAJA_EXPORT HostUtil {
 public:
  virtual ~HostUtil() = default;
  virtual void MostrarMensaje(const std::string& texto) = 0;
  virtual bool Preguntar(const std::string& texto) = 0;
  virtual void ReportarError(const CajaError& error, const std::string& ubicacion) = 0;
  virtual void EstablecerTitulo(const std::string& titulo) = 0;
  virtual std::string Titulo() const = 0;
};

CAJA_EXPORT HostUtil& hostUtil();
CAJA_EXPORT void setHostUtil(std::shared_ptr<HostUtil> util);

// The utility object's null-safe field conversions: Null or Empty reads as
// 0, "" or the zero date; any other value converts as usual.
CAJA_EXPORT std::string NzTexto(const Variant& v);
CAJA_EXPORT std::int32_t NzLong(const Variant& v);
CAJA_EXPORT std::int16_t NzInteger(const Variant& v);
CAJA_EXPORT Currency NzMoneda(const Variant& v);
CAJA_EXPORT double NzDouble(const Variant& v);
CAJA_EXPORT Fecha NzFecha(const Variant& v);

}  // namespace caja
