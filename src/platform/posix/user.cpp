#include "platform/user.h"

#include <cstdio>

namespace vorel {

void* show_wait_cursor() { return nullptr; }

void show_cursor(void*) {}

void show_error_message(const char* text, const char* title) { std::fprintf(stderr, "%s: %s\n", title, text); }

void show_task_message(const char* text, const char* title) { show_error_message(text, title); }

}  // namespace vorel
