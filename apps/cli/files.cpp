#include "cli/files.h"

#include <cerrno>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

#include "cli/failure.h"
#include "cli/file_names.h"
#include "common/platform.h"

namespace vorel::cli {
namespace fs = std::filesystem;
namespace {

constexpr auto kWriting = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

// Past this no picture fits into a memory block.
constexpr uint64_t kMostBytes = (uint64_t{1} << 31) + 65536;

fs::path new_name(const std::string& ending) {
  std::random_device random;
  return fmt::format("vorel-{:08x}{:08x}.tmp{}", random(), random(), ending);
}

enum class Copied { kAll, kNotRead, kNotWritten, kTooLong };

// Copies what is left of one stream into another and flushes it.
Copied copy_bytes(std::istream& from, std::ostream& to) {
  std::vector<char> buffer(65536);
  uint64_t total = 0;
  while (from && to && total <= kMostBytes) {
    from.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    to.write(buffer.data(), from.gcount());
    total += static_cast<uint64_t>(from.gcount());
  }
  if (!to.flush()) return Copied::kNotWritten;
  if (total > kMostBytes) return Copied::kTooLong;
  return from.bad() || !from.eof() ? Copied::kNotRead : Copied::kAll;
}

}  // namespace

std::optional<std::string> contents_of(const std::string& name) {
  std::ifstream file(path_of(name), std::ios::binary);
  std::ostringstream bytes;
  if (copy_bytes(file, bytes) != Copied::kAll) return std::nullopt;
  return std::move(bytes).str();
}

ScratchFile::ScratchFile(const std::string& ending) : ScratchFile(fs::temp_directory_path(), Readers::kOwner, ending) {}

ScratchFile::ScratchFile(const fs::path& folder, Readers readers, const std::string& ending)
    : path_(folder / new_name(ending)) {
  remove_if_stopped(path_);
  if (const std::error_code error = create_new_file(path_, readers)) {
    forget_if_stopped(path_);
    throw std::system_error(error);
  }
}

ScratchFile::~ScratchFile() {
  std::error_code ignored;
  fs::remove(path_, ignored);
  forget_if_stopped(path_);
}

Input::Input(const std::string& name, std::istream& standard_input)
    : label_(name == "-" ? "standard input" : name), path_(path_of(name)) {
  const auto fail = [this](const std::string& text) { throw Failure(ExitCode::kInput, label_, text); };
  std::error_code error;
  if (name == "-") {
    copy(standard_input);
  } else {
    const fs::file_status status = fs::status(path_, error);
    if (status.type() == fs::file_type::not_found) fail("there is no such file; check its name and folder");
    if (fs::is_directory(status)) fail("this is a folder; name a picture file");
    errno = 0;
    std::ifstream file(path_, std::ios::binary);
    if (!file) {
      const std::string reason = std::error_code(errno, std::generic_category()).message();
      fail(fmt::format("the file cannot be opened ({}); check that you may read it", reason));
    }
    if (!fs::is_regular_file(status)) copy(file);
  }

  file_ = about(label_, [&] { return programs::PictureFile(path_); });
}

void Input::copy(std::istream& from) try {
  copy_ = std::make_unique<ScratchFile>();
  path_ = copy_->path();
  std::ofstream file(path_, std::ios::binary);
  switch (copy_bytes(from, file)) {
    case Copied::kAll: return;
    case Copied::kNotRead: throw Failure(ExitCode::kInput, label_, "reading stopped half-way; try again");
    case Copied::kTooLong: throw Failure(ExitCode::kLimit, label_, "there is more than 2 GB of it; use a smaller picture");
    case Copied::kNotWritten: throw std::system_error(std::make_error_code(std::errc::no_space_on_device));
  }
} catch (const std::system_error& error) {
  throw Failure(
      ExitCode::kInput, label_,
      fmt::format("no temporary copy can be made ({}); set TMPDIR (Windows: TMP) to a roomy folder you may write in",
                  error.code().message()));
}

Output::Output(const std::string& name, bool overwrite, std::ostream& standard_output, fs::path scratch)
    : label_(name == "-" ? "standard output" : name),
      scratch_(std::move(scratch)),
      target_(path_of(name)),
      overwrite_(overwrite) {
  if (name == "-") {
    stream_ = &standard_output;
    return;
  }
  std::error_code error;
  const bool is_link = fs::is_symlink(fs::symlink_status(target_, error));
  found_ = fs::status(target_, error);
  if (is_link && !fs::exists(found_)) fail("this symbolic link leads nowhere; remove it or give another name");
  if (!fs::exists(found_)) return;

  if (fs::is_directory(found_)) fail("this is a folder; name a file in it");
  if (!overwrite_) fail("there is a file of this name already; give another name, or --overwrite to replace it");
  if (!fs::is_regular_file(found_)) return;
  if ((found_.permissions() & kWriting) == fs::perms::none)
    fail("the file is write-protected; lift that or give another name");
  if (is_link) target_ = fs::canonical(target_, error);
  if (error) fail(fmt::format("the symbolic link cannot be followed ({}); name its target", error.message()));
}

bool Output::replaces(const Input& input) const {
  std::error_code error;
  return stream_ == nullptr && fs::equivalent(target_, input.file().path(), error);
}

bool Output::is_same_as(const Output& other) const {
  if (stream_ != nullptr || other.stream_ != nullptr) return stream_ == other.stream_;
  std::error_code error;
  return fs::weakly_canonical(target_, error) == fs::weakly_canonical(other.target_, error);
}

void Output::write(const std::string& ending, const Save& save) const try {
  const bool is_file = stream_ == nullptr && (!fs::exists(found_) || fs::is_regular_file(found_));
  if (is_file) {
    put_in_place(ending, save);
  } else {
    pour(ending, save);
  }
} catch (const std::system_error& error) {
  fail(fmt::format("the file cannot be created ({}); check that its folder is there and that you may write in it",
                   error.code().message()));
}

void Output::fail(const std::string& text) const { throw Failure(ExitCode::kOutput, label_, text); }

void Output::save_into(const ScratchFile& file, const Save& save) const {
  const auto path = programs::path_for_library(file.path());
  if (!path) fail("the path is longer than 127 characters; choose a folder nearer to the root");
  save(*path);
}

// Everything happens beside the target, so that it is there whole or not at all.
void Output::put_in_place(const std::string& ending, const Save& save) const {
  const fs::path beside = target_.has_parent_path() ? target_.parent_path() : fs::path(".");
  const fs::path& folder = scratch_.empty() ? beside : scratch_;
  const ScratchFile file(folder, fs::exists(found_) ? Readers::kOwner : Readers::kAsUsual, ending);
  if (fs::exists(found_)) fs::permissions(file.path(), found_.permissions());
  save_into(file, save);

  std::error_code error;
  if (overwrite_) {
    fs::rename(file.path(), target_, error);
  } else {
    error = move_to_free_name(file.path(), target_);
  }
  if (error) fail(fmt::format("the finished picture could not be given this name ({}); try another one", error.message()));
}

// Devices and pipes get the bytes and are never replaced.
void Output::pour(const std::string& ending, const Save& save) const {
  const ScratchFile file(ending);
  save_into(file, save);
  std::ifstream bytes(file.path(), std::ios::binary);
  bool written;
  if (stream_ != nullptr) {
    written = copy_bytes(bytes, *stream_) == Copied::kAll;
  } else {
    std::ofstream target(target_, std::ios::binary);
    written = copy_bytes(bytes, target) == Copied::kAll;
    target.close();
    written = written && !target.fail();
  }
  if (!written) fail("not all of the picture could be written; check that there is room and that its reader is still there");
}

}  // namespace vorel::cli
