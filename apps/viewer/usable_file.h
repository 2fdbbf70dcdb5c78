// Files under names that the library takes: plain letters, and not too many of them.
#pragma once

#include <filesystem>
#include <string>
#include <utility>

namespace vorel::viewer {

// The name of a file that is not there yet, in a folder. The file that gets the name is removed with this.
class ScratchName {
 public:
  ScratchName() = default;  // none
  ScratchName(const std::filesystem::path& folder, const std::wstring& ending);
  ScratchName(ScratchName&& other) noexcept : path_(std::exchange(other.path_, {})) {}
  ScratchName& operator=(ScratchName&& other) noexcept;
  ~ScratchName();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// A file to load from: itself or, where neither its name nor its short name serve, a link to it or a copy of it among the
// temporary files.
class UsableFile {
 public:
  explicit UsableFile(const std::filesystem::path& path);
  const std::filesystem::path& path() const { return path_; }

 private:
  ScratchName other_;
  std::filesystem::path path_;
};

// A new file that takes the place of another once it is written. Throws Failure where there is no room for it.
class Replacement {
 public:
  Replacement(const std::filesystem::path& target, const std::wstring& ending);
  const std::string& usable_name() const { return usable_name_; }  // to write to
  void commit() const;                                             // or else the target stays as it was

 private:
  std::filesystem::path target_;
  ScratchName beside_, elsewhere_;  // written to is `elsewhere_`, if there is one
  std::string usable_name_;
};

}  // namespace vorel::viewer
