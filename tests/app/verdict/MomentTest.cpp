#include <gtest/gtest.h>

#include "app/verdict/Moment.h"
#include "tests/support/MovieFixture.h"

namespace {

TEST(Moment, ChangesWithTheMovieThenItsTagsThenItsPlayhead) {
  const auto movie = std::make_shared<int>(1), other = std::make_shared<int>(1);
  const SideMoment then{movie, {100, 25, 0}, {1, 2, 3}};
  EXPECT_EQ(changeBetween(then, then), Change::None);
  EXPECT_EQ(changeBetween(then, {movie, {200, 50, 0}, {1, 2, 3}}), Change::None) << "the same instant";
  EXPECT_EQ(changeBetween(then, {movie, {101, 25, 0}, {1, 2, 3}}), Change::Playhead);
  EXPECT_EQ(changeBetween(then, {movie, {101, 25, 0}, {1, 2, 4}}), Change::Tags);
  EXPECT_EQ(changeBetween(then, {movie, {100, 25, 0}, {1, 2, 4}}), Change::Tags);
  EXPECT_EQ(changeBetween(then, {other, {101, 25, 0}, {1, 2, 4}}), Change::Movie);
  EXPECT_EQ(changeBetween(then, {other, {100, 25, 0}, {1, 2, 3}}), Change::Movie);
}

TEST(Moment, KnowsAMovieThatIsGoneFromOneThatCameInItsPlace) {
  SideMoment then{std::make_shared<int>(1), {}, {}};
  EXPECT_EQ(changeBetween(then, {std::make_shared<int>(1), {}, {}}), Change::Movie);
  EXPECT_EQ(changeBetween(then, {}), Change::Movie);
  EXPECT_EQ(changeBetween({}, {}), Change::None);
}

struct MomentRow {
  movie::MovieTime source, dest;
  bool isSame;
};

TEST(Moment, IsTheSameWithinHalfAFrame) {
  const auto movie = movie::Movie::movie();  // no frames: 24 a second
  const MomentRow rows[] = {
      {{0, 600, 0}, {0, 24, 0}, true},     {{25, 600, 0}, {1, 24, 0}, true},   {{12, 600, 0}, {0, 24, 0}, true},
      {{13, 600, 0}, {0, 24, 0}, false},   {{0, 600, 0}, {13, 600, 0}, false}, {{600, 600, 0}, {24, 24, 0}, true},
      {{600, 600, 0}, {25, 24, 0}, false}, {{0, 0, 0}, {0, 24, 0}, true},
  };
  for (const auto& [source, dest, isSame] : rows) {
    EXPECT_EQ(isSameMoment(*movie, source, *movie, dest), isSame) << source.value << ' ' << dest.value;
  }
}

TEST(Moment, HasNoDescriptionWithoutPictures) {
  EXPECT_TRUE(describedIn(*movie::Movie::movie()).empty());
}

}  // namespace
