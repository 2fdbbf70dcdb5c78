#include "formats/fax_set.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "core/header.h"
#include "dib/packed_dib.h"
#include "formats/image_file.h"
#include "platform/file.h"
#include "platform/profile.h"

namespace vorel::formats {
namespace {

constexpr const char* kSetSection = "ColorFax";
constexpr const char* kTotalPages = "TotalPages";
constexpr size_t kMostNameCharacters = 128;
constexpr int kMostPlanes = 4;
// Limits the search for a page: a text may claim two thousand million files.
constexpr int kMostFiles = 4'096;

// Red, green, blue and brightness, from the highest bit to the lowest.
constexpr std::array<Rgb, 16> plane_colors() {
  std::array<Rgb, 16> colors{};
  for (unsigned i = 0; i < colors.size(); ++i) {
    const uint8_t level = (i & 1) != 0 ? 255 : 128;
    const auto part = [&](unsigned bit) { return (i & bit) != 0 ? level : uint8_t{0}; };
    colors[i] = {.blue = part(2), .green = part(4), .red = part(8), .reserved = 0};
  }
  return colors;
}

// The bits of a byte as the eight nibbles of four bytes, each bit the highest of its nibble.
constexpr std::array<std::array<uint8_t, 4>, 256> spread_bits() {
  std::array<std::array<uint8_t, 4>, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte)
    for (unsigned bit = 0; bit < 8; ++bit)
      if ((byte & 0x80 >> bit) != 0) table[byte][bit / 2] = static_cast<uint8_t>(table[byte][bit / 2] | 0x80 >> bit % 2 * 4);
  return table;
}

struct PageSet {
  int64_t planes, pages, first_page, files, pixel_bits;

  bool has_page(int page) const { return page >= 1 && page <= pages - first_page + 1; }
  bool has_file_per_plane() const { return files == pages * planes; }
};

PageSet read_set(const Profile& profile) {
  const auto number = [&](const char* key, int otherwise) { return profile.number(kSetSection, key, otherwise); };
  return {.planes = number("Planes", 0) & 0xFF,
          .pages = number(kTotalPages, 0),
          .first_page = number("FirstPage", 1),
          .files = number("Files", 0),
          .pixel_bits = number("BitsPixel", 0)};
}

// Location of a page's first plane: the file, the section that names it, and the number of the image in the file.
struct Place {
  std::string section, key;
  int64_t image;
};

// With a file per plane, the page's number is the number of the image.
Place place_in_own_file(const PageSet& set, int page) {
  return {"Page" + std::to_string(page - set.first_page + 1), "Plane0", page};
}

// A quirk that is kept: the first page of every file but the first is looked up in the previous file, past its last image.
Place place_in_shared_file(const Profile& profile, const PageSet& set, int page) {
  const auto section_of = [&](int64_t file) {
    return "File" + std::to_string(static_cast<uint32_t>(set.first_page + file));
  };
  std::string section = section_of(0);
  int64_t start = 1, next_start = 1;
  for (int64_t file = 0; file < std::min<int64_t>(set.files, kMostFiles) && page > next_start; ++file) {
    start = next_start;
    section = section_of(file);
    next_start += profile.number(section.c_str(), "Pages", 0);
  }
  return {section, "Name", (page - start) * set.planes + 1};
}

// A plane's image. None for anything but a 1-bit picture, and for a block shorter than its rows: completing it would let a
// few bytes ask for gigabytes.
class PlaneImage {
 public:
  static std::optional<PlaneImage> lock(HGLOBAL image) {
    auto dib = LockedDib::lock(image);
    if (!dib || dib->header().size != kHeaderBytes) return std::nullopt;
    const DibHeader& header = dib->header();
    if (header.depth != 1 || header.compression != Compression::kNone || header.width <= 0 || header.height <= 0) {
      return std::nullopt;
    }
    const ByteCount bytes = kRowsOffset + row_stride(1, header.width) * static_cast<uint32_t>(header.height);
    if (bytes > ByteCount(dib->block().size())) return std::nullopt;
    return PlaneImage(std::move(*dib));
  }

  const DibHeader& header() const { return dib_.header(); }
  ConstDibView rows() const {
    const auto stride = static_cast<std::ptrdiff_t>(row_stride(1, header().width).value());
    return {dib_.block().data() + kRowsOffset, stride, header().width, header().height, 1};
  }

 private:
  // The rows are assumed behind two colours, whatever the header counts.
  static constexpr uint32_t kRowsOffset = kHeaderBytes + 2 * sizeof(Rgb);

  explicit PlaneImage(LockedDib dib) : dib_(std::move(dib)) {}

  LockedDib dib_;
};

// The 4-bit picture that the planes of a page are merged into.
class MergedPage {
 public:
  static Result<MergedPage> make(const DibHeader& plane) {
    const ByteCount pixels = row_stride(4, plane.width) * static_cast<uint32_t>(plane.height);
    OwnedDib dib = VOREL_TRY(OwnedDib::allocate(kHeaderBytes + sizeof kColors + pixels).or_error(Error::kMemory));
    const DibHeader header{.width = plane.width,
                           .height = plane.height,
                           .depth = 4,
                           .image_bytes = static_cast<uint32_t>(pixels.value()),
                           .x_per_metre = plane.x_per_metre,
                           .y_per_metre = plane.y_per_metre,
                           .colors_used = kColors.size(),
                           .colors_important = kColors.size()};
    write_header(dib.bytes(), header);
    std::memcpy(dib.bytes().data() + kHeaderBytes, kColors.data(), sizeof kColors);
    return MergedPage(std::move(dib), header);
  }

  bool has_size_of(const DibHeader& plane) const { return plane.width == header_.width && plane.height == header_.height; }
  void merge(const PlaneImage& image, int plane) { merge_plane(image.rows(), rows(), plane); }
  [[nodiscard]] HGLOBAL release() { return dib_.release(); }

 private:
  static constexpr std::array<Rgb, 16> kColors = plane_colors();

  MergedPage(OwnedDib dib, const DibHeader& header) : dib_(std::move(dib)), header_(header) {}

  DibView rows() const {
    const auto stride = static_cast<std::ptrdiff_t>(row_stride(4, header_.width).value());
    return {FindDIBBits(dib_.bytes().data(), header_), stride, header_.width, header_.height, 4};
  }

  OwnedDib dib_;
  DibHeader header_;
};

Result<HGLOBAL> merged_page(const Profile& profile, const PageSet& set, Place place, const LoadRequest& request) {
  std::optional<MergedPage> merged;
  for (int plane = 0; plane < set.planes; ++plane) {
    if (plane > 0 && set.has_file_per_plane()) place.key = "Plane" + std::to_string(plane);
    if (plane > 0 && !set.has_file_per_plane()) ++place.image;
    if (!std::in_range<int>(place.image)) return Error::kUnreported;
    const std::string name = profile.text(place.section.c_str(), place.key.c_str(), kMostNameCharacters);
    HGLOBAL loaded = VOREL_TRY(load_image({.path = name.c_str(),
                                           .page = static_cast<int>(place.image),
                                           .status = request.status,
                                           .enclosing_sets = request.enclosing_sets + 1}));
    if (set.planes == 1) return loaded;
    const OwnedBlock block(loaded);
    const auto image = PlaneImage::lock(block.get());
    if (!image) return Error::kUnreported;
    if (!merged) merged.emplace(VOREL_TRY(MergedPage::make(image->header())));
    if (!merged->has_size_of(image->header())) return Error::kUnreported;
    merged->merge(*image, plane);
  }
  return merged->release();
}

}  // namespace

Result<int> pages_in_fax_set(const char* path) {
  const auto file = find_file(path);
  if (!file) return Error::kOpenFile;
  return Profile(*file).number(kSetSection, kTotalPages, kUnknownPages);
}

Result<HGLOBAL> load_fax_page(const LoadRequest& request) {
  const auto file = find_file(request.path);
  if (!file) {
    report_status(request, Error::kOpenFile);
    return Error::kOpenFile;
  }
  const Profile profile(*file);
  const PageSet set = read_set(profile);
  if (!set.has_page(request.page) || set.pixel_bits != 1) return Error::kUnreported;
  if (set.planes < 1 || set.planes > kMostPlanes) return Error::kUnreported;
  const Place place =
      set.has_file_per_plane() ? place_in_own_file(set, request.page) : place_in_shared_file(profile, set, request.page);
  return merged_page(profile, set, place, request);
}

void merge_plane(ConstDibView bits, DibView merged, int plane) {
  static constexpr auto kSpread = spread_bits();
  const int whole_bytes = bits.width() / 8, rest = bits.width() % 8;
  for (int y = 0; y < bits.height(); ++y) {
    const uint8_t* from = bits.row_from_top(y).data();
    uint8_t* to = merged.row_from_top(y).data();
    const auto add = [&](uint8_t byte, int count) {
      if (byte == 0) return;  // pages of memory that are never written stay unallocated
      for (int i = 0; i < count; ++i) to[i] = static_cast<uint8_t>(to[i] | kSpread[byte][static_cast<size_t>(i)] >> plane);
    };
    for (int i = 0; i < whole_bytes; ++i, to += 4) add(from[i], 4);
    // An odd last pixel uses its high nibble alone.
    if (rest != 0) add(static_cast<uint8_t>(from[whole_bytes] & 0xFF00 >> rest), (rest + 1) / 2);
  }
}

}  // namespace vorel::formats
