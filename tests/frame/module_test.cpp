// The notices of thread and process, followed the way the system sends them.
#include <algorithm>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "frame/thread_context.h"
#include "platform/thread_slot.h"

using namespace vorel;

namespace {

// The slot is the test program's own here: the module under test is not loaded for it.
class Module : public testing::Test {
 protected:
  static void SetUpTestSuite() { follow_module_notice(ModuleNotice::kProcessAttach, false); }
};

TEST_F(Module, EveryThreadStartsFromTheSameDefaults) {
  ImgThreadContext& mine = thread_context();
  const std::vector<int32_t> first{5, 10, 20, 40, 60, 80, 0, 0, 0, 0, 0};
  const std::vector<int32_t> second{5, 10, 15, 30, 40, 50, 0, 0, 0, 0, 0};
  std::ranges::fill(mine.first_scale_steps, 7);
  mine.base_scale = 99;
  std::thread([&] {
    ImgThreadContext& other = thread_context();
    EXPECT_NE(&other, &mine);
    EXPECT_TRUE(std::ranges::equal(other.first_scale_steps, first));
    EXPECT_TRUE(std::ranges::equal(other.second_scale_steps, second));
    EXPECT_EQ(other.base_scale, 10);
    EXPECT_EQ(other.setting, 4);
    EXPECT_EQ(other.error_code, 0);
    follow_module_notice(ModuleNotice::kThreadDetach, false);
  }).join();
  EXPECT_EQ(mine.base_scale, 99);
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
