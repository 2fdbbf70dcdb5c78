#include "cli/batch/journal.h"

#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>

namespace vorel::cli::batch {
namespace fs = std::filesystem;
namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

std::string file_name(Shard shard, const char* what, const char* ending) {
  if (shard.of == 1) return fmt::format("{}{}", what, ending);
  return fmt::format("{}-{}-of-{}{}", what, shard.number, shard.of, ending);
}

std::string sum_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> buffer(1 << 16);
  Hash hash;
  while (file) {
    file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    hash.add({buffer.data(), static_cast<size_t>(file.gcount())});
  }
  return file.eof() ? fmt::format("{:016x}", hash.value()) : "";
}

// Names need not be valid UTF-8, JSON must be: others go byte by byte.
Json exact(const std::string& name) {
  try {
    static_cast<void>(Json(name).dump());
    return name;
  } catch (const Json::type_error&) {
    return Json(std::vector<uint8_t>(name.begin(), name.end()));
  }
}

std::string exact_name(const Json& json) {
  if (json.is_string()) return json.get<std::string>();
  const auto bytes = json.get<std::vector<uint8_t>>();
  return {bytes.begin(), bytes.end()};
}

Json json_of(const std::vector<PlacedFile>& files) {
  Json list = Json::array();
  for (const PlacedFile& file : files) list.push_back({{"name", exact(file.name)}, {"bytes", file.bytes}});
  return list;
}

void check_settings(int version, const std::string& stated, const fs::path& file, const std::string& settings) {
  if (version == kVersion && stated == settings) return;
  throw Failure(ExitCode::kWrongUse, name_of(file),
                fmt::format("this journal is of other steps or options: {}; use the same ones, begin again with --overwrite "
                            "and without --resume, or give another --out",
                            stated));
}

std::vector<PlacedFile> files_of(const Json& list) {
  std::vector<PlacedFile> files;
  for (const Json& file : list) files.push_back({exact_name(file.at("name")), file.at("bytes").get<uint64_t>()});
  return files;
}

}  // namespace

Stamp Stamp::of(const fs::path& path, By by) {
  std::error_code ignored;
  const auto bytes = fs::file_size(path, ignored);
  if (ignored) return {};
  const auto time = fs::last_write_time(path, ignored).time_since_epoch().count();
  return {bytes, static_cast<int64_t>(time), by == By::kSum ? sum_of(path) : ""};
}

bool Stamp::is_like(const Stamp& other, By by) const {
  if (bytes != other.bytes) return false;
  return by == By::kSum ? !sum.empty() && sum == other.sum : time == other.time;
}

Journal::Journal(const fs::path& output, Shard shard, const std::string& settings, Start start)
    : output_(output),
      folder_(output / kJournalFolder),
      path_(folder_ / file_name(shard, "journal", ".jsonl")),
      scratch_(folder_ / file_name(shard, "unfinished", "")) {
  const auto fail = [&](const std::string& text) { throw Failure(ExitCode::kOutput, name_of(path_), text); };
  try {
    fs::create_directories(folder_);
    file_.emplace(path_);
    std::error_code ignored;  // a worker of a run that was killed may still be there and add a file
    fs::remove_all(scratch_, ignored);
    fs::create_directories(scratch_);
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::resource_unavailable_try_again)
      fail("another run of this batch is at work on it; wait for its end, or give another --out");
    fail(fmt::format(
        "the journal cannot be written ({}); check that you may write in the output folder and that there is room",
        error.code().message()));
  }
  std::error_code ignored;
  const bool is_new = fs::file_size(path_, ignored) == 0;
  if (start == Start::kNew && !is_new)
    fail("there is a journal of an earlier run; go on from it with --resume, or begin again with --overwrite");
  if (start == Start::kReplace) file_->empty();
  if (start == Start::kResume) read_all(settings);
  if (!has_settings_ && !add(Json{{"journal", kVersion}, {"settings", exact(settings)}}.dump()))
    fail("the journal cannot be written; check that there is room on the disk");
}

Journal::~Journal() {
  std::error_code ignored;
  fs::remove_all(scratch_, ignored);
}

// The own journal last: what it says is the newest.
void Journal::read_all(const std::string& settings) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder_, ignored))
    if (entry.path().extension() == ".jsonl" && entry.path() != path_) read(entry.path(), settings);
  read(path_, settings);
}

void Journal::read(const fs::path& path, const std::string& settings) {
  std::ifstream file(path, std::ios::binary);
  is_cut_ = has_settings_ = false;
  for (std::string line; std::getline(file, line);) {
    is_cut_ = file.eof();
    take(line, path, settings);
  }
}

// A line says nothing if it was cut, is damaged or of a later version: its input is done again.
void Journal::take(const std::string& line, const fs::path& file, const std::string& settings) try {
  const Json json = Json::parse(line);
  if (json.contains("settings")) {
    check_settings(json.value("journal", 0), exact_name(json["settings"]), file, settings);
    has_settings_ = true;
    return;
  }
  Record record;
  const char* event = "begin";
  if (json.contains("outputs")) {
    const bool is_done = json.contains("done");
    event = is_done ? "done" : "failed";
    record.kind = is_done ? Record::Kind::kDone : Record::Kind::kFailed;
    record.stamp = {json.value("bytes", uint64_t{0}), json.value("time", int64_t{0}), json.value("sum", "")};
    record.outputs = files_of(json["outputs"]);
  }
  if (json.contains(event)) records_.insert_or_assign(exact_name(json[event]), std::move(record));
} catch (const Json::exception&) {  // as if it were not there
}

bool Journal::is_done(const InputFile& input, Stamp::By by) const {
  const auto found = records_.find(input.key);
  if (found == records_.end() || found->second.kind != Record::Kind::kDone) return false;
  const Record& record = found->second;
  return record.stamp.is_like(Stamp::of(input.path, by), by) && std::ranges::all_of(record.outputs, [&](const auto& file) {
           std::error_code error;
           return fs::file_size(output_ / path_of(file.name), error) == file.bytes && !error;
         });
}

bool Journal::owns_outputs(const std::string& key) const {
  const auto found = records_.find(key);
  return found != records_.end() && (found->second.kind != Record::Kind::kFailed || !found->second.outputs.empty());
}

bool Journal::add(const std::string& line) {
  is_cut_ = !file_->append((is_cut_ ? "\n" : "") + line + "\n");
  return !is_cut_;
}

bool Journal::begin(const std::string& key) { return add(Json{{"begin", exact(key)}}.dump()); }

bool Journal::end(const std::string& key, const Stamp& stamp, const Outcome& outcome) {
  Json json;
  if (outcome.code == ExitCode::kDone) {
    json = {{"done", exact(key)}, {"bytes", stamp.bytes}, {"time", stamp.time}};
    if (!stamp.sum.empty()) json["sum"] = stamp.sum;
  } else {
    json = {{"failed", exact(key)}};
  }
  json["outputs"] = json_of(outcome.outputs);
  return add(json.dump());
}

}  // namespace vorel::cli::batch
