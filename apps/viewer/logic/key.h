// Keyboard shortcuts and their names in menus.
#pragma once

#include <string>

namespace vorel::viewer {

// A key with its modifiers. Letters and digits are identified by their upper-case character, as Windows virtual keys are.
struct Key {
  int code = 0;  // a virtual key; 0 for none
  bool control = false;
  bool shift = false;
  bool operator==(const Key&) const = default;
};

// Windows virtual key codes of keys without a character of their own.
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

// The text in a menu, such as "Ctrl+Shift+S". Empty for no key.
std::wstring key_text(const Key& key);

}  // namespace vorel::viewer
