#pragma once

#include <QList>
#include <QString>

class UserDefaults;

/// Two movies that were open together. Full paths.
struct MoviePair {
  QString source, dest;
  friend bool operator==(const MoviePair&, const MoviePair&) = default;
};

/// The pairs that were open last, newest first, in the user defaults.
class RecentPairs {
 public:
  static constexpr qsizetype most = 10;

  /// The defaults outlive the object.
  explicit RecentPairs(UserDefaults& defaults) : defaults_(defaults) {}

  QList<MoviePair> all() const;
  /// As the newest; the oldest beyond the most goes. False when the defaults cannot be written.
  bool add(const MoviePair& pair);
  bool forgetAll();

 private:
  UserDefaults& defaults_;
};
