#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/privileged/ExitStatus.h"
#include "SharedFiles/privileged/PrivilegedRun.h"

namespace privileged {

/// A folder of its own in which `protected`, and all that is in it, counts as the system's.
class Sandbox : public testing::Test {
 protected:
  using Path = std::filesystem::path;

  Sandbox() {
    std::string name = (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "sandbox.XXXXXX").string();
    root_ = ::mkdtemp(name.data());
    std::filesystem::create_directories(root_ / "protected");
    write("protected/precious", "precious");
  }
  ~Sandbox() override {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  const Path& root() const { return root_; }
  std::string at(const std::string& name) const { return (root_ / name).string(); }

  void write(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories((root_ / name).parent_path());
    std::ofstream(root_ / name) << content;
  }
  std::string read(const std::string& name) const {
    std::ostringstream content;
    content << std::ifstream(root_ / name).rdbuf();
    return content.str();
  }
  void makeFolder(const std::string& name) const { std::filesystem::create_directories(root_ / name); }
  void link(const std::string& target, const std::string& name) const {
    std::filesystem::create_symlink(target, root_ / name);
  }
  /// Whether anything stands there, links not followed.
  bool stands(const std::string& name) const {
    return std::filesystem::symlink_status(root_ / name).type() != std::filesystem::file_type::not_found;
  }
  std::vector<std::string> namesIn(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(root_ / folder))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  PrivilegedRun settings() {
    return {.places = {.isProtected =
                           [guarded = at("protected")](const std::string& path) {
                             return path == guarded || path.rfind(guarded + "/", 0) == 0;
                           },
                       .folders = {at("protected")}},
            .started = [this] { ++started_; }};
  }
  int run(const std::vector<std::string>& commandLine) { return runPrivileged(commandLine, settings()); }
  int remove(const std::string& name) { return run({"/bin/rm", "-Rdf", at(name)}); }
  int move(const std::string& from, const std::string& to) { return run({"/bin/mv", "-f", at(from), at(to)}); }
  int copy(const std::string& from, const std::string& to) {
    return run({"/bin/cp", "-f", "-p", "-R", at(from), at(to)});
  }
  int makeFolders(const std::string& name) { return run({"/bin/mkdir", "-p", at(name)}); }

  int started() const { return started_; }

 private:
  Path root_;
  int started_ = 0;
};

/// What a run ends with when it was refused for that reason.
constexpr int refused(ExitStatus status) {
  return static_cast<int>(status);
}

}  // namespace privileged
