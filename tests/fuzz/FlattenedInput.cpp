#include <algorithm>
#include <filesystem>
#include <fstream>

#include <stdlib.h>

#include "movie/copy/FlattenedCopy.h"
#include "tests/fuzz/FuzzInputs.h"

namespace fuzz {

namespace {

using movie::MovieFile;

constexpr std::uint64_t mostSamples = 200;  // of a track

/// One folder for the source and its copies, gone with the program.
class Folder {
 public:
  Folder() : path_((std::filesystem::temp_directory_path() / "lumacheck-fuzz-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) std::abort();
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string path(const char* name) const { return path_ + "/" + name; }
  std::size_t count() const {
    const std::filesystem::directory_iterator begin(path_);
    return static_cast<std::size_t>(std::distance(begin, std::filesystem::directory_iterator()));
  }

 private:
  std::string path_;
};

std::string compareSamples(const MovieFile& before, const MovieFile& after) {
  if (after.tracks().size() != before.tracks().size()) return "the copy has other tracks";
  for (std::size_t track = 0; track < before.tracks().size(); ++track) {
    const std::uint64_t count = before.tracks()[track].sampleCount;
    if (after.tracks()[track].sampleCount != count) return "the copy has other samples";
    if (after.tracks()[track].sampleDescriptions.size() != before.tracks()[track].sampleDescriptions.size()) {
      return "the copy has other sample descriptions";
    }
    for (std::uint64_t sample = 0; sample < std::min(count, mostSamples); ++sample) {
      const auto old = before.readSample(track, sample, 10'000);
      const auto copied = after.readSample(track, sample, 10'000);
      if (old && (!copied || *copied != *old)) return "sample " + std::to_string(sample) + " of the copy is another";
    }
  }
  return {};
}

}  // namespace

std::string tryFlattened(ByteView input) {
  static const Folder folder;
  const std::string from = folder.path("from.mov"), to = folder.path("to.mov");
  std::ofstream(from, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(input.data()), static_cast<std::streamsize>(input.size()));
  const auto movie = MovieFile::open(from);
  if (!movie) return {};
  const auto status = movie::writeFlattenedCopy(**movie, (*movie)->movieAtom(), to);
  if (!status) return folder.count() == 1 ? "" : "a refused copy left something behind";
  const auto copy = MovieFile::open(to);
  const std::string wrong = copy ? compareSamples(**movie, **copy) : "the copy does not open";
  std::filesystem::remove(to);
  return wrong;
}

}  // namespace fuzz
