// Every sentence that the message line can say, as a row: what happened, and what is said of it.

#include <QLocale>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "app/messages/CheckMessages.h"
#include "app/messages/OpeningMessages.h"
#include "app/messages/SaveMessages.h"
#include "app/messages/ScanMessages.h"
#include "app/messages/SyncMessages.h"
#include "app/messages/WhyNot.h"
#include "app/messages/WindowMessages.h"
#include "movie/render/IccProfile.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

using movie::MovieError;
using movie::Reason;
using std::chrono::milliseconds;
using enum MessageKind;

/// Numbers are shown as the user's locale has them.
const bool hasPlainNumbers = [] {
  QLocale::setDefault(QLocale::c());
  return true;
}();

struct MessageRow {
  Message said;
  MessageKind kind;
  std::string text;
};

void expectSaid(const std::vector<MessageRow>& rows) {
  for (const MessageRow& row : rows) {
    EXPECT_EQ(row.said.text.toStdString(), row.text);
    EXPECT_EQ(row.said.kind, row.kind) << row.text;
  }
}

constexpr MovieSide onSource = MovieSide::Source, onDest = MovieSide::Destination;

MovieError problem(Reason reason) {
  return {"/reels/a.mov", {}, 0, reason};
}

TEST(Messages, TellWhatWasOpenedAndWhatIsWrongWithIt) {
  expectSaid({
      {OpeningMessages::opened(onSource, "/reels/a.mov", {}), Information, "Opened \"a.mov\" as the source."},
      {OpeningMessages::opened(onDest, "/reels/b.mov", {}), Information, "Opened \"b.mov\" as the destination."},
      {OpeningMessages::opened(onSource, "/reels/a.mov", {.hasPictures = false}), Warning,
       "Opened \"a.mov\" as the source. It has no pictures."},
      {OpeningMessages::opened(onDest, "/reels/b.mov", {.endsInMiddle = true}), Warning,
       "Opened \"b.mov\" as the destination. It ends in the middle: its last pictures are missing."},
      {OpeningMessages::notShown(onSource, "no threads"), Failure, "The source cannot be shown: no threads."},
      {OpeningMessages::notShown(onDest, "no threads"), Failure, "The destination cannot be shown: no threads."},
      {OpeningMessages::emptied(onSource), Information, "There is no source now."},
      {OpeningMessages::emptied(onDest), Information, "There is no destination now."},
      {OpeningMessages::changesLost("/reels/b.mov"), Warning, "The changes of \"b.mov\" were not saved, and are gone."},
      {OpeningMessages::othersLeftOut(1, 1), Information, ""},
      {OpeningMessages::othersLeftOut(1, 3), Warning, "Of 3 files only the first was opened."},
      {OpeningMessages::othersLeftOut(2, 4), Warning, "Of 4 files only the first two were opened."},
      {OpeningMessages::namesUnreadable(), Failure, "Nothing was opened: the file's name is not in UTF-8."},
      {OpeningMessages::pairIsGone({"/reels/a.mov"}), Failure,
       "The pair was not opened: there is no \"/reels/a.mov\"."},
      {OpeningMessages::pairIsGone({"/reels/a.mov", "/reels/b.mov"}), Failure,
       "The pair was not opened: there is neither \"/reels/a.mov\" nor \"/reels/b.mov\"."},
      {OpeningMessages::pairsForgotten(), Information, "The recent pairs are forgotten."},
  });
}

TEST(Messages, TellWhyAFileIsRefused) {
  struct Row {
    MovieError error;
    const char* why;
  };
  const Row rows[] = {
      {problem(Reason::NotMovie), "it is not a QuickTime or MP4 movie"},
      {problem(Reason::NoMovieAmongFirst), "it is not a QuickTime or MP4 movie"},
      {problem(Reason::NoMovieAtom), "it is not a QuickTime or MP4 movie, or was never finished"},
      {{"/reels/a.mov", "moov", 40, Reason::MoviePastEnd}, "it ends in the middle"},
      {{"/reels/a.mov", "mdat", 40, Reason::NoMovieBeforeDamage}, "it ends in the middle, or is damaged"},
      {problem(Reason::NoPermissionToRead), "there is no permission to read the file"},
      {problem(Reason::NoSuchFile), "there is no such file"},
      {problem(Reason::IsFolder), "it is a folder"},
      {problem(Reason::NotRegularFile), "it is not a regular file"},
      {problem(Reason::EmptyFile), "the file is empty"},
      {{"/reels/a.mov", "moov/trak", 48, Reason::MovieMalformed},
       "the movie atom is malformed (atom moov/trak at offset 48)"},
  };
  for (const Row& row : rows) {
    const std::string why = row.why;
    expectSaid({{OpeningMessages::refused(onSource, "/reels/a.mov", row.error), Failure,
                 "\"a.mov\" cannot be opened as the source: " + why + "."},
                {OpeningMessages::refused(onDest, "/reels/a.mov", row.error), Failure,
                 "\"a.mov\" cannot be opened as the destination: " + why + "."}});
    EXPECT_EQ(OpeningMessages::refusedInView("/reels/a.mov", row.error).toStdString(),
              "\"a.mov\" cannot be opened:\n" + why + ".");
  }
}

TEST(Messages, TellWhichFramesWereComparedOrWhyNone) {
  const CheckedFrame a{"/reels/a.mov", "01:00:00:00"}, b{"/reels/b.mov", "00:00:02;00"};
  const WindowState both{.source = SideContent::Pictures, .dest = SideContent::Pictures};
  const check::CheckOutcome compared;
  check::CheckOutcome dark, noSourceFrame, noDestFrame;
  dark.tooDark = true;
  noSourceFrame.sourceFrameError = problem(Reason::SamplePastEnd);
  noDestFrame.destFrameError = problem(Reason::Encrypted);
  expectSaid({
      {CheckMessages::checked(both, a, b, compared), Information,
       "Compared \"a.mov\" at 01:00:00:00 with \"b.mov\" at 00:00:02;00."},
      {CheckMessages::checked(both, a, b, dark), Warning,
       "No frames were compared. \"a.mov\" is too dark at 01:00:00:00: go to a brighter picture."},
      {CheckMessages::checked(both, a, b, noSourceFrame), Failure,
       "No frames were compared. \"a.mov\" gives no picture at 01:00:00:00: the sample lies past the end of the file."},
      {CheckMessages::checked(both, a, b, noDestFrame), Failure,
       "No frames were compared. \"b.mov\" gives no picture at 00:00:02;00: the samples are encrypted."},
      {CheckMessages::checked({.source = SideContent::Pictures}, a, {}, dark), Failure,
       "No frames were compared. There is no destination."},
  });
}

TEST(Messages, TellWhatCameOfAScan) {
  expectSaid({
      {ScanMessages::impossible({.source = SideContent::Pictures}), Failure,
       "Nothing was scanned. There is no destination."},
      {ScanMessages::unreadable(problem(Reason::Encrypted)), Failure,
       "Nothing was scanned. " + problem(Reason::Encrypted).message()},
      {ScanMessages::failed("no threads"), Failure, "Nothing was scanned: no threads."},
      {ScanMessages::scanned("/reels/a.mov", "/reels/b.mov", milliseconds(12000)), Information,
       "Scanned \"a.mov\" and \"b.mov\" in 12 s."},
      {ScanMessages::cancelled(true), Information,
       "The scan was cancelled. The timeline shows what was found until then."},
      {ScanMessages::cancelled(false), Information, "The scan was cancelled before anything was found."},
      {ScanMessages::brokeOff(onSource, "00:00:10:00", problem(Reason::SamplePastEnd)), Warning,
       "The source cannot be read from 00:00:10:00 on. " + problem(Reason::SamplePastEnd).message()},
      {ScanMessages::brokeOff(onDest, "00:00:10:00", problem(Reason::SamplePastEnd)), Warning,
       "The destination cannot be read from 00:00:10:00 on. " + problem(Reason::SamplePastEnd).message()},
      {ScanMessages::givenUp(), Information, "The scan was given up."},
      {ScanMessages::noCounterpart("00:00:01:00"), Warning,
       "The destination shows nothing of the source at 00:00:01:00. Only the destination went there."},
      {ScanMessages::notInDest("00:00:01:00"), Warning,
       "The destination does not show what the source shows at 00:00:01:00."},
      {ScanMessages::notReached("00:00:01:00"), Information,
       "The scan has not been at 00:00:01:00. Only the destination went there."},
  });
}

/// A description with a gamma level, colour parameters and a profile, as far as there are any.
movie::ImageDescription described(std::optional<std::int32_t> gamma, std::optional<std::uint16_t> color,
                                  const movie::Bytes& profile = {}) {
  movie::Bytes header(movie::ImageDescription::headerSize);
  header[3] = movie::ImageDescription::headerSize;
  movie::ImageDescription description(header);
  if (gamma) description.setGamma(*gamma);
  if (color) description.setNclc({0, *color, *color, *color}, movie::ColorAtomFlavour::Nclc);
  if (!profile.empty()) description.setIccProfile(profile);
  return description;
}

using check::ColorProperty;
using check::PropertyEdit;

constexpr check::PropertyChange gammaSet{ColorProperty::Gamma, PropertyEdit::Set, movie::noErr};
constexpr check::PropertyChange colorSet{ColorProperty::Color, PropertyEdit::Set, movie::noErr};
constexpr check::PropertyChange profileSet{ColorProperty::ColorSpace, PropertyEdit::Set, movie::noErr};

constexpr check::PropertyChange unremoved(ColorProperty property) {
  return {property, PropertyEdit::Remove, movie::codecExtensionNotFoundErr};
}

constexpr std::int32_t gamma22 = 144179, almost22 = 144180, gamma18 = 117965;
constexpr WindowState bothLoaded{.source = SideContent::Pictures, .dest = SideContent::Pictures};

Message synced(const check::SyncOutcome& outcome) {
  return SyncMessages::synced(bothLoaded, "/reels/b.mov", outcome);
}

TEST(Messages, TellWhatASyncChangedValueByValue) {
  const movie::Bytes tiny(10, 7), other(12, 7);
  const auto& sRGB = movie::sRGBProfile();
  const std::string sRGBName = movie::profileDescription(sRGB);
  expectSaid({
      {synced({described(gamma18, 1), described(gamma22, 9), {gammaSet, colorSet}, true}), Success,
       "Changed \"b.mov\", not saved yet: gamma 1.80 → 2.20, colour 1-1-1 → 9-9-9."},
      {synced({described({}, {}), described(gamma22, 1, tiny), {gammaSet, colorSet, profileSet}, true}), Success,
       "Changed \"b.mov\", not saved yet: gamma none → 2.20, colour none → 1-1-1, profile none → 10 bytes."},
      {synced({described(gamma22, {}), described(almost22, {}), {gammaSet}, true}), Success,
       "Changed \"b.mov\", not saved yet: gamma 2.20000 → 2.20001."},
      {synced({described({}, {}, tiny), described({}, {}, sRGB), {profileSet}, true}), Success,
       "Changed \"b.mov\", not saved yet: profile 10 bytes → " + sRGBName + "."},
      {synced({described(gamma22, {}),
               described({}, {}),
               {{ColorProperty::Gamma, PropertyEdit::Remove, movie::noErr}, unremoved(ColorProperty::ColorSpace)},
               true}),
       Success, "Changed \"b.mov\", not saved yet: gamma 2.20 → none."},
      {synced({described(gamma22, 1), described(gamma22, 1), {unremoved(ColorProperty::ColorSpace)}, true}),
       Information, "There was nothing to change in \"b.mov\"."},
  });
}

TEST(Messages, TellWhatASyncCouldNotChange) {
  const movie::Bytes tiny(10, 7);
  const auto failed = [](ColorProperty property) {
    return check::SyncOutcome{
        described(gamma22, 1), described(gamma22, 1), {{property, PropertyEdit::Set, movie::paramErr}}, false};
  };
  expectSaid({
      {synced({described(gamma18, 6, tiny),
               described(gamma22, 6, tiny),
               {gammaSet, unremoved(ColorProperty::Color), unremoved(ColorProperty::ColorSpace)},
               true}),
       Warning,
       "The colour (6-6-6) stays, although the source has none. The profile (10 bytes) stays, although the source has "
       "none. Changed \"b.mov\", not saved yet: gamma 1.80 → 2.20."},
      {synced(failed(ColorProperty::Gamma)), Failure,
       "Nothing was changed in \"b.mov\": its gamma cannot be set (error -50)."},
      {synced(failed(ColorProperty::Color)), Failure,
       "Nothing was changed in \"b.mov\": its colour cannot be set (error -50)."},
      {synced(failed(ColorProperty::ColorSpace)), Failure,
       "Nothing was changed in \"b.mov\": its profile cannot be set (error -50)."},
      {SyncMessages::synced({.source = SideContent::Pictures}, {}, {}), Failure,
       "Nothing was synced. There is no destination."},
      {SyncMessages::synced({.source = SideContent::NoPictures, .dest = SideContent::Pictures}, "/reels/b.mov", {}),
       Failure, "Nothing was synced. The source has no pictures."},
  });
}

TEST(Messages, TellWhatASaveDid) {
  using movie::SaveOutcome;
  using movie::SavePlace;
  const auto saved = [](const SaveOutcome& outcome) {
    return SaveMessages::saved("/reels/b.mov", milliseconds(1234), outcome);
  };
  const std::string done = "Saved \"b.mov\" in 1.23 s. The movie on the disk has the new metadata.";
  expectSaid({
      {saved({.place = SavePlace::Slot, .notes = {}}), Success, done},
      {saved({.place = SavePlace::Unchanged, .notes = {}}), Information,
       "\"b.mov\" has no unsaved changes. The movie on the disk is as it was."},
      {saved({.place = SavePlace::Tail, .uncertain = true, .notes = {"x"}}), Warning,
       "It is uncertain whether the save of \"b.mov\" counts. Load it again and check."},
      {saved({.place = SavePlace::Tail, .mediaNowPrecedeMovie = true, .notes = {"x"}}), Warning,
       done + " Over a network it no longer plays before it is loaded as a whole; a copy does."},
      {saved({.place = SavePlace::Slot, .names = 2, .notes = {"x"}}), Warning,
       done + " It has 2 names, and was changed under all of them."},
      {saved({.place = SavePlace::Slot, .notes = {"x"}}), Warning, done + " The log tells more of it."},
      {saved({.place = SavePlace::Slot, .names = 3, .notes = {"x", "y"}}), Warning,
       done + " It has 3 names, and was changed under all of them. The log tells more of it."},
  });
}

TEST(Messages, TellWhyASaveWasNotDone) {
  const MovieError full{"/reels/b.mov", {}, 0, {Reason::Meanwhile, {Reason::DiskFull, Reason::ReservingRoom}}};
  expectSaid({
      {SaveMessages::refused("/reels/b.mov", {"/reels/b.mov", "moof", 1024, Reason::Fragmented}), Warning,
       "\"b.mov\" cannot be saved in place: the movie is fragmented (atom moof at offset 1024). Save a copy instead."},
      {SaveMessages::refused({}, {{}, {}, 0, Reason::NoMovieLoaded}), Failure,
       "Nothing was saved: there is no destination."},
      {SaveMessages::failed("/reels/b.mov", full), Failure,
       "\"b.mov\" was not saved: the disk is full (reserving room). The movie on the disk is as it was."},
      {SaveMessages::nothingSaved(), Information, "Nothing was saved."},
  });
}

TEST(Messages, TellWhatCameOfACopy) {
  const SavedCopy copy{.path = "/reels/c.mov", .bytes = 12'300'000, .took = milliseconds(12'345)};
  SavedCopy late = copy, beside = copy;
  late.outranCancelling = true;
  beside.leavesUnsavedChanges = true;
  const auto failed = [](const MovieError& error, bool leftAsItWas = true) {
    return SaveMessages::copyFailed("/reels/c.mov", error, leftAsItWas);
  };
  const std::string done = "Saved a copy, \"c.mov\" (12.3 MB), in 12 s.";
  expectSaid({
      {SaveMessages::copied(copy), Success, done},
      {SaveMessages::copied(late), Success, done + " It was complete before it could be cancelled."},
      {SaveMessages::copied(beside), Success, done + " The destination's own file has not been changed."},
      {failed({"/reels/c.mov", {}, 0, Reason::Cancelled}), Information,
       "The copy \"c.mov\" was cancelled. Nothing was left behind."},
      {failed({"/reels/c.mov", {}, 0, Reason::NotEnoughSpace}), Failure,
       "The copy \"c.mov\" was not saved: there is not enough space on the disk. Nothing was left behind."},
      {failed({"/reels/b.mov", {}, 0, Reason::ChangedSinceOpened}), Failure,
       "The copy \"c.mov\" was not saved: \"b.mov\": the file was changed since it was opened. Nothing was left "
       "behind."},
      {failed({"/reels/c.mov", {}, 0, Reason::OtherTracksNow}, false), Warning,
       "The copy \"c.mov\" may have failed: the file now has other tracks."},
      {failed({"/reels/c.mov", {}, 0, {Reason::NameUncertain, {movie::verbatim("x")}}}), Warning,
       "The copy \"c.mov\" may have failed: the file is complete, but whether its name would outlast a power failure "
       "is uncertain: x."},
      {failed({{}, {}, 0, Reason::NoMovieToWrite}), Failure, "Nothing was saved: there is no destination."},
      {SaveMessages::nothingToCopy(), Failure, "Nothing was saved: there is no destination."},
      {SaveMessages::goesOn(onSource), Success, "The source goes on with the new file."},
      {SaveMessages::goesOn(onDest), Success, "The destination goes on with the new file."},
      {SaveMessages::doesNotGoOn(onSource, problem(Reason::EmptyFile)), Warning,
       "The source's new file cannot be opened: the file is empty."},
      {SaveMessages::doesNotGoOn(onDest, problem(Reason::EmptyFile)), Warning,
       "The destination's new file cannot be opened: the file is empty."},
  });
}

TEST(Messages, TellWhatCameOfPagesAndSettings) {
  expectSaid({
      {WindowMessages::noMovieToMove(), Failure, "There is no movie there to go to a timecode."},
      {WindowMessages::timeOutside("02:00:00:00"), Warning,
       "The movie does not reach to 02:00:00:00. This is where it begins or ends."},
      {WindowMessages::fullScreen(), Information, "Esc leaves full screen."},
      {WindowMessages::manualMissing(), Failure, "The user manual is not installed."},
      {WindowMessages::notOpened("http://www.maker.example/"), Failure,
       "There is no program that opens http://www.maker.example/."},
      {WindowMessages::updaterMissing(), Failure, "No updater is installed that could look for a newer version."},
      {WindowMessages::gatheringCancelled(), Information, "The gathering of logs was cancelled."},
      {WindowMessages::logsNotGathered(), Failure, "The logs were not gathered."},
      {WindowMessages::logNotOpened(), Failure, "The log was not opened."},
      {WindowMessages::settingsNotWritten(), Warning, "The settings cannot be written, and stay as they were."},
  });
}

TEST(Messages, AreJoinedWithTheWorstFirst) {
  const Message done(Success, "Done."), note(Information, "Note."), mind(Warning, "Mind."), bad(Failure, "Bad.");
  expectSaid({
      {joined({done, note, mind}), Warning, "Mind. Done. Note."},
      {joined({note, bad, mind}), Failure, "Bad. Mind. Note."},
      {joined({done, {Success, "Again."}}), Success, "Done. Again."},
      {joined({{}, note, {}}), Information, "Note."},
      {joined({}), Information, ""},
  });
  EXPECT_TRUE(joined({{}}).isEmpty());
}

TEST(Messages, ShowNamesInOneLineWhateverIsInThem) {
  struct Row {
    QString path;
    const char* shown;
  };
  const Row rows[] = {{"/reels/a.mov", "a.mov"},
                      {"a.mov", "a.mov"},
                      {"/reels/", "/reels/"},
                      {"", ""},
                      {"/reels/two\nlines\t.mov", "two lines .mov"},
                      {"/reels/%1 %2.mov", "%1 %2.mov"},
                      {"/reels/\U0001F3AC.mov", "\U0001F3AC.mov"},
                      {"/reels/" + QString(100, 'x') + ".mov",
                       "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx…xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx.mov"}};
  for (const Row& row : rows) EXPECT_EQ(MessageWords::nameOf(row.path).toStdString(), row.shown);
  EXPECT_EQ(OpeningMessages::refused(onSource, "%1 %2.mov", problem(Reason::EmptyFile)).text.toStdString(),
            "\"%1 %2.mov\" cannot be opened as the source: the file is empty.");
}

TEST(Messages, LeaveOutWholeCharactersOfLongNames) {
  const auto boards = [](qsizetype count) { return QString::fromUtf8("\U0001F3AC").repeated(count); };
  EXPECT_EQ(MessageWords::nameOf("x" + boards(60)), "x" + boards(19) + "…" + boards(20));
  EXPECT_EQ(MessageWords::nameOf(boards(60) + "x"), boards(20) + "…" + boards(19) + "x");
}

TEST(Messages, ShowTimesAsSomebodyWaitsForThem) {
  struct Row {
    int milliseconds;
    const char* shown;
  };
  const Row rows[] = {{0, "less than 0.01 s"}, {9, "less than 0.01 s"}, {10, "0.01 s"},   {16, "0.02 s"},
                      {9'994, "9.99 s"},       {10'000, "10 s"},        {59'999, "59 s"}, {185'000, "3 min 5 s"}};
  for (const Row& row : rows) {
    EXPECT_EQ(MessageWords::spanOf(milliseconds(row.milliseconds)).toStdString(), row.shown);
  }
}

TEST(Messages, HaveAWordForEachKind) {
  EXPECT_EQ(Message(Information, "x").kindWord(), "Information");
  EXPECT_EQ(Message(Success, "x").kindWord(), "Done");
  EXPECT_EQ(Message(Warning, "x").kindWord(), "Warning");
  EXPECT_EQ(Message(Failure, "x").kindWord(), "Failure");
}

TEST(Messages, NameBothFilesInTheTitle) {
  EXPECT_EQ(WindowMessages::title({}, {}), "Lumacheck");
  EXPECT_EQ(WindowMessages::title("/reels/a.mov", {}), "a.mov – Lumacheck");
  EXPECT_EQ(WindowMessages::title({}, "/reels/b.mov"), "→ b.mov[*] – Lumacheck");
  EXPECT_EQ(WindowMessages::title("/reels/a.mov", "/exports/b.mov"), "a.mov → b.mov[*] – Lumacheck");
  EXPECT_EQ(WindowMessages::title("/reels/%2[*].mov", "/b.mov"), "%2[*][*].mov → b.mov[*] – Lumacheck");
  EXPECT_EQ(WindowMessages::pairInMenu("/reels/a&b.mov", "/b.mov"), "a&&b.mov → b.mov");
  EXPECT_EQ(WindowMessages::pairInTip("/reels/a.mov", "/b.mov"), "Source: /reels/a.mov\nDestination: /b.mov");
}

TEST(WhyNot, SaysWhatAnActionLacks) {
  using enum SideContent;
  struct Row {
    WindowState state;
    const char *check, *save, *saveAs, *swap, *link;
  };
  const char* const none = "There are no movies.";
  const char* const noDest = "There is no destination.";
  const char* const unchanged = "The destination has no unsaved changes.";
  const char* const unequal = "The movies do not last equally long.";
  const Row rows[] = {
      {{Nothing, Nothing, false, true}, none, noDest, noDest, none, ""},
      {{Pictures, Nothing, false, false}, noDest, noDest, noDest, "", unequal},
      {{Nothing, Pictures, false, false}, "There is no source.", unchanged, "", "", unequal},
      {{NoPictures, Pictures, false, true}, "The source has no pictures.", unchanged, "", "", ""},
      {{Pictures, NoPictures, false, true}, "The destination has no pictures.", unchanged, "", "", ""},
      {{Pictures, Pictures, true, true}, "", "", "", "", ""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(WhyNot::check(row.state), row.check);
    EXPECT_EQ(WhyNot::scan(row.state), row.check);
    EXPECT_EQ(WhyNot::sync(row.state), row.check);
    EXPECT_EQ(WhyNot::save(row.state), row.save);
    EXPECT_EQ(WhyNot::saveAs(row.state), row.saveAs);
    EXPECT_EQ(WhyNot::swap(row.state), row.swap);
    EXPECT_EQ(WhyNot::link(row.state), row.link);
  }
  EXPECT_EQ(WhyNot::link({.isMapped = true}), "") << "whatever their lengths";
  EXPECT_EQ(WhyNot::play(true), "");
  EXPECT_EQ(WhyNot::play(false), "There is no movie.");
}

}  // namespace
