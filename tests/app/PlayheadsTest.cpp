#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <string>
#include <tuple>
#include <utility>

#include "app/widgets/TransportBar.h"
#include "tests/app/WindowFixture.h"
#include "tests/support/AtomBuilder.h"

namespace {

using movie::MovieTime;

class Playheads : public WindowFixture {
 protected:
  Playheads() { launch(); }
  MovieTime sourceTime() { return sourceView().movie()->currentTime(); }
  MovieTime destTime() { return destView().movie()->currentTime(); }
  bool linked() { return interface().linkBtn->isChecked(); }
  static movie::test::TemporaryFile movieOfLength(const std::pair<std::uint32_t, std::uint32_t>& unitsAndScale) {
    movie::test::MovieSpec spec;
    std::tie(spec.duration, spec.timeScale) = unitsAndScale;
    return movie::test::TemporaryFile(movie::test::joined({movie::test::typedMediaData("qt  ", 30), spec.build()}));
  }
  QLineEdit& sourceTimecode() { return *interface().source.timecodeText; }
  QLineEdit& destTimecode() { return *interface().dest.timecodeText; }
  QColor labelColor() { return interface().linkLabel->palette().color(QPalette::WindowText); }
  QColor systemColor(QPalette::ColorGroup group) {
    return interface().window().palette().color(group, QPalette::WindowText);
  }
};

TEST_F(Playheads, AreLinkedAtFirstLaunch) {
  EXPECT_TRUE(linked());
  EXPECT_TRUE(interface().linkBtn->isEnabled());
  EXPECT_EQ(labelColor(), systemColor(QPalette::Active));
}

TEST_F(Playheads, OfTheSameDurationAreLinkedWhateverTheFrameRates) {
  load(longMovie(), longNtscMovie());
  ASSERT_TRUE(linked());
  const std::int32_t scale = sourceTime().scale;
  sourceView().movie()->setCurrentTime({10 * scale, scale, 0});
  EXPECT_EQ(destTime(), (MovieTime{10 * scale, scale, 0}));
}

TEST_F(Playheads, OfDifferentDurationsAreNotLinkedAndTheLabelIsGrey) {
  load(plainMovie(), longMovie());
  EXPECT_FALSE(linked());
  EXPECT_FALSE(interface().linkBtn->isEnabled());
  EXPECT_EQ(labelColor(), systemColor(QPalette::Disabled));
  sourceView().stepFrames(2);
  EXPECT_EQ(destTime().value, 0);
}

TEST_F(Playheads, AreLinkedWhenTheDurationsAreEqualInUnitsOfTheSource) {
  using Length = std::pair<std::uint32_t, std::uint32_t>;  // units, units a second
  const struct {
    Length source, dest;
    bool linked;
  } rows[] = {
      {{1000, 600}, {1000, 600}, true},    {{1000, 600}, {1001, 600}, false},    {{1001, 600}, {1000, 600}, false},
      {{1000, 600}, {50000, 30000}, true}, {{1000, 600}, {50024, 30000}, true},  {{1000, 600}, {50025, 30000}, false},
      {{50000, 30000}, {1000, 600}, true}, {{50001, 30000}, {1000, 600}, false},
  };
  for (const auto& row : rows) {
    const auto source = movieOfLength(row.source), dest = movieOfLength(row.dest);
    load(QString::fromStdString(source.path()), QString::fromStdString(dest.path()));
    EXPECT_EQ(linked(), row.linked) << row.source.first << " and " << row.dest.first;
    EXPECT_EQ(interface().linkBtn->isEnabled(), row.linked);
    sourceView().movie()->setCurrentTime({7, 25, 0});
    EXPECT_EQ(destTime(), row.linked ? MovieTime({7, 25, 0}) : MovieTime({0, destTime().scale, 0}));
    destView().movie()->setCurrentTime({11, 90000, 0});
    EXPECT_EQ(sourceTime(), row.linked ? MovieTime({11, 90000, 0}) : MovieTime({7, 25, 0}));
  }
}

TEST_F(Playheads, NoLongerHearOfAMovieThatAnotherOneReplaced) {
  for (const char* type : {"source", "dest"}) {
    load(plainMovie(), retaggedMovie());
    const bool isSource = type == std::string("source");
    const auto old = isSource ? sourceView().movie() : destView().movie();
    controller().loadQTMovieWithPath(darkerMovie(), type);
    QTest::mouseClick(interface().linkBtn, Qt::LeftButton);
    sourceView().movie()->setCurrentTime({5, 25, 0});
    destView().movie()->setCurrentTime({9, 25, 0});
    QTest::mouseClick(interface().linkBtn, Qt::LeftButton);
    ASSERT_TRUE(linked());
    sourceTimecode().setText("as it was");
    old->setCurrentTime({1, 1, 0});
    EXPECT_EQ(sourceTime(), (MovieTime{5, 25, 0})) << type;
    EXPECT_EQ(destTime(), (MovieTime{9, 25, 0})) << type;
    EXPECT_EQ(sourceTimecode().text(), "as it was") << type;
  }
}

TEST_F(Playheads, AreNotLinkedWhileOneSideIsEmpty) {
  controller().loadQTMovieWithPath(plainMovie(), "dest");
  EXPECT_FALSE(linked());
  controller().loadQTMovieWithPath("/nowhere", "source");
  controller().updateLink();
  EXPECT_FALSE(linked());
  controller().loadQTMovieWithPath("/nowhere", "dest");
  controller().updateLink();
  EXPECT_TRUE(linked());
}

TEST_F(Playheads, FollowEachOtherInBothDirectionsWithoutEcho) {
  load(plainMovie(), retaggedMovie());
  int sourceMoves = 0, destMoves = 0;
  QObject::connect(sourceView().movie().get(), &PlayableMovie::timeDidChange, [&] { ++sourceMoves; });
  QObject::connect(destView().movie().get(), &PlayableMovie::timeDidChange, [&] { ++destMoves; });
  sourceView().stepFrames(5);
  EXPECT_EQ(destTime(), sourceTime());
  EXPECT_EQ(sourceMoves, 1);
  EXPECT_EQ(destMoves, 1);
  destView().stepFrames(-2);
  EXPECT_EQ(sourceTime(), destTime());
  EXPECT_EQ(sourceMoves, 2);
  EXPECT_EQ(destMoves, 2);
  EXPECT_FALSE(controller().disableSync());
  EXPECT_EQ(sourceTimecode().text(), "01:00:00:03");
  EXPECT_EQ(destTimecode().text(), "01:00:00:03");
}

TEST_F(Playheads, MoveAloneWithTheLinkOff) {
  load(plainMovie(), retaggedMovie());
  QTest::mouseClick(interface().linkBtn, Qt::LeftButton);
  ASSERT_FALSE(linked());
  sourceView().stepFrames(5);
  EXPECT_EQ(destTime().value, 0);
  EXPECT_EQ(sourceTimecode().text(), "01:00:00:05");
  EXPECT_EQ(destTimecode().text(), "01:00:00:00");
  controller().loadQTMovieWithPath(darkerMovie(), "dest");
  EXPECT_TRUE(linked());
}

TEST_F(Playheads, JumpToATypedTimecode) {
  load(plainMovie(), retaggedMovie());
  type(sourceTimecode(), "01:00:01:10");
  EXPECT_EQ(sourceTimecode().text(), "01:00:01:10");
  EXPECT_EQ(destTimecode().text(), "01:00:01:10");
  type(destTimecode(), "5");
  EXPECT_EQ(sourceTimecode().text(), "01:00:00:05");
}

TEST_F(Playheads, HandTheFocusOnFromTheFieldThatWasTypedInto) {
  load(plainMovie(), retaggedMovie());
  for (const auto& [field, view] :
       {std::pair(&sourceTimecode(), &sourceView()), std::pair(&destTimecode(), &destView())}) {
    type(*field, "01:00:01:00");
    EXPECT_FALSE(controller().isTextFieldInFocus(field));
    EXPECT_EQ(interface().window().focusWidget(), view);
    EXPECT_EQ(&interface().activeView(), view);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Tab);
    EXPECT_EQ(interface().window().focusWidget(), view);
  }
}

TEST_F(Playheads, StayForAnEmptyEntry) {
  load(plainMovie(), retaggedMovie());
  sourceView().stepFrames(4);
  const MovieTime before = sourceTime();
  type(sourceTimecode(), "");
  EXPECT_EQ(sourceTime(), before);
  EXPECT_TRUE(controller().isTextFieldInFocus(&sourceTimecode()));
}

TEST_F(Playheads, DoNotOverwriteATimecodeThatIsBeingTyped) {
  load(longMovie(), longNtscMovie());
  sourceTimecode().setFocus();
  sourceTimecode().selectAll();
  QTest::keyClicks(&sourceTimecode(), "00:00:2");
  const MovieTime before = sourceTime();
  sourceView().play(1);
  ASSERT_TRUE(waitUntil([&] {
    return movie::compareTimes(sourceTime(), {before.value + 1, 1, 0}) != 0 && destTimecode().text() != "00:00:00:00";
  }));
  EXPECT_EQ(sourceTimecode().text(), "00:00:2");
  EXPECT_NE(destTimecode().text(), "00:00:2");
  sourceView().play(0);
  QTest::keyClicks(&sourceTimecode(), "0:00");
  QTest::keyClick(&sourceTimecode(), Qt::Key_Return);
  EXPECT_EQ(sourceTimecode().text(), "00:00:20:00");
}

TEST_F(Playheads, ChangeNothingWhenAFieldIsLeftWithoutReturn) {
  load(plainMovie(), retaggedMovie());
  const MovieTime before = sourceTime();
  sourceTimecode().setFocus();
  sourceTimecode().selectAll();
  QTest::keyClicks(&sourceTimecode(), "9");
  sourceView().setFocus();
  EXPECT_EQ(sourceTimecode().text(), "9");
  EXPECT_EQ(sourceTime(), before);
  destTimecode().setFocus();
  destTimecode().selectAll();
  QTest::keyClicks(&destTimecode(), "8");
  QTest::keyClick(&destTimecode(), Qt::Key_Tab);
  EXPECT_EQ(destTimecode().text(), "8");
  sourceView().stepFrames(1);
  EXPECT_EQ(sourceTimecode().text(), "01:00:00:01");
  EXPECT_EQ(destTimecode().text(), "01:00:00:01");
}

TEST_F(Playheads, ShowTheTimecodeThatWasJumpedToWithTheLinkOff) {
  load(plainMovie(), retaggedMovie());
  QTest::mouseClick(interface().linkBtn, Qt::LeftButton);
  type(destTimecode(), "7");
  EXPECT_EQ(destTimecode().text(), "01:00:00:07");
  EXPECT_EQ(sourceTimecode().text(), "01:00:00:00");
}

TEST_F(Playheads, CompleteTypedTimecodesInDropFrame) {
  controller().loadQTMovieWithPath(dropFrameMovie(), "source");
  EXPECT_EQ(sourceTimecode().text(), "00:59:58;00");
  type(sourceTimecode(), "01:00:00;10");
  EXPECT_EQ(sourceTimecode().text(), "01:00:00;10");
}

TEST_F(Playheads, SurviveTimecodesThatMakeNoSense) {
  load(plainMovie(), retaggedMovie());
  for (const char* typed : {"x", "99:99:99:99", "-1", "::::", "01:00:00:00:00", "99999999999999"}) {
    type(sourceTimecode(), QString::fromUtf8(typed));
    EXPECT_TRUE(waitUntil([&] { return !sourceView().picture().isNull(); })) << typed;
  }
  type(sourceTimecode(), "01:00:00:00");
  EXPECT_EQ(sourceTimecode().text(), "01:00:00:00");
}

TEST_F(Playheads, StayInsideTheMovie) {
  load(plainMovie(), retaggedMovie());
  type(sourceTimecode(), "04:40:42:24");
  EXPECT_EQ(sourceTimecode().text(), "01:00:02:00");
  EXPECT_EQ(destTimecode().text(), "01:00:02:00");
  EXPECT_EQ(movie::compareTimes(sourceTime(), sourceView().movie()->duration()), 0);
  type(sourceTimecode(), "00:10:00:00");
  EXPECT_EQ(sourceTimecode().text(), "01:00:00:00");
  EXPECT_EQ(sourceTime().value, 0);
}

TEST_F(Playheads, FollowTheLeaderWhilePlaying) {
  load(plainMovie(), groupedMovie());
  ASSERT_TRUE(linked());
  sourceView().play(1);
  ASSERT_TRUE(waitUntil([&] { return movie::secondsOf(sourceTime()) > 0.5; }));
  EXPECT_LT(std::abs(movie::secondsOf(sourceTime()) - movie::secondsOf(destTime())), 0.001);
  ASSERT_TRUE(waitUntil([&] { return sourceView().movie()->rate() == 0; }));
  EXPECT_EQ(sourceTimecode().text(), "01:00:01:24");
  EXPECT_LT(std::abs(movie::secondsOf(sourceTime()) - movie::secondsOf(destTime())), 0.001);
}

TEST_F(Playheads, StandOnTheFrameThatIsShownWhenPlayStops) {
  load(plainMovie(), retaggedMovie());
  sourceView().play(1);
  ASSERT_TRUE(waitUntil([&] { return movie::secondsOf(sourceTime()) > 0.3; }));
  sourceView().play(0);
  const auto span = sourceView().movie()->content().frameSpanAt(sourceTime());
  EXPECT_EQ(movie::compareTimes(span->start, sourceTime()), 0);
}

TEST_F(Playheads, SayThatATypedTimecodeCannotBeReached) {
  type(sourceTimecode(), "1.");
  EXPECT_EQ(said(), Message(MessageKind::Failure, "There is no movie there to go to a timecode."));
  load(plainMovie(), retaggedMovie());
  for (const char* const outside : {"02:00:00:00", "00:00:00:00"}) {
    type(destTimecode(), outside);
    EXPECT_EQ(said(), Message(MessageKind::Warning, QStringLiteral("The movie does not reach to %1. This is where it "
                                                                   "begins or ends.")
                                                        .arg(outside)));
  }
  type(destTimecode(), "1.");
  EXPECT_TRUE(said().isEmpty());
  EXPECT_EQ(destTimecode().text(), "01:00:01:00");
}

TEST_F(Playheads, SayNothingOfATimecodeThatIsReachedWhilePlaying) {
  load(plainMovie(), longMovie());
  destView().play(8);
  type(destTimecode(), "00:00:20:00");
  EXPECT_EQ(destView().movie()->rate(), 8);
  EXPECT_EQ(said().text, "");
  type(destTimecode(), "02:00:00:00");
  EXPECT_EQ(said().text, "The movie does not reach to 02:00:00:00. This is where it begins or ends.");
}

}  // namespace
