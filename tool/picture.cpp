#include "tool/picture.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <numbers>
#include <stdexcept>

namespace xfm::tool {

namespace {

cairo_status_t append(void* text, const unsigned char* bytes, unsigned count) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

void require(cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS) throw std::runtime_error(std::string("the picture cannot be drawn: ") + cairo_status_to_string(status));
}

}  // namespace

PictureFormat picture_format(const std::string& path) {
  if (path.ends_with(".png")) return PictureFormat::Png;
  if (path.ends_with(".svg")) return PictureFormat::Svg;
  throw std::runtime_error(path + ": a picture's name ends with .png or .svg");
}

Picture::Picture(PictureFormat format, int width, int height)
    : format_(format),
      surface_(format == PictureFormat::Png ? cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)
                                            : cairo_svg_surface_create_for_stream(append, &bytes_, width, height)),
      context_(cairo_create(surface_)) {
  if (format == PictureFormat::Svg) cairo_svg_surface_set_document_unit(surface_, CAIRO_SVG_UNIT_PX);
  require(cairo_status(context_));
  cairo_select_font_face(context_, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  fill(0, 0, width, height, kPaper);
}

Picture::~Picture() {
  cairo_destroy(context_);
  cairo_surface_destroy(surface_);
}

void Picture::colour(Colour colour) { cairo_set_source_rgb(context_, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0); }

void Picture::fill(double x, double y, double width, double height, Colour with) {
  colour(with);
  cairo_new_path(context_);
  cairo_rectangle(context_, x, y, width, height);
  cairo_fill(context_);
}

void Picture::frame(int x, int y, int width, int height, Colour with) {
  colour(with);
  cairo_set_line_width(context_, 1);
  cairo_new_path(context_);
  cairo_rectangle(context_, x - 0.5, y - 0.5, width + 1, height + 1);
  cairo_stroke(context_);
}

void Picture::line(const Points& points, Colour with, double width, std::span<const double> dashes) {
  colour(with);
  cairo_set_line_width(context_, width);
  cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
  cairo_set_dash(context_, dashes.data(), static_cast<int>(dashes.size()), 0);
  cairo_new_path(context_);
  for (const auto& [x, y] : points) cairo_line_to(context_, x, y);
  cairo_stroke(context_);
  cairo_set_dash(context_, nullptr, 0, 0);
}

void Picture::dot(double x, double y, double radius, Colour with) {
  colour(with);
  cairo_new_path(context_);
  cairo_arc(context_, x, y, radius, 0, 2 * std::numbers::pi);
  cairo_fill(context_);
}

void Picture::put(double x, double y, const std::string& text, Align align, double size, double angle, Colour with) {
  colour(with);
  cairo_set_font_size(context_, size);
  cairo_text_extents_t extents;
  cairo_text_extents(context_, text.c_str(), &extents);
  const double share = align == Align::Left ? 0 : align == Align::Centre ? 0.5 : 1;
  cairo_save(context_);
  cairo_translate(context_, x, y);
  cairo_rotate(context_, angle);
  cairo_move_to(context_, -share * extents.x_advance, 0.36 * size);
  cairo_show_text(context_, text.c_str());
  cairo_restore(context_);
}

void Picture::text(double x, double y, const std::string& text, Align align, double size, Colour with) {
  put(x, y, text, align, size, 0, with);
}

void Picture::upright_text(double x, double y, const std::string& text, double size) {
  put(x, y, text, Align::Centre, size, -std::numbers::pi / 2, kInk);
}

void Picture::image(int x, int y, int width, int height, std::span<const Colour> pixels) {
  cairo_surface_t* const image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
  unsigned char* const data = cairo_image_surface_get_data(image);
  if (data == nullptr) require(cairo_surface_status(image));
  const int stride = cairo_image_surface_get_stride(image);
  cairo_surface_flush(image);
  for (int row = 0; row < height; ++row)
    for (int column = 0; column < width; ++column) {
      const Colour c = pixels[static_cast<size_t>(row) * width + column];
      reinterpret_cast<uint32_t*>(data + static_cast<ptrdiff_t>(row) * stride)[column] = uint32_t{c.red} << 16 | uint32_t{c.green} << 8 | c.blue;
    }
  cairo_surface_mark_dirty(image);
  cairo_set_source_surface(context_, image, x, y);
  cairo_pattern_set_filter(cairo_get_source(context_), CAIRO_FILTER_NEAREST);
  cairo_paint(context_);
  cairo_surface_destroy(image);
}

std::string Picture::bytes() {
  require(cairo_status(context_));
  if (format_ == PictureFormat::Png) require(cairo_surface_write_to_png_stream(surface_, append, &bytes_));
  cairo_surface_finish(surface_);
  require(cairo_surface_status(surface_));
  return bytes_;
}

}  // namespace xfm::tool
