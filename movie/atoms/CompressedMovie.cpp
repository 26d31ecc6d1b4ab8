#include "movie/atoms/CompressedMovie.h"

#include <algorithm>
#include <optional>
#include <string>

#include <zlib.h>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

/// One zlib stream, ended on every path.
class Inflater {
 public:
  Inflater() : ready_(inflateInit(&stream_) == Z_OK) {}
  ~Inflater() {
    if (ready_) inflateEnd(&stream_);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  /// None when the stream is damaged or holds more than `limit` bytes.
  std::optional<Bytes> run(ByteView input, std::size_t limit) {
    if (!ready_) return std::nullopt;
    stream_.next_in = const_cast<Bytef*>(input.data());  // zlib reads only
    stream_.avail_in = static_cast<uInt>(input.size());
    Bytes output;
    for (int status = Z_OK; status != Z_STREAM_END;) {
      const std::size_t done = output.size();
      const std::size_t step = std::min(std::max(done, input.size() + 1024), limit + 1 - done);
      output.resize(done + step);
      stream_.next_out = output.data() + done;
      stream_.avail_out = static_cast<uInt>(step);
      status = inflate(&stream_, Z_NO_FLUSH);
      output.resize(done + step - stream_.avail_out);
      if ((status != Z_OK && status != Z_STREAM_END) || output.size() > limit) return std::nullopt;
    }
    return output;
  }

 private:
  z_stream stream_{};
  bool ready_;
};

}  // namespace

Result<Bytes> inflateMovie(ByteView bytes, const Atom& compressed) {
  const AtomList parts = readChildren(bytes, compressed);
  const auto method = firstAtom(parts, code::dcom);
  const auto data = firstAtom(parts, code::cmvd);
  if (!method || method->bodySize() < 4 || !data || data->bodySize() < 4) {
    return failed({}, Reason::CompressedIncomplete);
  }
  const FourCC algorithm = read32(bodyOf(bytes, *method), 0);
  if (algorithm != code::zlib) return failed({}, {Reason::UnknownCompression, {verbatim(fourCCText(algorithm))}});
  const ByteView body = bodyOf(bytes, *data);
  const std::uint32_t declared = read32(body, 0);
  if (declared > maximumInflatedSize) return failed({}, Reason::CompressedTooLarge);
  auto inflated = Inflater().run(body.subspan(4), declared);
  if (!inflated) return failed({}, Reason::CompressedDamaged);
  return std::move(*inflated);
}

}  // namespace movie
