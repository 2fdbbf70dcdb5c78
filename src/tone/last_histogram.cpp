#include "tone/last_histogram.h"

#include "frame/thread_context.h"

namespace vorel {
namespace {

const PerThread<LastHistogram> last;

}  // namespace

LastHistogram& last_histogram() { return *last; }

}  // namespace vorel
