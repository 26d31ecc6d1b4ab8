#include "tests/movie/save/CrashStates.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

namespace movie::test {

namespace {

constexpr std::size_t sector = 512;
using Change = SimulatedFile::Change;

void apply(Bytes& file, const Change& change) {
  if (change.call == SimulatedFile::Call::Resize) file.resize(change.offset);
  if (change.call != SimulatedFile::Call::Write) return;
  file.resize(std::max<std::size_t>(file.size(), change.offset + change.bytes.size()));
  std::copy(change.bytes.begin(), change.bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(change.offset));
}

/// What is on the disk for certain, and what each sector and the length have been since.
class Disk {
 public:
  explicit Disk(Bytes file) : durable_(std::move(file)) { settle(); }

  void take(const Change& change) {
    if (change.call == SimulatedFile::Call::Sync) {
      durable_ = now_;
      return settle();
    }
    apply(now_, change);
    lengths_.push_back(now_.size());
    if (change.call == SimulatedFile::Call::Resize) return;
    const std::size_t last = (change.offset + change.bytes.size() - 1) / sector;
    for (std::size_t at = change.offset / sector; at <= last; ++at) versions_[at].push_back(sectorOf(now_, at));
  }

  const Bytes& now() const { return now_; }

  Bytes torn(std::mt19937& random) const {
    const auto pick = [&](std::size_t count) {
      return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    Bytes file = durable_;
    const std::size_t length = lengths_[pick(lengths_.size())];
    file.resize(std::max(length, file.size()));
    for (const auto& [at, versions] : versions_) {
      const std::size_t which = pick(versions.size() + 1);
      if (which == versions.size()) continue;  // the old one stays
      const std::size_t begin = at * sector;
      for (std::size_t i = 0; i < versions[which].size() && begin + i < file.size(); ++i) {
        file[begin + i] = versions[which][i];
      }
    }
    file.resize(length);
    return file;
  }

 private:
  static Bytes sectorOf(const Bytes& file, std::size_t at) {
    const std::size_t begin = at * sector, end = std::min(file.size(), begin + sector);
    return {file.begin() + static_cast<std::ptrdiff_t>(begin), file.begin() + static_cast<std::ptrdiff_t>(end)};
  }
  void settle() {
    now_ = durable_;
    versions_.clear();
    lengths_ = {durable_.size()};
  }

  Bytes durable_, now_;
  std::map<std::size_t, std::vector<Bytes>> versions_;
  std::vector<std::size_t> lengths_;
};

std::uint64_t number(const Bytes& bytes, std::size_t at, std::size_t size) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value = value * 256 + bytes.at(at + i);
  return value;
}

/// Calls `visit` with type, begin of the body and end; false where it stumbles.
bool walk(const Bytes& bytes, std::size_t begin, std::size_t end,
          const std::function<bool(const std::string&, std::size_t, std::size_t)>& visit) {
  while (begin < end) {
    if (end - begin < 8) return false;
    std::uint64_t size = number(bytes, begin, 4);
    const std::string type(bytes.begin() + static_cast<std::ptrdiff_t>(begin) + 4,
                           bytes.begin() + static_cast<std::ptrdiff_t>(begin) + 8);
    std::size_t head = 8;
    if (size == 1 && end - begin >= 16) {
      size = number(bytes, begin + 8, 8);
      head = 16;
    }
    if (size == 0 && type == "mdat" && end == bytes.size()) size = end - begin;
    if (size < head || size > end - begin) return false;
    if (!visit(type, begin + head, begin + static_cast<std::size_t>(size))) return true;
    begin += static_cast<std::size_t>(size);
  }
  return true;
}

class Reader {
 public:
  Reader(const Bytes& file, SeenMovie& seen) : file_(file), seen_(seen) {}

  bool read() {
    bool found = false, good = false;
    const bool walked = walk(file_, 0, file_.size(), [&](const std::string& type, std::size_t begin, std::size_t end) {
      if (type != "moov") return true;
      found = true;
      good = inside(begin, end);
      return false;
    });
    return walked && found && good && chunks();
  }

 private:
  bool inside(std::size_t begin, std::size_t end) {
    return walk(file_, begin, end,
                [&](const std::string& type, std::size_t from, std::size_t to) {
                  static const std::set<std::string> parents{"trak", "mdia", "minf", "stbl", "udta"};
                  if (type == "free") return true;
                  seen_.rest.insert(seen_.rest.end(), type.begin(), type.end());
                  if (type == "stsd") return descriptions(from, to);
                  if (parents.count(type) != 0) return good_ = good_ && inside(from, to);
                  if (type == "stco" || type == "co64" || type == "stsz" || type == "stsc") tables_[type] = from;
                  seen_.rest.insert(seen_.rest.end(), file_.begin() + static_cast<std::ptrdiff_t>(from),
                                    file_.begin() + static_cast<std::ptrdiff_t>(to));
                  return true;
                }) &&
           good_;
  }

  bool descriptions(std::size_t from, std::size_t to) {
    const std::uint64_t count = number(file_, from + 4, 4);
    const bool whole = walk(file_, from + 8, to, [&](const std::string&, std::size_t begin, std::size_t end) {
      seen_.descriptions.emplace_back(file_.begin() + static_cast<std::ptrdiff_t>(begin) - 8,
                                      file_.begin() + static_cast<std::ptrdiff_t>(end));
      return true;
    });
    good_ = good_ && whole && seen_.descriptions.size() == count;
    return good_;
  }

  /// One row of stsc, sizes one by one, as the cases have them.
  bool chunks() {
    const bool wide = tables_.count("co64") != 0;
    if (tables_.count("stsz") == 0 || tables_.count("stsc") == 0 || (!wide && tables_.count("stco") == 0)) return false;
    const std::size_t offsets = tables_[wide ? "co64" : "stco"], sizes = tables_["stsz"];
    const std::uint64_t perChunk = number(file_, tables_["stsc"] + 12, 4), count = number(file_, offsets + 4, 4);
    std::size_t sample = sizes + 12;
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t offset = number(file_, offsets + 8 + i * (wide ? 8 : 4), wide ? 8 : 4);
      std::uint64_t size = 0;
      for (std::uint64_t n = 0; n < perChunk; ++n, sample += 4) size += number(file_, sample, 4);
      if (offset + size > file_.size()) return false;
      seen_.chunks.emplace_back(offset, size);
    }
    return true;
  }

  const Bytes& file_;
  SeenMovie& seen_;
  std::map<std::string, std::size_t> tables_;
  bool good_ = true;
};

}  // namespace

void visitCrashStates(const Bytes& before, const std::vector<Change>& changes, std::size_t perPoint,
                      std::mt19937& random, const std::function<void(const Bytes&)>& visit) {
  Disk disk(before);
  visit(disk.now());
  for (const Change& change : changes) {
    disk.take(change);
    if (change.call == SimulatedFile::Call::Sync) continue;
    visit(disk.now());
    for (std::size_t i = 0; i < perPoint; ++i) visit(disk.torn(random));
  }
}

std::optional<SeenMovie> seenIn(const Bytes& file, std::string& why) {
  SeenMovie seen;
  why = "a reader stumbles";
  try {
    if (Reader(file, seen).read()) return seen;
  } catch (const std::out_of_range&) {
    why = "a field lies outside";
  }
  return std::nullopt;
}

}  // namespace movie::test
