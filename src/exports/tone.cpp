// Histograms, lookup tables, brightness and contrast, filters, greys, cleaning.
#include <type_traits>

#include <vorel32.h>

#include "exports/boundary.h"
#include "platform/user.h"
#include "tone/caller_kernel.h"
#include "tone/checks.h"
#include "tone/cleaning.h"
#include "tone/filters.h"
#include "tone/grays.h"
#include "tone/histogram.h"
#include "tone/levels.h"

using namespace vorel;

namespace {

tone::Where where(int make_copy) { return make_copy != 0 ? tone::Where::kCopy : tone::Where::kInPlace; }

// Locks a DIB, checks its header and runs `work` on it.
Result<HGLOBAL> locked_and_checked(HGLOBAL dib, auto&& check, auto&& work) {
  if (dib == nullptr) return Error::kParameter;
  const LockedDib source = VOREL_TRY(or_error(LockedDib::lock(dib), Error::kLock));
  if (const Error refused = check(source.header()); refused != Error::kNone) return refused;
  return work(source);
}

// The same with a wait cursor.
Result<HGLOBAL> made_from(HGLOBAL dib, auto&& check, auto&& work) {
  return locked_and_checked(dib, check, [&](const LockedDib& source) -> Result<HGLOBAL> {
    const WaitCursor cursor;
    return work(source);
  });
}

Error refusal_at_8_bits(const DibHeader& header) { return tone::refusal(header, {8}); }

// Updates the counters to the square at `origin`.
Result<HGLOBAL> counted(HGLOBAL dib, HGLOBAL histogram, const int* origin) {
  if (histogram == nullptr || origin == nullptr) return Error::kParameter;
  return locked_and_checked(dib, refusal_at_8_bits, [&](const LockedDib& source) {
    return tone::counted(source, histogram, {origin[0], origin[1]});
  });
}

}  // namespace

extern "C" {

HGLOBAL VORELCALL ComputeHistogram(HGLOBAL dib, int operation, HGLOBAL histogram, const int* origin, int* error) {
  return at_boundary(ClearedVariable(error), [&]() -> Result<HGLOBAL> {
    switch (operation) {
      case IMG_ALLOCATE: return tone::new_histogram();
      case IMG_COMPUTE: return counted(dib, histogram, origin);
      case IMG_FREE: GlobalFree(histogram); return nullptr;
      default: return nullptr;
    }
  });
}

HGLOBAL VORELCALL ComputeLUT(HGLOBAL histogram, int operation, HGLOBAL table, int contrast, int brightness, int* error) {
  return at_boundary(ClearedVariable(error), [&]() -> Result<HGLOBAL> {
    switch (operation) {
      case IMG_ALLOCATE: return tone::new_lookup_table();
      case IMG_COMPUTE:
        if (table == nullptr) return Error::kParameter;
        return tone::filled_lookup_table(table, histogram, contrast, brightness);
      case IMG_FREE: GlobalFree(table); return table;
      default: return nullptr;
    }
  });
}

HGLOBAL VORELCALL ApplyLUT(HGLOBAL dib, HGLOBAL table, int make_copy, int* error) {
  return at_boundary(ClearedVariable(error), [&]() -> Result<HGLOBAL> {
    if (dib != nullptr && table == nullptr) return Error::kParameter;
    return made_from(dib, refusal_at_8_bits, [&](const LockedDib& source) -> Result<HGLOBAL> {
      const kernels::ComponentTable levels = VOREL_TRY(tone::read_lookup_table(table));
      return tone::with_levels(dib, source, levels, where(make_copy));
    });
  });
}

HGLOBAL VORELCALL ColorBrightnessContrast(HGLOBAL dib, short brightness, short contrast) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto is_percentage = [](int value) { return value >= -100 && value <= 100; };
    const auto check = [&](const DibHeader& header) {
      const Error refused = tone::refusal(header, {4, 8, 24}, tone::SizeBits::kLow16, tone::SizeBits::kLow16);
      return refused == Error::kNone && !(is_percentage(brightness) && is_percentage(contrast)) ? Error::kParameter
                                                                                                : refused;
    };
    return made_from(dib, check, [&](const LockedDib& source) {
      return released(tone::with_components(source, kernels::percentage_table(brightness, contrast)));
    });
  });
}

HGLOBAL VORELCALL Convert8to24(HGLOBAL dib) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto check = [](const DibHeader& header) {
      const Error refused = tone::refusal(header, {8}, tone::SizeBits::kLow16, tone::SizeBits::kLow16);
      return refused == Error::kPixelBits && header.depth == 24 ? Error::kNothingToConvert : refused;
    };
    return made_from(dib, check, [](const LockedDib& source) { return released(tone::in_true_color(source)); });
  });
}

HGLOBAL VORELCALL Convolve(HGLOBAL dib, int make_copy, int type, int size, LPCSTR kernel_file, const int* kernel,
                           int* error) {
  return at_boundary(ClearedVariable(error), [&] {
    return made_from(dib, refusal_at_8_bits, [&](const LockedDib& source) -> Result<HGLOBAL> {
      using Number = std::remove_cvref_t<decltype(*kernel)>;
      const kernels::Kernel made = VOREL_TRY((tone::CallerKernel<Number>{type, size, kernel_file, kernel}.make()));
      return tone::filtered_gray(dib, source, made, where(make_copy));
    });
  });
}

HGLOBAL VORELCALL ColorConvolution(HGLOBAL dib, int make_copy, int intensity_mode, short type, int size, LPCSTR kernel_file,
                                   const short* kernel, int* error) {
  return at_boundary(ClearedVariable(error), [&] {
    const auto check = [](const DibHeader& header) { return refusal(header, {24}, tone::SizeBits::kLow16); };
    return made_from(dib, check, [&](const LockedDib& source) -> Result<HGLOBAL> {
      const kernels::Kernel made = VOREL_TRY((tone::CallerKernel<int16_t>{type, size, kernel_file, kernel}.make()));
      const kernels::Intensity intensity = intensity_mode == 1 ? kernels::Intensity::kWeighted : kernels::Intensity::kMean;
      return tone::filtered_color(dib, source, made, intensity, where(make_copy));
    });
  });
}

HGLOBAL VORELCALL ConvColorDIBtoGrayscale(HGLOBAL dib, int grade, int weighted) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto check = [](const DibHeader& header) {
      const Error refused = tone::refusal(header, {header.depth});
      const bool is_known = header.depth == 1 || header.depth == 4 || header.depth == 8 || header.depth == 24;
      return refused == Error::kNone && !is_known ? Error::kPixelBits : refused;
    };
    return made_from(dib, check, [&](const LockedDib& source) {
      return released(
          tone::in_grays(source, grade, weighted != 0 ? kernels::GrayRule::kWeighted : kernels::GrayRule::kMean));
    });
  });
}

HGLOBAL VORELCALL ConvMonoDIBtoGrayscale(HGLOBAL dib, int grade) {
  set_thread_error(Error::kNone);
  return at_boundary(ThreadCode{}, [&] {
    const auto check = [&](const DibHeader& header) {
      if (header.size == kHeaderBytes && (header.planes != 1 || header.depth != 1)) return Error::kCompressed;
      const Error refused = tone::refusal(header, {1});
      return refused == Error::kNone && (grade < 0 || grade > 2) ? Error::kParameter : refused;
    };
    return made_from(dib, check, [&](const LockedDib& source) { return released(tone::in_inverted_ramp(source, grade)); });
  });
}

HGLOBAL VORELCALL CleanImage(HGLOBAL dib, int level, int mode) {
  return at_silent_boundary([&]() -> Result<HGLOBAL> {
    const auto source = LockedDib::lock(dib);
    if (!source) return Error::kUnreported;
    const WaitCursor cursor;
    return released(tone::cleaned(*source, level, mode == 0 ? kernels::Reach::kGentle : kernels::Reach::kFull));
  });
}

}  // extern "C"
