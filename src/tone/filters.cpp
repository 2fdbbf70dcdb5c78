#include "tone/filters.h"

#include "dib/held_part.h"

namespace vorel::tone {
namespace {

Result<ZeroedBuffer> scratch_for(const OpenDib& source, const kernels::Kernel& kernel) {
  return or_error(ZeroedBuffer::allocate(kernels::convolution_scratch_bytes(kernel, source.pixels().width())),
                  Error::kMemory);
}

}  // namespace

Result<HGLOBAL> filtered_gray(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel, Where where) {
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kReadsFullTable));
  Target target = VOREL_TRY(Target::of(handle, opened, where, OwnedDib::allocate_unset));
  const ZeroedBuffer scratch = VOREL_TRY(scratch_for(opened, kernel));
  target.write_gray_ramp();
  fill_from_held(opened, target.pixels(), kernel.reach(),
                 [&](ConstDibView from, DibView to) { kernels::filter().convolve_gray(from, to, kernel, scratch.bytes()); });
  return std::move(target).release();
}

Result<HGLOBAL> filtered_color(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel,
                               kernels::Intensity intensity, Where where) {
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kReadsFullTable));
  Target target = VOREL_TRY(Target::of(handle, opened, where, OwnedDib::allocate_unset_or_retry));
  const ZeroedBuffer scratch = VOREL_TRY(scratch_for(opened, kernel));
  target.keep_table();  // 24 bits need no table
  fill_from_held(opened, target.pixels(), kernel.reach(), [&](ConstDibView from, DibView to) {
    kernels::filter().convolve_color(from, to, kernel, intensity, scratch.bytes());
  });
  return std::move(target).release();
}

}  // namespace vorel::tone
