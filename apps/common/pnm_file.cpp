#include "common/pnm_file.h"

#include <algorithm>
#include <array>
#include <climits>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <optional>
#include <vector>

#include "common/formats.h"
#include "common/forms.h"
#include "common/problem.h"
#include "core/gray.h"

namespace vorel::programs {
namespace {

constexpr uint32_t kMostSample = 65'535;

[[noreturn]] void fail(const std::string& text) { throw Problem(Fault::kFormat, text); }

[[noreturn]] void fail_as_damaged(const std::string& what) { fail(what + "; the file is damaged, get another copy of it"); }

bool is_blank(int letter) { return letter == ' ' || (letter >= '\t' && letter <= '\r'); }

struct PnmHeader {
  int kind = 0;  // the digit behind the P
  uint32_t width = 0, height = 0, most = 1;

  bool is_plain() const { return kind <= 3; }
  bool is_bits() const { return kind == 1 || kind == 4; }
  uint32_t channels() const { return kind == 3 || kind == 6 ? 3 : 1; }
  size_t sample_bytes() const { return most > 255 ? 2 : 1; }
  uint64_t samples() const { return uint64_t{width} * channels(); }                                          // in a row
  uint64_t row_bytes() const { return is_bits() ? (uint64_t{width} + 7) / 8 : samples() * sample_bytes(); }  // of a raw file
  // Plain text has at least a digit and, but for bits, a blank to a sample.
  uint64_t least_bytes() const {
    if (!is_plain()) return row_bytes() * height;
    return is_bits() ? samples() * height : samples() * height * 2 - 1;
  }
  int depth() const { return is_bits() ? 1 : channels() == 3 ? 24 : 8; }
};

class Reader {
 public:
  Reader(std::istream& stream, uint64_t bytes) : stream_(stream), bytes_(bytes) { stream_.clear(); }

  PnmHeader read_header_at(uint64_t start) {
    stream_.seekg(static_cast<std::streamoff>(start));
    return read_header();
  }

  std::vector<uint64_t> find_pages() {
    std::vector<uint64_t> starts;
    stream_.seekg(0);
    do {
      starts.push_back(static_cast<uint64_t>(stream_.tellg()));
      skip_pixels(read_header());
    } while (is_at_picture());
    return starts;
  }

  void read_raw(std::span<uint8_t> to) {
    stream_.read(reinterpret_cast<char*>(to.data()), static_cast<std::streamsize>(to.size()));
    if (static_cast<size_t>(stream_.gcount()) != to.size()) fail_as_damaged("the file ends before the picture does");
  }

  uint32_t read_number(uint64_t most, const char* what) {
    int letter = next_but_blanks();
    uint64_t number = 0;
    if (letter < '0' || letter > '9') fail_as_damaged(fmt::format("there is no number for {}", what));
    for (; letter >= '0' && letter <= '9'; letter = stream_.get()) {
      number = number * 10 + static_cast<uint64_t>(letter - '0');
      if (number > most) fail_as_damaged(fmt::format("the number for {} is above {}", what, most));
    }
    if (letter == '#')
      skip_comment();
    else if (letter != EOF && !is_blank(letter))
      stream_.unget();  // the next picture may begin right here
    return static_cast<uint32_t>(number);
  }

  uint8_t read_bit() {
    const int letter = next_but_blanks();
    if (letter != '0' && letter != '1') fail_as_damaged("a pixel is neither 0 nor 1");
    return static_cast<uint8_t>(letter - '0');
  }

 private:
  void skip_comment() {
    for (int letter = stream_.get(); letter != '\n' && letter != EOF;) letter = stream_.get();
  }

  int next_but_blanks() {
    for (;;) {
      const int letter = stream_.get();
      if (letter == '#')
        skip_comment();
      else if (!is_blank(letter))
        return letter;
    }
  }

  PnmHeader read_header() {
    PnmHeader header;
    if (next_but_blanks() != 'P') fail_as_damaged("a picture does not begin as one");
    header.kind = stream_.get() - '0';
    if (header.kind < 1 || header.kind > 6) fail("this kind of portable map is not supported; save the picture as PNM");
    header.width = read_number(INT_MAX, "the width");
    header.height = read_number(INT_MAX, "the height");
    if (header.width == 0 || header.height == 0) fail_as_damaged("the picture has no pixels");
    if (!header.is_bits()) header.most = read_number(kMostSample, "full light");
    if (header.most == 0) fail_as_damaged("full light is 0");
    check_length(header);
    return header;
  }

  void check_length(const PnmHeader& header) {
    const auto at = static_cast<uint64_t>(stream_.tellg());
    const uint64_t there = stream_ && bytes_ > at ? bytes_ - at : 0;
    if (header.samples() > (uint64_t{1} << 32) || header.least_bytes() > there)
      fail(
          fmt::format("the file ends before its {} x {} pixels do; get a complete copy of it", header.width, header.height));
  }

  void skip_pixels(const PnmHeader& header) {
    if (!header.is_plain()) {
      stream_.seekg(static_cast<std::streamoff>(header.least_bytes()), std::ios::cur);
      return;
    }
    for (uint64_t left = header.samples() * header.height; left > 0; --left) {
      if (header.is_bits())
        read_bit();
      else
        read_number(header.most, "a sample");
    }
  }

  // What follows a picture and is none is ignored, as a line end often is.
  bool is_at_picture() {
    int letter = stream_.get();
    while (is_blank(letter)) letter = stream_.get();
    const int digit = letter == 'P' ? stream_.peek() : EOF;
    if (letter != EOF) stream_.unget();
    return digit >= '1' && digit <= '6';
  }

  std::istream& stream_;
  uint64_t bytes_;
};

// Reads the samples of a row as levels of light, the first channel first.
class RowReader {
 public:
  RowReader(Reader& reader, const PnmHeader& header) : reader_(reader), header_(header) {
    if (!header.is_plain()) raw_.resize(static_cast<size_t>(header.row_bytes()));
    levels_.resize(header.most + size_t{1});
    for (uint32_t i = 0; i <= header.most; ++i) levels_[i] = static_cast<uint8_t>((i * 255 + header.most / 2) / header.most);
  }

  void read(std::span<uint8_t> levels) {
    if (header_.is_plain()) {
      for (uint8_t& level : levels) level = levels_[reader_.read_number(header_.most, "a sample")];
      return;
    }
    reader_.read_raw(raw_);
    for (size_t i = 0; i < levels.size(); ++i) {
      const uint32_t sample = header_.most > 255 ? raw_[2 * i] * 256u + raw_[2 * i + 1] : raw_[i];
      if (sample > header_.most) fail_as_damaged("a sample is above full light");
      levels[i] = levels_[sample];
    }
  }

  // The same of black and white, in which 1 is black: as a row of a picture in which it is white.
  void read_bits(std::span<uint8_t> row) {
    const size_t bytes = static_cast<size_t>(header_.width + 7) / 8;
    if (header_.is_plain()) {
      std::fill_n(row.begin(), bytes, uint8_t{0});
      for (uint32_t x = 0; x < header_.width; ++x)
        row[x / 8] |= static_cast<uint8_t>((1 - reader_.read_bit()) << (7 - x % 8));
      return;
    }
    reader_.read_raw(row.first(bytes));
    for (uint8_t& byte : row.first(bytes)) byte = static_cast<uint8_t>(~byte);
    if (header_.width % 8 != 0) row[bytes - 1] &= static_cast<uint8_t>(0xFF << (8 - header_.width % 8));
  }

 private:
  Reader& reader_;
  const PnmHeader& header_;
  std::vector<uint8_t> raw_, levels_;
};

DibHeader dib_header_of(const PnmHeader& header) {
  return {.width = static_cast<int32_t>(header.width),
          .height = static_cast<int32_t>(header.height),
          .depth = static_cast<uint16_t>(header.depth()),
          .colors_used = implied_colors(static_cast<uint32_t>(header.depth()))};
}

void swap_red_and_blue(std::span<uint8_t> row) {
  for (size_t i = 0; i + 3 <= row.size(); i += 3) std::swap(row[i], row[i + 2]);
}

// Which of P4, P5 and P6 holds a picture as it is.
int natural_kind(const Picture& picture) {
  if (picture.depth() == 24) return 6;
  const std::span<const Rgb> colors = picture.colors();
  if (!is_gray(colors)) return 6;
  const bool is_black_and_white = picture.depth() == 1 && colors[0].red + colors[1].red == 255 && colors[0].red % 255 == 0;
  return is_black_and_white ? 4 : 5;
}

int kind_for(const Picture& picture, const FileFormat& format) {
  if (format.code == kPbm) return 4;
  if (format.code == kPgm) return 5;
  return format.code == kPpm ? 6 : natural_kind(picture);
}

std::vector<uint8_t> row_as(int kind, const Picture& picture, int y) {
  const DibView pixels = picture.pixels();
  const auto row = pixels.row_from_top(y);
  const auto width = static_cast<size_t>(picture.width());
  std::vector<uint8_t> bytes(row.begin(),
                             row.begin() + static_cast<std::ptrdiff_t>(kind == 4 ? (width + 7) / 8 : row.size()));
  if (kind == 6) {
    bytes.resize(width * 3);
    swap_red_and_blue(bytes);
  } else if (kind == 5) {
    bytes.resize(width);
  } else if (vorel::luminance_of(picture.colors()[0]) < vorel::luminance_of(picture.colors()[1])) {
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(~byte);
  }
  if (kind == 4 && width % 8 != 0) bytes.back() &= static_cast<uint8_t>(0xFF << (8 - width % 8));
  return bytes;
}

}  // namespace

bool begins_as_pnm(std::istream& stream) {
  std::array<char, 3> start{};
  stream.clear();
  stream.seekg(0);
  stream.read(start.data(), start.size());
  return stream.gcount() == 3 && start[0] == 'P' && start[1] >= '1' && start[1] <= '6' &&
         (is_blank(start[2]) || start[2] == '#');
}

std::vector<uint64_t> find_pnm_pages(std::istream& stream, uint64_t bytes) { return Reader(stream, bytes).find_pages(); }

PnmFacts inspect_pnm(std::istream& stream, uint64_t bytes, uint64_t start) {
  const PnmHeader header = Reader(stream, bytes).read_header_at(start);
  return {dib_header_of(header), fmt::format("P{}{}", header.kind, header.is_plain() ? ", plain text" : ""), header.most};
}

Picture read_pnm(std::istream& stream, uint64_t bytes, uint64_t start) {
  Reader reader(stream, bytes);
  const PnmHeader header = reader.read_header_at(start);
  const DibHeader dib_header = dib_header_of(header);
  std::vector<Rgb> colors(dib_header.colors_used);
  if (!colors.empty()) write_even_grays(colors);
  Picture picture = Picture::blank(dib_header, colors);
  RowReader rows(reader, header);
  const DibView pixels = picture.pixels();
  for (int y = 0; y < pixels.height(); ++y) {
    const auto row = pixels.row_from_top(y);
    if (header.is_bits()) {
      rows.read_bits(row);
      continue;
    }
    rows.read(row.first(static_cast<size_t>(header.samples())));
    if (header.channels() == 3) swap_red_and_blue(row.first(static_cast<size_t>(header.samples())));
  }
  return picture;
}

Picture suited_for_pnm(Picture picture, const FileFormat& format) {
  picture = with_whole_table(workable(std::move(picture)));
  const int kind = kind_for(picture, format);
  if (kind == 4 && picture.depth() != 1) {
    throw Problem(Fault::kFormat,
                  fmt::format("PBM holds 1 bit per pixel, the picture has {}; dither it, or choose PNM", picture.depth()));
  }
  if (kind == 5 && natural_kind(picture) == 6)
    throw Problem(Fault::kFormat, "PGM holds greys, the picture has colours; make it grey first, or choose PNM");
  if (kind == 5) return has_gray_ramp(picture) ? std::move(picture) : luminance_of(picture);
  return kind == 6 ? in_true_color(std::move(picture)) : std::move(picture);
}

namespace {

// Cuts a file back to what it held, unless the page that is added to it is complete.
class AddedPage {
 public:
  explicit AddedPage(const std::filesystem::path& path) : path_(path), found_(std::filesystem::file_size(path, error_)) {}
  AddedPage(const AddedPage&) = delete;
  AddedPage& operator=(const AddedPage&) = delete;
  ~AddedPage() {
    if (!is_complete && !error_) std::filesystem::resize_file(path_, found_, error_);
  }

  bool is_complete = false;

 private:
  std::filesystem::path path_;
  std::error_code error_;
  uint64_t found_;
};

}  // namespace

bool write_pnm(const std::string& path, const Picture& picture, const FileFormat& format, int page) {
  const int kind = kind_for(picture, format);
  std::optional<AddedPage> added;
  if (page > 1) added.emplace(path);
  std::ofstream file(std::filesystem::path(path), std::ios::binary | (page == 1 ? std::ios::trunc : std::ios::app));
  file << fmt::format("P{}\n{} {}\n{}", kind, picture.width(), picture.height(), kind == 4 ? "" : "255\n");
  for (int y = 0; y < picture.height() && file; ++y) {
    const std::vector<uint8_t> row = row_as(kind, picture, y);
    file.write(reinterpret_cast<const char*>(row.data()), static_cast<std::streamsize>(row.size()));
  }
  file.close();
  if (added) added->is_complete = !file.fail();
  return !file.fail();
}

}  // namespace vorel::programs
