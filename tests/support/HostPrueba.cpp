#include "tests/support/HostPrueba.h"

#include "base/Conversiones.h"
#include "service/DialogosCaja.h"

namespace caja::test {

EntornoPrueba::EntornoPrueba(std::shared_ptr<Factoria> host) {
  gMediosPago.reset();
  setSettingsStore(settings);
  setHostUtil(util);
  gFactoria = std::move(host);
}

EntornoPrueba::~EntornoPrueba() {
  gFactoria.reset();
  gEmpresa.reset();
  gTemaUI.reset();
  gMediosPago.reset();
  setSettingsStore(nullptr);
  setHostUtil(nullptr);
  setDialogosCaja(nullptr);
}

long ConSqlite::contar(const std::string& sqlCount) {
  return CLng(db->ReadScalar(sqlCount));
}

}  // namespace caja::test
