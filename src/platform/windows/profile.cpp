#include "platform/profile.h"

#include "platform/file.h"
#include "platform/win32.h"

namespace vorel {
namespace {

bool is_small_enough(const std::string& path) {
  const auto file = OwnedFile::open_as_named(path.c_str());
  return file && file->size() <= Profile::kMostBytes;
}

}  // namespace

Profile::Profile(const std::string& path) : path_(path), is_read_(is_small_enough(path)) {}

int Profile::number(const char* section, const char* key, int otherwise) const {
  return is_read_ ? static_cast<int>(GetPrivateProfileIntA(section, key, otherwise, path_.c_str())) : otherwise;
}

std::string Profile::text(const char* section, const char* key, size_t most) const {
  if (!is_read_) return {};
  std::string value(most + 1, '\0');
  value.resize(GetPrivateProfileStringA(section, key, "", value.data(), static_cast<DWORD>(value.size()), path_.c_str()));
  return value;
}

}  // namespace vorel
