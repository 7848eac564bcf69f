#include "canvas.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr uint16_t kFont[95][Canvas::kLetterHeight] = {
#include "font_9x15.inc"
};

const uint16_t* glyph(char letter) {
  return kFont[letter >= ' ' && letter <= '~' ? letter - ' ' : '?' - ' '];
}

void append_number(std::string& bytes, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xff);
}

uint32_t crc32(std::string_view bytes) {
  uint32_t crc = ~0u;
  for (const char byte : bytes) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320u : 0);
  }
  return ~crc;
}

void append_chunk(std::string& png, const std::string& type, const std::string& data) {
  append_number(png, static_cast<uint32_t>(data.size()));
  png += type + data;
  append_number(png, crc32(type + data));
}

// A zlib stream of stored blocks: a picture of this size needs no packing.
std::string stored(const std::string& bytes) {
  std::string stream = "\x78\x01";
  constexpr size_t kMost = 65535;
  for (size_t at = 0; at < bytes.size(); at += kMost) {
    const size_t size = std::min(kMost, bytes.size() - at);
    stream += at + size == bytes.size() ? '\1' : '\0';
    for (const size_t field : {size, ~size}) {
      stream += static_cast<char>(field & 0xff);
      stream += static_cast<char>(field >> 8 & 0xff);
    }
    stream.append(bytes, at, size);
  }
  uint32_t a = 1, b = 0;  // Adler-32
  for (const char byte : bytes) {
    a = (a + static_cast<unsigned char>(byte)) % 65521;
    b = (b + a) % 65521;
  }
  append_number(stream, b << 16 | a);
  return stream;
}

}  // namespace

Canvas::Canvas(int width, int height, Colour background)
    : width_(width), height_(height), pixels_(static_cast<size_t>(width) * static_cast<size_t>(height), background) {}

void Canvas::set(int x, int y, Colour colour) {
  if (x < 0 || x >= width_ || y < 0 || y >= height_) return;
  pixels_[static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x)] = colour;
}

void Canvas::fill(int x, int y, int width, int height, Colour colour) {
  for (int row = y; row < y + height; ++row)
    for (int column = x; column < x + width; ++column) set(column, row, colour);
}

void Canvas::text(int x, int y, std::string_view text, Colour colour) {
  for (const char letter : text) {
    for (int row = 0; row < kLetterHeight; ++row)
      for (int column = 0; column < kLetterWidth; ++column)
        if (glyph(letter)[row] >> (kLetterWidth - 1 - column) & 1) set(x + column, y + row, colour);
    x += kLetterWidth;
  }
}

void Canvas::upright_text(int x, int y, std::string_view text, Colour colour) {
  for (const char letter : text) {
    for (int row = 0; row < kLetterHeight; ++row)
      for (int column = 0; column < kLetterWidth; ++column)
        if (glyph(letter)[row] >> (kLetterWidth - 1 - column) & 1) set(x + row, y - column, colour);
    y -= kLetterWidth;
  }
}

std::string Canvas::png(const Palette& palette) const {
  std::string header;
  append_number(header, static_cast<uint32_t>(width_));
  append_number(header, static_cast<uint32_t>(height_));
  header += std::string("\x08\x03\x00\x00\x00", 5);  // 8 bits a pixel, indices into a palette

  std::string colours;
  for (const auto& colour : palette) colours.append(colour.begin(), colour.end());

  std::string rows;
  for (auto row = pixels_.begin(); row != pixels_.end(); row += width_) {
    rows += '\0';  // no filter
    rows.append(row, row + width_);
  }

  std::string png = "\x89PNG\r\n\x1a\n";
  append_chunk(png, "IHDR", header);
  append_chunk(png, "PLTE", colours);
  append_chunk(png, "IDAT", stored(rows));
  append_chunk(png, "IEND", "");
  return png;
}
