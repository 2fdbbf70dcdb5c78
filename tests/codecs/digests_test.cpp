// Digests of files that the modules save and of pictures that they load, from whole and from damaged files. After an intended change
// the digests that a failure prints replace those in the table.
#include <algorithm>

#include "codecs/codec.h"
#include "codecs/tiff_file.h"
#include "support/random.h"

using namespace test;

namespace {

Bytes with_resolution(const Bytes& dib, int per_metre) {
  return with_header_changed(dib,
                             [&](BITMAPINFOHEADER& header) { header.biXPelsPerMeter = header.biYPelsPerMeter = per_metre; });
}

// Noise, or long and longer runs that run-length codes shorten. Tables are grey or coloured, whole or cut short.
Bytes any_picture(Random& random, std::initializer_list<int> depths) {
  const int depth = random.one_of(depths), width = random.between(1, 90), height = random.between(1, 40);
  Bytes dib = noise(width, height, depth);
  if (depth <= 8 && random.once_in(2)) dib = with_gray_ramp(dib);
  if (depth == 1 && random.once_in(4)) dib = with_table(dib, {255, 255, 255, 0, 0, 0, 0, 0});
  if (random.once_in(8)) dib = with_resolution(dib, random.one_of({0, 1, 393'661, 393'701, 500'000}));
  const size_t stride = stride_of(width, depth), rows = dib.size() - stride * static_cast<size_t>(height);
  const int kind = random.between(0, 2);
  for (size_t i = rows; i < dib.size() && kind > 0; ++i)
    if (!random.once_in(kind == 1 ? 9 : 40)) dib[i] = (i - rows) % stride == 0 ? random.byte() : dib[i - 1];
  if (depth > 1 && depth <= 8 && random.once_in(4))
    dib = with_colors(dib, static_cast<size_t>(random.between(1, 1 << depth)));
  return dib;
}

Bytes damaged(Random& random, Bytes file) {
  for (int i = random.between(1, 3); i > 0 && !file.empty(); --i) {
    const int size = static_cast<int>(file.size()), at = random.between(0, random.one_of({size, std::min(size, 130)}) - 1);
    file[static_cast<size_t>(at)] = random.one_of({random.byte(), uint8_t(file[static_cast<size_t>(at)] ^ 1)});
  }
  if (random.once_in(3)) file.resize(static_cast<size_t>(random.between(0, static_cast<int>(file.size()))));
  return file;
}

struct Loaded {
  const Codec& codec;
  Digest& digest;
  TempFolder folder;
  std::string path = folder.path("picture.tga");

  void add(const Bytes& file, int page = 1) {
    write_file(path, file);
    int status = -1;
    digest.add(bytes_of(Block(codec.load(path.c_str(), page, &status)).get()));
    digest.add_number(status);
  }
};

// Formats with encoders of this system: the saved file, the pictures loaded from it and from damaged copies.
template <const Codec& kCodec, int... kDepths>
void save_load_damage(Random& random, Digest& digest) {
  Loaded loaded{kCodec, digest, {}};
  const std::string saved = loaded.folder.path("saved");
  int status = -1;
  const int pages = &kCodec == &kDcx ? random.between(1, 3) : 1;
  if (&kCodec == &kDcx) modules().make_dcx(saved.c_str(), &status);
  for (int page = 0; page < pages; ++page) {
    const Block dib = block_of(any_picture(random, {kDepths...}));
    const int run_length = random.between(0, 1), footer = random.between(0, 1);
    digest.add_number(&kCodec == &kTga ? modules().save_tga(saved.c_str(), dib.get(), run_length, footer)
                                       : kCodec.save(saved.c_str(), dib.get(), &status));
  }
  const Bytes file = read_file(saved);
  digest.add(file);
  for (int page = 1; page <= pages + 1; ++page) loaded.add(file, page);
  for (int i = 0; i < 6; ++i) loaded.add(damaged(random, file), pages);
}

// Compressed files depend on the versions of libraries; plain ones, Group 4, and all pictures do not.
void save_and_load_tiff(Random& random, Digest& digest) {
  Loaded loaded{kTiff, digest, {}};
  const std::string saved = loaded.folder.path("saved");
  const int compression = random.one_of({0, 1, 2, 3, 4, 5, 8, 32773});
  for (const int page : {1, 2}) {
    const Block dib =
        block_of(compression >= 2 && compression <= 4 ? any_picture(random, {1}) : any_picture(random, {1, 4, 8, 24}));
    digest.add_number(modules().save_tiff(saved.c_str(), dib.get(), compression, page));
    if (compression == 1 || compression == 4) digest.add(read_file(saved));
  }
  for (const int page : {1, 2, 3}) loaded.add(read_file(saved), page);
}

void save_and_load_others(Random& random, Digest& digest) {
  for (const Codec* codec : {&kGif, &kPng}) {
    Loaded loaded{*codec, digest, {}};
    const std::string saved = loaded.folder.path("saved");
    int status = -1;
    const Block dib = block_of(any_picture(random, {1, 4, 8, 24}));
    digest.add_number(codec->save(saved.c_str(), dib.get(), &status));
    for (const int page : {1, 2}) loaded.add(read_file(saved), page);
  }
}

// Plain samples under random tags.
void load_tiff_of_any_kind(Random& random, Digest& digest) {
  Loaded loaded{kTiff, digest, {}};
  const auto number = [&](std::initializer_list<int> values) {
    return std::vector{static_cast<uint32_t>(random.one_of(values))};
  };
  const uint32_t width = number({1, 3, 8, 17, 20})[0], height = number({1, 2, 5})[0];
  const uint32_t bits = number({1, 1, 2, 4, 8, 8, 8, 16, 16, 3, 12, 32, 64})[0],
                 samples = number({1, 1, 1, 2, 3, 3, 4, 5})[0];
  Tags tags = page_tags(width, height, bits, number({0, 1, 1, 2, 2, 3, 5, 6, 8, 9})[0], {{kSamples, {samples}}});
  const auto maybe = [&](uint16_t tag, std::vector<uint32_t> values, int one_in) {
    if (random.once_in(one_in)) tags[tag] = std::move(values);
  };
  maybe(kFillOrder, {2}, 4);
  maybe(kOrientation, number({1, 2, 3, 4, 5, 6, 7, 8}), 3);
  maybe(kSampleFormat, number({1, 2, 3}), 3);
  maybe(kExtraSamples, number({0, 1, 2}), 2);
  maybe(kSubsampling, {1, 1}, 2);
  if (bits <= 8 && tags[kPhotometric][0] == 3) {
    std::vector<uint32_t>& colors = tags[kColorMap];
    for (uint32_t i = 0; i < 3u << bits; ++i) colors.push_back(static_cast<uint32_t>(random.between(0, 65'535)));
  }
  if (random.once_in(9)) tags.erase(kPhotometric);
  const auto row_bytes = (width * bits * samples + 7) / 8;
  tags[kByteCount] = {row_bytes * height};
  Bytes pixels(size_t{row_bytes} * height);
  random.fill(pixels);
  loaded.add(tiff_file(tags, pixels));
}

TEST(CodecDigests, AreAsRecorded) {
  const struct {
    const char* name;
    void (*make)(Random&, Digest&);
    int times;
    uint64_t digest;
  } rows[] = {
      {"PCX", save_load_damage<kPcx, 1, 4, 8, 24>, 70, 0x638f667c1e2a56c7},
      {"DCX", save_load_damage<kDcx, 1, 4, 8, 24>, 20, 0x8eae45905dafb710},
      {"TGA", save_load_damage<kTga, 1, 4, 8, 24>, 70, 0xaa69d964b2df25a5},
      {"CALS", save_load_damage<kCals, 1>, 30, 0x8a15cdb099cc81bd},
      {"TIFF", save_and_load_tiff, 40, 0x06e56c2b4847af49},
      {"GIF, PNG", save_and_load_others, 20, 0xc3a5b12642d7bf62},
      {"samples of TIFF", load_tiff_of_any_kind, 600, 0xed970ae7ed8ef882},
  };
  for (const auto& row : rows) {
    Random random(1);
    Digest digest;
    for (int i = 0; i < row.times; ++i) row.make(random, digest);
    EXPECT_EQ(digest.value, row.digest) << row.name << ": 0x" << std::hex << digest.value;
  }
}

}  // namespace
