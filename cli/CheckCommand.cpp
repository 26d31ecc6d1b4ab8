#include <future>
#include <memory>
#include <utility>

#include <nlohmann/json.hpp>

#include "check/GammaCheck.h"
#include "cli/CheckJson.h"
#include "cli/Commands.h"
#include "cli/FindingBlock.h"
#include "diagnosis/MovieFrames.h"
#include "movie/decode/DecoderModule.h"
#include "scan/CounterpartTime.h"

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

/// What the report leaves out.
std::string remarksOn(const check::CheckOutcome& outcome) {
  if (outcome.tooDark) {
    return check::tooDarkMessageText.toStdString() + "\n" + check::tooDarkInformativeText.toStdString() + "\n";
  }
  const auto lack = [](const char* side, const std::optional<movie::MovieError>& error) {
    return error ? complaint(std::string("The ") + side + " frame cannot be had. " + error->message()) : std::string();
  };
  return lack("source", outcome.sourceFrameError) + lack("destination", outcome.destFrameError);
}

/// The finding is about the check's own frames, or about several where both movies have a length.
tl::expected<diagnosis::Finding, SideFailure> findingOf(const Side& source, const Side& dest,
                                                        check::CheckOutcome& outcome, const CheckOptions& options) {
  const std::vector<diagnosis::FrameTimes> times =
      options.frames > 1 ? diagnosis::spreadTimes(*source.movie, *dest.movie, options.frames)
                         : std::vector<diagnosis::FrameTimes>();
  if (!times.empty()) {
    const movie::Result<diagnosis::PicturePairs> pictures = diagnosis::picturesAt(*source.movie, *dest.movie, times);
    if (!pictures) return tl::unexpected(SideFailure{pictures.error().message(), pictures.error().file});
    return findingOn(*source.movie, *dest.movie, *pictures, {.tolerance = options.tolerance});
  }
  if (lacksFrame(outcome)) return diagnosis::unreadable({});
  diagnosis::PicturePairs pictures;
  pictures.source.push_back(std::move(*outcome.sourcePicture));
  pictures.dest.push_back(std::move(*outcome.destPicture));
  return findingOn(*source.movie, *dest.movie, pictures,
                   {.tolerance = options.tolerance, .knownDark = outcome.tooDark});
}

/// A check that was made, whatever it found.
struct Checked {
  check::RecordedReport report;
  check::CheckOutcome outcome;
  diagnosis::Finding finding;
};

tl::expected<std::unique_ptr<Checked>, SideFailure> checkedSides(const Side& source, const Side& dest,
                                                                 const CheckOptions& options) {
  auto checked = std::make_unique<Checked>();
  checked->outcome = check::runGammaCheck({*source.movie, *dest.movie, {source.time, dest.time}, {}}, checked->report);
  tl::expected<diagnosis::Finding, SideFailure> finding = findingOf(source, dest, checked->outcome, options);
  if (!finding) return tl::unexpected(finding.error());
  checked->finding = std::move(*finding);
  return checked;
}

/// Whether the pictures are the same, whatever their tags say.
bool showsTheSame(const diagnosis::Finding& finding) {
  return finding.identicalSamples || (isTold(finding) && finding.main().kind == diagnosis::CauseKind::Same);
}

/// Where the check is made after all. None where the frames are the same as it is, or nothing was to be looked for.
std::optional<scan::CounterpartTime> alignedTo(const Side& source, const Side& dest, const Checked& checked,
                                               const CheckOptions& options) {
  if (options.alignment == Alignment::AsTimesAre || checked.outcome.destFrameError) return std::nullopt;
  if (showsTheSame(checked.finding)) return std::nullopt;
  const auto found = scan::counterpartTime(*source.movie, *dest.movie, dest.time);
  if (!found) return std::nullopt;  // the check tells what cannot be had
  return *found;
}

std::optional<CheckAlignment> alignmentOf(const std::optional<scan::CounterpartTime>& aligned, const Side& dest) {
  if (!aligned) return std::nullopt;
  return CheckAlignment{aligned->result, movie::secondsOf(aligned->time) - movie::secondsOf(dest.time)};
}

std::string remarkOn(const std::optional<scan::CounterpartTime>& aligned) {
  using Result = scan::Counterpart::Result;
  if (!aligned || aligned->result == Result::Found) return {};
  return complaint(aligned->result == Result::Still
                       ? "The pictures do not move: where in the source this one is cannot be told."
                       : "The destination's picture was not found in the source within 10 seconds.");
}

CommandResult checkSides(Side source, const Side& dest, const CheckOptions& options, TextStyling styling) {
  auto checked = checkedSides(source, dest, options);
  if (!checked) return failureResult({checked.error()}, options.form);
  const auto aligned = alignedTo(source, dest, **checked, options);
  if (aligned && aligned->result == scan::Counterpart::Result::Found) {
    source.time = aligned->time;
    checked = checkedSides(source, dest, options);
    if (!checked) return failureResult({checked.error()}, options.form);
  }
  const auto& [report, outcome, finding] = **checked;

  CommandResult result;
  result.status = exitStatusOf(finding, finding.frames == 0, options.exitPolicy);
  result.err = remarkOn(aligned) + remarksOn(outcome);
  if (options.form == OutputForm::Text) {
    result.out =
        findingBlock(finding, {namedSide(*source.movie, source.time), namedSide(*dest.movie, dest.time)}, styling) +
        reportText(report.paragraphs(), styling);
  } else {
    result.out = textOf(checkJson({jsonOf(*source.movie, source.time), jsonOf(*dest.movie, dest.time), outcome, finding,
                                   report.paragraphs(), result.status, alignmentOf(aligned, dest)}));
  }
  return result;
}

}  // namespace

CommandResult runCheckCommand(const CheckOptions& options, TextStyling styling) {
  movie::preloadDecoder();
  auto opening = std::async(std::launch::async | std::launch::deferred,
                            [&] { return openSide(options.source, options.sourceTime); });
  const tl::expected<Side, SideFailure> dest = openSide(options.dest, options.destTime);
  tl::expected<Side, SideFailure> source = opening.get();

  std::vector<SideFailure> failures;
  if (!source) failures.push_back(source.error());
  if (!dest) failures.push_back(dest.error());
  if (!failures.empty()) return failureResult(failures, options.form);
  return checkSides(std::move(*source), *dest, options, styling);
}

int exitStatusOf(const diagnosis::Finding& finding, bool lacksFrame, ExitPolicy policy) {
  if (lacksFrame) return failure;
  const auto unlessZero = [&](int status) { return policy == ExitPolicy::ZeroUnlessFailed ? noShift : status; };
  if (finding.main().kind == diagnosis::CauseKind::Dark) return unlessZero(sourceTooDark);
  if (!diagnosis::isTold(finding)) return noVerdict;
  return diagnosis::isAllClear(finding) ? noShift : unlessZero(shiftFound);
}

}  // namespace cli
