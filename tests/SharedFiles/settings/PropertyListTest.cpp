#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

QByteArray document(const QByteArray& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body + "</plist>\n";
}

QVariantMap everything() {
  return {{"string", "a<b>&\"' ä€😀 ]]> % \n\t"},
          {"empty", ""},
          {"true", true},
          {"false", false},
          {"zero", 0LL},
          {"negative", -5LL},
          {"smallest", std::numeric_limits<qlonglong>::min()},
          {"largest", std::numeric_limits<qlonglong>::max()},
          {"larger", qulonglong{1} << 63},
          {"largest of all", std::numeric_limits<qulonglong>::max()},
          {"real", 0.1},
          {"large", -1e300},
          {"date", QDateTime::fromString("2026-11-15T13:24:25Z", Qt::ISODate)},
          {"early", QDateTime::fromString("1969-04-24T22:13:20Z", Qt::ISODate)},
          {"data", QByteArray("\0\x01\xff", 3)},
          {"no data", QByteArray("")},
          {"array", QVariantList{1LL, "two", QVariantList(), QVariantMap{{"k&<>", 3LL}}}},
          {"dictionary", QVariantMap()},
          {"", "empty key"}};
}

TEST(PropertyList, KeepsEveryKindOfValue) {
  const std::optional<QByteArray> xml = PropertyList::toBytes(everything());
  ASSERT_TRUE(xml);
  const std::optional<QVariant> value = PropertyList::fromBytes(*xml);
  ASSERT_TRUE(value);
  EXPECT_EQ(value->toMap(), everything());
  for (const auto& [key, item] : everything().toStdMap()) {
    EXPECT_EQ(value->toMap().value(key).typeId(), item.typeId()) << key.toStdString();
  }
}

TEST(PropertyList, KeepsNumbersThatAreNone) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::optional<QByteArray> xml = PropertyList::toBytes(QVariantList{std::nan(""), infinity, -infinity});
  ASSERT_TRUE(xml);
  const QVariantList list = PropertyList::fromBytes(*xml).value_or(QVariant()).toList();
  ASSERT_EQ(list.size(), 3);
  EXPECT_TRUE(std::isnan(list[0].toDouble()));
  EXPECT_EQ(list[1].toDouble(), infinity);
  EXPECT_EQ(list[2].toDouble(), -infinity);
}

TEST(PropertyList, WritesTheXmlForm) {
  const QByteArray xml = PropertyList::toBytes(QVariantMap{{"launches", 3}}).value_or("");
  EXPECT_TRUE(xml.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
  EXPECT_TRUE(xml.contains("<key>launches</key>\n\t<integer>3</integer>"));
}

TEST(PropertyList, TakesNarrowerNumbersAndLists) {
  const QVariantMap narrow{
      {"int", 5}, {"uint", 6U}, {"float", 0.5F}, {"strings", QStringList{"a", "b"}}, {"ulonglong", qulonglong{7}}};
  const QVariantMap wide =
      PropertyList::fromBytes(PropertyList::toBytes(narrow).value_or("")).value_or(QVariant()).toMap();
  EXPECT_EQ(
      wide,
      QVariantMap(
          {{"int", 5LL}, {"uint", 6LL}, {"float", 0.5}, {"strings", QVariantList{"a", "b"}}, {"ulonglong", 7LL}}));
}

TEST(PropertyList, RefusesToWriteWhatItCannotReadBack) {
  QVariant deep = 1;
  for (int i = 0; i < 65; ++i) deep = QVariantList{deep};
  const QVariant refused[] = {QVariant(),
                              QVariantList{QVariant()},
                              QVariantMap{{"a", QVariant::fromValue(nullptr)}},
                              QDateTime(),
                              QDateTime(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC),
                              QDateTime(QDate(1900, 1, 1), QTime(0, 0), Qt::UTC),
                              QString(QChar(u'\0')),
                              QString(QChar(0xD800)),
                              QVariantMap{{QString(QChar(0)), 1}},
                              deep};
  for (const QVariant& value : refused) EXPECT_FALSE(PropertyList::toBytes(value)) << value.typeName();
}

TEST(PropertyList, ReadsNoMoreNestingThanItWrites) {
  const auto nested = [](int depth) {
    return document(QByteArray("<array>").repeated(depth) + "<true/>" + QByteArray("</array>").repeated(depth));
  };
  EXPECT_TRUE(PropertyList::fromBytes(nested(64)));
  EXPECT_FALSE(PropertyList::fromBytes(nested(65)));
  EXPECT_FALSE(PropertyList::fromBytes(nested(1000000)));
  EXPECT_FALSE(PropertyList::fromBytes(document(QByteArray("<dict><key>k</key>").repeated(1000000))));
  QVariant deepest = true;
  for (int i = 0; i < 64; ++i) deepest = QVariantList{deepest};
  const std::optional<QByteArray> xml = PropertyList::toBytes(deepest);
  ASSERT_TRUE(xml);
  EXPECT_EQ(PropertyList::fromBytes(*xml), deepest);
}

TEST(PropertyList, RefusesMalformedBytes) {
  const QByteArray manyEntities(
      R"(<?xml version="1.0"?><!DOCTYPE p [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;">)"
      R"(<!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;"><!ENTITY d "&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;">]>)"
      R"(<plist><string>&d;&d;&d;&d;&d;</string></plist>)");
  const QByteArray refused[] = {"",
                                "x",
                                QByteArray(100, '\0'),
                                "<plist>",
                                "<plist version=\"1.0\"></plist>",
                                "<plist/>",
                                "<dict></dict><dict></dict>",
                                document("<dict><string>a</string></dict>"),
                                document("<dict><key>a</key><string>b</dict>"),
                                document("<unknown/>"),
                                document("<dict><key>a</key><unknown/></dict>"),
                                document("<string>\x01</string>"),
                                document("<string>\xff</string>"),
                                document("<string>&nothing;</string>"),
                                manyEntities};
  for (const QByteArray& xml : refused) EXPECT_FALSE(PropertyList::fromBytes(xml)) << xml.left(80).toStdString();
}

TEST(PropertyList, EscapesWhatXmlReadsAsALineFeed) {
  const QVariantMap texts{{"a\rb", "\r"}, {"event", "two\r\nlines\r"}};
  const QByteArray xml = PropertyList::toBytes(texts).value_or("");
  EXPECT_TRUE(xml.startsWith("<?xml"));
  EXPECT_TRUE(xml.contains("<string>two&#13;\nlines&#13;</string>")) << xml.toStdString();
  EXPECT_EQ(PropertyList::fromBytes(xml), texts);
}

// --- The binary form ------------------------------------------------------------------------------------------------

TEST(PropertyList, WritesTheBinaryFormWhereXmlHasNoRoom) {
  const QDateTime whole = QDateTime::fromString("2026-11-15T13:24:25Z", Qt::ISODate);
  const struct {
    QVariant value;
    bool binary;
  } rows[] = {{whole, false},
              {whole.addMSecs(1), true},
              {whole.addMSecs(200), true},
              {whole.addMSecs(999), true},
              {QVariantMap{{"a", QVariantList{1LL, QVariantMap{{"launch", whole.addMSecs(800)}}}}}, true},
              {QString("\t\n\r \x7f"), false},
              {QString("\x1b"), true},
              {QString(QChar(0xFFFE)), true},
              {QVariantMap{{"\x01", 1LL}}, true},
              {QVariantList{"a", "\x1f"}, true}};
  for (const auto& row : rows) {
    const std::optional<QByteArray> bytes = PropertyList::toBytes(row.value);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->startsWith("bplist00"), row.binary) << row.value.typeName();
    EXPECT_EQ(PropertyList::fromBytes(*bytes), row.value) << row.value.typeName();
  }
}

TEST(PropertyList, KeepsEveryKindOfValueInTheBinaryForm) {
  QVariantMap all = everything();
  all["launch"] = QDateTime::fromString("2026-11-15T13:24:25.123Z", Qt::ISODateWithMs);
  all["control"] = "\x01";
  const std::optional<QByteArray> bytes = PropertyList::toBytes(all);
  ASSERT_TRUE(bytes && bytes->startsWith("bplist00"));
  EXPECT_EQ(PropertyList::fromBytes(*bytes), all);
}

TEST(PropertyList, KnowsWholeSecondsBefore2001) {
  const QDateTime early = QDateTime::fromString("2000-12-31T23:59:59Z", Qt::ISODate);
  EXPECT_EQ(PropertyList::fromBytes(PropertyList::toBytes(early.addMSecs(500)).value_or("")), early);
  EXPECT_EQ(PropertyList::fromBytes(PropertyList::toBytes(QVariantList{early.addMSecs(500), "\x01"}).value_or("")),
            (QVariantList{early, "\x01"}));
}

/// logQC, uid, uidAssigned and a list under a name outside of ASCII, as another program writes them.
QByteArray anothersBinaryList() {
  return QByteArray::fromHex(
      "62706c6973743030d40102030405060708556c6f675143537569645b75696441737369676e65646200e420ac095c61626344454631323334"
      "35363341c854f504800000a5090a0b0c0d100113fffffffffffffffb2340040000000000004200ff500811171b272c2d3a43494b545d6000"
      "00000000000101000000000000000e00000000000000000000000000000061");
}

TEST(PropertyList, ReadsTheBinaryFormOfOtherWriters) {
  const std::optional<QVariant> value = PropertyList::fromBytes(anothersBinaryList());
  ASSERT_TRUE(value);
  EXPECT_EQ(value->toMap(),
            (QVariantMap{{"logQC", true},
                         {"uid", "abcDEF123456"},
                         {"uidAssigned", QDateTime::fromString("2026-11-15T13:24:25Z", Qt::ISODate)},
                         {QString::fromUtf8("ä€"), QVariantList{1LL, -5LL, 2.5, QByteArray("\0\xff", 2), ""}}}));
}

/// A binary list of these objects, the first at the top: each at most 255 bytes in, references of one byte.
QByteArray binaryList(const QList<QByteArray>& objects) {
  QByteArray bytes = "bplist00", table;
  for (const QByteArray& object : objects) {
    table.append(static_cast<char>(bytes.size()));
    bytes += object;
  }
  const auto tableAt = static_cast<char>(bytes.size());
  const auto count = static_cast<char>(objects.size());
  return bytes + table + QByteArray("\0\0\0\0\0\0\1\1", 8) + QByteArray(7, '\0') + count + QByteArray(15, '\0') +
         tableAt;
}

TEST(PropertyList, TellsLargeIntegersFromNegativeOnes) {
  const QByteArray zeros(8, '\0'), ones(8, '\xff');
  EXPECT_EQ(PropertyList::fromBytes(binaryList({"\x13" + ones})), QVariant(-1LL));
  EXPECT_EQ(PropertyList::fromBytes(binaryList({"\x14" + zeros + ones})), QVariant(~qulonglong{0}));
  EXPECT_EQ(PropertyList::fromBytes(binaryList({"\x14" + zeros + "\x80" + QByteArray(7, '\0')})),
            QVariant(qulonglong{1} << 63));
  EXPECT_EQ(PropertyList::fromBytes(binaryList({"\x14" + zeros + QByteArray(7, '\0') + "\5"})), QVariant(5LL));
  EXPECT_EQ(PropertyList::fromBytes(document("<integer>18446744073709551615</integer>")), QVariant(~qulonglong{0}));
  EXPECT_FALSE(PropertyList::fromBytes(binaryList({"\x14" + QByteArray(7, '\0') + "\1" + zeros}))) << "2^64";
}

TEST(PropertyList, ReadsNoMoreNestingInTheBinaryFormEither) {
  const auto nested = [](int depth) {
    QList<QByteArray> objects;
    for (int i = 1; i <= depth; ++i) objects.append(QByteArray("\xa1") + static_cast<char>(i));
    return binaryList(objects << "\x09");
  };
  EXPECT_TRUE(PropertyList::fromBytes(nested(64)));
  EXPECT_FALSE(PropertyList::fromBytes(nested(65)));
}

TEST(PropertyList, RefusesBinaryListsThatNeverEnd) {
  EXPECT_TRUE(PropertyList::fromBytes(binaryList({QByteArray("\xa2\1\1"), "\x09"})));
  EXPECT_FALSE(PropertyList::fromBytes(binaryList({QByteArray("\xa1\0", 2)}))) << "an array that holds itself";
  EXPECT_FALSE(PropertyList::fromBytes(binaryList({QByteArray("\xd1\1\0", 3), "\x51k"}))) << "so does a dictionary";
  QList<QByteArray> doubling;
  for (char i = 1; i <= 40; ++i) doubling.append(QByteArray("\xa2") + i + i);
  EXPECT_FALSE(PropertyList::fromBytes(binaryList(doubling << "\x09"))) << "2^40 truth values";
}

TEST(PropertyList, RefusesBinaryListsThatSayALongTextAgainAndAgain) {
  const auto tripled = [](char times, const QByteArray& text) {
    QList<QByteArray> objects;
    for (char i = 1; i <= times; ++i) objects.append("\xa3" + QByteArray(3, i));
    return binaryList(objects << "\x5f\x10" + QByteArray(1, static_cast<char>(text.size())) + text);
  };
  EXPECT_TRUE(PropertyList::fromBytes(tripled(3, QByteArray(120, 'a'))));
  EXPECT_FALSE(PropertyList::fromBytes(tripled(12, QByteArray(150, 'a')))) << "80 MB of a file of 250 bytes";
}

TEST(PropertyList, ReadsNoTextThatItCouldNotWriteAgain) {
  const auto value = PropertyList::fromBytes(binaryList({QByteArray("\x62\0a\0\0", 5)}));
  EXPECT_TRUE(!value || PropertyList::toBytes(*value));
}

TEST(PropertyList, RefusesKeysThatAreNoPlainTexts) {
  const auto withKey = [](const QByteArray& key) { return binaryList({QByteArray("\xd1\1\2"), key, "\x09"}); };
  EXPECT_TRUE(PropertyList::fromBytes(withKey("\x52hi")));
  EXPECT_TRUE(PropertyList::fromBytes(withKey(QByteArray("\x62\0h\1\0", 5))));
  EXPECT_TRUE(PropertyList::fromBytes(withKey("\x50")));
  for (const QByteArray& key : {QByteArray("\x52h\0", 3), QByteArray("\x62\0h\0\0", 5), QByteArray("\x10\1"),
                                QByteArray("\x42hi"), QByteArray("\xa0")})
    EXPECT_FALSE(PropertyList::fromBytes(withKey(key))) << key.toHex().toStdString();
}

TEST(PropertyList, RefusesMalformedBinaryLists) {
  const QByteArray good = anothersBinaryList();
  QList<QByteArray> refused = {"bplist00",
                               "bplist00" + QByteArray(32, '\0'),
                               "bplist00" + QByteArray(32, '\xff'),
                               binaryList({QByteArray("\xa1\5")}),
                               binaryList({"\xaf\x20"}),
                               binaryList({QByteArray("\xaf\x13\x7f\xff\xff\xff\xff\xff\xff\xff")}),
                               binaryList({"\xc1\1", "\x09"}),
                               binaryList({"\xd1\1\1", "\x09"}),
                               binaryList({})};
  for (qsizetype length = 0; length < good.size(); ++length) refused.append(good.left(length));
  for (const QByteArray& bytes : refused) EXPECT_FALSE(PropertyList::fromBytes(bytes)) << bytes.toHex().toStdString();
}

TEST(PropertyList, ReadsWhatOtherWritersMake) {
  const std::optional<QVariant> value =
      PropertyList::fromBytes(document("<!-- a note <dict> --><dict><key>a</key> "
                                       "<string>x<![CDATA[<y>]]>&#65;</string><key>n</key><integer>0x10</integer>"
                                       "<key>a</key><string>again</string></dict>"));
  ASSERT_TRUE(value);
  EXPECT_EQ(value->toMap().value("a"), "again");
  EXPECT_EQ(value->toMap().value("n"), 16);
}

TEST(PropertyList, SurvivesEveryCutAndManyChangesOfAGoodFile) {
  const QByteArray good = PropertyList::toBytes(everything()).value_or("");
  const QByteArray binary = PropertyList::toBytes(QVariantList{everything(), "\x01"}).value_or("");
  ASSERT_GT(good.size(), 500);
  for (qsizetype length = 0; length < good.size() - 10; ++length)
    EXPECT_FALSE(PropertyList::fromBytes(good.left(length)));
  std::mt19937 random(20261115);
  for (int round = 0; round < 10000; ++round) {
    QByteArray changed = round % 2 == 0 ? good : binary;
    for (unsigned int i = 0; i < 1 + random() % 4; ++i) {
      const auto at = static_cast<qsizetype>(random() % static_cast<unsigned int>(changed.size()));
      changed[at] =
          static_cast<char>(random() % 3 == 0 ? random() : static_cast<unsigned int>("<>/&;![]- "[random() % 10]));
    }
    const std::optional<QVariant> value = PropertyList::fromBytes(changed);
    if (value) {
      EXPECT_TRUE(value->isValid());
    }
  }
}

class PropertyListFile : public ::testing::Test {
 protected:
  QString path(const QString& name = "settings.plist") const { return folder_.path() + "/" + name; }
  void put(const QByteArray& bytes) {
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
  }
  QTemporaryDir folder_;
};

TEST_F(PropertyListFile, ComesBackAsWritten) {
  ASSERT_TRUE(PropertyList::write(everything(), path()));
  EXPECT_EQ(PropertyList::readDictionary(path()), everything());
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden), QStringList("settings.plist"));
}

TEST_F(PropertyListFile, KeepsCarriageReturnsAndFractionsOfASecond) {
  const QVariantMap values{{"event", "two\r\nlines\r"},
                           {"launch", QDateTime::fromString("2026-11-15T13:24:10.8Z", Qt::ISODateWithMs)}};
  for (auto value = values.begin(); value != values.end(); ++value) {
    EXPECT_TRUE(PropertyList::write(QVariantMap{{value.key(), value.value()}}, path()));
    EXPECT_EQ(PropertyList::readDictionary(path()).value_or(QVariantMap()).value(value.key()), value.value());
  }
}

TEST_F(PropertyListFile, IsReplacedWhole) {
  ASSERT_TRUE(PropertyList::write(everything(), path()));
  ASSERT_TRUE(PropertyList::write(QVariantMap{{"a", 1}}, path()));
  EXPECT_EQ(PropertyList::readDictionary(path()), QVariantMap({{"a", 1LL}}));
}

TEST_F(PropertyListFile, StaysAsItWasWhenAValueIsRefused) {
  ASSERT_TRUE(PropertyList::write(QVariantMap{{"a", 1}}, path()));
  EXPECT_FALSE(PropertyList::write(QVariantMap{{"a", QVariant()}}, path()));
  EXPECT_EQ(PropertyList::readDictionary(path()), QVariantMap({{"a", 1LL}}));
}

TEST_F(PropertyListFile, IsNotWrittenIntoAFolderThatIsNotThere) {
  EXPECT_FALSE(PropertyList::write(QVariantMap(), path("none/settings.plist")));
  EXPECT_FALSE(QFile::exists(path("none")));
}

TEST_F(PropertyListFile, GivesNothingWhenItCannotBeRead) {
  EXPECT_FALSE(PropertyList::read(path()));
  EXPECT_FALSE(PropertyList::read(folder_.path()));
  EXPECT_FALSE(PropertyList::read(QString()));
  EXPECT_FALSE(PropertyList::read("/dev/zero"));
  ASSERT_EQ(mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
  EXPECT_FALSE(PropertyList::read(path("pipe")));
  put("");
  EXPECT_FALSE(PropertyList::read(path()));
  put(document("<array/>"));
  EXPECT_TRUE(PropertyList::read(path()));
  EXPECT_FALSE(PropertyList::readDictionary(path()));
}

TEST_F(PropertyListFile, IsBoundInSize) {
  put(document("<string>x</string>"));
  ASSERT_TRUE(PropertyList::read(path()));
  ASSERT_TRUE(QFile::resize(path(), PropertyList::largestFile + 1));
  EXPECT_FALSE(PropertyList::read(path()));
}

}  // namespace
