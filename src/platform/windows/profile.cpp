#include "platform/profile.h"

#include "platform/win32.h"

namespace vorel {

Profile::Profile(const std::string& path) : path_(path) {}

int Profile::number(const char* section, const char* key, int otherwise) const {
  return static_cast<int>(GetPrivateProfileIntA(section, key, otherwise, path_.c_str()));
}

std::string Profile::text(const char* section, const char* key, size_t most) const {
  std::string value(most + 1, '\0');
  value.resize(GetPrivateProfileStringA(section, key, "", value.data(), static_cast<DWORD>(value.size()), path_.c_str()));
  return value;
}

}  // namespace vorel
