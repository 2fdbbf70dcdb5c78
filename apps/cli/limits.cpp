#include "cli/limits.h"

#include <cstdlib>
#include <fmt/format.h>

#include "common/picture.h"
#include "common/problem.h"

namespace vorel::cli {
namespace {

void check(uint64_t needed, uint64_t allowed, const char* what, const char* option) {
  if (needed <= allowed) return;
  throw programs::Problem(programs::Fault::kLimit,
                          fmt::format("the page needs {} {}, and {} allows {}; raise the limit, or leave the page out",
                                      needed, what, option, allowed));
}

}  // namespace

void Limits::check(const DibHeader& header) const {
  const uint64_t rows = programs::row_count(header), columns = static_cast<uint64_t>(std::abs(int64_t{header.width}));
  cli::check(rows * columns, pixels, "pixels", "--max-pixels");
  cli::check((ByteCount(2) * programs::plain_bytes(header)).value(), bytes, "bytes of memory", "--max-memory");
}

}  // namespace vorel::cli
