#include "SharedFiles/settings/PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include <locale.h>
#include <plist/plist.h>

#include "SharedFiles/settings/BinaryPropertyList.h"
#include "system/ReplacementFile.h"

namespace {

constexpr int deepestNesting = 64;
constexpr qint64 secondsFrom1970To2001 = 978307200;

struct NodeDeleter {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

/// What the library hands out as plain memory: texts and iterators.
struct MemoryDeleter {
  void operator()(void* memory) const { std::free(memory); }  // NOLINT(cppcoreguidelines-owning-memory)
};
template <typename T>
using Memory = std::unique_ptr<T, MemoryDeleter>;

/// libplist reads and writes numbers in the thread's locale: the plain one, while this lives.
class PlainLocale {
 public:
  PlainLocale() : plain_(newlocale(LC_ALL_MASK, "C", nullptr)), previous_(uselocale(plain_)) {}
  ~PlainLocale() {
    uselocale(previous_);
    freelocale(plain_);
  }
  PlainLocale(const PlainLocale&) = delete;
  PlainLocale& operator=(const PlainLocale&) = delete;

 private:
  locale_t plain_, previous_;
};

/// Whether the bytes are well-formed XML, nested no deeper than is allowed: libplist frees its tree by recursion.
bool isShallowXml(const QByteArray& xml) {
  QXmlStreamReader reader(xml);
  int depth = 0;
  while (!reader.atEnd()) {
    const QXmlStreamReader::TokenType token = reader.readNext();
    if (token == QXmlStreamReader::StartElement && ++depth > deepestNesting + 2) return false;
    if (token == QXmlStreamReader::EndElement) --depth;
  }
  return !reader.hasError();
}

bool isXmlCharacter(QChar character) {
  const char16_t unit = character.unicode();
  return (unit >= 0x20 && unit < 0xFFFE) || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

/// Whether libplist, which takes UTF-8 up to a null character, gets the text as it is.
bool isStorable(const QString& text) {
  return text.isValidUtf16() && !text.contains(QChar(0));
}

/// From 2001 on. libplist loses the sign of the fraction that a date before has.
qint64 fractionOf(const QDateTime& date) {
  return date.toSecsSinceEpoch() < secondsFrom1970To2001 ? 0 : date.time().msec();
}

/// Whether the XML form has room for all of the value: its dates know whole seconds only, its texts no control
/// characters.
bool fitsXml(const QVariant& value) {
  const auto isXmlText = [](const QString& text) { return std::all_of(text.begin(), text.end(), isXmlCharacter); };
  switch (value.typeId()) {
    case QMetaType::QString:
      return isXmlText(value.toString());
    case QMetaType::QDateTime:
      return fractionOf(value.toDateTime()) == 0;
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
      const QVariantList list = value.toList();
      return std::all_of(list.begin(), list.end(), fitsXml);
    }
    case QMetaType::QVariantMap: {
      const QVariantMap map = value.toMap();
      const QStringList keys = map.keys();
      return std::all_of(keys.begin(), keys.end(), isXmlText) && std::all_of(map.begin(), map.end(), fitsXml);
    }
    default:
      return true;
  }
}

std::optional<QVariant> valueOf(plist_t node);

/// An integer as libplist reads it: whether one that it makes of a number has a sign differs between its releases.
Node integerNode(const QByteArray& digits) {
  const QByteArray xml = "<plist><integer>" + digits + "</integer></plist>";
  plist_t node = nullptr;
  plist_from_xml(xml.constData(), static_cast<std::uint32_t>(xml.size()), &node);
  return Node(node);
}

/// libplist gives away the bits alone, but compares a number with its sign.
QVariant integerOf(plist_t node) {
  std::uint64_t bits = 0;
  plist_get_uint_val(node, &bits);
  const auto number = static_cast<qlonglong>(bits);
  const auto isUnsigned = [&] {
    return plist_compare_node_value(node, integerNode(QByteArray::number(qulonglong{bits})).get()) != 0;
  };
  if (number < 0 && isUnsigned()) return qulonglong{bits};
  return number;
}

QVariant dateOf(plist_t node) {
  std::int32_t seconds = 0;
  std::int32_t microseconds = 0;
  plist_get_date_val(node, &seconds, &microseconds);
  const qint64 milliseconds = seconds < 0 ? 0 : (microseconds + 500) / 1000;  // rounded: 0.2 comes as 199999
  return QDateTime::fromSecsSinceEpoch(secondsFrom1970To2001 + seconds, Qt::UTC).addMSecs(milliseconds);
}

std::optional<QVariant> arrayOf(plist_t node) {
  QVariantList list;
  const std::uint32_t count = plist_array_get_size(node);
  plist_array_iter iterator = nullptr;
  plist_array_new_iter(node, &iterator);
  const Memory<void> owner(iterator);
  for (std::uint32_t i = 0; i < count; ++i) {
    plist_t item = nullptr;
    plist_array_next_item(node, iterator, &item);
    std::optional<QVariant> value = valueOf(item);
    if (!value) return std::nullopt;
    list.append(std::move(*value));
  }
  return list;
}

std::optional<QVariant> dictionaryOf(plist_t node) {
  QVariantMap map;
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  const Memory<void> owner(iterator);
  for (;;) {
    char* name = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, iterator, &name, &item);
    const Memory<char> key(name);
    if (!key) return map;
    std::optional<QVariant> value = valueOf(item);
    if (!value) return std::nullopt;
    map.insert(QString::fromUtf8(key.get()), *value);
  }
}

std::optional<QVariant> valueOf(plist_t node) {
  if (!node) return std::nullopt;
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return QVariant(value != 0);
    }
    case PLIST_UINT:
      return integerOf(node);
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      return QVariant(value);
    }
    case PLIST_STRING: {
      std::uint64_t length = 0;
      const char* text = plist_get_string_ptr(node, &length);
      const QString string = QString::fromUtf8(text, static_cast<qsizetype>(length));
      if (string.contains(QChar(u'\0'))) return std::nullopt;  // could not be written again
      return QVariant(string);
    }
    case PLIST_DATE:
      return dateOf(node);
    case PLIST_DATA: {
      std::uint64_t length = 0;
      const char* bytes = plist_get_data_ptr(node, &length);
      return QVariant(QByteArray(bytes, static_cast<qsizetype>(length)));
    }
    case PLIST_ARRAY:
      return arrayOf(node);
    case PLIST_DICT:
      return dictionaryOf(node);
    default:
      return std::nullopt;
  }
}

Node nodeOf(const QVariant& value, int depth);

Node dateNode(const QDateTime& date) {
  const qint64 seconds = date.toSecsSinceEpoch() - secondsFrom1970To2001;
  using Limits = std::numeric_limits<std::int32_t>;
  if (!date.isValid() || seconds < Limits::min() || seconds > Limits::max()) return nullptr;
  return Node(plist_new_date(static_cast<std::int32_t>(seconds), static_cast<std::int32_t>(fractionOf(date) * 1000)));
}

Node textNode(const QString& text) {
  return isStorable(text) ? Node(plist_new_string(text.toUtf8().constData())) : nullptr;
}

Node dataNode(const QByteArray& data) {
  return Node(plist_new_data(data.constData(), static_cast<std::uint64_t>(data.size())));
}

Node arrayNode(const QVariantList& list, int depth) {
  Node array(plist_new_array());
  for (const QVariant& item : list) {
    Node node = nodeOf(item, depth + 1);
    if (!node) return nullptr;
    plist_array_append_item(array.get(), node.release());
  }
  return array;
}

Node dictionaryNode(const QVariantMap& map, int depth) {
  Node dictionary(plist_new_dict());
  for (auto entry = map.begin(); entry != map.end(); ++entry) {
    Node node = isStorable(entry.key()) ? nodeOf(entry.value(), depth + 1) : nullptr;
    if (!node) return nullptr;
    plist_dict_set_item(dictionary.get(), entry.key().toUtf8().constData(), node.release());
  }
  return dictionary;
}

Node nodeOf(const QVariant& value, int depth) {
  if (depth > deepestNesting) return nullptr;
  switch (value.typeId()) {
    case QMetaType::Bool:
      return Node(plist_new_bool(value.toBool() ? 1 : 0));
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
      return integerNode(QByteArray::number(value.toLongLong()));
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
      return integerNode(QByteArray::number(value.toULongLong()));
    case QMetaType::Float:
    case QMetaType::Double:
      return Node(plist_new_real(value.toDouble()));
    case QMetaType::QString:
      return textNode(value.toString());
    case QMetaType::QDateTime:
      return dateNode(value.toDateTime());
    case QMetaType::QByteArray:
      return dataNode(value.toByteArray());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
      return arrayNode(value.toList(), depth);
    case QMetaType::QVariantMap:
      return dictionaryNode(value.toMap(), depth);
    default:
      return nullptr;
  }
}

}  // namespace

std::optional<QVariant> PropertyList::fromBytes(const QByteArray& bytes) {
  if (bytes.size() > largestFile) return std::nullopt;
  const PlainLocale plain;
  const auto size = static_cast<std::uint32_t>(bytes.size());
  plist_t root = nullptr;
  if (isShallowBinaryPropertyList(bytes, deepestNesting)) {
    plist_from_bin(bytes.constData(), size, &root);
  } else if (isShallowXml(bytes)) {
    plist_from_xml(bytes.constData(), size, &root);
  }
  const Node owner(root);
  return valueOf(root);
}

std::optional<QByteArray> PropertyList::toBytes(const QVariant& value) {
  const Node root = nodeOf(value, 0);
  if (!root) return std::nullopt;
  const PlainLocale plain;
  const bool xml = fitsXml(value);
  char* bytes = nullptr;
  std::uint32_t length = 0;
  (xml ? plist_to_xml : plist_to_bin)(root.get(), &bytes, &length);
  const Memory<char> owner(bytes);
  if (!owner) return std::nullopt;
  const QByteArray written(bytes, static_cast<qsizetype>(length));
  // As it stands a carriage return would be read as a line feed.
  return xml ? QByteArray(written).replace("\r", "&#13;") : written;
}

std::optional<QVariant> PropertyList::read(const QString& path) {
  QFile file(path);
  if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) return std::nullopt;
  if (file.size() > largestFile) return std::nullopt;
  const QByteArray bytes = file.read(file.size() + 1);
  if (file.error() != QFileDevice::NoError) return std::nullopt;
  return fromBytes(bytes);
}

std::optional<QVariantMap> PropertyList::readDictionary(const QString& path) {
  const std::optional<QVariant> value = read(path);
  if (!value || value->typeId() != QMetaType::QVariantMap) return std::nullopt;
  return value->toMap();
}

bool PropertyList::write(const QVariant& value, const QString& path) {
  const std::optional<QByteArray> bytes = toBytes(value);
  if (!bytes) return false;
  const std::string_view whole(bytes->constData(), static_cast<std::size_t>(bytes->size()));
  return sys::writeWhole(QFile::encodeName(path).toStdString(), whole).has_value();
}
