#pragma once

#include "diagnosis/Placement.h"
#include "scan/follow/Evidence.h"
#include "scan/follow/Matches.h"
#include "scan/follow/SourceWindow.h"
#include "scan/follow/Track.h"

namespace scan {

/// How far a frame of the destination is from one of the source: as `distance`, but less of dim pictures, in which a
/// code of 8 bits weighs the more the darker they are. The end of a fade to black is no other picture.
float farness(const Signature& dest, const Signature& source);

/// What is kept of a frame of the destination, once it is decided which frame of the source it shows. That one, and its
/// neighbours, are looked up in what is kept of the source. Colours are added to the evidence where it wants them.
FrameMatch matched(const ReadFrame& frame, const Tracked& tracked, const SourceWindow& source,
                   const diagnosis::Placement& placement, Evidence& evidence);

/// Whether colours of a frame are evidence, where that wants them.
bool isEvidence(const FrameMatch& match);

/// The pictures of two thumbnails, the one as it lies upon the other.
diagnosis::AlignedPair alignedThumbnails(const Thumbnail& source, const Thumbnail& dest,
                                         const diagnosis::Placement& placement);

}  // namespace scan
