#include <cstdio>
#include <future>
#include <memory>

#include <nlohmann/json.hpp>

#include "check/GammaCheck.h"
#include "cli/CheckJson.h"
#include "cli/Commands.h"
#include "movie/decode/DecoderModule.h"

namespace cli {
namespace {

using MoviePtr = std::unique_ptr<movie::Movie>;

/// One side of the check, opened and placed.
struct Side {
  MoviePtr movie;
  movie::MovieTime time;
};

struct SideFailure {
  std::string message;
  std::string path;
};

tl::expected<Side, SideFailure> openSide(const std::string& path, const std::optional<TimeArgument>& time) {
  movie::Result<MoviePtr> opened = movie::Movie::movieWithFile(path);
  if (!opened) return tl::unexpected(SideFailure{opened.error().message(), path});
  Side side{std::move(*opened), {}};
  side.time = {0, side.movie->timeScale(), 0};
  if (time) {
    const tl::expected<movie::MovieTime, std::string> placed = timeInMovie(*time, *side.movie);
    if (!placed) return tl::unexpected(SideFailure{placed.error(), path});
    side.time = *placed;
  }
  return side;
}

CommandResult failureResult(const std::vector<SideFailure>& failures, OutputForm form) {
  CommandResult result;
  result.status = failure;
  for (const SideFailure& each : failures) result.err += complaint(each.message);
  if (form == OutputForm::Json) {
    const SideFailure& first = failures.front();
    result.out = textOf(checkErrorJson(first.message, first.path, result.status));
  }
  return result;
}

bool lacksFrame(const check::CheckOutcome& outcome) {
  return outcome.sourceFrameError || outcome.destFrameError;
}

bool isUnmatched(const check::CheckOutcome& outcome) {
  return outcome.pixels && check::pixelShiftOf(outcome.pixels->commonDiff) == check::PixelShift::Unmatched;
}

std::string unmatchedSentence(double commonDiff) {
  char sentence[160];
  std::snprintf(sentence, sizeof sentence,
                "The source and destination frames do not match closely enough for a verdict (most frequent exponent: "
                "%.2f).",
                commonDiff);
  return sentence;
}

/// What the report leaves out.
std::string remarksOn(const check::CheckOutcome& outcome) {
  if (outcome.tooDark) {
    return check::tooDarkMessageText.toStdString() + "\n" + check::tooDarkInformativeText.toStdString() + "\n";
  }
  if (!lacksFrame(outcome)) {
    return isUnmatched(outcome) ? complaint(unmatchedSentence(outcome.pixels->commonDiff)) : std::string();
  }
  const auto lack = [](const char* side, const std::optional<movie::MovieError>& error) {
    return error ? complaint(std::string("The ") + side + " frame cannot be had. " + error->message()) : std::string();
  };
  return lack("source", outcome.sourceFrameError) + lack("destination", outcome.destFrameError);
}

CommandResult checkSides(const Side& source, const Side& dest, const CheckOptions& options, TextStyling styling) {
  check::RecordedReport report;
  const check::CheckOutcome outcome =
      check::runGammaCheck({*source.movie, *dest.movie, {source.time, dest.time}, {}}, report);
  CommandResult result;
  result.status = exitStatusOf(outcome, options.exitPolicy);
  result.err = remarksOn(outcome);
  if (options.form == OutputForm::Text) {
    result.out = reportText(report.paragraphs(), styling);
  } else {
    result.out = textOf(checkJson(jsonOf(*source.movie, source.time), jsonOf(*dest.movie, dest.time), outcome,
                                  report.paragraphs(), result.status));
  }
  return result;
}

}  // namespace

CommandResult runCheckCommand(const CheckOptions& options, TextStyling styling) {
  movie::preloadDecoder();
  auto opening = std::async(std::launch::async | std::launch::deferred,
                            [&] { return openSide(options.source, options.sourceTime); });
  const tl::expected<Side, SideFailure> dest = openSide(options.dest, options.destTime);
  const tl::expected<Side, SideFailure> source = opening.get();

  std::vector<SideFailure> failures;
  if (!source) failures.push_back(source.error());
  if (!dest) failures.push_back(dest.error());
  if (!failures.empty()) return failureResult(failures, options.form);
  return checkSides(*source, *dest, options, styling);
}

int exitStatusOf(const check::CheckOutcome& outcome, ExitPolicy policy) {
  const bool zero = policy == ExitPolicy::ZeroUnlessFailed;
  if (outcome.tooDark) return zero ? noShift : sourceTooDark;
  if (lacksFrame(outcome) || isUnmatched(outcome)) return failure;
  const bool shifted =
      check::pixelShiftOf(outcome.pixels ? outcome.pixels->commonDiff : 0.0) != check::PixelShift::None;
  const bool mismatch = outcome.metadata && outcome.metadata->mismatch();
  return (shifted || mismatch) && !zero ? shiftFound : noShift;
}

}  // namespace cli
