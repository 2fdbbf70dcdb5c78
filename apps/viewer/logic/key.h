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
  kBackspaceKey = 0x08,
  kEscapeKey = 0x1B,
  kSpaceKey = 0x20,
  kPageUpKey = 0x21,
  kPageDownKey = 0x22,
  kEndKey = 0x23,
  kHomeKey = 0x24,
  kLeftKey = 0x25,
  kRightKey = 0x27,
  kInsertKey = 0x2D,
  kDeleteKey = 0x2E,
  kNumpadPlusKey = 0x6B,
  kNumpadMinusKey = 0x6D,
  kF1Key = 0x70,
  kF5Key = 0x74,
  kF6Key = 0x75,
  kF8Key = 0x77,
  kF9Key = 0x78,
  kF11Key = 0x7A,
  kPlusKey = 0xBB,
  kMinusKey = 0xBD,
};

// The text in a menu, such as "Ctrl+Shift+S". Empty for no key.
std::wstring key_text(const Key& key);

}  // namespace vorel::viewer
