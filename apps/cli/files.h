// Picture files to read and to write, wherever they are.
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

#include "cli/platform.h"
#include "common/dib.h"

namespace vorel::cli {

// A new, empty file with a name of its own that is removed with its scope, unless it was renamed by then.
class ScratchFile {
 public:
  // In the system's temporary folder, for its owner's eyes only, or in a given one. The name ends as asked for. Both throw
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

class Input {
 public:
  // Throws Failure when there is nothing that can be read. The library needs files it can move about in: standard input
  // ("-"), pipes and devices are copied to a temporary one.
  Input(const std::string& name, std::istream& standard_input);

  const std::string& label() const { return label_; }  // for messages
  const std::string& loading_path() const { return loading_path_; }
  const std::filesystem::path& path() const { return path_; }
  uintmax_t bytes() const { return bytes_; }

 private:
  void copy(std::istream& from);

  std::string label_;
  std::filesystem::path path_;
  std::optional<ScratchFile> copy_;
  std::string loading_path_;
  uintmax_t bytes_ = 0;
};

class Output {
 public:
  // Refuses what must not be written before any work goes into it: throws Failure if something is there already and may not
  // be replaced.
  Output(const std::string& name, bool overwrite, std::ostream& standard_output);

  const std::string& label() const { return label_; }  // for messages

  // Whether this is the file of an input, or of another output.
  bool replaces(const Input& input) const;
  bool is_same_as(const Output& other) const;

  // Lets `save` write an empty file whose name ends as asked for, given as the library takes it, and puts that in place; or
  // leaves everything as it was. Throws Failure, and whatever `save` throws.
  using Save = std::function<void(const std::string& path)>;
  void write(const std::string& ending, const Save& save) const;

 private:
  [[noreturn]] void fail(const std::string& text) const;
  void put_in_place(const std::string& ending, const Save& save) const;
  void pour(const std::string& ending, const Save& save) const;
  void save_into(const ScratchFile& file, const Save& save) const;

  std::string label_;
  std::filesystem::path target_;  // where a symbolic link leads to
  std::filesystem::file_status found_;
  bool overwrite_;
  std::ostream* stream_ = nullptr;  // standard output, if that is meant
};

}  // namespace vorel::cli
