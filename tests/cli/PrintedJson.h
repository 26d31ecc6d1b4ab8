#pragma once

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace cli::test {

/// What the program printed as JSON. A library reads it, apart from the tests: of all that they include, its templates
/// take the compiler longest. What is asked for in another form than it has throws.
class PrintedJson {
 public:
  PrintedJson(const char* text);
  PrintedJson(const std::string& text);
  PrintedJson(double number);
  PrintedJson(int number);
  PrintedJson(bool value);

  static PrintedJson parse(const std::string& text);
  static bool accept(const std::string& text);

  /// Of an object, which has it; of an array.
  PrintedJson operator[](const char* key) const;
  PrintedJson operator[](int index) const;
  std::vector<PrintedJson> elements() const;
  std::size_t size() const;
  bool empty() const { return size() == 0; }
  bool contains(const char* key) const;
  bool is_null() const;
  bool is_string() const;
  double number() const;
  std::string text() const;
  std::string dump() const;

  /// Members of an object in another order are another object.
  bool operator==(const PrintedJson& other) const;

 private:
  struct Value;
  explicit PrintedJson(Value value);
  std::shared_ptr<const Value> value_;
};

std::ostream& operator<<(std::ostream& out, const PrintedJson& json);

}  // namespace cli::test
