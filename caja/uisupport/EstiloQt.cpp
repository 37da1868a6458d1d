#include "caja/uisupport/EstiloQt.h"

#include <QFileInfo>

#include "caja/service/General.h"

namespace caja {

void aplicarEstilo(QWidget& formulario) {
  if (auto tema = std::dynamic_pointer_cast<TemaUIQt>(gTemaUI))
    tema->estilizar(formulario);
}

QIcon iconoDe(const std::shared_ptr<Objeto>& imagen) {
  auto img = std::dynamic_pointer_cast<Imagen>(imagen);
  if (!img || !QFileInfo::exists(QString::fromStdString(img->ruta())))
    return {};
  return QIcon(QString::fromStdString(img->ruta()));
}

}  // namespace caja
