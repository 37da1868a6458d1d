#pragma once

namespace caja {

// Positions and sizes of the forms are given in twips; the screen has 15 per pixel.
inline constexpr int kTwipsPorPixel = 15;
constexpr int px(int twips) {
  return twips / kTwipsPorPixel;
}

}  // namespace caja
