#include "movie/atoms/FileAtoms.h"

#include <utility>

namespace movie {

namespace {
constexpr std::uint32_t shortestHeader = 8;
constexpr std::uint64_t longestHeader = 16;
constexpr std::size_t windowSize = 512;
}  // namespace

/// Makes the window hold the header at at_, as far as the file goes.
bool FileAtoms::load() {
  if (at_ >= windowAt_ && at_ + longestHeader <= windowAt_ + window_.size()) return true;
  auto bytes = file_.read(at_, windowSize);
  if (!bytes) {
    read_ = tl::make_unexpected(std::move(bytes).error());
    return false;
  }
  window_ = std::move(*bytes);
  windowAt_ = at_;
  return true;
}

std::optional<Atom> FileAtoms::stop(AtomDefect defect, const Atom& atom) {
  defect_ = defect;
  defective_ = atom;
  at_ = end_;
  return std::nullopt;
}

std::optional<Atom> FileAtoms::next() {
  if (at_ >= end_ || !load()) return std::nullopt;
  const ByteView there = ByteView(window_).subspan(static_cast<std::size_t>(at_ - windowAt_));
  const std::uint64_t left = end_ - at_;
  auto [atom, defect] = readAtomHeader(there, at_, left);
  const bool toTheEnd = atom.size == 0 && left >= atom.headerSize && there.size() >= atom.headerSize;
  if (toTheEnd && atom.headerSize == shortestHeader) {
    atom.size = left;
    defect = AtomDefect::None;
  }
  if (defect == AtomDefect::None && ++count_ > maximumCount) defect = AtomDefect::TooMany;
  if (defect != AtomDefect::None) return stop(defect, atom);
  at_ = atom.end();
  return atom;
}

}  // namespace movie
