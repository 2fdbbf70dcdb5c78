// Histograms, lookup tables, brightness and contrast, filters, greys, cleaning.
#include "kernels/tone/tone.h"

#include <algorithm>
#include <type_traits>

#include <vorel32.h>

#include "exports/boundary.h"
#include "platform/user.h"
#include "tone/caller_kernel.h"
#include "tone/dib_tone.h"
#include "tone/last_histogram.h"

using namespace vorel;

namespace {

constexpr uint32_t kHistogramBytes = kernels::kHistogramLevels * sizeof(uint16_t);
constexpr int32_t kNowhere = -256;  // a corner that no square has, so that the first one is counted anew

// A caller's block, as whole as its use needs.
struct Table {
  LockedBlock lock;
  CompleteBytes bytes;

  static std::optional<Table> lock_whole(HGLOBAL handle, uint32_t size) {
    auto lock = LockedBlock::lock(handle);
    if (!lock) return std::nullopt;
    auto bytes = CompleteBytes::of(lock->bytes(), size);
    if (!bytes) return std::nullopt;
    return Table{std::move(*lock), std::move(*bytes)};
  }

  kernels::Histogram counters() const {
    return kernels::Histogram(reinterpret_cast<uint16_t*>(bytes.bytes().data()), kernels::kHistogramLevels);
  }
};

Result<HGLOBAL> new_block(uint32_t bytes, auto&& fill) {
  auto block = OwnedBlock::allocate(bytes);
  if (!block) return Error::kMemory;
  const auto lock = LockedBlock::lock(block->get());
  if (!lock) return Error::kLock;
  fill(lock->bytes());
  return block->release();
}

Result<HGLOBAL> new_histogram() {
  LastHistogram& last = last_histogram();
  last.histogram_bytes = kHistogramBytes;
  const auto histogram = new_block(kHistogramBytes, [](std::span<uint8_t>) {});
  if (histogram) last.histogram_x = last.histogram_y = kNowhere;
  return histogram;
}

// Makes the counters those of the square at `origin`. A square that this thread has just counted, whatever the picture and the
// block, is not looked at again.
Result<HGLOBAL> counted(HGLOBAL dib, HGLOBAL histogram, const int* origin) {
  if (histogram == nullptr || dib == nullptr || origin == nullptr) return Error::kParameter;
  const auto source = LockedDib::lock(dib);
  if (!source) return Error::kLock;
  const DibHeader& header = source->header();
  if (const Error refused = refusal(header, {8}); refused != Error::kNone) return refused;
  LastHistogram& last = last_histogram();
  const kernels::Corner before{last.histogram_x, last.histogram_y};
  const kernels::Corner corner = kernels::clamped({origin[0], origin[1]}, {header.width, header.height});
  if (corner == before) return histogram;
  const auto table = Table::lock_whole(histogram, kHistogramBytes);
  if (!table) return Error::kLock;
  const auto whole = source->complete(bits_offset(header) + pixel_bytes(header));
  if (!whole) return Error::kMemory;

  const ConstDibView picture = pixels_at(whole->bytes(), bits_offset(header), header);
  if (kernels::can_slide(before, corner)) {
    kernels::tone().slide_square(picture, before, corner, table->counters());
  } else {
    const auto cleared = static_cast<size_t>(last.histogram_bytes) / sizeof(uint16_t);
    std::ranges::fill(table->counters().first(cleared), uint16_t{0});
    kernels::tone().count_square(picture, corner, table->counters());
  }
  table->bytes.write_back();
  last.histogram_x = corner.x;
  last.histogram_y = corner.y;
  return histogram;
}

Result<HGLOBAL> new_table() {
  last_histogram().table_length = static_cast<int32_t>(kernels::ComponentTable().size());
  return new_block(static_cast<uint32_t>(kernels::ComponentTable().size()), [](std::span<uint8_t> table) {
    for (size_t i = 0; i < kernels::ComponentTable().size(); ++i) table[i] = static_cast<uint8_t>(i);
  });
}

Result<HGLOBAL> computed(HGLOBAL table, HGLOBAL histogram, int contrast, int brightness) {
  if (table == nullptr) return Error::kParameter;
  const auto target = LockedBlock::lock(table);
  const auto counters = Table::lock_whole(histogram, kHistogramBytes);
  const int mean = counters ? kernels::mean_level(counters->counters()) : kernels::kMiddleLevel;
  const kernels::ComponentTable levels = kernels::contrast_table(contrast, brightness, mean);
  const auto length = static_cast<size_t>(last_histogram().table_length);
  if (target) std::ranges::copy(std::span(levels).first(std::min(length, target->bytes().size())), target->bytes().begin());
  return table;
}

Where where(int make_copy) { return make_copy != 0 ? Where::kCopy : Where::kInPlace; }

// Locks a DIB that is looked at in the usual order, and runs `work` on it.
Result<HGLOBAL> made_from(HGLOBAL dib, auto&& check, auto&& work) {
  if (dib == nullptr) return Error::kParameter;
  const auto source = LockedDib::lock(dib);
  if (!source) return Error::kLock;
  if (const Error refused = check(source->header()); refused != Error::kNone) return refused;
  const WaitCursor cursor;
  return work(*source);
}

}  // namespace

extern "C" {

HGLOBAL VORELCALL ComputeHistogram(HGLOBAL dib, int operation, HGLOBAL histogram, const int* origin, int* error) {
  return at_boundary(ClearedVariable(error), [&]() -> Result<HGLOBAL> {
    switch (operation) {
      case IMG_ALLOCATE: return new_histogram();
      case IMG_COMPUTE: return counted(dib, histogram, origin);
      case IMG_FREE: GlobalFree(histogram); return nullptr;
      default: return nullptr;
    }
  });
}

HGLOBAL VORELCALL ComputeLUT(HGLOBAL histogram, int operation, HGLOBAL table, int contrast, int brightness, int* error) {
  return at_boundary(ClearedVariable(error), [&]() -> Result<HGLOBAL> {
    switch (operation) {
      case IMG_ALLOCATE: return new_table();
      case IMG_COMPUTE: return computed(table, histogram, contrast, brightness);
      case IMG_FREE: GlobalFree(table); return table;
      default: return nullptr;
    }
  });
}

HGLOBAL VORELCALL ApplyLUT(HGLOBAL dib, HGLOBAL table, int make_copy, int* error) {
  return at_boundary(ClearedVariable(error), [&]() -> Result<HGLOBAL> {
    if (dib != nullptr && table == nullptr) return Error::kParameter;
    const auto check = [](const DibHeader& header) { return refusal(header, {8}); };
    return made_from(dib, check, [&](const LockedDib& source) -> Result<HGLOBAL> {
      const auto locked = Table::lock_whole(table, static_cast<uint32_t>(kernels::ComponentTable().size()));
      if (!locked) return Error::kLock;
      kernels::ComponentTable levels;
      std::ranges::copy(locked->bytes.bytes().first(levels.size()), levels.begin());
      return with_levels(dib, source, levels, where(make_copy));
    });
  });
}

HGLOBAL VORELCALL ColorBrightnessContrast(HGLOBAL dib, short brightness, short contrast) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto is_percentage = [](int value) { return value >= -100 && value <= 100; };
    const auto check = [&](const DibHeader& header) {
      const Error refused = refusal(header, {4, 8, 24}, SizeBits::kLow16, SizeBits::kLow16);
      return refused == Error::kNone && !(is_percentage(brightness) && is_percentage(contrast)) ? Error::kParameter
                                                                                                : refused;
    };
    return made_from(dib, check, [&](const LockedDib& source) {
      return released(with_components(source, kernels::percentage_table(brightness, contrast)));
    });
  });
}

HGLOBAL VORELCALL Convert8to24(HGLOBAL dib) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto check = [](const DibHeader& header) {
      const Error refused = refusal(header, {8}, SizeBits::kLow16, SizeBits::kLow16);
      return refused == Error::kPixelBits && header.depth == 24 ? Error::kNothingToConvert : refused;
    };
    return made_from(dib, check, [](const LockedDib& source) { return released(in_true_color(source)); });
  });
}

HGLOBAL VORELCALL Convolve(HGLOBAL dib, int make_copy, int type, int size, LPCSTR kernel_file, const int* kernel,
                           int* error) {
  return at_boundary(ClearedVariable(error), [&] {
    const auto check = [](const DibHeader& header) { return refusal(header, {8}); };
    return made_from(dib, check, [&](const LockedDib& source) -> Result<HGLOBAL> {
      const auto made = CallerKernel<std::remove_cvref_t<decltype(*kernel)>>{type, size, kernel_file, kernel}.make();
      if (!made) return made.error();
      return filtered_gray(dib, source, *made, where(make_copy));
    });
  });
}

HGLOBAL VORELCALL ColorConvolution(HGLOBAL dib, int make_copy, int intensity_mode, short type, int size, LPCSTR kernel_file,
                                   const short* kernel, int* error) {
  return at_boundary(ClearedVariable(error), [&] {
    const auto check = [](const DibHeader& header) { return refusal(header, {24}, SizeBits::kLow16); };
    return made_from(dib, check, [&](const LockedDib& source) -> Result<HGLOBAL> {
      const auto made = CallerKernel<int16_t>{type, size, kernel_file, kernel}.make();
      if (!made) return made.error();
      const kernels::Intensity intensity = intensity_mode == 1 ? kernels::Intensity::kWeighted : kernels::Intensity::kMean;
      return filtered_color(dib, source, *made, intensity, where(make_copy));
    });
  });
}

HGLOBAL VORELCALL ConvColorDIBtoGrayscale(HGLOBAL dib, int grade, int weighted) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto check = [](const DibHeader& header) {
      const Error refused = refusal(header, {header.depth});
      const bool is_known = header.depth == 1 || header.depth == 4 || header.depth == 8 || header.depth == 24;
      return refused == Error::kNone && !is_known ? Error::kPixelBits : refused;
    };
    return made_from(dib, check, [&](const LockedDib& source) {
      return released(in_grays(source, grade, weighted != 0 ? kernels::GrayRule::kWeighted : kernels::GrayRule::kMean));
    });
  });
}

HGLOBAL VORELCALL ConvMonoDIBtoGrayscale(HGLOBAL dib, int grade) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto check = [&](const DibHeader& header) {
      if (header.size == kHeaderBytes && (header.planes != 1 || header.depth != 1)) return Error::kCompressed;
      const Error refused = refusal(header, {1});
      return refused == Error::kNone && (grade < 0 || grade > 2) ? Error::kParameter : refused;
    };
    return made_from(dib, check, [&](const LockedDib& source) { return released(in_falling_grays(source, grade)); });
  });
}

HGLOBAL VORELCALL CleanImage(HGLOBAL dib, int level, int mode) {
  return at_silent_boundary([&]() -> Result<HGLOBAL> {
    const auto source = LockedDib::lock(dib);
    if (!source) return Error::kUnreported;
    const WaitCursor cursor;
    return released(cleaned(*source, level, mode == 0 ? kernels::Reach::kGentle : kernels::Reach::kFull));
  });
}

}  // extern "C"
