// Directories of TIFF files, classic or with 64-bit places, in either byte order. Also the record of cameras in other files.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace vorel::programs {

class TiffDirectory {
 public:
  // Of a page, counted from 1, of a file that starts at the beginning of the stream. None where there is no such page. The stream
  // must outlive the directory.
  static std::optional<TiffDirectory> of_page(std::istream& stream, int page);

  // The directory that an entry points to.
  std::optional<TiffDirectory> below(uint32_t tag) const;

  // A number of an entry; rationals as a quotient. None where it is absent, has no number at `index`, or is cut off.
  std::optional<double> number(uint32_t tag, uint32_t index = 0) const;

  // How many values an entry has, as it states; 0 without one.
  uint64_t count(uint32_t tag) const;

  // The bytes of a text, a thousand at most; empty without one.
  std::string text(uint32_t tag) const;

 private:
  struct Entry {
    uint32_t tag, type;
    uint64_t count, at;  // `at`: of the values in the file
  };

  // What lies outside the file reads as 0, and fails the stream.
  struct Source {
    std::istream* stream;
    bool is_big_endian, is_wide;
    uint64_t number(uint64_t at, size_t size) const;
    uint64_t entries(uint64_t at) const;  // of the directory there
    size_t count_size() const { return is_wide ? 8 : 2; }
    size_t place_size() const { return is_wide ? 8 : 4; }
    size_t entry_size() const { return 4 + 2 * place_size(); }
  };

  TiffDirectory(const Source& source, uint64_t at);
  const Entry* find(uint32_t tag) const;

  Source source_;
  std::vector<Entry> entries_;
};

}  // namespace vorel::programs
