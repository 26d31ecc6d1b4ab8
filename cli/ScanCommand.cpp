#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <signal.h>

#include "cli/Commands.h"
#include "cli/Process.h"
#include "cli/ScanBlock.h"
#include "cli/ScanFiles.h"
#include "cli/ScanJson.h"
#include "cli/remedy/ScanFilter.h"
#include "cli/remedy/ScanLut.h"
#include "cli/scan/ScanBar.h"
#include "cli/scan/ScanKeeping.h"
#include "movie/decode/DecoderModule.h"
#include "scan/Scan.h"

namespace cli {
namespace {

CommandResult failedScan(const std::vector<ScanProblem>& problems, OutputForm form) {
  CommandResult result;
  result.status = failure;
  for (const ScanProblem& each : problems) result.err += complaint(each.message);
  if (form == OutputForm::Json) {
    result.out = textOf(scanErrorJson(problems.front().message, problems.front().path, result.status));
  }
  return result;
}

/// Both movies, opened, and how their files were then.
struct ScanSides {
  std::unique_ptr<movie::Movie> source, dest;
  FileState sourceFile, destFile;
};

/// Whether somebody is still writing: only what was there at the beginning is read.
std::vector<ScanProblem> changedSides(const ScanSides& sides, const ScanOptions& options) {
  std::vector<ScanProblem> changed;
  for (const auto& [path, then] : {std::pair(options.source, sides.sourceFile), {options.dest, sides.destFile}}) {
    const std::uint64_t now = stateOf(path).bytes;
    if (now > then.bytes)
      changed.push_back({path + ": The file grew while it was read: scan it again when it is whole.", path});
    if (now < then.bytes) changed.push_back({path + ": The file became shorter while it was read.", path});
  }
  return changed;
}

tl::expected<ScanSides, std::vector<ScanProblem>> openSides(const ScanOptions& options) {
  const FileState sourceFile = stateOf(options.source), destFile = stateOf(options.dest);
  auto opening = std::async(std::launch::async | std::launch::deferred,
                            [&] { return movie::Movie::movieWithFile(options.source); });
  auto dest = movie::Movie::movieWithFile(options.dest);
  auto source = opening.get();
  std::vector<ScanProblem> problems;
  if (!source) problems.push_back({source.error().message(), options.source});
  if (!dest) problems.push_back({dest.error().message(), options.dest});
  if (!problems.empty()) return tl::unexpected(problems);
  return ScanSides{std::move(*source), std::move(*dest), sourceFile, destFile};
}

tl::expected<scan::ScanOptions, ScanProblem> placed(const ScanOptions& options, const movie::Movie& dest) {
  scan::ScanOptions result;
  result.align = options.alignment == Alignment::Found;
  result.every = options.every;
  for (const auto& [given, time] : {std::pair(&options.from, &result.from), std::pair(&options.to, &result.to)}) {
    if (!*given) continue;
    const auto inMovie = timeInMovie(**given, dest);
    if (!inMovie) return tl::unexpected(ScanProblem{inMovie.error(), options.dest});
    *time = movie::secondsOf(*inMovie);
    // A timecode's time is cut to the movie's units: the frame that begins within one is meant.
    if (time == &result.from) **time += std::min(0.001, 1.0 / inMovie->scale);
  }
  if (result.from && result.to && *result.from >= *result.to) {
    return tl::unexpected(ScanProblem{"The end of what is to be scanned does not come after its beginning.", {}});
  }
  return result;
}

std::string scanText(const ScanDocument& document, TextStyling styling) {
  std::string text = scanBlock(document.result, document.rows, document.source, document.dest, styling);
  if (const auto& filter = document.filter) {
    text += "Filter: " + (filter->why.empty() ? filter->filter : "none. " + filter->why) + "\n";
  }
  if (document.lut) text += lutLine(*document.lut);
  if (document.proof) text += proofLine(*document.proof, frameClock(document.dest, *document.rows.dest));
  return text;
}

/// Shows how far it is, until somebody interrupts it.
scan::OnProgress shownOn(ScanBar& bar) {
  return [&bar](const scan::ScanProgress& progress) {
    bar.show(progress);
    return NotedInterrupts::signal() != 0;
  };
}

int statusOfSignal() {
  constexpr int signalBase = interrupted - SIGINT;
  return signalBase + NotedInterrupts::signal();
}

/// What is to be said of those that cannot be written; the document then says so, too.
std::string writeFiles(ScanFiles& files, ScanKeeping& keeping, ScanDocument& document) {
  std::string err;
  std::vector<ScanProblem> unwritten = files.write(document);
  if (const auto problem = keeping.finish()) unwritten.push_back(*problem);
  for (const ScanProblem& each : unwritten) {
    err += complaint(each.message);
    document.exitStatus = failure;
    if (document.lut && document.lut->path == each.path) document.lut->why = each.message;
  }
  ScanBar bar;
  document.proof = files.makeProof(document, shownOn(bar));
  if (document.proof && document.proof->failed) {
    err += complaint(document.proof->why);
    document.exitStatus = failure;
  }
  if (NotedInterrupts::signal() != 0) document.exitStatus = statusOfSignal();
  return err;
}

int statusOfScan(const scan::ScanResult& result, ExitPolicy policy) {
  if (NotedInterrupts::signal() != 0) return statusOfSignal();
  if (result.failure) return failure;
  return exitStatusOf(result.finding, false, policy);
}

}  // namespace

CommandResult runScanCommand(const ScanOptions& options, TextStyling styling) {
  movie::preloadDecoder();
  const auto sides = openSides(options);
  if (!sides) return failedScan(sides.error(), options.form);
  const auto asked = placed(options, *sides->dest);
  if (!asked) return failedScan({asked.error()}, options.form);
  const movie::Result<scan::MoviePair> rows = scan::pairOf(*sides->source, *sides->dest);
  if (!rows) return failedScan({{rows.error().message(), rows.error().file}}, options.form);
  const NotedInterrupts interrupts;  // from here on there are files to clean up
  auto files = ScanFiles::of(options);
  if (!files) return failedScan({files.error()}, options.form);
  auto keeping = ScanKeeping::of(options.resume, {*rows, *asked, sides->sourceFile, sides->destFile});
  if (!keeping) return failedScan({keeping.error()}, options.form);

  scan::ScanResult found;
  {
    ScanBar bar;
    found = scan::scanned(*rows->source, *rows->dest, rows->tags(), *asked, shownOn(bar), keeping->keeper());
  }
  ScanDocument document{*sides->source, *sides->dest, *rows, found};
  document.exitStatus = statusOfScan(found, options.exitPolicy);
  if (options.filter) document.filter = scanFilter(found, rows->tags(), *rows->dest);
  if (options.lut) document.lut = scanLut(found, rows->tags(), *options.lut);
  std::string err = writeFiles(*files, *keeping, document);
  for (const ScanProblem& each : changedSides(*sides, options)) err += complaint(each.message);
  if (found.failure) err += complaint(found.failure->error.message());
  return {options.form == OutputForm::Text ? scanText(document, styling) : textOf(scanJson(document)), err,
          document.exitStatus};
}

}  // namespace cli
