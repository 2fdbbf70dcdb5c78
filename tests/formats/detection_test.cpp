// What a file is taken for.
#include <gtest/gtest.h>
#include <string>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

// Filler that no test matches, with something put into it.
Bytes with(size_t offset, const Bytes& content, size_t size = 600) {
  Bytes all(size, 1);
  std::copy(content.begin(), content.end(), all.begin() + static_cast<std::ptrdiff_t>(offset));
  return all;
}

struct Row {
  const char* what;
  Bytes content;
  int format;
  const char* name = "file.bin";
};

const Row kRows[] = {
    {"TIFF, little-endian", bytes("II*"), 1},
    {"TIFF, big-endian", bytes("MM"), 1},
    {"one letter of two", bytes("I"), 0},
    {"PCX", {0x0A}, 2},
    {"a text that begins with a line feed", bytes("\nhello\r\n"), 2},
    {"DCX", {0xB1, 0x68, 0xDE, 0x3A}, 3},
    {"GIF 87a", bytes("GIF87a"), 4},
    {"GIF 89a", bytes("GIF89a"), 4},
    {"GIF of another version", with(0, bytes("GIF88a")), 0},
    {"bitmap", bytes("BM"), 6},
    {"clipboard file", {0x50, 0xC3}, 8},
    {"clipboard file before metafile", {0x50, 0xC3, 9, 0}, 8},
    {"placeable metafile", {0xD7, 0xCD, 0xC6, 0x9A}, 7},
    {"plain metafile", with(0, {1, 0, 9, 0}), 7},
    {"JPEG whose bytes 2 and 3 are 9 and 0", {0xFF, 0xD8, 9, 0}, 7},
    {"enhanced metafile", with(40, bytes(" EMF")), 15},
    {"TGA by its name", with(0, {}), 5, "file.TgA"},
    {"TGA by a name without a dot", with(0, {}), 5, "xtga"},
    {"TGA name, other bytes", {0xFF, 0xD8}, 5, "file.tga"},
    {"GIF called TGA", bytes("GIF89a"), 4, "file.tga"},
    {"CALS called TGA", bytes("srcdocid:"), 5, "file.tga"},
    {"text called TGA", bytes("one\r\n"), 5, "file.tga"},
    {"empty, called TGA", {}, 5, "file.tga"},
    {"JPEG", {0xFF, 0xD8, 0xFF, 0xE0}, 13},
    {"CALS", with(100, bytes("srcdocid:")), 12},
    {"CALS up to the last searched byte", with(502, bytes("srcdocid:")), 12},
    {"CALS one byte later", with(503, bytes("srcdocid:")), 0},
    {"CALS after a zero byte", with(99, bytes(std::string("\0srcdocid:", 10))), 0},
    {"CALS before text", bytes("srcdocid: x\r\n"), 12},
    {"text", bytes("one\r\ntwo\r\n"), 10},
    {"text with line feeds alone", bytes("one\ntwo\n"), 0},
    {"text without an end of line", bytes("one"), 0},
    {"text whose first line ends oddly", bytes("one\rtwo\r\n"), 0},
    {"text with a byte below 6", bytes("one\r\n\5"), 0},
    {"text with a byte of 6", bytes("one\r\n\6"), 10},
    {"text with a low byte out of sight", with(0, bytes(std::string(100, 'x') + "\r\n" + std::string(410, 'x'))), 10},
    {"carriage return as last searched byte", bytes(std::string(510, 'x') + "\r\n"), 10},
    {"carriage return past it", bytes(std::string(511, 'x') + "\r\n"), 0},
    {"PNG's eight bytes of signature alone are text", bytes("\x89PNG\r\n\x1A\n"), 10},
    {"PNG", {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13}, 14},
    {"empty", {}, 0},
    {"zeros", Bytes(600), 0},
    {"page set", bytes("[ColorFax]\r\nTotalPages=2\r\n"), 9},
    {"page set called TGA", bytes("[colorfax]\ntotalpages = 2\n"), 9, "file.tga"},
    {"page set of no pages", bytes("[ColorFax]\r\nTotalPages=0\r\n"), 10},
};

TEST(Detection, GoesByTheFirstTestThatMatches) {
  TempFolder folder;
  SetImgError(7);
  for (const Row& row : kRows) {
    write_file(folder.path(row.name), row.content);
    EXPECT_EQ(GetImageFormat(folder.path(row.name).c_str()), row.format) << row.what;
  }
  EXPECT_EQ(ImgError(), 7);
}

TEST(Detection, PathsAreTakenAsTheyStand) {
  TempFolder folder;
  std::string name = folder.path("");
  name.append(180 - name.size(), 'n');
  write_file(name, bytes("GIF89a"));
  EXPECT_EQ(GetImageFormat(name.c_str()), IMG_FORMAT_GIF);
#ifdef _WIN32
  EXPECT_NE(GetImageFormat("C:\\windows\\win.ini"), IMG_FORMAT_UNKNOWN);
  EXPECT_EQ(GetImageFormat("win.ini"), IMG_FORMAT_UNKNOWN) << "the system's folders are not looked through";
#endif
}

TEST(Detection, WhatCannotBeReadGoesByItsName) {
  TempFolder folder;
  SetImgError(7);
  EXPECT_EQ(GetImageFormat(folder.path("missing.tga").c_str()), IMG_FORMAT_TGA);
  EXPECT_EQ(GetImageFormat(folder.path("missing.png").c_str()), IMG_FORMAT_UNKNOWN);
  EXPECT_EQ(GetImageFormat(folder.path("").c_str()), IMG_FORMAT_UNKNOWN);
  EXPECT_EQ(GetImageFormat("ga"), IMG_FORMAT_UNKNOWN);
  EXPECT_EQ(GetImageFormat(""), IMG_FORMAT_UNKNOWN);
  EXPECT_EQ(GetImageFormat(nullptr), IMG_FORMAT_UNKNOWN);
  EXPECT_EQ(ImgError(), 7);
}

}  // namespace
