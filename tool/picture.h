// Drawing in pixels from the upper left corner, by cairo; a PNG or SVG file comes out.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace xfm::tool {

enum class PictureFormat { Png, Svg };
// By the name's end; std::runtime_error where it is neither .png nor .svg.
PictureFormat picture_format(const std::string& path);

struct Colour {
  uint8_t red = 0, green = 0, blue = 0;
};
inline constexpr Colour kPaper{255, 255, 255}, kInk{30, 30, 30}, kFaint{215, 215, 215};

enum class Align { Left, Centre, Right };

class Picture {
 public:
  Picture(PictureFormat format, int width, int height);
  ~Picture();
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  void fill(double x, double y, double width, double height, Colour colour);
  // The frame stands around the rectangle, one pixel wide.
  void frame(int x, int y, int width, int height, Colour colour);
  using Points = std::vector<std::pair<double, double>>;
  void line(const Points& points, Colour colour, double width = 1, std::span<const double> dashes = {});
  void dot(double x, double y, double radius, Colour colour);
  // The text's left end, middle or right end is at x, the middle of its height at y; upright text runs from below.
  void text(double x, double y, const std::string& text, Align align = Align::Left, double size = 13, Colour colour = kInk);
  void upright_text(double x, double y, const std::string& text, double size = 13);
  // Pixels, row by row.
  void image(int x, int y, int width, int height, std::span<const Colour> pixels);

  // The file; nothing can be drawn afterwards.
  std::string bytes();

 private:
  void put(double x, double y, const std::string& text, Align align, double size, double angle, Colour colour);
  void colour(Colour colour);

  PictureFormat format_;
  std::string bytes_;
  cairo_surface_t* surface_;
  cairo_t* context_;
};

}  // namespace xfm::tool
