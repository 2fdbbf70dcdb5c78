#include "platform/windows/instance.h"

namespace vorel {
namespace {

HINSTANCE kept = nullptr;

}  // namespace

HINSTANCE module_instance() { return kept; }

void set_module_instance(HINSTANCE instance) { kept = instance; }

}  // namespace vorel
