#include "cli/ScanJson.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "cli/FindingJson.h"

namespace cli {
namespace {

constexpr const char* scanSchema = "lumacheck.scan/1";
// In the order of the enumerations.
constexpr const char* patternNames[] = {"frame-for-frame", "pulldown", "blended", "dropped", "duplicated", "retimed"};
constexpr const char* unmeasuredNames[] = {"dark", "clipped"};

JsonValue rounded(double value, double places = 1e4) {
  return std::isfinite(value) ? JsonValue(std::round(value * places) / places) : JsonValue();
}

/// When a frame of one side comes on screen.
JsonValue timeJson(const movie::Movie& movie, const scan::MovieRow& row, std::size_t frame) {
  const movie::MovieTime time = row.movieTimeOf(frame);
  JsonValue json{{"value", time.value}, {"scale", time.scale}, {"seconds", rounded(row.timeOf(frame), 1e6)}};
  json["timecode"] = nullptr;
  if (QVQuickTime::fpsForMovie(&movie) > 0) json["timecode"] = QVQuickTime::timecodeAtTime(time, &movie).toStdString();
  json["frame"] = frame;
  return json;
}

JsonValue filterJson(const ScanFilter& filter) {
  const bool is = filter.why.empty();
  return {{"text", is ? JsonValue(filter.filter) : JsonValue()}, {"why", is ? JsonValue() : JsonValue(filter.why)}};
}

JsonValue lutJson(const ScanLut& lut) {
  if (!lut.why.empty()) {
    return {{"path", nullptr},       {"dimensions", nullptr}, {"size", nullptr},
            {"difference", nullptr}, {"cutsOff", nullptr},    {"why", lut.why}};
  }
  return {{"path", lut.path},       {"dimensions", lut.table.kind == diagnosis::CubeTable::Kind::Curve ? 1 : 3},
          {"size", lut.table.size}, {"difference", {{"before", rounded(lut.before)}, {"after", rounded(lut.after)}}},
          {"cutsOff", lut.cutsOff}, {"why", nullptr}};
}

class Document {
 public:
  explicit Document(const ScanDocument& document) : d_(document) {}

  JsonValue map() const {
    JsonValue pieces = JsonValue::array();
    for (const scan::MapPiece& piece : d_.result.map.pieces) {
      const auto first = static_cast<std::size_t>(sourceAt(piece.dest.first));
      pieces.push_back({{"from", dest(piece.dest.first)},
                        {"to", dest(piece.dest.end)},
                        {"sourceFrom", source(first)},
                        {"rate", rounded(piece.line.rate, 1e9)},
                        {"offset", rounded(piece.line.offset, 1e6)},
                        {"pattern", patternNames[static_cast<std::size_t>(piece.pattern)]},
                        {"agreement", rounded(piece.agreement)}});
    }
    return pieces;
  }

  JsonValue dropped() const {
    JsonValue gaps = JsonValue::array();
    for (const scan::Gap& gap : d_.result.map.dropped) {
      gaps.push_back({{"sourceFrom", source(gap.source.first)},
                      {"sourceTo", source(gap.source.end)},
                      {"frames", gap.source.count()},
                      {"at", dest(gap.before)}});
    }
    return gaps;
  }

  JsonValue unmatched() const {
    JsonValue ranges = JsonValue::array();
    for (const scan::FrameRange& range : d_.result.map.unmatched) ranges.push_back(fromTo(range));
    return ranges;
  }

  /// The part of the source that is seen, and the bars around it.
  JsonValue region() const {
    const diagnosis::Region &part = d_.result.placement.source, &box = d_.result.placement.dest;
    JsonValue json{{"x0", rounded(part.left)},
                   {"y0", rounded(part.top)},
                   {"x1", rounded(part.right)},
                   {"y1", rounded(part.bottom)}};
    json["bars"] = nullptr;
    if (!(box == diagnosis::Region())) {
      json["bars"] = {{"left", rounded(box.left)},
                      {"top", rounded(box.top)},
                      {"right", rounded(1 - box.right)},
                      {"bottom", rounded(1 - box.bottom)}};
    }
    return json;
  }

  JsonValue segments() const {
    JsonValue list = JsonValue::array();
    for (const scan::Segment& segment : d_.result.segments) {
      JsonValue json = fromTo(segment.dest);
      json["exponent"] = segment.exponent ? rounded(*segment.exponent) : JsonValue();
      json["interval"] = segment.exponent
                             ? JsonValue::array({rounded(segment.interval.low), rounded(segment.interval.high)})
                             : JsonValue();
      json["causes"] = JsonValue::array();
      for (const diagnosis::Cause& cause : segment.causes) json["causes"].push_back(causeJson(cause));
      json["confidence"] = rounded(segment.confidence());
      list.push_back(std::move(json));
    }
    return list;
  }

  JsonValue unmeasured() const {
    JsonValue list = JsonValue::array();
    for (const scan::UnmeasuredRange& range : d_.result.unmeasured) {
      JsonValue json = fromTo(range.dest);
      json["why"] = unmeasuredNames[static_cast<std::size_t>(range.why)];
      list.push_back(std::move(json));
    }
    return list;
  }

  JsonValue worst() const {
    if (!d_.result.worst) return nullptr;
    return {{"time", dest(d_.result.worst->frame)}, {"exponent", rounded(d_.result.worst->exponent)}};
  }

  JsonValue proof() const {
    const ScanProof& proof = *d_.proof;
    if (!proof.why.empty()) {
      return {{"path", nullptr},     {"from", nullptr},       {"to", nullptr},     {"frames", nullptr},
              {"compared", nullptr}, {"difference", nullptr}, {"causes", nullptr}, {"why", proof.why}};
    }
    JsonValue json{{"path", proof.path}};
    json.update(fromTo(proof.frames));
    json["frames"] = proof.frames.count();
    json["compared"] = proof.after.frames;
    json["difference"] = {{"before", rounded(proof.before.difference)}, {"after", rounded(proof.after.difference)}};
    json["causes"] = JsonValue::array();
    for (const diagnosis::Cause& cause : proof.after.causes) json["causes"].push_back(causeJson(cause));
    json["why"] = nullptr;
    return json;
  }

  /// Where a side could not be read on.
  JsonValue readFailure() const {
    if (!d_.result.failure) return nullptr;
    const scan::ReadFailure& failure = *d_.result.failure;
    const bool isSource = failure.side == scan::ReadFailure::Side::Source;
    return {{"side", isSource ? "source" : "dest"},
            {"at", isSource ? source(failure.frame) : dest(failure.frame)},
            {"message", failure.error.message()}};
  }

 private:
  JsonValue dest(std::size_t frame) const { return timeJson(d_.dest, *d_.rows.dest, frame); }
  JsonValue source(std::size_t frame) const { return timeJson(d_.source, *d_.rows.source, frame); }
  JsonValue fromTo(const scan::FrameRange& range) const {
    return {{"from", dest(range.first)}, {"to", dest(range.end)}};
  }
  std::int32_t sourceAt(std::size_t frame) const { return d_.result.matches.at(frame).source; }
  const ScanDocument& d_;
};

}  // namespace

JsonValue scanJson(const ScanDocument& document) {
  const Document parts(document);
  JsonValue json{{"schema", scanSchema},
                 {"source", jsonOf(document.source)},
                 {"dest", jsonOf(document.dest)},
                 {"map", parts.map()},
                 {"dropped", parts.dropped()},
                 {"unmatched", parts.unmatched()},
                 {"region", parts.region()},
                 {"segments", parts.segments()},
                 {"unmeasured", parts.unmeasured()},
                 {"worst", parts.worst()},
                 {"identicalFrames", document.result.identicalFrames},
                 {"frames", document.result.matches.frames.size()},
                 {"sample", document.result.matches.every},
                 {"failure", parts.readFailure()},
                 {"stopped", document.result.stopped},
                 {"finding", document.result.isTold() ? findingJson(document.result.finding) : JsonValue()},
                 {"exitStatus", document.exitStatus}};
  if (document.filter) json["filter"] = filterJson(*document.filter);
  if (document.lut) json["lut"] = lutJson(*document.lut);
  if (document.proof) json["proof"] = parts.proof();
  return json;
}

JsonValue scanErrorJson(const std::string& message, const std::string& path, int exitStatus) {
  return {{"schema", scanSchema}, {"error", {{"message", message}, {"path", path}}}, {"exitStatus", exitStatus}};
}

}  // namespace cli
