// Random calls of the exports that work on plain memory.
#pragma once

#include <array>
#include <map>
#include <string_view>
#include <type_traits>
#include <utility>

#include "random_call.h"

namespace random_exports {

// The rest of a call whose parameters are a picture and numbers.
template <class Function, class... Numbers>
void finish(Call& call, HGLOBAL dib, Numbers... numbers) {
  const auto function = call.entry<Function>();
  call.begin();
  if constexpr (std::is_void_v<decltype(function(dib, numbers...))>) {
    function(dib, numbers...);
  } else {
    call.result(function(dib, numbers...));
  }
}

template <class Function, int... kDepths>
void of_picture(Call& call) {
  HGLOBAL dib = call.picture({kDepths...});
  finish<Function>(call, dib);
}

inline void dither(Call& call) {
  HGLOBAL dib = call.picture({4, 8, 24});
  const int bits = call.told(call.header().biBitCount == 4 ? 1 : call.random.one_of({1, 1, 4, 4, 8, 2}));
  finish<decltype(&::DitherFS4)>(call, dib, bits);
}

inline void gray_of_color(Call& call) {
  HGLOBAL dib = call.picture({1, 4, 8, 24});
  const int grade = call.number(0, 2), weighted = call.number(0, 1);
  finish<decltype(&::ConvColorDIBtoGrayscale)>(call, dib, grade, weighted);
}

inline void gray_of_mono(Call& call) {
  HGLOBAL dib = call.picture({1});
  const int grade = call.number(0, 2);
  finish<decltype(&::ConvMonoDIBtoGrayscale)>(call, dib, grade);
}

inline void clean(Call& call) {
  HGLOBAL dib = call.picture({1, 8});
  const int level = call.number(20, 100), mode = call.number(0, 1);
  finish<decltype(&::CleanImage)>(call, dib, level, mode);
}

inline void rotate(Call& call) {
  HGLOBAL dib = call.picture({1, 4, 8, 24});
  const int angle = call.random.once_in(4) ? call.told(90 * call.random.between(-4, 8)) : call.number(-720, 720);
  const int method = call.told(call.random.between(0, 2));
  int status = kUntouched;
  std::array corners = kUntouchedCorners;
  const bool has_corners = !call.random.once_in(8);
  call.begin();
  call.result(call.entry<decltype(&::RotateDIB)>()(dib, angle, method, &status, has_corners ? corners.data() : nullptr));
  call.result(status);
  call.results(corners);
}

inline void skew(Call& call) {
  HGLOBAL dib = call.picture({1, 4, 8, 24});
  const int direction = call.told(call.random.between(0, 2)), offset = call.told(call.random.between(-400, 400));
  int error = kUntouched;
  std::array corners = kUntouchedCorners;
  const bool has_both = !call.random.once_in(8);
  call.begin();
  call.result(call.entry<decltype(&::SkewDIB)>()(dib, direction, offset, has_both ? &error : nullptr,
                                                 has_both ? corners.data() : nullptr));
  call.result(error);
  call.results(corners);
}

inline void scale(Call& call) {
  HGLOBAL dib = call.picture({1, 4, 8, 24});
  const int mode = call.told(call.random.between(0, 1));
  int width = call.random.between(1, 300), height = call.random.between(1, 200);
  if (call.random.once_in(3)) {  // Common ratios, some with paths of their own.
    const int quarters = call.random.one_of({1, 2, 3, 4, 6, 8});
    width = std::abs(static_cast<int>(call.header().biWidth)) * quarters / 4;
    height = std::abs(static_cast<int>(call.header().biHeight)) * quarters / 4;
  }
  if (call.random.once_in(40)) {
    const int large = call.random.one_of({0, 65'535, 65'536, 65'541}), small = call.random.between(0, 2);
    std::tie(width, height) = call.random.once_in(2) ? std::pair(large, small) : std::pair(small, large);
  }
  call.told(width), call.told(height);
  call.begin();
  call.result(call.entry<decltype(&::ScaleDIB)>()(dib, mode, static_cast<unsigned>(width), static_cast<unsigned>(height)));
}

inline void magnify(Call& call) {
  HGLOBAL dib = call.picture({4, 8, 24});
  const int all = call.random.once_in(3) ? 300 : 60;
  const int width = call.told(call.random.between(0, std::min(std::abs(static_cast<int>(call.header().biWidth)) + 1, all)));
  const int height =
      call.told(call.random.between(0, std::min(std::abs(static_cast<int>(call.header().biHeight)) + 1, all)));
  const int most = all == 300 ? 2 : 6;
  const int x_factor = call.told(call.random.between(call.random.once_in(12) ? -1 : 1, most));
  const int y_factor = call.told(call.random.between(call.random.once_in(12) ? -1 : 1, most));
  const int mode = call.told(call.random.between(0, 1));
  finish<decltype(&::ScaleGrayDIB)>(call, dib, width, height, x_factor, y_factor, mode);
}

inline void cut(Call& call) {
  HGLOBAL dib = call.picture({1, 4, 8, 24});
  const int line = call.number(1, std::max<int>(1, call.header().biHeight - 1));
  HGLOBAL first = nullptr, second = nullptr;
  call.begin();
  const BOOL is_cut = call.entry<decltype(&::CutDIB)>()(dib, line, &first, &second);
  call.result(is_cut);
  if (!is_cut) return;  // The handles may be dead then.
  call.result(first);
  call.result(second);
}

// Drags the square about, and sometimes changes to the other picture.
inline void histogram(Call& call) {
  const auto compute = call.entry<decltype(&::ComputeHistogram)>();
  int error = kUntouched;
  HGLOBAL counters = compute(nullptr, IMG_ALLOCATE, nullptr, nullptr, &error);
  HGLOBAL dib = call.picture({8}), other = call.picture({8});
  call.begin();
  std::array<int, 2> origin{call.random.between(-20, 300), call.random.between(-20, 300)};
  for (int step = call.random.between(1, 6); step > 0; --step) {
    if (call.random.once_in(8)) std::swap(dib, other);
    const int operation = call.random.once_in(30) ? 33 : IMG_COMPUTE;
    call.results(origin);
    HGLOBAL counted = compute(dib, operation, counters, origin.data(), &error);
    call.result(counted == counters ? 1 : counted == nullptr ? 0 : 2);
    call.show(counters);
    call.result(error);
    for (int& position : origin) position += call.random.between(-40, 40);
  }
  call.result(compute(nullptr, IMG_FREE, counters, nullptr, &error));
  call.result(error);
}

inline Bytes random_bytes(Random& random, size_t count) {
  Bytes bytes(count);
  random.fill(bytes);
  return bytes;
}

inline void table(Call& call) {
  const auto compute = call.entry<decltype(&::ComputeLUT)>();
  int error = kUntouched;
  HGLOBAL levels = compute(nullptr, IMG_ALLOCATE, nullptr, 0, 0, &error);
  const int kind = call.random.between(0, 7);
  HGLOBAL counts = kind < 2 ? nullptr : call.block(random_bytes(call.random, kind == 2 ? 77 : 512), "counters");
  const int contrast = call.number(-255, 255), brightness = call.number(-255, 255);
  call.begin();
  HGLOBAL computed = compute(counts, IMG_COMPUTE, kind == 3 ? nullptr : levels, contrast, brightness, &error);
  call.result(computed == levels ? 1 : computed == nullptr ? 0 : 2);
  call.result(error);
  call.show(levels);
  call.result(compute(nullptr, IMG_FREE, levels, 0, 0, &error) == levels ? 1 : 0);
}

inline void apply_table(Call& call) {
  HGLOBAL dib = call.picture({8});
  const size_t size = call.random.once_in(12) ? 100 : 256;
  HGLOBAL levels = call.block(random_bytes(call.random, size), fmt::format("{} levels", size));
  const int make_copy = call.told(call.random.between(0, 1));
  int error = kUntouched;
  call.begin();
  call.result(call.entry<decltype(&::ApplyLUT)>()(dib, levels, make_copy, &error));
  call.result(error);
}

inline void brightness(Call& call) {
  HGLOBAL dib = call.picture({4, 8, 24, 24});
  const auto bright = static_cast<short>(call.number(-100, 100)), contrast = static_cast<short>(call.number(-100, 100));
  finish<decltype(&::ColorBrightnessContrast)>(call, dib, bright, contrast);
}

// A filter's type, size and kernel, which is long enough for every size.
template <class Element>
struct Filter {
  int type, size;
  std::array<Element, 50> kernel{};

  explicit Filter(Call& call) {
    Random& random = call.random;
    type = random.once_in(3) ? call.told(1) : call.number(3, 6);
    size = random.once_in(20) ? call.number(2, 8) : call.told(random.one_of({3, 3, 5, 5, 7}));
    const int count = size > 0 && size <= 7 ? size * size : 1;
    const bool is_wild = random.once_in(12), has_gaps = random.once_in(3);
    const int high = is_wild ? 130 : 160 / count, low = random.once_in(3) ? 0 : -high;
    for (int i = 0; i < count; ++i)
      if (!has_gaps || random.once_in(4)) kernel[static_cast<size_t>(i)] = static_cast<Element>(random.between(low, high));
    const int divisor = random.one_of({0, 0, 1, -3, random.between(2, 60)});
    kernel[static_cast<size_t>(count)] = static_cast<Element>(divisor);
    tell(" {}..{}{} by {}", low, high, has_gaps ? " with gaps" : "", divisor);
  }
};

inline void convolve(Call& call) {
  HGLOBAL dib = call.picture({8});
  const int make_copy = call.told(call.random.between(0, 1));
  const Filter<int> filter(call);
  int error = kUntouched;
  call.begin();
  call.result(
      call.entry<decltype(&::Convolve)>()(dib, make_copy, filter.type, filter.size, nullptr, filter.kernel.data(), &error));
  call.result(error);
}

inline void convolve_color(Call& call) {
  HGLOBAL dib = call.picture({24});
  const int make_copy = call.told(call.random.between(0, 1)), intensity = call.told(call.random.between(0, 2));
  const Filter<short> filter(call);
  int error = kUntouched;
  call.begin();
  call.result(call.entry<decltype(&::ColorConvolution)>()(dib, make_copy, intensity, static_cast<short>(filter.type),
                                                          filter.size, nullptr, filter.kernel.data(), &error));
  call.result(error);
}

inline void halftone(Call& call) {
  HGLOBAL dib = call.picture({4, 8, 8, 24});
  const auto method = static_cast<WORD>(call.number(0, 2));
  const int brightness = call.number(-255, 255);
  WORD error = kUntouched;
  call.begin();
  call.result(call.entry<decltype(&::Halftone)>()(dib, method, brightness, &error));
  call.result(error);
}

// Runs, literal pixels, deltas and ends of rows, whatever the picture's size.
inline Bytes random_codes(Random& random) {
  Bytes codes;
  for (int i = random.between(0, 2000); i > 0; --i) {
    const bool is_run = !random.once_in(5);
    codes.push_back(static_cast<uint8_t>(is_run ? random.between(1, 60) : 0));
    codes.push_back(is_run ? random.byte()
                           : static_cast<uint8_t>(random.once_in(300) ? 1 : random.one_of({0, 0, 2, 5, 16})));
  }
  return codes;
}

inline void expand(Call& call) {
  RandomPicture picture = random_picture(call.random, {4, 8});
  BITMAPINFOHEADER& header = picture.header;
  header.biCompression = static_cast<uint32_t>(call.random.once_in(12)  ? call.random.between(0, 4)
                                               : header.biBitCount == 8 ? BI_RLE8
                                                                        : BI_RLE4);
  header.biSizeImage = call.random.once_in(20) ? 0 : 1;
  const Bytes codes = random_codes(call.random);
  const size_t colors = header.biBitCount <= 8 ? size_t{1} << header.biBitCount : 0;
  picture.bytes.resize(sizeof header + 4 * colors);
  std::memcpy(picture.bytes.data(), &header, sizeof header);
  picture.bytes.insert(picture.bytes.end(), codes.begin(), codes.end());
  HGLOBAL dib =
      call.block(picture.bytes, fmt::format("{} compression {} codes {}", picture.name, header.biCompression, codes.size()));
  finish<decltype(&::ExpandCompressedDIB)>(call, dib);
}

inline void palette_size(Call& call) {
  RandomPicture picture = random_picture(call.random, {1, 4, 8, 24});
  picture.bytes.resize(std::max<size_t>(picture.bytes.size(), 108));
  tell(" [{}]", picture.name);
  call.begin();
  call.result(call.entry<decltype(&::PaletteSize)>()(picture.bytes.data()));
}

using Conversion = decltype(&::RotateDIB90);

struct Export {
  std::string_view name;
  void (*make_call)(Call&);
};

inline const std::array kExports{
    Export{"RotateDIB90", of_picture<Conversion, 1, 4, 8, 24>},
    Export{"RotateDIB180", of_picture<Conversion, 1, 4, 8, 24>},
    Export{"RotateDIB270", of_picture<Conversion, 1, 4, 8, 24>},
    Export{"FlipDIBVertical", of_picture<Conversion, 1, 4, 8, 24>},
    Export{"FlipDIBHorizontal", of_picture<Conversion, 1, 4, 8, 24>},
    Export{"RotateDIB", rotate},
    Export{"SkewDIB", skew},
    Export{"ScaleDIB", scale},
    Export{"ScaleGrayDIB", magnify},
    Export{"CutDIB", cut},
    Export{"ComputeHistogram", histogram},
    Export{"ComputeLUT", table},
    Export{"ApplyLUT", apply_table},
    Export{"ColorBrightnessContrast", brightness},
    Export{"Convert8to24", of_picture<Conversion, 8>},
    Export{"Convolve", convolve},
    Export{"ColorConvolution", convolve_color},
    Export{"ConvColorDIBtoGrayscale", gray_of_color},
    Export{"ConvMonoDIBtoGrayscale", gray_of_mono},
    Export{"CleanImage", clean},
    Export{"DitherFS4", dither},
    Export{"DitherJJN", dither},
    Export{"DitherSmooth", dither},
    Export{"DitherSharp", dither},
    Export{"Halftone", halftone},
    Export{"CompressDIB", of_picture<Conversion, 4, 8>},
    Export{"ExpandCompressedDIB", expand},
    Export{"InvertDIBPalette", of_picture<decltype(&::InvertDIBPalette), 1, 4, 8, 24>},
    Export{"InvertMonoDIB", of_picture<decltype(&::InvertMonoDIB), 1>},
    Export{"PaletteSize", palette_size},
};

// The call of this number of a seed: one export, with parameters that depend on seed and number alone.
struct NumberedCall {
  Random random;
  const Export& entry;

  NumberedCall(uint64_t seed, long number)
      : random(seed << 32 ^ static_cast<uint64_t>(number)), entry(kExports[random.next() % kExports.size()]) {}

  // Makes it and prints its line.
  void make(const Library& library, long number) const {
    tell("{} {}", number, entry.name);
    Call call(library, entry.name, random);
    entry.make_call(call);
    call.end();
  }
};

// A digest of the lines of the first `count` calls of seed 1, for each export.
inline std::map<std::string_view, uint64_t> digests(const Library& library, long count) {
  std::map<std::string_view, uint64_t> all;
  std::string line;
  told_text = &line;
  for (long number = 0; number < count; ++number) {
    const NumberedCall call(1, number);
    line.clear();
    call.make(library, number);
    uint64_t& digest = all[call.entry.name];
    digest = digest * 0x100000001B3 ^ hash_of({reinterpret_cast<const uint8_t*>(line.data()), line.size()});
  }
  told_text = nullptr;
  return all;
}

}  // namespace random_exports
