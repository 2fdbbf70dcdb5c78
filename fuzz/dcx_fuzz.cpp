// Whatever comes as a DCX file: the first and the last page, and where one more would go.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "common/entry.h"
#include "pcx/dcx.h"
#include "pcx/pcx.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span<const uint8_t> file(data, size);
  const auto pages = [&] { return codec::DcxDirectory(file).page_count(); };
  const auto page = [&](int number) {
    return codec::at_entry(nullptr, [&] {
      const auto [offset, bytes] = codec::DcxDirectory(file).page(number, size);
      if (offset > size || bytes > size - offset) std::abort();
      return codec::read_pcx(file.subspan(static_cast<size_t>(offset), static_cast<size_t>(bytes)));
    });
  };
  GlobalFree(page(1));
  GlobalFree(page(codec::at_entry(nullptr, pages)));
  const uint64_t entry = codec::at_entry(nullptr, [&] { return codec::DcxDirectory(file).free_entry(); });
  if (entry + codec::DcxDirectory::kEntryBytes > codec::DcxDirectory::kBytes) std::abort();
  return 0;
}
