#include "platform/file.h"

namespace vorel {

int64_t FileRef::size() const {
  const int64_t noted = position();
  const int64_t end = seek(0, SeekFrom::kEnd);
  seek(noted, SeekFrom::kStart);
  return end;
}

}  // namespace vorel
