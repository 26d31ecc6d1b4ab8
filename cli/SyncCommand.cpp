#include <filesystem>
#include <memory>
#include <vector>

#include <nlohmann/json.hpp>
#include <signal.h>
#include <sys/stat.h>

#include "check/MetadataSync.h"
#include "cli/ColorText.h"
#include "cli/Commands.h"
#include "cli/MovieJson.h"
#include "cli/Process.h"
#include "movie/Movie.h"

namespace cli {
namespace {

using check::ColorProperty;
using check::PropertyChange;
using check::PropertyEdit;

/// A colour property in words and in documents.
struct PropertyWords {
  const char* key;    ///< as in the objects of `info`
  const char* title;  ///< in a sentence
  std::string (*text)(const movie::ImageDescription&);
  JsonValue (*json)(const movie::ImageDescription&);
};

const PropertyWords& wordsOf(ColorProperty property) {
  using Description = const movie::ImageDescription&;
  static const PropertyWords words[] = {
      // In the order of ColorProperty.
      {"gamma", "gamma level", [](Description of) { return gammaText(of.gamma()); },
       [](Description of) { return gammaJson(of.gamma()); }},
      {"color", "color parameters", [](Description of) { return colorText(of.nclc()); },
       [](Description of) { return colorJson(of.nclc()); }},
      {"profile", "ICC profile", [](Description of) { return profileText(of.iccProfile()); },
       [](Description of) { return profileJson(of.iccProfile()); }},
  };
  return words[static_cast<std::size_t>(property)];
}

/// A sync on its way to a result.
struct Job {
  SyncOptions options;
  std::unique_ptr<movie::Movie> source, dest;
  check::SyncOutcome outcome;
  std::vector<PropertyChange> changes;  ///< without the removal of what is not there
  std::vector<std::string> complaints;
  std::optional<std::string> savedAs;
  std::vector<std::string> notes;  ///< on a save that stands
  int endedBy = 0;                 ///< the signal that cut the work short
  bool uncertain = false;

  bool changesAnything() const { return outcome.before && outcome.before->bytes() != outcome.after->bytes(); }
};

/// Why a change did not come about; empty when it did.
std::string problemOf(const PropertyChange& change) {
  if (change.result == movie::noErr) return {};
  const std::string title = wordsOf(change.property).title;
  if (change.edit == PropertyEdit::Remove)
    return "The source has no " + title + ", and the destination's could not be removed: it is still there.";
  return "The " + title + " could not be set (error " + std::to_string(change.result) + "); nothing was changed.";
}

bool open(Job& job) {
  auto source = movie::Movie::movieWithFile(job.options.source);
  auto dest = movie::Movie::movieWithFile(job.options.dest);
  if (!source) job.complaints.push_back(source.error().message());
  if (!dest) job.complaints.push_back(dest.error().message());
  if (!source || !dest) return false;
  job.source = std::move(*source);
  job.dest = std::move(*dest);
  return true;
}

bool sync(Job& job) {
  job.outcome = check::syncMetadata(*job.source, *job.dest);
  if (!job.outcome.before) {
    const bool lacking = job.source->tracksOfMediaType(movie::videoMedia).empty();
    job.complaints.push_back((lacking ? job.options.source : job.options.dest) + ": The movie has no video track.");
    return false;
  }
  for (const PropertyChange& change : job.outcome.changes) {
    const bool wasThere = !wordsOf(change.property).json(*job.outcome.before).is_null();
    if (change.edit == PropertyEdit::Remove && !wasThere) continue;
    job.changes.push_back(change);
    if (std::string problem = problemOf(change); !problem.empty()) job.complaints.push_back(std::move(problem));
  }
  return job.outcome.writtenBack;
}

std::optional<std::string> refusalOfTarget(const std::string& target) {
  struct stat status {};
  if (::lstat(target.c_str(), &status) == 0) {
    return target + ": There is something of that name already, and it is not overwritten.";
  }
  const std::filesystem::path path(target);
  const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
  if (path.has_filename() && ::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return std::nullopt;
  return target + ": There is no such folder.";
}

/// Why no save would begin, as far as that can be told without writing.
std::optional<std::string> refusalOf(const Job& job) {
  if (job.options.saveAs) return refusalOfTarget(*job.options.saveAs);
  if (!job.changesAnything()) return std::nullopt;
  const auto possible = job.dest->canUpdateMovieFile();
  if (possible) return std::nullopt;
  return possible.error().message(movie::Attempt::Save);
}

void saveCopy(Job& job) {
  const std::string& target = *job.options.saveAs;
  const NotedInterrupts interrupts;
  const auto written =
      job.dest->writeToFile(target, [](std::uint64_t, std::uint64_t) { return NotedInterrupts::signal() == 0; });
  if (written) {
    job.savedAs = target;
    return;
  }
  job.endedBy = NotedInterrupts::signal();
  job.complaints.push_back(written.error().message(movie::Attempt::Save));
}

/// A signal that comes meanwhile changes nothing: a save that was begun is brought to its end, which is told.
void saveInPlace(Job& job) {
  if (!job.changesAnything()) return;
  const NotedInterrupts interrupts;
  const auto saved = job.dest->updateMovieFile();
  if (!saved) return job.complaints.push_back(saved.error().message(movie::Attempt::Save));
  job.savedAs = job.options.dest;
  for (const std::string& note : saved->notes) job.notes.push_back(note);
  if (saved->uncertain) job.uncertain = true;
}

/// A dry run is refused what the save would be refused.
void save(Job& job) {
  if (const auto refusal = refusalOf(job)) return job.complaints.push_back(*refusal);
  if (job.options.mode == SyncMode::Save) job.options.saveAs ? saveCopy(job) : saveInPlace(job);
}

int statusOf(const Job& job) {
  constexpr int signalBase = interrupted - SIGINT;
  if (job.endedBy != 0) return signalBase + job.endedBy;
  return job.complaints.empty() && !job.uncertain ? noShift : failure;
}

std::string jobText(const Job& job) {
  std::string text;
  for (const PropertyChange& change : job.changes) {
    if (change.result != movie::noErr) continue;
    const PropertyWords& words = wordsOf(change.property);
    text += std::string(words.key) + ": " + words.text(*job.outcome.before) + " -> " + words.text(*job.outcome.after) +
            "\n";
  }
  if (text.empty()) text = "Nothing to change.\n";
  if (job.savedAs) return text + "Saved: " + *job.savedAs + "\n";
  if (!job.changesAnything() && !job.options.saveAs) return text;
  return text + (job.options.mode == SyncMode::DryRun ? "Not saved: this was a dry run.\n" : "Not saved.\n");
}

JsonValue jobJson(const Job& job, int status) {
  JsonValue document{{"schema", "lumacheck.sync/1"}, {"source", job.options.source}, {"dest", job.options.dest}};
  document["changes"] = JsonValue::array();
  for (const PropertyChange& change : job.changes) {
    const std::string problem = problemOf(change);
    const PropertyWords& words = wordsOf(change.property);
    document["changes"].push_back({{"property", words.key},
                                   {"action", change.edit == PropertyEdit::Set ? "set" : "remove"},
                                   {"before", words.json(*job.outcome.before)},
                                   {"after", words.json(*job.outcome.after)},
                                   {"error", problem.empty() ? JsonValue() : JsonValue(problem)}});
  }
  document["saved"] = job.savedAs.has_value();
  document["path"] = job.savedAs ? JsonValue(*job.savedAs) : JsonValue();
  document["exitStatus"] = status;
  return document;
}

}  // namespace

CommandResult runSyncCommand(const SyncOptions& options) {
  Job job;
  job.options = options;
  const bool synced = open(job) && sync(job);
  if (synced) save(job);

  CommandResult result;
  for (const std::string& each : job.complaints) result.err += complaint(each);
  for (const std::string& each : job.notes) result.err += complaint(each);
  result.status = statusOf(job);
  if (options.form == OutputForm::Json) {
    result.out = textOf(jobJson(job, result.status));
  } else if (synced) {
    result.out = jobText(job);
  }
  return result;
}

}  // namespace cli
