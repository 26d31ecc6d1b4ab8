#include "cli/ScanFiles.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/picture/PictureFile.h"
#include "cli/plot/ScanPlot.h"
#include "cli/scan/ScanCsv.h"
#include "cli/scan/ScanProblem.h"
#include "system/ReplacementFile.h"

namespace cli {

/// One of them, and what goes into it: bytes, or nothing, and then there is no file; or a sentence why not.
struct ScanFiles::File {
  using Content = std::function<tl::expected<std::optional<std::string>, std::string>(const ScanDocument&)>;
  sys::ReplacementFile place;
  std::string what;  ///< it is, at the beginning of a sentence
  Content content;
};

namespace {

std::string fileNameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

tl::expected<std::string, std::string> plotOf(const ScanDocument& document, const PictureFile& file) {
  const scan::MoviePair& rows = document.rows;
  const ScanClocks clocks{frameClock(document.source, *rows.source), frameClock(document.dest, *rows.dest)};
  const ScanSubject subject{fileNameOf(document.source.path()), fileNameOf(document.dest.path()), *rows.dest, clocks};
  const PlotGround ground = file.isPixels() ? PlotGround::Page : PlotGround::Screen;
  return file.bytesOf(scanPlot(document.result, subject, ground));
}

sys::Result<void> published(sys::ReplacementFile& file, const std::string& bytes) {
  TRY(file.write(0, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
  return file.publish();
}

/// Two results that would go to one file.
std::optional<ScanProblem> sharedFile(const ScanOptions& options) {
  std::vector<std::string> paths;
  for (const auto* const each : {&options.csv, &options.plot, &options.lut, &options.proof, &options.resume}) {
    if (!*each) continue;
    const bool isTaken = std::any_of(paths.begin(), paths.end(), [&](const std::string& other) {
      std::error_code none;
      return other == **each || std::filesystem::equivalent(other, **each, none);
    });
    if (isTaken) return ScanProblem{**each + ": Two results cannot go to one file.", **each};
    paths.push_back(**each);
  }
  return std::nullopt;
}

}  // namespace

ScanFiles::ScanFiles() = default;
ScanFiles::ScanFiles(ScanFiles&&) noexcept = default;
ScanFiles::~ScanFiles() = default;

tl::expected<ScanFiles, ScanProblem> ScanFiles::of(const ScanOptions& options) {
  if (const auto problem = sharedFile(options)) return tl::unexpected(*problem);
  ScanFiles files;
  const auto add = [&](const std::string& path, const char* what,
                       File::Content content) -> tl::expected<void, ScanProblem> {
    TRY(sys::ReplacementFile place, placeFor(path, what, {options.source, options.dest}));
    files.files_.push_back({std::move(place), what, std::move(content)});
    return {};
  };
  if (options.csv) {
    const auto toldTable = [](const ScanDocument& document) { return scanCsv(document.result, document.rows); };
    TRY(add(*options.csv, "The table", toldTable));
  }
  if (options.plot) {
    const auto form = PictureFile::named(*options.plot);
    if (!form) return tl::unexpected(ScanProblem{*options.plot + ": " + form.error(), *options.plot});
    const auto drawn = [file = *form](const ScanDocument& document) { return plotOf(document, file); };
    TRY(add(*options.plot, "The picture", drawn));
  }
  if (options.lut) {
    if (!hasEnding(*options.lut, ".cube")) {
      return tl::unexpected(ScanProblem{*options.lut + ": A lookup table is a .cube file.", *options.lut});
    }
    const auto table = [](const ScanDocument& document) -> std::optional<std::string> {
      if (!document.lut->why.empty()) return std::nullopt;
      return lutText(*document.lut);
    };
    TRY(add(*options.lut, "The table", table));
  }
  if (options.proof) {
    TRY(ProofFile proof, ProofFile::at(*options.proof, {options.source, options.dest}));
    files.proof_.emplace(std::move(proof));
  }
  return files;
}

std::optional<ScanProof> ScanFiles::makeProof(const ScanDocument& document, const scan::OnProgress& onProgress) {
  if (!proof_) return std::nullopt;
  return proof_->made(document.source, document.dest, document.rows, document.result, onProgress);
}

std::vector<ScanProblem> ScanFiles::write(const ScanDocument& document) {
  std::vector<ScanProblem> problems;
  for (File& file : files_) {
    const std::string& path = file.place.path();
    const auto content = file.content(document);
    if (!content) {
      problems.push_back({path + ": " + content.error(), path});
    } else if (!*content) {
      continue;
    } else if (const auto written = published(file.place, **content); !written) {
      problems.push_back(unwritable(path, file.what, written.error()));
    }
  }
  return problems;
}

}  // namespace cli
