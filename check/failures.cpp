// Each good row while the system fails under it.
#include <algorithm>
#include <set>
#include <string>

#include "check/drivers.h"
#include "check/report.h"
#include "check/row.h"
#include "check/system.h"

namespace check {
namespace {

std::string text_of(const Outcome& outcome, const Outcome& usual) {
  return std::string(outcome.gave ? outcome.content == usual.content ? "the usual result" : "another result" : "zero") +
         ", code " + std::to_string(outcome.code) + ", status " + std::to_string(outcome.status);
}

// Runs every good row, or those after a given row, and makes each system call of the part fail.
void fail_each_call(SystemPart part, const std::string& first_after, Report& report) {
  keep_jpeg_loaded();
  bool is_after = first_after.empty();
  for (const Row& row : good_rows()) {
    if (!std::exchange(is_after, is_after || row.name == first_after)) continue;
    FailingSystem system(part);
    Stage stage;
    stage.probe = &system;
    for (int i = 0; i < 3; ++i) stage.run(row);
    const Outcome usual = stage.run(row);
    long most = 0;
    for (const bool lasts : {false, true})
      for (long at = 1;; ++at) {
        at_work(row.name, lasts ? -at : at);
        system.fail(at, lasts);
        Holdings before = Holdings::now();
        const Outcome outcome = stage.run(row);
        Holdings after = Holdings::now();
        const std::string failed = system.failed();
        if (failed.empty()) break;
        report.count();
        most = std::max(most, at);
        const std::string where =
            std::string(row.name) + ", " + failed + " fails as call " + std::to_string(at) + (lasts ? " and on" : "");
        if (!row.is_stated_failure(outcome, usual, part == kFilePart)) report.fault(where, text_of(outcome, usual));
        if (const std::string changed = stage.changed_inputs(row.has(kLeavesLock)); !changed.empty())
          report.fault(where, changed);
        // The system may keep something on the first call; a leak grows with every call.
        for (int again = 0; again < 3 && !after.more_than(before).empty(); ++again) {
          before = Holdings::now();
          stage.run(row);
          after = Holdings::now();
        }
        if (row.has(kSystemKeeps)) ++before.blocks;
        if (const std::string more = after.more_than(before); !more.empty()) report.fault(where, "left:" + more);
        system.fail(0, false);
        if (stage.run(row) != usual && !row.has(kChanging))
          return report.fault(where, "another result once nothing fails any more");
      }
    system.fail(0, false);
    if (stage.run(row) != usual && !row.has(kChanging)) report.fault(row.name, "another result once nothing fails any more");
    std::printf("%s: %ld\n", row.name, most);
  }
}

}  // namespace

int check_allocations(const Arguments& arguments) {
  Report report;
  fail_each_call(kMemoryPart, arguments.word(0, ""), report);
  return report.end();
}

int check_files(const Arguments& arguments) {
  Report report;
  fail_each_call(kFilePart, arguments.word(0, ""), report);
  return report.end();
}

// Requests of operator new only: a failure makes the library's own code throw std::bad_alloc.
int check_exceptions(const Arguments&) {
  Report report;
  keep_jpeg_loaded();
  std::set<std::string> exports;
  for (const Row& row : good_rows()) {
    FailingSystem system(kNewPart);
    Stage stage;
    stage.run(row);
    const Outcome usual = stage.run(row);
    stage.probe = &system;
    for (long at = 1;; ++at) {
      at_work(row.name, at);
      system.fail(at, false);
      const Outcome outcome = stage.run(row);
      if (system.failed().empty()) break;
      report.count();
      exports.insert(row.exported());
      if (!row.is_stated_failure(outcome, usual, false))
        report.fault(std::string(row.name) + ", exception " + std::to_string(at), text_of(outcome, usual));
      stage.changed_inputs();
    }
  }
  std::printf("exports that allocate with operator new: %zu\n", exports.size());
  return report.end();
}

}  // namespace check
