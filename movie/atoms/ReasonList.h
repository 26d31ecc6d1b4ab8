// Every reason why an operation of the movie layer can fail: REASON(name, text), where whoever includes this list says
// what REASON makes of a row. A text is an English clause; %1, %2 and %3 in it stand for names, numbers or clauses of
// their own. TR is what the tool that collects the window's texts looks for: what it marks has a translation.

#define TR(context, text) text

// Somebody else's words, as they are.
REASON(Verbatim, "%1")

// What the system answers.
REASON(NoSuchFile, TR("MovieReasons", "there is no such file"))
REASON(NoSuchFolder, TR("MovieReasons", "there is no such folder"))
REASON(NoPermissionToRead, TR("MovieReasons", "there is no permission to read the file"))
REASON(NoPermissionToWrite, TR("MovieReasons", "there is no permission to write the file"))
REASON(NoPermissionThere, TR("MovieReasons", "there is no permission to write there"))
REASON(ReadOnlyFileSystem, TR("MovieReasons", "the file system is read-only"))
REASON(DiskFull, TR("MovieReasons", "the disk is full"))
REASON(QuotaUsedUp, TR("MovieReasons", "the disk quota is used up"))
REASON(NotEnoughSpace, TR("MovieReasons", "there is not enough space on the disk"))
REASON(WouldBecomeTooLarge, TR("MovieReasons", "the file would become larger than is allowed"))
REASON(WouldBeTooLarge, TR("MovieReasons", "the file would be larger than the system allows"))
REASON(TooManyLinks, TR("MovieReasons", "too many symbolic links follow each other"))
REASON(OpenForWriting, TR("MovieReasons", "another program has the file open for writing"))
REASON(SystemSays, TR("MovieReasons", "the system says \"%1\""))
//: %1: what is wrong. %2: what was being done, one of the next rows
REASON(Meanwhile, TR("MovieReasons", "%1 (%2)"))
REASON(LookingAtFile, TR("MovieReasons", "looking at the file"))
REASON(ReadingFile, TR("MovieReasons", "reading the file"))
REASON(WritingFile, TR("MovieReasons", "writing the file"))
REASON(SyncingFile, TR("MovieReasons", "bringing the file onto the disk"))
REASON(SettingLength, TR("MovieReasons", "setting the length of the file"))
REASON(SettingTime, TR("MovieReasons", "setting the time of modification"))
REASON(ReservingRoom, TR("MovieReasons", "reserving room"))

// A file that is opened, written or copied.
REASON(ZeroByteInName, TR("MovieReasons", "a file name cannot hold a zero byte"))
REASON(IsFolder, TR("MovieReasons", "it is a folder"))
REASON(NotRegularFile, TR("MovieReasons", "it is not a regular file"))
REASON(EmptyFile, TR("MovieReasons", "the file is empty"))
REASON(BecameShorter, TR("MovieReasons", "the file became shorter"))
REASON(BecameShorterWhileRead, TR("MovieReasons", "the file became shorter while it was read"))
REASON(ChangedSinceOpened, TR("MovieReasons", "the file was changed since it was opened"))
REASON(ChangedSinceLoaded, TR("MovieReasons", "the file was changed on disk since it was loaded"))
REASON(BeingSaved, TR("MovieReasons", "another program is saving the file, or has locked it"))
REASON(WriteHeldBack, TR("MovieReasons", "a write that would reach media data was held back"))
REASON(CutHeldBack, TR("MovieReasons", "a cut that would reach media data was held back"))
REASON(WrittenWrongly, TR("MovieReasons", "what was written does not read back"))
REASON(NameTaken, TR("MovieReasons", "another file has taken that name meanwhile"))
//: %1: what the system answered
REASON(NameUncertain,
       TR("MovieReasons", "the file is complete, but whether its name would outlast a power failure is uncertain: %1"))
REASON(Cancelled, TR("MovieReasons", "it was cancelled"))

// The atoms of a movie.
REASON(SizeBelowHeader, TR("MovieReasons", "the size of the atom is below that of its header"))
REASON(ReachesPastParent, TR("MovieReasons", "the atom reaches past the end of its parent"))
REASON(TooManyInParent, TR("MovieReasons", "its parent holds too many atoms"))
REASON(TrailingBytes, TR("MovieReasons", "there are bytes behind the last atom"))
REASON(TooManyAtoms, TR("MovieReasons", "there are too many atoms in the file"))
REASON(NotMovie, TR("MovieReasons", "it is not a movie"))
REASON(NoMovieAtom, TR("MovieReasons", "there is no movie atom"))
REASON(NoMovieAmongFirst, TR("MovieReasons", "there is no movie atom among its first atoms"))
REASON(NoMovieBeforeDamage,
       TR("MovieReasons", "there is no movie atom; the walk over the atoms ends at a damaged one, or the file was cut"))
REASON(MoviePastEnd, TR("MovieReasons", "the movie atom reaches past the end of the file"))
REASON(MovieOverOthers, TR("MovieReasons", "the movie atom reaches over other atoms of the file"))
REASON(MovieTooLarge, TR("MovieReasons", "the movie atom is too large"))
REASON(MovieWouldBeTooLarge, TR("MovieReasons", "the movie atom would become too large"))
REASON(MovieMalformed, TR("MovieReasons", "the movie atom is malformed"))
REASON(NotOneMovieAtom, TR("MovieReasons", "it is not one whole movie atom"))
REASON(NoMovieHeader, TR("MovieReasons", "the movie atom has no movie header"))
REASON(NoTimeScale, TR("MovieReasons", "the movie header has no time scale"))
REASON(ReferenceMovie, TR("MovieReasons", "it only refers to other movies"))
REASON(TooManyTracks, TR("MovieReasons", "the movie has too many tracks"))
REASON(FragmentsTooLarge, TR("MovieReasons", "the movie fragments are too large"))
REASON(CompressedIncomplete, TR("MovieReasons", "the compressed movie atom is incomplete"))
REASON(CompressedTooLarge, TR("MovieReasons", "the compressed movie atom claims to be too large"))
REASON(CompressedDamaged, TR("MovieReasons", "the compressed movie atom is damaged"))
REASON(CompressedWithoutMovie, TR("MovieReasons", "no movie atom comes out of it"))
//: %1: four characters that name the method
REASON(UnknownCompression, TR("MovieReasons", "the movie atom is compressed with the unknown method '%1'"))
REASON(NoSuchAtom, TR("MovieReasons", "there is no such atom"))
REASON(NoSuchDescription, TR("MovieReasons", "there is no such sample description"))
REASON(DescriptionSizeWrong, TR("MovieReasons", "the size of the new sample description is not its length"))
REASON(SeveralWhereOneCounts, TR("MovieReasons", "there are several where only one can count"))
REASON(ChunksOutOfOrder, TR("MovieReasons", "the chunks are not in order"))
REASON(OffsetsUnreadable, TR("MovieReasons", "a table of file offsets cannot be understood"))
REASON(OffsetsImmovable, TR("MovieReasons", "it holds places in the file that cannot be moved along"))

// A movie that cannot be saved in place, or copied.
REASON(NoMovieLoaded, TR("MovieReasons", "no movie is loaded"))
REASON(NoMovieToSave, TR("MovieReasons", "there is no movie to save"))
REASON(NoMovieToWrite, TR("MovieReasons", "there is no movie to write"))
REASON(OtherTracksNow, TR("MovieReasons", "the file now has other tracks"))
REASON(OtherTracksInEdit, TR("MovieReasons", "the changed movie atom has other tracks"))
REASON(Fragmented, TR("MovieReasons", "the movie is fragmented"))
REASON(Compressed, TR("MovieReasons", "the movie atom is compressed"))
REASON(ItsMovieCompressed, TR("MovieReasons", "its movie atom is compressed"))
REASON(NoSizeOfItsOwn, TR("MovieReasons", "an atom has no size of its own"))
REASON(AtomsEndElsewhere, TR("MovieReasons", "its atoms do not end where the file does"))
REASON(SeveralMovies, TR("MovieReasons", "it holds several movies"))
REASON(SecondMovie, TR("MovieReasons", "it holds a second movie"))
REASON(AtomTooLarge, TR("MovieReasons", "the atom is too large to be looked through"))
REASON(MediaInMovie, TR("MovieReasons", "media data lie inside the movie atom"))
REASON(MediaInSecondMovie, TR("MovieReasons", "media data lie inside a second movie atom"))
REASON(MediaPastEnd, TR("MovieReasons", "media data lie past the end of the file"))
REASON(MediaBesideMovie, TR("MovieReasons", "media data lie in the free space beside the movie atom"))
REASON(MediaAtEnd, TR("MovieReasons", "media data lie in the free space at the end, where the movie atom would go"))
REASON(OpenMediaTooLarge, TR("MovieReasons", "the last mdat has no size of its own and is too large to be given one"))
REASON(OpenMediaUnsafe, TR("MovieReasons", "the last mdat has no size of its own and cannot safely be given one"))
//: %1: a chunk's number. %2: a track's number, here and below
REASON(ChunkPastEnd, TR("MovieReasons", "chunk %1 of track %2 lies past the end of the file"))
//: %3: a file
REASON(ChunkPastEndOf, TR("MovieReasons", "chunk %1 of track %2 lies past the end of \"%3\""))
REASON(ChunkOutsideAtoms, TR("MovieReasons", "chunk %1 of track %2 does not lie inside one atom of media data"))
//: %1: four characters that name a kind of reference
REASON(MediaUnnamed,
       TR("MovieReasons", "some of its media is in another file that a reference of type '%1' does not name"))
//: %1: a file, here and below
REASON(MediaInResourceFork,
       TR("MovieReasons", "some of its media is in the resource fork of \"%1\", which cannot be read"))
//: %2: why
REASON(MediaUnreadable, TR("MovieReasons", "some of its media is in \"%1\", which cannot be read: %2"))
REASON(MediaNotBeside, TR("MovieReasons", "some of its media is in \"%1\", which is not beside it"))

// The decoder of a movie.
REASON(ModuleUnloadable, TR("MovieReasons", "the decoder module cannot be loaded: %1"))
REASON(NoReasonGiven, TR("MovieReasons", "no reason given"))
REASON(ModuleWithoutEntry, TR("MovieReasons", "the decoder module has no entry of that name"))
REASON(ModuleOfOtherVersion, TR("MovieReasons", "the decoder module belongs to another version of this program"))
//: %1: four characters that name the codec
REASON(UnknownCodec, TR("MovieReasons", "there is no decoder for the codec '%1'"))
REASON(DecoderUnopenable, TR("MovieReasons", "the decoder cannot be opened: %1"))
REASON(NoMemoryForDecoder, TR("MovieReasons", "there is not enough memory for a decoder"))

// Its tracks.
REASON(NoVideoTrack, TR("MovieReasons", "the movie has no video track"))
REASON(NoSuchTrack, TR("MovieReasons", "there is no such track"))
REASON(NoPictures, TR("MovieReasons", "the track holds no pictures"))
REASON(NoVideoSamples, TR("MovieReasons", "the video track has no samples"))
REASON(NoImageDescription, TR("MovieReasons", "the video track has no image description"))
REASON(ImageDescriptionUnreadable, TR("MovieReasons", "the image description cannot be understood"))
REASON(MediaElsewhere, TR("MovieReasons", "the track's media is in another file"))
REASON(SamplesElsewhere, TR("MovieReasons", "the samples lie in another file, and such references are not followed"))
REASON(Encrypted, TR("MovieReasons", "the samples are encrypted"))
REASON(SamplesOverlap, TR("MovieReasons", "the samples overlap"))

// A sample of a track.
REASON(NoSuchSample, TR("MovieReasons", "there is no such sample"))
REASON(SampleNotFound, TR("MovieReasons", "the sample tables do not lead to the sample"))
REASON(SamplePastEnd, TR("MovieReasons", "the sample lies past the end of the file"))
//: %1: the sample's number. %2: why
REASON(SampleUnreadable, TR("MovieReasons", "the sample %1 cannot be read: %2"))
REASON(SampleTooLarge, TR("MovieReasons", "the sample %1 is too large for its picture"))
REASON(NoMemoryForSample, TR("MovieReasons", "there is not enough memory for the sample %1"))

// What comes out of a sample.
REASON(FrameUndecodable, TR("MovieReasons", "the frame cannot be decoded: %1"))
REASON(FrameUnusable, TR("MovieReasons", "the frame cannot be used: %1"))
REASON(NoPicture, TR("MovieReasons", "the decoder gave no picture"))
//: %1: what libav calls the pixel format, here and below
REASON(PixelsOutsideMemory, TR("MovieReasons", "the pixel format %1 lies outside of memory"))
REASON(PixelsFloating, TR("MovieReasons", "the pixel format %1 has floating-point samples"))
REASON(PixelsMosaic, TR("MovieReasons", "the pixel format %1 is a sensor's mosaic"))
REASON(PixelsUnknown, TR("MovieReasons", "the pixel format %1 is not known"))

// Its sound.
REASON(NoSuchSoundTrack, TR("MovieReasons", "there is no such sound track"))
REASON(NoSoundSamples, TR("MovieReasons", "the sound track has no samples"))
REASON(NoSoundDescription, TR("MovieReasons", "the track has no sound description"))
REASON(SoundDescriptionTooShort, TR("MovieReasons", "the sound description is too short"))
REASON(TooManyChannels, TR("MovieReasons", "a sound of %1 channels cannot be played"))
REASON(SoundRateOutOfBounds, TR("MovieReasons", "the rate of the sound is out of bounds"))
REASON(SoundRateChanges, TR("MovieReasons", "the rate of the sound changes within the track"))
REASON(SoundKindChanges, TR("MovieReasons", "the kind of sound changes within the track"))
REASON(SoundPastEnd, TR("MovieReasons", "the sound reaches past the end of the file"))
REASON(SoundSampleTooLarge, TR("MovieReasons", "a sample of the sound is too large"))
REASON(SoundUndecodable, TR("MovieReasons", "the sound cannot be decoded: %1"))

// The sentences that errors are told in.
//: %1: what is wrong. %2: a path of atoms such as moov/trak. %3: a number of bytes from the file's start
REASON(InAtom, TR("MovieReasons", "%1 (atom %2 at offset %3)"))
//: %1: what is wrong, a clause
REASON(CannotRead, TR("MovieReasons", "Cannot read the movie: %1."))
//: %1: the file. %2: what is wrong, a clause
REASON(CannotReadFile, TR("MovieReasons", "Cannot read \"%1\": %2."))
REASON(CannotSave, TR("MovieReasons", "Cannot save the movie: %1."))
REASON(CannotSaveFile, TR("MovieReasons", "Cannot save \"%1\": %2."))

#undef REASON
#undef TR
