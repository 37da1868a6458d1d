#include "caja/uisupport/lmFormPlacement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include "caja/base/Conversiones.h"
#include "caja/service/Settings.h"
#include "caja/uisupport/Twips.h"

namespace caja {

namespace {

constexpr const char* kNinguno = "-100";

std::string seccion(const QWidget& f) {
  return "CONFIG\\FormPlacement\\" + f.objectName().toStdString();
}

int leer(const QWidget& f, const char* clave) {
  try {
    return CLng(lmGetSetting(kAppZOR, seccion(f), clave, kNinguno));
  } catch (const CajaError&) {
    return -100;
  }
}

bool enAlgunaPantalla(const QRect& r) {
  for (const QScreen* s : QGuiApplication::screens())
    if (s->availableGeometry().contains(r.topLeft()))
      return true;
  return false;
}

}  // namespace

void RestaurarPosicion(QWidget& f) {
  const int izquierda = leer(f, "Left"), arriba = leer(f, "Top");
  const int ancho = leer(f, "Width"), alto = leer(f, "Height");
  if (izquierda == -100 || arriba == -100)
    return;
  const bool redimensionable = f.minimumSize() != f.maximumSize() && ancho > 0 && alto > 0;
  const QSize tam = redimensionable ? QSize(px(ancho), px(alto)) : f.size();
  const QRect lugar(QPoint(px(izquierda), px(arriba)), tam);
  if (!enAlgunaPantalla(lugar))
    return;
  f.move(lugar.topLeft());
  if (redimensionable)
    f.resize(tam);
}

void GuardarPosicion(const QWidget& f) {
  const QRect g = f.frameGeometry();
  const std::pair<const char*, int> valores[] = {
      {"Left", g.left()}, {"Top", g.top()}, {"Width", f.width()}, {"Height", f.height()}};
  try {
    for (const auto& [clave, valor] : valores)
      settingsStore().SaveSetting(kAppZOR, seccion(f), clave,
                                  std::to_string(valor * kTwipsPorPixel));
  } catch (const std::exception&) {
    // A place that cannot be kept is not worth stopping the cashier for.
  }
}

}  // namespace caja
