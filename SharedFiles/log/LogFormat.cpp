#include "SharedFiles/log/LogFormat.h"

#include <QLocale>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include <locale.h>

namespace {

constexpr int largestField = 1000;

QString missingMark() {
  return QStringLiteral("<missing>");
}
QString mismatchMark() {
  return QStringLiteral("<mismatch>");
}

struct Directive {
  std::string flags;  ///< as they stand, and a minus for a negative width
  int width = 0;
  std::optional<int> precision;
  char16_t conversion = 0;
};

class ArgumentList {
 public:
  explicit ArgumentList(LogArguments arguments) : arguments_(arguments) {}
  bool wereGiven() const { return arguments_.size() > 0; }
  const LogArgument* next() { return used_ < arguments_.size() ? arguments_.begin() + used_++ : nullptr; }

 private:
  LogArguments arguments_;
  std::size_t used_ = 0;
};

/// What a number is cut to, without its fraction; nothing for what is none, or does not fit.
template <typename Number>
std::optional<Number> integerFrom(const LogArgument::Value& value) {
  // The first number above all that fit; the largest itself need not be one of floating point.
  const double end = std::ldexp(1.0, std::numeric_limits<Number>::digits);
  if (const auto* number = std::get_if<double>(&value)) {
    const double whole = std::trunc(*number);
    const bool fits = whole < end && whole >= double{std::numeric_limits<Number>::min()};
    return fits ? std::optional(static_cast<Number>(whole)) : std::nullopt;
  }
  if (const auto* number = std::get_if<LogArgument::Signed>(&value)) return static_cast<Number>(number->value);
  if (const auto* number = std::get_if<quint64>(&value)) return static_cast<Number>(*number);
  return std::nullopt;
}

/// As an unsigned directive shows it: a negative integer wraps in its own size.
std::optional<quint64> unsignedInteger(const LogArgument::Value& value) {
  const auto* const number = std::get_if<LogArgument::Signed>(&value);
  const auto bits = integerFrom<quint64>(value);
  return number != nullptr && number->bits == 32 ? *bits & 0xFFFFFFFFU : bits;
}

std::optional<double> floatingPoint(const LogArgument::Value& value) {
  if (const auto* number = std::get_if<double>(&value)) return std::isnan(*number) ? std::abs(*number) : *number;
  if (const auto* number = std::get_if<quint64>(&value)) return static_cast<double>(*number);
  if (const auto* number = std::get_if<LogArgument::Signed>(&value)) return static_cast<double>(number->value);
  return std::nullopt;
}

/// Reads what follows a per cent sign.
class DirectiveReader {
 public:
  DirectiveReader(const QString& format, qsizetype position, ArgumentList& arguments)
      : format_(format), position_(position), arguments_(arguments) {}

  /// The directive, or nothing when the characters form none.
  std::optional<Directive> read() {
    Directive directive;
    for (; isOneOf(peek(), u"-+ #0"); ++position_) directive.flags += static_cast<char>(peek());
    directive.width = readNumber().value_or(0);
    if (directive.width < 0) directive.flags += '-';
    directive.width = std::abs(directive.width);
    if (peek() == u'.') {
      ++position_;
      directive.precision = readNumber().value_or(0);
      if (*directive.precision < 0) directive.precision.reset();
    }
    while (isOneOf(peek(), u"hlqLztj")) ++position_;
    if (!isOneOf(peek(), u"@sSdDiuUxXoOcCpfFeEgG")) return std::nullopt;
    directive.conversion = peek();
    ++position_;
    return directive;
  }

  qsizetype position() const { return position_; }

 private:
  static bool isOneOf(char16_t character, QStringView set) { return character != 0 && set.contains(QChar(character)); }
  char16_t peek() const { return position_ < format_.size() ? format_.at(position_).unicode() : u'\0'; }

  /// A number, or the next argument for a star; within plus and minus the largest field.
  std::optional<int> readNumber() {
    if (peek() == u'*') {
      ++position_;
      return numberFromArgument();
    }
    std::optional<int> number;
    for (; peek() >= u'0' && peek() <= u'9'; ++position_) {
      number = std::min(number.value_or(0) * 10 + (peek() - u'0'), largestField);
    }
    return number;
  }

  std::optional<int> numberFromArgument() {
    const LogArgument* argument = arguments_.next();
    if (!argument) return std::nullopt;
    if (const auto* number = std::get_if<LogArgument::Signed>(&argument->value())) {
      return static_cast<int>(std::clamp<qint64>(number->value, -largestField, largestField));
    }
    if (const auto* number = std::get_if<quint64>(&argument->value())) {
      return static_cast<int>(std::min<quint64>(*number, largestField));
    }
    return std::nullopt;
  }

  const QString& format_;
  qsizetype position_;
  ArgumentList& arguments_;
};

QString padded(const Directive& directive, const QString& text) {
  const bool left = directive.flags.find('-') != std::string::npos;
  return left ? text.leftJustified(directive.width) : text.rightJustified(directive.width);
}

/// What printf makes of a number, whatever the program's locale.
template <typename Number>
QString printed(const Directive& directive, const char* conversion, std::optional<Number> number) {
  if (!number) return padded(directive, mismatchMark());
  static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
  const std::string format = '%' + directive.flags + "*.*" + conversion;
  std::array<char, std::numeric_limits<double>::max_exponent10 + largestField + 16> buffer{};
  const locale_t before = ::uselocale(plain);
  const int length = std::snprintf(buffer.data(), buffer.size(), format.c_str(), directive.width,
                                   directive.precision.value_or(-1), *number);
  ::uselocale(before);
  return QString::fromLatin1(buffer.data(), length);
}

QString renderSigned(const Directive& directive, const LogArgument& argument) {
  const auto* const number = std::get_if<quint64>(&argument.value());
  const bool isLarge = number != nullptr && *number > quint64{std::numeric_limits<qint64>::max()};
  return isLarge ? printed(directive, "llu", std::optional<unsigned long long>(*number))
                 : printed(directive, "lld", integerFrom<long long>(argument.value()));
}

QString renderText(const Directive& directive, const LogArgument& argument) {
  const QString text = argument.description();
  const bool cut = directive.conversion != u'@' && directive.precision;
  return padded(directive, cut ? text.left(*directive.precision) : text);
}

QString renderCharacter(const Directive& directive, const LogArgument& argument) {
  const std::optional<quint64> number = unsignedInteger(argument.value());
  if (!number) return padded(directive, mismatchMark());
  const auto unit = static_cast<char16_t>(*number & (directive.conversion == u'c' ? 0xFFU : 0xFFFFU));
  return padded(directive, QString(QChar(unit)));
}

QString renderPointer(const Directive& directive, const LogArgument& argument) {
  const bool pointer = std::holds_alternative<const void*>(argument.value());
  if (!pointer && !std::holds_alternative<LogArgument::Nil>(argument.value())) return padded(directive, mismatchMark());
  return padded(directive, pointer ? argument.description() : QStringLiteral("0x0"));
}

QString render(const Directive& directive, const LogArgument& argument) {
  switch (directive.conversion) {
    case u'@':
    case u's':
    case u'S':
      return renderText(directive, argument);
    case u'd':
    case u'D':
    case u'i':
      return renderSigned(directive, argument);
    case u'c':
    case u'C':
      return renderCharacter(directive, argument);
    case u'p':
      return renderPointer(directive, argument);
    case u'x':
      return printed(directive, "llx", unsignedInteger(argument.value()));
    case u'X':
      return printed(directive, "llX", unsignedInteger(argument.value()));
    case u'o':
    case u'O':
      return printed(directive, "llo", unsignedInteger(argument.value()));
    case u'u':
    case u'U':
      return printed(directive, "llu", unsignedInteger(argument.value()));
    default:
      const char conversion[] = {static_cast<char>(directive.conversion), '\0'};
      return printed(directive, conversion, floatingPoint(argument.value()));
  }
}

}  // namespace

QString LogArgument::text() const {
  const auto* text = std::get_if<QString>(&value_);
  return text ? *text : QString();
}

QString LogArgument::description() const {
  struct Describe {
    QString operator()(Nil) const { return QStringLiteral("(null)"); }
    QString operator()(const QString& text) const { return text; }
    QString operator()(Signed number) const { return QString::number(number.value); }
    QString operator()(quint64 number) const { return QString::number(number); }
    QString operator()(double number) const { return QString::number(number, 'g', QLocale::FloatingPointShortest); }
    QString operator()(const void* pointer) const {
      return QStringLiteral("0x") + QString::number(reinterpret_cast<quintptr>(pointer), 16);
    }
  };
  return std::visit(Describe{}, value_);
}

QString formatLogArguments(const QString& format, LogArguments arguments) {
  if (format.isNull()) return QString();
  ArgumentList list(arguments);
  QString result = QStringLiteral("");
  qsizetype position = 0;
  while (position < format.size()) {
    const qsizetype sign = format.indexOf(u'%', position);
    if (sign < 0) break;
    result += QStringView(format).mid(position, sign - position);
    position = sign + 1;
    if (position < format.size() && format.at(position) == u'%') {
      result += u'%';
      ++position;
      continue;
    }
    DirectiveReader reader(format, position, list);
    const std::optional<Directive> directive = list.wereGiven() ? reader.read() : std::nullopt;
    if (!directive) {
      result += u'%';
      continue;
    }
    const LogArgument* argument = list.next();
    result += argument ? render(*directive, *argument) : missingMark();
    position = reader.position();
  }
  return result.append(QStringView(format).mid(position));
}
