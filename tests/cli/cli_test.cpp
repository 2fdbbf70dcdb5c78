// The command line tool, run in process.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "cli_fixture.h"
#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/module.h"
#endif

using namespace test;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

// A picture of sevens.
Bytes blank_file(const BITMAPINFOHEADER& header) {
  Bytes dib = with_header(header);
  dib.resize(dib.size() + table_bytes(dib) + stride_of(header.biWidth, header.biBitCount) * std::abs(header.biHeight), 7);
  return bitmap_file(dib);
}

Bytes patched(Bytes bytes, size_t offset, uint32_t value, size_t size = 4) {
  std::memcpy(bytes.data() + offset, &value, size);
  return bytes;
}

// The same picture, three rows of 3 x 8 bits, under the 12-byte header.
Bytes core_file() {
  Bytes bytes(kFileHeader + 12 + 3 * 256 + 3 * 4, 9);
  bytes = patched(patched(patched(bytes, 0, 0x4D42), 6, 0), 10, kFileHeader + 12 + 3 * 256);
  return patched(patched(patched(patched(bytes, 14, 12), 18, 3 | 3 << 16), 22, 1, 2), 24, 8, 2);
}

std::string text_of(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

#ifndef _WIN32
TEST_F(Cli, PrintsOnWindowsAlone) {
  EXPECT_EQ(run({"print", at("missing.bmp"), "--fit"}), 2);
  EXPECT_THAT(err_, HasSubstr("use the Windows build of this tool, vorel.exe"));
}
#endif

TEST_F(Cli, ExitCodes) {
  const std::string good = put("good.bmp", bitmap_file(noise(5, 3, 24)));
  const std::string text = put("text.bmp", Bytes(100, 'x'));
  const std::string out = at("out.bmp");
  expect_refused({{{}, 2, "a verb is missing"},
                  {{"rotaet"}, 2, "there is no verb \"rotaet\"; did you mean \"rotate\"?"},
                  {{"info"}, 2, "vorel info --help"},
                  {{"rotate", good, out}, 2, "vorel rotate --help"},
                  {{"mirror", good, out, "sideways"}, 2, "vorel mirror --help"},
                  {{"info", at("missing.bmp")}, 3, "missing.bmp: there is no such file"},
                  {{"info", at("")}, 3, "this is a folder"},
                  {{"info", text}, 4, "not recognised"},
                  {{"convert", good, at("missing/out.bmp")}, 5, "cannot be created"},
                  {{"convert", good, at("temporary")}, 5, "this is a folder"},
                  {{"convert", good, good}, 5, "--overwrite"},
                  {{"info", text, text}, 4, "not recognised"},
                  {{"info", text, at("missing.bmp")}, 1, "no such file"},
                  {{"info", good, text}, 1, "text.bmp: the format"}});
  EXPECT_THAT(out_.str(), HasSubstr("good.bmp"));
}

TEST_F(Cli, HelpAndVersion) {
  for (const char* verb :
       {"info",   "convert", "pages", "rotate",    "mirror", "skew", "scale",  "cut",   "crop",   "combine",
        "invert", "tone",    "lut",   "histogram", "filter", "gray", "expand", "clean", "dither", "halftone"}) {
    EXPECT_EQ(run({verb, "--help"}), 0);
    EXPECT_THAT(out_.str(), HasSubstr(std::string("\n  vorel ") + verb));
  }
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_THAT(out_.str(), HasSubstr("Exit codes"));
  EXPECT_EQ(run({"--version"}), 0);
  EXPECT_THAT(out_.str(), testing::AllOf(StartsWith("vorel 5.59 ("), HasSubstr("libtiff "), HasSubstr("zlib ")));
  EXPECT_EQ(run({"--version", "--json"}), 0);
  EXPECT_THAT(out_.str(), testing::AllOf(StartsWith("{"), HasSubstr("\"module\": \"KALO32\""), HasSubstr("libjpeg")));
  ASSERT_EQ(run({"rotate", "--help"}), 0);
  const std::string help = out_.str();
  ASSERT_EQ(run({"help", "rotate"}), 0);
  EXPECT_EQ(out_.str(), help);
}

// Every option of every verb is in the manual page and in each completion; shells take the completions.
TEST_F(Cli, ManualAndCompletionsComeFromTheDeclarations) {
  ASSERT_EQ(run({"manual"}), 0);
  EXPECT_THAT(out_.str(),
              testing::AllOf(StartsWith(".TH VOREL 1"), HasSubstr(".SS pages join\n"), HasSubstr("\\fB\\-\\-steps\\fR")));
  for (const char* shell : {"bash", "zsh", "fish"}) {
    ASSERT_EQ(run({"completion", shell}), 0);
    for (const char* word : {"keep-dpi", "steps", "halftone", "threshold diffusion ordered", "join"})
      EXPECT_THAT(out_.str(), HasSubstr(word)) << shell;
  }
  EXPECT_EQ(run({"completion", "tcsh"}), 2);
#ifndef _WIN32
  ASSERT_EQ(run({"completion", "bash"}), 0);
  const std::string script =
      out_.str() +
      "complete_words() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _vorel; echo \"${COMPREPLY[*]}\"; }\n"
      "complete_words vorel rot\ncomplete_words vorel halftone --method d\n"
      "complete_words vorel pages j\ncomplete_words vorel scale a b --ke\n"
      "complete_words vorel help conv\ncomplete_words vorel convert a --to j\n";
  write_file(at("script"), {script.begin(), script.end()});
  ASSERT_EQ(std::system(("bash " + at("script") + " >" + at("words")).c_str()), 0);
  EXPECT_EQ(text_of(read_file(at("words"))), "rotate\ndiffusion\njoin\n--keep-dpi\nconvert\njpeg\n");
#endif
}

TEST_F(Cli, EveryTruncationIsNoticed) {
  const Bytes whole = bitmap_file(noise(9, 3, 1));
  const Bytes core = core_file();
  const Bytes bare(whole.begin() + kFileHeader, whole.end());
  for (const Bytes& file : {whole, core, bare}) {
    EXPECT_EQ(run({"info", put("in.bmp", file)}), 0);
    for (size_t size = 0; size < file.size(); size += size < 80 ? 1 : 5) {
      put("in.bmp", Bytes(file.begin(), file.begin() + static_cast<int>(size)));
      EXPECT_EQ(run({"info", at("in.bmp")}), 4) << size;
      EXPECT_EQ(run({"convert", at("in.bmp"), at("out.bmp")}), 4) << size;
      EXPECT_FALSE(fs::exists(at("out.bmp")));
    }
  }
  put("in.bmp", Bytes(whole.begin(), whole.end() - 5));
  EXPECT_EQ(run({"info", at("in.bmp")}), 4);
  EXPECT_THAT(err_, HasSubstr("ends 5 bytes before"));
}

TEST_F(Cli, EveryDamagedHeaderIsNoticed) {
  const Bytes good = bitmap_file(noise(9, 3, 8));
  const struct {
    size_t offset;
    uint32_t value;
    size_t size = 4;
  } rows[] = {{10, 20}, {10, 0xFFFFFFFF}, {14, 41},         {18, 0},          {18, 0xFFFFFFF7}, {18, 0x7FFFFFFF},
              {22, 0},  {22, 0x7FFFFFFF}, {22, 0x80000000}, {26, 0, 2},       {26, 3, 2},       {28, 7, 2},
              {30, 2},  {30, 4},          {34, 1},          {34, 0x7FFFFFFF}, {46, 0x10000000}, {46, 300}};
  for (const auto& row : rows) {
    put("in.bmp", patched(good, row.offset, row.value, row.size));
    EXPECT_EQ(run({"info", at("in.bmp")}), 4) << row.offset << " " << row.value;
    EXPECT_EQ(run({"convert", at("in.bmp"), at("out.bmp")}), 4) << row.offset << " " << row.value;
  }
}

// The same 3 x 2 pixels, white red / green blue, with a black column behind them, as files of every kind.
struct Kind {
  const char* name;
  uint32_t header_bytes;
  int depth;
  uint32_t compression;
  bool top_down;
  Bytes rest;  // behind the header: masks, colours, rows
};

Bytes file_of_kind(const Kind& kind) {
  Bytes header(kind.header_bytes);
  const auto put = [&](size_t offset, uint32_t value, size_t size = 4) {
    if (offset + size <= header.size()) std::memcpy(header.data() + offset, &value, size);
  };
  put(0, kind.header_bytes);
  if (kind.header_bytes == 12) {
    put(4, 3 | 2 << 16);
    put(8, 1 | static_cast<uint32_t>(kind.depth) << 16);
  } else {
    put(4, 3);
    put(8, static_cast<uint32_t>(kind.top_down ? -2 : 2));
    put(12, 1 | static_cast<uint32_t>(kind.depth) << 16);
    put(16, kind.compression);
  }
  const bool has_masks = kind.compression == BI_BITFIELDS && kind.header_bytes > 40;
  if (has_masks) std::memcpy(header.data() + 40, kind.rest.data(), 12);
  const Bytes rest(kind.rest.begin() + (has_masks ? 12 : 0), kind.rest.end());
  Bytes file = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};  // the rows follow what is in front of them
  return joined(joined(file, header), rest);
}

TEST_F(Cli, EveryKindOfBitmapLoadsAndIsWorkedOn) {
  const Bytes k24Down = {255, 255, 255, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0};
  const Bytes k24Up = {0, 255, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 0, 0, 255, 0, 0, 0, 0, 0, 0};
  const Bytes k32 = {0, 255, 0, 9, 255, 0, 0, 9, 0, 0, 0, 9, 255, 255, 255, 9, 0, 0, 255, 9, 0, 0, 0, 9};
  const Bytes kMasks32 = {0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0};
  const Bytes k16 = {0xE0, 0x03, 0x1F, 0, 0, 0, 0, 0, 0xFF, 0x7F, 0x00, 0x7C, 0, 0, 0, 0};
  const Bytes kMasks565 = {0, 0xF8, 0, 0, 0xE0, 0x07, 0, 0, 0x1F, 0, 0, 0};
  const Bytes k565 = {0xE0, 0x07, 0x1F, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0x00, 0xF8, 0, 0, 0, 0};
  Bytes colors = {0, 0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0};
  Bytes triples = {0, 0, 0, 255, 255, 255, 0, 0, 255, 0, 255, 0, 255, 0, 0};
  colors.resize(256 * 4);
  triples.resize(256 * 3);
  const Bytes k8 = {3, 4, 0, 0, 1, 2, 0, 0};
  // The last column of the first row is skipped by a delta.
  const Bytes codes = {1, 3, 1, 4, 0, 2, 1, 0, 0, 0, 1, 1, 1, 2, 0, 1};
  const Kind kinds[] = {{"12 bytes", 12, 8, 0, false, joined(triples, k8)},
                        {"16 bytes", 16, 24, 0, false, k24Up},
                        {"40 bytes", 40, 8, 0, false, joined(colors, k8)},
                        {"52 bytes and masks", 52, 32, BI_BITFIELDS, false, joined(kMasks32, k32)},
                        {"56 bytes and masks", 56, 16, BI_BITFIELDS, false, joined(kMasks565, k565)},
                        {"64 bytes", 64, 24, 0, false, k24Up},
                        {"108 bytes", 108, 8, 0, false, joined(colors, k8)},
                        {"124 bytes", 124, 24, 0, false, k24Up},
                        {"124 bytes and masks", 124, 32, BI_BITFIELDS, false, joined(kMasks32, k32)},
                        {"masks behind 40 bytes", 40, 16, BI_BITFIELDS, false, joined(kMasks565, k565)},
                        {"16 bits", 40, 16, 0, false, k16},
                        {"32 bits", 40, 32, 0, false, k32},
                        {"top-down", 40, 24, 0, true, k24Down},
                        {"run-length with a delta", 40, 8, BI_RLE8, false, joined(colors, codes)}};
  const std::string upright = "FFFFFF FF0000 000000/00FF00 0000FF 000000";
  for (const Kind& kind : kinds) {
    SCOPED_TRACE(kind.name);
    const Bytes file = file_of_kind(kind);
    const std::string in = put("in.bmp", file), out = at("out.bmp");
    EXPECT_EQ(run({"info", in}), 0) << err_;
    const bool has_old_header = kind.header_bytes == 12 || kind.header_bytes == 40;
    EXPECT_EQ(Block(LoadDIBFromFile(in.c_str())).get() != nullptr, has_old_header && !kind.top_down) << "the library itself";
    ASSERT_EQ(run({"rotate", in, out, "0", "--overwrite"}), 0) << err_;
    EXPECT_EQ(picture_of(dib_in(read_file(out))), upright);
    EXPECT_EQ(run({"convert", in, at("out.png"), "--overwrite"}), 0) << err_;
    ASSERT_EQ(run({"mirror", in, out, "horizontal", "--overwrite"}), 0) << err_;
    EXPECT_EQ(picture_of(dib_in(read_file(out))), "000000 FF0000 FFFFFF/000000 0000FF 00FF00");
  }
  // An array of bitmaps: the first one, whose offsets count from the file's start.
  Bytes first = patched(file_of_kind(kinds[0]), 10, 14 + 14 + 12 + 768);
  const std::string array = put("in.bmp", joined({'B', 'A', 14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, first));
  ASSERT_EQ(run({"rotate", array, at("out.bmp"), "0", "--overwrite"}), 0) << err_;
  EXPECT_EQ(picture_of(dib_at("out.bmp")), upright);
}

TEST_F(Cli, BitmapsOfBitmapsKeepTheirForm) {
  BITMAPINFOHEADER rle = header_for(5, 3, 8), top_down = header_for(5, -3, 24);
  rle.biCompression = BI_RLE8;
  for (const Bytes& file :
       {blank_file(rle), blank_file(top_down), bitmap_file(noise(5, 3, 16)), bitmap_file(noise(5, 3, 32))}) {
    const Bytes copy = converted({"convert"}, file);
    EXPECT_EQ(header_of(dib_in(copy)).biHeight, header_of(dib_in(file)).biHeight);
    EXPECT_EQ(header_of(dib_in(copy)).biBitCount, header_of(dib_in(file)).biBitCount);
    EXPECT_EQ(header_of(dib_in(copy)).biCompression, header_of(dib_in(file)).biCompression);
  }
}

#ifndef _WIN32
// The tool waits for standard input, which is copied to a scratch file, when the signal comes.
TEST_F(Cli, SignalsLeaveNoScratchFiles) {
  for (const int signal : {SIGINT, SIGTERM}) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
      dup2(ends[0], STDIN_FILENO);
      close(ends[1]);
      const std::string tool = (program_folder() / "vorel").string(), out = at("out.bmp");
      execl(tool.c_str(), "vorel", "convert", "-", out.c_str(), nullptr);
      _exit(99);
    }
    close(ends[0]);
    for (int i = 0; i < 500 && entries(temporary_) == 0; ++i) usleep(10'000);
    EXPECT_EQ(entries(temporary_), 1u);
    kill(child, signal);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    EXPECT_EQ(entries(temporary_), 0u);
    close(ends[1]);
  }
}
#endif

TEST_F(Cli, FileNamesThatBeginWithADash) {
  EXPECT_EQ(run({"convert", "-x.bmp", at("out.png")}), 2);
  EXPECT_THAT(err_, HasSubstr("-- -x.bmp"));
  EXPECT_EQ(run({"rotate", "a.bmp", "b.bmp", "1.5x"}), 2);
  EXPECT_THAT(err_, HasSubstr("DEGREES: \"1.5x\" is no number;"));
}

// The pixels of a picture, top row first.
std::string letters_of(const Bytes& dib) {
  std::string rows;
  for (int y = header_of(dib).biHeight; y-- > 0; rows += ' ')
    for (int x = 0; x < header_of(dib).biWidth; ++x) rows += static_cast<char>(pixel(dib, x, y));
  return rows;
}

TEST_F(Cli, TurnsAndMirrorsAreExact) {
  Bytes dib = with_header(header_for(2, 3, 8));
  dib.resize(dib.size() + table_bytes(dib));
  for (const char* row : {"EF..", "CD..", "AB.."}) dib.insert(dib.end(), row, row + 4);
  EXPECT_EQ(letters_of(changed({"rotate", "90"}, dib)), "ECA FDB ");
  EXPECT_EQ(letters_of(changed({"rotate", "180"}, dib)), "FE DC BA ");
  EXPECT_EQ(letters_of(changed({"rotate", "270"}, dib)), "BDF ACE ");
  EXPECT_EQ(letters_of(changed({"mirror", "horizontal"}, dib)), "BA DC FE ");
  EXPECT_EQ(letters_of(changed({"mirror", "vertical"}, dib)), "EF CD AB ");
  for (const int depth : {1, 4, 8, 24}) {
    const Bytes picture = noise(13, 7, depth);
    EXPECT_EQ(picture_of(changed({"rotate", "90"}, changed({"rotate", "270"}, picture))), picture_of(picture)) << depth;
  }
}

TEST_F(Cli, InvertComplementsColoursAlone) {
  const struct {
    int depth;
    Bytes pixel, negative;  // the last byte is padding but at 32 bits
  } rows[] = {{16, {0x01, 0x80, 5, 6}, {0xFE, 0xFF, 5, 6}},
              {24, {1, 2, 3, 4}, {254, 253, 252, 4}},
              {32, {1, 2, 3, 4}, {254, 253, 252, 4}}};
  for (const auto& row : rows) {
    const Bytes dib = with_header(header_for(1, 1, row.depth), row.pixel);
    const Bytes result = converted({"invert"}, bitmap_file(dib));
    EXPECT_EQ(Bytes(result.end() - 4, result.end()), row.negative) << row.depth;
  }
  const Bytes file = bitmap_file(noise(13, 2, 4));
  const Bytes negative = converted({"invert"}, file);
  EXPECT_EQ(negative[54], file[54] ^ 0xFF);
  EXPECT_EQ(negative[57], file[57]);
  EXPECT_TRUE(std::equal(negative.begin() + 54 + 64, negative.end(), file.begin() + 54 + 64));
}

// Some writers count bytes behind the last row. The result must be a file that the tool takes again.
TEST_F(Cli, SurplusImageBytesAreNotCarriedAlong) {
  Bytes file = bitmap_file(noise(5, 3, 24));
  const size_t pixels = file.size() - 54;
  file.resize(file.size() + 100);
  converted({"mirror", "vertical"},
            converted({"mirror", "vertical"}, patched(file, 34, static_cast<uint32_t>(pixels + 100))));
}

TEST_F(Cli, ExistingOutputsAreSafe) {
  const std::string in = put("in.bmp", bitmap_file(noise(5, 3, 24)));
  const std::string out = put("out.bmp", {1, 2, 3});
  EXPECT_EQ(run({"invert", in, out}), 5);
  EXPECT_EQ(read_file(out), Bytes({1, 2, 3}));
  EXPECT_EQ(run({"rotate", put("bad.bmp", {0}), out, "90", "--overwrite"}), 4);
  EXPECT_EQ(read_file(out), Bytes({1, 2, 3}));
  fs::permissions(out, fs::perms::owner_read);
  EXPECT_EQ(run({"invert", in, out, "--overwrite"}), 5);
  EXPECT_EQ(read_file(out), Bytes({1, 2, 3}));
  fs::permissions(out, fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(run({"invert", in, out, "--overwrite"}), 0);
  // In place.
  EXPECT_EQ(run({"invert", in, in, "--overwrite"}), 0);
  EXPECT_EQ(read_file(in), read_file(out));
}

TEST_F(Cli, StandardStreams) {
  const Bytes file = bitmap_file(noise(5, 3, 24));
  const Bytes expected = converted({"rotate", "270"}, file);
  EXPECT_EQ(run({"rotate", "-", "-", "270"}, text_of(file)), 0);
  EXPECT_EQ(out_.str(), text_of(expected));
  EXPECT_EQ(run({"convert", "-", "-"}), 4);
  EXPECT_THAT(err_, HasSubstr("standard input: "));
  EXPECT_EQ(out_.str(), "");
  out_.setstate(std::ios::badbit);
  EXPECT_EQ(run({"convert", "-", "-"}, text_of(file)), 5);
  EXPECT_EQ(run({"--help"}), 5);
}

TEST_F(Cli, Info) {
  BITMAPINFOHEADER header = header_for(5, 3, 4);
  header.biXPelsPerMeter = 11811;
  header.biClrUsed = 9;
  const std::string in = put("in.bmp", blank_file(header));
  EXPECT_EQ(run({"info", in}), 0);
  EXPECT_EQ(out_.str(), in + "\n"
                             "  format       Windows bitmap, 40-byte header\n"
                             "  pages        1\n"
                             "  size         5 x 3 pixels, bottom row first\n"
                             "  depth        4 bits per pixel\n"
                             "  colours      9\n"
                             "  resolution   300 x unknown dpi, 11811 x unknown pixels per metre\n"
                             "  compression  none\n");
  for (const auto& [depth, colors] : {std::pair(8, "256"), {16, "32768"}, {32, "16777216"}}) {
    EXPECT_EQ(run({"info", "-"}, text_of(blank_file(header_for(5, 3, depth)))), 0);
    EXPECT_NE(out_.str().find(std::string("colours      ") + colors + "\n"), std::string::npos) << out_.str();
  }
  EXPECT_EQ(run({"info", "-", at("missing"), "--json"}, text_of(blank_file(header_for(5, -3, 24)))), 1);
  EXPECT_EQ(out_.str(), R"([
  {
    "file": "-",
    "format": "Windows bitmap",
    "variant": "40-byte header",
    "pages": 1,
    "page": 1,
    "width": 5,
    "height": 3,
    "rowOrder": "top row first",
    "depth": 24,
    "colours": 16777216,
    "xPixelsPerMetre": null,
    "yPixelsPerMetre": null,
    "xDpi": null,
    "yDpi": null,
    "compression": "none"
  }
]
)");
  EXPECT_EQ(run({"info", at("missing"), "--json"}), 3);
  EXPECT_EQ(out_.str(), "[]\n");
}

TEST_F(Cli, AwkwardNames) {
  const Bytes file = bitmap_file(noise(5, 3, 24));
  const std::string folder = at(std::string(100, 'f')) + "/" + std::string(100, 'g');
  fs::create_directories(folder);
  for (const std::string& name : {folder + "/x.bmp", at("g\xC3\xA4nse \xE9\xB5\x9D.bmp")}) {
    std::ofstream(fs::path(std::u8string(name.begin(), name.end())), std::ios::binary) << text_of(file);
    EXPECT_EQ(run({"info", name}), 0) << err_;
    EXPECT_EQ(run({"invert", name, name + "2.bmp"}), 0) << err_;
    EXPECT_EQ(run({"invert", name, name, "--overwrite"}), 0) << err_;
  }
  EXPECT_EQ(run({"info", "no\nsuch"}), 3);
  EXPECT_THAT(err_, HasSubstr("no such: "));
}

#ifndef _WIN32

TEST_F(Cli, DevicesAndStrangeFolders) {
  const std::string in = put("in.bmp", bitmap_file(noise(5, 3, 24)));
  EXPECT_EQ(run({"convert", in, "/dev/full", "--overwrite"}), 5);
  EXPECT_EQ(run({"convert", in, "/dev/null"}), 5);
  EXPECT_EQ(run({"convert", in, "/dev/null", "--overwrite"}), 0);
  EXPECT_TRUE(fs::is_character_file("/dev/full") && fs::is_character_file("/dev/null"));
  EXPECT_EQ(run({"convert", in, "/proc/out.bmp"}), 5);
  EXPECT_EQ(run({"info", "/dev/null"}), 4);
}

// A limit on the size of files stops writing as a full disk does, wherever in the file it is reached.
TEST_F(Cli, FailedWritesAreReported) {
  const std::string pages = at("pages.tif");
  for (int depth : {1, 8, 24}) {
    const std::string in = put("in.bmp", bitmap_file(noise(200, 300, depth)));
    ASSERT_EQ(run({"pages", "join", in, in, pages, "--overwrite"}), 0) << err_;
    for (const std::string ending : {"bmp", "tif", "png", "jpg", "gif", "pcx", "dcx", "tga", "cal"}) {
      if (ending == "cal" && depth != 1) continue;
      const bool takes_pages = ending == "tif" || ending == "dcx";
      const auto convert = [&](const std::string& name) { return run({"convert", takes_pages ? pages : in, at(name)}); };
      ASSERT_EQ(convert("whole." + ending), 0) << err_;
      const rlim_t size = fs::file_size(at("whole." + ending));
      fs::remove(at("whole." + ending));
      rlimit usual{};
      ::getrlimit(RLIMIT_FSIZE, &usual);
      const auto before = std::signal(SIGXFSZ, SIG_IGN);
      for (const rlim_t room : {rlim_t{0}, rlim_t{1}, size / 3, size * 2 / 3, size - 1, size}) {
        const rlimit limit{room, usual.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const int result = convert("out." + ending);
        ::setrlimit(RLIMIT_FSIZE, &usual);
        EXPECT_EQ(result, room == size ? 0 : 5) << ending << " of " << depth << " bits in " << room << " of " << size;
        EXPECT_EQ(fs::remove(at("out." + ending)), room == size);
      }
      std::signal(SIGXFSZ, before);
    }
  }
}

TEST_F(Cli, LinksAndPermissionsAreKept) {
  const std::string in = put("in.bmp", bitmap_file(noise(5, 3, 24)));
  const std::string real = put("real.bmp", {1});
  fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
  fs::create_symlink("real.bmp", at("link.bmp"));
  fs::create_symlink("nowhere.bmp", at("dangling.bmp"));
  EXPECT_EQ(run({"convert", in, at("link.bmp")}), 5);
  EXPECT_EQ(run({"convert", in, at("link.bmp"), "--overwrite"}), 0);
  EXPECT_TRUE(fs::is_symlink(at("link.bmp")));
  EXPECT_EQ(run({"convert", in, at("plain.bmp")}), 0);
  EXPECT_EQ(read_file(real), read_file(at("plain.bmp")));
  EXPECT_EQ(fs::status(real).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
  for (const char* flag : {"--", "--overwrite"}) EXPECT_EQ(run({"convert", in, at("dangling.bmp"), flag}), 5);
  EXPECT_FALSE(fs::exists(at("nowhere.bmp")));
}

#endif

}  // namespace
