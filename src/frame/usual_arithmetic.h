// The floating-point environment that the library expects, for a scope: rounded to nearest, full precision, no traps. Hosts and
// their other libraries may have changed all three.
#pragma once

#include <cstdint>
#include <xmmintrin.h>

namespace vorel {

class UsualArithmetic {
 public:
  UsualArithmetic() : vector_(_mm_getcsr()), x87_(x87_word()), x87_status_(x87_status()) {
    if ((vector_ & kControl) != kUsualVector) _mm_setcsr(kUsualVector);
    if (x87_ != kUsualX87) set_x87_word(kUsualX87);
  }
  UsualArithmetic(const UsualArithmetic&) = delete;
  UsualArithmetic& operator=(const UsualArithmetic&) = delete;
  ~UsualArithmetic() {
    if ((vector_ & kControl) != kUsualVector) _mm_setcsr(vector_);
    if (x87_ == kUsualX87) return;
    if ((x87_ & kMasks) == kMasks)
      set_x87_word(x87_);
    else
      restore_x87();
  }

 private:
  static constexpr uint32_t kControl = 0xFFC0, kUsualVector = 0x1F80;  // the other bits are status flags
  static constexpr uint16_t kUsualX87 = 0x037F, kMasks = 0x3F, kExceptions = 0x80FF;

  static uint16_t x87_word() {
    uint16_t word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
  }
  static uint16_t x87_status() {
    uint16_t word = 0;
    __asm__ volatile("fnstsw %0" : "=m"(word));
    return word;
  }
  // Exception flags raised in the scope would trap as soon as they are unmasked, so the host's flags are restored with its
  // masks. The register stack stays as it is: it may hold the value that is being returned.
  void restore_x87() const {
    struct {
      uint32_t control, status, rest[5];
    } state;
    __asm__ volatile("fnstenv %0" : "=m"(state));
    state.control = (state.control & ~0xFFFFu) | x87_;
    state.status = (state.status & ~uint32_t{kExceptions}) | (x87_status_ & kExceptions);
    __asm__ volatile("fldenv %0" : : "m"(state));
  }
  static void set_x87_word(uint16_t word) { __asm__ volatile("fldcw %0" : : "m"(word)); }

  uint32_t vector_;
  uint16_t x87_, x87_status_;
};

}  // namespace vorel
