// The few things that each system does its own way, besides those of common/platform.h.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include "common/picture.h"

namespace vorel::cli {

// Binary standard streams, no message box or signal in place of an error code, and no scratch file left behind by Ctrl+C.
// Called once, by main().
void prepare_process();
bool is_prepared();  // false in programs that have this code and a main() of their own

// Ends the program as a signal does, if this is the exit code that shells give for it: a shell that sees Ctrl+C end a
// program ends its loop, too.
void end_if_stopped(int code);

enum class Readers { kOwner, kAsUsual };

// Makes an empty file where there is nothing yet.
std::error_code create_new_file(const std::filesystem::path& path, Readers readers);

// Marks a file to be removed when a signal, or closing the console, ends the program; and takes the mark off.
void remove_if_stopped(const std::filesystem::path& path);
void forget_if_stopped(const std::filesystem::path& path);

// Renames a file, but never over another one.
std::error_code move_to_free_name(const std::filesystem::path& from, const std::filesystem::path& to);

// Whether somebody watches the standard error stream.
bool standard_error_is_terminal();

// A text file drawn as a bitmap, black on white. Throws Problem if that fails.
programs::Picture drawn_text(const std::string& path, bool is_oem);

}  // namespace vorel::cli
