#include "viewer/info.h"

#include <bitset>
#include <cmath>
#include <memory>

#include "common/formats.h"
#include "common/operations.h"
#include "common/picture_file.h"
#include "core/pixel.h"
#include "viewer/failure.h"
#include "viewer/gdi.h"
#include "viewer/logic/histogram.h"
#include "viewer/resource.h"
#include "viewer/usable_file.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

using programs::Picture;

// Lines of two columns.
class Facts {
 public:
  void add(const wchar_t* name, const std::wstring& value) {
    if (!value.empty()) text_ += std::wstring(name) + L"\t" + value + L"\r\n";
  }
  const std::wstring& text() const { return text_; }

 private:
  std::wstring text_;
};

uint64_t count_colors(const Picture& picture) {
  constexpr size_t kAll = size_t{1} << 24;
  const auto seen = std::make_unique<std::bitset<kAll>>();
  with_depth(picture.depth(), [&](auto depth) {
    for (int y = 0; y < picture.height(); ++y) {
      const uint8_t* const row = picture.pixels().row(y).data();
      for (int x = 0; x < picture.width(); ++x)
        seen->set(programs::color_of(picture, Pixel<depth>::load(row, x)) & (kAll - 1));
    }
  });
  return seen->count();
}

std::wstring size_on_paper(const PictureFacts& picture) {
  if (picture.x_per_metre <= 0 || picture.y_per_metre <= 0) return {};
  const auto millimetres = [](int pixels, int per_metre) {
    return std::to_wstring(std::lround(pixels * 1000.0 / per_metre));
  };
  return millimetres(picture.width, picture.x_per_metre) + L" x " + millimetres(picture.height, picture.y_per_metre) +
         L" mm";
}

// Of the file as it is on the disk. What it does not tell is left out.
void add_file(const PagePlace& place, Facts& facts) {
  try {
    const UsableFile usable(place.path);
    const programs::PictureFile file(usable.path());
    facts.add(L"File", place.path.wstring());
    facts.add(L"Bytes", std::to_wstring(file.bytes()));
    const FileFormat& format = file.format();
    std::wstring variant;
    if (format.code == FormatCode::kBitmap) variant = widened(file.bitmap_facts().variant);
    if (format.code == programs::kPnm) variant = widened(file.pnm_facts(place.page).variant);
    facts.add(L"Format", widened(format.name) + (variant.empty() ? L"" : L", " + variant));
    facts.add(L"Compression", widened(file.compression(place.page).value_or("unknown")));
    for (const std::string& loss : file.losses(place.page)) facts.add(L"Loaded", widened(loss));
  } catch (const programs::Problem& problem) {
    facts.add(L"File", widened(problem.what()));
  }
}

// A file that tells nothing was named already.
void add_tags(const PagePlace& place, Facts& facts) {
  try {
    const UsableFile usable(place.path);
    for (const programs::Tag& tag : programs::PictureFile(usable.path()).tags(place.page))
      facts.add(widened(tag.name).c_str(), widened(tag.value));
  } catch (const programs::Problem&) {
  }
}

std::wstring facts_of(const Document& document) {
  const PictureFacts picture = document.facts();
  Facts facts;
  if (!document.path().empty()) add_file(document.page_at(document.page()).file, facts);
  facts.add(L"Page", page_text(picture));
  facts.add(L"Size", size_text(picture));
  facts.add(L"Resolution", resolution_text(picture));
  facts.add(L"On paper", size_on_paper(picture));
  if (picture.depth <= 8) facts.add(L"Colour table", std::to_wstring(document.picture().colors().size()) + L" colours");
  facts.add(L"Colours used", std::to_wstring(count_colors(document.picture())));
  facts.add(L"Changed by", widened(document.steps()));
  if (!document.path().empty()) add_tags(document.page_at(document.page()).file, facts);
  return facts.text();
}

class FactsDialog {
 public:
  explicit FactsDialog(const Document& document)
      : text_(facts_of(document)), counts_(programs::count_levels(document.picture())) {}

  void run(HWND owner) {
    DialogBoxParamW(this_program(), MAKEINTRESOURCEW(IDD_FACTS), owner, procedure, reinterpret_cast<LPARAM>(this));
  }

 private:
  static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    auto* self = reinterpret_cast<FactsDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
    switch (message) {
      case WM_INITDIALOG: return self->fill(dialog);
      case WM_DRAWITEM: self->draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)); return TRUE;
      case WM_COMMAND:
        if (LOWORD(wParam) == IDCANCEL || LOWORD(wParam) == IDOK) EndDialog(dialog, IDCANCEL);
        return TRUE;
      default: return FALSE;
    }
  }

  BOOL fill(HWND dialog) const {
    constexpr UINT kSecondColumn = 76;  // quarters of a character's width
    SendDlgItemMessageW(dialog, IDC_TEXT, EM_SETTABSTOPS, 1, reinterpret_cast<LPARAM>(&kSecondColumn));
    SetDlgItemTextW(dialog, IDC_TEXT, text_.c_str());
    SetFocus(GetDlgItem(dialog, IDCANCEL));
    return FALSE;
  }

  // Dark levels at the left.
  void draw(const DRAWITEMSTRUCT& item) const {
    const RECT& area = item.rcItem;
    FillRect(item.hDC, &area, GetSysColorBrush(COLOR_WINDOW));
    const auto bars = bars_of(counts_, static_cast<int>(area.right - area.left), static_cast<int>(area.bottom - area.top));
    for (size_t i = 0; i < bars.size(); ++i) {
      const LONG x = area.left + static_cast<LONG>(i);
      const RECT bar = {x, area.bottom - bars[i], x + 1, area.bottom};
      FillRect(item.hDC, &bar, GetSysColorBrush(COLOR_WINDOWTEXT));
    }
  }

  std::wstring text_;
  programs::LevelCounts counts_;
};

}  // namespace

void show_facts(HWND owner, const Document& document) { FactsDialog(document).run(owner); }

}  // namespace vorel::viewer
