// The table of calls: at least one good and one failing call of each export.
#pragma once

#include <array>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "check/stage.h"

namespace check {

enum Trait : unsigned {
  kPlain = 0,
  kOneThread = 1,     // Not with other threads: windows, the lens, printing, the clipboard.
  kSlow = 2,          // Files, dialogs, printing: called less often.
  kMaySucceed = 4,    // Succeeds with another result although a part of the system failed.
  kChanging = 8,      // Another result each time: random names, dates.
  kLeavesLock = 16,   // A failure leaves a lock on the picture, as documented.
  kPartOfFile = 32,   // A failure half-way through a file goes unnoticed, as documented.
  kSystemKeeps = 64,  // Wine keeps a block of each call: the clipboard's metafiles, the tab stops of list boxes.
};

// Codes that a call may leave in the thread or the status variable when the system fails under it.
struct Codes {
  std::array<int, 8> values;
  Codes(std::initializer_list<int> codes) : values{} {
    size_t i = 0;
    for (const int code : codes) values[i++] = code;
    for (; i < values.size(); ++i) values[i] = values[0];
  }
  bool contain(int code) const {
    for (const int value : values)
      if (value == code) return true;
    return false;
  }
};

// A call of an export and its stated outcome.
class Row {
 public:
  Row(const char* its_name, void (*its_call)(Stage&)) : name(its_name), call(its_call) {}

  // ---- the stated outcome; by default a result, an unchanged code and no status variable
  Row fails(int with_code = kCodeBefore, int with_status = kUntouched) const {
    Row row = *this;
    row.gives_ = false, row.code_ = with_code, row.status_ = with_status;
    return row;
  }
  Row with_code(int code) const { return changed(&Row::code_, code); }
  Row with_status(int status) const { return changed(&Row::status_, status); }
  // The codes that the thread and the status variable may have when the system fails under the call.
  Row leaves(Codes codes) const { return changed(&Row::leaves_, codes); }
  Row writes(Codes codes) const { return changed(&Row::writes_, codes); }
  Row is(unsigned traits) const { return changed(&Row::traits_, traits); }

  const char* name;  // the export, with a remark behind a comma where it has several rows
  void (*call)(Stage& stage);

  std::string exported() const { return std::string(name, std::strcspn(name, ",")); }

  bool has(Trait trait) const { return (traits_ & trait) != 0; }
  bool as_stated(const Outcome& outcome) const {
    return outcome.gave == gives_ && outcome.code == code_ && outcome.status == status_;
  }
  // Whether the outcome under a failing system is allowed: zero with a stated code, or the usual result.
  bool is_stated_failure(const Outcome& outcome, const Outcome& usual, bool of_files) const {
    const bool codes_are_stated = leaves_.contain(outcome.code) && writes_.contain(outcome.status);
    const bool codes_are_usual = outcome.code == usual.code && outcome.status == usual.status;
    if (!codes_are_stated && !codes_are_usual) return false;
    if ((gives_ && !outcome.gave && codes_are_stated) || outcome.content == usual.content) return true;
    return has(kMaySucceed) || has(kChanging) || (of_files && has(kPartOfFile));
  }

 private:
  template <class Value>
  Row changed(Value Row::*member, Value value) const {
    Row row = *this;
    row.*member = value;
    return row;
  }

  bool gives_ = true;
  int code_ = kCodeBefore, status_ = kUntouched;
  Codes leaves_ = {kCodeBefore}, writes_ = {kUntouched};
  unsigned traits_ = kPlain;
};

// All rows of this build, in the order of ordinals.
std::vector<Row> good_rows();
std::vector<Row> failing_rows();
std::vector<Row> all_rows();  // the good ones first

std::vector<Row> plain_good_rows();
std::vector<Row> plain_failing_rows();
#ifdef _WIN32
std::vector<Row> device_good_rows();
std::vector<Row> device_failing_rows();
#endif

// Calls an export with a picture of a depth and constants; the result is noted and freed.
template <auto kFunction, int kDepth, auto... kArguments>
void of_dib(Stage& s) {
  s.take(s.call(kFunction, s.dib(kDepth), kArguments...));
}
// Calls an export with constants.
template <auto kFunction, auto... kArguments>
void of(Stage& s) {
  if constexpr (std::is_void_v<decltype(kFunction(kArguments...))>)
    s.call(kFunction, kArguments...);
  else
    s.take(s.call(kFunction, kArguments...));
}

}  // namespace check
