#include <QFile>
#include <QTranslator>

#include <gtest/gtest.h>

#include "app/messages/MovieReasons.h"
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
  const movie::Clause system(movie::Reason::SystemSays, {movie::verbatim("Input/output error %2 \xC3\xA4")});
  const movie::MovieError errors[] = {
      {"/a film.mov", {}, 0, {movie::Reason::FrameUndecodable, {movie::verbatim("Invalid data found")}}},
      {"/film.mov", "moov/trak", 4711, movie::Reason::NoSuchTrack},
      {{}, {}, 0, movie::verbatim("std::bad_alloc")},
      {"/100%1.mov", {}, 0, {movie::Reason::SampleUnreadable, {movie::verbatim("7"), system}}},
  };
  for (const movie::MovieError& error : errors) {
    EXPECT_EQ(MovieReasons::sentenceOf(error).toStdString(), error.message());
  }
}

TEST(MovieReasons, AreTranslatedClauseByClause) {
  const Shouting shouting;
  const movie::Clause shorter(movie::Reason::SampleUnreadable, {movie::verbatim("7"), movie::Reason::BecameShorter});
  EXPECT_EQ(MovieReasons::sentenceOf({"/a.mov", "moov", 8, shorter}),
            "CANNOT READ \"/a.mov\": THE SAMPLE 7 CANNOT BE READ: THE FILE BECAME SHORTER (ATOM moov AT OFFSET 8).");
  EXPECT_EQ(MovieReasons::sentenceOf({{}, {}, 0, movie::verbatim("std::bad_alloc")}),
            "CANNOT READ THE MOVIE: std::bad_alloc.");
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

TEST_F(UnknownCodec, IsForgottenWithItsMovie) {
  said();
  controller().loadQTMovieWithPath(plainMovie(), "source");
  EXPECT_EQ(sourceView().message(), "");
}

TEST_F(UnknownCodec, IsToldInTheUsersLanguage) {
  const Shouting shouting;
  EXPECT_EQ(said(),
            "THIS FRAME CANNOT BE SHOWN: CANNOT READ \"" + path_ + "\": THERE IS NO DECODER FOR THE CODEC 'QQQQ'.");
}

}  // namespace
