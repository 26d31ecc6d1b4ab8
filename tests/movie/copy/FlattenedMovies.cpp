#include "tests/movie/copy/FlattenedMovies.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "movie/atoms/FileAtoms.h"

namespace movie::test {

namespace {

constexpr std::size_t firstChunk = 30, secondChunk = 18;

bool holdsChunks(const std::string& part) {
  return part.rfind("mdat", 0) == 0 || part == "chunks";
}

Bytes mediaPart(const std::string& part, unsigned& counter) {
  AtomBuilder atom(part == "chunks" ? "free" : "mdat");
  if (part == "mdat64") atom.u64(16 + firstChunk + secondChunk);
  for (std::size_t i = 0; i < firstChunk + secondChunk; ++i) atom.u8(counter++ * 7 % 251);
  Bytes bytes = atom.build();
  if (part == "mdat64") write32(bytes, 0, 1);
  if (part == "mdat0") write32(bytes, 0, 0);
  return bytes;
}

Bytes otherPart(const std::string& part) {
  if (part == "ftyp") return fileType("qt  ");
  if (part == "wide") return AtomBuilder("wide").build();
  if (part == "free" || part == "skip") return AtomBuilder(part).zeros(37).build();
  if (part == "uuid") return AtomBuilder("uuid").zeros(21).u32(0xCAFEBABE).build();
  if (part == "junk") return Bytes(50, 0xEE);
  if (part == "zeros") return Bytes(50, 0);
  if (part == "otherMoov") return atomOf("moov", {AtomBuilder("mvhd").zeros(12).u32(1).u32(1).zeros(80).build()});
  throw std::logic_error("no such part: " + part);
}

Bytes movieAtomOver(const std::vector<std::uint64_t>& offsets, const MovieParts& spec) {
  const auto count = static_cast<std::uint32_t>(3 * offsets.size());
  TrackSpec first;
  first.mediaType = spec.firstMediaType;
  first.wideOffsets = spec.wideOffsets;
  first.durations = {{count, 1}};
  first.mediaDuration = count;
  first.sizes.assign(count, 10);
  first.chunkOffsets = offsets;
  TrackSpec second = first;
  second.id = 2;
  second.mediaType = "soun";
  second.entries = {AtomBuilder("lpcm").zeros(6).u16(1).zeros(8).u16(2).u16(16).zeros(4).u32(48000U << 16).build()};
  second.sizes.clear();
  second.commonSize = 6;
  second.sampleCount = count;
  for (std::uint64_t& offset : second.chunkOffsets) offset += firstChunk;
  MovieSpec movie;
  movie.tracks = {first, second};
  movie.more = {AtomBuilder("udta").u32(0).build()};
  return movie.build();
}

}  // namespace

Bytes MovieParts::build() const {
  std::vector<std::uint64_t> offsets(static_cast<std::size_t>(std::count_if(parts.begin(), parts.end(), holdsChunks)));
  Bytes file;
  // Twice: only when all is laid out are the offsets known, which change no sizes.
  for (int round = 0; round < 3; ++round) {
    const Bytes movie = movieAtomOver(offsets, *this);
    file.clear();
    unsigned counter = 1;
    std::size_t chunk = 0;
    for (const std::string& part : parts) {
      if (holdsChunks(part)) offsets[chunk++] = file.size() + (part == "mdat64" ? 16 : 8);
      const Bytes bytes = part == "moov"      ? movie
                          : part == "cmov"    ? compressedMovie(movie)
                          : holdsChunks(part) ? mediaPart(part, counter)
                                              : otherPart(part);
      file.insert(file.end(), bytes.begin(), bytes.end());
    }
  }
  return file;
}

std::shared_ptr<const MovieFile> openedMovie(const std::string& path) {
  auto movie = MovieFile::open(path);
  if (!movie) throw std::runtime_error(movie.error().message());
  return *movie;
}

Result<void> copied(const std::string& from, const std::string& to, const CopyProgress& progress) {
  const auto movie = openedMovie(from);
  return writeFlattenedCopy(*movie, movie->movieAtom(), to, progress);
}

std::vector<std::vector<Bytes>> samplesOf(const std::string& path) {
  const auto movie = openedMovie(path);
  std::vector<std::vector<Bytes>> tracks;
  for (std::size_t track = 0; track < movie->tracks().size(); ++track) {
    std::vector<Bytes>& samples = tracks.emplace_back();
    for (std::uint64_t i = 0; i < movie->tracks()[track].sampleCount; ++i) {
      auto bytes = movie->readSample(track, i, std::size_t{1} << 24);
      if (!bytes) throw std::runtime_error(bytes.error().message());
      samples.push_back(std::move(*bytes));
    }
  }
  return tracks;
}

std::vector<std::string> topLevelTypes(const std::string& path) {
  const auto movie = openedMovie(path);
  FileAtoms walk(movie->readable());
  std::vector<std::string> types;
  while (const auto atom = walk.next()) types.push_back(fourCCText(atom->type));
  if (walk.defect() != AtomDefect::None) types.emplace_back("!");
  return types;
}

std::string outputOf(const std::string& command) {
  std::FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (!pipe) throw std::runtime_error("cannot run " + command);
  std::string output;
  std::array<char, 4096> buffer{};
  for (std::size_t got = 0; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    output.append(buffer.data(), got);
  }
  if (::pclose(pipe) != 0) throw std::runtime_error(command + " failed: " + output);
  return output;
}

}  // namespace movie::test
