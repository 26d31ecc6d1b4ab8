#include "check/MetadataSync.h"

#include <utility>

#include "SharedFiles/log/QVLog.h"
#include "check/ColorInfo.h"
#include "movie/atoms/AtomTypes.h"
#include "movie/render/IccProfile.h"

namespace check {
namespace {

constexpr std::int32_t unityGamma = 0x10000;  // 16.16
constexpr movie::NclcParameters fixedColors{movie::code::nclc, 1, 1, 1};

/// The first image description of one movie's first video track, taken out to be edited and put back.
struct EditedDescription {
  explicit EditedDescription(movie::Media& from, const movie::Movie& movie)
      : media(&from),
        description(from.imageDescription(1).value_or(movie::ImageDescription(movie::Bytes{}))),
        newColorFlavour(movie.file()->isQuickTime() ? movie::ColorAtomFlavour::Nclc
                                                    : movie::ColorAtomFlavour::NclxVideoRange) {}

  void putBack() { media->setSampleDescription(1, description); }

  movie::Media* media;
  movie::ImageDescription description;
  movie::ColorAtomFlavour newColorFlavour;
};

void logFailure(const QString& format, movie::OSErr result) {
  if (result != movie::noErr) QVLog::appendLog(format, int{result});
}

void setGammas(EditedDescription& source, EditedDescription& dest) {
  logFailure(QStringLiteral("Error setting source gamma: %d"), source.description.setGamma(unityGamma));
  logFailure(QStringLiteral("Error setting dest gamma: %d"), dest.description.setGamma(unityGamma));
}

void setColors(EditedDescription& source, EditedDescription& dest) {
  logFailure(QStringLiteral("Error setting source color: %d"),
             source.description.setNclc(fixedColors, source.newColorFlavour));
  logFailure(QStringLiteral("Error setting dest color: %d"),
             dest.description.setNclc(fixedColors, dest.newColorFlavour));
}

void setProfiles(EditedDescription& source, EditedDescription& dest) {
  const movie::Bytes& profile = movie::sRGBProfile();
  if (profile.empty()) return;
  logFailure(QStringLiteral("Error setting source color space: %d"), source.description.setIccProfile(profile));
  logFailure(QStringLiteral("Error setting dest color space: %d"), dest.description.setIccProfile(profile));
}

/// The kind of colour atom that the destination gets where it has none: an ISO one states the range, which is the
/// pictures' own.
movie::ColorAtomFlavour flavourFor(movie::Movie& dest, const EditedDescription& edited) {
  const bool needsRange = edited.newColorFlavour != movie::ColorAtomFlavour::Nclc && !edited.description.nclc();
  const bool isFull = needsRange && dest.codedRange() == movie::PictureRange::Full;
  return isFull ? movie::ColorAtomFlavour::NclxFullRange : edited.newColorFlavour;
}

/// A sync in the making: one step for each property, each telling whether the next may follow.
class Sync {
 public:
  Sync(const movie::ImageDescription& source, EditedDescription& dest) : source_(source), dest_(dest) {}

  bool copyGamma();
  bool copyColor();
  bool copyProfile();
  std::vector<PropertyChange> takeChanges() { return std::move(changes_); }

 private:
  bool set(ColorProperty property, movie::OSErr result, const QString& failure);
  void remove(ColorProperty property, movie::FourCC type, const QString& failure);

  const movie::ImageDescription& source_;
  EditedDescription& dest_;
  std::vector<PropertyChange> changes_;
};

bool Sync::set(ColorProperty property, movie::OSErr result, const QString& failure) {
  changes_.push_back({property, PropertyEdit::Set, result});
  logFailure(failure, result);
  return result == movie::noErr;
}

void Sync::remove(ColorProperty property, movie::FourCC type, const QString& failure) {
  const movie::OSErr result = dest_.description.removeExtension(type);
  changes_.push_back({property, PropertyEdit::Remove, result});
  logFailure(failure, result);
}

bool Sync::copyGamma() {
  const std::optional<std::int32_t> source = source_.gamma();
  if (gammaLevel(source) == gammaLevel(dest_.description.gamma())) return true;
  QVLog::appendLog("Gamma does not match");
  if (gammaLevel(source) != 0.0F) {
    return set(ColorProperty::Gamma, dest_.description.setGamma(*source), QStringLiteral("Error setting gamma: %d"));
  }
  remove(ColorProperty::Gamma, movie::code::gama, QStringLiteral("Error removing destination gamma atom: %d"));
  return true;
}

bool Sync::copyColor() {
  const ColorInfo source = source_.nclc().value_or(ColorInfo{});
  if (colorInfoCompare(source, dest_.description.nclc().value_or(ColorInfo{})) == 0) return true;
  QVLog::appendLog("Colors do not match");
  if (source.primaries != 0) {
    return set(ColorProperty::Color, dest_.description.setNclc(source, dest_.newColorFlavour),
               QStringLiteral("Error setting color: %i"));
  }
  remove(ColorProperty::Color, movie::code::nclc, QStringLiteral("Error removing destination color atom: %d"));
  return true;
}

bool Sync::copyProfile() {
  const auto source = source_.iccProfile();
  if (source && source == dest_.description.iccProfile()) return true;
  QVLog::appendLog("Color spaces do not match");
  if (source) {
    return set(ColorProperty::ColorSpace, dest_.description.setIccProfile(*source),
               QStringLiteral("Error setting colorspace: %i"));
  }
  remove(ColorProperty::ColorSpace, movie::code::iccp, QStringLiteral("Error removing destination color space: %d"));
  return true;
}

}  // namespace

// syncMetadata:dest:
SyncOutcome syncMetadata(const movie::Movie& source, movie::Movie& dest) {
  const std::vector<const movie::Track*> sourceTracks = source.tracksOfMediaType(movie::videoMedia);
  const std::vector<movie::Track*> destTracks = dest.tracksOfMediaType(movie::videoMedia);
  if (sourceTracks.empty() || destTracks.empty()) return {};

  const auto sourceDescription =
      sourceTracks.front()->media().imageDescription(1).value_or(movie::ImageDescription(movie::Bytes{}));
  EditedDescription edited(destTracks.front()->media(), dest);
  SyncOutcome outcome;
  outcome.before = edited.description;
  if (sourceDescription.nclc()) edited.newColorFlavour = flavourFor(dest, edited);
  Sync sync(sourceDescription, edited);
  outcome.writtenBack = sync.copyGamma() && sync.copyColor() && sync.copyProfile();
  outcome.changes = sync.takeChanges();
  if (outcome.writtenBack) edited.putBack();
  outcome.after = outcome.writtenBack ? edited.description : outcome.before;
  return outcome;
}

// matchMetadata:dest:
void matchMetadata(movie::Movie& source, movie::Movie& dest) {
  const std::vector<movie::Track*> sourceTracks = source.tracksOfMediaType(movie::videoMedia);
  const std::vector<movie::Track*> destTracks = dest.tracksOfMediaType(movie::videoMedia);
  if (sourceTracks.empty() || destTracks.empty()) return;

  EditedDescription editedSource(sourceTracks.front()->media(), source);
  EditedDescription editedDest(destTracks.front()->media(), dest);
  setGammas(editedSource, editedDest);
  setColors(editedSource, editedDest);
  setProfiles(editedSource, editedDest);
  editedSource.putBack();
  editedDest.putBack();
}

}  // namespace check
