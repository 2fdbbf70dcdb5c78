// Metafiles with a record of every kind that the system records, and the records alone.
#pragma once

#include <cstring>
#include <vector>
#include <windows.h>

#include "support/dib.h"

namespace test {

// Calls the drawing functions that metafiles record; a kind of metafile that has no record for one leaves it out. Returns the
// objects, which the metafile needs until it is closed.
inline std::vector<HGDIOBJ> draw_everything(HDC dc) {
  const POINT points[] = {{1, 1}, {20, 5}, {9, 30}, {1, 30}, {4, 4}, {8, 8}, {3, 9}};
  const POINT far_points[] = {{1, 1}, {70'000, 5}, {9, 30}, {1, 30}, {4, 4}, {8, 8}, {3, 9}};
  const INT counts[] = {4, 3};
  const DWORD line_counts[] = {4, 3};
  const BYTE types[] = {PT_MOVETO, PT_LINETO, PT_LINETO, PT_LINETO | PT_CLOSEFIGURE, PT_MOVETO, PT_LINETO, PT_LINETO};
  const INT dx[] = {5, 6, 7, 8, 5, 6, 7, 8};
  const RECT box{2, 2, 30, 30};
  struct {
    BITMAPINFOHEADER header;
    RGBQUAD colors[16];
    uint8_t rows[8 * 8];
  } dib = {header_for(8, 8, 4), {{255, 0, 0, 0}, {0, 255, 0, 0}}, {}};
  dib.header.biSizeImage = 32;  // the system records both as they are stated
  dib.header.biClrUsed = 16;
  const auto* info = reinterpret_cast<const BITMAPINFO*>(&dib);

  SaveDC(dc);
  SetMapMode(dc, MM_ANISOTROPIC);
  SetWindowExtEx(dc, 64, 64, nullptr);
  SetWindowOrgEx(dc, 0, 0, nullptr);
  SetViewportExtEx(dc, 64, 64, nullptr);
  SetViewportOrgEx(dc, 0, 0, nullptr);
  OffsetWindowOrgEx(dc, 0, 0, nullptr);
  OffsetViewportOrgEx(dc, 0, 0, nullptr);
  ScaleWindowExtEx(dc, 1, 1, 1, 1, nullptr);
  ScaleViewportExtEx(dc, 1, 1, 1, 1, nullptr);
  SetBkColor(dc, 0xFFFFFF);
  SetBkMode(dc, TRANSPARENT);
  SetTextColor(dc, 0xFF);
  SetROP2(dc, R2_COPYPEN);
  SetPolyFillMode(dc, WINDING);
  SetStretchBltMode(dc, COLORONCOLOR);
  SetTextAlign(dc, TA_LEFT);
  SetTextCharacterExtra(dc, 1);
  SetTextJustification(dc, 1, 1);
  SetMapperFlags(dc, 0);
  SetBrushOrgEx(dc, 1, 1, nullptr);
  SetMiterLimit(dc, 5, nullptr);
  SetArcDirection(dc, AD_CLOCKWISE);
  SetLayout(dc, 0);
  SetColorAdjustment(dc, nullptr);
  COLORADJUSTMENT adjustment = {};
  GetColorAdjustment(dc, &adjustment);
  SetColorAdjustment(dc, &adjustment);
  const XFORM same{1, 0, 0, 1, 0, 0};
  SetGraphicsMode(dc, GM_ADVANCED);
  SetWorldTransform(dc, &same);
  ModifyWorldTransform(dc, &same, MWT_LEFTMULTIPLY);

  HPEN pen = CreatePen(PS_SOLID, 1, 0xFF00);
  SelectObject(dc, pen);
  const LOGBRUSH solid{BS_SOLID, 0xFF, 0};
  const DWORD dashes[] = {3, 2};
  HPEN wide = ExtCreatePen(PS_GEOMETRIC | PS_USERSTYLE, 3, &solid, 2, dashes);
  SelectObject(dc, wide);
  HBRUSH brush = CreateSolidBrush(0xFF0000), hatched = CreateHatchBrush(HS_CROSS, 0xFF);
  SelectObject(dc, hatched);
  SelectObject(dc, brush);
  HBRUSH pattern = CreateDIBPatternBrushPt(&dib, DIB_RGB_COLORS);
  SelectObject(dc, pattern);
  HBITMAP bilevel = CreateBitmap(8, 8, 1, 1, dib.rows);
  HBRUSH mono = CreatePatternBrush(bilevel);
  SelectObject(dc, mono);
  HFONT font = CreateFontA(12, 0, 0, 0, 400, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
  SelectObject(dc, font);
  struct {
    LOGPALETTE palette;
    PALETTEENTRY more[7];
  } colors = {{0x300, 8, {{}}}, {}};
  HPALETTE palette = CreatePalette(&colors.palette);
  SelectPalette(dc, palette, FALSE);
  RealizePalette(dc);
  SetPaletteEntries(palette, 0, 4, colors.more);
  ResizePalette(palette, 6);
  AnimatePalette(palette, 0, 2, colors.more);

  MoveToEx(dc, 1, 1, nullptr);
  LineTo(dc, 9, 9);
  SetPixel(dc, 3, 3, 0xFF);
  Ellipse(dc, 2, 2, 30, 30);
  Rectangle(dc, 2, 2, 30, 30);
  RoundRect(dc, 2, 2, 30, 30, 4, 4);
  Arc(dc, 2, 2, 30, 30, 1, 1, 40, 40);
  ArcTo(dc, 2, 2, 30, 30, 1, 1, 40, 40);
  Chord(dc, 2, 2, 30, 30, 1, 1, 40, 40);
  Pie(dc, 2, 2, 30, 30, 1, 1, 40, 40);
  AngleArc(dc, 10, 10, 5, 0, 90);
  for (const POINT* p : {points, far_points}) {
    Polygon(dc, p, 4);
    Polyline(dc, p, 4);
    PolyBezier(dc, p, 7);
    PolyBezierTo(dc, p, 6);
    PolylineTo(dc, p, 4);
    PolyPolygon(dc, p, counts, 2);
    PolyPolyline(dc, p, line_counts, 2);
    PolyDraw(dc, p, types, 7);
  }
  FloodFill(dc, 3, 3, 0xFF);
  ExtFloodFill(dc, 3, 3, 0xFF, FLOODFILLBORDER);
  TextOutA(dc, 1, 1, "text", 4);
  ExtTextOutA(dc, 1, 1, ETO_CLIPPED, &box, "wide", 4, dx);
  ExtTextOutW(dc, 1, 1, ETO_OPAQUE | ETO_PDY, &box, L"tall", 4, dx);
  const POLYTEXTA texts[] = {{1, 1, 2, "ab", 0, box, const_cast<INT*>(dx)}, {1, 9, 2, "cd", 0, box, const_cast<INT*>(dx)}};
  PolyTextOutA(dc, texts, 2);

  HRGN region = CreateRectRgn(2, 2, 9, 9), corner = CreateEllipticRgn(5, 5, 25, 25);
  CombineRgn(region, region, corner, RGN_OR);
  FillRgn(dc, region, brush);
  FrameRgn(dc, region, brush, 1, 1);
  InvertRgn(dc, region);
  PaintRgn(dc, region);
  SelectClipRgn(dc, region);
  ExtSelectClipRgn(dc, region, RGN_OR);
  OffsetClipRgn(dc, 0, 0);
  IntersectClipRect(dc, 0, 0, 60, 60);
  ExcludeClipRect(dc, 0, 0, 1, 1);
  SetMetaRgn(dc);

  BeginPath(dc);
  Rectangle(dc, 3, 3, 9, 9);
  CloseFigure(dc);
  EndPath(dc);
  FlattenPath(dc);
  WidenPath(dc);
  StrokePath(dc);
  for (const auto use_path : {FillPath, StrokeAndFillPath}) {
    BeginPath(dc);
    Ellipse(dc, 3, 3, 9, 9);
    EndPath(dc);
    use_path(dc);
  }
  BeginPath(dc);
  Rectangle(dc, 0, 0, 60, 60);
  EndPath(dc);
  SelectClipPath(dc, RGN_OR);
  BeginPath(dc);
  AbortPath(dc);

  HDC screen = GetDC(nullptr), source = CreateCompatibleDC(screen);
  HBITMAP bitmap = CreateCompatibleBitmap(screen, 8, 8);
  HGDIOBJ before = SelectObject(source, bitmap);
  PatBlt(dc, 1, 1, 5, 5, PATCOPY);
  BitBlt(dc, 1, 1, 8, 8, source, 0, 0, SRCCOPY);
  BitBlt(dc, 1, 1, 8, 8, nullptr, 0, 0, BLACKNESS);
  StretchBlt(dc, 1, 1, 16, 16, source, 0, 0, 8, 8, SRCCOPY);
  MaskBlt(dc, 1, 1, 8, 8, source, 0, 0, bilevel, 0, 0, MAKEROP4(SRCCOPY, SRCAND));
  const POINT corners[] = {{1, 1}, {20, 1}, {1, 20}};
  PlgBlt(dc, corners, source, 0, 0, 8, 8, bilevel, 0, 0);
  GdiAlphaBlend(dc, 1, 1, 8, 8, source, 0, 0, 8, 8, {AC_SRC_OVER, 0, 99, 0});
  GdiTransparentBlt(dc, 1, 1, 8, 8, source, 0, 0, 8, 8, 0);
  StretchDIBits(dc, 1, 1, 16, 16, 0, 0, 8, 8, dib.rows, info, DIB_RGB_COLORS, SRCCOPY);
  TRIVERTEX vertices[] = {{1, 1, 0xFF00, 0, 0, 0}, {30, 30, 0, 0xFF00, 0, 0}, {9, 40, 0, 0, 0xFF00, 0}};
  GRADIENT_RECT rect{0, 1};
  GRADIENT_TRIANGLE triangle{0, 1, 2};
  GdiGradientFill(dc, vertices, 2, &rect, 1, GRADIENT_FILL_RECT_H);
  GdiGradientFill(dc, vertices, 3, &triangle, 1, GRADIENT_FILL_TRIANGLE);
  Escape(dc, MFCOMMENT, 8, "comment", nullptr);
  GdiComment(dc, 8, reinterpret_cast<const BYTE*>("comment"));
  SetICMMode(dc, ICM_OFF);
  SelectObject(source, before);
  DeleteDC(source);
  ReleaseDC(nullptr, screen);

  for (HGDIOBJ stock : {GetStockObject(WHITE_BRUSH), GetStockObject(BLACK_PEN), GetStockObject(SYSTEM_FONT)})
    SelectObject(dc, stock);
  SelectPalette(dc, static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), FALSE);
  RestoreDC(dc, -1);
  return {pen, wide, brush, hatched, pattern, mono, bilevel, bitmap, font, palette, region, corner};
}

template <class Integer>
Integer number_at(const Bytes& bytes, size_t offset) {
  Integer value;
  std::memcpy(&value, &bytes[offset], sizeof value);
  return value;
}

template <class Integer>
void set_number(Bytes& bytes, size_t offset, Integer value) {
  std::memcpy(&bytes[offset], &value, sizeof value);
}

// A metafile of a kind: what precedes its records, and the records, the last of them its end.
struct Taken {
  Bytes start;
  std::vector<Bytes> records;

  // One of a record alone.
  Bytes file_with(const Bytes& record) const { return joined(joined(start, record), records.back()); }
};

inline void delete_objects(const std::vector<HGDIOBJ>& objects) {
  for (HGDIOBJ object : objects) DeleteObject(object);
}

inline Taken every_windows_record() {
  HDC dc = CreateMetaFileA(nullptr);
  const auto objects = draw_everything(dc);
  HMETAFILE metafile = CloseMetaFile(dc);
  Bytes bytes(GetMetaFileBitsEx(metafile, 0, nullptr));
  GetMetaFileBitsEx(metafile, static_cast<UINT>(bytes.size()), bytes.data());
  DeleteMetaFile(metafile);
  delete_objects(objects);
  Taken taken{{bytes.begin(), bytes.begin() + 18}, {}};
  for (size_t at = 18; at < bytes.size(); at += taken.records.back().size())
    taken.records.emplace_back(&bytes[at], &bytes[at] + 2 * number_at<uint32_t>(bytes, at));
  return taken;
}

inline Taken every_enhanced_record() {
  HDC screen = GetDC(nullptr);
  HDC dc = CreateEnhMetaFileA(screen, nullptr, nullptr, nullptr);
  ReleaseDC(nullptr, screen);
  const auto objects = draw_everything(dc);
  HENHMETAFILE metafile = CloseEnhMetaFile(dc);
  Bytes bytes(GetEnhMetaFileBits(metafile, 0, nullptr));
  GetEnhMetaFileBits(metafile, static_cast<UINT>(bytes.size()), bytes.data());
  DeleteEnhMetaFile(metafile);
  delete_objects(objects);
  Taken taken;
  for (size_t at = 0; at < bytes.size(); at += taken.records.back().size())
    taken.records.emplace_back(&bytes[at], &bytes[at] + number_at<uint32_t>(bytes, at + 4));
  taken.start = taken.records.front();
  taken.records.erase(taken.records.begin());
  return taken;
}

}  // namespace test
