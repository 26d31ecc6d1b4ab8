#include <gtest/gtest.h>

#include "diagnosis/words/CauseWords.h"

namespace diagnosis {
namespace {

TEST(CauseWords, NameEveryKind) {
  const struct {
    Cause cause;
    const char* words;
  } rows[] = {
      {{.kind = CauseKind::Identical}, "identical"},
      {{.kind = CauseKind::Same}, "the same"},
      {{.kind = CauseKind::Power, .exponent = 1.2, .direction = Direction::Darker}, "gamma shift, exponent 1.20"},
      {{.kind = CauseKind::Power}, "gamma shift, exponent 1.00"},
      {{.kind = CauseKind::Range, .direction = Direction::Compressed}, "range compressed"},
      {{.kind = CauseKind::Range, .direction = Direction::Expanded}, "range expanded"},
      {{.kind = CauseKind::Gain, .direction = Direction::Darker}, "brightness or contrast, darker"},
      {{.kind = CauseKind::Gain, .direction = Direction::Lighter}, "brightness or contrast, lighter"},
      {{.kind = CauseKind::Tone, .direction = Direction::Darker}, "another tone"},
      {{.kind = CauseKind::Matrix}, "wrong matrix"},
      {{.kind = CauseKind::Different}, "another picture"},
      {{.kind = CauseKind::Dark}, "too dark to tell"},
      {{.kind = CauseKind::Unreadable}, "too little to tell from"},
  };
  for (const auto& row : rows) EXPECT_EQ(causeWords({row.cause}), row.words);
}

TEST(CauseWords, StandInTheOrderOfTheCauses) {
  EXPECT_EQ(causeWords({{.kind = CauseKind::Range, .direction = Direction::Expanded},
                        {.kind = CauseKind::Power, .exponent = 0.8167}}),
            "range expanded; gamma shift, exponent 0.82");
  EXPECT_EQ(causeWords({}), "");
}

TEST(CauseWords, AreThoseOfALanguage) {
  const Language shouting{[](const char* english) { return std::string(english) + "!"; },
                          [](double value, int decimals) {
                            return std::to_string(static_cast<int>(value)) + "," + std::to_string(decimals);
                          }};
  EXPECT_EQ(causeWords({{.kind = CauseKind::Power, .exponent = 3}, {.kind = CauseKind::Same}}, shouting),
            "gamma shift, exponent 3,2!; the same!");
}

}  // namespace
}  // namespace diagnosis
