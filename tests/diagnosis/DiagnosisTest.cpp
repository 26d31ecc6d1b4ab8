#include <cmath>
#include <random>
#include <tuple>

#include <gtest/gtest.h>

#include "diagnosis/MovieFrames.h"
#include "tests/diagnosis/PaintedPicture.h"

namespace diagnosis::test {
namespace {

using movie::PictureRange;

constexpr Coding bt709{}, bt601{.matrix = 6}, rgb{.matrix = 0, .range = PictureRange::Full, .depth = 8},
    full{.range = PictureRange::Full};

CauseKind kindOf(const Finding& finding) {
  return finding.main().kind;
}

Paint raised(const Paint& paint, double exponent) {
  return toned(paint, [=](double value) { return std::pow(value, exponent); });
}

TEST(Diagnosis, KnowsIdenticalSamples) {
  const movie::Picture picture = painted(colorful());
  const Finding finding = findingOf(picture, picture);
  EXPECT_EQ(kindOf(finding), CauseKind::Identical);
  EXPECT_TRUE(finding.identicalSamples);
  EXPECT_TRUE(isAllClear(finding));
  EXPECT_EQ(finding.action, Action::Nothing);
}

TEST(Diagnosis, CallsARightConversionTheSame) {
  const Coding codings[] = {bt709, bt601, rgb, full, {.matrix = 9}, {.depth = 8}};
  for (const Coding& from : codings) {
    for (const Coding& to : codings) {
      const Finding finding = findingOf(painted(colorful(), from), painted(colorful(), to), from.matrix, to.matrix);
      const bool same = kindOf(finding) == CauseKind::Same || kindOf(finding) == CauseKind::Identical;
      EXPECT_TRUE(same) << from.matrix << " of " << from.depth << " to " << to.matrix << " of " << to.depth;
      EXPECT_LT(finding.difference, 1) << from.matrix << " to " << to.matrix;
    }
  }
}

TEST(Diagnosis, TakesALostCodeForNoGammaShift) {
  for (const double codes : {1.2, 1.7}) {
    const auto cutOff = toned(colorful(), [codes](double value) { return value - codes / 219; });
    EXPECT_EQ(kindOf(findingOf(painted(colorful()), painted(cutOff))), CauseKind::Same) << codes;
  }
}

TEST(Diagnosis, KnowsWhatElseAGradientMayLieUponAsItLies) {
  const auto gradient = [](double x, double y) { return Vector3{0.1 + 0.8 * x, 0.2 + 0.6 * y, 0.5 - 0.4 * x}; };
  const auto raisedTo = [&](double exponent) { return painted(raised(gradient, exponent)); };
  for (const double exponent : {0.8, 1.3, 1.6}) {
    const Finding finding = findingOf(painted(gradient), raisedTo(exponent));
    EXPECT_EQ(kindOf(finding), CauseKind::Power) << exponent;
  }
  const Finding matrix = findingOf(painted(gradient, bt601), painted(gradient, bt601), 6, 1);
  EXPECT_EQ(kindOf(matrix), CauseKind::Matrix);
}

TEST(Diagnosis, MeasuresAnExponent) {
  for (const double exponent : {0.5, 0.8, 0.95, 1.05, 1.2, 1.96, 2.0}) {
    for (const double seed : {0.0, 1.0, 2.0}) {
      const Finding finding = findingOf(painted(colorful(seed)), painted(raised(colorful(seed), exponent)));
      ASSERT_EQ(kindOf(finding), CauseKind::Power) << exponent;
      EXPECT_NEAR(*finding.main().exponent, exponent, 0.01);
      EXPECT_LE(finding.main().exponentInterval->low, exponent);
      EXPECT_GE(finding.main().exponentInterval->high, exponent);
      EXPECT_EQ(finding.main().direction, exponent > 1 ? Direction::Darker : Direction::Lighter);
      EXPECT_EQ(finding.action, Action::ExportAgain);
    }
  }
}

TEST(Diagnosis, FindsARangeErrorInTheCodes) {
  const auto compressed = toned(colorful(), [](double value) { return (219 * value + 16) / 255; });
  const auto expanded = toned(colorful(), [](double value) { return (255 * value - 16) / 219; });
  for (const auto& [paint, direction] :
       {std::pair(compressed, Direction::Compressed), std::pair(expanded, Direction::Expanded)}) {
    const Finding finding = findingOf(painted(colorful()), painted(paint));
    ASSERT_EQ(kindOf(finding), CauseKind::Range);
    EXPECT_EQ(finding.main().direction, direction);
    EXPECT_EQ(finding.main().where, Where::Codes);
    EXPECT_EQ(finding.main().exponent, std::nullopt) << "it would depend on the picture";
  }
}

TEST(Diagnosis, FindsARangeErrorMadeTwice) {
  movie::Picture dest = painted(toned(colorful(), [](double value) { return (219 * value + 16) / 255; }));
  dest.range = PictureRange::Full;
  const Finding finding = findingOf(painted(colorful()), dest);
  ASSERT_EQ(kindOf(finding), CauseKind::Range);
  EXPECT_EQ(finding.main().direction, Direction::Compressed);
}

TEST(Diagnosis, FindsARangeErrorInTheFlagsAlone) {
  movie::Picture dest = painted(colorful());
  const movie::Picture source = dest;
  dest.range = PictureRange::Full;
  const Finding finding = findingOf(source, dest);
  ASSERT_EQ(kindOf(finding), CauseKind::Range);
  EXPECT_EQ(finding.main().where, Where::Flags);
  EXPECT_EQ(finding.main().direction, Direction::Compressed);
  EXPECT_TRUE(finding.identicalSamples);
  EXPECT_EQ(finding.action, Action::TagDestination) << "a sync does not reach the flag";
  EXPECT_EQ(findingOf(dest, source).main().direction, Direction::Expanded);
}

TEST(Diagnosis, FindsAWrongMatrix) {
  const Finding codes = findingOf(painted(colorful()), painted(colorful(), bt601), 1, 1);
  ASSERT_EQ(kindOf(codes), CauseKind::Matrix);
  EXPECT_EQ(codes.main().where, Where::Codes);
  EXPECT_EQ(codes.action, Action::ExportAgain);

  const Finding tags = findingOf(painted(colorful()), painted(colorful()), 1, 6);
  ASSERT_EQ(kindOf(tags), CauseKind::Matrix);
  EXPECT_EQ(tags.main().where, Where::Tags);
}

TEST(Diagnosis, TellsGainAndOtherTonesFromAPower) {
  const auto dimmed = toned(colorful(), [](double value) { return 0.8 * value; });
  const Finding gain = findingOf(painted(colorful()), painted(dimmed));
  ASSERT_EQ(kindOf(gain), CauseKind::Gain);
  EXPECT_NEAR(*gain.main().gain, 0.8, 0.01);
  EXPECT_NEAR(*gain.main().offset, 0, 1);
  EXPECT_EQ(gain.main().direction, Direction::Darker);

  const auto curved = toned(colorful(), [](double value) { return value * value * (3 - 2 * value); });
  EXPECT_EQ(kindOf(findingOf(painted(colorful()), painted(curved))), CauseKind::Tone);
}

TEST(Diagnosis, FindsTwoCausesAtOnceAndTellsTheWeightierFirst) {
  using enum CauseKind;
  for (const auto& [exponent, first, second] : {std::tuple(0.8, Power, Range), std::tuple(0.95, Range, Power)}) {
    const auto both = toned(colorful(), [exponent = exponent](double value) {
      return std::pow(std::clamp((219 * value + 16) / 255, 0.0, 1.0), exponent);
    });
    const Finding finding = findingOf(painted(colorful()), painted(both));
    ASSERT_EQ(finding.causes.size(), 2U) << exponent;
    EXPECT_EQ(finding.causes[0].kind, first) << exponent;
    EXPECT_EQ(finding.causes[1].kind, second) << exponent;
    EXPECT_NEAR(*finding.causes[first == Power ? 0 : 1].exponent, exponent, 0.02);
  }
}

TEST(Diagnosis, FindsAGainBesideAWrongMatrix) {
  const auto dimmed = toned(colorful(), [](double value) { return 0.75 * value; });
  const Finding finding = findingOf(painted(colorful()), painted(dimmed, bt601), 1, 1);
  ASSERT_EQ(finding.causes.size(), 2U);
  EXPECT_EQ(finding.causes[0].kind, CauseKind::Gain);
  EXPECT_NEAR(*finding.causes[0].gain, 0.75, 0.01);
  EXPECT_EQ(finding.causes[1].kind, CauseKind::Matrix);
}

/// The signals of a paint, changed.
Paint withSignals(const Paint& paint, const std::function<Vector3(const Vector3&)>& change) {
  return [=](double x, double y) { return product(toRgbMatrix(1), change(product(fromRgbMatrix(1), paint(x, y)))); };
}

TEST(Diagnosis, CallsAChangeOfColorsATone) {
  const auto saturated = withSignals(colorful(), [](const Vector3& signal) {
    return Vector3{0.975 * signal[0] + 3.0 / 219, 1.4 * signal[1], 1.4 * signal[2]};
  });
  EXPECT_EQ(kindOf(findingOf(painted(colorful()), painted(saturated))), CauseKind::Tone);
}

TEST(Diagnosis, SeesACastThatLumaDoesNotShow) {
  const auto castBy = [](double codes) {
    return withSignals(colorful(), [codes](const Vector3& signal) {
      return Vector3{signal[0], signal[1] + codes / 224, signal[2] - codes / 224};
    });
  };
  EXPECT_EQ(kindOf(findingOf(painted(colorful()), painted(castBy(0.5)))), CauseKind::Same);
  const Finding finding = findingOf(painted(colorful()), painted(castBy(2.5)));
  EXPECT_EQ(kindOf(finding), CauseKind::Tone);
  EXPECT_GT(finding.difference, defaultTolerance);
}

TEST(Diagnosis, TellsNoCauseThatUndoesHardlyAnything) {
  const auto reddish = [](double x, double y) {
    Vector3 color = colorful()(x, y);
    color[0] += 0.06 * (1 - color[0]);
    return color;
  };
  const Finding finding = findingOf(painted(colorful()), painted(reddish));
  EXPECT_EQ(kindOf(finding), CauseKind::Tone) << "an exponent near 1 comes nearest, and leaves as much as it finds";
}

TEST(Diagnosis, TellsNoTwoCausesThatOnlyComeNear) {
  // Shadows spread as by the inverse of a sigmoid: a curve and a range together leave 1.7 codes of it.
  const auto sigmoid = [](double value) { return 1 / (1 + std::exp(2 * (0.2 - value))); };
  const auto spread = toned(colorful(2), [&](double value) {
    const double at = sigmoid(0) + value * (sigmoid(1) - sigmoid(0));
    return 0.2 - std::log(1 / at - 1) / 2;
  });
  const Finding finding = findingOf(painted(colorful(2)), painted(spread));
  ASSERT_EQ(finding.causes.size(), 1U);
  EXPECT_EQ(kindOf(finding), CauseKind::Tone);
}

TEST(Diagnosis, IsSureOfAToneThatNoCauseExplains) {
  const auto turned = withSignals(colorful(), [](const Vector3& signal) {
    return Vector3{signal[0], 0.6 * signal[1] - 0.8 * signal[2], 0.8 * signal[1] + 0.6 * signal[2]};
  });
  const Finding finding = findingOf(painted(colorful()), painted(turned));
  ASSERT_EQ(kindOf(finding), CauseKind::Tone);
  EXPECT_GT(finding.main().residual, 3);
  EXPECT_GT(finding.main().confidence, 0.8);
  EXPECT_EQ(finding.action, Action::ExportAgain);
}

TEST(Diagnosis, KnowsAPictureAgainThatAnotherMatrixMixedItsColorsInto) {
  const auto colorsOnly = [](double x, double y) {
    const Vector3 signal{0.5 + 0.02 * x, 0.3 * std::sin(9 * x), 0.3 * std::cos(7 * y)};
    return product(toRgbMatrix(1), signal);
  };
  const Finding finding = findingOf(painted(colorsOnly), painted(colorsOnly, {.matrix = 9}), 1, 1);
  EXPECT_TRUE(finding.correspondence.same) << finding.correspondence.score;
  EXPECT_EQ(kindOf(finding), CauseKind::Matrix);
}

TEST(Diagnosis, HasNoNumberForAnotherPicture) {
  for (const double seed : {1.0, 2.5, 4.0}) {
    const Finding finding = findingOf(painted(colorful()), painted(colorful(seed)));
    EXPECT_EQ(kindOf(finding), CauseKind::Different) << seed;
    EXPECT_EQ(finding.main().exponent, std::nullopt);
    EXPECT_FALSE(isTold(finding));
    EXPECT_EQ(finding.action, Action::ChooseAnotherFrame);
  }
}

TEST(Diagnosis, PlacesAPictureBeforeItCompares) {
  const Paint paint = colorful(3);
  const auto letterboxed = [&](double x, double y) {
    return y < 0.125 || y > 0.875 ? Vector3{0, 0, 0} : paint(x, (y - 0.125) / 0.75);
  };
  const auto cropped = [&](double x, double y) { return paint(0.125 + 0.75 * x, y); };
  const auto mirrored = [&](double x, double y) { return paint(1 - x, y); };
  const auto turned = [&](double x, double y) { return paint(y, 1 - x); };
  for (const Paint& export_ : {Paint(letterboxed), Paint(cropped), Paint(mirrored), Paint(turned)}) {
    const Finding same = findingOf(painted(paint), painted(export_));
    EXPECT_EQ(kindOf(same), CauseKind::Same);
    EXPECT_FALSE(same.correspondence.placement.isPlain());
    const Finding darker = findingOf(painted(paint), painted(raised(export_, 1.3)));
    ASSERT_EQ(kindOf(darker), CauseKind::Power);
    EXPECT_NEAR(*darker.main().exponent, 1.3, 0.03);
  }
}

TEST(Diagnosis, LooksPastASubtitle) {
  const Paint paint = colorful(1);
  const auto subtitled = [&](double x, double y) {
    return x > 0.2 && x < 0.8 && y > 0.85 && y < 0.93 ? Vector3{1, 1, 1} : paint(x, y);
  };
  EXPECT_EQ(kindOf(findingOf(painted(paint), painted(subtitled))), CauseKind::Same);
  const Finding darker = findingOf(painted(paint), painted(raised(subtitled, 1.2)));
  ASSERT_EQ(kindOf(darker), CauseKind::Power);
  EXPECT_NEAR(*darker.main().exponent, 1.2, 0.01);
}

TEST(Diagnosis, SeesWhatWasDoneToAPartOfThePicture) {
  const Paint paint = colorful(1);
  const auto changedWhere = [&](const std::function<bool(double, double)>& isInside, const Vector3& change) {
    return [=](double x, double y) {
      Vector3 color = paint(x, y);
      for (std::size_t i = 0; i < 3 && isInside(x, y); ++i) color[i] = std::clamp(color[i] + change[i], 0.0, 1.0);
      return color;
    };
  };
  const auto left = [](double x, double) { return x < 0.4; };
  const auto middle = [](double x, double y) { return std::hypot(x - 0.5, y - 0.5) < 0.2; };
  for (const Paint& export_ : {Paint(changedWhere(left, {0.04, 0.04, 0.04})), Paint(changedWhere(left, {0, 0, 0.1})),
                               Paint(changedWhere(middle, {0.07, 0.07, 0.07}))}) {
    const Finding finding = findingOf(painted(paint), painted(export_));
    EXPECT_EQ(kindOf(finding), CauseKind::Tone);
    EXPECT_GT(finding.difference, defaultTolerance);
    EXPECT_EQ(finding.action, Action::ExportAgain);
  }
  EXPECT_TRUE(findingOf(painted(paint), painted(changedWhere(middle, {0.07, 0.07, 0.07}))).inPlaces);
}

TEST(Diagnosis, HasNoGainForANegative) {
  const auto negative = toned(colorful(), [](double value) { return 1 - value; });
  const Finding finding = findingOf(painted(colorful()), painted(negative));
  EXPECT_EQ(kindOf(finding), CauseKind::Tone);
  EXPECT_EQ(finding.main().gain, std::nullopt);
}

TEST(Diagnosis, SaysWhereNothingCanBeTold) {
  const auto flat = [](double level) { return [level](double, double) { return Vector3{level, level, level}; }; };
  const movie::Picture dark = painted(flat(0.02)), grey = painted(flat(0.5)), lighter = painted(flat(0.6));
  EXPECT_EQ(kindOf(findingOf(dark, painted(colorful()))), CauseKind::Dark);
  EXPECT_EQ(kindOf(findingOf(grey, lighter)), CauseKind::Unreadable);
  EXPECT_EQ(kindOf(findingOf(grey, painted(colorful()))), CauseKind::Different);
  EXPECT_EQ(kindOf(findingOf(painted(colorful()), grey)), CauseKind::Different);
  EXPECT_EQ(findingOf(grey, lighter).action, Action::ChooseAnotherFrame);

  const auto noise = [](unsigned seed) {
    auto random = std::make_shared<std::minstd_rand>(seed);
    return [random](double, double) {
      const double value = static_cast<double>((*random)() % 1000) / 1000;
      return Vector3{value, value, value};
    };
  };
  EXPECT_FALSE(isTold(findingOf(painted(noise(1)), painted(noise(2)))));
}

TEST(Diagnosis, HasNoCauseForADestinationOfOneColor) {
  const movie::Picture source = painted(colorful());
  for (int code = 40; code < 230; code += 3) {
    const Vector3 color{code / 255.0, 0.5, 1 - code / 255.0};
    EXPECT_EQ(kindOf(findingOf(source, painted([&](double, double) { return color; }))), CauseKind::Different) << code;
  }
}

TEST(Diagnosis, HasNoNumberWhereOneColorIsAllThereIs) {
  const auto quarters = [](double darkest, double step) {
    return [=](double x, double y) {
      const double level = darkest + step * ((x < 0.5 ? 0 : 1) + (y < 0.5 ? 0 : 2));
      return Vector3{level, level, level};
    };
  };
  const Finding finding = findingOf(painted(quarters(0.503, 0.0145)), painted(quarters(0.3, 0.15)));
  ASSERT_EQ(kindOf(finding), CauseKind::Unreadable);
  EXPECT_EQ(finding.difference, 0);
  EXPECT_TRUE(finding.curve.empty());
}

TEST(Diagnosis, TakesPicturesOfAnySize) {
  for (const auto& [width, height] : {std::pair(1, 1), std::pair(2, 240), std::pair(16, 16), std::pair(640, 3)}) {
    const movie::Picture small = painted(colorful(), {.width = width, .height = height});
    EXPECT_FALSE(findingOf(small, small).causes.empty()) << width << " x " << height;
    const movie::Picture darker = painted(raised(colorful(), 1.5), {.width = width, .height = height});
    EXPECT_NE(kindOf(findingOf(small, darker)), CauseKind::Same) << width << " x " << height;
  }
}

TEST(Diagnosis, IsAboutAllFrames) {
  const movie::Picture first = painted(colorful()), second = painted(colorful(5)),
                       dark = painted(toned(colorful(), [](double) { return 0.01; }));
  const movie::Picture firstDarker = painted(raised(colorful(), 1.2)), secondDarker = painted(raised(colorful(5), 1.2));
  Question question;
  question.frames = {{&first, &firstDarker}, {&dark, &dark}, {&second, &secondDarker}, {&first, &second}};
  question.source = question.dest = taggedAs(first, 1);
  const Finding finding = diagnose(question);
  ASSERT_EQ(kindOf(finding), CauseKind::Power);
  EXPECT_NEAR(*finding.main().exponent, 1.2, 0.01);
  EXPECT_EQ(finding.frames, 4);
  EXPECT_EQ(finding.darkFrames, 1);
  EXPECT_EQ(finding.unmatchedFrames, 1);
}

/// Nine frames that are the same, but for a coarser depth, and one more pair.
Finding findingOfFramesAnd(const movie::Picture& source, const movie::Picture& dest) {
  const movie::Picture fine = painted(colorful(7)), coarse = painted(colorful(7), {.depth = 8});
  Question question{.frames = {{&source, &dest}}, .source = taggedAs(source, 1), .dest = taggedAs(dest, 1)};
  for (int i = 0; i < 9; ++i) question.frames.push_back({&fine, &coarse});
  return diagnose(question);
}

TEST(Diagnosis, IsNeverTheSameWhereOneFrameDiffers) {
  const movie::Picture source = painted(colorful(7));
  const Finding same = findingOfFramesAnd(source, source);
  EXPECT_EQ(kindOf(same), CauseKind::Same);
  EXPECT_EQ(same.differingFrames, 0);

  const Finding darker = findingOfFramesAnd(source, painted(raised(colorful(7), 1.3)));
  ASSERT_EQ(kindOf(darker), CauseKind::Power) << "what is true of the frame that differs";
  EXPECT_NEAR(*darker.main().exponent, 1.3, 0.02);
  EXPECT_EQ(darker.differingFrames, 1);
  EXPECT_EQ(darker.action, Action::ExportAgain);
}

TEST(Diagnosis, IsNeverTheSameWhereAFrameShowsAnotherPicture) {
  const Finding one = findingOfFramesAnd(painted(colorful(7)), painted(colorful(8.5)));
  EXPECT_EQ(kindOf(one), CauseKind::Different);
  EXPECT_FALSE(isTold(one));
  EXPECT_EQ(one.unmatchedFrames, 1);
  EXPECT_FALSE(one.correspondence.same);
  EXPECT_EQ(one.difference, 0) << "no number is meant";
  EXPECT_TRUE(one.curve.empty());
}

TEST(Diagnosis, TellsOtherPicturesWhereTheyAreMostOfThem) {
  const movie::Picture source = painted(colorful()), darker = painted(raised(colorful(), 1.2)),
                       other = painted(colorful(2.5));
  Question question{.frames = {{&source, &other}, {&source, &darker}, {&source, &other}},
                    .source = taggedAs(source, 1),
                    .dest = taggedAs(source, 1)};
  const Finding finding = diagnose(question);
  EXPECT_EQ(kindOf(finding), CauseKind::Different);
  EXPECT_FALSE(finding.correspondence.same);
  EXPECT_GE(finding.main().confidence, leastConfidence);
}

TEST(Diagnosis, TakesTheWordOfWhoFoundTheSourceTooDark) {
  const movie::Picture picture = painted(colorful());
  Question question{.frames = {{&picture, &picture}}, .source = taggedAs(picture, 1), .dest = taggedAs(picture, 1)};
  EXPECT_EQ(kindOf(diagnose(question)), CauseKind::Identical);
  question.knownDark = true;
  EXPECT_EQ(kindOf(diagnose(question)), CauseKind::Dark);
}

TEST(Diagnosis, HasNoMomentsWhereAMovieHasNoLength) {
  EXPECT_TRUE(spreadTimes(*movie::Movie::movie(), *movie::Movie::movie(), 3).empty());
}

TEST(Diagnosis, TakesTheToleranceThatIsAskedFor) {
  const movie::Picture source = painted(colorful());
  const movie::Picture dest = painted(toned(colorful(), [](double value) { return value + 0.012; }));
  Question question{.frames = {{&source, &dest}}, .source = taggedAs(source, 1), .dest = taggedAs(dest, 1)};
  question.tolerance = 10;
  EXPECT_EQ(kindOf(diagnose(question)), CauseKind::Same);
  question.tolerance = 0.5;
  EXPECT_NE(kindOf(diagnose(question)), CauseKind::Same);
}

}  // namespace
}  // namespace diagnosis::test
