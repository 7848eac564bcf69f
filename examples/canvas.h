// A small raster picture of up to 256 colours, with lines and text, written as PNG.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class Canvas {
 public:
  using Colour = uint8_t;  // index into the palette
  using Palette = std::array<std::array<uint8_t, 3>, 256>;

  static constexpr int kLetterWidth = 9, kLetterHeight = 15;

  Canvas(int width, int height, Colour background);

  void set(int x, int y, Colour colour);
  void fill(int x, int y, int width, int height, Colour colour);
  // The corners of the text's box are given: upper left, or for upright text (read from below) lower left.
  void text(int x, int y, std::string_view text, Colour colour);
  void upright_text(int x, int y, std::string_view text, Colour colour);

  // The file's bytes.
  [[nodiscard]] std::string png(const Palette& palette) const;

 private:
  int width_, height_;
  std::vector<Colour> pixels_;
};
