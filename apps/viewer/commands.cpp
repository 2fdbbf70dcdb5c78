#include "viewer/commands.h"

#include <map>
#include <utility>
#include <vector>

#include "viewer/clipboard.h"
#include "viewer/viewer_window.h"

namespace vorel::viewer {
namespace {

using Window = ViewerWindow;

bool has_picture(const Window& window) { return window.document().is_open(); }
bool has_file(const Window& window) { return !window.document().path().empty(); }
bool has_lens(const Window& window) { return window.canvas().has_lens(); }
bool has_pages(const Window& window) { return window.document().pages() > 1; }

constexpr Key control(int code) { return {code, true, false}; }

// ---- The table, menu by menu ----

Command line() { return {}; }

std::vector<Command> file_commands() {
  return {
      {L"&Open...", control('O'), [](Window& w) { w.ask_and_open(); }},
      {L"&Save as...", control('S'), [](Window& w) { w.save_as(); }, has_picture},
      {L"&Load again", {kF5Key}, [](Window& w) { w.load_again(); }, has_file},
      line(),
      {L"Next &file of the folder", control(kRightKey), [](Window& w) { w.open_neighbour(1); }, has_file},
      {L"File &before", control(kLeftKey), [](Window& w) { w.open_neighbour(-1); }, has_file},
      {L"&Next page", {kPageDownKey}, [](Window& w) { w.go_to_page(w.document().page() + 1); }, has_pages},
      {L"&Page before", {kPageUpKey}, [](Window& w) { w.go_to_page(w.document().page() - 1); }, has_pages},
      line(),
      {L"Prin&t...", control('P'), [](Window& w) { w.print(); }, has_picture},
      {L"Print pre&view...", {'P', true, true}, [](Window& w) { w.preview(); }, has_picture},
      {L"Printer set&up...", {'U', true, true}, [](Window& w) { w.set_up_printer(); }},
      line(),
      {L"E&xit", control('Q'), [](Window& w) { w.close(); }},
  };
}

std::vector<Command> edit_commands() {
  return {
      {L"&Undo", control('Z'), [](Window& w) { w.undo(); }, [](const Window& w) { return w.document().can_undo(); }},
      line(),
      {L"&Copy", control('C'), [](Window& w) { w.copy(); }, has_picture},
      {L"&Paste", control('V'), [](Window& w) { w.paste(); }, [](const Window&) { return can_paste(); }},
  };
}

Command view_row(const wchar_t* name, Key key, void (*action)(View&)) {
  return {name, key, [action](Window& w) { w.canvas().change(action); }, has_picture};
}

Command sizing_row(const wchar_t* name, Key key, Sizing sizing) {
  return {name, key, [sizing](Window& w) { w.canvas().change([sizing](View& view) { view.set_sizing(sizing); }); },
          has_picture, [sizing](const Window& w) { return w.canvas().view().sizing() == sizing; }};
}

Command option_row(const wchar_t* name, Key key, Option option) {
  return {name, key, [option](Window& w) { w.canvas().change([option](View& view) { view.toggle(option); }); }, has_picture,
          [option](const Window& w) { return w.canvas().view().has(option); }};
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
      {L"Magnifying &lens", {kSpaceKey}, [](Window& w) { w.canvas().toggle_lens(); }, has_picture, has_lens},
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

std::vector<Command> help_commands() {
  return {
      {L"&Mouse and keys", {kF1Key}, [](Window& w) { w.explain_mouse(); }},
      {L"&About Vorel Viewer", {}, [](Window& w) { w.tell_about(); }},
  };
}

constexpr struct {
  const wchar_t* name;
  std::vector<Command> (*commands)();
} kMenus[] = {{L"&File", file_commands},
              {L"&Edit", edit_commands},
              {L"&View", view_commands},
              {L"&Process", process_commands},
              {L"&Help", help_commands}};

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

std::wstring menu_text(const Command& command) {
  return command.key.code == 0 ? command.name : command.name + L"\t" + key_text(command.key);
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

static_assert(kSpaceKey == VK_SPACE && kPageUpKey == VK_PRIOR && kPageDownKey == VK_NEXT && kLeftKey == VK_LEFT &&
              kRightKey == VK_RIGHT && kNumpadPlusKey == VK_ADD && kNumpadMinusKey == VK_SUBTRACT && kF1Key == VK_F1 &&
              kF5Key == VK_F5 && kPlusKey == VK_OEM_PLUS && kMinusKey == VK_OEM_MINUS);

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
    AppendMenuW(menus.menu_of(command), kind, id++, menu_text(command).c_str());
  }
  return menus.bar();
}

// The space bar is left out: the canvas wants to know how long it is held.
HACCEL create_accelerators() {
  std::vector<ACCEL> keys;
  WORD id = kFirstCommandId;
  for (const Command& command : commands()) {
    if (command.key.code != 0 && command.key.code != kSpaceKey) keys.push_back(accelerator_for(command.key, id));
    for (const auto& other : kOtherKeys)
      if (other.as == command.key) keys.push_back(accelerator_for(other.key, id));
    ++id;
  }
  return CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
}

}  // namespace vorel::viewer
