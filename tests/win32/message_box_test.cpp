// The message box that a person would see.
#include "win32/support/message_box.h"

#include <gtest/gtest.h>

#include <vorel32.h>

namespace {

TEST(ErrorMessage, IsShownWhereThereIsNoBuffer) {
  const test::MessageBoxes boxes;
  EXPECT_EQ(ImgErrorString(nullptr, 3), nullptr);
  EXPECT_EQ(boxes.seen(), std::vector<std::string>{"VOREL error: Can't open file"});
}

}  // namespace
