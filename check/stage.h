// The surroundings of a call: its inputs, the call itself, and the release of its results.
//
// Each input is made on first use and kept for the stage's life. Only the export runs between the probe's two notices, so a probe
// affects nothing else.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include <vorel32.h>

#include "check/outcome.h"
#include "support/dib.h"

namespace check {

class Probe {
 public:
  virtual ~Probe() = default;
  virtual void begin() {}
  virtual void end() {}
#if defined(_WIN32) && defined(__i386__)
  // Calls a function with its arguments as words on the stack; false: the stage calls it itself.
  virtual bool invoke(void*, const uint32_t*, size_t, uint32_t&) { return false; }
#endif
};

struct DeviceInputs;

class Stage {
 public:
  Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  ~Stage();

  // ---- inputs: they belong to the stage, and calls leave them unchanged unless the name says otherwise
  HGLOBAL dib(int depth) {
    return kept("dib" + std::to_string(depth), [&] { return test::noise(30, 20, depth); });
  }
  HGLOBAL large_dib() {
    return kept("large", [] { return test::noise(201, 163, 24); });
  }
  HGLOBAL gray_dib();
  HGLOBAL compressed_dib();
  HGLOBAL table();           // 256 bytes
  HGLOBAL histogram();       // of any content: each call counts anew
  HGLOBAL fresh(int depth);  // a copy for calls that change or consume it
  std::string path(const std::string& name) const { return folder_.path(name); }
  // A file that is written on first use. Endings select the format: "a.bmp", "a.tif", "a.fax" (a page set) and so on.
  const char* file(const std::string& name);
  const char* missing() { return missing_.c_str(); }
  const char* target(const std::string& name);  // a path for writing; no such file exists before the call
  const char* in_no_folder() { return in_no_folder_.c_str(); }
#ifdef _WIN32
  DeviceInputs& device();
#endif

  // ---- the call
  template <class Result, class... Parameters, class... Arguments>
  Result call(Result(VORELCALL* function)(Parameters...), Arguments... arguments) {
    SetImgError(kCodeBefore);
    const auto at_end = [this] {
      if (probe != nullptr) probe->end();
      outcome_.code = ImgError();
    };
    if (probe != nullptr) probe->begin();
    if constexpr (std::is_void_v<Result>) {
      invoke<void>(function, static_cast<Parameters>(arguments)...);
      at_end();
    } else {
      const Result result = invoke<Result>(function, static_cast<Parameters>(arguments)...);
      at_end();
      return result;
    }
  }

  // ---- its results
  void take(HGLOBAL block);  // noted and freed
  template <class Number>
  requires std::integral<Number>
  void take(Number value) {
    outcome_.gave = value != 0;
    outcome_.add_value(static_cast<int64_t>(value));
  }
#ifdef _WIN32
  void take(HBITMAP bitmap);
  void take(HPALETTE palette);
#endif
  void status(int value) { outcome_.status = value; }
  void note(const void* bytes, size_t count) { outcome_.add({static_cast<const uint8_t*>(bytes), count}); }
  void note_block(HGLOBAL block);
  void note_file(const std::string& path);
  void note_file_there(
      const std::string& path);  // without its content, which has addresses, dates or measures of the screen in it

  // Runs a row's call and returns what it gave.
  template <class Row>
  Outcome run(const Row& row) {
    outcome_ = Outcome{};
    row.call(*this);
    return outcome_;
  }

  // Names inputs that have changed or are locked; releases the locks.
  std::string changed_inputs(bool may_be_locked = false);

  Probe* probe = nullptr;

 private:
  struct Kept {
    test::Block block;
    test::Bytes bytes;
  };
  template <class Make>
  HGLOBAL kept(const std::string& name, Make make) {
    const auto found = kept_.find(name);
    if (found != kept_.end()) return found->second.block.get();
    Kept made;
    made.bytes = make();
    made.block = test::block_of(made.bytes);
    return kept_.emplace(name, std::move(made)).first->second.block.get();
  }

  template <class Result, class Function, class... Parameters>
  Result invoke(Function function, Parameters... parameters) {
#if defined(_WIN32) && defined(__i386__)
    if (probe != nullptr) {
      const std::array<uint32_t, sizeof...(Parameters)> words = {word_of(parameters)...};
      uint32_t result = 0;
      if (probe->invoke(reinterpret_cast<void*>(function), words.data(), words.size(), result)) {
        if constexpr (std::is_void_v<Result>)
          return;
        else if constexpr (std::is_pointer_v<Result>)
          return reinterpret_cast<Result>(result);
        else
          return static_cast<Result>(result);
      }
    }
#endif
    return function(parameters...);
  }
#if defined(_WIN32) && defined(__i386__)
  template <class Parameter>
  static uint32_t word_of(Parameter parameter) {
    if constexpr (std::is_pointer_v<Parameter>)
      return reinterpret_cast<uint32_t>(parameter);
    else
      return static_cast<uint32_t>(parameter);
  }
#endif

  const test::TempFolder folder_;
  const std::string missing_ = folder_.path("missing.bmp"), in_no_folder_ = folder_.path("no-folder/made.bmp");
  std::map<std::string, Kept> kept_;
  std::map<std::string, std::string> files_;
  Outcome outcome_;
#ifdef _WIN32
  std::unique_ptr<DeviceInputs> device_;
#endif
};

}  // namespace check
