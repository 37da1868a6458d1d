#include "caja/service/HostUtil.h"

#include <iostream>

#include "caja/base/Conversiones.h"

namespace caja {

namespace {

class HostUtilConsola : public HostUtil {
 public:
  void MostrarMensaje(const std::string& texto) override { std::cerr << texto << '\n'; }
  bool Preguntar(const std::string& texto) override {
    std::cerr << texto << " (no)\n";
    return false;
  }
  void ReportarError(const CajaError& error, const std::string& ubicacion) override {
    std::cerr << ubicacion << ": " << error.what() << '\n';
  }
  void EstablecerTitulo(const std::string& titulo) override { titulo_ = titulo; }
  std::string Titulo() const override { return titulo_; }

 private:
  std::string titulo_;
};

std::shared_ptr<HostUtil>& actual() {
  static std::shared_ptr<HostUtil> util = std::make_shared<HostUtilConsola>();
  return util;
}

bool sinValor(const Variant& v) {
  return v.isNull() || v.isEmpty();
}

}  // namespace

HostUtil& hostUtil() {
  return *actual();
}
void setHostUtil(std::shared_ptr<HostUtil> util) {
  actual() = util ? std::move(util) : std::make_shared<HostUtilConsola>();
}

std::string NzTexto(const Variant& v) {
  return sinValor(v) ? std::string{} : CStr(v);
}
std::int32_t NzLong(const Variant& v) {
  return sinValor(v) ? 0 : CLng(v);
}
std::int16_t NzInteger(const Variant& v) {
  return sinValor(v) ? 0 : CInt(v);
}
Currency NzMoneda(const Variant& v) {
  return sinValor(v) ? Currency{} : CCur(v);
}
double NzDouble(const Variant& v) {
  return sinValor(v) ? 0.0 : CDbl(v);
}
Fecha NzFecha(const Variant& v) {
  return sinValor(v) ? Fecha{} : CDate(v);
}

}  // namespace caja
