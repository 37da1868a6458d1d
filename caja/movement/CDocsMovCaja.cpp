#include "caja/movement/CDocsMovCaja.h"

#include "caja/service/General.h"

namespace caja {

std::shared_ptr<Objeto> CDocsMovCaja::Documento() const {
  if (!gFactoria)
    return nullptr;
  return crearObjeto<Instanciador>(*gFactoria, "Instanciador")
      ->EntidadDOCUMENTO(TipoDoc, NumeroDoc);
}

}  // namespace caja
