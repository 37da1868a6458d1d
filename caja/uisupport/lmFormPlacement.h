#pragma once

class QWidget;

namespace caja {

// Where each dialog of the component was last left, kept in the settings
// (section "CONFIG\FormPlacement\" + form name, keys "Left", "Top", "Width",
// "Height" in twips, "-100" for none). A saved place that falls outside every
// screen is ignored. Size is restored only for forms that can be resized.
void RestaurarPosicion(QWidget& formulario);
void GuardarPosicion(const QWidget& formulario);

}  // namespace caja
