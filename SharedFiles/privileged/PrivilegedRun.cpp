#include "SharedFiles/privileged/PrivilegedRun.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include <sys/stat.h>

#include "SharedFiles/privileged/ExitStatus.h"
#include "SharedFiles/privileged/PinnedFolder.h"
#include "SharedFiles/privileged/StagingFolder.h"
#include "SharedFiles/privileged/ToolCommand.h"
#include "SharedFiles/privileged/ToolProcess.h"
#include "system/FilePlace.h"

namespace privileged {

namespace {

int number(ExitStatus status) {
  return static_cast<int>(status);
}

bool isProtected(const ProtectedPlaces& places, const std::string& path, const struct stat& found) {
  if (places.isProtected(path)) return true;
  return std::any_of(places.folders.begin(), places.folders.end(), [&found](const std::string& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && sys::isSameFile(status, found);
  });
}

/// What is to be removed, moved away or copied, and what it is now.
struct Operand {
  PinnedEntry entry;
  std::optional<struct stat> status;  ///< none: there is nothing of that name
};

tl::expected<Operand, ExitStatus> pinOperand(const std::string& path) {
  TRY(auto entry, pinEntry(path));
  const auto status = entry.status();
  if (!status && status.error() != ExitStatus::notThere) return tl::unexpected(status.error());
  return Operand{std::move(entry), status ? std::optional(*status) : std::nullopt};
}

/// An operand that goes away: it may not be protected.
tl::expected<Operand, ExitStatus> pinVictim(const ProtectedPlaces& places, const std::string& path) {
  if (places.isProtected(path)) return tl::unexpected(ExitStatus::protectedPlace);
  auto victim = pinOperand(path);
  if (victim && victim->status && isProtected(places, path, *victim->status))
    return tl::unexpected(ExitStatus::protectedPlace);
  return victim;
}

/// Where a file of that name goes: into the destination where that is a folder, else under the destination's own name.
tl::expected<Operand, ExitStatus> pinTarget(const std::string& destination, const std::string& name) {
  const bool isFolder = pinFolder(destination).has_value();
  return pinOperand(isFolder ? destination + "/" + name : destination);
}

/// Whether nothing is in the folder that the entry stands for.
bool isEmptyFolder(const PinnedEntry& entry) {
  const sys::FilePlace place{entry.folder.descriptor.get(), entry.name, entry.path()};
  const auto names = sys::namesInFolder({place.openFolder().get(), place.path});
  return names && names->empty();
}

/// What forbids that the source takes the target's place. A file may be replaced by a file, an empty folder by a
/// folder.
std::optional<ExitStatus> objection(const ProtectedPlaces& places, const Operand& source, const Operand& target) {
  if (!source.status) return ExitStatus::notThere;
  if (!target.status) return std::nullopt;
  const struct stat& standing = *target.status;
  if (isProtected(places, target.entry.path(), standing)) return ExitStatus::protectedPlace;
  if (sys::isSameFile(standing, *source.status) || S_ISDIR(standing.st_mode) != S_ISDIR(source.status->st_mode) ||
      (S_ISDIR(standing.st_mode) && !isEmptyFolder(target.entry)))
    return ExitStatus::cannotCreate;
  return std::nullopt;
}

int remove(const ToolCommand& command, const PrivilegedRun& run) {
  const auto victim = pinVictim(run.places, command.paths.front());
  if (!victim) return number(victim.error());
  run.started();
  return runTool(command.program, {{victim->entry.folder.descriptor, victim->entry.name}});
}

/// Puts what the tool made into its place. What cannot be placed is put back or, after a copy, removed.
int place(const ToolCommand& command, const PinnedEntry& source, const StagingFolder& staging,
          const PinnedEntry& target, int status) {
  const std::string& name = target.name;
  if (!staging.holds(name)) return status;
  const bool moved = command.tool == Tool::move;
  if (status == 0 && staging.moveOut(name, name)) return status;
  // After a move that failed halfway this may be the only copy, or a part of one: it stays, and replaces nothing.
  if (moved && status != 0 && staging.moveToFreePlace(name, target)) return status;
  if (!moved) {
    runTool({"/bin/rm", "-Rdf"}, {{staging.descriptor(), name}});
  } else if (!staging.moveToFreePlace(name, source)) {
    std::fprintf(stderr, "%s is left in %s\n", name.c_str(), target.folder.pathOf(staging.name()).c_str());
  }
  return status != 0 ? status : number(ExitStatus::cannotCreate);
}

int transfer(const ToolCommand& command, const PrivilegedRun& run) {
  const std::string& path = command.paths.front();
  const auto source = command.tool == Tool::move ? pinVictim(run.places, path) : pinOperand(path);
  if (!source) return number(source.error());
  const auto target = pinTarget(command.paths.back(), source->entry.name);
  if (!target) return number(target.error());
  if (const auto status = objection(run.places, *source, *target)) return number(*status);
  const PinnedEntry &from = source->entry, &to = target->entry;
  const auto staging = StagingFolder::makeIn(to.folder);
  if (!staging) return number(staging.error());
  run.started();
  const int status = runTool(command.program, {{from.folder.descriptor, from.name}, {staging->descriptor(), to.name}});
  return place(command, from, *staging, to, status);
}

/// One component after the other, so that nothing that is put in their place meanwhile is followed.
int createFolder(const ToolCommand& command, const PrivilegedRun& run) {
  std::vector<std::string> names = componentsOf(command.paths.front());
  const std::string last = names.back();
  names.pop_back();
  bool begun = false;
  const auto make = [&](const PinnedFolder& parent, const std::string& name) {
    if (!std::exchange(begun, true)) run.started();
    return runTool(command.program, {{parent.descriptor, name}});
  };
  auto folder = pinFolder("/");
  for (const std::string& name : names) {
    if (!folder) return number(folder.error());
    auto next = pinFolderIn(*folder, name);
    if (!next && next.error() == ExitStatus::notThere) {
      if (const int status = make(*folder, name)) return status;
      next = pinFolderIn(*folder, name);
    }
    folder = std::move(next);
  }
  if (!folder) return number(folder.error());
  return make(*folder, last);
}

}  // namespace

std::optional<Refusal> refusalOf(const std::vector<std::string>& commandLine, const ProtectedPlaces& places) {
  const std::optional<ToolCommand> command = parseToolCommand(commandLine);
  if (!command) return Refusal{ExitStatus::usage, {}};
  for (const std::string& path : command->paths) {
    if (!isPlainPath(path)) return Refusal{ExitStatus::badPath, path};
    if (path == "/") return Refusal{ExitStatus::protectedPlace, path};
  }
  const std::string &source = command->paths.front(), &destination = command->paths.back();
  if (command->tool == Tool::remove || command->tool == Tool::move) {
    const auto victim = pinVictim(places, source);
    if (!victim && victim.error() == ExitStatus::protectedPlace) return Refusal{victim.error(), source};
  }
  if (command->paths.size() == 1) return std::nullopt;
  const auto target = pinTarget(destination, nameOf(source));
  if (!target || !target->status || !isProtected(places, target->entry.path(), *target->status)) return std::nullopt;
  return Refusal{ExitStatus::protectedPlace, target->entry.path()};
}

int runPrivileged(const std::vector<std::string>& commandLine, const PrivilegedRun& run) {
  if (const auto refusal = refusalOf(commandLine, run.places)) return number(refusal->status);
  const ToolCommand command = parseToolCommand(commandLine).value();
  switch (command.tool) {
    case Tool::remove:
      return remove(command, run);
    case Tool::move:
    case Tool::copy:
      return transfer(command, run);
    case Tool::createFolder:
      return createFolder(command, run);
  }
  return number(ExitStatus::usage);
}

}  // namespace privileged
