#include "caja/service/DialogosCaja.h"

#include "caja/base/CajaError.h"

namespace caja {

namespace {

std::shared_ptr<DialogosCaja>& dialogosInstalados() {
  static std::shared_ptr<DialogosCaja> dialogos;
  return dialogos;
}

}  // namespace

DialogosCaja& dialogosCaja() {
  if (!dialogosInstalados())
    throw errorEjecucion(err::kObjetoNoEstablecido);
  return *dialogosInstalados();
}

void setDialogosCaja(std::shared_ptr<DialogosCaja> dialogos) {
  dialogosInstalados() = std::move(dialogos);
}

}  // namespace caja
