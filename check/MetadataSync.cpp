#include "check/MetadataSync.h"

#include <optional>
#include <vector>

#include "SharedFiles/QVLog.h"
#include "movie/render/IccProfile.h"

namespace check {
namespace {

constexpr std::int32_t unityGamma = 0x10000;  // 16.16
constexpr movie::NclcParameters fixedColors{movie::fourCC("nclc"), 1, 1, 1};

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

}  // namespace

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
