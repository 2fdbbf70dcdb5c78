// Sources and targets of TIFF files. C code calls these functions, so they do not throw.
#pragma once

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "common/entry.h"
#include "common/file.h"

namespace codec {

class Bytes {
 public:
  Bytes() = default;
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;
  virtual ~Bytes() = default;

  // Return how many bytes were read or written.
  virtual size_t read(uint64_t offset, std::span<uint8_t> bytes) noexcept = 0;
  virtual size_t write(uint64_t /*offset*/, std::span<const uint8_t> /*bytes*/) noexcept { return 0; }
  virtual uint64_t size() const noexcept = 0;

  // Whether the failure is one of the system, not of the content.
  virtual bool failed() const noexcept { return false; }
};

class FileBytes : public Bytes {
 public:
  explicit FileBytes(const InputFile& file) : file_(file) {}

  size_t read(uint64_t offset, std::span<uint8_t> bytes) noexcept override {
    return offset < size() ? read_at(file_.get(), offset, bytes) : 0;
  }
  uint64_t size() const noexcept override { return file_.size(); }
  bool failed() const noexcept override { return std::ferror(file_.get()) != 0; }

 private:
  const InputFile& file_;
};

class MemoryBytes : public Bytes {
 public:
  explicit MemoryBytes(std::vector<uint8_t> content = {}) : content_(std::move(content)) {}

  const std::vector<uint8_t>& content() const { return content_; }

  size_t read(uint64_t offset, std::span<uint8_t> bytes) noexcept override {
    if (offset >= content_.size()) return 0;
    const size_t count = std::min(bytes.size(), content_.size() - static_cast<size_t>(offset));
    std::memcpy(bytes.data(), content_.data() + offset, count);
    return count;
  }

  size_t write(uint64_t offset, std::span<const uint8_t> bytes) noexcept override {
    try {
      if (offset + bytes.size() > content_.size()) content_.resize(static_cast<size_t>(offset + bytes.size()));
    } catch (const std::exception&) {
      return 0;
    }
    std::ranges::copy(bytes, content_.begin() + static_cast<std::ptrdiff_t>(offset));
    return bytes.size();
  }

  uint64_t size() const noexcept override { return content_.size(); }

 private:
  std::vector<uint8_t> content_;
};

}  // namespace codec
