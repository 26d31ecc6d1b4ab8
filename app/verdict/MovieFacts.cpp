#include "app/verdict/MovieFacts.h"

#include <QLocale>
#include <array>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "app/messages/MessageWords.h"
#include "app/verdict/Moment.h"
#include "diagnosis/words/CodePoints.h"
#include "movie/atoms/ImageDescription.h"

namespace {

struct CodecName {
  const char* codec;
  const char* name;
};

constexpr std::array codecNames{
    CodecName{"apco", "ProRes 422 Proxy"},
    CodecName{"apcs", "ProRes 422 LT"},
    CodecName{"apcn", "ProRes 422"},
    CodecName{"apch", "ProRes 422 HQ"},
    CodecName{"ap4h", "ProRes 4444"},
    CodecName{"ap4x", "ProRes 4444 XQ"},
    CodecName{"avc1", "H.264"},
    CodecName{"avc3", "H.264"},
    CodecName{"hvc1", "HEVC"},
    CodecName{"hev1", "HEVC"},
    CodecName{"av01", "AV1"},
    CodecName{"vp09", "VP9"},
    CodecName{"mp4v", "MPEG-4"},
    CodecName{"mp2v", "MPEG-2"},
    CodecName{"AVdn", "DNxHD"},
    CodecName{"AVdh", "DNxHR"},
    CodecName{"CFHD", "CineForm"},
    CodecName{"v210", "4:2:2, 10 bits"},
    CodecName{"2vuy", "4:2:2, 8 bits"},
    CodecName{"jpeg", "JPEG"},
    CodecName{"mjpa", "Motion JPEG A"},
    CodecName{"mjp2", "JPEG 2000"},
    CodecName{"rle ", "Animation"},
    CodecName{"raw ", "RGB"},
    CodecName{"png ", "PNG"},
};

QString nameOfCodec(movie::FourCC codec) {
  const std::string text = movie::fourCCText(codec);
  for (const auto& [known, name] : codecNames) {
    if (text == known) return QString::fromLatin1(name);
  }
  return MessageWords::oneLine(QString::fromStdString(text));
}

QString gammaText(std::int32_t fixed) {
  QLocale locale;
  locale.setNumberOptions(QLocale::OmitGroupSeparator);
  constexpr int digits = 4;
  return locale.toString(fixed / 65536.0, 'g', digits);
}

QString name(std::string_view code) {
  return QString::fromLatin1(code.data(), static_cast<qsizetype>(code.size()));
}

/// The three numbers, and their name where all have the same.
QString colorText(const diagnosis::SideTags& tags) {
  const QString numbers = QStringLiteral("%1-%2-%3").arg(tags.primaries).arg(tags.transferFunction).arg(tags.matrix);
  const std::string_view primaries = diagnosis::primariesName(tags.primaries);
  const bool agree = diagnosis::transferFunctionName(tags.transferFunction) == primaries &&
                     diagnosis::matrixName(tags.matrix) == primaries;
  return agree ? numbers + u' ' + name(primaries) : numbers;
}

bool saysColor(const diagnosis::SideTags& tags) {
  constexpr std::uint16_t unspecified = 2;
  return tags.primaries != unspecified || tags.transferFunction != unspecified || tags.matrix != unspecified;
}

std::optional<movie::ImageDescription> descriptionOf(const movie::Movie& movie) {
  movie::Bytes bytes = describedIn(movie);
  if (bytes.empty()) return std::nullopt;
  return movie::ImageDescription(std::move(bytes));
}

bool differs(std::initializer_list<diagnosis::Comparison> comparisons) {
  return std::any_of(comparisons.begin(), comparisons.end(),
                     [](diagnosis::Comparison each) { return each != diagnosis::Comparison::Equal; });
}

}  // namespace

/// One movie in words, in the order of the table.
struct MovieFacts::Side {
  QString file, time, codec, size, rate, range, gamma, color, profile;
  QString path, rangeTip, colorTip, profileTip;
};

MovieFacts::Side MovieFacts::sideOf(const MovieMoment& moment, const diagnosis::SideTags* tags) {
  //: A movie has no such property
  const QString none = tr("none");
  //: It is not known of a movie
  const QString unknown = tr("unknown");
  const QLocale locale;
  const std::string& path = moment.movie.path();
  Side side;
  side.path = QString::fromStdString(path);
  side.file = MessageWords::nameOf(side.path);
  side.time = QVQuickTime::timecodeAtTime(moment.time, &moment.movie);
  constexpr int rateDigits = 5;
  const double rate = QVQuickTime::fpsForMovie(&moment.movie);
  side.rate = rate > 0 ? locale.toString(rate, 'g', rateDigits) : unknown;
  side.codec = side.size = side.range = side.gamma = side.color = side.profile = unknown;
  if (const auto description = descriptionOf(moment.movie)) {
    side.codec = nameOfCodec(description->codec());
    side.size = QStringLiteral("%1 × %2").arg(description->width()).arg(description->height());
    const auto gamma = description->gamma();
    side.gamma = gamma ? gammaText(*gamma) : none;
    const auto profile = description->iccProfile();
    side.profile = profile ? tr("ICC") : none;
    if (profile) side.profileTip = tr("%1 bytes").arg(locale.toString(static_cast<qulonglong>(profile->size())));
  }
  if (tags == nullptr) return side;
  side.range = rangeOf(*tags);
  if (tags->statedRange == movie::PictureRange::Unspecified) side.rangeTip = tr("It is not stated, and assumed.");
  side.color = saysColor(*tags) ? colorText(*tags) : none;
  side.colorTip = colorTip(*tags);
  return side;
}

/// In brackets where nothing states it.
QString MovieFacts::rangeOf(const diagnosis::SideTags& tags) {
  const QString range = tags.range == diagnosis::SampleRange::Full ? tr("full") : tr("video");
  return tags.statedRange == movie::PictureRange::Unspecified ? u'(' + range + u')' : range;
}

QString MovieFacts::colorTip(const diagnosis::SideTags& tags) {
  //: %1 to %3: names of ITU-T H.273
  return tr("Primaries: %1\nTransfer function: %2\nMatrix: %3")
      .arg(name(diagnosis::primariesName(tags.primaries)), name(diagnosis::transferFunctionName(tags.transferFunction)),
           name(diagnosis::matrixName(tags.matrix)));
}

QList<Fact> MovieFacts::of(const MovieMoment& source, const MovieMoment& dest, const diagnosis::Finding& finding) {
  const diagnosis::TagComparison& tags = finding.tags;
  const bool hasTags = finding.frames > 0;
  const Side left = sideOf(source, hasTags ? &tags.source : nullptr);
  const Side right = sideOf(dest, hasTags ? &tags.dest : nullptr);
  QList<Fact> facts{
      {tr("File"), left.file, right.file, false, left.path, right.path},
      {tr("Time"), left.time, right.time, !isSameMoment(source.movie, source.time, dest.movie, dest.time)},
      {tr("Codec"), left.codec, right.codec, left.codec != right.codec},
      {tr("Size"), left.size, right.size, left.size != right.size},
      //: Frames a second
      {tr("Rate"), left.rate, right.rate, left.rate != right.rate},
      {tr("Range"), left.range, right.range, hasTags && tags.source.range != tags.dest.range, left.rangeTip,
       right.rangeTip},
      {tr("Gamma"), left.gamma, right.gamma, left.gamma != right.gamma},
      {tr("Colour"), left.color, right.color, differs({tags.primaries, tags.transferFunction, tags.matrix}),
       left.colorTip, right.colorTip},
      //: An ICC profile
      {tr("Profile"), left.profile, right.profile, differs({tags.profile}), left.profileTip, right.profileTip},
  };
  return facts;
}
