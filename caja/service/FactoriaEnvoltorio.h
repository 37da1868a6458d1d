#pragma once

#include <memory>
#include <string>

#include "caja/service/Factoria.h"

namespace caja {

// A host that passes every call on to another: the base of decorators that
// record, count or fail some calls and leave the rest alone.
class FactoriaEnvoltorio : public Factoria {
 public:
  explicit FactoriaEnvoltorio(std::shared_ptr<Factoria> host) : host_(std::move(host)) {}

  std::shared_ptr<Objeto> CrearObjeto(const std::string& c) override {
    return host_->CrearObjeto(c);
  }
  long ExecuteSQL(const std::string& s, const Argumentos& a = {}) override {
    return host_->ExecuteSQL(s, a);
  }
  Variant ReadScalar(const std::string& s, const Argumentos& a = {}) override {
    return host_->ReadScalar(s, a);
  }
  std::shared_ptr<Recordset> openrecordset(const std::string& s,
                                           const Argumentos& a = {}) override {
    return host_->openrecordset(s, a);
  }
  std::string NumeroDB(const Variant& n) override { return host_->NumeroDB(n); }
  std::string StringDB(const std::string& t) override { return host_->StringDB(t); }
  bool ExisteProcedimiento(const std::string& n, const std::shared_ptr<Objeto>& d) override {
    return host_->ExisteProcedimiento(n, d);
  }
  void Log(const std::string& m) override { host_->Log(m); }
  Variant VerificarUsuario(const std::string& m) override { return host_->VerificarUsuario(m); }
  std::shared_ptr<Objeto> loadFileIcon(const std::string& a) override {
    return host_->loadFileIcon(a);
  }
  double TipoCambioCaja() override { return host_->TipoCambioCaja(); }
  std::shared_ptr<caja::TemaUI> TemaUI() override { return host_->TemaUI(); }
  void BeginTrans() override { host_->BeginTrans(); }
  void CommitTrans() override { host_->CommitTrans(); }
  void Rollback() override { host_->Rollback(); }

 protected:
  Factoria& host() { return *host_; }

 private:
  std::shared_ptr<Factoria> host_;
};

}  // namespace caja
