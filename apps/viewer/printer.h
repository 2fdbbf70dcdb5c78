// The system's printers, and how one of them is set up.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "viewer/logic/print_layout.h"
#include "viewer/system.h"

namespace vorel::viewer {

struct DeleteContext {
  void operator()(HDC dc) const { DeleteDC(dc); }
};
using OwnedDc = std::unique_ptr<std::remove_pointer_t<HDC>, DeleteContext>;

class Printer {
 public:
  Printer() = default;  // none
  explicit Printer(std::wstring name) : name_(std::move(name)) {}

  // The system's default printer or, if there is none, the first of all. Throws Failure where no printer is.
  static Printer usual();

  const std::wstring& name() const { return name_; }

  // Shows the printer's own dialog. What is chosen there holds for what the others return.
  void set_up(HWND owner);

  // Throw Failure where the printer cannot be reached.
  OwnedDc job_dc() const;
  Sheet sheet() const;

 private:
  OwnedDc dc(decltype(&CreateDCW) create) const;
  const DEVMODEW* settings() const;

  std::wstring name_;
  std::vector<uint8_t> settings_;  // a DEVMODEW with what belongs to its driver; empty for the printer's usual ones
};

}  // namespace vorel::viewer
