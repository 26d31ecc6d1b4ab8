#include "diagnosis/words/FindingText.h"

#include <cmath>

#include "diagnosis/Advice.h"
#include "diagnosis/Diagnosis.h"
#include "diagnosis/KnownSettings.h"
#include "diagnosis/words/Words.h"

namespace diagnosis {
namespace {

void addSentence(std::string& text, const std::string& sentence) {
  if (sentence.empty()) return;
  if (!text.empty()) text += ' ';
  text += sentence;
}

// --- What was found
// -----------------------------------------------------------------------------------------------------

std::string powerVerdict(const Cause& cause, const Words& words) {
  const Interval interval = cause.exponentInterval.value_or(Interval());
  return words(
      cause.direction == Direction::Darker
          ? TR("FindingText", "Gamma shift: the destination is darker, by an exponent of %1 (%2 to %3).")
          : TR("FindingText", "Gamma shift: the destination is lighter, by an exponent of %1 (%2 to %3)."),
      {words.number(cause.exponent.value_or(1), 2), words.number(interval.low, 2), words.number(interval.high, 2)});
}

const char* rangeVerdict(const Cause& cause) {
  const bool compressed = cause.direction == Direction::Compressed;
  if (cause.where == Where::Flags) {
    return compressed ? TR("FindingText",
                           "Range error: the destination is marked as full range, but holds the source's video range "
                           "samples.")
                      : TR("FindingText",
                           "Range error: the destination is marked as video range, but holds the source's full range "
                           "samples.");
  }
  return compressed ? TR("FindingText",
                         "Range error: the destination's levels were compressed; its blacks are grey and its whites "
                         "dim.")
                    : TR("FindingText",
                         "Range error: the destination's levels were expanded; its shadows and highlights are cut "
                         "off.");
}

const char* matrixVerdict(const Cause& cause) {
  return cause.where == Where::Tags
             ? TR("FindingText",
                  "Matrix error: the destination names another Y'CbCr matrix than the one that its samples are in.")
             : TR("FindingText", "Matrix error: the destination's colors were converted with the wrong Y'CbCr matrix.");
}

std::string offsetClause(double offset, const Words& words) {
  const double codes = std::round(std::abs(offset));
  if (codes == 0) return {};
  const std::string number = words.number(codes, 0);
  if (codes == 1) return words(offset < 0 ? TR("FindingText", " minus 1 code") : TR("FindingText", " plus 1 code"));
  return words(offset < 0 ? TR("FindingText", " minus %1 codes") : TR("FindingText", " plus %1 codes"), {number});
}

std::string gainVerdict(const Cause& cause, const Words& words) {
  return words(cause.direction == Direction::Darker
                   ? TR("FindingText", "Brightness or contrast: the destination is darker, %1 times the source%2.")
                   : TR("FindingText", "Brightness or contrast: the destination is lighter, %1 times the source%2."),
               {words.number(cause.gain.value_or(1), 2), offsetClause(cause.offset.value_or(0), words)});
}

std::string verdictOf(const Cause& cause, const Words& words) {
  switch (cause.kind) {
    case CauseKind::Identical:
      return words(TR("FindingText", "Identical: the destination's samples are the source's."));
    case CauseKind::Same:
      return words(TR("FindingText", "The same: the destination renders as the source does."));
    case CauseKind::Power:
      return powerVerdict(cause, words);
    case CauseKind::Range:
      return words(rangeVerdict(cause));
    case CauseKind::Gain:
      return gainVerdict(cause, words);
    case CauseKind::Tone:
      return words(TR("FindingText",
                      "The tone differs: the destination was graded, or went through another transfer function."));
    case CauseKind::Matrix:
      return words(matrixVerdict(cause));
    case CauseKind::Different:
      return words(TR("FindingText", "No verdict: the two frames do not show the same picture."));
    case CauseKind::Dark:
      return words(TR("FindingText", "No verdict: the source frame is too dark."));
    case CauseKind::Unreadable:
      return words(TR("FindingText", "No verdict: there is too little in these frames to tell from."));
  }
  return {};
}

/// Of movies without a verdict; none otherwise.
std::string wholeMoviesVerdict(const Cause& main, const Words& words) {
  switch (main.kind) {
    case CauseKind::Different:
      return words(TR("FindingText", "No verdict: the movies do not show the same pictures."));
    case CauseKind::Dark:
      return words(TR("FindingText", "No verdict: the pictures are black, or of one color."));
    case CauseKind::Unreadable:
      return words(TR("FindingText", "No verdict: there is too little in the pictures to tell from."));
    default:
      return {};
  }
}

std::string mainVerdict(const Finding& finding, const Words& words) {
  const Cause& main = finding.main();
  if (std::string text = wholeMoviesVerdict(main, words); finding.wholeMovies && !text.empty()) return text;
  if (finding.inPlaces) {
    return words(TR("FindingText", "The tone differs in places: they were graded, or something lies over them."));
  }
  if (main.kind == CauseKind::Different && finding.frames > 1) {
    return words(TR("FindingText", "No verdict: the frames do not all show the same picture."));
  }
  return verdictOf(main, words);
}

std::string wholeVerdict(const Finding& finding, const Words& words) {
  if (finding.frames == 0) return words(TR("FindingText", "No verdict: a frame cannot be had."));
  const bool doubtful = !isTold(finding) && finding.action == Action::CannotTell;
  std::string text = mainVerdict(finding, words);
  if (doubtful) {
    text = words(TR("FindingText", "No verdict: it cannot be told surely what differs. The likeliest is: %1"), {text});
  }
  for (std::size_t i = 1; i < finding.causes.size(); ++i) addSentence(text, verdictOf(finding.causes[i], words));
  return text;
}

// --- What speaks for it
// -------------------------------------------------------------------------------------------------

std::string differenceSentence(const Finding& finding, const Words& words) {
  const Cause& main = finding.main();
  if (main.kind == CauseKind::Identical || !isTold(finding)) return {};
  const std::string difference = words.number(finding.difference, 1);
  if (main.kind == CauseKind::Same) {
    return words(
        finding.difference <= defaultTolerance
            ? TR("FindingText", "The pictures differ by %1 codes of 8 bits, which is what an encoder leaves.")
            : TR("FindingText", "The pictures differ by %1 codes of 8 bits, which is what the tolerance allows."),
        {difference});
  }
  // The one is a mean over samples, the other one over colors: it may be more where little of the difference is undone.
  if (main.residual >= finding.difference) {
    return words(TR("FindingText", "The pictures differ by %1 codes of 8 bits."), {difference});
  }
  return words(TR("FindingText", "The pictures differ by %1 codes of 8 bits; with that undone, by %2."),
               {difference, words.number(main.residual, 1)});
}

std::string placementSentence(const Correspondence& correspondence, const Words& words) {
  const Placement& placement = correspondence.placement;
  if (!correspondence.same || placement.isPlain()) return {};
  std::string how;
  const auto add = [&](const char* word) {
    how = how.empty() ? words(word) : words(TR("FindingText", "%1 and %2"), {how, words(word)});
  };
  if (placement.transposed) add(TR("FindingText", "turned"));
  if (placement.mirroredX || placement.mirroredY) add(TR("FindingText", "mirrored"));
  if (!(placement.dest == Region())) add(TR("FindingText", "set within bars"));
  if (!(placement.source == Region())) add(TR("FindingText", "cropped"));
  return words(
      TR("FindingText", "The destination's picture is %1; it was compared with the part of the source that it shows."),
      {how});
}

/// `one` for a single frame, else `several` with their number.
std::string ofFrames(int frames, const char* one, const char* several, const Words& words) {
  return frames == 1 ? words(one) : words(several, {words.number(frames, 0)});
}

std::string framesSentence(const Finding& finding, const Words& words) {
  if (finding.frames < 2) return {};
  if (finding.wholeMovies && finding.unmatchedFrames == finding.frames) {
    return words(TR("FindingText", "Nothing of the destination was found in the source."));
  }
  std::string text = words(TR("FindingText", "%1 frames were compared."), {words.number(finding.frames, 0)});
  if (finding.darkFrames > 0 && finding.wholeMovies) {
    addSentence(
        text,
        ofFrames(finding.darkFrames, TR("FindingText", "One of them is not measured: it is black, or of one color."),
                 TR("FindingText", "%1 of them are not measured: they are black, or of one color."), words));
  } else if (finding.darkFrames > 0) {
    addSentence(
        text,
        ofFrames(finding.darkFrames, TR("FindingText", "One of them is left out, since the source is too dark there."),
                 TR("FindingText", "%1 of them are left out, since the source is too dark there."), words));
  }
  if (finding.unmatchedFrames > 0) {
    addSentence(text,
                ofFrames(finding.unmatchedFrames, TR("FindingText", "One of them does not show the same picture."),
                         TR("FindingText", "%1 of them do not show the same picture."), words));
  }
  if (finding.differingFrames > 0) {
    addSentence(text, ofFrames(finding.differingFrames,
                               TR("FindingText",
                                  "One of them differs, and all together do not: this is about the one that differs "
                                  "most."),
                               TR("FindingText",
                                  "%1 of them differ, and all together do not: this is about the one that differs "
                                  "most."),
                               words));
  }
  return text;
}

std::string rangesSentence(const TagComparison& tags, const Words& words) {
  if (tags.source.range == tags.dest.range) return {};
  return words(tags.source.range == SampleRange::Full
                   ? TR("FindingText", "The source is in full range, the destination in video range.")
                   : TR("FindingText", "The source is in video range, the destination in full range."));
}

std::string tagsSentence(const TagComparison& tags, const Words& words) {
  std::string list;
  const auto add = [&](Comparison comparison, const char* name) {
    if (comparison == Comparison::Equal) return;
    std::string item = words(name);
    if (comparison == Comparison::Lost) item = words(TR("FindingText", "%1 (not in the destination)"), {item});
    if (comparison == Comparison::Added) item = words(TR("FindingText", "%1 (only in the destination)"), {item});
    list += (list.empty() ? "" : ", ") + item;
  };
  add(tags.gamma, TR("FindingText", "gamma"));
  add(tags.primaries, TR("FindingText", "primaries"));
  add(tags.transferFunction, TR("FindingText", "transfer function"));
  add(tags.matrix, TR("FindingText", "matrix"));
  add(tags.profile, TR("FindingText", "profile"));
  return list.empty() ? list : words(TR("FindingText", "Tags that differ: %1."), {list});
}

std::string whyOf(const Finding& finding, const Words& words) {
  std::string text = differenceSentence(finding, words);
  addSentence(text, placementSentence(finding.correspondence, words));
  addSentence(text, framesSentence(finding, words));
  addSentence(text, rangesSentence(finding.tags, words));
  addSentence(text, tagsSentence(finding.tags, words));
  return text;
}

// --- What to do
// ---------------------------------------------------------------------------------------------------------

std::string gammaText(double gamma, const Words& words) {
  return words.number(gamma, gamma == 1.96 ? 2 : 1);
}

std::string settingSentence(const KnownSetting& known, const Words& words) {
  switch (known.setting) {
    case Setting::Gammas:
      return words(
          TR("FindingText", "Such a number is usual where gammas of %1 and %2 are mixed up: look for that setting."),
          {gammaText(known.lower, words), gammaText(known.higher, words)});
    case Setting::SystemGamma:
      return words(TR("FindingText",
                      "Such a number is usual where HLG's system gamma of 1.2 was applied or left out: look for that "
                      "setting."));
    case Setting::DimSurround:
      return words(TR("FindingText",
                      "Such a number is usual where a picture is rendered for dim surroundings, by 1.25: look for that "
                      "setting."));
    case Setting::SetUp:
      return words(TR("FindingText",
                      "Such numbers are usual where NTSC's set-up of 7.5 % was added or taken away: look for that "
                      "setting."));
    case Setting::BlackAt16:
      return words(TR("FindingText",
                      "Such a number is usual where black at 16 and black at 0 are mixed up: look for that setting."));
    case Setting::FullAsVideo:
      return words(TR("FindingText",
                      "Such levels are usual where full range was written as video: look for a setting of data "
                      "levels."));
    case Setting::VideoAsFull:
      return words(
          TR("FindingText",
             "Such levels are usual where video range was taken for full: look for a setting of data levels."));
  }
  return {};
}

/// Which settings are likely to be behind a number.
std::string likelySettings(const Cause& cause, const Words& words) {
  const std::vector<KnownSetting> settings = settingsBehind(cause);
  if (settings.size() == 2 && settings[0].setting == Setting::Gammas && settings[1].setting == Setting::Gammas) {
    return words(TR("FindingText",
                    "Such a number is usual where gammas of %1 and %2, or of %3 and %4, are mixed up: look for these "
                    "settings."),
                 {gammaText(settings[0].lower, words), gammaText(settings[0].higher, words),
                  gammaText(settings[1].lower, words), gammaText(settings[1].higher, words)});
  }
  std::string text;
  for (const KnownSetting& each : settings) addSentence(text, settingSentence(each, words));
  return text;
}

std::string againAdvice(const Finding& finding, const Words& words) {
  const Cause& main = finding.main();
  if (finding.inPlaces) {
    return words(TR("FindingText", "Export again, without what was done to parts of the picture."));
  }
  switch (main.kind) {
    case CauseKind::Power:
      return words(TR("FindingText", "Export again, without a gamma conversion."));
    case CauseKind::Range:
      return words(TR("FindingText",
                      "Export again, and set the levels of input and output to the same: video (16 to 235), or full "
                      "with its flag."));
    case CauseKind::Matrix:
      return words(
          TR("FindingText", "Export again, with the color space of the source (601 or 709) for input and output."));
    case CauseKind::Gain:
      return words(TR("FindingText",
                      "Export again, without a change of brightness or contrast, and at a frame outside of fades."));
    default:
      return words(TR("FindingText",
                      "Export again, without grades, look-up tables or color management that the source did not "
                      "have."));
  }
}

/// Of movies without a verdict.
std::string wholeMoviesAdvice(const Finding& finding, const Words& words) {
  if (finding.main().kind == CauseKind::Different) {
    return words(TR("FindingText", "Compare a movie with the one that it was made from."));
  }
  return finding.action == Action::CannotTell
             ? words(TR("FindingText", "Look at both movies, and check single frames."))
             : words(TR("FindingText", "Compare movies with more in them."));
}

std::string exportAdvice(const Finding& finding, const Words& words) {
  std::string text = againAdvice(finding, words);
  if (!finding.inPlaces) addSentence(text, likelySettings(finding.main(), words));
  return text;
}

std::string adviceOf(const Finding& finding, const Words& words) {
  if (finding.frames == 0) {
    return words(TR("FindingText", "Choose another frame, or look into why this one cannot be had."));
  }
  const bool isTold = finding.action != Action::ChooseAnotherFrame && finding.action != Action::CannotTell;
  if (finding.wholeMovies && !isTold) return wholeMoviesAdvice(finding, words);
  switch (finding.action) {
    case Action::Nothing:
      return words(TR("FindingText", "Nothing is to be done."));
    case Action::Sync:
      return words(TR("FindingText",
                      "Sync the metadata: the samples are right, and the source has the tags that the destination "
                      "lacks."));
    case Action::TagDestination:
      return words(finding.main().where == Where::Flags
                       ? TR("FindingText",
                            "Set the destination's range flag right; its samples need no new encoding, and a sync does "
                            "not reach it.")
                       : TR("FindingText",
                            "Tag the destination as it is: copying the source's tags would not make them right."));
    case Action::ExportAgain:
      return exportAdvice(finding, words);
    case Action::ChooseAnotherFrame:
      if (finding.main().kind != CauseKind::Different) {
        return words(TR("FindingText", "Choose another frame, with more in it."));
      }
      return words(finding.frames > 1
                       ? TR("FindingText", "Compare movies that begin with the same picture and have the same cuts.")
                       : TR("FindingText", "Place both playheads at the same picture, or choose another frame."));
    case Action::CannotTell:
      return words(TR("FindingText", "Choose another frame, or compare several."));
  }
  return {};
}

}  // namespace

FindingText textOf(const Finding& finding, const Language& language) {
  const Words words(language);
  return {.verdict = wholeVerdict(finding, words), .why = whyOf(finding, words), .advice = adviceOf(finding, words)};
}

}  // namespace diagnosis
