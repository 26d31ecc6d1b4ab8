#include "tests/cli/PrintedJson.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace cli::test {

struct PrintedJson::Value {
  nlohmann::ordered_json json;
};

PrintedJson::PrintedJson(Value value) : value_(std::make_shared<const Value>(std::move(value))) {}
PrintedJson::PrintedJson(const char* text) : PrintedJson(Value{text}) {}
PrintedJson::PrintedJson(const std::string& text) : PrintedJson(Value{text}) {}
PrintedJson::PrintedJson(double number) : PrintedJson(Value{number}) {}
PrintedJson::PrintedJson(int number) : PrintedJson(Value{number}) {}
PrintedJson::PrintedJson(bool value) : PrintedJson(Value{value}) {}

PrintedJson PrintedJson::parse(const std::string& text) {
  return PrintedJson(Value{nlohmann::ordered_json::parse(text)});
}

bool PrintedJson::accept(const std::string& text) {
  return nlohmann::ordered_json::accept(text);
}

PrintedJson PrintedJson::operator[](const char* key) const {
  return PrintedJson(Value{value_->json.at(key)});
}

PrintedJson PrintedJson::operator[](int index) const {
  return PrintedJson(Value{value_->json.at(static_cast<std::size_t>(index))});
}

std::vector<PrintedJson> PrintedJson::elements() const {
  std::vector<PrintedJson> all;
  for (int i = 0; i < static_cast<int>(size()); ++i) all.push_back((*this)[i]);
  return all;
}

std::size_t PrintedJson::size() const {
  return value_->json.size();
}

bool PrintedJson::contains(const char* key) const {
  return value_->json.contains(key);
}

bool PrintedJson::is_null() const {
  return value_->json.is_null();
}

bool PrintedJson::is_string() const {
  return value_->json.is_string();
}

double PrintedJson::number() const {
  return value_->json.get<double>();
}

std::string PrintedJson::text() const {
  return value_->json.get<std::string>();
}

std::string PrintedJson::dump() const {
  return value_->json.dump();
}

bool PrintedJson::operator==(const PrintedJson& other) const {
  return value_->json == other.value_->json;
}

std::ostream& operator<<(std::ostream& out, const PrintedJson& json) {
  return out << json.dump();
}

}  // namespace cli::test
