#include "movie/save/MetadataSave.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "movie/atoms/AtomTypes.h"
#include "system/SignalsHeld.h"

namespace movie {

namespace {

constexpr std::uint64_t typeAt = 4;

Bytes bytesOf(std::uint32_t value) {
  Bytes bytes(4);
  write32(bytes, 0, value);
  return bytes;
}

class Saver {
 public:
  Saver(WritableFile& file, const FileStamp& loaded, const SaveSurvey& survey, const SavePlacement& placement)
      : file_(file),
        loaded_(loaded),
        survey_(survey),
        new_(placement.movie),
        placement_(placement),
        old_(survey.movieAtom()),
        headerSize_(read32(placement.movie, 0) == 1 ? 16 : 8) {}

  Result<SaveOutcome> save();

 private:
  using Status = Result<void>;

  Status write(std::uint64_t offset, ByteView bytes) {
    auto status = file_.write(offset, bytes);
    return status ? file_.sync() : status;
  }
  Status recover();
  Status sizeOpenMediaData();
  Status prepare();
  Status reserve();
  Status appendHeader();
  Status checkTail();
  void rollBack();
  Result<SaveOutcome> saveInSector();
  SaveOutcome uncertain(const MovieError& error);
  void moveIntoSlot();
  Status widenSlot();
  Status fillSlot();
  Status openSlot();
  Status cutTail();
  void note(std::string sentence) { outcome_.notes.push_back(std::move(sentence)); }
  void tellPlace();

  WritableFile& file_;
  const FileStamp& loaded_;
  const SaveSurvey& survey_;
  ByteView new_;
  const SavePlacement& placement_;
  Atom old_;
  std::size_t headerSize_;
  std::uint64_t tail_ = 0;  ///< where the appended atom starts: the file's first length
  SaveOutcome outcome_;
};

/// Takes away what an interrupted save left.
Saver::Status Saver::recover() {
  if (survey_.fileSize != survey_.end) {
    TRY(file_.resize(survey_.end));
    TRY(file_.sync());
    note("The end of the file, which an interrupted save had left, was cut away.");
  }
  if (!survey_.secondMovie) return {};
  note("A second movie atom, which an interrupted save had left, was made free space.");
  return write(survey_.atoms.back().offset + typeAt, bytesOf(code::free));
}

Saver::Status Saver::sizeOpenMediaData() {
  if (!survey_.openMediaData) return {};
  const Atom& data = survey_.atoms.back();
  return write(data.offset, bytesOf(static_cast<std::uint32_t>(data.size)));
}

Saver::Status Saver::reserve() {
  TRY(const auto made, file_.reserve(tail_, new_.size()));
  if (made == WritableFile::Reservation::Unsupported) {
    note("The file system cannot reserve room; the save takes it as it goes.");
  }
  return {};
}

/// A `free` as large as the movie atom, of which only the header is there yet. What is there at any moment, after a
/// write that was cut short too, is either zeros, a `free` without a size or an atom that reaches past the end of the
/// file, and so can be told from anything else by the next save.
Saver::Status Saver::appendHeader() {
  TRY(file_.resize(tail_ + headerSize_));
  Bytes header(new_.begin(), new_.begin() + static_cast<std::ptrdiff_t>(headerSize_));
  write32(header, typeAt, code::free);
  const bool inSeveralSectors = tail_ % sectorSize > sectorSize - headerSize_;
  if (inSeveralSectors) {
    TRY(file_.sync());
  }
  TRY(file_.write(tail_ + typeAt, bytesOf(code::free)));
  if (inSeveralSectors) {
    TRY(file_.sync());
  }
  return write(tail_, header);
}

Saver::Status Saver::checkTail() {
  TRY(const auto bytes, file_.read(tail_, new_.size() + 1));
  if (std::equal(bytes.begin(), bytes.end(), new_.begin(), new_.end())) return {};
  return failed(file_.path(), Reason::WrittenWrongly, "moov", tail_);
}

/// All that comes before the commit.
Saver::Status Saver::prepare() {
  TRY(reserve());
  TRY(sizeOpenMediaData());
  TRY(appendHeader());
  TRY(write(tail_ + headerSize_, new_.subspan(headerSize_)));
  TRY(write(tail_ + typeAt, bytesOf(code::moov)));
  return checkTail();
}

/// As far as it goes: what stays is a second movie atom that does not count, which the next save takes away. With its
/// time the file counts as the one that was loaded, and the save can be tried again.
void Saver::rollBack() {
  if (file_.resize(tail_) && file_.sync()) static_cast<void>(file_.restoreTime(loaded_));
}

SaveOutcome Saver::uncertain(const MovieError& error) {
  outcome_.uncertain = true;
  note("It is uncertain whether the save counts: " + error.message(Attempt::Save));
  return std::move(outcome_);
}

Result<SaveOutcome> Saver::saveInSector() {
  TRY(const auto read, file_.read(old_.offset, new_.size()));
  if (read.size() != new_.size()) return failed(file_.path(), Reason::BecameShorter, "moov", old_.offset);
  const auto first = std::mismatch(read.begin(), read.end(), new_.begin()).first - read.begin();
  const auto behind = std::mismatch(read.rbegin(), read.rend(), new_.rbegin()).first - read.rbegin();
  const auto count = static_cast<std::ptrdiff_t>(new_.size()) - first - behind;
  outcome_.place = SavePlace::Sector;
  const ByteView changed = new_.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
  if (auto status = write(old_.offset + static_cast<std::uint64_t>(first), changed); !status) {
    return uncertain(status.error());
  }
  return std::move(outcome_);
}

/// One `free` over all of the slot. Its first atom is free already.
Saver::Status Saver::widenSlot() {
  const std::uint64_t room = placement_.slotEnd - placement_.slotBegin;
  if (placement_.slotBegin == old_.offset && room == old_.size) return {};
  return write(placement_.slotBegin, bytesOf(static_cast<std::uint32_t>(room)));
}

Saver::Status Saver::fillSlot() {
  const std::uint64_t end = placement_.slotBegin + new_.size();
  TRY(file_.write(placement_.slotBegin + headerSize_, new_.subspan(headerSize_)));
  if (const std::uint64_t left = placement_.slotEnd - end; left != 0) {
    TRY(file_.write(end, atomHeader(code::free, left - 8)));
  }
  return file_.sync();
}

/// Torn between size and type this is a `free` of the new size, or a movie atom with a `free` as its last child.
Saver::Status Saver::openSlot() {
  return write(placement_.slotBegin, new_.first(8));
}

Saver::Status Saver::cutTail() {
  TRY(file_.resize(tail_));
  return file_.sync();
}

/// The save stands; from here on a failure leaves the movie at the end of the file.
void Saver::moveIntoSlot() {
  using Step = Status (Saver::*)();
  for (const Step step : {&Saver::widenSlot, &Saver::fillSlot, &Saver::openSlot}) {
    if (auto status = (this->*step)(); !status) {
      note("The movie atom stays at the end of the file: " + status.error().message(Attempt::Save));
      return;
    }
  }
  outcome_.place = SavePlace::Slot;
  if (auto status = cutTail(); !status) {
    note("A second copy of the movie atom stays at the end of the file until the next save: " +
         status.error().message(Attempt::Save));
  }
}

void Saver::tellPlace() {
  const std::uint64_t place = outcome_.place == SavePlace::Slot   ? placement_.slotBegin
                              : outcome_.place == SavePlace::Tail ? tail_
                                                                  : old_.offset;
  outcome_.mediaNowPrecedeMovie = !survey_.media.overlaps(0, old_.offset) && survey_.media.overlaps(0, place);
  if (outcome_.mediaNowPrecedeMovie) {
    note(
        "The movie no longer starts before it is loaded, since its movie atom now stands at the end of the file; a "
        "flattened copy does.");
  }
}

Result<SaveOutcome> Saver::save() {
  if (!file_.isLocked()) note("The file system has no locks; nothing keeps another program from saving the file too.");
  TRY(const auto names, file_.names());
  outcome_.names = names;
  if (names > 1) note("The file has " + std::to_string(names) + " names and was changed under all of them.");
  TRY(recover());
  if (placement_.place == SavePlace::Sector) return saveInSector();

  tail_ = survey_.end;
  if (auto status = prepare(); !status) {
    rollBack();
    return tl::make_unexpected(status.error());
  }
  outcome_.place = SavePlace::Tail;
  if (auto status = write(old_.offset + typeAt, bytesOf(code::free)); !status) return uncertain(status.error());
  if (placement_.place == SavePlace::Slot) moveIntoSlot();
  tellPlace();
  return std::move(outcome_);
}

struct Plan {
  WritableFile file;
  SaveSurvey survey;
  SavePlacement placement;
};

Result<Plan> planSave(const MovieFile& movie, const std::vector<SampleDescriptionEdit>& edits, sys::FileCalls& calls) {
  TRY(auto file, WritableFile::open(movie.path(), calls));
  TRY(auto survey, surveyForSave(file, movie));
  TRY(auto placement, placeMovie(survey, movie, edits));
  file.protect(survey.media);
  return Plan{std::move(file), std::move(survey), std::move(placement)};
}

}  // namespace

Result<void> canUpdate(const MovieFile& movie, const std::vector<SampleDescriptionEdit>& edits, sys::FileCalls& calls) {
  TRY(planSave(movie, edits, calls));
  return {};
}

Result<SaveOutcome> saveMetadata(const MovieFile& movie, const std::vector<SampleDescriptionEdit>& edits,
                                 sys::FileCalls& calls) {
  const sys::SignalsHeld held({SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXFSZ});
  TRY(auto plan, planSave(movie, edits, calls));
  if (plan.placement.place == SavePlace::Unchanged) return SaveOutcome{};
  return Saver(plan.file, movie.stamp(), plan.survey, plan.placement).save();
}

}  // namespace movie
