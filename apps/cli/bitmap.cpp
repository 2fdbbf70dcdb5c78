#include "cli/bitmap.h"

#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <set>

#include "cli/failure.h"

namespace vorel::cli {
namespace {

constexpr uint16_t kFileType = 0x4D42;  // "BM"
constexpr uint64_t kMostFileBytes = uint64_t{1} << 31;

// What a file's first bytes tell beyond the library's account of them.
struct Start {
  BITMAPFILEHEADER file{};  // all zero where the file has none
  uint32_t header_bytes = 0;

  bool has_file_header() const { return file.bfType == kFileType; }
};

Start read_start(const Input& input) {
  Start start;
  std::ifstream file(input.path(), std::ios::binary);
  file.read(reinterpret_cast<char*>(&start.file), sizeof start.file);
  if (!start.has_file_header()) {
    start.file = {};
    file.clear();
    file.seekg(0);
  }
  file.read(reinterpret_cast<char*>(&start.header_bytes), sizeof start.header_bytes);
  return start;
}

[[noreturn]] void fail_as_damaged(const Input& input, const std::string& what) {
  throw Failure(ExitCode::kFormat, input.label(), what + "; the file is damaged, get another copy of it");
}

// Why the library did not read a file.
[[noreturn]] void fail_to_read(const Input& input) {
  switch (ImgError()) {
    case IMG_OK:
      throw Failure(ExitCode::kLimit, input.label(),
                    "there is not enough memory for the picture; close programs or scale it down");
    case IMG_E_OPEN_FILE:
      throw Failure(ExitCode::kInput, input.label(), "the file cannot be opened; check that no other program holds it");
    default:
      throw Failure(ExitCode::kFormat, input.label(),
                    "the format is not recognised, or the file ends inside its header; give a picture file");
  }
}

void check_header(const Input& input, const BITMAPINFOHEADER& header) {
  static const std::set<int> depths = {1, 4, 8, 16, 24, 32};
  const auto depth = header.biBitCount;
  if (header.biWidth <= 0 || header.biHeight == 0) {
    fail_as_damaged(input, fmt::format("a picture of {} x {} pixels is none", header.biWidth, header.biHeight));
  }
  if (!depths.contains(depth)) fail_as_damaged(input, fmt::format("there are no pixels of {} bits", depth));
  if (header.biPlanes != 1)
    fail_as_damaged(input, fmt::format("the header counts {} colour planes, not 1", header.biPlanes));

  const bool suits_depth = header.biCompression == BI_RGB || (header.biCompression == BI_RLE8 && depth == 8) ||
                           (header.biCompression == BI_RLE4 && depth == 4) ||
                           (header.biCompression == BI_BITFIELDS && (depth == 16 || depth == 32));
  if (!suits_depth) {
    throw Failure(ExitCode::kFormat, input.label(),
                  fmt::format("compression number {} with {} bits per pixel is not supported; save the picture uncompressed",
                              header.biCompression, depth));
  }
}

bool is_run_length(const BITMAPINFOHEADER& header) {
  return header.biCompression == BI_RLE8 || header.biCompression == BI_RLE4;
}

// Compares where the pixels lie with where the file ends.
void check_pixels(const Input& input, const Bitmap& bitmap, const Start& start, int64_t position) {
  const uint64_t table_entry = start.header_bytes == sizeof(BITMAPCOREHEADER) ? sizeof(RGBTRIPLE) : sizeof(RGBQUAD);
  const uint64_t table_end =
      (start.has_file_header() ? sizeof start.file : 0) + start.header_bytes + bitmap.header.biClrUsed * table_entry;
  const uint64_t begin = start.file.bfOffBits != 0 ? start.file.bfOffBits : table_end;
  if (begin < table_end) fail_as_damaged(input, "the pixels begin before the header and colour table end");

  const uint64_t whole = stored_row_bytes(bitmap.header) * row_count(bitmap.header);
  const uint64_t stated = bitmap.states_image_size ? bitmap.header.biSizeImage : whole;
  if (stated < whole && !is_run_length(bitmap.header)) {
    fail_as_damaged(input, fmt::format("the header states {} bytes of pixels where the picture has {}", stated, whole));
  }
  if (begin + stated > input.bytes()) {
    throw Failure(ExitCode::kFormat, input.label(),
                  fmt::format("the file ends {} bytes before the picture does; get a complete copy of it",
                              begin + stated - input.bytes()));
  }
  // The library goes on reading behind the colour table when it cannot move as far as the file says.
  if (begin != static_cast<uint64_t>(position)) {
    throw Failure(ExitCode::kLimit, input.label(),
                  "the pixels begin past the first 2 GB of the file; save the picture anew");
  }
}

void require_loadable(const Input& input, const Bitmap& bitmap) {
  if (bitmap.header.biCompression == BI_BITFIELDS) {
    throw Failure(ExitCode::kFormat, input.label(),
                  "pixels with colour masks (BI_BITFIELDS) are not supported; save the picture with 24 bits per pixel");
  }
  if (!bitmap.states_image_size) {
    throw Failure(
        ExitCode::kFormat, input.label(),
        "a picture stored top row first that does not state its image size is not supported; save it bottom row first");
  }
}

}  // namespace

Bitmap inspect_bitmap(const Input& input) {
  const Start start = read_start(input);
  const LibraryFile file(input.loading_path());
  SetImgError(file.is_open() ? IMG_OK : IMG_E_OPEN_FILE);
  const Dib dib(file.is_open() ? ReadDIBInfo(file.get()) : nullptr);
  if (!dib) {
    const bool claims_too_much = ImgError() == IMG_OK && input.bytes() < kMostFileBytes;
    if (claims_too_much) fail_as_damaged(input, "the header claims more than the file can hold");
    if (ImgError() == IMG_E_FORMAT && start.has_file_header()) {
      throw Failure(
          ExitCode::kFormat, input.label(),
          fmt::format("bitmaps with a header of {} bytes are not supported, only 40 and 12; save it in the older form",
                      start.header_bytes));
    }
    fail_to_read(input);
  }

  Bitmap bitmap{.header = DibLock(dib).header(),
                .variant = fmt::format("{}-byte header{}", start.header_bytes,
                                       start.has_file_header() ? "" : ", without the file header")};
  check_header(input, bitmap.header);
  // For a top-down picture the library works out a size that no block has.
  const uint64_t whole = stored_row_bytes(bitmap.header) * row_count(bitmap.header);
  bitmap.states_image_size = !is_top_down(bitmap.header) || bitmap.header.biSizeImage != static_cast<uint32_t>(0 - whole);
  check_pixels(input, bitmap, start, file.position());
  return bitmap;
}

Picture load_bitmap(const Input& input) {
  const Bitmap bitmap = inspect_bitmap(input);
  require_loadable(input, bitmap);
  SetImgError(IMG_OK);
  Dib dib(LoadDIBFromFile(input.loading_path().c_str()));
  if (!dib) fail_to_read(input);

  const DibLock lock(dib);
  BITMAPINFOHEADER header = lock.header();
  // Some files count bytes behind the last row; the turned picture would not have them.
  if (header.biCompression == BI_RGB)
    header.biSizeImage = static_cast<uint32_t>(stored_row_bytes(header) * row_count(header));
  std::memcpy(lock.bytes().data(), &header, sizeof header);
  return {.label = input.label(), .header = header, .dib = std::move(dib)};
}

}  // namespace vorel::cli
