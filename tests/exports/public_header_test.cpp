#include <gtest/gtest.h>

extern "C" int palette_bytes_seen_from_c(void);

TEST(PublicHeader, ServesC) { EXPECT_EQ(palette_bytes_seen_from_c(), 64); }
