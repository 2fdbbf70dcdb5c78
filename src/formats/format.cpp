#include "formats/format.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "formats/fax_set.h"
#include "platform/ascii.h"
#include "platform/file.h"

namespace vorel::formats {
namespace {

constexpr size_t kSearchedBytes = 511;  // texts are searched for in all bytes but the last

template <class Integer>
Integer value_at(const FileStart& start, size_t offset) {
  Integer value;
  std::memcpy(&value, start.bytes.data() + offset, sizeof value);
  return value;
}

std::string_view chars(const FileStart& start, size_t offset, size_t count) {
  return {reinterpret_cast<const char*>(start.bytes.data()) + offset, count};
}

bool is_tiff(const FileStart& start) { return chars(start, 0, 2) == "II" || chars(start, 0, 2) == "MM"; }
bool is_pcx(const FileStart& start) { return start.bytes[0] == 0x0A; }
bool is_dcx(const FileStart& start) { return value_at<uint32_t>(start, 0) == 0x3ADE68B1; }
bool is_gif(const FileStart& start) { return chars(start, 0, 6) == "GIF87a" || chars(start, 0, 6) == "GIF89a"; }
bool is_bitmap(const FileStart& start) { return chars(start, 0, 2) == "BM"; }
bool is_clipboard_file(const FileStart& start) { return value_at<uint16_t>(start, 0) == 50'000; }

// The key of a placeable metafile, or the header size of a plain one, which many other files have at that place by chance.
bool is_metafile(const FileStart& start) {
  constexpr uint16_t kHeaderWords = 9;
  return value_at<uint32_t>(start, 0) == 0x9AC6CDD7 || value_at<uint16_t>(start, 2) == kHeaderWords;
}

bool is_enhanced_metafile(const FileStart& start) { return chars(start, 40, 4) == " EMF"; }
bool is_jpeg(const FileStart& start) { return value_at<uint16_t>(start, 0) == 0xD8FF; }
bool is_png(const FileStart& start) { return chars(start, 1, 3) == "PNG"; }

// Up to the first zero byte.
bool is_cals(const FileStart& start) {
  const std::string_view all = chars(start, 0, kSearchedBytes);
  return all.substr(0, all.find('\0')).find("srcdocid:") != std::string_view::npos;
}

bool is_text(const FileStart& start) {
  const auto read = std::span(start.bytes).first(start.count);
  if (std::ranges::any_of(read, [](uint8_t byte) { return byte < 6; })) return false;
  const size_t carriage_return = chars(start, 0, kSearchedBytes).find('\r');
  return carriage_return != std::string_view::npos && start.bytes[carriage_return + 1] == '\n';
}

bool is_page_set(const char* path) {
  const auto pages = pages_in_fax_set(path);
  return pages && *pages >= 1;
}

// TGA files have no signature; their name counts, with or without a dot.
bool is_called_tga(const char* path) {
  const std::string_view name = path == nullptr ? "" : path;
  return name.size() >= 3 && equal_ignoring_case(name.substr(name.size() - 3), "TGA");
}

}  // namespace

FileStart read_file_start(const char* path) {
  FileStart start;
  if (const auto file = OwnedFile::open_as_named(path)) {
    const int64_t count = file->read(start.bytes.data(), start.bytes.size());
    start.count = static_cast<size_t>(std::max<int64_t>(0, count));
  }
  return start;
}

// First match wins.
ImgFormat recognise(const FileStart& start, const char* path) {
  if (is_tiff(start)) return IMG_FORMAT_TIFF;
  if (is_pcx(start)) return IMG_FORMAT_PCX;
  if (is_dcx(start)) return IMG_FORMAT_DCX;
  if (is_gif(start)) return IMG_FORMAT_GIF;
  if (is_bitmap(start)) return IMG_FORMAT_BITMAP;
  if (is_clipboard_file(start)) return IMG_FORMAT_CLIPBOARD;
  if (is_metafile(start)) return IMG_FORMAT_METAFILE;
  if (is_enhanced_metafile(start)) return IMG_FORMAT_ENHANCED_METAFILE;
  if (is_page_set(path)) return IMG_FORMAT_COLOR_FAX;
  if (is_called_tga(path)) return IMG_FORMAT_TGA;
  if (is_jpeg(start)) return IMG_FORMAT_JPEG;
  if (is_cals(start)) return IMG_FORMAT_CALS;
  if (is_text(start)) return IMG_FORMAT_TEXT;
  if (is_png(start)) return IMG_FORMAT_PNG;
  return IMG_FORMAT_UNKNOWN;
}

}  // namespace vorel::formats
