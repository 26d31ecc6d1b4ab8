#include "SharedFiles/privileged/ToolCommand.h"

#include <QUtf8StringView>
#include <algorithm>
#include <climits>
#include <cstddef>

namespace privileged {

namespace {

struct Form {
  Tool tool;
  std::vector<std::string> program;
  std::size_t paths;
};

const std::vector<Form>& forms() {
  static const std::vector<Form> all = {{Tool::remove, {"/bin/rm", "-Rdf"}, 1},
                                        {Tool::remove, {"/bin/rm", "-R", "-f"}, 1},
                                        {Tool::move, {"/bin/mv", "-f"}, 2},
                                        {Tool::copy, {"/bin/cp", "-f", "-p", "-R"}, 2},
                                        {Tool::createFolder, {"/bin/mkdir", "-p"}, 1}};
  return all;
}

}  // namespace

std::optional<ToolCommand> parseToolCommand(const std::vector<std::string>& arguments) {
  for (const Form& form : forms()) {
    const std::size_t options = form.program.size();
    if (arguments.size() != options + form.paths) continue;
    const auto paths = arguments.begin() + static_cast<std::ptrdiff_t>(options);
    if (std::equal(form.program.begin(), form.program.end(), arguments.begin(), paths))
      return ToolCommand{form.tool, form.program, {paths, arguments.end()}};
  }
  return std::nullopt;
}

bool isPlainPath(const std::string& path) {
  if (path == "/") return true;
  if (path.empty() || path.front() != '/' || path.size() >= PATH_MAX) return false;
  if (path.find('\0') != std::string::npos) return false;
  if (!QUtf8StringView(path.data(), static_cast<qsizetype>(path.size())).isValidUtf8()) return false;
  const std::vector<std::string> components = componentsOf(path);
  return std::none_of(components.begin(), components.end(),
                      [](const std::string& name) { return name.empty() || name == "." || name == ".."; });
}

std::vector<std::string> componentsOf(const std::string& path) {
  std::vector<std::string> components;
  if (path == "/") return components;
  for (std::size_t start = 1; start <= path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    components.push_back(path.substr(start, end - start));
    start = end + 1;
  }
  return components;
}

}  // namespace privileged
