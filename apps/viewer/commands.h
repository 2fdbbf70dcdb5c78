// The commands of the viewer: one table for menu, keys and what they do.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "viewer/logic/key.h"
#include "viewer/viewer_window.h"

namespace vorel::viewer {

struct Command {
  std::wstring name = {};  // empty for a line between others
  Key key = {};
  std::function<void(ViewerWindow&)> run = {};
  std::function<bool(const ViewerWindow&)> is_enabled = {};  // always, if there is none
  std::function<bool(const ViewerWindow&)> is_checked = {};  // never, if there is none
  std::wstring menu = {};
  std::wstring submenu = {};  // none, if it is empty
  std::function<std::wstring(const ViewerWindow&)> changing_name = {};
  ViewerWindow::Telling telling = ViewerWindow::Telling::kStatus;  // of why it is not done
};

std::span<const Command> commands();

// Their identifiers count on from this one.
inline constexpr WORD kFirstCommandId = 1000;
const Command* command_of(WORD id);  // null for none

HMENU create_menu();
HACCEL create_accelerators();

// For a menu that opens: names, ticks, and what is available.
void update_menu(HMENU menu, const ViewerWindow& window);

// All keys, menu by menu, and what the mouse does.
std::wstring keys_text();

}  // namespace vorel::viewer
