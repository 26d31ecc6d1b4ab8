#include "diagnosis/words/CauseWords.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace diagnosis {
namespace {

struct CauseWord {
  CauseKind kind;
  std::optional<Direction> direction;  ///< of that alone; else of any
  const char* english;
};

// The first that fits. Translated as the words of the window's ScanWords.
constexpr CauseWord causeWordTable[] = {
    {CauseKind::Identical, {}, TR("ScanWords", "identical")},
    {CauseKind::Same, {}, TR("ScanWords", "the same")},
    {CauseKind::Power, {}, TR("ScanWords", "gamma shift, exponent %1")},
    {CauseKind::Range, Direction::Compressed, TR("ScanWords", "range compressed")},
    {CauseKind::Range, {}, TR("ScanWords", "range expanded")},
    {CauseKind::Gain, Direction::Darker, TR("ScanWords", "brightness or contrast, darker")},
    {CauseKind::Gain, {}, TR("ScanWords", "brightness or contrast, lighter")},
    {CauseKind::Tone, {}, TR("ScanWords", "another tone")},
    {CauseKind::Matrix, {}, TR("ScanWords", "wrong matrix")},
    {CauseKind::Different, {}, TR("ScanWords", "another picture")},
    {CauseKind::Dark, {}, TR("ScanWords", "too dark to tell")},
    {CauseKind::Unreadable, {}, TR("ScanWords", "too little to tell from")},
};

bool names(const CauseWord& word, const Cause& cause) {
  return word.kind == cause.kind && (!word.direction || word.direction == cause.direction);
}

}  // namespace

std::string causeWords(const std::vector<Cause>& causes, const Language& language) {
  const Words words(language);
  std::string text;
  for (const Cause& cause : causes) {
    const auto* const word = std::find_if(std::begin(causeWordTable), std::end(causeWordTable),
                                          [&](const CauseWord& each) { return names(each, cause); });
    if (!text.empty()) text += "; ";
    text += words(word->english, {words.number(cause.exponent.value_or(1), 2)});
  }
  return text;
}

}  // namespace diagnosis
