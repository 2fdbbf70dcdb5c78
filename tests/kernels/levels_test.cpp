// The level that the library uses.
#include "kernels/levels.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace vorel;

void set_asked_level(const char* name) {
#ifdef _WIN32
  _putenv_s("VOREL_CPU_LEVEL", name);
#else
  setenv("VOREL_CPU_LEVEL", name, 1);
#endif
}

// The level is decided once per process, so the variable is set before anything asks.
TEST(CpuLevels, TheEnvironmentLowersTheLevel) {
  set_asked_level("sse2");
  EXPECT_EQ(name_of(cpu_level()), "sse2");
  set_asked_level("avx2");
  EXPECT_EQ(name_of(cpu_level()), "sse2") << "decided once";
}

}  // namespace
