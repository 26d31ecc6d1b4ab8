#include "cli/scan/ScanProblem.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace cli {

ScanProblem unwritable(const std::string& path, const std::string& what, const sys::Error& error) {
  return {path + ": " + what + " cannot be written: " + std::strerror(error.code) + ".", path};
}

tl::expected<sys::ReplacementFile, ScanProblem> placeFor(const std::string& path, const std::string& what,
                                                         const std::vector<std::string>& movies) {
  const bool isMovie = std::any_of(movies.begin(), movies.end(), [&](const std::string& movie) {
    std::error_code none;
    return std::filesystem::equivalent(path, movie, none);
  });
  if (isMovie) {
    return tl::unexpected(ScanProblem{path + ": " + what + " would take the place of a movie that is scanned.", path});
  }
  auto place = sys::ReplacementFile::create(path);
  if (!place) return tl::unexpected(unwritable(path, what, place.error()));
  return std::move(*place);
}

bool hasEnding(const std::string& path, const std::string& end) {
  std::string last = path.substr(path.size() - std::min(path.size(), end.size()));
  for (char& each : last) each = each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each;
  return last == end;
}

}  // namespace cli
