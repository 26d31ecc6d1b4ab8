#include <cmath>
#include <memory>

#include <cairo.h>
#include <librsvg/rsvg.h>

#include "cli/picture/PictureModule.h"
#include "movie/decode/DecoderModule.h"

namespace cli {
namespace {

struct Unreferenced {
  void operator()(RsvgHandle* handle) const { g_object_unref(handle); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(GError* error) const { g_error_free(error); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unreferenced>;

using PngBytes = std::vector<std::uint8_t>;

cairo_status_t append(void* closure, const unsigned char* data, unsigned int length) {
  auto& bytes = *static_cast<PngBytes*>(closure);
  bytes.insert(bytes.end(), data, data + length);
  return CAIRO_STATUS_SUCCESS;
}

std::string reasonOf(GError* error) {
  const Owned<GError> owned(error);
  return owned ? owned->message : "no reason is given";
}

tl::expected<PngBytes, std::string> encoded(cairo_surface_t* surface) {
  PngBytes bytes;
  const cairo_status_t status = cairo_surface_write_to_png_stream(surface, append, &bytes);
  if (status != CAIRO_STATUS_SUCCESS) return tl::unexpected<std::string>(cairo_status_to_string(status));
  return bytes;
}

class RsvgPicture final : public PictureModule {
 public:
  tl::expected<PngBytes, std::string> png(std::string_view svg, double scale) override {
    GError* error = nullptr;
    const auto* const data = reinterpret_cast<const guint8*>(svg.data());
    const Owned<RsvgHandle> handle(rsvg_handle_new_from_data(data, svg.size(), &error));
    if (!handle) return tl::unexpected(reasonOf(error));
    gdouble width = 0, height = 0;
    if (rsvg_handle_get_intrinsic_size_in_pixels(handle.get(), &width, &height) == FALSE) {
      return tl::unexpected<std::string>("the drawing has no size");
    }
    const RsvgRectangle whole{0, 0, std::round(width * scale), std::round(height * scale)};
    const Owned<cairo_surface_t> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(whole.width), static_cast<int>(whole.height)));
    const Owned<cairo_t> context(cairo_create(surface.get()));
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());
    if (rsvg_handle_render_document(handle.get(), context.get(), &whole, &error) == FALSE) {
      return tl::unexpected(reasonOf(error));
    }
    return encoded(surface.get());
  }
};

}  // namespace
}  // namespace cli

extern "C" __attribute__((visibility("default"))) cli::PictureModule* lumacheckPictureModule(int interfaceVersion) {
  if (interfaceVersion != movie::decoderInterfaceVersion) return nullptr;
  static cli::RsvgPicture picture;
  return &picture;
}
