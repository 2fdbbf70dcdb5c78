// How results leave the library: every way of reporting, and exceptions that must not get out.
#include "exports/boundary.h"

#include <gtest/gtest.h>
#include <new>
#include <stdexcept>

using namespace vorel;

namespace {

// The frame is the test program's own here, and nobody else tells it that the process begins: without that a thread that asks for
// its context is ended, and the first thread takes the program with it.
class Boundary : public testing::Test {
 protected:
  static void SetUpTestSuite() { follow_module_notice(ModuleNotice::kProcessAttach, false); }
};

Result<int> fails() { return Error::kDibSize; }
Result<int> fails_silently() { return Error::kUnreported; }
Result<int> succeeds() { return 5; }

TEST(UsualArithmetic, LeavesTheHostItsOwnExceptions) {
  constexpr uint16_t kUsual = 0x037F, kTrapsInexact = 0x035F, kOverflow = 8, kInexact = 32;
  const auto set_word = [](uint16_t word) { __asm__ volatile("fldcw %0" : : "m"(word)); };
  const auto status = [] {
    uint16_t word = 0;
    __asm__ volatile("fnstsw %0" : "=m"(word));
    return word & 0x3F;
  };
  uint32_t noted[7];
  __asm__ volatile("fnstenv %0" : "=m"(noted));
  noted[0] = kTrapsInexact;
  noted[1] |= kOverflow;
  __asm__ volatile("fldenv %0" : : "m"(noted));
  {
    const UsualArithmetic arithmetic;
    volatile long double value = 1;
    value = value / 3;
    EXPECT_EQ(status() & kInexact, kInexact);
  }
  const int after = status();
  uint16_t word = 0;
  __asm__ volatile("fnstcw %0; fnclex" : "=m"(word));
  set_word(kUsual);
  EXPECT_EQ(after, kOverflow);
  EXPECT_EQ(word, kTrapsInexact);
}

TEST_F(Boundary, ThreadCodeIsWrittenByReportedFailuresAlone) {
  thread_context().error_code = 3;
  EXPECT_EQ(at_boundary(ThreadCode{}, succeeds), 5);
  EXPECT_EQ(at_boundary(ThreadCode{}, fails_silently), 0);
  EXPECT_EQ(thread_context().error_code, 3);
  EXPECT_EQ(at_boundary(ThreadCode{}, fails), 0);
  EXPECT_EQ(thread_context().error_code, 19);
  EXPECT_EQ(at_silent_boundary([]() -> Result<int> { return Error::kMemory; }), 0);
  EXPECT_EQ(thread_context().error_code, 19);
}

TEST_F(Boundary, ClearedVariableIsZeroUnlessTheOperationFails) {
  int32_t code = 77;
  at_boundary(ClearedVariable(&code), succeeds);
  EXPECT_EQ(code, 0);
  at_boundary(ClearedVariable(&code), fails);
  EXPECT_EQ(code, 19);
  EXPECT_EQ(at_boundary(ClearedVariable(nullptr), fails), 0);
}

TEST_F(Boundary, FailureVariableKeepsItsValueOnSuccess) {
  int16_t words[3] = {1, 2, 3};
  at_boundary(FailureVariable(&words[1]), succeeds);
  EXPECT_EQ(words[1], 2);
  at_boundary(FailureVariable(&words[1]), fails);
  EXPECT_EQ(words[0], 1);
  EXPECT_EQ(words[1], 19);
  EXPECT_EQ(words[2], 3) << "16 bits are written, no more";
}

TEST_F(Boundary, BothWaysAtOnce) {
  thread_context().error_code = 0;
  int32_t code = 0;
  at_boundary(Both(ThreadCode{}, FailureVariable(&code)), fails);
  EXPECT_EQ(code, 19);
  EXPECT_EQ(thread_context().error_code, 19);
}

TEST_F(Boundary, ExceptionsBecomeTheMemoryCode) {
  const auto runs_out = []() -> Result<int> { throw std::bad_alloc(); };
  const auto too_long = []() -> Result<int> { throw std::length_error(""); };
  int32_t code = 0;
  EXPECT_EQ(at_boundary(ClearedVariable(&code), runs_out), 0);
  EXPECT_EQ(code, 1);
  EXPECT_EQ(at_boundary(ClearedVariable(&code), too_long), 0);
  EXPECT_EQ(code, 1);
  EXPECT_EQ(at_boundary(ThreadCode{}, runs_out, -1), -1) << "an export whose failure is not zero";
}

}  // namespace
