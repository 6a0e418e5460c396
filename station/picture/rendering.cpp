// SPDX-License-Identifier: MIT
#include "station/picture/rendering.h"

#include <librsvg/rsvg.h>

#include <cmath>
#include <memory>

namespace inspect {

namespace {

template <auto release>
struct Releasing
{
    template <typename T>
    void operator()(T* object) const
    {
        release(object);
    }
};

cairo_status_t append(void* bytes, const unsigned char* data, unsigned int length)
{
    static_cast<QByteArray*>(bytes)->append(reinterpret_cast<const char*>(data),
                                            static_cast<int>(length));
    return CAIRO_STATUS_SUCCESS;
}

} // namespace

QByteArray rendered(const QByteArray& svg)
{
    const std::unique_ptr<RsvgHandle, Releasing<g_object_unref>> drawing(rsvg_handle_new_from_data(
        reinterpret_cast<const guint8*>(svg.constData()), static_cast<gsize>(svg.size()), nullptr));
    double width = 0;
    double height = 0;
    if (!drawing || !rsvg_handle_get_intrinsic_size_in_pixels(drawing.get(), &width, &height))
        return {};
    const std::unique_ptr<cairo_surface_t, Releasing<cairo_surface_destroy>> image(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::ceil(width)),
                                   static_cast<int>(std::ceil(height))));
    if (cairo_surface_status(image.get()) != CAIRO_STATUS_SUCCESS)
        return {};
    const std::unique_ptr<cairo_t, Releasing<cairo_destroy>> canvas(cairo_create(image.get()));
    const RsvgRectangle whole = {0, 0, width, height};
    if (!rsvg_handle_render_document(drawing.get(), canvas.get(), &whole, nullptr))
        return {};
    QByteArray png;
    if (cairo_surface_write_to_png_stream(image.get(), append, &png) != CAIRO_STATUS_SUCCESS)
        return {};
    return png;
}

} // namespace inspect
