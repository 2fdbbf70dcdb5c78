// The system's dialogs for files.
#pragma once

#include <filesystem>
#include <optional>

#include "core/file_formats.h"
#include "viewer/system.h"

namespace vorel::viewer {

std::optional<std::filesystem::path> ask_for_file_to_open(HWND owner);

struct SavingChoice {
  std::filesystem::path path;
  const FileFormat* format;
};

// The format is the one that the name's ending says, or else the chosen one.
//   name  that is offered
std::optional<SavingChoice> ask_for_file_to_save(HWND owner, const std::filesystem::path& name);

// Files of steps for the command line tool.
std::optional<std::filesystem::path> ask_for_steps_to_open(HWND owner);
std::optional<std::filesystem::path> ask_for_steps_to_save(HWND owner);

// By the ending of its name; null for what is no picture's.
const FileFormat* format_by_name(const std::filesystem::path& path);

}  // namespace vorel::viewer
