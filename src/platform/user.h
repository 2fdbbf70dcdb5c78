// What the person at the screen sees of a running operation.
#pragma once

namespace vorel {

// Shows the wait cursor for a scope, then the previous cursor again. Where there is no cursor it does nothing.
class [[nodiscard]] WaitCursor {
 public:
  WaitCursor();
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;
  ~WaitCursor();

 private:
  void* previous_;
};

// Shows a message and waits until it is read; where there are no message boxes, writes it on the standard error stream.
void show_error_message(const char* text, const char* title);

}  // namespace vorel
