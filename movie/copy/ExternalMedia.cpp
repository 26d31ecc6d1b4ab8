#include "movie/copy/ExternalMedia.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <memory>
#include <optional>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/Utf16.h"

namespace movie {

namespace {

std::string text(ByteView bytes) {
  const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
  return std::string(bytes.begin(), end);
}

std::string lastPart(std::string path) {
  path.erase(path.find_last_not_of('/') + 1);
  return path.substr(path.rfind('/') + 1);
}

std::string unescaped(const std::string& address) {
  std::string plain;
  for (std::size_t i = 0; i < address.size(); ++i) {
    const auto digit = [&](std::size_t at) {
      return at < address.size() && std::isxdigit(static_cast<unsigned char>(address[at])) != 0;
    };
    if (address[i] != '%' || !digit(i + 1) || !digit(i + 2)) {
      plain += address[i];
      continue;
    }
    plain += static_cast<char>(std::strtoul(address.substr(i + 1, 2).c_str(), nullptr, 16));
    i += 2;
  }
  return plain;
}

std::string fromUtf16(ByteView bytes) {
  std::u16string units;
  for (std::size_t at = 0; at + 2 <= bytes.size(); at += 2) units.push_back(read16(bytes, at));
  return utf8Of(units);
}

/// A slash in a name of the old file manager is a colon in one of ours.
std::string ofFileManager(std::string name) {
  std::replace(name.begin(), name.end(), '/', ':');
  return name;
}

void addAliasNames(ByteView alias, std::vector<std::string>& names) {
  constexpr std::size_t nameAt = 50, longestName = 63, tagsAt = 150;
  constexpr unsigned unicodeName = 14, posixPath = 18, endOfTags = 0xFFFF;
  std::string path, unicode;
  for (std::size_t at = tagsAt; at + 4 <= alias.size();) {
    const unsigned tag = read16(alias, at);
    const std::size_t size = read16(alias, at + 2);
    if (tag == endOfTags || size > alias.size() - at - 4) break;
    const ByteView value = alias.subspan(at + 4, size);
    if (tag == posixPath) path = lastPart(text(value));
    if (tag == unicodeName && size >= 2) {
      unicode = fromUtf16(value.subspan(2, std::min<std::size_t>(size - 2, std::size_t{2} * read16(value, 0))));
    }
    at += 4 + size + size % 2;
  }
  names.push_back(path);
  names.push_back(ofFileManager(unicode));
  if (alias.size() <= nameAt) return;
  const std::size_t length = std::min<std::size_t>({alias[nameAt], longestName, alias.size() - nameAt - 1});
  names.push_back(ofFileManager(text(alias.subspan(nameAt + 1, length))));
}

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

std::vector<std::string> foldersOf(const std::string& path) {
  std::vector<std::string> folders{folderOf(path)};
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  if (real) folders.push_back(folderOf(real.get()));
  return folders;
}

}  // namespace

std::vector<std::string> fileNamesOf(const DataReference& reference) {
  std::vector<std::string> names;
  if (reference.type == code::url) {
    const std::string address = text(reference.data);
    names = {lastPart(unescaped(address)), lastPart(address)};
  } else if (reference.type == code::alis || reference.type == code::rsrc) {
    addAliasNames(reference.data, names);
  }
  const auto useless = [](const std::string& name) {
    return name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos;
  };
  names.erase(std::remove_if(names.begin(), names.end(), useless), names.end());
  return names;
}

Result<ReadableFile> openBeside(const ReadableFile& movie, const DataReference& reference) {
  const auto refused = [&](Clause why) {
    return failed(movie.path(), std::move(why), "moov/trak/mdia/minf/dinf/dref");
  };
  const std::vector<std::string> names = fileNamesOf(reference);
  if (names.empty()) return refused({Reason::MediaUnnamed, {verbatim(fourCCText(reference.type))}});
  const Clause likeliest = verbatim(names.front());
  if (reference.type == code::rsrc) return refused({Reason::MediaInResourceFork, {likeliest}});
  std::optional<MovieError> unreadable;
  for (const std::string& folder : foldersOf(movie.path())) {
    for (const std::string& name : names) {
      auto file = ReadableFile::open(folder + name);
      if (file) return file;
      if (!file.error().is(Reason::NoSuchFile)) unreadable = file.error();
    }
  }
  if (unreadable) return refused({Reason::MediaUnreadable, {likeliest, unreadable->why}});
  return refused({Reason::MediaNotBeside, {likeliest}});
}

}  // namespace movie
