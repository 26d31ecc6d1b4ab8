#include <gtest/gtest.h>

#include "app/verdict/MovieFacts.h"

namespace {

QString ofBoth(const QList<Fact>& facts, const QString& name) {
  for (const Fact& fact : facts) {
    if (fact.name == name) return fact.source + (fact.differs ? " | " : " = ") + fact.dest;
  }
  return "no such fact";
}

TEST(MovieFacts, TellRangesAndColoursOfTheFramesThatWereCompared) {
  const auto movie = movie::Movie::movie();
  diagnosis::Finding finding;
  finding.frames = 1;
  finding.tags.source.statedRange = finding.tags.dest.statedRange = movie::PictureRange::Full;
  finding.tags.source.range = diagnosis::SampleRange::Full;
  const QList<Fact> facts = MovieFacts::of({*movie, {}}, {*movie, {}}, finding);
  EXPECT_EQ(ofBoth(facts, "Range"), "full | video");
  EXPECT_EQ(ofBoth(facts, "Colour"), "none = none");
}

TEST(MovieFacts, DoNotKnowThemWhereNoFrameWasHad) {
  const auto movie = movie::Movie::movie();
  diagnosis::Finding finding;
  finding.frames = 0;
  finding.tags.source.range = diagnosis::SampleRange::Full;
  const QList<Fact> facts = MovieFacts::of({*movie, {}}, {*movie, {}}, finding);
  EXPECT_EQ(ofBoth(facts, "Range"), "unknown = unknown");
  EXPECT_EQ(ofBoth(facts, "Colour"), "unknown = unknown");
}

}  // namespace
