#include "common/tags.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <optional>
#include <span>
#include <sstream>
#include <string_view>

#include "common/jpeg_segments.h"
#include "common/tiff_directory.h"

namespace vorel::programs {
namespace {

using Tags = std::vector<Tag>;

// ---- Texts ----

// The length of the UTF-8 character at the start of a text; 0 for none.
size_t character_length(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
  const size_t length = byte(0) < 0x80   ? 1
                        : byte(0) < 0xC2 ? 0
                        : byte(0) < 0xE0 ? 2
                        : byte(0) < 0xF0 ? 3
                        : byte(0) < 0xF5 ? 4
                                         : 0;
  if (length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  if ((byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xED && byte(1) > 0x9F) || (byte(0) == 0xF0 && byte(1) < 0x90) ||
      (byte(0) == 0xF4 && byte(1) > 0x8F))
    return 0;
  return length;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const size_t length = character_length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

// Bytes beyond ASCII that are no UTF-8 count as Latin letters.
std::string in_utf8(std::string_view text) {
  if (is_utf8(text)) return std::string(text);
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<uint8_t>(character);
    if (byte < 0x80) {
      result += character;
    } else {
      result += static_cast<char>(0xC0 | byte >> 6);
      result += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return result;
}

// Without line ends and other control characters, and not too long.
std::string on_one_line(std::string_view text) {
  constexpr size_t kLongest = 400;
  std::string line;
  for (const char character : text) {
    const bool is_space = static_cast<uint8_t>(character) <= ' ' || character == 0x7F;
    if (is_space && (line.empty() || line.back() == ' ')) continue;
    line += is_space ? ' ' : character;
  }
  while (line.ends_with(' ')) line.pop_back();
  if (line.size() <= kLongest) return in_utf8(line);
  const bool was_utf8 = is_utf8(line);
  line.resize(kLongest);
  while (was_utf8 && !is_utf8(line)) line.pop_back();  // the rest of a character
  return in_utf8(line) + "...";
}

void add(Tags& tags, std::string name, std::string_view value) {
  std::string line = on_one_line(value);
  if (!line.empty()) tags.push_back({std::move(name), std::move(line)});
}

// ---- TIFF directories ----

constexpr uint32_t kBitsPerSample = 258, kPhotometric = 262, kFillOrder = 266, kOrientation = 274, kRowsPerStrip = 278,
                   kXResolution = 282, kYResolution = 283, kResolutionUnit = 296, kPageNumber = 297, kExif = 34665;

constexpr struct {
  uint32_t tag;
  const char* name;
} kTexts[] = {{269, "Document"}, {285, "Page name"}, {270, "Description"}, {271, "Make"},          {272, "Model"},
              {305, "Software"}, {306, "Date"},      {315, "Artist"},      {316, "Host computer"}, {33432, "Copyright"}};

// By number; null for one without a word.
std::string worded(std::span<const char* const> words, double number) {
  const bool has_word = number >= 0 && number < static_cast<double>(words.size());
  const char* const word = has_word ? words[static_cast<size_t>(number)] : nullptr;
  return word != nullptr ? word : fmt::format("{:g}", number);
}

constexpr const char* kPhotometrics[] = {"white is 0", "black is 0", "RGB",   "palette", "mask",
                                         "CMYK",       "YCbCr",      nullptr, "CIELab"};
constexpr const char* kFillOrders[] = {nullptr, "first pixel in the highest bit", "first pixel in the lowest bit"};
constexpr const char* kOrientations[] = {nullptr,
                                         "upright",
                                         "mirrored left and right",
                                         "upside down",
                                         "mirrored top and bottom",
                                         "mirrored, to be turned to the left",
                                         "to be turned to the right",
                                         "mirrored, to be turned to the right",
                                         "to be turned to the left"};
constexpr const char* kUnits[] = {nullptr, "without a unit", "per inch", "per centimetre"};

std::string bits_of(const TiffDirectory& directory) {
  std::string text;
  constexpr uint64_t kMost = 8;
  for (uint32_t i = 0; i < std::min(directory.count(kBitsPerSample), kMost); ++i)
    if (const auto bits = directory.number(kBitsPerSample, i)) text += fmt::format("{}{:g}", i == 0 ? "" : ", ", *bits);
  return text;
}

std::string stated_resolution(const TiffDirectory& directory) {
  constexpr double kInch = 2;  // without a unit entry
  const auto x = directory.number(kXResolution), y = directory.number(kYResolution);
  if (!x && !y) return {};
  return fmt::format("{:.6g} x {:.6g} {}", x.value_or(0), y.value_or(0),
                     worded(kUnits, directory.number(kResolutionUnit).value_or(kInch)));
}

std::string page_number(const TiffDirectory& directory) {
  const auto page = directory.number(kPageNumber), pages = directory.number(kPageNumber, 1);
  if (!page) return {};
  return pages.value_or(0) > 0 ? fmt::format("{:g} of {:g}", *page + 1, *pages) : fmt::format("{:g}", *page + 1);
}

// What a camera tells.
void add_shot(Tags& tags, const TiffDirectory& shot) {
  constexpr uint32_t kTime = 33434, kAperture = 33437, kSensitivity = 34855, kTaken = 36867, kFocalLength = 37386,
                     kLens = 42036;
  add(tags, "Taken", shot.text(kTaken));
  if (const double time = shot.number(kTime).value_or(0); time > 0)
    add(tags, "Exposure", time < 0.5 ? fmt::format("1/{:.0f} s", 1 / time) : fmt::format("{:.3g} s", time));
  if (const double aperture = shot.number(kAperture).value_or(0); aperture > 0)
    add(tags, "Aperture", fmt::format("f/{:.3g}", aperture));
  if (const auto sensitivity = shot.number(kSensitivity)) add(tags, "Sensitivity", fmt::format("ISO {:g}", *sensitivity));
  if (const double length = shot.number(kFocalLength).value_or(0); length > 0)
    add(tags, "Focal length", fmt::format("{:.4g} mm", length));
  add(tags, "Lens", shot.text(kLens));
}

void add_directory(Tags& tags, std::istream& stream, int page) {
  const auto directory = TiffDirectory::of_page(stream, page);
  if (!directory) return;
  const auto add_worded = [&](const char* name, uint32_t tag, std::span<const char* const> words) {
    if (const auto number = directory->number(tag)) add(tags, name, worded(words, *number));
  };
  for (const auto& row : kTexts) add(tags, row.name, directory->text(row.tag));
  add(tags, "Page number", page_number(*directory));
  add(tags, "Bits per sample", bits_of(*directory));
  add_worded("Pixels", kPhotometric, kPhotometrics);
  add_worded("Bit order", kFillOrder, kFillOrders);
  if (const auto rows = directory->number(kRowsPerStrip)) add(tags, "Rows per strip", fmt::format("{:.0f}", *rows));
  add_worded("Orientation", kOrientation, kOrientations);
  add(tags, "Stated resolution", stated_resolution(*directory));
  if (const auto shot = directory->below(kExif)) add_shot(tags, *shot);
}

// ---- JPEG and PNG ----

void add_segments(Tags& tags, std::istream& stream) {
  constexpr int kComment = 0xFE;
  for_each_jpeg_segment(stream, [&](int marker, std::string_view bytes) {
    if (marker == kComment) add(tags, "Comment", bytes);
    if (!is_exif(marker, bytes)) return;
    std::istringstream record(std::string(bytes.substr(kExifSignature.size())));
    add_directory(tags, record, 1);
  });
}

uint32_t big_endian(std::string_view bytes) {
  uint32_t number = 0;
  for (const char byte : bytes.substr(0, 4)) number = number << 8 | static_cast<uint8_t>(byte);
  return number;
}

// Texts that are not compressed: a name, a zero and the text, which in UTF-8 has two flags and two more names before it.
void add_png_text(Tags& tags, std::string_view chunk, bool is_utf8) {
  const auto take_name = [&] {
    const std::string_view name = chunk.substr(0, chunk.find('\0'));
    chunk.remove_prefix(std::min(chunk.size(), name.size() + 1));
    return name;
  };
  const std::string name = on_one_line(take_name());
  if (is_utf8) {
    if (chunk.size() < 2 || chunk[0] != 0) return;
    chunk.remove_prefix(2);
    take_name(), take_name();
  }
  if (!name.empty()) add(tags, name, chunk);
}

void add_chunks(Tags& tags, std::istream& stream) {
  constexpr uint32_t kLongest = 1 << 16;
  constexpr int kMostChunks = 100'000, kSignature = 8;
  stream.seekg(kSignature);
  for (int i = 0; i < kMostChunks; ++i) {
    std::string head(8, '\0');
    if (!stream.read(head.data(), static_cast<std::streamsize>(head.size()))) return;
    const uint32_t length = big_endian(head);
    const std::string_view kind = std::string_view(head).substr(4);
    if (kind == "IEND") return;
    std::string chunk;
    if ((kind == "tEXt" || kind == "iTXt") && length <= kLongest) {
      chunk.resize(length);
      if (!stream.read(chunk.data(), static_cast<std::streamsize>(length))) return;
      add_png_text(tags, chunk, kind == "iTXt");
    }
    constexpr uint32_t kSum = 4;
    stream.seekg(static_cast<std::streamoff>(length - chunk.size()) + kSum, std::ios::cur);
  }
}

}  // namespace

std::vector<Tag> read_tags(std::istream& stream, FormatCode format, int page) {
  Tags tags;
  switch (format) {
    case FormatCode::kTiff: add_directory(tags, stream, page); break;
    case FormatCode::kJpeg: add_segments(tags, stream); break;
    case FormatCode::kPng: add_chunks(tags, stream); break;
    default: break;
  }
  return tags;
}

}  // namespace vorel::programs
