#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "caja/base/CajaError.h"
#include "caja/base/Currency.h"
#include "caja/base/Fecha.h"
#include "caja/base/Variant.h"

namespace caja {

// The host suite's process-wide utility object: messages, yes/no questions,
// error reports and the application title. The host installs its own; until
// then a console one answers every question with "no".
class HostUtil {
 public:
  virtual ~HostUtil() = default;
  virtual void MostrarMensaje(const std::string& texto) = 0;
  virtual bool Preguntar(const std::string& texto) = 0;
  virtual void ReportarError(const CajaError& error, const std::string& ubicacion) = 0;
  virtual void EstablecerTitulo(const std::string& titulo) = 0;
  virtual std::string Titulo() const = 0;
};

HostUtil& hostUtil();
void setHostUtil(std::shared_ptr<HostUtil> util);

// The utility object's null-safe field conversions: Null or Empty reads as
// 0, "" or the zero date; any other value converts as usual.
std::string NzTexto(const Variant& v);
std::int32_t NzLong(const Variant& v);
std::int16_t NzInteger(const Variant& v);
Currency NzMoneda(const Variant& v);
double NzDouble(const Variant& v);
Fecha NzFecha(const Variant& v);

}  // namespace caja
