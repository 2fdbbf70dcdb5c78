// A call of the library with drawn parameters, and its line of output.
#pragma once

#include <array>
#include <concepts>
#include <cstdio>
#include <filesystem>
#include <span>
#include <string_view>
#include <utility>

#include "random_picture.h"
#include "support/module.h"

// Where global memory comes from: on Linux the library's own.
#ifdef _WIN32
inline std::filesystem::path memory_module(const std::filesystem::path&) { return "KERNEL32.DLL"; }
#else
inline std::filesystem::path memory_module(const std::filesystem::path& library) { return library; }
#endif

#define ENTRY(module, name) decltype(&::name) name = module.entry<decltype(&::name)>(#name)

struct Library {
  test::Module module, memory;

  explicit Library(const std::filesystem::path& path)
      : module(test::Module::Path{path}), memory(test::Module::Path{memory_module(path)}) {}

  ENTRY(memory, GlobalAlloc);
  ENTRY(memory, GlobalFree);
  ENTRY(memory, GlobalLock);
  ENTRY(memory, GlobalSize);
  ENTRY(memory, GlobalUnlock);
  ENTRY(module, ImgError);
  ENTRY(module, SetImgError);
};

#undef ENTRY

// Where lines go: to a text of the program's, or else to standard output.
inline std::string* told_text = nullptr;

template <class... Values>
void tell(fmt::format_string<Values...> format, Values&&... values) {
  if (told_text != nullptr)
    fmt::format_to(std::back_inserter(*told_text), format, std::forward<Values>(values)...);
  else
    fmt::print(format, std::forward<Values>(values)...);
}

inline uint64_t hash_of(std::span<const uint8_t> bytes) {
  uint64_t hash = 0xCBF29CE484222325;
  for (const uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3;
  return hash;
}

inline constexpr int kUntouched = 0x7777;  // Result variables before the call; printed as "-".
inline constexpr int kCodeBefore = 30;     // The thread's error code before the call.
inline constexpr std::array kUntouchedCorners{kUntouched, kUntouched, kUntouched, kUntouched,
                                              kUntouched, kUntouched, kUntouched, kUntouched};

// One call and its line of output. Parameters are printed as they are drawn, results as they arrive.
class Call {
 public:
  Random random;

  Call(const Library& library, std::string_view name, Random its_random)
      : random(its_random), library_(library), name_(name) {}
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call() {
    for (const Source& source : sources_) library_.GlobalFree(source.block);
  }

  // The export that is called.
  template <class Function>
  Function entry() const {
    return library_.module.entry<Function>(name_.c_str());
  }

  // A new picture, rarely a null or dead handle instead. It is freed with the call.
  HGLOBAL picture(std::initializer_list<int> depths) {
    const RandomPicture drawn = random_picture(random, depths);
    header_ = drawn.header;
    const int kind = random.between(0, 299);
    if (kind == 0) return tell(" [null]"), nullptr;
    HGLOBAL handle = block(drawn.bytes, drawn.name);
    if (kind == 1) tell(" [freed]"), sources_.back().is_dead = true;
    return handle;
  }
  // The last picture's.
  const BITMAPINFOHEADER& header() const { return header_; }

  HGLOBAL block(const Bytes& bytes, std::string_view name) {
    tell(" [{}]", name);
    HGLOBAL handle = library_.GlobalAlloc(GHND, bytes.size());
    if (void* data = library_.GlobalLock(handle)) std::memcpy(data, bytes.data(), bytes.size());
    library_.GlobalUnlock(handle);
    sources_.push_back({handle, bytes});
    return handle;
  }

  int told(int value) { return tell(" {}", value), value; }
  int number(int low, int high) { return told(random.number(low, high)); }

  // Flushes, so that a call that ends the program can be identified.
  void begin() {
    tell(" ->");
    std::fflush(stdout);
    for (Source& source : sources_)  // Last, since a new block could take over the handle.
      if (source.is_dead) library_.GlobalFree(std::exchange(source.block, nullptr));
    library_.SetImgError(kCodeBefore);
  }

  void show(HGLOBAL handle) { handle == nullptr ? tell(" null") : show_bytes(content(handle)); }
  // Prints a result block and frees it.
  void result(HGLOBAL handle) {
    if (is_source(handle)) return tell(" in place");
    show(handle);
    library_.GlobalFree(handle);
  }
  template <std::integral Number>
  void result(Number value) {
    value == kUntouched ? tell(" -") : tell(" {}", value);
  }
  template <class Number, size_t kCount>
  void results(const std::array<Number, kCount>& values) {
    for (const Number value : values) result(value);
  }

  // Prints the thread's code, and whether the source blocks changed or stayed locked.
  void end() {
    tell(" code {}", library_.ImgError());
    for (const Source& source : sources_)
      if (source.block != nullptr) show_source(source);
    tell("\n");
  }

 private:
  struct Source {
    HGLOBAL block;
    Bytes bytes;
    bool is_dead = false;
  };

  bool is_source(HGLOBAL handle) const {
    return handle != nullptr && std::any_of(sources_.begin(), sources_.end(), [=](auto& s) { return s.block == handle; });
  }
  Bytes content(HGLOBAL handle) const {
    const auto* data = static_cast<const uint8_t*>(library_.GlobalLock(handle));
    if (data == nullptr) return {};
    Bytes bytes(data, data + library_.GlobalSize(handle));
    library_.GlobalUnlock(handle);
    return bytes;
  }
  static void show_bytes(const Bytes& bytes) { tell(" {}:{:016x}", bytes.size(), hash_of(bytes)); }
  void show_source(const Source& source) const {
    library_.GlobalLock(source.block);
    int locks_left = 0;
    while (library_.GlobalUnlock(source.block)) ++locks_left;
    if (locks_left > 0) tell(" locks {}", locks_left);
    const Bytes now = content(source.block);
    now == source.bytes ? tell(" same") : show_bytes(now);
  }

  const Library& library_;
  std::string name_;
  std::vector<Source> sources_;
  BITMAPINFOHEADER header_{};
};
