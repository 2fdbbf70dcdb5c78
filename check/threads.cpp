// Calls of many threads at once, and many threads one after the other.
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "check/drivers.h"
#include "check/report.h"
#include "check/row.h"
#include "check/system.h"

namespace check {
namespace {

std::vector<Row> thread_rows() {
  std::vector<Row> rows = all_rows();
  std::erase_if(rows, [](const Row& row) { return row.has(kOneThread) || row.has(kChanging); });
  return rows;
}

// Calls between two slow rows.
constexpr size_t kBetweenSlow = 50;

}  // namespace

int check_threads(const Arguments& arguments) {
  const auto threads = static_cast<size_t>(arguments.number(0, 64));
  const auto calls = static_cast<size_t>(arguments.number(1, 10'000));
  const std::vector<Row> rows = thread_rows();
  std::vector<Outcome> expected;
  {
    Stage stage;
    for (const Row& row : rows) expected.push_back(stage.run(row));
  }
  Report report;
  std::mutex reporting;
  const auto work = [&](size_t thread) {
    Stage stage;
    for (size_t i = 0; i < calls; ++i) {
      size_t which = (i * 7 + thread * 13) % rows.size();
      while (rows[which].has(kSlow) && i % kBetweenSlow != 0) which = (which + 1) % rows.size();
      at_work(rows[which].name, static_cast<long>(i));
      if (stage.run(rows[which]) == expected[which]) continue;
      const std::lock_guard guard(reporting);
      report.fault(rows[which].name, "another result than in one thread, call " + std::to_string(i));
    }
  };
  std::vector<std::thread> running;
  for (size_t thread = 0; thread < threads; ++thread) running.emplace_back(work, thread);
  for (std::thread& thread : running) thread.join();
  report.count(static_cast<long>(threads * calls));
  return report.end();
}

int check_many_threads(const Arguments& arguments) {
  const long threads = arguments.number(0, 10'000);
  constexpr int kAtOnce = 20, kCallsOfEach = 4;
  const std::vector<Row> rows = [] {
    std::vector<Row> found = thread_rows();
    std::erase_if(found, [](const Row& row) { return row.has(kSlow); });
    return found;
  }();
  Report report;
  std::atomic<long> wrong = 0;
  Stage inputs;  // made by one thread, so that the stage's own blocks do not count
  for (const Row& row : rows) inputs.run(row);
  const auto run = [&](long count) {
    for (long done = 0; done < count; done += kAtOnce) {
      std::vector<std::thread> running;
      for (int i = 0; i < kAtOnce; ++i)
        running.emplace_back([&, number = static_cast<size_t>(done + i)] {
          if (ImgError() != 0) ++wrong;  // a new thread's code
          SetImgError(static_cast<int>(number % 32));
          if (ImgError() != static_cast<int>(number % 32)) ++wrong;
          Stage stage;
          for (size_t call = 0; call < kCallsOfEach; ++call) {
            const Row& row = rows[(number + call * 11) % rows.size()];
            if (!row.as_stated(stage.run(row))) ++wrong;
          }
        });
      for (std::thread& thread : running) thread.join();
    }
  };
  use_device_contexts();
  run(200);  // first threads may leave something
  // The system may keep something once; a leak grows again.
  std::string more = "?";
  for (int attempt = 0; attempt < 3 && !more.empty(); ++attempt) {
    const Holdings before = Holdings::now();
    run(threads);
    report.count(threads);
    more = Holdings::now().more_than(before);
  }
  if (wrong != 0) report.fault("threads", std::to_string(wrong.load()) + " wrong results or codes");
  if (!more.empty()) report.fault("threads leave", more);
  return report.end();
}

}  // namespace check
