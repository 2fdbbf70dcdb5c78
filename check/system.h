// The system under the library: counts what a process holds, and makes chosen calls of the library fail.
//
// On Linux this program's functions stand before those of the C library and of the library itself, as the loader binds them. On
// Windows the import tables of the library and of the codec modules, as they are loaded, lead through thunks.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "check/stage.h"

namespace check {

// Memory, locks and GDI objects; files: opening, reading, writing, positioning; memory for operator new alone, which throws.
enum SystemPart : unsigned { kMemoryPart = 1, kFilePart = 2, kNewPart = 4 };

// While a call of an export runs, its calls of the chosen part of the system are counted, and one of them fails, or it and all
// later ones.
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
  std::string more_than(const Holdings& before) const;  // what there is more of
};

// Bytes of memory that the process occupies.
long resident_bytes();

// ---- Blocks of global memory that end at a page without access, for a whole run: the library's too. Requests of more than so many
// bytes fail.
void guard_blocks(size_t most);
HGLOBAL new_guarded(const void* bytes, size_t size);
void* lock_guarded(HGLOBAL block);
void unlock_guarded(HGLOBAL block);
void free_guarded(HGLOBAL block);

// Before memory fails: on Linux the JPEG library stays loaded, with its thread-local data.
void keep_jpeg_loaded();

// Patches what is to be patched; once, before anything else.
void set_up_system();

}  // namespace check
