#include <algorithm>
#include <limits>

#include "movie/EditList.h"
#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/MovieEdit.h"
#include "movie/atoms/MovieFile.h"
#include "movie/copy/ExternalMedia.h"
#include "movie/copy/MovieMap.h"
#include "movie/save/MediaExtents.h"
#include "tests/fuzz/FuzzInputs.h"
#include "tests/fuzz/MemoryFile.h"

namespace fuzz {

namespace {

using movie::MovieFile;
using movie::SampleTable;
using movie::TrackInfo;

constexpr std::size_t mostTracks = 64;
constexpr std::size_t mostDescriptions = 64;

std::string readDescription(const Bytes& entry) {
  const movie::ImageDescription description(entry);
  if (description.bytes() != entry) return "a sample description is not what was read";
  description.gamma();
  description.nclc();
  description.nclxFullRange();
  description.codec();
  description.depth();
  if (const auto profile = description.iccProfile(); profile && profile->empty()) return "an empty profile";
  if (const auto aperture = description.cleanAperture()) {
    const bool inside = aperture->width > 0 && aperture->width <= description.width() && aperture->height > 0 &&
                        aperture->height <= description.height();
    if (!inside) return "a clean aperture larger than the picture";
  }
  std::uint64_t end = 0;
  for (const movie::Atom& extension : description.extensions()) {
    if (extension.offset < end || extension.end() > entry.size()) return "an extension reaches over others";
    end = extension.end();
    description.extensionBody(extension);
  }
  return {};
}

std::string askTable(const SampleTable& table, std::int64_t time) {
  const auto sample = table.presentedAt(time);
  if (sample.has_value() != (table.sampleCount() > 0)) return "a table of samples shows none";
  if (!sample) return {};
  if (sample->index >= table.sampleCount()) return "a sample past the last one is shown";
  if (sample->duration < 0) return "a sample of negative duration";
  if (table.decodeTimeOf(sample->index) != sample->decodeTime) return "two decode times of a sample";
  if (table.presentationTimeOf(sample->index) != sample->presentationTime) return "two times of a sample";
  if (table.syncSampleAtOrBefore(sample->index) > sample->index) return "a sync sample that comes later";
  return {};
}

std::string askSpans(const MovieFile& movie, const TrackInfo& track, const SampleTable& table, std::int64_t value) {
  const movie::MovieTime time{value, movie.timeScale()};
  const auto sample = movie::sampleOnScreen(track, movie.timeScale(), table, time);
  if (sample.has_value() != (table.sampleCount() > 0)) return "a track with samples shows none";
  if (sample && sample->index >= table.sampleCount()) return "a sample past the last one is on screen";
  const auto span = movie::spanOnScreen(track, movie.timeScale(), table, time);
  if (span && span->startMicros > span->endMicros) return "a span that ends before it starts";
  movie::spanBefore(track, movie.timeScale(), table, time);
  movie::mediaStartTime(track);
  return {};
}

std::string askSample(const MovieFile& movie, std::size_t track, std::uint64_t sample) {
  const auto run = movie.descriptionRunOf(track, sample);
  if (run.first > sample && sample < movie.tracks()[track].sampleCount) return "a run that starts behind its sample";
  const auto place = movie.locateSample(track, sample);
  const auto bytes = movie.readSample(track, sample, 64);
  if (!place) return bytes ? "a sample is read that is nowhere" : "";
  if (place->offset > movie.size() || place->size > movie.size() - place->offset) return "a sample outside the file";
  if (bytes && bytes->size() > std::min<std::uint64_t>(place->size, 64)) return "more than a sample is read";
  return {};
}

std::string askTrack(const MovieFile& movie, std::size_t index) {
  const TrackInfo& track = movie.tracks()[index];
  if (track.mediaTimeScale <= 0) return "a media time scale of 0 or below";
  for (std::size_t i = 0; i < std::min(track.sampleDescriptions.size(), mostDescriptions); ++i) {
    if (auto wrong = readDescription(track.sampleDescriptions[i]); !wrong.empty()) return wrong;
  }
  const SampleTable& table = movie.sampleTable(index);
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t time : {Limits::min(), std::int64_t{-1}, std::int64_t{0}, std::int64_t{1}, std::int64_t{1001},
                                  table.duration() / 2, table.duration(), Limits::max()}) {
    if (auto wrong = askTable(table, time); !wrong.empty()) return wrong;
    if (auto wrong = askSpans(movie, track, table, time); !wrong.empty()) return wrong;
  }
  const std::uint64_t count = track.sampleCount;
  for (const std::uint64_t sample : {std::uint64_t{0}, std::uint64_t{1}, count / 2, count - 1, count}) {
    if (auto wrong = askSample(movie, index, sample); !wrong.empty()) return wrong;
  }
  return {};
}

/// What saves and copies ask of the movie atom.
std::string askMovieAtom(const MovieFile& movie) {
  const ByteView atom = movie.movieAtom();
  if (!movie::equalButForColors(atom, atom)) return "a movie atom that is not like itself";
  for (const std::uint64_t size : {atom.size() - 12, atom.size() + 12, atom.size() + 64}) {
    const auto resized = movie::movieAtomOfSize(atom, size);
    if (!resized) continue;
    if (resized->size() != size) return "a movie atom of another size than was asked for";
    if (!movie::equalButForColors(atom, *resized)) return "making room changed the movie atom";
  }
  movie::MediaExtents media;
  if (movie::addMediaOfMovie(atom, movie.path(), media)) {
    media.settle();
    media.overlaps(0, movie.size());
  }
  const auto map = movie::mapMovie(atom, movie.path());
  if (!map) return map.error().reason().empty() ? "an error without a reason" : "";
  for (const auto& track : map->tracks) {
    for (std::size_t i = 0; i < mostDescriptions; ++i) {
      const movie::DataReference* const reference = track.chunks.externalReference(i);
      if (reference == nullptr) continue;
      for (const std::string& name : movie::fileNamesOf(*reference)) {
        if (name.find('/') != std::string::npos || name.find('\0') != std::string::npos || name == "..") {
          return "a media file outside of the movie's folder";
        }
      }
    }
  }
  return {};
}

}  // namespace

std::string tryAtoms(ByteView input) {
  static MemoryFile file;
  const auto movie = MovieFile::open(file.holding(input));
  if (!movie) return movie.error().reason().empty() ? "an error without a reason" : "";
  if ((*movie)->timeScale() <= 0) return "a time scale of 0 or below";
  for (std::size_t i = 0; i < std::min((*movie)->tracks().size(), mostTracks); ++i) {
    if (auto wrong = askTrack(**movie, i); !wrong.empty()) return "track " + std::to_string(i) + ": " + wrong;
  }
  return askMovieAtom(**movie);
}

}  // namespace fuzz
