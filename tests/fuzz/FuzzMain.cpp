// One fuzzer: LUMACHECK_FUZZ_TRY is its function; LUMACHECK_FUZZ_MOVIE_AT, where its inputs hold a movie file, how many
// bytes of choices come before it.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tests/fuzz/FuzzInputs.h"
#include "tests/fuzz/MovieMutator.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string wrong = fuzz::LUMACHECK_FUZZ_TRY(fuzz::ByteView(data, size));
  if (wrong.empty()) return 0;
  std::fprintf(stderr, "BROKEN: %s\n", wrong.c_str());
  std::abort();
}

#ifdef LUMACHECK_FUZZ_MOVIE_AT
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t largest);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest,
                                               unsigned int seed) {
  constexpr std::size_t choices = LUMACHECK_FUZZ_MOVIE_AT;
  std::mt19937 random(seed);
  if (size <= choices || largest <= choices || random() % 4 == 0) return LLVMFuzzerMutate(data, size, largest);
  if (choices > 0 && random() % 2 == 0) {
    for (unsigned i = 0; i <= random() % 3; ++i) data[random() % choices] = static_cast<std::uint8_t>(random());
    if (random() % 2 == 0) return size;
  }
  fuzz::Bytes movie(data + choices, data + size);
  for (unsigned i = 0; i <= random() % 3; ++i) fuzz::mutateMovie(movie, largest - choices, random, LLVMFuzzerMutate);
  std::copy(movie.begin(), movie.end(), data + choices);
  return choices + movie.size();
}
#endif
