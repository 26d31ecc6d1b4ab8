#pragma once

#include <cstddef>
#include <functional>
#include <random>

#include "movie/atoms/ByteOrder.h"

namespace fuzz {

/// Changes a movie file as an input of a fuzzer: takes atoms out, doubles, inserts, resizes and retypes them, with the
/// sizes around them and, mostly, the chunk offsets made true again, so that what comes of it is looked at in depth.
/// `mutate` changes raw bytes in place and returns how many there are; it gets room for the second count.
void mutateMovie(movie::Bytes& file, std::size_t largest, std::mt19937& random,
                 const std::function<std::size_t(std::uint8_t*, std::size_t, std::size_t)>& mutate);

}  // namespace fuzz
