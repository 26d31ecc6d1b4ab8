#pragma once

#include "movie/atoms/FourCC.h"

namespace movie {

/// Types of atoms, and other codes that stand in several places: QTFF, ISO/IEC 14496-12 where nothing else is said.
namespace code {

// Files, and what may stand anywhere in one
inline constexpr FourCC ftyp = fourCC("ftyp"), moov = fourCC("moov"), mdat = fourCC("mdat"), free = fourCC("free"),
                        skip = fourCC("skip"), wide = fourCC("wide"), meta = fourCC("meta"), udta = fourCC("udta");

// A movie: QTFF "Movie atoms", ISO/IEC 14496-12
inline constexpr FourCC mvhd = fourCC("mvhd"), trak = fourCC("trak"), tkhd = fourCC("tkhd"), edts = fourCC("edts"),
                        elst = fourCC("elst"), mdia = fourCC("mdia"), mdhd = fourCC("mdhd"), hdlr = fourCC("hdlr"),
                        minf = fourCC("minf"), vmhd = fourCC("vmhd"), dinf = fourCC("dinf"), dref = fourCC("dref"),
                        stbl = fourCC("stbl"), stsd = fourCC("stsd"), stts = fourCC("stts"), stsc = fourCC("stsc"),
                        stsz = fourCC("stsz"), stco = fourCC("stco"), co64 = fourCC("co64"), rmra = fourCC("rmra"),
                        saio = fourCC("saio"), iloc = fourCC("iloc");

// A compressed one
inline constexpr FourCC cmov = fourCC("cmov"), dcom = fourCC("dcom"), cmvd = fourCC("cmvd"), zlib = fourCC("zlib");

// Fragments: ISO/IEC 14496-12, 8.8
inline constexpr FourCC mvex = fourCC("mvex"), trex = fourCC("trex"), moof = fourCC("moof"), traf = fourCC("traf"),
                        tfhd = fourCC("tfhd"), tfdt = fourCC("tfdt"), trun = fourCC("trun"), mfra = fourCC("mfra"),
                        styp = fourCC("styp"), sidx = fourCC("sidx"), ssix = fourCC("ssix");

// Media and data handlers
inline constexpr FourCC mhlr = fourCC("mhlr"), url = fourCC("url "), alis = fourCC("alis"), rsrc = fourCC("rsrc");

// In image descriptions
inline constexpr FourCC colr = fourCC("colr"), gama = fourCC("gama"), clap = fourCC("clap"), pasp = fourCC("pasp"),
                        btrt = fourCC("btrt"), fiel = fourCC("fiel"), esds = fourCC("esds"), avcC = fourCC("avcC"),
                        hvcC = fourCC("hvcC");

// Kinds of colr, and colour properties
inline constexpr FourCC nclc = fourCC("nclc"), nclx = fourCC("nclx"), prof = fourCC("prof"), rICC = fourCC("rICC"),
                        iccp = fourCC("iccp");

// Sound
inline constexpr FourCC wave = fourCC("wave"), enda = fourCC("enda"), raw = fourCC("raw "), none = fourCC("NONE"),
                        twos = fourCC("twos"), sowt = fourCC("sowt"), in24 = fourCC("in24"), in32 = fourCC("in32"),
                        fl32 = fourCC("fl32"), fl64 = fourCC("fl64"), ulaw = fourCC("ulaw"), alaw = fourCC("alaw"),
                        ima4 = fourCC("ima4"), alac = fourCC("alac");

}  // namespace code

}  // namespace movie
