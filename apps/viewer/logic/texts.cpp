#include "viewer/logic/texts.h"

#include "core/resolution.h"

namespace vorel::viewer {
namespace {

constexpr const wchar_t* kProgram = L"Vorel Viewer";

}  // namespace

std::wstring counted(int count, const std::wstring& what) {
  return std::to_wstring(count) + what + (count == 1 ? L"" : L"s");
}

std::wstring title_text(const PictureFacts& picture) {
  if (picture.name.empty()) return kProgram;
  std::wstring title = picture.name + (picture.changed ? L"*" : L"");
  if (picture.pages > 1) title += L" (" + page_text(picture) + L")";
  return title + L" - " + percent_text(picture) + L" - " + kProgram;
}

std::wstring page_text(const PictureFacts& picture) {
  if (picture.pages == 1) return L"1 page";
  return L"page " + std::to_wstring(picture.page) + L" of " + std::to_wstring(picture.pages);
}

std::wstring size_text(const PictureFacts& picture) {
  return std::to_wstring(picture.width) + L" x " + std::to_wstring(picture.height) + L" pixels, " +
         counted(picture.depth, L" bit");
}

std::wstring resolution_text(const PictureFacts& picture) {
  if (picture.x_per_metre <= 0 || picture.y_per_metre <= 0) return {};
  const auto x = std::to_wstring(nearest_dpi(picture.x_per_metre));
  const auto y = std::to_wstring(nearest_dpi(picture.y_per_metre));
  return (x == y ? x : x + L" x " + y) + L" dpi";
}

std::wstring pixel_text(const PixelFacts& pixel) {
  std::wstring text = std::to_wstring(pixel.x) + L", " + std::to_wstring(pixel.y) + L":";
  for (const int shift : {16, 8, 0}) text += L" " + std::to_wstring(pixel.color >> shift & 0xFF);
  return text;
}

std::wstring percent_text(const PictureFacts& picture) { return std::to_wstring(picture.percent) + L" %"; }

std::wstring plain_name(std::wstring menu_name) {
  std::erase(menu_name, L'&');
  while (menu_name.ends_with(L'.')) menu_name.pop_back();
  return menu_name;
}

std::wstring doubled(const std::wstring& text, wchar_t character) {
  std::wstring result;
  for (const wchar_t each : text) result += each == character ? std::wstring(2, each) : std::wstring(1, each);
  return result;
}

std::wstring as_reason(const std::string& message) {
  std::wstring reason(message.begin(), message.end());
  while (reason.ends_with(L'.') || reason.ends_with(L' ')) reason.pop_back();
  return reason;
}

}  // namespace vorel::viewer
