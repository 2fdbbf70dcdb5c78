#include "tiff/handle.h"

#include <cstdarg>
#include <limits>

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

// The library's messages are for people; what went wrong is told by its results.
int keep_silent(TIFF* /*tiff*/, void* /*data*/, const char* /*module*/, const char* /*format*/, va_list /*values*/) {
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
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_silent, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), keep_silent, nullptr);
  tiff_.reset(TIFFClientOpenExt("", mode, client_.get(), read, write, seek, close, size, nullptr, nullptr, options.get()));
  check(tiff_ != nullptr);
}

}  // namespace codec
