#pragma once

#include <cstdint>

#include "movie/render/RgbFrame.h"

/// A video-range frame with what natural pictures have: slow gradients, edges, texture, moderate saturation, sensor
/// noise. The same seed gives the same frame on every machine.
movie::RgbFrame naturalFrame(int width, int height, std::uint32_t seed);

/// The frame with each channel's video-range value raised to an exponent, rounded, then disturbed by at most one code.
movie::RgbFrame raisedFrame(const movie::RgbFrame& frame, double exponent, std::uint32_t seed);
