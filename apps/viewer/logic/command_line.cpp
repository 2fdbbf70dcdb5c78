#include "viewer/logic/command_line.h"

namespace vorel::viewer {
namespace {

// Backslashes count double where a quotation mark follows them.
std::wstring quoted_argument(const std::wstring& argument) {
  if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos) return argument;
  std::wstring text = L"\"";
  size_t backslashes = 0;
  for (const wchar_t character : argument) {
    if (character == L'"') text.append(backslashes + 1, L'\\');
    backslashes = character == L'\\' ? backslashes + 1 : 0;
    text += character;
  }
  return text.append(backslashes, L'\\') + L"\"";
}

}  // namespace

std::wstring command_line(const std::vector<std::wstring>& arguments) {
  std::wstring line;
  for (const std::wstring& argument : arguments) line += (line.empty() ? L"" : L" ") + quoted_argument(argument);
  return line;
}

}  // namespace vorel::viewer
