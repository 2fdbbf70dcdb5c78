// Picture files to read and to write, wherever they are.
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "cli/platform.h"
#include "common/picture_file.h"

namespace vorel::cli {

// A new, empty file with a name of its own that is removed with its scope, unless it was renamed by then.
class ScratchFile {
 public:
  // In the system's temporary folder, readable by its owner only, or in a given one. `ending` ends the name. Both throw
  // std::system_error.
  explicit ScratchFile(const std::string& ending = "");
  ScratchFile(const std::filesystem::path& folder, Readers readers, const std::string& ending);
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// All bytes of a file; none if it cannot be read.
std::optional<std::string> contents_of(const std::string& name);

class Input {
 public:
  // Throws Failure if the input cannot be read. The library needs seekable files: standard input ("-"), pipes and devices are
  // copied to a temporary one.
  Input(const std::string& name, std::istream& standard_input);

  const std::string& label() const { return label_; }  // for messages
  const programs::PictureFile& file() const { return *file_; }

 private:
  void copy(std::istream& from);

  std::string label_;
  std::filesystem::path path_;
  std::unique_ptr<ScratchFile> copy_;
  std::optional<programs::PictureFile> file_;
};

class Output {
 public:
  // Checks the target before any work is done: throws Failure if a file is there already and may not be replaced. Unfinished
  // files are beside the target, or in a given folder of its file system.
  Output(const std::string& name, bool overwrite, std::ostream& standard_output, std::filesystem::path scratch = {});

  const std::string& label() const { return label_; }  // for messages

  // Whether this is the file of an input, or of another output.
  bool replaces(const Input& input) const;
  bool is_same_as(const Output& other) const;

  // Hands `save` the path of an empty file, in the form that the library takes, and moves the file to the target when it is
  // written. On failure the target stays as it was. `ending` ends the file's name. Throws Failure, and whatever `save` throws.
  using Save = std::function<void(const std::string& path)>;
  void write(const std::string& ending, const Save& save) const;

 private:
  [[noreturn]] void fail(const std::string& text) const;
  void put_in_place(const std::string& ending, const Save& save) const;
  void pour(const std::string& ending, const Save& save) const;
  void save_into(const ScratchFile& file, const Save& save) const;

  std::string label_;
  std::filesystem::path scratch_;
  std::filesystem::path target_;  // where a symbolic link leads to
  std::filesystem::file_status found_;
  bool overwrite_;
  std::ostream* stream_ = nullptr;  // standard output, if that is meant
};

}  // namespace vorel::cli
