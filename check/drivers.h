// One driver for each way of going through the table of calls.
#pragma once

#include <cstdlib>
#include <vector>

namespace check {

// What is behind the driver's name on the command line.
class Arguments {
 public:
  Arguments(char** first, char** last) : words_(first, last) {}
  long number(size_t index, long otherwise) const {
    return index < words_.size() ? std::strtol(words_[index], nullptr, 10) : otherwise;
  }
  const char* word(size_t index, const char* otherwise) const { return index < words_.size() ? words_[index] : otherwise; }

 private:
  std::vector<const char*> words_;
};

// Each row once: the result and codes that the table states, inputs unchanged, and a row for each export.
int check_rows(const Arguments& arguments);
// [CALLS] [SLOW]: so many of each row, and of each slow one, leave no block, object, window, file or lock.
int check_nothing_left(const Arguments& arguments);
// [CALLS] [KIB]: so many calls, mixed, grow the process by no more than so much.
int check_mixed_calls(const Arguments& arguments);
// [THREADS] [CALLS]: each thread gets what one thread gets.
int check_threads(const Arguments& arguments);
// [THREADS]: so many threads, a few at a time, leave nothing.
int check_many_threads(const Arguments& arguments);
// [CALLS] [SEED] [MIB]: sizes and offsets that no picture has, in blocks of a few hundred bytes before a page without access.
int check_sizes(const Arguments& arguments);
// Each row under other rounding modes, precisions and stack alignments gives the same and gives the host's state back.
int check_host_state(const Arguments& arguments);
// [ROW]: each allocation, lock and object of each good row (after this one) fails in turn, alone and with all that follow.
int check_allocations(const Arguments& arguments);
// [ROW]: the same with opening, reading, writing and positioning.
int check_files(const Arguments& arguments);
// An exception in each request of operator new by each good row.
int check_exceptions(const Arguments& arguments);
// FOLDER [HEADER] [LATER]: each file is cut at each byte of its header and at so many later points.
int check_cut_files(const Arguments& arguments);
// A file becomes another one between two steps of a call.
int check_replaced_files(const Arguments& arguments);

// PATH: loads a picture file; PATH FORMAT: saves one. 1 if the export gives zero.
int load_picture(const Arguments& arguments);
int save_picture(const Arguments& arguments);

}  // namespace check
