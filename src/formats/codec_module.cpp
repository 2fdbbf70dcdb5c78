#include "formats/codec_module.h"

#include "platform/user.h"

namespace vorel::formats {
namespace {

// The two titles differ; programs that watch for these boxes know both.
constexpr const char* kModuleTitle = "VOREL DLL";
constexpr const char* kEntryTitle = "VOREL-DLL";

std::string quoted(const std::string& name) { return "'" + name + "'"; }

}  // namespace

CodecEntry::CodecEntry(const EntryPoint& entry) : file_name_(module_file_name(entry.module)), module_(file_name_.c_str()) {
  if (!module_.is_loaded()) {
    const std::string text = quoted(file_name_) + " module has not found (" + std::to_string(module_.result()) + ")";
    show_task_message(text.c_str(), kModuleTitle);
    return;
  }
  address_ = module_.entry(entry.name);
  if (address_ == nullptr) {
    const std::string text = quoted(entry.name) + " function has not found in " + quoted(file_name_) + " module";
    show_task_message(text.c_str(), kEntryTitle);
  }
}

}  // namespace vorel::formats
