#include "SharedFiles/log/LogFormat.h"

#include <QLocale>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr int largestField = 1000;
constexpr int defaultPrecision = 6;

QString missingMark() {
  return QStringLiteral("<missing>");
}
QString mismatchMark() {
  return QStringLiteral("<mismatch>");
}

struct Directive {
  bool left = false, plus = false, blank = false, alternate = false, zero = false;
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

/// Reads what follows a per cent sign.
class DirectiveReader {
 public:
  DirectiveReader(const QString& format, qsizetype position, ArgumentList& arguments)
      : format_(format), position_(position), arguments_(arguments) {}

  /// The directive, or nothing when the characters form none.
  std::optional<Directive> read() {
    readFlags();
    readWidth();
    if (peek() == u'.') {
      ++position_;
      directive_.precision = readNumber().value_or(0);
      if (*directive_.precision < 0) directive_.precision.reset();
    }
    while (isOneOf(peek(), u"hlqLztj")) ++position_;
    if (!isOneOf(peek(), u"@sSdDiuUxXoOcCpfFeEgG")) return std::nullopt;
    directive_.conversion = peek();
    ++position_;
    return directive_;
  }

  qsizetype position() const { return position_; }

 private:
  static bool isOneOf(char16_t character, QStringView set) { return character != 0 && set.contains(QChar(character)); }
  char16_t peek() const { return position_ < format_.size() ? format_.at(position_).unicode() : u'\0'; }

  void readFlags() {
    for (; isOneOf(peek(), u"-+ #0"); ++position_) {
      switch (peek()) {
        case u'-':
          directive_.left = true;
          break;
        case u'+':
          directive_.plus = true;
          break;
        case u' ':
          directive_.blank = true;
          break;
        case u'#':
          directive_.alternate = true;
          break;
        default:
          directive_.zero = true;
          break;
      }
    }
  }

  void readWidth() {
    const int width = readNumber().value_or(0);
    directive_.left |= width < 0;
    directive_.width = std::abs(width);
  }

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
  Directive directive_;
};

/// An integer as sign and magnitude, which holds every 64-bit value of either kind.
struct Integer {
  bool negative = false;
  quint64 magnitude = 0;
};

std::optional<Integer> integerFrom(double value) {
  const double whole = std::trunc(value);
  if (!(std::abs(whole) < 18446744073709551616.0)) return std::nullopt;
  return Integer{whole < 0, static_cast<quint64>(std::abs(whole))};
}

std::optional<Integer> signedInteger(const LogArgument::Value& value) {
  if (const auto* number = std::get_if<LogArgument::Signed>(&value)) {
    const auto bits = static_cast<quint64>(number->value);
    return Integer{number->value < 0, number->value < 0 ? ~bits + 1 : bits};
  }
  if (const auto* number = std::get_if<quint64>(&value)) return Integer{false, *number};
  if (const auto* number = std::get_if<double>(&value)) return integerFrom(*number);
  return std::nullopt;
}

std::optional<quint64> unsignedInteger(const LogArgument::Value& value) {
  if (const auto* number = std::get_if<LogArgument::Signed>(&value)) {
    const auto bits = static_cast<quint64>(number->value);
    return number->bits == 32 ? bits & 0xFFFFFFFFU : bits;
  }
  const std::optional<Integer> number = signedInteger(value);
  if (!number || (number->negative && number->magnitude > 0)) return std::nullopt;
  return number->magnitude;
}

std::optional<double> floatingPoint(const LogArgument::Value& value) {
  if (const auto* number = std::get_if<double>(&value)) return *number;
  const std::optional<Integer> number = signedInteger(value);
  if (!number) return std::nullopt;
  const auto magnitude = static_cast<double>(number->magnitude);
  return number->negative ? -magnitude : magnitude;
}

QString padded(const Directive& directive, const QString& text) {
  return directive.left ? text.leftJustified(directive.width) : text.rightJustified(directive.width);
}

/// Sign and digits, filled up with zeros between the two or with blanks around them.
QString paddedNumber(const Directive& directive, const QString& sign, const QString& digits, bool zerosAllowed) {
  if (directive.zero && zerosAllowed && !directive.left) {
    return sign + digits.rightJustified(directive.width - sign.size(), u'0');
  }
  return padded(directive, sign + digits);
}

QString signText(const Directive& directive, bool negative) {
  if (negative) return QStringLiteral("-");
  if (directive.plus) return QStringLiteral("+");
  return directive.blank ? QStringLiteral(" ") : QString();
}

QString integerDigits(const Directive& directive, quint64 magnitude, int base) {
  if (directive.precision == 0 && magnitude == 0) return QString();
  return QString::number(magnitude, base).rightJustified(directive.precision.value_or(1), u'0');
}

QString renderSigned(const Directive& directive, const LogArgument& argument) {
  const std::optional<Integer> number = signedInteger(argument.value());
  if (!number) return padded(directive, mismatchMark());
  return paddedNumber(directive, signText(directive, number->negative && number->magnitude > 0),
                      integerDigits(directive, number->magnitude, 10), !directive.precision);
}

QString renderUnsigned(const Directive& directive, const LogArgument& argument) {
  const std::optional<quint64> number = unsignedInteger(argument.value());
  if (!number) return padded(directive, mismatchMark());
  const char16_t conversion = directive.conversion;
  const bool hexadecimal = conversion == u'x' || conversion == u'X';
  const bool octal = conversion == u'o' || conversion == u'O';
  QString digits = integerDigits(directive, *number, hexadecimal ? 16 : octal ? 8 : 10);
  QString prefix;
  if (directive.alternate && hexadecimal && *number != 0) prefix = QStringLiteral("0x");
  if (directive.alternate && octal && !digits.startsWith(u'0')) digits.prepend(u'0');
  if (conversion == u'X') {
    digits = digits.toUpper();
    prefix = prefix.toUpper();
  }
  return paddedNumber(directive, prefix, digits, !directive.precision);
}

QString floatingDigits(double magnitude, std::chars_format format, int precision) {
  std::array<char, std::numeric_limits<double>::max_exponent10 + largestField + 16> buffer{};
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude, format, precision);
  if (error != std::errc()) return mismatchMark();
  return QString::fromLatin1(buffer.data(), end - buffer.data());
}

QString renderFloatingPoint(const Directive& directive, const LogArgument& argument) {
  const std::optional<double> number = floatingPoint(argument.value());
  if (!number) return padded(directive, mismatchMark());
  const QChar conversion(directive.conversion);
  const char16_t lower = conversion.toLower().unicode();
  const auto format = lower == u'f'   ? std::chars_format::fixed
                      : lower == u'e' ? std::chars_format::scientific
                                      : std::chars_format::general;
  const bool isNumber = !std::isnan(*number);
  QString digits = isNumber ? floatingDigits(std::abs(*number), format, directive.precision.value_or(defaultPrecision))
                            : QStringLiteral("nan");
  if (conversion.isUpper()) digits = digits.toUpper();
  return paddedNumber(directive, signText(directive, isNumber && std::signbit(*number)), digits,
                      std::isfinite(*number));
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
    case u'f':
    case u'F':
    case u'e':
    case u'E':
    case u'g':
    case u'G':
      return renderFloatingPoint(directive, argument);
    default:
      return renderUnsigned(directive, argument);
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
