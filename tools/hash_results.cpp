// Makes random calls of the exports that work on plain memory and prints a line for each: the parameters, and a hash of the
// results. Two builds of the library agree if they print the same; the first line that differs names a call that tells them
// apart.
//
//   hash_results build/native/bin/libvorel32.so --count 20000 >new.txt
//   hash_results build/native/bin/libvorel32.so --from 1234 --count 1    # the call of line 1234 alone
//   hash_results build/native/bin/libvorel32.so --only SkewDIB --seed 2
//
// The library is loaded by its path, so one build of this program serves all builds of it. A call depends on the seed and its
// number alone. Compare output of the Windows build with `diff --strip-trailing-cr`.

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>

#include "random_exports.h"
#ifdef _WIN32
#include "guarded_memory.h"
#endif

namespace {

std::vector<std::string> names() {
  std::vector<std::string> names;
  names.reserve(random_exports::kExports.size());
  for (const auto& entry : random_exports::kExports) names.emplace_back(entry.name);
  return names;
}

struct Options {
  std::string tested, only;
  uint64_t seed = 1;
  long from = 0, count = 20'000;
  size_t guarded = 0;
  bool digest = false;
};

#ifdef _WIN32
// Gives library and program memory whose blocks end at pages without access.
void guard(Library& library, size_t alignment) {
  guarded::guard_dll(alignment);
  library.GlobalAlloc = guarded::global_alloc;
  library.GlobalFree = guarded::global_free;
  library.GlobalLock = guarded::global_lock;
  library.GlobalSize = guarded::global_size;
  library.GlobalUnlock = guarded::global_unlock;
}
#endif

// With --only, calls keep the numbers that they have in a run of all exports.
void run(const Options& options) {
  Library library(std::filesystem::absolute(options.tested));
#ifdef _WIN32
  if (options.guarded != 0) guard(library, options.guarded);
#endif
  if (options.digest) {
    for (const auto& [name, digest] : random_exports::digests(library, options.count))
      fmt::print("{{\"{}\", {:#018x}}},\n", name, digest);
    return;
  }
  for (long index = options.from, left = options.count; left > 0; ++index) {
    const random_exports::NumberedCall call(options.seed, index);
    if (!options.only.empty() && call.entry.name != options.only) continue;
    --left;
    call.make(library, index);
  }
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  CLI::App app("Prints hashes of what random calls of a build of the library return.");
  app.allow_windows_style_options(false);  // Paths begin with a slash.
  app.add_option("library", options.tested, "path of the library")->required();
  app.add_option("--seed", options.seed, "another seed makes other calls")->capture_default_str();
  app.add_option("--from", options.from, "number of the first call")->capture_default_str();
  app.add_option("--count", options.count, "calls to make")->capture_default_str();
  app.add_flag("--digest", options.digest, "print a digest of the calls of each export instead");
  app.add_option("--only", options.only, "an export: make its calls alone")->check(CLI::IsMember(names()));
#ifdef _WIN32
  app.add_option("--guarded", options.guarded, "align blocks so, and end them at pages without access");
#endif
  CLI11_PARSE(app, argc, argv);
  run(options);
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "hash_results: %s\n", failure.what());
  return 2;
}
