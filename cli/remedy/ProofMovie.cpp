#include "cli/remedy/ProofMovie.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "diagnosis/undo/CorrectedPicture.h"
#include "movie/render/Orientation.h"
#include "movie/render/YCbCrMatrix.h"

namespace cli {
namespace {

constexpr std::int32_t micros = 1'000'000;

/// When frames come and go, in units of a scale.
struct ProofTimes {
  std::int32_t scale = micros;
  std::vector<std::int64_t> starts;  ///< from 0; behind them the end of the last one
};

constexpr double timesAreOff = 0.0015;  ///< a movie's own scale of 1000 or 600 rounds by that, in seconds

/// How long the last frame stays, in the scale of the times before it: as long as the one before, where that differs
/// only by how an end is rounded.
std::int64_t lastStay(const ProofTimes& times, const movie::FrameSpan& last) {
  const double seconds = static_cast<double>(last.endMicros - last.startMicros) / micros;
  const std::int64_t stay = std::max<std::int64_t>(1, std::llround(seconds * times.scale));
  if (times.starts.size() < 2) return stay;
  const std::int64_t before = times.starts.back() - times.starts[times.starts.size() - 2];
  return 4 * std::abs(stay - before) <= before ? before : stay;
}

/// In the units of the media, in which frame rates are exact, where it is shown as it is stored; else in microseconds.
ProofTimes timesOf(const std::vector<movie::FrameSpan>& spans, std::int32_t mediaScale) {
  ProofTimes inMedia{mediaScale, {}}, inMicros;
  bool asStored = mediaScale > 0;
  const auto add = [&](std::int64_t media, std::int64_t micro) {
    const std::int64_t start = media - spans.front().sample.presentationTime;
    const std::int64_t shown = micro - spans.front().startMicros;
    if (asStored) {
      const double seconds = static_cast<double>(start) / mediaScale;
      asStored = std::abs(seconds - static_cast<double>(shown) / micros) < timesAreOff &&
                 (inMedia.starts.empty() || start > inMedia.starts.back());
    }
    inMedia.starts.push_back(start);
    inMicros.starts.push_back(shown);
  };
  for (const movie::FrameSpan& span : spans) add(span.sample.presentationTime, span.startMicros);
  const movie::FrameSpan& last = spans.back();
  add(last.sample.presentationTime + lastStay(inMedia, last), last.endMicros);
  return asStored ? inMedia : inMicros;
}

std::vector<movie::FrameSpan> spansOf(const ProofSubject& subject) {
  std::vector<movie::FrameSpan> spans;
  for (std::size_t frame = subject.frames.first; frame < subject.frames.end; ++frame) {
    if (const auto span = subject.dest.frameSpanAt(subject.rows.dest->movieTimeOf(frame))) spans.push_back(*span);
  }
  return spans;
}

/// The matrix that the source is in, where a movie may be in it; else the one that both sides were compared in.
std::uint16_t proofMatrix(const scan::ScanTags& tags, const diagnosis::ComparedIn& space) {
  const std::uint16_t matrix = tags.source.matrixInForce;
  return movie::lumaWeights(matrix) ? matrix : space.matrix;
}

/// 'pasp', the pixel's sides. Source: QTFF "Pixel aspect ratio".
void setPixel(movie::EncodedMovie& proof, const movie::ImageDescription& description, bool transposed) {
  constexpr movie::FourCC pasp = movie::fourCC("pasp");
  for (const movie::Atom& atom : description.extensions()) {
    const movie::ByteView body = description.extensionBody(atom);
    if (atom.type != pasp || body.size() < 8) continue;
    const auto across = static_cast<std::int32_t>(movie::read32(body, 0));
    const auto down = static_cast<std::int32_t>(movie::read32(body, 4));
    if (across <= 0 || down <= 0) return;
    proof.pixelWidth = transposed ? down : across;
    proof.pixelHeight = transposed ? across : down;
    return;
  }
}

movie::EncodedMovie proofOf(const ProofSubject& subject, const movie::Picture& first, std::int32_t timeScale,
                            std::uint16_t matrix) {
  const diagnosis::SideTags& source = subject.rows.source->tags();
  movie::EncodedMovie proof;
  proof.width = first.width;
  proof.height = first.height;
  proof.timeScale = timeScale;
  proof.color = {0, source.primaries, source.transferFunction, matrix};
  if (source.gamma.value_or(0) > 0) proof.gama = source.gamma;
  const movie::Track& track = *subject.dest.tracksOfMediaType(movie::videoMedia).front();
  if (const auto description = track.media().imageDescription(1)) {
    setPixel(proof, *description, movie::orientationOf(track.info().matrix).transposed);
  }
  return proof;
}

/// A movie's pictures one after another, corrected and encoded.
class ProofWriter {
 public:
  ProofWriter(const ProofSubject& subject, movie::MovieEncoderBackend& backend, const movie::EncodedOutput& output)
      : subject_(subject),
        backend_(backend),
        output_(output),
        tags_(subject.rows.tags()),
        space_(diagnosis::comparedIn(tags_.source, tags_.dest)),
        matrix_(proofMatrix(tags_, space_)),
        undo_(subject.recipe, space_),
        movie_(subject.dest.copy()),
        spans_(spansOf(subject)) {}

  tl::expected<void, std::string> write(const scan::OnProgress& onProgress) {
    if (spans_.empty()) return tl::unexpected<std::string>("The destination has no picture there.");
    const movie::Track& track = *subject_.dest.tracksOfMediaType(movie::videoMedia).front();
    times_ = timesOf(spans_, track.info().mediaTimeScale);
    for (std::size_t i = 0; i < spans_.size(); ++i) {
      if (onProgress && onProgress(progressAt(i))) return tl::unexpected<std::string>("It was stopped.");
      if (auto added = add(i); !added) return added;
    }
    return told(encoder_->finish());
  }

 private:
  tl::expected<void, std::string> add(std::size_t i) {
    movie::PlayedFrameRequest request;
    if (i + 1 < spans_.size()) request.next = spans_[i + 1];
    const auto picture = movie_->playedPicture(spans_[i], request);
    if (!picture) return tl::unexpected(picture.error().message());
    if (!*picture) return tl::unexpected<std::string>("The destination has no picture there.");
    if (!encoder_) {
      auto made = backend_.makeEncoder(proofOf(subject_, **picture, times_.scale, matrix_), output_);
      if (!made) return told(tl::unexpected(made.error()));
      encoder_ = std::move(*made);
      width_ = (*picture)->width;
      height_ = (*picture)->height;
    }
    // Of another image description, which would need a movie of its own.
    if ((*picture)->width != width_ || (*picture)->height != height_)
      return tl::unexpected<std::string>("The pictures change their size.");
    const diagnosis::CorrectedPicture corrected = diagnosis::corrected(**picture, tags_.dest, undo_, space_, matrix_);
    const auto& planes = corrected.planes;
    return told(
        encoder_->add({{planes[0], planes[1], planes[2]}, times_.starts[i], times_.starts[i + 1] - times_.starts[i]}));
  }

  scan::ScanProgress progressAt(std::size_t done) const {
    scan::ScanProgress progress;
    progress.stage = scan::ScanProgress::Stage::Comparing;
    progress.done = done;
    progress.frames = spans_.size();
    progress.seconds = static_cast<double>(spans_[done].startMicros - spans_.front().startMicros) / micros;
    return progress;
  }

  static tl::expected<void, std::string> told(const movie::Encoded<void>& done) {
    if (done) return {};
    return tl::unexpected("It cannot be encoded: " + done.error() + ".");
  }

  const ProofSubject& subject_;
  movie::MovieEncoderBackend& backend_;
  const movie::EncodedOutput& output_;
  scan::ScanTags tags_;
  diagnosis::ComparedIn space_;
  std::uint16_t matrix_;
  diagnosis::UndoColors undo_;
  std::unique_ptr<movie::Movie> movie_;
  std::vector<movie::FrameSpan> spans_;
  ProofTimes times_;
  std::unique_ptr<movie::MovieEncoder> encoder_;
  int width_ = 0, height_ = 0;
};

}  // namespace

tl::expected<void, std::string> writeProof(const ProofSubject& subject, movie::MovieEncoderBackend& backend,
                                           const movie::EncodedOutput& output, const scan::OnProgress& onProgress) {
  return ProofWriter(subject, backend, output).write(onProgress);
}

}  // namespace cli
