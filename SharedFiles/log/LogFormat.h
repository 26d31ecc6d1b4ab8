#pragma once

#include <QByteArray>
#include <QString>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

/// One argument of a log format, with its type kept beside it. Texts are UTF-8 where they are bytes; a null QString, a
/// null pointer to text and an empty std::optional are nil, which formats as "(null)".
class LogArgument {
 public:
  struct Nil {};
  struct Signed {
    qint64 value;
    int bits;  ///< of the argument's own type, at least 32: what an unsigned directive wraps a negative value to
  };
  using Value = std::variant<Nil, QString, Signed, quint64, double, const void*>;

  template <typename T>
  LogArgument(const T& value) : value_(valueOf(value)) {}  // NOLINT(google-explicit-constructor): arguments convert

  const Value& value() const { return value_; }

  /// The argument as a text; a null string for nil and for what is no text.
  QString text() const;
  /// What %@ shows: a text as it is, a number in its shortest form, a pointer in hexadecimal.
  QString description() const;

 private:
  template <typename T>
  struct IsOptional : std::false_type {};
  template <typename T>
  struct IsOptional<std::optional<T>> : std::true_type {};

  static Value textValue(const QString& text) { return text.isNull() ? Value(Nil{}) : Value(text); }
  static Value textValue(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  }

  template <typename T>
  static Value valueOf(const T& value) {
    if constexpr (IsOptional<T>::value) {
      return value ? valueOf(*value) : Value(Nil{});
    } else if constexpr (std::is_same_v<T, LogArgument>) {
      return value.value();
    } else if constexpr (std::is_null_pointer_v<T>) {
      return Nil{};
    } else if constexpr (std::is_same_v<T, QByteArray>) {
      return textValue(QString::fromUtf8(value));
    } else if constexpr (std::is_convertible_v<T, const char*>) {
      const char* bytes = value;
      return bytes ? textValue(std::string_view(bytes)) : Value(Nil{});
    } else if constexpr (std::is_convertible_v<T, std::string_view>) {
      return textValue(std::string_view(value));
    } else if constexpr (std::is_same_v<T, QString>) {
      return textValue(value);
    } else if constexpr (std::is_convertible_v<T, QStringView>) {
      return textValue(QStringView(value).toString());
    } else if constexpr (std::is_convertible_v<T, QString>) {
      return textValue(QString(value));
    } else if constexpr (std::is_convertible_v<T, std::string>) {
      return textValue(std::string_view(static_cast<std::string>(value)));
    } else {
      return plainValueOf(value);
    }
  }

  template <typename T>
  static Value plainValueOf(const T& value) {
    if constexpr (std::is_enum_v<T>) {
      return plainValueOf(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_floating_point_v<T>) {
      return static_cast<double>(value);
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
      return Signed{static_cast<qint64>(value), sizeof(T) > 4 ? 64 : 32};
    } else if constexpr (std::is_integral_v<T>) {
      return static_cast<quint64>(value);
    } else {
      static_assert(std::is_pointer_v<T>, "a log argument is a text, a number or a pointer");
      return static_cast<const void*>(value);
    }
  }

  Value value_;
};

using LogArguments = std::initializer_list<LogArgument>;

/// Formats as printf and its %@ do, whatever the arguments are. Directives: %@ %s %S %d %D %i %u %U %x %X %o %O %c %C
/// %p %f %F %e %E %g %G and %%, with the flags - + blank # and 0, a width and a precision (numbers or *, each at most
/// 1000) and the length modifiers h l q L z t j, which change nothing since every argument knows its size. Independent
/// of the locale.
///
/// An argument that is not there shows as "<missing>", one of a kind that the directive cannot show as "<mismatch>";
/// numbers convert to each other where the value fits. Arguments too many are dropped. A per cent sign that begins no
/// directive stays. A format given no arguments at all is a text: its directives stay as they are and only %% becomes
/// one sign.
QString formatLogArguments(const QString& format, LogArguments arguments);

/// The same, for any kind of text as the format. A format that is nil gives a null string.
template <typename Format, typename... Arguments>
QString formatLog(const Format& format, const Arguments&... arguments) {
  return formatLogArguments(LogArgument(format).text(), {LogArgument(arguments)...});
}
