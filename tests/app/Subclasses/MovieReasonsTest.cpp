#include <QFile>
#include <QTranslator>

#include <gtest/gtest.h>

#include "app/Subclasses/MovieReasons.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"

namespace {

/// Says what it was asked for in capitals, places as they are.
class Shouting : public QTranslator {
 public:
  Shouting() { QCoreApplication::installTranslator(this); }
  QString translate(const char* /*context*/, const char* text, const char* /*comment*/, int /*n*/) const override {
    return QString::fromUtf8(text).toUpper();
  }
  bool isEmpty() const override { return false; }
};

TEST(MovieReasons, AreThoseOfTheMovieLayerInEnglish) {
  const movie::MovieError errors[] = {
      {"/a film.mov", {}, 0, "the frame cannot be decoded: Invalid data found when processing input"},
      {"/film.mov", "moov/trak", 4711, "there is no such track"},
      {{}, {}, 0, "std::bad_alloc"},
      {"/100%1.mov", {}, 0, "the sample 7 cannot be read: the system says \"Input/output error %2\""},
      {"/film.mov", {}, 0, ""},
      {"/film.mov", {}, 0, "the frame cannot be decoded: "},
  };
  for (const movie::MovieError& error : errors) {
    EXPECT_EQ(MovieReasons::sentenceOf(error).toStdString(), error.message());
  }
}

TEST(MovieReasons, AreTranslatedClauseByClause) {
  const Shouting shouting;
  struct Row {
    const char* reason;
    const char* translated;
  };
  const Row rows[] = {
      {"the samples overlap", "THE SAMPLES OVERLAP"},
      {"there is no decoder for the codec 'QQQQ'", "THERE IS NO DECODER FOR THE CODEC 'QQQQ'"},
      {"there is no decoder for the codec ''''", "THERE IS NO DECODER FOR THE CODEC ''''"},
      {"the sample 7 cannot be read: the file became shorter", "THE SAMPLE 7 CANNOT BE READ: THE FILE BECAME SHORTER"},
      {"the sample 7 cannot be read: the system says \"no: really\"",
       "THE SAMPLE 7 CANNOT BE READ: THE SYSTEM SAYS \"no: really\""},
      {"the frame cannot be used: the pixel format pal8 is not known",
       "THE FRAME CANNOT BE USED: THE PIXEL FORMAT pal8 IS NOT KNOWN"},
      {"the frame cannot be decoded: Invalid data", "THE FRAME CANNOT BE DECODED: Invalid data"},
      {"the decoder module cannot be loaded: a.so: no such file\nor folder",
       "THE DECODER MODULE CANNOT BE LOADED: a.so: no such file\nor folder"},
      {"the samples overlap, and more", "the samples overlap, and more"},
      {"something else", "something else"},
      {"", ""},
  };
  for (const Row& row : rows) EXPECT_EQ(MovieReasons::clauseOf(row.reason), row.translated);
  EXPECT_EQ(MovieReasons::sentenceOf({"/a.mov", "moov", 8, "the samples overlap"}),
            "CANNOT READ \"/a.mov\": THE SAMPLES OVERLAP (ATOM moov AT OFFSET 8).");
  EXPECT_EQ(MovieReasons::sentenceOf({{}, {}, 0, "the samples overlap"}),
            "CANNOT READ THE MOVIE: THE SAMPLES OVERLAP.");
}

/// The window on a movie of a codec that nobody knows.
class UnknownCodec : public WindowFixture {
 protected:
  UnknownCodec() {
    QFile movie(plainMovie());
    EXPECT_TRUE(movie.open(QIODevice::ReadOnly));
    QByteArray bytes = movie.readAll();
    const qsizetype table = bytes.indexOf("stsd");  // of the first track, which is the video's
    constexpr qsizetype toCodec = 16;
    bytes.replace(table + toCodec, 4, "QQQQ");
    QFile changed(path_);
    EXPECT_TRUE(changed.open(QIODevice::WriteOnly));
    changed.write(bytes);
  }
  QString said() {
    launch();
    load(path_, path_);
    EXPECT_TRUE(waitUntil([&] { return !sourceView().message().isEmpty(); }));
    return sourceView().message();
  }
  const QString path_ = home_.filePath("film.mov");
};

TEST_F(UnknownCodec, IsToldInTheView) {
  EXPECT_EQ(said(),
            "This frame cannot be shown: Cannot read \"" + path_ + "\": there is no decoder for the codec 'QQQQ'.");
}

TEST_F(UnknownCodec, IsToldInTheUsersLanguage) {
  const Shouting shouting;
  EXPECT_EQ(said(),
            "THIS FRAME CANNOT BE SHOWN: CANNOT READ \"" + path_ + "\": THERE IS NO DECODER FOR THE CODEC 'QQQQ'.");
}

}  // namespace
