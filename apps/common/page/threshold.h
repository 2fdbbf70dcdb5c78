// Greys and colours to black and white.
#pragma once

#include <cstdint>

#include "common/picture.h"

namespace vorel::programs {

// Pixels whose luminance is at least `level` become white. Pictures of two colours stay as they are.
Picture thresholded(Picture picture, int level);

// The level that separates the luminances of a picture best: the variance between the two classes is greatest (N. Otsu, "A
// threshold selection method from gray-level histograms", IEEE Transactions on Systems, Man, and Cybernetics 9, 1979). Of
// equal levels the middle one.
int otsu_level(const Picture& picture);

struct Sauvola {
  static constexpr int kMostWindow = 1023;
  int window = 41;  // pixels across and down: odd, at most kMostWindow
  double k = 0.34;  // how much darker than its surroundings a pixel of ink must be
};

// A level for each pixel, which follows uneven light: mean * (1 + k * (deviation / 128 - 1)) of the window around it (J.
// Sauvola and M. Pietikainen, "Adaptive document image binarization", Pattern Recognition 33, 2000). Sums are exact.
Picture thresholded(Picture picture, const Sauvola& local);

}  // namespace vorel::programs
