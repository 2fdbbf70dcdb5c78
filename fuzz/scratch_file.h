// A file for readers that take paths.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <span>
#include <string>

namespace fuzz {

// One file a process, rewritten for every input and removed at the end.
class ScratchFile {
 public:
  explicit ScratchFile(const char* ending) {
    std::random_device random;
    path_ = (std::filesystem::temp_directory_path() / ("vorel-fuzz-" + std::to_string(random()) + ending)).string();
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { std::remove(path_.c_str()); }

  const char* with(std::span<const uint8_t> bytes) const {
    if (std::FILE* file = std::fopen(path_.c_str(), "wb")) {
      std::fwrite(bytes.data(), 1, bytes.size(), file);
      std::fclose(file);
    }
    return path_.c_str();
  }

 private:
  std::string path_;
};

}  // namespace fuzz
