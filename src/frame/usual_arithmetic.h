// Floating-point arithmetic as the library expects it, for a scope: rounded to nearest, in full precision, without traps. Hosts and
// their other libraries set all three to their own needs.
#pragma once

#include <cstdint>
#include <xmmintrin.h>

namespace vorel {

class UsualArithmetic {
 public:
  UsualArithmetic() : vector_(_mm_getcsr()), x87_(x87_word()) {
    if ((vector_ & kControl) != kUsualVector) _mm_setcsr(kUsualVector);
    if (x87_ != kUsualX87) set_x87_word(kUsualX87);
  }
  UsualArithmetic(const UsualArithmetic&) = delete;
  UsualArithmetic& operator=(const UsualArithmetic&) = delete;
  ~UsualArithmetic() {
    if ((vector_ & kControl) != kUsualVector) _mm_setcsr(vector_);
    if (x87_ != kUsualX87) set_x87_word(x87_);
  }

 private:
  static constexpr uint32_t kControl = 0xFFC0, kUsualVector = 0x1F80;  // the other bits note what has happened
  static constexpr uint16_t kUsualX87 = 0x037F;

  static uint16_t x87_word() {
    uint16_t word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
  }
  static void set_x87_word(uint16_t word) { __asm__ volatile("fldcw %0" : : "m"(word)); }

  uint32_t vector_;
  uint16_t x87_;
};

}  // namespace vorel
