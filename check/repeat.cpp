// Rows called once, and repeatedly: nothing is left.
#include <algorithm>
#include <set>
#include <string>

#include "check/drivers.h"
#include "check/report.h"
#include "check/row.h"
#include "check/system.h"

namespace check {
namespace {

std::string text_of(const Outcome& outcome) {
  return std::string(outcome.gave ? "a result" : "zero") + ", code " + std::to_string(outcome.code) + ", status " +
         (outcome.status == kUntouched ? "untouched" : std::to_string(outcome.status));
}

void check_table(const std::vector<Row>& rows, const char* kind, Report& report) {
  std::set<std::string> exports;
  Stage stage;
  for (const Row& row : rows) {
    at_work(row.name, 0);
    exports.insert(row.exported());
    const Outcome outcome = stage.run(row);
    report.count();
    if (!row.as_stated(outcome)) report.fault(std::string(kind) + " call of " + row.name, text_of(outcome));
    if (!row.has(kChanging) && stage.run(row) != outcome) report.fault(row.name, "another result the second time");
    if (const std::string changed = stage.changed_inputs(); !changed.empty()) report.fault(row.name, changed);
  }
  std::printf("%s calls: %zu rows of %zu exports\n", kind, rows.size(), exports.size());
  if (exports.size() != VOREL_EXPORT_COUNT) report.fault("table", "exports are missing");
}

void check_repeated(const std::vector<Row>& rows, long calls, long slow_calls, Report& report) {
  for (const Row& row : rows) {
    Stage stage;
    const long times = row.has(kSlow) ? slow_calls : calls;
    for (int i = 0; i < 5; ++i) stage.run(row);  // first calls may keep something
    // The system may keep something once; a leak grows again.
    std::string more = "?";
    for (int attempt = 0; attempt < 3 && !more.empty(); ++attempt) {
      Holdings before = Holdings::now();
      if (row.has(kSystemKeeps)) before.blocks += times;
      for (long i = 0; i < times; ++i) {
        at_work(row.name, i);
        if (!row.as_stated(stage.run(row))) return report.fault(row.name, "another result in call " + std::to_string(i));
      }
      report.count(times);
      more = Holdings::now().more_than(before);
    }
    if (!more.empty()) report.fault(row.name, more);
    if (const std::string changed = stage.changed_inputs(); !changed.empty()) report.fault(row.name, changed);
  }
}

}  // namespace

std::vector<Row> good_rows() {
  std::vector<Row> rows = plain_good_rows();
#ifdef _WIN32
  for (const Row& row : device_good_rows()) rows.push_back(row);
#endif
  return rows;
}

std::vector<Row> failing_rows() {
  std::vector<Row> rows = plain_failing_rows();
#ifdef _WIN32
  for (const Row& row : device_failing_rows()) rows.push_back(row);
#endif
  return rows;
}

std::vector<Row> all_rows() {
  std::vector<Row> rows = good_rows();
  for (const Row& row : failing_rows()) rows.push_back(row);
  return rows;
}

std::string Holdings::more_than(const Holdings& before) const {
  std::string more;
  const auto compare = [&](const char* what, long now, long then) {
    if (now > then) more += " " + std::to_string(now - then) + " more " + what;
  };
  compare("blocks", blocks, before.blocks);
  compare("GDI objects", objects, before.objects);
  compare("windows", windows, before.windows);
  compare("files", files, before.files);
  return more;
}

int check_rows(const Arguments&) {
  Report report;
  check_table(good_rows(), "good", report);
  check_table(failing_rows(), "failing", report);
  return report.end();
}

int check_nothing_left(const Arguments& arguments) {
  Report report;
  {
    Stage stage;  // first calls may keep something
    for (const Row& row : good_rows()) stage.run(row);
    Holdings::now();
  }
  const long calls = arguments.number(0, 1000), slow_calls = arguments.number(1, 20);
  check_repeated(all_rows(), calls, slow_calls, report);
  return report.end();
}

int check_mixed_calls(const Arguments& arguments) {
  const long calls = arguments.number(0, 1'000'000), most_kib = arguments.number(1, 64);
  Report report;
  std::vector<Row> rows = all_rows(), slow;
  for (const Row& row : rows)
    if (row.has(kSlow)) slow.push_back(row);
  std::erase_if(rows, [](const Row& row) { return row.has(kSlow); });
  constexpr size_t kBetweenSlow = 200;
  Stage stage;
  const auto make = [&](long count) {
    for (long i = 0; i < count; ++i) {
      const auto turn = static_cast<size_t>(i);
      const bool is_slow = turn % kBetweenSlow == 0;
      const Row& row = is_slow ? slow[turn / kBetweenSlow % slow.size()] : rows[turn % rows.size()];
      at_work(row.name, i);
      if (!row.as_stated(stage.run(row))) report.fault(row.name, "another result in call " + std::to_string(i));
      report.count();
    }
  };
  // The heap settles after a few calls of each row.
  make(std::max(static_cast<long>(kBetweenSlow * slow.size()) * 2, calls / 10));
  const long before = resident_bytes();
  make(calls);
  const long grown = (resident_bytes() - before) / 1024;
  std::printf("grown by %ld KiB in %ld calls\n", grown, calls);
  if (grown > most_kib) report.fault("mixed calls", "the process has grown by " + std::to_string(grown) + " KiB");
  return report.end();
}

int load_picture(const Arguments& arguments) {
  return test::Block(LoadImageIntoDIB(arguments.word(0, ""), 1, nullptr)) ? 0 : 1;
}

int save_picture(const Arguments& arguments) {
  const int format = static_cast<int>(arguments.number(1, IMG_FORMAT_BITMAP));
  const int depth = format == IMG_FORMAT_CALS ? 1 : format == IMG_FORMAT_JPEG ? 24 : 8;
  return SaveDIBInImageFormat(arguments.word(0, ""), test::block_of(test::noise(30, 20, depth)).get(), format, 0, 0) != FALSE
             ? 0
             : 1;
}

}  // namespace check
