#include "caja/host/ObjetosHost.h"

#include "caja/base/Conversiones.h"
#include "caja/host/HostSql.h"
#include "caja/service/HostUtil.h"

namespace caja {

namespace {

class EntidadHost : public Entidad {
 public:
  explicit EntidadHost(std::string nombre) : nombre_(std::move(nombre)) {}
  std::string Nombre() override { return nombre_; }

 private:
  std::string nombre_;
};

}  // namespace

EmpresaHost::EmpresaHost(HostSql& host) {
  auto rs = host.openrecordset(
      "SELECT FormatoMEX, ContribuyenteEspecial, porcentajeIGTF456 FROM hostEmpresa WHERE id = 1");
  if (rs->Eof())
    return;
  if (const Variant formato = rs->Fields("FormatoMEX"); !formato.isNull())
    formatoMEX_ = CStr(formato);
  contribuyenteEspecial_ = rs->Fields("ContribuyenteEspecial");
  porcentajeIGTF_ = NzDouble(rs->Fields("porcentajeIGTF456"));
}

std::shared_ptr<Entidad> InstanciadorHost::Entidad(const std::string& tipo,
                                                   const std::string& codigo) {
  const Variant nombre = host_->ReadScalar(
      "SELECT Nombre FROM hostEntidades WHERE Tipo = ? AND Codigo = ?", {tipo, codigo});
  if (nombre.isEmpty())
    return nullptr;
  return std::make_shared<EntidadHost>(NzTexto(nombre));
}

std::shared_ptr<Objeto> InstanciadorHost::EntidadDOCUMENTO(const std::string& tipoDoc,
                                                           std::int32_t numero) {
  return std::make_shared<DocumentoHost>(tipoDoc, numero);
}

Variant PosExtHost::Run(const std::string& procedimiento, std::vector<Variant>& argumentos) {
  return host_->EjecutarProcedimiento(procedimiento, argumentos);
}

Variant PosExtHost::Eval(const std::string& expresion) {
  std::vector<Variant> ninguno;
  return host_->EjecutarProcedimiento(expresion, ninguno);
}

}  // namespace caja
