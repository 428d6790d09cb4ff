#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace standin {

// Canvas size bounds and the size used when the texts are not numbers.
constexpr int kMinSide = 1;
constexpr int kMaxSide = 8192;
constexpr int kDefaultSide = 600;

// An image in memory: 0xAARRGGBB pixels, rows top to bottom, and its
// resolution in dots per metre (kept from an input, as the native tool does).
struct Picture {
    int width = 0;
    int height = 0;
    int dotsPerMeterX = 3937;
    int dotsPerMeterY = 3937;
    std::vector<std::uint32_t> pixels;

    bool isNull() const { return pixels.empty(); }
};

// What a run file's preset says, reduced to what the picture depends on.
struct RunSpec {
    std::string variation;
    std::string mapType;
    std::vector<std::string> controls; // "id=value" in document order
};

// A side length from the control file's text: 600 when it is not a number,
// otherwise clamped to 1..8192.
int sideFromText(const std::string& text);

// The input image from a BMP file's bytes (24 or 32 bits, uncompressed);
// null when they are not such a file or it is larger than 8192 x 8192.
Picture decodeBmp(const std::string& bytes);

// The task's picture: the input with the effect when there is one,
// otherwise a canvas of the given size with the pattern.
Picture renderTask(const Picture& input, int canvasWidth, int canvasHeight, const RunSpec& run);

// The picture as a 24-bit BMP file, byte for byte as the native tool
// writes one.
std::string encodeBmp(const Picture& picture);

} // namespace standin
