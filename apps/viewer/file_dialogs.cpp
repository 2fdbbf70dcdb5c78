#include "viewer/file_dialogs.h"

#include <algorithm>
#include <vector>

namespace vorel::viewer {
namespace {

std::wstring widened(const char* text) { return {text, text + std::char_traits<char>::length(text)}; }

// "*.tif;*.tiff"
std::wstring patterns_of(const FileFormat& format) {
  std::wstring patterns;
  for (const char* ending : format.endings)
    if (ending != nullptr) patterns += (patterns.empty() ? L"*." : L";*.") + widened(ending);
  return patterns;
}

// The formats that can be saved. The other ones have no endings.
std::vector<const FileFormat*> formats_with_endings() {
  std::vector<const FileFormat*> formats;
  for (const FileFormat& format : file_formats())
    if (format.endings[0] != nullptr) formats.push_back(&format);
  return formats;
}

// Pairs of texts, each ended by a zero, and a zero at the end.
std::wstring filter_of(const std::wstring& name, const std::wstring& patterns) { return name + L'\0' + patterns + L'\0'; }

std::wstring opening_filter() {
  std::wstring all;
  for (const FileFormat* format : formats_with_endings()) all += (all.empty() ? L"" : L";") + patterns_of(*format);
  return filter_of(L"Pictures", all) + filter_of(L"All files", L"*.*");
}

std::wstring saving_filter() {
  std::wstring filter;
  for (const FileFormat* format : formats_with_endings()) filter += filter_of(widened(format->name), patterns_of(*format));
  return filter;
}

constexpr DWORD kLongestName = 1024;

OPENFILENAMEW dialog_for(HWND owner, const std::wstring& filter, std::wstring& name, DWORD flags) {
  name.resize(kLongestName);
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = filter.c_str();
  dialog.lpstrFile = name.data();
  dialog.nMaxFile = kLongestName;
  dialog.Flags = flags | OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY;
  return dialog;
}

// The filter that belongs to a format, counted from 1.
DWORD filter_index_of(const FileFormat* format) {
  const auto formats = formats_with_endings();
  const auto found = std::ranges::find(formats, format);
  return found == formats.end() ? 1 : static_cast<DWORD>(found - formats.begin()) + 1;
}

}  // namespace

std::optional<std::filesystem::path> ask_for_file_to_open(HWND owner) {
  const std::wstring filter = opening_filter();
  std::wstring name;
  OPENFILENAMEW dialog = dialog_for(owner, filter, name, OFN_FILEMUSTEXIST);
  return GetOpenFileNameW(&dialog) ? std::optional(std::filesystem::path(name.c_str())) : std::nullopt;
}

std::optional<SavingChoice> ask_for_file_to_save(HWND owner, const std::filesystem::path& offered) {
  const std::wstring filter = saving_filter();
  std::wstring name = offered.wstring();
  OPENFILENAMEW dialog = dialog_for(owner, filter, name, OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST);
  const FileFormat* usual = format_by_name(offered);
  const std::wstring ending = widened((usual != nullptr ? usual : formats_with_endings().front())->endings[0]);
  dialog.nFilterIndex = filter_index_of(usual);
  dialog.lpstrDefExt = ending.c_str();  // the dialog takes that of the chosen filter instead
  if (!GetSaveFileNameW(&dialog)) return std::nullopt;
  const std::filesystem::path path = name.c_str();
  const FileFormat* format = format_by_name(path);
  return SavingChoice{path, format != nullptr ? format : formats_with_endings()[dialog.nFilterIndex - 1]};
}

namespace {

std::wstring steps_filter() { return filter_of(L"Files of steps", L"*.txt") + filter_of(L"All files", L"*.*"); }

}  // namespace

std::optional<std::filesystem::path> ask_for_steps_to_open(HWND owner) {
  const std::wstring filter = steps_filter();
  std::wstring name;
  OPENFILENAMEW dialog = dialog_for(owner, filter, name, OFN_FILEMUSTEXIST);
  return GetOpenFileNameW(&dialog) ? std::optional(std::filesystem::path(name.c_str())) : std::nullopt;
}

std::optional<std::filesystem::path> ask_for_steps_to_save(HWND owner) {
  const std::wstring filter = steps_filter();
  std::wstring name = L"steps.txt";
  OPENFILENAMEW dialog = dialog_for(owner, filter, name, OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST);
  dialog.lpstrDefExt = L"txt";
  return GetSaveFileNameW(&dialog) ? std::optional(std::filesystem::path(name.c_str())) : std::nullopt;
}

const FileFormat* format_by_name(const std::filesystem::path& path) {
  std::string ending;  // endings of pictures are plain
  for (const wchar_t character : path.extension().wstring()) ending += character < 128 ? static_cast<char>(character) : '?';
  return format_for_name(ending);
}

}  // namespace vorel::viewer
