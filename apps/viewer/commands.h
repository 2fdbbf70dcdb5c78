// The commands of the viewer: one table for menu, keys and what they do.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "viewer/logic/key.h"
#include "viewer/system.h"

namespace vorel::viewer {

class ViewerWindow;

struct Command {
  std::wstring name = {};  // empty for a line between others
  Key key = {};
  std::function<void(ViewerWindow&)> run = {};
  std::function<bool(const ViewerWindow&)> is_enabled = {};  // always, if there is none
  std::function<bool(const ViewerWindow&)> is_checked = {};  // never, if there is none
  std::wstring menu = {};
  std::wstring submenu = {};  // none, if it is empty
};

std::span<const Command> commands();

// Their identifiers count on from this one.
inline constexpr WORD kFirstCommandId = 1000;
const Command* command_of(WORD id);  // null for none

HMENU create_menu();
HACCEL create_accelerators();

}  // namespace vorel::viewer
