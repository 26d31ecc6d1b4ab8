#pragma once

#include <QByteArray>
#include <map>
#include <optional>
#include <string>

/// Changes environment variables and puts them back.
class EnvironmentGuard {
 public:
  EnvironmentGuard() = default;
  ~EnvironmentGuard() {
    for (const auto& [variable, value] : before_) {
      if (value) {
        qputenv(variable.c_str(), *value);
      } else {
        qunsetenv(variable.c_str());
      }
    }
  }
  EnvironmentGuard(const EnvironmentGuard&) = delete;
  EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;

  void set(const char* variable, const QByteArray& value) {
    remember(variable);
    qputenv(variable, value);
  }
  void clear(const char* variable) {
    remember(variable);
    qunsetenv(variable);
  }

 private:
  void remember(const char* variable) {
    before_.try_emplace(variable,
                        qEnvironmentVariableIsSet(variable) ? std::optional(qgetenv(variable)) : std::nullopt);
  }

  std::map<std::string, std::optional<QByteArray>> before_;
};
