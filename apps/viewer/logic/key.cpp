#include "viewer/logic/key.h"

#include <algorithm>
#include <iterator>

namespace vorel::viewer {
namespace {

constexpr struct {
  int code;
  const wchar_t* name;
} kNames[] = {
    {kBackspaceKey, L"Backspace"},
    {kEscapeKey, L"Esc"},
    {kSpaceKey, L"Space"},
    {kPageUpKey, L"PgUp"},
    {kPageDownKey, L"PgDn"},
    {kEndKey, L"End"},
    {kHomeKey, L"Home"},
    {kLeftKey, L"Left"},
    {kRightKey, L"Right"},
    {kDeleteKey, L"Del"},
    {kInsertKey, L"Ins"},
    {kNumpadPlusKey, L"Num +"},
    {kNumpadMinusKey, L"Num -"},
    {kF1Key, L"F1"},
    {kF5Key, L"F5"},
    {kF6Key, L"F6"},
    {kF8Key, L"F8"},
    {kF9Key, L"F9"},
    {kF11Key, L"F11"},
    {kPlusKey, L"+"},
    {kMinusKey, L"-"},
};

std::wstring bare_name(int code) {
  const auto* found = std::ranges::find(kNames, code, [](const auto& row) { return row.code; });
  return found == std::end(kNames) ? std::wstring(1, static_cast<wchar_t>(code)) : found->name;
}

}  // namespace

std::wstring key_text(const Key& key) {
  if (key.code == 0) return {};
  return std::wstring(key.control ? L"Ctrl+" : L"") + (key.shift ? L"Shift+" : L"") + bare_name(key.code);
}

}  // namespace vorel::viewer
