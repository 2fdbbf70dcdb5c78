// Sanitizers watch memory themselves, so no call fails and nothing is counted.
#include "check/system.h"

namespace check {

void set_up_system() {}
void use_device_contexts() {}
Holdings Holdings::now() { return {}; }
long resident_bytes() { return 0; }

}  // namespace check
