#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include <stdlib.h>

namespace movie::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  path_ = (fs::temp_directory_path() / "lumacheck-XXXXXX").string();
  if (!::mkdtemp(path_.data())) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::permissions(path_, fs::perms::owner_all, ignored);
  fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::add(const std::string& name, const Bytes& content) const {
  std::ofstream stream(path(name), std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  stream.close();
  if (!stream) throw std::runtime_error("cannot write " + path(name));
  return path(name);
}

std::vector<std::string> TemporaryFolder::names() const {
  std::vector<std::string> found;
  for (const auto& entry : fs::directory_iterator(path_)) found.push_back(entry.path().filename().string());
  std::sort(found.begin(), found.end());
  return found;
}

Bytes contentOf(const std::string& path) {
  Bytes content(fs::file_size(path));
  std::ifstream stream(path, std::ios::binary);
  if (!stream.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(content.size()))) {
    throw std::runtime_error("cannot read " + path);
  }
  return content;
}

std::string textOf(const std::string& path) {
  const Bytes content = contentOf(path);
  return {content.begin(), content.end()};
}

}  // namespace movie::test
