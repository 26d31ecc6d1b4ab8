#include "diagnosis/FindingText.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "diagnosis/Advice.h"
#include "diagnosis/Diagnosis.h"

namespace diagnosis {
namespace {

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...) {
  char text[400];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

void addSentence(std::string& text, const std::string& sentence) {
  if (sentence.empty()) return;
  if (!text.empty()) text += ' ';
  text += sentence;
}

// --- What was found
// -------------------------------------------------------------------------------------------------------

std::string powerVerdict(const Cause& cause) {
  return formatted("Gamma shift: the destination is %s, by an exponent of %.2f (%.2f to %.2f).",
                   cause.direction == Direction::Darker ? "darker" : "lighter", cause.exponent.value_or(1),
                   cause.exponentInterval.value_or(Interval()).low, cause.exponentInterval.value_or(Interval()).high);
}

std::string rangeVerdict(const Cause& cause) {
  const bool compressed = cause.direction == Direction::Compressed;
  if (cause.where == Where::Flags) {
    return compressed
               ? "Range error: the destination is marked as full range, but holds the source's video range samples."
               : "Range error: the destination is marked as video range, but holds the source's full range samples.";
  }
  return compressed ? "Range error: the destination's levels were compressed; its blacks are grey and its whites dim."
                    : "Range error: the destination's levels were expanded; its shadows and highlights are cut off.";
}

std::string matrixVerdict(const Cause& cause) {
  return cause.where == Where::Tags
             ? "Matrix error: the destination names another Y'CbCr matrix than the one that its samples are in."
             : "Matrix error: the destination's colors were converted with the wrong Y'CbCr matrix.";
}

std::string gainVerdict(const Cause& cause) {
  std::string text = formatted("Brightness or contrast: the destination is %s, %.2f times the source",
                               cause.direction == Direction::Darker ? "darker" : "lighter", cause.gain.value_or(1));
  const long offset = std::lround(cause.offset.value_or(0));
  if (offset == 0) return text + ".";
  return text + formatted(" %s %ld %s.", offset < 0 ? "minus" : "plus", std::labs(offset),
                          std::labs(offset) == 1 ? "code" : "codes");
}

std::string verdictOf(const Cause& cause) {
  switch (cause.kind) {
    case CauseKind::Identical:
      return "Identical: the destination's samples are the source's.";
    case CauseKind::Same:
      return "The same: the destination renders as the source does.";
    case CauseKind::Power:
      return powerVerdict(cause);
    case CauseKind::Range:
      return rangeVerdict(cause);
    case CauseKind::Gain:
      return gainVerdict(cause);
    case CauseKind::Tone:
      return "The tone differs: the destination was graded, or went through another transfer function.";
    case CauseKind::Matrix:
      return matrixVerdict(cause);
    case CauseKind::Different:
      return "No verdict: the two frames do not show the same picture.";
    case CauseKind::Dark:
      return "No verdict: the source frame is too dark.";
    case CauseKind::Unreadable:
      return "No verdict: there is too little in these frames to tell from.";
  }
  return {};
}

std::string mainVerdict(const Finding& finding) {
  const Cause& main = finding.main();
  if (finding.inPlaces) return "The tone differs in places: they were graded, or something lies over them.";
  if (main.kind == CauseKind::Different && finding.frames > 1) {
    return "No verdict: the frames do not all show the same picture.";
  }
  return verdictOf(main);
}

std::string verdictSentences(const Finding& finding) {
  if (finding.frames == 0) return "No verdict: a frame cannot be had.";
  std::string text;
  if (!isTold(finding) && finding.action == Action::CannotTell) {
    text = "No verdict: it cannot be told surely what differs. The likeliest is: ";
  }
  text += mainVerdict(finding);
  for (std::size_t i = 1; i < finding.causes.size(); ++i) addSentence(text, verdictOf(finding.causes[i]));
  return text;
}

// --- What speaks for it
// ---------------------------------------------------------------------------------------------------

const char* sideOfRange(SampleRange range) {
  return range == SampleRange::Full ? "full" : "video";
}

std::string placementSentence(const Correspondence& correspondence) {
  const Placement& placement = correspondence.placement;
  if (!correspondence.same || placement.isPlain()) return {};
  std::string how;
  const auto add = [&](const char* word) { how += (how.empty() ? "" : " and ") + std::string(word); };
  if (placement.transposed) add("turned");
  if (placement.mirroredX || placement.mirroredY) add("mirrored");
  if (!(placement.dest == Region())) add("set within bars");
  if (!(placement.source == Region())) add("cropped");
  return "The destination's picture is " + how + "; it was compared with the part of the source that it shows.";
}

/// "One of them differs", "2 of them differ".
std::string countOf(int frames, const char* one, const char* several) {
  return frames == 1 ? std::string("One of them ") + one : formatted("%d of them %s", frames, several);
}

std::string framesSentence(const Finding& finding) {
  if (finding.frames < 2) return {};
  std::string text = formatted("%d frames were compared.", finding.frames);
  if (finding.darkFrames > 0) {
    addSentence(text, countOf(finding.darkFrames, "is", "are") + " left out, since the source is too dark there.");
  }
  if (finding.unmatchedFrames > 0) {
    addSentence(text, countOf(finding.unmatchedFrames, "does", "do") + " not show the same picture.");
  }
  if (finding.differingFrames > 0) {
    addSentence(text, countOf(finding.differingFrames, "differs", "differ") +
                          ", and all together do not: this is about the one that differs most.");
  }
  return text;
}

std::string differenceSentence(const Finding& finding) {
  const Cause& main = finding.main();
  if (main.kind == CauseKind::Identical || !isTold(finding)) return {};
  if (main.kind == CauseKind::Same) {
    return formatted("The pictures differ by %.1f codes of 8 bits, which is what %s.", finding.difference,
                     finding.difference <= defaultTolerance ? "an encoder leaves" : "the tolerance allows");
  }
  // The one is a mean over samples, the other one over colors: it may be more where little of the difference is undone.
  if (main.residual >= finding.difference) {
    return formatted("The pictures differ by %.1f codes of 8 bits.", finding.difference);
  }
  return formatted("The pictures differ by %.1f codes of 8 bits; with that undone, by %.1f.", finding.difference,
                   main.residual);
}

std::string rangesSentence(const TagComparison& tags) {
  if (tags.source.range == tags.dest.range) return {};
  return formatted("The source is in %s range, the destination in %s range.", sideOfRange(tags.source.range),
                   sideOfRange(tags.dest.range));
}

void addTag(std::string& list, Comparison comparison, const char* name) {
  if (comparison == Comparison::Equal) return;
  if (!list.empty()) list += ", ";
  list += name;
  if (comparison == Comparison::Lost) list += " (not in the destination)";
  if (comparison == Comparison::Added) list += " (only in the destination)";
}

std::string tagsSentence(const TagComparison& tags) {
  std::string list;
  addTag(list, tags.gamma, "gamma");
  addTag(list, tags.primaries, "primaries");
  addTag(list, tags.transferFunction, "transfer function");
  addTag(list, tags.matrix, "matrix");
  addTag(list, tags.profile, "profile");
  return list.empty() ? std::string() : "Tags that differ: " + list + ".";
}

std::string whyOf(const Finding& finding) {
  std::string text = differenceSentence(finding);
  addSentence(text, placementSentence(finding.correspondence));
  addSentence(text, framesSentence(finding));
  addSentence(text, rangesSentence(finding.tags));
  addSentence(text, tagsSentence(finding.tags));
  return text;
}

// --- What to do
// -----------------------------------------------------------------------------------------------------------

/// Display gammas that are mixed up often, and so the exponents that come of it.
std::string usualExponent(double exponent) {
  struct Gammas {
    double lower, higher;
  };
  constexpr Gammas usual[] = {{1.8, 2.2}, {1.96, 2.2}, {1.96, 2.4}, {2.2, 2.4}, {2.2, 2.6}, {2.4, 2.6}};
  constexpr double reach = 0.012;
  for (const auto& [lower, higher] : usual) {
    if (std::abs(exponent - higher / lower) > reach && std::abs(exponent - lower / higher) > reach) continue;
    return formatted("Such a number is usual where gammas of %.4g and %.4g are mixed up: look for that setting.", lower,
                     higher);
  }
  return {};
}

std::string exportAdvice(const Finding& finding) {
  const Cause& main = finding.main();
  if (finding.inPlaces) return "Export again, without what was done to parts of the picture.";
  switch (main.kind) {
    case CauseKind::Power: {
      std::string text = "Export again, without a gamma conversion.";
      addSentence(text, usualExponent(main.exponent.value_or(1)));
      return text;
    }
    case CauseKind::Range:
      return "Export again, and set the levels of input and output to the same: video (16 to 235), or full with its "
             "flag.";
    case CauseKind::Matrix:
      return "Export again, with the color space of the source (601 or 709) for input and output.";
    case CauseKind::Gain:
      return "Export again, without a change of brightness or contrast, and at a frame outside of fades.";
    default:
      return "Export again, without grades, look-up tables or color management that the source did not have.";
  }
}

std::string adviceOf(const Finding& finding) {
  switch (finding.action) {
    case Action::Nothing:
      return "Nothing is to be done.";
    case Action::Sync:
      return "Sync the metadata: the samples are right, and the source has the tags that the destination lacks.";
    case Action::TagDestination:
      return finding.main().where == Where::Flags
                 ? "Set the destination's range flag right; its samples need no new encoding, and a sync does not "
                   "reach it."
                 : "Tag the destination as it is: copying the source's tags would not make them right.";
    case Action::ExportAgain:
      return exportAdvice(finding);
    case Action::ChooseAnotherFrame:
      if (finding.main().kind != CauseKind::Different) return "Choose another frame, with more in it.";
      return finding.frames > 1 ? "Compare movies that begin with the same picture and have the same cuts."
                                : "Place both playheads at the same picture, or choose another frame.";
    case Action::CannotTell:
      return "Choose another frame, or compare several.";
  }
  return {};
}

}  // namespace

FindingText textOf(const Finding& finding) {
  FindingText text;
  text.verdict = verdictSentences(finding);
  text.why = whyOf(finding);
  text.advice =
      finding.frames == 0 ? "Choose another frame, or look into why this one cannot be had." : adviceOf(finding);
  return text;
}

}  // namespace diagnosis
