// OpenCV: matrices of bytes; bi-level pictures have a byte per pixel.
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "peers/worker.h"

namespace peers {
namespace {

cv::Mat matrix_of(const Picture& picture) {
  const auto [width, height, depth, is_colored] = picture.extent;
  cv::Mat matrix(height, width, depth == 24 ? CV_8UC3 : CV_8UC1);
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* row = picture.row(y);
    if (depth == 1)
      for (int x = 0; x < width; ++x) matrix.at<std::uint8_t>(y, x) = (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 255 : 0;
    else
      std::copy(row, row + picture.extent.row_bytes(), matrix.ptr(y));
  }
  return matrix;
}

template <class Make>
Work making(const cv::Mat& source, Make make) {
  return [source, make] {
    cv::Mat result;
    make(source, result);
    return !result.empty();
  };
}

// The library's fastest function for each shape of kernel.
Work convolving(const cv::Mat& source, const Kernel& kernel) {
  const cv::Size side(kernel.size, kernel.size);
  constexpr int kBox = 3, kBlur = 4;
  if (kernel.type == kBox)
    return making(source, [=](const cv::Mat& from, cv::Mat& to) {
      cv::blur(from, to, side, {-1, -1}, cv::BORDER_REPLICATE);
    });
  if (kernel.type == kBlur && kernel.size == 3)
    return making(source,
                  [=](const cv::Mat& from, cv::Mat& to) { cv::GaussianBlur(from, to, side, 0, 0, cv::BORDER_REPLICATE); });
  cv::Mat weights(side, CV_32F);
  for (int i = 0; i < kernel.size * kernel.size; ++i)
    weights.at<float>(i / kernel.size, i % kernel.size) =
        static_cast<float>(kernel.values[i]) / static_cast<float>(kernel.divisor);
  return making(source, [=](const cv::Mat& from, cv::Mat& to) {
    cv::filter2D(from, to, -1, weights, {-1, -1}, 0, cv::BORDER_REPLICATE);
  });
}

Work warping(const cv::Mat& source, const cv::Matx23d& matrix, Extent result) {
  return making(source, [=](const cv::Mat& from, cv::Mat& to) {
    cv::warpAffine(from, to, matrix, {result.width, result.height}, cv::INTER_NEAREST);
  });
}

Work rotating(const cv::Mat& source, const Workload& workload) {
  const Extent from = workload.source, to = workload.result();
  cv::Matx23d matrix =
      cv::getRotationMatrix2D({static_cast<float>(from.width) / 2, static_cast<float>(from.height) / 2}, workload.amount, 1);
  matrix(0, 2) += (to.width - from.width) / 2.0;
  matrix(1, 2) += (to.height - from.height) / 2.0;
  return warping(source, matrix, to);
}

Work scaling(const cv::Mat& source, const Workload& workload) {
  using enum Operation;
  const Extent to = workload.result();
  const int method = workload.operation == kLinear  ? cv::INTER_LINEAR
                     : workload.operation == kCubic ? cv::INTER_CUBIC
                                                    : cv::INTER_NEAREST;
  return making(source, [=](const cv::Mat& from, cv::Mat& result) {
    cv::resize(from, result, {to.width, to.height}, 0, 0, method);
  });
}

Work counting(const cv::Mat& source) {
  return making(source(cv::Rect(0, 0, kSquare, kSquare)), [](const cv::Mat& from, cv::Mat& to) {
    const int channel = 0, bins = 256;
    const float bounds[] = {0, 256};
    const float* ranges = bounds;
    cv::calcHist(&from, 1, &channel, cv::noArray(), to, 1, &bins, &ranges);
  });
}

Work ordering(const cv::Mat& source) {
  std::vector<std::uint8_t> values = threshold_matrix();
  const cv::Mat tile(16, 16, CV_8UC1, values.data());
  const cv::Mat thresholds =
      cv::repeat(tile, source.rows / 16 + 1, source.cols / 16 + 1)(cv::Rect(0, 0, source.cols, source.rows)).clone();
  return making(source, [=](const cv::Mat& from, cv::Mat& to) { cv::compare(from, thresholds, to, cv::CMP_GT); });
}

Work expanding(const cv::Mat& source, Extent extent) {
  cv::Mat colors(256, 1, CV_8UC3);
  int i = 0;
  for (const Color& color : palette_of(extent)) colors.at<cv::Vec3b>(i++) = {color.blue, color.green, color.red};
  return making(source, [=](const cv::Mat& from, cv::Mat& to) { cv::applyColorMap(from, to, colors); });
}

}  // namespace

Work prepare(const Workload& workload, const Picture& picture, const std::string& scratch) {
  using enum Operation;
  cv::setNumThreads(1);
  const cv::Mat source = matrix_of(picture);
  const int amount = workload.amount;
  switch (workload.operation) {
    case kQuarterTurn:
      return making(source, [](const cv::Mat& from, cv::Mat& to) { cv::rotate(from, to, cv::ROTATE_90_CLOCKWISE); });
    case kBackTurn:
      return making(source, [](const cv::Mat& from, cv::Mat& to) { cv::rotate(from, to, cv::ROTATE_90_COUNTERCLOCKWISE); });
    case kHalfTurn: return making(source, [](const cv::Mat& from, cv::Mat& to) { cv::rotate(from, to, cv::ROTATE_180); });
    case kMirrorSides: return making(source, [](const cv::Mat& from, cv::Mat& to) { cv::flip(from, to, 1); });
    case kMirrorTop: return making(source, [](const cv::Mat& from, cv::Mat& to) { cv::flip(from, to, 0); });
    case kRotate: return rotating(source, workload);
    case kSkew:
      return warping(source, {1, -static_cast<double>(amount) / source.rows, static_cast<double>(amount), 0, 1, 0},
                     workload.result());
    case kLinear:
    case kCubic:
    case kNearest: return scaling(source, workload);
    case kGray: return making(source, [](const cv::Mat& from, cv::Mat& to) { cv::cvtColor(from, to, cv::COLOR_BGR2GRAY); });
    case kBrighten:
      return making(source, [](const cv::Mat& from, cv::Mat& to) { from.convertTo(to, -1, 1.2, 1.2 * 12 - 25); });
    case kLookUp:
      return making(source,
                    [table = cv::Mat(tone_table(), true)](const cv::Mat& from, cv::Mat& to) { cv::LUT(from, table, to); });
    case kExpand: return expanding(source, workload.source);
    case kCount:
    case kDrag: return counting(source);
    case kConvolve: return convolving(source, *workload.kernel);
    case kSmoothBits: {
      const int side = 2 * amount + 1;
      if (amount == 0) return nullptr;
      return making(source, [=](const cv::Mat& from, cv::Mat& to) {
        cv::GaussianBlur(from, to, {side, side}, 0, 0, cv::BORDER_REPLICATE);
      });
    }
    case kDespeckle:
    case kMedian: return making(source, [](const cv::Mat& from, cv::Mat& to) { cv::medianBlur(from, to, 3); });
    case kThreshold:
      return making(source,
                    [](const cv::Mat& from, cv::Mat& to) { cv::threshold(from, to, kMiddle, 255, cv::THRESH_BINARY); });
    case kOrdered: return ordering(source);
    case kDecode:
      return making(source, [file = bitmap_file(picture, true)](const cv::Mat&, cv::Mat& to) {
        to = cv::imdecode(file, cv::IMREAD_GRAYSCALE);
      });
    case kSave: return [source, scratch] { return cv::imwrite(scratch, source); };
    case kLoad:
      return making(source, [scratch](const cv::Mat&, cv::Mat& to) { to = cv::imread(scratch, cv::IMREAD_COLOR); });
    default: return nullptr;
  }
}

}  // namespace peers
