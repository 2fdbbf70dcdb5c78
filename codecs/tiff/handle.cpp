#include "tiff/handle.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>

#include "tiff/scanner.h"

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

// The row of a strip that a message of the Group 4 decoder reports as incomplete. A row that ends before its first pixel
// does not count: it marks the end of the data.
std::optional<unsigned> broken_row(std::string_view message) {
  constexpr size_t kMostDigits = 10;
  Scanner scanner(message);
  const auto number = [&] { return static_cast<unsigned>(scanner.number(kMostDigits).value_or(0)); };
  for (const char* text : {"Premature EOF at line ", "Bad code word at line ", "Uncompressed data (not supported) at line "})
    if (scanner.skip(text)) return number();
  if (!scanner.skip("Premature EOL at line ")) return std::nullopt;
  const unsigned row = number();
  if (scanner.skip_to("(got ") && number() > 0) return row;
  return std::nullopt;
}

// Whether rows are missing before the end of the data. Past an end mark the decoder counts fewer rows than are read, and
// reports each.
bool is_before_end(TIFF* tiff, unsigned row) {
  if (TIFFIsTiled(tiff) != 0) return true;
  uint32_t rows_per_strip = 0;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows_per_strip);
  return rows_per_strip != 0 && TIFFCurrentRow(tiff) % rows_per_strip == row;
}

// Losses that only a message reports: the library continues with white for pixels of Group 4 data, with grey for colours,
// and without tags that it has no memory for.
bool reports_loss(TIFF* tiff, std::string_view module, const char* message) {
  const std::string_view text = message;
  if (module == "TIFFReadDirectory" || module == "TIFFFetchNormalTag")
    return text.starts_with("Out of memory reading of") || text.starts_with("IO error during reading of \"ColorMap\"");
  if (module != "Fax4Decode") return false;
  const auto row = broken_row(message);
  return row && is_before_end(tiff, *row);
}

// Whether the library is about to lose its list of tags, and would write past a new one. Without a list from the start it fails as
// it should.
bool loses_tags(TIFF* tiff, std::string_view message) {
  return message.find("fields array") != std::string_view::npos &&
         TIFFFindField(tiff, TIFFTAG_IMAGEWIDTH, TIFF_ANY) != nullptr;
}

// Whether the library can continue without tags and codec. It can while it reads a directory: without the tag for a width, reading
// fails. The codec of PixarLog is excluded because it uses its state after a failure.
bool can_forget_tags(TIFF* tiff) {
  return TIFFGetMode(tiff) == O_RDONLY && TIFFFindField(tiff, TIFFTAG_PIXARLOGDATAFMT, TIFF_ANY) == nullptr;
}

// Frees the list of tags, the codec's state and the values read so far. A jump would leave the entries of the directory, which the
// library frees when it ends by itself.
void forget_tags(TIFF* tiff) {
  constexpr int kUnknownCodec = 0xFFFF;
  alignas(std::max_align_t) static constexpr std::array<std::byte, 64> kNoTags{};  // a private structure: zeros mean empty
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, kUnknownCodec);
  TIFFFreeDirectory(tiff);
  TIFFCreateCustomDirectory(tiff, reinterpret_cast<const TIFFFieldArray*>(kNoTags.data()));
}

// Whether libjpeg had no memory for its decoder, which the library calls nevertheless.
bool lacks_decoder(std::string_view module, std::string_view message) {
  return module == "JPEGLib" && message.starts_with("Insufficient memory");
}

// All other messages are ignored: the library's results report failures.
int take_message(TIFF* tiff, void* client, const char* module_name, const char* format, va_list values) {
  const std::string_view module = module_name != nullptr ? module_name : "";
  std::array<char, 200> message{};
  std::vsnprintf(message.data(), message.size(), format, values);
  auto& state = *static_cast<TiffHandle::Client*>(client);
  if (reports_loss(tiff, module, message.data())) state.has_loss = true;
  if (module == "Fax3Decode1D" && std::string_view(message.data()).starts_with("Buffer overflow"))
    state.ran_out_of_runs = true;
  if (!state.can_jump) return 1;
  const bool is_losing_tags = loses_tags(tiff, message.data());
  if (!is_losing_tags && !lacks_decoder(module, message.data())) return 1;
  state.can_jump = false;
  if (is_losing_tags && can_forget_tags(tiff)) {
    state.lacks_memory = true;
    forget_tags(tiff);
    state.can_jump = true;
    return 1;
  }
  state.left = tiff;
  std::longjmp(state.jump_buffer, 1);
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
  TIFF* opened = nullptr;
  const bool has_returned = run_guarded(*client_, [&] {
    opened = TIFFClientOpenExt("", mode, client_.get(), read, write, seek, close, size, nullptr, nullptr, options.get());
  });
  tiff_.reset(has_returned ? opened : client_->left);
  if (!has_returned) fail(IMG_E_MEMORY);
  check(tiff_ != nullptr);
}

}  // namespace codec
