// Reducing an A4 page at 300 dots per inch to black and white, and to few colours.
#include <benchmark/benchmark.h>
#include <string>

#include <vorel32.h>

#include "beside_plain.h"
#include "support/plain_bilevel.h"

namespace {

using test::Bytes;
using test::PlainDither;

void add_dither(const char* name, HGLOBAL(VORELCALL* dither)(HGLOBAL, int), PlainDither kind, int bits) {
  for (int depth : {8, 24})
    if (bits < depth)
      add_beside_plain(std::string(name) + "_to_" + std::to_string(bits), depth,
                       {[=](HGLOBAL dib) { return dither(dib, bits); },
                        [=](const Bytes& dib) { return test::plain_dither(dib, kind, bits); }});
}

const bool registered = [] {
  for (int bits : {1, 4, 8}) {
    add_dither("DitherFS4", DitherFS4, PlainDither::floyd_steinberg, bits);
    add_dither("DitherJJN", DitherJJN, PlainDither::jarvis, bits);
    if (bits == 8) continue;
    add_dither("DitherSmooth", DitherSmooth, PlainDither::smooth, bits);
    add_dither("DitherSharp", DitherSharp, PlainDither::sharp, bits);
  }
  for (int depth : {8, 24})
    for (int method : {0, 1, 2})
      add_beside_plain("Halftone_" + std::to_string(method), depth,
                       {[=](HGLOBAL dib) { return Halftone(dib, static_cast<WORD>(method), 10, nullptr); },
                        [=](const Bytes& dib) { return test::plain_halftone(dib, method, 10); }});
  return true;
}();

}  // namespace
