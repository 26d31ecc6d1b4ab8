#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "cli/pages/Pages.h"

namespace {

using cli::CommandDescription;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Empty where the arguments ask for nothing that there is.
std::string pageFor(const std::vector<std::string>& arguments) {
  cli::GivenOptions unused;
  const CommandDescription command = cli::commandInterface(unused);
  const std::map<std::string, std::string (*)(const CommandDescription&)> shells = {
      {"bash", cli::pages::bashCompletion},
      {"zsh", cli::pages::zshCompletion},
      {"fish", cli::pages::fishCompletion},
  };
  if (arguments.size() == 2 && shells.count(arguments[0]) > 0) return shells.at(arguments[0])(command);
  if (arguments.size() != 5 || arguments[0] != "man") return "";
  return cli::pages::manualPage(command, {arguments[3], arguments[4]}, contentsOf(arguments[2]));
}

}  // namespace

/// Writes what goes beside the command in its package, from the command's own interface.
int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  const std::string page = pageFor(arguments);
  if (page.empty()) {
    std::fputs("usage: lumacheck_pages bash|zsh|fish OUT\n       lumacheck_pages man OUT TEXT VERSION DATE\n", stderr);
    return 2;
  }
  std::ofstream out(arguments[1], std::ios::binary);
  out << page;
  out.close();
  return out ? 0 : 1;
}
