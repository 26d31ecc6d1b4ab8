#include "diagnosis/undo/UndoFilter.h"

#include <cmath>
#include <cstdio>
#include <vector>

#include "diagnosis/undo/UndoColors.h"

namespace diagnosis {
namespace {

constexpr double blackAt = 16, chromaZeroAt = 128;

std::string numeral(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.8g", value);
  return text;
}

/// Where the destination's samples lie, in its own codes.
struct CodeScale {
  double black = 0, span = 0, chromaZero = 0, top = 0;

  explicit CodeScale(const SideTags& tags) {
    const double unit = std::exp2(tags.depth - 8);
    top = std::exp2(tags.depth) - 1;
    const bool video = tags.range == SampleRange::Video;
    black = video ? blackAt * unit : 0;
    span = video ? lumaCodes * unit : top;
    chromaZero = chromaZeroAt * unit;
  }
  std::string lumaSignal() const { return "(val-" + numeral(black) + ")/" + numeral(span); }
};

/// Luma becomes slope * luma + shift, and chroma `chroma` times itself: of signals.
struct SignalLine {
  double slope = 1, shift = 0, chroma = 1;
};

SignalLine undoneRange(RangeStep step, double fullCodes) {
  const bool compressed = step == RangeStep::Compress || step == RangeStep::CompressRgb;
  const bool ofRgb = step == RangeStep::CompressRgb || step == RangeStep::ExpandRgb;
  const double ratio = ofRgb ? fullCodes / lumaCodes : fullCodes / chromaCodes;
  if (compressed) return {fullCodes / lumaCodes, -blackAt / lumaCodes, ratio};
  return {lumaCodes / fullCodes, blackAt / fullCodes, 1 / ratio};
}

const char* ffmpegMatrix(std::uint16_t matrix) {
  switch (matrix) {
    case 4:
      return "fcc";
    case 5:
    case 6:
      return "smpte170m";
    case 7:
      return "smpte240m";
    case 9:
      return "bt2020";
    default:
      return "bt709";
  }
}

/// As setparams calls them, which knows two for BT.2020.
std::string statedMatrix(std::uint16_t matrix) {
  return matrix == 9 ? "bt2020nc" : ffmpegMatrix(matrix);
}

/// The light that a signal in the register 0 stands for, and back, as expressions.
struct CurveExpressions {
  std::string light, signal;
};

CurveExpressions expressionsOf(const TransferCurve& curve) {
  switch (curve.kind) {
    case Transfer::Srgb:
      return {"if(lte(ld(0),0.04045),ld(0)/12.92,pow((ld(0)+0.055)/1.055,2.4))",
              "if(lte(ld(0),0.0031308),12.92*ld(0),1.055*pow(ld(0),1/2.4)-0.055)"};
    case Transfer::Bt709:
      return {"if(lt(ld(0),0.081),ld(0)/4.5,pow((ld(0)+0.099)/1.099,1/0.45))",
              "if(lt(ld(0),0.018),4.5*ld(0),1.099*pow(ld(0),0.45)-0.099)"};
    case Transfer::Linear:
      return {"ld(0)", "ld(0)"};
    case Transfer::Power:
      break;
  }
  const std::string exponent = numeral(curve.exponent);
  return {"pow(ld(0)," + exponent + ")", "pow(ld(0),1/" + exponent + ")"};
}

class FilterChain {
 public:
  FilterChain(const UndoSides& sides, const std::string& enable)
      : sides_(sides), scale_(sides.dest), enable_(enable.empty() ? "" : ":enable='" + enable + "'") {}

  void add(const SignalLine& line) {
    const auto code = [](double slope, double shift) {
      return "'val*" + numeral(slope) + (shift < 0 ? "-" : "+") + numeral(std::abs(shift)) + "'";
    };
    const double shift = scale_.black * (1 - line.slope) + scale_.span * line.shift;
    const std::string chroma = code(line.chroma, scale_.chromaZero * (1 - line.chroma));
    append("lutyuv=y=" + code(line.slope, shift) + ":u=" + chroma + ":v=" + chroma + enable_);
  }

  void addLuma(const std::string& expression) { append("lutyuv=y='" + expression + "'" + enable_); }

  /// Of R', G' and B', from 0 to maxval each.
  void addRgb(const std::string& expression) {
    const std::string matrix = ffmpegMatrix(sides_.dest.matrixInForce);
    const std::string range = sides_.dest.range == SampleRange::Video ? "tv" : "pc";
    const std::string care = ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp";
    append("scale=in_color_matrix=" + matrix + ":in_range=" + range + care);
    append("format=gbrp16");
    append("lutrgb=r='" + expression + "':g='" + expression + "':b='" + expression + "'" + enable_);
    append("scale=out_color_matrix=" + matrix + ":out_range=" + range + care);
    append("format=" + pixelFormats());
  }

  void addMatrix(std::uint16_t from, std::uint16_t to) {
    if (from == to) return;
    isTimed_ = false;
    append(std::string("scale=in_color_matrix=") + ffmpegMatrix(from) + ":out_color_matrix=" + ffmpegMatrix(to) +
           ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp");
  }

  void addTags(const std::string& parameters) {
    isTimed_ = false;
    append("setparams=" + parameters);
  }

  const CodeScale& scale() const { return scale_; }
  UndoFilter filter() const { return {text_, isTimed_}; }

 private:
  void append(const std::string& one) { text_ += (text_.empty() ? "" : ",") + one; }

  /// What the encoder may be given: as many bits as the destination has.
  std::string pixelFormats() const {
    const std::string depth = sides_.dest.depth > 8 ? "p" + std::to_string(sides_.dest.depth) : "p";
    return "yuv420" + depth + "|yuv422" + depth + "|yuv444" + depth;
  }

  const UndoSides& sides_;
  CodeScale scale_;
  std::string enable_, text_;
  bool isTimed_ = true;
};

std::string undonePower(const std::string& base, double exponent) {
  return "pow(clip(" + base + ",0,1)," + numeral(1 / exponent) + ")";
}

void addTone(FilterChain& chain, const Recipe& recipe, const ComparedIn& space) {
  const Hypothesis& hypothesis = recipe.hypothesis;
  const CodeScale& scale = chain.scale();
  switch (hypothesis.tone) {
    case ToneStep::None:
      break;
    case ToneStep::PowerRgb:
      chain.addRgb("maxval*" + undonePower("val/maxval", recipe.exponent));
      break;
    case ToneStep::PowerLuma:
      chain.addLuma(numeral(scale.black) + "+" + numeral(scale.span) + "*" +
                    undonePower(scale.lumaSignal(), recipe.exponent));
      break;
    case ToneStep::PowerLumaCodes: {
      const double top = space.fullCodes * scale.span / lumaCodes;
      chain.addLuma(numeral(top) + "*" + undonePower("val/" + numeral(top), recipe.exponent));
      break;
    }
    case ToneStep::CurveRgb:
      chain.addRgb("st(0,val/maxval);st(0," + expressionsOf(hypothesis.to).light + ");maxval*" +
                   expressionsOf(hypothesis.from).signal);
      break;
  }
}

std::string whyNot(const Recipe& recipe, const UndoSides& sides) {
  const Hypothesis& hypothesis = recipe.hypothesis;
  if (sides.dest.model != movie::PictureModel::YCbCr) return "No filter is made for samples that are not Y'CbCr.";
  if (hypothesis.relabelling) return {};
  if (std::string lost = whyLost(recipe); !lost.empty()) return lost;
  if (sides.space.matrix != sides.dest.matrixInForce) {
    return "No filter is made where the destination is in another Y'CbCr matrix than the source.";
  }
  const bool ofCodes = hypothesis.tone == ToneStep::PowerLumaCodes;
  if (ofCodes && sides.dest.range != SampleRange::Video) return "No filter is made for such a change in full range.";
  return {};
}

void addRelabelling(FilterChain& chain, const UndoSides& sides) {
  const std::string range = sides.source.range == SampleRange::Video ? "range=tv" : "range=pc";
  const std::string matrix = "colorspace=" + statedMatrix(sides.source.matrixInForce);
  const bool ofRange = sides.source.range != sides.dest.range;
  const bool ofMatrix = sides.source.matrixInForce != sides.dest.matrixInForce;
  chain.addTags((ofRange ? range : "") + (ofRange && ofMatrix ? ":" : "") + (ofMatrix ? matrix : ""));
}

}  // namespace

tl::expected<UndoFilter, std::string> undoFilter(const Recipe& recipe, const UndoSides& sides,
                                                 const std::string& enable) {
  if (const std::string why = whyNot(recipe, sides); !why.empty()) return tl::unexpected(why);
  const Hypothesis& hypothesis = recipe.hypothesis;
  FilterChain chain(sides, enable);
  if (hypothesis.relabelling) {
    addRelabelling(chain, sides);
    return chain.filter();
  }
  const auto addRange = [&](RangeStep step) {
    if (step != RangeStep::None) chain.add(undoneRange(step, sides.space.fullCodes));
  };
  if (recipe.gain) {
    const auto& [gain, offset, chroma, cost] = *recipe.gain;
    chain.add({1 / gain, -offset / gain, std::abs(chroma) > 0.05 ? 1 / chroma : 1.0});
  }
  addRange(hypothesis.rangeAfter);
  addTone(chain, recipe, sides.space);
  if (hypothesis.hasMatrix()) {
    chain.addMatrix(sides.dest.matrixInForce, hypothesis.matrix.taken);
    chain.addMatrix(hypothesis.matrix.meant, sides.dest.matrixInForce);
  }
  addRange(hypothesis.rangeBefore);
  return chain.filter();
}

}  // namespace diagnosis
