// What a batch has done so far, kept beside the outputs: a later run goes on from there.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/batch/process.h"
#include "cli/batch/shard.h"
#include "cli/batch/task.h"

namespace vorel::cli::batch {

// What an input was like. Two are alike if their sums are, or size and time where one has no sum.
struct Stamp {
  uint64_t bytes = 0;
  int64_t time = 0;
  std::string sum;

  enum class By { kTime, kSum };
  static Stamp of(const std::filesystem::path& path, By by);  // all zero of a file that cannot be read
  bool is_like(const Stamp& other, By by) const;
};

// The folder below the output folder that holds journals, and outputs that are not finished.
inline constexpr const char* kJournalFolder = ".vorel-batch";

// A line of JSON for each event. Each shard has a journal of its own, so that several may run in one folder.
class Journal {
 public:
  enum class Start { kNew, kResume, kReplace };

  // Throws Failure: another run has the journal, or it is of other settings, or it is there and is to be a new one.
  Journal(const std::filesystem::path& output, Shard shard, const std::string& settings, Start start);
  ~Journal();  // removes the scratch folder
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  // For outputs in the making; empty at the start, whatever an earlier run left there.
  const std::filesystem::path& scratch() const { return scratch_; }

  // Done before, from the same input, and the outputs are still there.
  bool is_done(const InputFile& input, Stamp::By by) const;
  // Files of the names of its outputs were made by an earlier run, if there are any.
  bool owns_outputs(const std::string& key) const;

  // False if the line could not be written whole.
  bool begin(const std::string& key);
  bool end(const std::string& key, const Stamp& stamp, const Outcome& outcome);

 private:
  struct Record {
    enum class Kind { kBegun, kDone, kFailed } kind = Kind::kBegun;
    Stamp stamp = {};
    std::vector<PlacedFile> outputs = {};
  };
  void read(const std::filesystem::path& file, const std::string& settings);
  void read_all(const std::string& settings);
  void take(const std::string& line, const std::filesystem::path& file, const std::string& settings);
  bool add(const std::string& line);

  std::filesystem::path output_, folder_, path_, scratch_;
  std::optional<AppendFile> file_;
  bool has_settings_ = false;  // the journal says what it is of
  bool is_cut_ = false;        // its last line has no end
  std::map<std::string, Record> records_;
};

}  // namespace vorel::cli::batch
