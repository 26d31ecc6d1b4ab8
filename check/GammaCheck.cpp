#include "check/GammaCheck.h"

#include <future>
#include <utility>
#include <vector>

#include "SharedFiles/log/LogFormat.h"
#include "SharedFiles/log/QVLog.h"
#include "check/ColorInfo.h"
#include "check/MetadataSync.h"
#include "movie/render/FrameRenderer.h"

namespace check {
namespace {

constexpr int frameWidth = 320, frameHeight = 240;

/// The first video track's first image description of each side, which is all the metadata section looks at.
struct DescriptionPair {
  movie::ImageDescription source, dest;
};

std::optional<DescriptionPair> firstDescriptions(const movie::Movie& source, const movie::Movie& dest) {
  const std::vector<const movie::Track*> sourceTracks = source.tracksOfMediaType(movie::videoMedia);
  const std::vector<const movie::Track*> destTracks = dest.tracksOfMediaType(movie::videoMedia);
  if (sourceTracks.empty() || destTracks.empty()) return std::nullopt;
  const movie::Media& sourceMedia = sourceTracks.front()->media();
  const movie::Media& destMedia = destTracks.front()->media();
  QVLog::fastAppendLog(QStringLiteral("Source ImageDescription count: %i"),
                       static_cast<int>(sourceMedia.sampleDescriptionCount()));
  QVLog::fastAppendLog(QStringLiteral("Dest ImageDescription count: %i"),
                       static_cast<int>(destMedia.sampleDescriptionCount()));
  return DescriptionPair{firstDescription(sourceMedia), firstDescription(destMedia)};
}

/// Says which of the two it is, and gives it back.
bool outputMatch(bool match, const QString& matching, const QString& different, ReportConsole& console) {
  match ? console.outputBoldText(matching) : console.outputBoldErrorText(different);
  return match;
}

bool compareGammas(const DescriptionPair& descriptions, ReportConsole& console) {
  const float source = gammaLevel(descriptions.source.gamma());
  const float dest = gammaLevel(descriptions.dest.gamma());
  console.outputText(source == 0.0F ? QStringLiteral("Source file has no gamma metadata set.")
                                    : formatLog(QStringLiteral("Source gamma metadata: %0.2f"), double{source}));
  console.outputText(dest == 0.0F ? QStringLiteral("Destination file has no gamma metadata set.")
                                  : formatLog(QStringLiteral("Destination gamma metadata: %0.2f"), double{dest}));
  return outputMatch(source == dest, QStringLiteral("Source and destination gamma metadata match."),
                     QStringLiteral("Source and destination gamma metadata do not match."), console);
}

bool compareColors(const DescriptionPair& descriptions, ReportConsole& console) {
  const ColorInfo source = colorInfoOf(descriptions.source);
  console.outputText(isColorInfoSet(source) ? QStringLiteral("Source color metadata is set.")
                                            : QStringLiteral("Source file has no color metadata set."));
  const ColorInfo dest = colorInfoOf(descriptions.dest);
  console.outputText(isColorInfoSet(dest) ? QStringLiteral("Destination color metadata is set.")
                                          : QStringLiteral("Destination file has no color metadata set."));
  return outputMatch(colorInfoCompare(source, dest) == 0,
                     QStringLiteral("Source and destination color metadata match."),
                     QStringLiteral("Source and destination color metadata do not match."), console);
}

bool compareProfiles(const DescriptionPair& descriptions, ReportConsole& console) {
  const std::optional<movie::Bytes> source = descriptions.source.iccProfile();
  console.outputText(source ? QStringLiteral("Source color space metadata is set.")
                            : QStringLiteral("Source file has no color space metadata set."));
  const std::optional<movie::Bytes> dest = descriptions.dest.iccProfile();
  console.outputText(dest ? QStringLiteral("Destination color space metadata is set.")
                          : QStringLiteral("Destination file has no color space metadata set."));
  // Byte for byte; two absent ones match.
  return outputMatch(source == dest, QStringLiteral("Source and destination color space metadata match."),
                     QStringLiteral("Source and destination color space metadata do not match."), console);
}

std::optional<MetadataFindings> compareMetadata(const movie::Movie& source, const movie::Movie& dest,
                                                ReportConsole& console) {
  const std::optional<DescriptionPair> descriptions = firstDescriptions(source, dest);
  if (!descriptions) return std::nullopt;
  return MetadataFindings{.gammaMatch = compareGammas(*descriptions, console),
                          .colorMatch = compareColors(*descriptions, console),
                          .colorSpaceMatch = compareProfiles(*descriptions, console)};
}

/// A frame as it was decoded, and as it is measured.
struct MeasuredFrame {
  movie::Picture picture;
  movie::RgbFrame rendered;
};

struct FramePair {
  movie::Result<MeasuredFrame> source, dest;
};

movie::Result<MeasuredFrame> measuredFrame(movie::Movie& movie, const movie::MovieTime& time) {
  auto picture = movie.pictureAtTime(time, frameWidth, frameHeight);
  if (!picture) return tl::unexpected(std::move(picture.error()));
  const movie::Media& media = std::as_const(movie).tracksOfMediaType(movie::videoMedia).front()->media();
  movie::RgbFrame rendered = movie::renderMeasurementFrame(*picture, firstDescription(media).nclc());
  return MeasuredFrame{std::move(*picture), std::move(rendered)};
}

/// Each copy is used by one thread only. Where no thread can be had, one after the other.
FramePair decodeFrames(movie::Movie& sourceCopy, movie::Movie& destCopy, const Playheads& playheads) {
  std::future<movie::Result<MeasuredFrame>> source = std::async(
      std::launch::async | std::launch::deferred, [&] { return measuredFrame(sourceCopy, playheads.source); });
  movie::Result<MeasuredFrame> dest = measuredFrame(destCopy, playheads.dest);
  return {source.get(), std::move(dest)};
}

RgbFrameBitmap bitmapOf(movie::Result<MeasuredFrame> frame, std::optional<movie::Picture>& picture,
                        std::optional<movie::MovieError>& error) {
  if (!frame) {
    error = std::move(frame.error());
    return {};
  }
  picture = std::move(frame->picture);
  return RgbFrameBitmap(std::move(frame->rendered));
}

/// A missing frame is an empty bitmap, which holds no pair of pixels: known without a scan, in which every pixel of the
/// other side would find nothing opposite it and say so in the log.
GammaEstimate estimateGamma(const FrameBitmap& source, const FrameBitmap& dest) {
  const RgbFrameBitmap none;
  return gammaShiftForSourceBitmap(dest.pixelsWide() < 1 ? none : source, dest);
}

void reportShift(double v, ReportConsole& console) {
  const bool darker = v > 1.0;
  // Within the margin the text goes along as a second argument, which neither format has a place for.
  const bool withinMargin = darker ? v <= 1.1 : v >= 0.9;
  const QString margin = withinMargin ? QStringLiteral(" (within margin of error)") : QStringLiteral("");
  console.outputBoldErrorText(
      formatLog(darker ? QStringLiteral("Gamma shift: %0.2f (darker)") : QStringLiteral("Gamma shift: %0.2f (lighter)"),
                v, margin));
}

}  // namespace

PixelShift pixelShiftOf(double commonDiff) {
  if (commonDiff >= 0.2 && commonDiff < 0.95) return PixelShift::Lighter;
  if (commonDiff > 1.05 && commonDiff <= 5.0) return PixelShift::Darker;
  if (commonDiff >= 0.95 && commonDiff <= 1.05) return PixelShift::None;
  return PixelShift::Unmatched;
}

void reportPixels(double v, bool metadataMismatch, ReportConsole& console) {
  const PixelShift shift = pixelShiftOf(v);
  if (shift == PixelShift::Darker || shift == PixelShift::Lighter) {
    reportShift(v, console);
    console.outputBoldText(
        metadataMismatch
            ? QStringLiteral("Recommendation:\nThe gamma shift is occurring within the pixels of the movie and within "
                             "metadata. You are advised to go back to the application that created the destination "
                             "file and check the input and output settings to remove the cause of the gamma shift. If "
                             "necessary, return to Lumacheck and sync the gamma metadata.")
            : QStringLiteral("Recommendation:\nThe gamma shift is occurring within the pixels of the movie, not within "
                             "metadata. You are advised to go back to the application that created the destination "
                             "file and check the input and output settings to remove the cause of the gamma shift."));
    return;
  }
  console.outputBoldText(
      QStringLiteral("No noticeable gamma shift detected on destination movie's pixels. This is either because the "
                     "source and destination frames do not match closely enough or because the gamma shift is "
                     "occurring in metadata."));
  console.outputBoldText(metadataMismatch
                             ? QStringLiteral("Recommendation:\nThe gamma shift is occurring in metadata so click the "
                                              "Sync Metadata button to resolve this.")
                             : QStringLiteral("No noticeable gamma shift was found."));
}

CheckOutcome runGammaCheck(const CheckRequest& request, ReportConsole& console) {
  console.clearTextView();
  console.outputText(QStringLiteral("Checking files..."));
  const Playheads playheads = request.stopPlayback ? request.stopPlayback() : request.playheads;
  const std::unique_ptr<movie::Movie> sourceCopy = request.source.copy();
  const std::unique_ptr<movie::Movie> destCopy = request.dest.copy();

  CheckOutcome outcome;
  outcome.metadata = compareMetadata(*sourceCopy, *destCopy, console);
  const bool metadataMismatch = outcome.metadata && outcome.metadata->mismatch();
  matchMetadata(*sourceCopy, *destCopy);

  FramePair frames = decodeFrames(*sourceCopy, *destCopy, playheads);
  const RgbFrameBitmap source = bitmapOf(std::move(frames.source), outcome.sourcePicture, outcome.sourceFrameError);
  const RgbFrameBitmap dest = bitmapOf(std::move(frames.dest), outcome.destPicture, outcome.destFrameError);
  if (isBlackFrame(source)) {
    outcome.tooDark = true;
    return outcome;
  }
  outcome.pixels = estimateGamma(source, dest);
  QVLog::fastAppendLog(QStringLiteral("Gamma: %f"), outcome.pixels->commonDiff);
  reportPixels(outcome.pixels->commonDiff, metadataMismatch, console);
  return outcome;
}

}  // namespace check
