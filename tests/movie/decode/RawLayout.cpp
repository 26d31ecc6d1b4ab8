#include "tests/movie/decode/RawLayout.h"

namespace movie::test {
namespace {

int halved(int size, int times) {
  return (size + (1 << times) - 1) >> times;
}

}  // namespace

int RawLayout::planeShift(std::size_t plane, bool vertical) const {
  for (const RawComponent& component : components) {
    if (static_cast<std::size_t>(component.plane) == plane && planeSteps.size() > 1) {
      return vertical ? component.down : component.across;
    }
  }
  return 0;
}

std::size_t RawLayout::frameSize(int width, int height) const {
  std::size_t size = 0;
  for (std::size_t plane = 0; plane < planeSteps.size(); ++plane) {
    size += static_cast<std::size_t>(planeSteps[plane]) *
            static_cast<std::size_t>(halved(width, planeShift(plane, false)) * halved(height, planeShift(plane, true)));
  }
  return size;
}

int RawLayout::widthOf(std::size_t c, int width) const {
  return halved(width, components[c].across);
}
int RawLayout::heightOf(std::size_t c, int height) const {
  return halved(height, components[c].down);
}

double RawLayout::code(const std::uint8_t* frame, int width, int height, std::size_t c, int x, int y) const {
  const RawComponent& component = components[c];
  const auto plane = static_cast<std::size_t>(component.plane);
  for (std::size_t before = 0; before < plane; ++before) {
    frame +=
        static_cast<std::size_t>(planeSteps[before]) *
        static_cast<std::size_t>(halved(width, planeShift(before, false)) * halved(height, planeShift(before, true)));
  }
  const std::ptrdiff_t rowBytes = std::ptrdiff_t{planeSteps[plane]} * halved(width, planeShift(plane, false));
  const std::uint8_t* const at = frame + y * rowBytes + std::ptrdiff_t{x} * component.step + component.offset;
  unsigned value = at[0];
  if (component.word || component.shift + component.bits > 8) {
    value = component.bigEndian ? static_cast<unsigned>(at[0] << 8 | at[1]) : static_cast<unsigned>(at[1] << 8 | at[0]);
  }
  value = (value >> component.shift) & ((1U << component.bits) - 1);
  return component.bits == depth ? value : value * 255.0 / ((1 << component.bits) - 1);
}

RawLayout planarYCbCr(int bits, int across, int down, int alphaPlanes) {
  const int bytes = bits > 8 ? 2 : 1;
  RawLayout layout{PictureModel::YCbCr, bits, {}, std::vector<int>(static_cast<std::size_t>(3 + alphaPlanes), bytes)};
  for (int c = 0; c < 3; ++c) {
    layout.components.push_back({c, bytes, 0, 0, bits, false, bits > 8, c == 0 ? 0 : across, c == 0 ? 0 : down});
  }
  return layout;
}

RawLayout planarRgb(int bits, int alphaPlanes) {
  RawLayout layout = planarYCbCr(bits, 0, 0, alphaPlanes);
  layout.model = PictureModel::Rgb;
  const int planes[] = {2, 0, 1};
  for (std::size_t c = 0; c < 3; ++c) layout.components[c].plane = planes[c];
  return layout;
}

RawLayout grey(int bits, bool bigEndian, PictureModel model, int bytesPerPixel) {
  return {model, bits, {{0, bytesPerPixel, 0, 0, bits, bigEndian, bits > 8}}, {bytesPerPixel}};
}

RawLayout packedRgb(int red, int green, int blue, int channels, int bits, bool bigEndian) {
  const int bytes = bits > 8 ? 2 : 1;
  RawLayout layout{PictureModel::Rgb, bits, {}, {channels * bytes}};
  for (const int position : {red, green, blue}) {
    layout.components.push_back({0, channels * bytes, position * bytes, 0, bits, bigEndian, bits > 8});
  }
  return layout;
}

RawLayout packed422(int luma, int cb, int cr) {
  return {PictureModel::YCbCr,
          8,
          {{0, 2, luma}, {0, 4, cb, 0, 8, false, false, 1, 0}, {0, 4, cr, 0, 8, false, false, 1, 0}},
          {2}};
}

RawLayout packedBits(int redBits, int greenBits, int blueBits, bool bigEndian) {
  return {PictureModel::Rgb,
          8,
          {{0, 2, 0, greenBits + blueBits, redBits, bigEndian, true},
           {0, 2, 0, blueBits, greenBits, bigEndian, true},
           {0, 2, 0, 0, blueBits, bigEndian, true}},
          {2}};
}

}  // namespace movie::test
