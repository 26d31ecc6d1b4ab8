#pragma once

#include <cstdio>
#include <functional>
#include <initializer_list>
#include <string>

/// Marks a text for the tools that gather what is to be translated.
#define TR(context, text) text

namespace diagnosis {

/// How somebody reads it. English where it is left empty.
struct Language {
  std::function<std::string(const char* english)> sentence;  ///< places such as %1 left as they are
  std::function<std::string(double value, int decimals)> number;
};

/// Fills sentences of a language. The first place is %1.
class Words {
 public:
  explicit Words(const Language& language) : language_(language) {}

  std::string operator()(const char* english, std::initializer_list<std::string> places = {}) const {
    std::string text = language_.sentence ? language_.sentence(english) : english;
    char place[] = "%1";
    for (const std::string& each : places) {
      if (const std::size_t at = text.find(place); at != std::string::npos) text.replace(at, 2, each);
      ++place[1];
    }
    return text;
  }

  std::string number(double value, int decimals) const {
    if (language_.number) return language_.number(value, decimals);
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
  }

 private:
  const Language& language_;
};

}  // namespace diagnosis
