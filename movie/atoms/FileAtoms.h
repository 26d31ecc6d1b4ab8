#pragma once

#include <cstdint>
#include <optional>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/ReadableFile.h"

namespace movie {

/// Walks the top-level atoms of a file by their headers alone; their bodies stay unread. A size of 0 reaches to the
/// end.
class FileAtoms {
 public:
  /// A walk ends after that many atoms (defect() is then TooMany): a hostile file must not hold it for minutes.
  static constexpr std::size_t maximumCount = 1'000'000;

  explicit FileAtoms(const ReadableFile& file) : FileAtoms(file, 0, file.size()) {}
  /// The atoms between two offsets of the file. `file` must outlive the walk.
  FileAtoms(const ReadableFile& file, std::uint64_t begin, std::uint64_t end) : file_(file), at_(begin), end_(end) {}

  /// The next atom, its offset from the start of the file. None at the end, at a malformed header, or on a failed read.
  std::optional<Atom> next();

  AtomDefect defect() const { return defect_; }
  /// The atom at which the walk stopped; its size is what the header claims.
  const Atom& defective() const { return defective_; }
  const Result<void>& readStatus() const { return read_; }  ///< Error: a read failed

 private:
  bool load();
  std::optional<Atom> stop(AtomDefect defect, const Atom& atom);

  const ReadableFile& file_;
  std::uint64_t at_;
  std::uint64_t end_;
  std::size_t count_ = 0;
  Bytes window_;  ///< the bytes around at_, so that small neighbours cost one read
  std::uint64_t windowAt_ = 0;
  AtomDefect defect_ = AtomDefect::None;
  Atom defective_;
  Result<void> read_;
};

}  // namespace movie
