#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/ReportText.h"
#include "cli/TimeArgument.h"
#include "diagnosis/Diagnosis.h"

namespace cli {

/// What the command exits with.
enum ExitStatus : int {
  noShift = 0,        ///< also: done
  shiftFound = 1,     ///< in pixels or in metadata
  failure = 2,        ///< usage, or a file or frame that cannot be read
  sourceTooDark = 3,  ///< no verdict on this frame
  noVerdict = 4,      ///< frames of different pictures, or nothing that can be told surely
  interrupted = 130   ///< by SIGINT; another signal that was noted gives 128 and its number, as shells tell it
};

/// What a command has to say: data for stdout, sentences for stderr, and the exit status. Bytes as they are written.
struct CommandResult {
  std::string out, err;
  int status = noShift;
};

/// A sentence for stderr, ended as a line.
inline std::string complaint(const std::string& sentence) {
  return "lumacheck: " + sentence + "\n";
}

// What each subcommand is given. Paths are raw bytes.

enum class OutputForm { Text, Json };
enum class ExitPolicy { ByVerdict, ZeroUnlessFailed };
enum class SyncMode { Save, DryRun };

/// Whether a frame of the destination is compared with the frame of the source that shows the same, or with the one at
/// the time that is given.
enum class Alignment { Found, AsTimesAre };

struct CheckOptions {
  std::string source, dest;
  std::optional<TimeArgument> sourceTime, destTime;  ///< none: the beginning
  Alignment alignment = Alignment::AsTimesAre;
  int frames = 1;  ///< pairs that the finding is about: more than one are spread over the length
  double tolerance = diagnosis::defaultTolerance;
  OutputForm form = OutputForm::Text;
  ExitPolicy exitPolicy = ExitPolicy::ByVerdict;
};

struct InfoOptions {
  std::vector<std::string> files;
  OutputForm form = OutputForm::Text;
};

struct SyncOptions {
  std::string source, dest;
  std::optional<std::string> saveAs;  ///< a flattened copy there instead of the destination itself
  SyncMode mode = SyncMode::Save;
  OutputForm form = OutputForm::Text;
};

struct ScanOptions {
  std::string source, dest;
  std::optional<TimeArgument> from, to;  ///< of the destination; none: its beginning, its end
  std::size_t every = 1;                 ///< every so many-th frame of the destination is compared
  Alignment alignment = Alignment::Found;
  std::optional<std::string> csv;     ///< a line a frame there
  bool filter = false;                ///< tell which filter of ffmpeg undoes what was found
  std::optional<std::string> plot;    ///< a picture there, by its name as SVG or PNG
  std::optional<std::string> resume;  ///< kept there while it goes on, and gone on with
  std::optional<std::string> lut;     ///< a lookup table there that undoes what was found
  std::optional<std::string> proof;   ///< a movie there: some of the destination, with that undone
  OutputForm form = OutputForm::Text;
  ExitPolicy exitPolicy = ExitPolicy::ByVerdict;
};

struct WindowOptions {
  std::vector<std::string> files;  ///< at most two
};

/// `lumacheck check`: opens both movies and runs the check on them.
CommandResult runCheckCommand(const CheckOptions& options, TextStyling styling);

/// The exit status that a finding stands for. `lacksFrame`: a frame could not be had.
int exitStatusOf(const diagnosis::Finding& finding, bool lacksFrame, ExitPolicy policy);

/// `lumacheck info`: what the first image description of each file's first video track says. A file that cannot be read
/// does not stop the rest. Never loads the decoder module.
CommandResult runInfoCommand(const InfoOptions& options);

/// `lumacheck sync`: copies the source's colour metadata onto the destination and saves it. Examines every result: what
/// is refused, failed or incomplete is said on stderr, with status 2.
CommandResult runSyncCommand(const SyncOptions& options);

/// `lumacheck scan`: goes through both movies, and tells how the one lies upon the other and where it differs. A bar on
/// stderr where that is a terminal. An interrupt ends it with what was found until then.
CommandResult runScanCommand(const ScanOptions& options, TextStyling styling);

/// `lumacheck [FILE [FILE]]`: becomes the program Lumacheck, which lies beside this one, with the files. Returns only
/// when that cannot be done, or when a file is not there.
CommandResult runWindowCommand(const WindowOptions& options);

}  // namespace cli
