// Hosts differ in rounding, x87 precision and stack alignment. Results do not depend on these, and the host's state is preserved.
#include <cstring>
#include <string>
#include <xmmintrin.h>

#include "check/drivers.h"
#include "check/report.h"
#include "check/row.h"
#include "check/system.h"

namespace check {
namespace {

struct HostState {
  const char* name;
  uint16_t x87;  // control word
  uint32_t mxcsr;
  uint32_t off = 0;  // of the stack from a multiple of 16
};

constexpr uint32_t kUsualMxcsr = 0x1F80;
constexpr HostState kHostStates[] = {
    {"usual", 0x037F, kUsualMxcsr},
    {"53 bits", 0x027F, kUsualMxcsr},
    {"24 bits", 0x007F, kUsualMxcsr},
    {"down", 0x077F, kUsualMxcsr | 0x2000},
    {"up", 0x0B7F, kUsualMxcsr | 0x4000},
    {"to zero", 0x0F7F, kUsualMxcsr | 0x6000},
    {"flushing to zero", 0x037F, kUsualMxcsr | 0x8040},
    {"stack 4 off", 0x037F, kUsualMxcsr, 4},
    {"stack 8 off", 0x037F, kUsualMxcsr, 8},
    {"stack 12 off, 24 bits, up", 0x087F, kUsualMxcsr | 0x4000, 12},
};

uint16_t x87_word() {
  uint16_t word = 0;
  __asm__ volatile("fnstcw %0" : "=m"(word));
  return word;
}
void set_x87_word(uint16_t word) { __asm__ volatile("fldcw %0" : : "m"(word)); }

// Calls that the stage makes itself have the compiler's stack alignment.
bool can_be_set([[maybe_unused]] const HostState& state) {
#if defined(_WIN32) && defined(__i386__)
  return true;
#else
  return state.off == 0;
#endif
}

// The bits that results could depend on: all but the flags of past exceptions.
constexpr uint32_t kControlBits = 0xFFC0;

class Host : public Probe {
 public:
  const HostState* state = kHostStates;
  std::string changed;  // parts of the state that the call changed

  void begin() override {
    changed.clear();
    kept_x87_ = x87_word(), kept_mxcsr_ = _mm_getcsr();
    set_x87_word(state->x87);
    _mm_setcsr(state->mxcsr);
  }
  void end() override {
    if (x87_word() != state->x87) changed += " the x87 control word";
    if ((_mm_getcsr() & kControlBits) != (state->mxcsr & kControlBits)) changed += " MXCSR";
    set_x87_word(kept_x87_);
    _mm_setcsr(kept_mxcsr_);
  }

#if defined(_WIN32) && defined(__i386__)
  // Pushes the arguments below a stack of the chosen alignment, and compares stack pointer, saved registers and direction flag.
  bool invoke(void* function, const uint32_t* words, size_t count, uint32_t& result) override {
    uint32_t stack_moved = 0, lost = 0, flags = 0;
    const uint32_t bytes = static_cast<uint32_t>(4 * count), off = state->off;
    struct {
      void* function;
      const uint32_t* words;
      uint32_t bytes, off, stack, after, result, ebx, esi, edi, flags;
    } call{function, words, bytes, off, 0, 0, 0, 0, 0, 0, 0};
    __asm__ volatile(
        "pushl %%ebx\n pushl %%esi\n pushl %%edi\n pushl %%ebp\n"
        "movl %%eax, %%ebp\n"  // the record, which the export must give back
        "movl %%esp, %%edx\n"
        "andl $-16, %%esp\n subl 12(%%ebp), %%esp\n"
        "pushl %%edx\n pushl %%ebp\n"  // kept below the arguments' end
        "movl %%esp, 16(%%ebp)\n"
        "subl 8(%%ebp), %%esp\n"
        "movl 4(%%ebp), %%esi\n movl %%esp, %%edi\n movl 8(%%ebp), %%ecx\n cld\n rep movsb\n"
        "movl $0x1234567, %%ebx\n movl $0x2345678, %%esi\n movl $0x3456789, %%edi\n"
        "call *(%%ebp)\n"
        "movl %%ebp, %%ecx\n"
        "movl %%esp, 20(%%ecx)\n movl %%eax, 24(%%ecx)\n movl %%ebx, 28(%%ecx)\n movl %%esi, 32(%%ecx)\n movl %%edi, "
        "36(%%ecx)\n"
        "pushfl\n popl 40(%%ecx)\n cld\n"
        "movl 16(%%ecx), %%esp\n"
        "popl %%edx\n popl %%esp\n"
        "popl %%ebp\n popl %%edi\n popl %%esi\n popl %%ebx\n"
        :
        : "a"(&call)
        : "ecx", "edx", "memory", "cc");
    stack_moved = call.after - call.stack;
    lost = static_cast<uint32_t>(call.ebx != 0x1234567) + static_cast<uint32_t>(call.esi != 0x2345678) +
           static_cast<uint32_t>(call.edi != 0x3456789);
    flags = call.flags & 0x400;
    if (stack_moved != 0) changed += " the stack pointer by " + std::to_string(static_cast<int32_t>(stack_moved));
    if (lost != 0) changed += " registers";
    if (flags != 0) changed += " the direction flag";
    result = call.result;
    return true;
  }
#endif

 private:
  uint16_t kept_x87_ = 0;
  uint32_t kept_mxcsr_ = 0;
};

void check_rows_of(const std::vector<Row>& rows, Report& report) {
  for (const Row& row : rows) {
    Stage stage;
    const Outcome usual = stage.run(row);
    Host host;
    stage.probe = &host;
    for (const HostState& state : kHostStates) {
      if (!can_be_set(state)) continue;
      at_work(row.name, static_cast<long>(&state - kHostStates));
      host.state = &state;
      const Outcome outcome = stage.run(row);
      report.count();
      const std::string where = std::string(row.name) + " with the host's state: " + state.name;
      if (outcome != usual && !row.has(kChanging)) report.fault(where, "another result");
      if (!host.changed.empty()) report.fault(where, "changes" + host.changed);
    }
  }
}

}  // namespace

int check_host_state(const Arguments&) {
  Report report;
  check_rows_of(all_rows(), report);
  return report.end();
}

}  // namespace check
