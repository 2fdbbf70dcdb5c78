#include "viewer/commands.h"

#include <map>
#include <utility>
#include <vector>

#include "viewer/clipboard.h"
#include "viewer/failure.h"
#include "viewer/viewer_window.h"

namespace vorel::viewer {
namespace {

using Window = ViewerWindow;

bool has_picture(const Window& window) { return window.document().is_open() && !window.is_loading(); }
bool shows_picture(const Window& window) { return window.document().is_open(); }  // while another one loads, too
bool has_file(const Window& window) { return window.has_place(); }
bool has_saved_file(const Window& window) { return has_picture(window) && !window.document().path().empty(); }
bool has_lens(const Window& window) { return window.canvas().has_lens(); }
bool has_pages(const Window& window) { return has_picture(window) && window.document().pages() > 1; }

constexpr Key control(int code) { return {code, true, false}; }
constexpr Key shift(int code) { return {code, false, true}; }

// ---- The table, menu by menu ----

Command line() { return {}; }

// Where a failure would else go unseen: nothing on the screen changes when a file is not written or printed.
Command in_box(Command command) {
  command.telling = Window::Telling::kBox;
  return command;
}

Command recent_row(size_t number) {
  const auto exists = [number](const Window& w) { return number < w.recent_files().paths().size(); };
  Command row = {L"&" + std::to_wstring(number + 1), {}, [number](Window& w) { w.open_recent(number); }, exists};
  row.submenu = L"&Recent files";
  row.telling = Window::Telling::kBox;
  row.changing_name = [number, exists](const Window& w) {
    const std::wstring key = L"&" + std::to_wstring(number + 1) + L"  ";
    return exists(w) ? key + doubled(widened(w.recent_files().paths()[number]), L'&') : key;
  };
  return row;
}

std::vector<Command> file_commands() {
  std::vector<Command> rows = {
      in_box({L"&Open...", control('O'), [](Window& w) { w.ask_and_open(); }}),
      in_box({L"&Save as...", control('S'), [](Window& w) { w.save_as(); }, has_picture}),
      {L"&Information...", control('I'), [](Window& w) { w.tell_facts(); }, has_picture},
      {L"&Load again", control('R'), [](Window& w) { w.load_again(); }, has_saved_file},
      {L"Stop loadin&g", {kEscapeKey}, [](Window& w) { w.stop_loading(); }, [](const Window& w) { return w.is_loading(); }},
      in_box({L"&Delete...", {kDeleteKey}, [](Window& w) { w.delete_file(); }, has_saved_file}),
  };
  for (size_t number = 0; number < RecentFiles::kMost; ++number) rows.push_back(recent_row(number));
  const Command printing[] = {
      line(),
      in_box({L"Prin&t...", control('P'), [](Window& w) { w.print(); }, has_picture}),
      in_box({L"Print pre&view...", {'P', true, true}, [](Window& w) { w.preview(); }, has_picture}),
      in_box({L"Printer set&up...", {'U', true, true}, [](Window& w) { w.set_up_printer(); }}),
      line(),
      {L"E&xit", control('Q'), [](Window& w) { w.close(); }},
  };
  rows.insert(rows.end(), std::begin(printing), std::end(printing));
  return rows;
}

std::vector<Command> edit_commands() {
  return {
      {L"&Undo", control('Z'), [](Window& w) { w.undo(); },
       [](const Window& w) { return has_picture(w) && w.document().can_undo(); }},
      {L"&Redo", control('Y'), [](Window& w) { w.redo(); },
       [](const Window& w) { return has_picture(w) && w.document().can_redo(); }},
      line(),
      {L"&Copy", control('C'), [](Window& w) { w.copy(); }, has_picture},
      {L"&Paste", control('V'), [](Window& w) { w.paste(); }, [](const Window&) { return can_paste(); }},
  };
}

Command view_row(const wchar_t* name, Key key, void (*action)(View&)) {
  return {name, key, [action](Window& w) { w.canvas().change(action); }, shows_picture};
}

Command sizing_row(const wchar_t* name, Key key, Sizing sizing) {
  return {name, key, [sizing](Window& w) { w.canvas().change([sizing](View& view) { view.set_sizing(sizing); }); },
          shows_picture, [sizing](const Window& w) { return w.canvas().view().sizing() == sizing; }};
}

Command option_row(const wchar_t* name, Key key, Option option) {
  return {name, key, [option](Window& w) { w.canvas().change([option](View& view) { view.toggle(option); }); },
          shows_picture, [option](const Window& w) { return w.canvas().view().has(option); }};
}

Command thumbnail_row(const wchar_t* name, Key key, Thumbnails thumbnails) {
  return {name,
          key,
          [thumbnails](Window& w) { w.toggle_thumbnails(thumbnails); },
          {},
          [thumbnails](const Window& w) { return w.thumbnails() == thumbnails; }};
}

std::vector<Command> view_commands() {
  return {
      view_row(L"Zoom &in", {kPlusKey}, [](View& view) { view.zoom_by_step(View::Step::kLarger); }),
      view_row(L"Zoom &out", {kMinusKey}, [](View& view) { view.zoom_by_step(View::Step::kSmaller); }),
      view_row(L"&100 %", {'1'}, [](View& view) { view.zoom_to_actual_size(); }),
      line(),
      sizing_row(L"&Fit the window", {'F'}, Sizing::kFit),
      sizing_row(L"Fit the &width", {'W'}, Sizing::kFitWidth),
      sizing_row(L"&Stretch", {'T'}, Sizing::kStretch),
      line(),
      option_row(L"&Centred", {'E'}, IMG_DISPLAY_CENTRE),
      option_row(L"Size by &resolution", {'Z'}, IMG_DISPLAY_RESOLUTION),
      option_row(L"In&verted", {'I'}, IMG_DISPLAY_INVERTED),
      line(),
      {L"Magnifying &lens", {'O'}, [](Window& w) { w.canvas().toggle_lens(); }, shows_picture, has_lens},
      {L"&Drag a rectangle to zoom",
       {'X'},
       [](Window& w) { w.toggle_band_mode(); },
       {},
       [](const Window& w) { return w.canvas().dragging() == Canvas::Dragging::kBand; }},
      line(),
      thumbnail_row(L"Thumbnails of the &pages", {kF8Key}, Thumbnails::kPages),
      thumbnail_row(L"&Thumbnails of the folder", {kF9Key}, Thumbnails::kFolder),
      {L"Switch &between picture and thumbnails",
       {kF6Key},
       [](Window& w) { w.switch_focus(); },
       [](const Window& w) { return w.thumbnails() != Thumbnails::kNone; }},
      line(),
      {L"F&ull screen",
       {kF11Key},
       [](Window& w) { w.toggle_full_screen(); },
       {},
       [](const Window& w) { return w.is_full_screen(); }},
  };
}

std::vector<Command> go_commands() {
  return {
      {L"&On by a screen", {kSpaceKey}, [](Window& w) { w.go_by_screen(View::Way::kOn); }, has_file},
      {L"&Back by a screen", {kBackspaceKey}, [](Window& w) { w.go_by_screen(View::Way::kBack); }, has_file},
      line(),
      {L"&Next page", {kPageDownKey}, [](Window& w) { w.go_by_page(View::Way::kOn); }, has_picture},
      {L"&Page before", {kPageUpKey}, [](Window& w) { w.go_by_page(View::Way::kBack); }, has_picture},
      {L"&First page", {kHomeKey}, [](Window& w) { w.go_to_end(View::Way::kBack); }, has_picture},
      {L"&Last page", {kEndKey}, [](Window& w) { w.go_to_end(View::Way::kOn); }, has_picture},
      {L"&Go to page...", control('G'), [](Window& w) { w.ask_for_page(); }, has_pages},
      line(),
      {L"Next f&ile of the folder", control(kRightKey), [](Window& w) { w.open_neighbour(View::Way::kOn); }, has_file},
      {L"File b&efore", control(kLeftKey), [](Window& w) { w.open_neighbour(View::Way::kBack); }, has_file},
      line(),
      {L"&Slide show",
       {kF5Key},
       [](Window& w) { w.toggle_slide_show(); },
       has_file,
       [](const Window& w) { return w.has_slide_show(); }},
  };
}

std::vector<Command> process_commands() {
  std::vector<Command> rows;
  for (const Operation& operation : operations()) {
    const size_t number = rows.size();
    rows.push_back({operation.name, operation.key, [number](Window& w) { w.process(number); }, has_picture});
    rows.back().submenu = operation.menu;
  }
  return rows;
}

std::vector<Command> page_commands() {
  const auto turn = [](const wchar_t* name, Key key, const char* step) {
    return Command{name, key, [step](Window& w) { w.turn_all_pages(step); }, has_pages};
  };
  return {
      {L"&Take this page out", {kDeleteKey, true, true}, [](Window& w) { w.take_page_out(); }, has_pages},
      in_box({L"&Put pages in...", {kInsertKey, true, true}, [](Window& w) { w.put_pages_in(); }, has_picture}),
      {L"Move it &back", {kPageUpKey, true, true}, [](Window& w) { w.move_page(-1); }, has_pages},
      {L"Move it &on", {kPageDownKey, true, true}, [](Window& w) { w.move_page(1); }, has_pages},
      line(),
      turn(L"Turn all to the &right", {'R', true, true}, "rotate 90"),
      turn(L"Turn all to the &left", {'L', true, true}, "rotate 270"),
      turn(L"Turn all by &half", {}, "rotate 180"),
      line(),
      in_box({L"&Save the steps of this page...",
              {'S', true, true},
              [](Window& w) { w.save_steps(); },
              [](const Window& w) { return has_picture(w) && !w.document().steps().empty(); }}),
      {L"Bat&ch...", {'B', true, true}, [](Window& w) { w.run_batch(); }},
      in_box({L"R&un steps from a file...", {'O', true, true}, [](Window& w) { w.run_steps_of_file(); }, has_picture}),
  };
}

std::vector<Command> help_commands() {
  return {
      {L"&Keys and mouse...", {kF1Key}, [](Window& w) { w.explain_keys(); }},
      {L"&About Vorel Viewer", {}, [](Window& w) { w.tell_about(); }},
  };
}

constexpr struct {
  const wchar_t* name;
  std::vector<Command> (*commands)();
} kMenus[] = {{L"&File", file_commands},       {L"&Edit", edit_commands},  {L"&View", view_commands}, {L"&Go", go_commands},
              {L"&Process", process_commands}, {L"P&ages", page_commands}, {L"&Help", help_commands}};

// Keys that do as well as another. On many keyboards the plus sign needs Shift.
constexpr struct {
  Key key, as;
} kOtherKeys[] = {{{kPlusKey, false, true}, {kPlusKey}}, {{kNumpadPlusKey}, {kPlusKey}}, {{kNumpadMinusKey}, {kMinusKey}}};

std::vector<Command> all_commands() {
  std::vector<Command> all;
  for (const auto& menu : kMenus) {
    for (Command& command : menu.commands()) {
      command.menu = menu.name;
      all.push_back(std::move(command));
    }
  }
  return all;
}

// ---- Menu and keys for it ----

std::wstring with_key(const std::wstring& name, const Key& key) {
  return key.code == 0 ? name : name + L"\t" + key_text(key);
}

// Finds menus by their names, and makes those that are missing.
class MenuBuilder {
 public:
  HMENU bar() const { return bar_; }
  HMENU menu_of(const Command& command) {
    const HMENU menu = menu_in(bar_, command.menu);
    return command.submenu.empty() ? menu : menu_in(menu, command.submenu);
  }

 private:
  HMENU menu_in(HMENU parent, const std::wstring& name) {
    HMENU& menu = menus_[{parent, name}];
    if (menu == nullptr) {
      menu = CreatePopupMenu();
      AppendMenuW(parent, MF_POPUP, reinterpret_cast<UINT_PTR>(menu), name.c_str());
    }
    return menu;
  }

  HMENU bar_ = CreateMenu();
  std::map<std::pair<HMENU, std::wstring>, HMENU> menus_;
};

ACCEL accelerator_for(const Key& key, WORD id) {
  const int modifiers = FVIRTKEY | (key.control ? FCONTROL : 0) | (key.shift ? FSHIFT : 0);
  return {static_cast<BYTE>(modifiers), static_cast<WORD>(key.code), id};
}

static_assert(kBackspaceKey == VK_BACK && kEscapeKey == VK_ESCAPE && kEndKey == VK_END && kHomeKey == VK_HOME &&
              kDeleteKey == VK_DELETE && kInsertKey == VK_INSERT && kF6Key == VK_F6 && kF8Key == VK_F8 && kF9Key == VK_F9 &&
              kF11Key == VK_F11 && kSpaceKey == VK_SPACE && kPageUpKey == VK_PRIOR && kPageDownKey == VK_NEXT &&
              kLeftKey == VK_LEFT && kRightKey == VK_RIGHT && kNumpadPlusKey == VK_ADD && kNumpadMinusKey == VK_SUBTRACT &&
              kF1Key == VK_F1 && kF5Key == VK_F5 && kPlusKey == VK_OEM_PLUS && kMinusKey == VK_OEM_MINUS);

}  // namespace

std::span<const Command> commands() {
  static const std::vector<Command> all = all_commands();
  return all;
}

const Command* command_of(WORD id) {
  const size_t number = static_cast<size_t>(id) - kFirstCommandId;
  return number < commands().size() ? &commands()[number] : nullptr;
}

HMENU create_menu() {
  MenuBuilder menus;
  WORD id = kFirstCommandId;
  for (const Command& command : commands()) {
    const UINT kind = command.name.empty() ? MF_SEPARATOR : MF_STRING;
    AppendMenuW(menus.menu_of(command), kind, id++, with_key(command.name, command.key).c_str());
  }
  return menus.bar();
}

// Esc ends one thing after another and is no key of one command alone.
HACCEL create_accelerators() {
  std::vector<ACCEL> keys;
  WORD id = kFirstCommandId;
  for (const Command& command : commands()) {
    if (command.key.code != 0 && command.key.code != kEscapeKey) keys.push_back(accelerator_for(command.key, id));
    for (const auto& other : kOtherKeys)
      if (other.as == command.key) keys.push_back(accelerator_for(other.key, id));
    ++id;
  }
  return CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
}

void update_menu(HMENU menu, const Window& window) {
  for (int item = 0; item < GetMenuItemCount(menu); ++item) {
    const UINT id = GetMenuItemID(menu, item), place = static_cast<UINT>(item);
    const Command* command = command_of(static_cast<WORD>(id));
    if (command == nullptr || command->name.empty()) continue;
    if (command->changing_name) {
      const std::wstring text = with_key(command->changing_name(window), command->key);
      ModifyMenuW(menu, place, MF_BYPOSITION | MF_STRING, id, text.c_str());
    }
    const bool is_enabled = !command->is_enabled || command->is_enabled(window);
    const bool is_checked = command->is_checked && command->is_checked(window);
    EnableMenuItem(menu, place, MF_BYPOSITION | (is_enabled ? MF_ENABLED : MF_GRAYED));
    CheckMenuItem(menu, place, MF_BYPOSITION | (is_checked ? MF_CHECKED : MF_UNCHECKED));
  }
}

std::wstring keys_text() {
  std::wstring text, menu;
  for (const Command& command : commands()) {
    if (command.key.code == 0) continue;
    if (command.menu != menu) text += (menu.empty() ? L"" : L"\r\n") + plain_name(command.menu) + L"\r\n";
    menu = command.menu;
    text += L"    " + key_text(command.key) + L"\t" + plain_name(command.name) + L"\r\n";
  }
  return text +
         L"\r\nOther keys\r\n"
         L"    Arrows\tScroll by a tenth of the window\r\n"
         L"    Esc\tTake back a rectangle; end lens, loading, slide show and full screen; leave the thumbnails\r\n"
         L"\r\nMouse\r\n"
         L"    Drag\tMove the picture\r\n"
         L"    Shift+drag\tFill the window with a rectangle\r\n"
         L"    Shift+click\tZoom in; with the right button, out\r\n"
         L"    Double click\tWhole picture, or its actual size\r\n"
         L"    Wheel\tScroll; with Shift across; with Ctrl zoom\r\n";
}

}  // namespace vorel::viewer
