// libtiff over bytes of ours: silent, strict about what is lost, and with limits on what a file can make it allocate.
#pragma once

#include <memory>
#include <tiffio.h>

#include "tiff/bytes.h"

namespace codec {

class TiffHandle {
 public:
  // `mode` is libtiff's. Throws Failure.
  TiffHandle(Bytes& bytes, const char* mode);

  TIFF* get() const { return tiff_.get(); }

  // A tag's value, or libtiff's default for it, or `otherwise`.
  template <class Value>
  Value tag(uint32_t tag, Value otherwise) const {
    Value value{};
    return TIFFGetFieldDefaulted(get(), tag, &value) != 0 ? value : otherwise;
  }

  // Throws Failure unless the library succeeded, and without loss.
  void check(bool succeeded) const {
    if (!succeeded || client_->has_loss) fail(client_->bytes.failed() ? IMG_E_FILE_IO : IMG_E_FORMAT);
  }

  struct Client {
    Bytes& bytes;
    uint64_t position = 0;
    bool has_loss = false;
  };

 private:
  struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };

  std::unique_ptr<Client> client_;  // outlives the library's handle, which points to it
  std::unique_ptr<TIFF, Close> tiff_;
};

}  // namespace codec
