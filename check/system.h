// The system under the library: counts what a process holds, and makes chosen calls of the library fail.
//
// On Linux the loader binds calls to this program's functions first, then to the C library's and the library's own. On Windows the
// import tables of the library and of each loaded codec module point to thunks.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "check/stage.h"

namespace check {

// Memory, locks and GDI objects; files: opening, reading, writing, positioning; memory for operator new alone, which throws.
enum SystemPart : unsigned { kMemoryPart = 1, kFilePart = 2, kNewPart = 4 };

// Counts the system calls of the chosen part while an export runs, and makes one of them fail, or that one and all later ones.
class FailingSystem : public Probe {
 public:
  explicit FailingSystem(unsigned parts) : parts_(parts) {}

  // The next call of an export meets the failure; 0: none.
  void fail(long at, bool lasts) { at_ = at, lasts_ = lasts, action_ = nullptr; }
  // Something else happens before that call instead.
  void act(long at, std::function<void()> action) { at_ = at, lasts_ = false, action_ = std::move(action); }
  std::string failed() const;  // the function that failed first

  void begin() override;
  void end() override;

 private:
  unsigned parts_;
  long at_ = 0;
  bool lasts_ = false;
  std::function<void()> action_;
};

struct Holdings {
  long blocks = 0, objects = 0, windows = 0, files = 0;

  static Holdings now();
  std::string more_than(const Holdings& before) const;  // lists what has grown
};

// Bytes of memory that the process occupies.
long resident_bytes();

// ---- Global memory whose blocks end at a page without access, for the whole run and for the library too. Larger requests than
// `most` bytes fail.
void guard_blocks(size_t most);
HGLOBAL new_guarded(const void* bytes, size_t size);
void* lock_guarded(HGLOBAL block);
void unlock_guarded(HGLOBAL block);
void free_guarded(HGLOBAL block);

// Before threads are compared: as many device contexts of the screen as may ever be in use at one time. Wine keeps them.
void use_device_contexts();

// Before memory fails: on Linux the JPEG library stays loaded, with its thread-local data.
void keep_jpeg_loaded();

// Patches the import table. Called once, first.
void set_up_system();

}  // namespace check
