#include "tiff/handle.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>

namespace codec {
namespace {

TiffHandle::Client& client_of(thandle_t handle) { return *static_cast<TiffHandle::Client*>(handle); }

tmsize_t read(thandle_t handle, void* buffer, tmsize_t count) {
  TiffHandle::Client& client = client_of(handle);
  const size_t done = client.bytes.read(client.position, {static_cast<uint8_t*>(buffer), static_cast<size_t>(count)});
  client.position += done;
  return static_cast<tmsize_t>(done);
}

tmsize_t write(thandle_t handle, void* buffer, tmsize_t count) {
  TiffHandle::Client& client = client_of(handle);
  const size_t done = client.bytes.write(client.position, {static_cast<const uint8_t*>(buffer), static_cast<size_t>(count)});
  client.position += done;
  return static_cast<tmsize_t>(done);
}

toff_t size(thandle_t handle) { return client_of(handle).bytes.size(); }

toff_t seek(thandle_t handle, toff_t offset, int origin) {
  TiffHandle::Client& client = client_of(handle);
  const uint64_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? client.position : size(handle);
  return client.position = base + offset;
}

int close(thandle_t /*handle*/) { return 0; }

// The row of a strip that a message of the Group 4 decoder says is not whole. A row that is ended before its first pixel is
// none: that is how data says that it ends.
std::optional<unsigned> broken_row(const char* message) {
  unsigned row = 0, pixels = 0;
  for (const char* text :
       {"Premature EOF at line %u", "Bad code word at line %u", "Uncompressed data (not supported) at line %u"})
    // NOLINTNEXTLINE(cert-err34-c): the library prints what fits
    if (std::sscanf(message, text, &row) == 1) return row;
  // NOLINTNEXTLINE(cert-err34-c): the same
  if (std::sscanf(message, "Premature EOL at line %u of %*s %*u (got %u", &row, &pixels) == 2 && pixels > 0) return row;
  return std::nullopt;
}

// Whether rows are missing that the data was still to give. Once it has said that it ends, the decoder counts fewer rows than
// are read, and complains about each.
bool is_before_end(TIFF* tiff, unsigned row) {
  if (TIFFIsTiled(tiff) != 0) return true;
  uint32_t rows_per_strip = 0;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows_per_strip);
  return rows_per_strip != 0 && TIFFCurrentRow(tiff) % rows_per_strip == row;
}

// Whether something is lost without which the library makes do, and of which nothing but a message tells: pixels of Group 4
// data, in whose place there is white, and colours, in whose place there is grey.
bool tells_loss(TIFF* tiff, std::string_view module, const char* message) {
  if (module == "TIFFReadDirectory") return std::string_view(message).starts_with("IO error during reading of \"ColorMap\"");
  if (module != "Fax4Decode") return false;
  const auto row = broken_row(message);
  return row && is_before_end(tiff, *row);
}

// Other messages are for people; what went wrong is told by the library's results.
int take_message(TIFF* tiff, void* client, const char* module, const char* format, va_list values) {
  std::array<char, 200> message{};
  std::vsnprintf(message.data(), message.size(), format, values);
  if (module != nullptr && tells_loss(tiff, module, message.data()))
    static_cast<TiffHandle::Client*>(client)->has_loss = true;
  return 1;
}

// Raw strips can be as long as the file, tables somewhat longer.
tmsize_t largest_allocation(uint64_t file_bytes) {
  constexpr uint64_t kAlwaysFine = uint64_t{256} << 20;
  constexpr uint64_t kMost = std::numeric_limits<tmsize_t>::max() / 2;
  return static_cast<tmsize_t>(std::min(kMost, std::max(kAlwaysFine, std::min(file_bytes, kMost) * 2)));
}

struct FreeOptions {
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

}  // namespace

TiffHandle::TiffHandle(Bytes& bytes, const char* mode) : client_(new Client{bytes}) {
  const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
  if (!options) fail(IMG_E_MEMORY);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), largest_allocation(bytes.size()));
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), take_message, client_.get());
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), take_message, client_.get());
  tiff_.reset(TIFFClientOpenExt("", mode, client_.get(), read, write, seek, close, size, nullptr, nullptr, options.get()));
  check(tiff_ != nullptr);
}

}  // namespace codec
