#include "check/MetadataSync.h"

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
        description(firstDescription(from)),
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

/// The kind of colour atom that the destination gets where it has none: an ISO one states the range, which is the
/// pictures' own.
movie::ColorAtomFlavour flavourFor(movie::Movie& dest, const EditedDescription& edited) {
  const bool needsRange = edited.newColorFlavour != movie::ColorAtomFlavour::Nclc && !edited.description.nclc();
  const bool isFull = needsRange && dest.codedRange() == movie::PictureRange::Full;
  return isFull ? movie::ColorAtomFlavour::NclxFullRange : edited.newColorFlavour;
}

// The three steps of a sync: each notes its edit, if it makes one, and tells whether the next step may follow.

using Changes = std::vector<PropertyChange>;

bool noted(Changes& changes, const PropertyChange& change, const QString& failure) {
  changes.push_back(change);
  logFailure(failure, change.result);
  return change.result == movie::noErr || change.edit == PropertyEdit::Remove;
}

bool copyGamma(const movie::ImageDescription& from, movie::ImageDescription& to, Changes& changes) {
  const std::optional<std::int32_t> gamma = from.gamma();
  if (gammaLevel(gamma) == gammaLevel(to.gamma())) return true;
  QVLog::appendLog("Gamma does not match");
  if (gammaLevel(gamma) != 0.0F) {
    return noted(changes, {ColorProperty::Gamma, PropertyEdit::Set, to.setGamma(*gamma)},
                 QStringLiteral("Error setting gamma: %d"));
  }
  return noted(changes, {ColorProperty::Gamma, PropertyEdit::Remove, to.removeExtension(movie::code::gama)},
               QStringLiteral("Error removing destination gamma atom: %d"));
}

bool copyColor(const movie::ImageDescription& from, EditedDescription& edited, Changes& changes) {
  movie::ImageDescription& to = edited.description;
  const ColorInfo color = colorInfoOf(from);
  if (colorInfoCompare(color, colorInfoOf(to)) == 0) return true;
  QVLog::appendLog("Colors do not match");
  if (color.primaries != 0) {
    return noted(changes, {ColorProperty::Color, PropertyEdit::Set, to.setNclc(color, edited.newColorFlavour)},
                 QStringLiteral("Error setting color: %i"));
  }
  return noted(changes, {ColorProperty::Color, PropertyEdit::Remove, to.removeExtension(movie::code::nclc)},
               QStringLiteral("Error removing destination color atom: %d"));
}

bool copyProfile(const movie::ImageDescription& from, movie::ImageDescription& to, Changes& changes) {
  const auto profile = from.iccProfile();
  if (profile && profile == to.iccProfile()) return true;
  QVLog::appendLog("Color spaces do not match");
  if (profile) {
    return noted(changes, {ColorProperty::ColorSpace, PropertyEdit::Set, to.setIccProfile(*profile)},
                 QStringLiteral("Error setting colorspace: %i"));
  }
  return noted(changes, {ColorProperty::ColorSpace, PropertyEdit::Remove, to.removeExtension(movie::code::iccp)},
               QStringLiteral("Error removing destination color space: %d"));
}

}  // namespace

SyncOutcome syncMetadata(const movie::Movie& source, movie::Movie& dest) {
  const std::vector<const movie::Track*> sourceTracks = source.tracksOfMediaType(movie::videoMedia);
  const std::vector<movie::Track*> destTracks = dest.tracksOfMediaType(movie::videoMedia);
  if (sourceTracks.empty() || destTracks.empty()) return {};

  const movie::ImageDescription from = firstDescription(sourceTracks.front()->media());
  EditedDescription edited(destTracks.front()->media(), dest);
  SyncOutcome outcome;
  outcome.before = edited.description;
  if (from.nclc()) edited.newColorFlavour = flavourFor(dest, edited);
  outcome.writtenBack = copyGamma(from, edited.description, outcome.changes) &&
                        copyColor(from, edited, outcome.changes) &&
                        copyProfile(from, edited.description, outcome.changes);
  if (outcome.writtenBack) edited.putBack();
  outcome.after = outcome.writtenBack ? edited.description : outcome.before;
  return outcome;
}

void matchMetadata(movie::Movie& source, movie::Movie& dest) {
  const std::vector<movie::Track*> sourceTracks = source.tracksOfMediaType(movie::videoMedia);
  const std::vector<movie::Track*> destTracks = dest.tracksOfMediaType(movie::videoMedia);
  if (sourceTracks.empty() || destTracks.empty()) return;

  EditedDescription editedSource(sourceTracks.front()->media(), source);
  EditedDescription editedDest(destTracks.front()->media(), dest);
  movie::ImageDescription& first = editedSource.description;
  movie::ImageDescription& second = editedDest.description;
  logFailure(QStringLiteral("Error setting source gamma: %d"), first.setGamma(unityGamma));
  logFailure(QStringLiteral("Error setting dest gamma: %d"), second.setGamma(unityGamma));
  logFailure(QStringLiteral("Error setting source color: %d"),
             first.setNclc(fixedColors, editedSource.newColorFlavour));
  logFailure(QStringLiteral("Error setting dest color: %d"), second.setNclc(fixedColors, editedDest.newColorFlavour));
  if (const movie::Bytes& profile = movie::sRGBProfile(); !profile.empty()) {
    logFailure(QStringLiteral("Error setting source color space: %d"), first.setIccProfile(profile));
    logFailure(QStringLiteral("Error setting dest color space: %d"), second.setIccProfile(profile));
  }
  editedSource.putBack();
  editedDest.putBack();
}

}  // namespace check
