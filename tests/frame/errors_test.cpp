#ifndef _WIN32
#include <pthread.h>
#endif

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include <vorel32.h>

#include "support/heap.h"

namespace {

std::string text_of(int code) {
  char buffer[IMG_MESSAGE_BYTES];
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(ImgErrorString(buffer, code), buffer);
  return buffer;
}

TEST(Errors, OnlyCodesWithAMessageCanBeSet) {
  SetImgError(5);
  EXPECT_EQ(SetImgError(31), 5);
  for (int refused : {32, -1, 506, INT32_MIN}) {
    EXPECT_EQ(SetImgError(refused), 31) << refused;
    EXPECT_EQ(ImgError(), 31) << refused;
  }
}

TEST(Errors, TextsAreThoseThatProgramsKnow) {
  EXPECT_EQ(text_of(0), "Operation was successful.");
  EXPECT_EQ(text_of(4), "General I/O error in reading or writting.");
  EXPECT_EQ(text_of(20), "Paramater error in Dithering");
  EXPECT_EQ(text_of(22), "The QUENT algorithm creates only 1 or 4 bit image");
  EXPECT_EQ(text_of(25), "Could not get dispaly DC");
  EXPECT_EQ(text_of(30), "Nothing to do.");
  EXPECT_EQ(text_of(31), "Nothing to convert.");
}

TEST(Errors, OtherCodesStandForTheCurrentOne) {
  SetImgError(3);
  for (int code : {99, -5, 32}) EXPECT_EQ(text_of(code), "Can't open file") << code;
}

TEST(Version, IsCutWithoutATerminatingZero) {
  const auto filled = [](int length) {
    std::string buffer(20, '#');
    GetImageVersion(buffer.data(), length);
    return buffer;
  };
  const std::string rest(20, '#');
  EXPECT_EQ(filled(0), rest);
  EXPECT_EQ(filled(-1), rest);
  EXPECT_EQ(filled(7), "Version" + rest.substr(7));
  EXPECT_EQ(filled(12), "Version 5.59" + rest.substr(12));
  EXPECT_EQ(filled(13), std::string("Version 5.59\0", 13) + rest.substr(13));
  EXPECT_EQ(filled(20), filled(13));
}

TEST(Threads, HaveTheirOwnCode) {
  SetImgError(8);
  std::thread([] {
    EXPECT_EQ(ImgError(), 0);
    SetImgError(9);
  }).join();
  EXPECT_EQ(ImgError(), 8);
}

#ifndef _WIN32
// Destructors of a thread's own may run after the library's and still call it.
TEST(Threads, MayCallTheLibraryToTheirLastMoment) {
  static int last_code = -1;
  pthread_key_t key;
  pthread_key_create(&key, [](void*) { last_code = SetImgError(7); });
  std::thread([&] {
    pthread_setspecific(key, &last_code);
    SetImgError(9);
  }).join();
  pthread_key_delete(key);
  EXPECT_TRUE(last_code == 9 || last_code == 0) << last_code;
}
#endif

TEST(Threads, LeaveNothingBehind) {
  const auto run = [](int count) {
    for (int i = 0; i < count; ++i) std::thread([] { SetImgError(1); }).join();
  };
  run(100);  // whatever the system keeps for reuse is there after these
  const size_t before = test::heap_blocks();
  run(10'000);
  // A context a thread would be 10,000 blocks; a few may come and go with the system's own work.
  EXPECT_LT(test::heap_blocks(), before + 50);
}

}  // namespace
