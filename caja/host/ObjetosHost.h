#pragma once

#include <memory>

#include "caja/service/ObjetosHost.h"

namespace caja {

class HostSql;

// The company as the substitute hosts keep it (table hostEmpresa), read when
// the object is created.
class EmpresaHost : public Empresa {
 public:
  explicit EmpresaHost(HostSql& host);
  std::string FormatoMEX() override { return formatoMEX_; }
  Variant ContribuyenteEspecial() override { return contribuyenteEspecial_; }
  double porcentajeIGTF456() override { return porcentajeIGTF_; }

 private:
  std::string formatoMEX_ = "$#,##0.00";
  Variant contribuyenteEspecial_ = Variant::Null();
  double porcentajeIGTF_ = 0.0;
};

// Entities of table hostEntidades; documents as plain references.
class InstanciadorHost : public Instanciador {
 public:
  explicit InstanciadorHost(std::shared_ptr<HostSql> host) : host_(std::move(host)) {}
  std::shared_ptr<caja::Entidad> Entidad(const std::string& tipo,
                                         const std::string& codigo) override;
  std::shared_ptr<Objeto> EntidadDOCUMENTO(const std::string& tipoDoc,
                                           std::int32_t numero) override;

 private:
  std::shared_ptr<HostSql> host_;
};

// A related document as the substitute hosts know it: its type and number.
class DocumentoHost : public Objeto {
 public:
  DocumentoHost(std::string tipo, std::int32_t numero) : tipo(std::move(tipo)), numero(numero) {}
  std::string tipo;
  std::int32_t numero;
};

// The procedures the program registered on the host.
class PosExtHost : public PosExt {
 public:
  explicit PosExtHost(std::shared_ptr<HostSql> host) : host_(std::move(host)) {}
  Variant Run(const std::string& procedimiento, std::vector<Variant>& argumentos) override;
  // A registered procedure run without arguments.
  Variant Eval(const std::string& expresion) override;

 private:
  std::shared_ptr<HostSql> host_;
};

}  // namespace caja
