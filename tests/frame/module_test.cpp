// The notices of thread and process, followed the way the system sends them.
#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

#include "frame/thread_context.h"
#include "platform/thread_slot.h"

using namespace vorel;

namespace {

// The slot is the test program's own here: the module under test is not loaded for it.
class Module : public testing::Test {
 protected:
  static void SetUpTestSuite() { follow_module_notice(ModuleNotice::kProcessAttach, false); }
};

// The state of a subsystem, which counts its destructions.
struct State {
  int value = 7;
  char rest[5] = {};
  ~State() { ++destroyed; }
  static inline int destroyed = 0;
};

const PerThread<State> first_state, second_state;

TEST_F(Module, EveryThreadHasItsOwnStatesFromTheirDefaultsToItsEnd) {
  first_state->value = 99;
  State::destroyed = 0;
  std::thread([&] {
    EXPECT_EQ(first_state->value, 7);
    EXPECT_EQ(second_state->value, 7);
    thread_context().error_code = 1;
    first_state->value = 2;
    std::ranges::fill(first_state->rest, '#');
    second_state->value = 3;
    EXPECT_EQ(thread_context().error_code, 1);
    EXPECT_EQ(first_state->value, 2);
    EXPECT_EQ(State::destroyed, 0);
#ifdef _WIN32
    follow_module_notice(ModuleNotice::kThreadDetach, false);  // sent to modules alone
#endif
  }).join();
  EXPECT_EQ(State::destroyed, 2);
  EXPECT_EQ(first_state->value, 99);
}

TEST_F(Module, AThreadGetsItsContextOnAttachAndLosesItOnDetach) {
  std::thread([] {
    EXPECT_EQ(thread_slot::get(), nullptr);
    EXPECT_TRUE(follow_module_notice(ModuleNotice::kThreadAttach, false));
    EXPECT_NE(thread_slot::get(), nullptr);
    EXPECT_TRUE(follow_module_notice(ModuleNotice::kThreadDetach, false));
    EXPECT_EQ(thread_slot::get(), nullptr);
    EXPECT_TRUE(follow_module_notice(ModuleNotice::kThreadDetach, false)) << "nothing to free is fine";
  }).join();
}

TEST_F(Module, UnknownNoticesAreRefused) { EXPECT_FALSE(follow_module_notice(ModuleNotice{4}, false)); }

TEST_F(Module, RepeatedProcessNoticesAreRefusedWhereTheSystemSendsThem) {
  EXPECT_FALSE(follow_module_notice(ModuleNotice::kProcessAttach, true));
  EXPECT_TRUE(follow_module_notice(ModuleNotice::kProcessDetach, true));
  EXPECT_FALSE(follow_module_notice(ModuleNotice::kProcessDetach, true));
  EXPECT_TRUE(follow_module_notice(ModuleNotice::kProcessAttach, false));
}

}  // namespace
