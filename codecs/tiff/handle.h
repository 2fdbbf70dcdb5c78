// libtiff over our own byte sources: silent, strict about losses, and with limits on the memory that a file can make it
// allocate.
#pragma once

#include <csetjmp>
#include <fcntl.h>
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

  // Throws Failure unless the library succeeded without loss.
  void check(bool succeeded) const {
    if (client_->lacks_memory) fail(IMG_E_MEMORY);
    if (!succeeded || client_->has_loss || client_->ran_out_of_runs)
      fail(client_->bytes.failed() ? IMG_E_FILE_IO : IMG_E_FORMAT);
  }

  // Whether a row of one-dimensional Group 3 data had more runs than the library has room for.
  bool ran_out_of_runs() const { return client_->ran_out_of_runs; }

  // Makes calls in which the library would crash when memory is short: calls that set tags, read or write a directory, or decode.
  // It loses its list of tags, or lacks a decoder, and uses them nevertheless. Where it cannot be made to fail by itself, a jump
  // leaves these calls: nothing in `calls` may have a destructor, and a block that only the library knew of may leak. Throws
  // Failure unless `calls` returns true.
  template <class Calls>
  void run(Calls calls) const {
    bool succeeded = false;
    if (!run_guarded(*client_, [&] { succeeded = calls(); })) fail(IMG_E_MEMORY);
    check(succeeded);
  }

  struct Client {
    Bytes& bytes;
    uint64_t position = 0;
    bool has_loss = false;
    bool ran_out_of_runs = false;
    bool lacks_memory = false;
    std::jmp_buf jump_buffer{};
    bool can_jump = false;
    TIFF* left = nullptr;  // the library's handle after a jump
  };

 private:
  // Writes nothing: a finished file is already complete.
  struct Close {
    void operator()(TIFF* tiff) const {
      TIFFSetMode(tiff, O_RDONLY);
      TIFFClose(tiff);
    }
  };

  template <class Calls>
  static bool run_guarded(Client& client, Calls calls) noexcept {
    if (setjmp(client.jump_buffer) != 0) return false;
    client.can_jump = true;
    calls();
    client.can_jump = false;
    return true;
  }

  std::unique_ptr<Client> client_;  // outlives the library's handle, which points to it
  std::unique_ptr<TIFF, Close> tiff_;
};

}  // namespace codec
