// Keys of the keyboard: how a menu names them.
#pragma once

#include <string>

namespace vorel::viewer {

// A key with what is held down with it. Letters and digits go by their capital character, as virtual keys of Windows do.
struct Key {
  int code = 0;  // a virtual key; 0 for none
  bool control = false;
  bool shift = false;
  bool operator==(const Key&) const = default;
};

// The virtual keys that have no character of their own, by their numbers on Windows.
enum VirtualKey : int {
  kSpaceKey = 0x20,
  kPageUpKey = 0x21,
  kPageDownKey = 0x22,
  kLeftKey = 0x25,
  kRightKey = 0x27,
  kNumpadPlusKey = 0x6B,
  kNumpadMinusKey = 0x6D,
  kF1Key = 0x70,
  kF5Key = 0x74,
  kPlusKey = 0xBB,
  kMinusKey = 0xBD,
};

// As menus show it: "Ctrl+Shift+S". Empty for no key.
std::wstring key_text(const Key& key);

}  // namespace vorel::viewer
