#include "viewer/commands.h"

#include <iterator>
#include <map>
#include <vector>

#include "viewer/clipboard.h"
#include "viewer/viewer_window.h"

namespace vorel::viewer {
namespace {

using Window = ViewerWindow;

bool has_picture(const Window& window) { return window.document().is_open(); }
bool has_file(const Window& window) { return !window.document().path().empty(); }
bool has_pages(const Window& window) { return window.document().pages() > 1; }

auto change_view(void (*action)(View&)) {
  return [action](Window& window) { window.canvas().change(action); };
}

template <Sizing sizing>
bool is_sized(const Window& window) {
  return has_picture(window) && window.canvas().view().sizing() == sizing;
}

template <Option option>
void toggle(View& view) {
  view.toggle(option);
}

template <Option option>
bool is_on(const Window& window) {
  return window.canvas().view().has(option);
}

constexpr const wchar_t* kFile = L"&File";
constexpr const wchar_t* kEdit = L"&Edit";
constexpr const wchar_t* kView = L"&View";
constexpr const wchar_t* kProcess = L"&Process";
constexpr const wchar_t* kHelp = L"&Help";

constexpr Key control(int code) { return {code, true, false}; }

Command line(const wchar_t* menu) { return {.menu = menu}; }

std::vector<Command> file_commands() {
  return {
      {kFile, L"&Open...", control('O'), {}, [](Window& w) { w.ask_and_open(); }},
      {kFile, L"&Save as...", control('S'), {}, [](Window& w) { w.save_as(); }, has_picture},
      {kFile, L"&Load again", {kF5Key}, {}, [](Window& w) { w.load_again(); }, has_file},
      line(kFile),
      {kFile, L"Next &file of the folder", control(kRightKey), {}, [](Window& w) { w.open_neighbour(1); }, has_file},
      {kFile, L"File &before", control(kLeftKey), {}, [](Window& w) { w.open_neighbour(-1); }, has_file},
      {kFile, L"&Next page", {kPageDownKey}, {}, [](Window& w) { w.go_to_page(w.document().page() + 1); }, has_pages},
      {kFile, L"&Page before", {kPageUpKey}, {}, [](Window& w) { w.go_to_page(w.document().page() - 1); }, has_pages},
      line(kFile),
      {kFile, L"E&xit", control('Q'), {}, [](Window& w) { w.close(); }},
  };
}

std::vector<Command> edit_commands() {
  return {
      {kEdit,
       L"&Undo",
       control('Z'),
       {},
       [](Window& w) { w.undo(); },
       [](const Window& w) { return w.document().can_undo(); }},
      line(kEdit),
      {kEdit, L"&Copy", control('C'), {}, [](Window& w) { w.copy(); }, has_picture},
      {kEdit, L"&Paste", control('V'), {}, [](Window& w) { w.paste(); }, [](const Window&) { return can_paste(); }},
  };
}

std::vector<Command> view_commands() {
  return {
      {kView,
       L"Zoom &in",
       {kPlusKey},
       {kNumpadPlusKey},
       change_view([](View& v) { v.zoom_by_step(View::Step::kLarger); }),
       has_picture},
      {kView,
       L"Zoom &out",
       {kMinusKey},
       {kNumpadMinusKey},
       change_view([](View& v) { v.zoom_by_step(View::Step::kSmaller); }),
       has_picture},
      {kView, L"&100 %", {'1'}, {}, change_view([](View& v) { v.zoom_to_actual_size(); }), has_picture},
      line(kView),
      {kView,
       L"&Fit the window",
       {'F'},
       {},
       change_view([](View& v) { v.set_sizing(Sizing::kFit); }),
       has_picture,
       is_sized<Sizing::kFit>},
      {kView,
       L"Fit the &width",
       {'W'},
       {},
       change_view([](View& v) { v.set_sizing(Sizing::kFitWidth); }),
       has_picture,
       is_sized<Sizing::kFitWidth>},
      {kView,
       L"&Stretch",
       {'T'},
       {},
       change_view([](View& v) { v.set_sizing(Sizing::kStretch); }),
       has_picture,
       is_sized<Sizing::kStretch>},
      line(kView),
      {kView, L"&Centred", {'E'}, {}, change_view(toggle<IMG_DISPLAY_CENTRE>), has_picture, is_on<IMG_DISPLAY_CENTRE>},
      {kView,
       L"Size by &resolution",
       {'Z'},
       {},
       change_view(toggle<IMG_DISPLAY_RESOLUTION>),
       has_picture,
       is_on<IMG_DISPLAY_RESOLUTION>},
      {kView, L"In&verted", {'I'}, {}, change_view(toggle<IMG_DISPLAY_INVERTED>), has_picture, is_on<IMG_DISPLAY_INVERTED>},
      line(kView),
      {kView,
       L"Magnifying &lens",
       {kSpaceKey},
       {},
       [](Window& w) { w.canvas().toggle_lens(); },
       has_picture,
       [](const Window& w) { return w.canvas().has_lens(); }},
  };
}

std::vector<Command> process_commands() {
  std::vector<Command> rows;
  for (const Operation& operation : operations()) {
    const size_t number = rows.size();
    rows.push_back({std::wstring(kProcess) + L"|" + operation.menu,
                    operation.name,
                    operation.key,
                    {},
                    [number](Window& w) { w.process(number); },
                    has_picture});
  }
  return rows;
}

std::vector<Command> help_commands() {
  return {
      {kHelp, L"&Mouse and keys", {kF1Key}, {}, [](Window& w) { w.explain_mouse(); }},
      {kHelp, L"&About Vorel Viewer", {}, {}, [](Window& w) { w.tell_about(); }},
  };
}

std::vector<Command> all_commands() {
  std::vector<Command> all;
  for (const auto& menu : {file_commands, edit_commands, view_commands, process_commands, help_commands}) {
    std::ranges::move(menu(), std::back_inserter(all));
  }
  return all;
}

std::wstring menu_text(const Command& command) {
  return command.key.code == 0 ? command.name : command.name + L"\t" + key_text(command.key);
}

// Finds menus by their paths, and makes those that are missing.
class MenuBuilder {
 public:
  explicit MenuBuilder(HMENU bar) { menus_[L""] = bar; }

  HMENU at(const std::wstring& path) {
    const auto found = menus_.find(path);
    if (found != menus_.end()) return found->second;
    const size_t bar = path.rfind(L'|');
    const std::wstring parent = bar == std::wstring::npos ? L"" : path.substr(0, bar);
    const std::wstring name = bar == std::wstring::npos ? path : path.substr(bar + 1);
    const HMENU menu = CreatePopupMenu();
    AppendMenuW(at(parent), MF_POPUP, reinterpret_cast<UINT_PTR>(menu), name.c_str());
    return menus_[path] = menu;
  }

 private:
  std::map<std::wstring, HMENU> menus_;
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
  const HMENU bar = CreateMenu();
  MenuBuilder menus(bar);
  WORD id = kFirstCommandId;
  for (const Command& command : commands()) {
    AppendMenuW(menus.at(command.menu), command.name.empty() ? MF_SEPARATOR : MF_STRING, id, menu_text(command).c_str());
    ++id;
  }
  return bar;
}

// The space bar is left out: the canvas wants to know how long it is held.
HACCEL create_accelerators() {
  std::vector<ACCEL> keys;
  WORD id = kFirstCommandId;
  for (const Command& command : commands()) {
    for (const Key& key : {command.key, command.other_key})
      if (key.code != 0 && key.code != kSpaceKey) keys.push_back(accelerator_for(key, id));
    ++id;
  }
  return CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
}

}  // namespace vorel::viewer
