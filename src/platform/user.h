// The wait cursor and message boxes.
#pragma once

namespace vorel {

// Shows the wait cursor and returns the previous one. Without a screen these do nothing.
void* show_wait_cursor();
void show_cursor(void* cursor);

// The wait cursor for a scope.
class [[nodiscard]] WaitCursor {
 public:
  WaitCursor() : previous_(show_wait_cursor()) {}
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;
  ~WaitCursor() { show_cursor(previous_); }

 private:
  void* previous_;
};

// Show a message box and wait until it is closed; on Linux write to the standard error stream. A task message disables all
// other windows of the thread meanwhile.
void show_error_message(const char* text, const char* title);
void show_task_message(const char* text, const char* title);

}  // namespace vorel
