#include "platform/user.h"

#include <cstdio>

namespace vorel {

WaitCursor::WaitCursor() : previous_(nullptr) {}

WaitCursor::~WaitCursor() = default;

void show_error_message(const char* text, const char* title) { std::fprintf(stderr, "%s: %s\n", title, text); }

}  // namespace vorel
