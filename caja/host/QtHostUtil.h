#pragma once

#include <string>

#include "caja/base/Exporta.h"
#include "caja/service/HostUtil.h"

namespace caja {

// The host suite's utility object on Qt: message boxes over the active
// window, the application title as Qt's application name.
class CAJA_EXPORT QtHostUtil : public HostUtil {
 public:
  void MostrarMensaje(const std::string& texto) override;
  bool Preguntar(const std::string& texto) override;
  void ReportarError(const CajaError& error, const std::string& ubicacion) override;
  void EstablecerTitulo(const std::string& titulo) override;
  std::string Titulo() const override;
};

}  // namespace caja
