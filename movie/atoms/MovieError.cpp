#include "movie/atoms/MovieError.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace movie {

namespace {

constexpr const char* texts[] = {
#define REASON(name, text) text,
#include "movie/atoms/ReasonList.h"
};

/// What an error number means to somebody who reads a file, writes one in place, or makes a new one.
struct SystemReason {
  int number;
  Reason reading, writing, creating;
};

constexpr SystemReason systemReasons[] = {
    {ENOENT, Reason::NoSuchFile, Reason::NoSuchFile, Reason::NoSuchFolder},
    {ENOTDIR, Reason::NoSuchFile, Reason::NoSuchFile, Reason::NoSuchFolder},
    {EACCES, Reason::NoPermissionToRead, Reason::NoPermissionToWrite, Reason::NoPermissionThere},
    {EPERM, Reason::NoPermissionToRead, Reason::NoPermissionToWrite, Reason::NoPermissionThere},
    {EROFS, Reason::SystemSays, Reason::ReadOnlyFileSystem, Reason::ReadOnlyFileSystem},
    {ENOSPC, Reason::SystemSays, Reason::DiskFull, Reason::NotEnoughSpace},
    {EDQUOT, Reason::SystemSays, Reason::QuotaUsedUp, Reason::NotEnoughSpace},
    {EFBIG, Reason::SystemSays, Reason::WouldBecomeTooLarge, Reason::WouldBeTooLarge},
    {EISDIR, Reason::IsFolder, Reason::IsFolder, Reason::IsFolder},
    {ENXIO, Reason::NotRegularFile, Reason::NotRegularFile, Reason::NotRegularFile},
    {EILSEQ, Reason::ZeroByteInName, Reason::ZeroByteInName, Reason::ZeroByteInName},
    {EEXIST, Reason::SystemSays, Reason::SystemSays, Reason::NameTaken},
    {ECANCELED, Reason::Cancelled, Reason::Cancelled, Reason::Cancelled},
    {ETXTBSY, Reason::SystemSays, Reason::OpenForWriting, Reason::SystemSays},
    {EAGAIN, Reason::SystemSays, Reason::OpenForWriting, Reason::SystemSays},
    {ELOOP, Reason::SystemSays, Reason::SystemSays, Reason::TooManyLinks},
};

/// What a saver was doing to the file when it failed; nothing stands here for what it does before.
constexpr std::pair<sys::Step, Reason> doings[] = {
    {sys::Step::Look, Reason::LookingAtFile},    {sys::Step::Read, Reason::ReadingFile},
    {sys::Step::Write, Reason::WritingFile},     {sys::Step::Sync, Reason::SyncingFile},
    {sys::Step::Resize, Reason::SettingLength},  {sys::Step::SetAttributes, Reason::SettingTime},
    {sys::Step::Reserve, Reason::ReservingRoom},
};

}  // namespace

std::string Clause::text(const Language& language) const {
  if (reason == Reason::Verbatim) return words;
  const char* const english = texts[static_cast<std::size_t>(reason)];
  const std::string whole = language ? language(english) : english;
  std::string filled;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    const std::size_t place =
        whole[at] == '%' && at + 1 < whole.size() ? static_cast<std::size_t>(whole[at + 1] - '1') : places.size();
    if (place < places.size()) {
      filled += places[place].text(language);
      ++at;
    } else {
      filled += whole[at];
    }
  }
  return filled;
}

Clause verbatim(std::string words) {
  Clause clause(Reason::Verbatim);
  clause.words = std::move(words);
  return clause;
}

Clause systemReason(int number, Access access) {
  const auto* const row = std::find_if(std::begin(systemReasons), std::end(systemReasons),
                                       [number](const SystemReason& each) { return each.number == number; });
  auto reason = Reason::SystemSays;
  if (row != std::end(systemReasons)) {
    reason = access == Access::Read ? row->reading : access == Access::Write ? row->writing : row->creating;
  }
  if (reason != Reason::SystemSays) return reason;
  return {reason, {verbatim(std::generic_category().message(number))}};
}

MovieError fromSystem(const sys::Error& error, Access access) {
  const bool readsSource = access == Access::Create && error.what == sys::Step::Read;
  Clause why = systemReason(error.code, readsSource ? Access::Read : access);
  for (const auto& [step, doing] : doings) {
    if (access == Access::Write && step == error.what) why = {Reason::Meanwhile, {why, doing}};
  }
  if (error.what == sys::Step::SyncName) why = {Reason::NameUncertain, {std::move(why)}};
  return {error.path, {}, 0, std::move(why)};
}

Clause MovieError::clause() const {
  if (atom.empty()) return why;
  return {Reason::InAtom, {why, verbatim(atom), verbatim(std::to_string(offset))}};
}

std::string MovieError::message(Attempt attempt, const Language& language) const {
  const bool reading = attempt == Attempt::Read;
  const Clause sentence =
      file.empty() ? Clause(reading ? Reason::CannotRead : Reason::CannotSave, {clause()})
                   : Clause(reading ? Reason::CannotReadFile : Reason::CannotSaveFile, {verbatim(file), clause()});
  return sentence.text(language);
}

}  // namespace movie
