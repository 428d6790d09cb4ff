#include "Picture.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace standin {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr std::int64_t kMaxInputPixels = std::int64_t(kMaxSide) * kMaxSide;

// cos(a), as glibc gives it for the angles used here. The cosine of the
// Windows runtime loses precision at pi/2 (its cos(pi/2) is 6.1230e-17, not
// 6.1232e-17); there cos(a) = sin(pi/2 - a), with pi/2 in two parts, is
// exact. For every other whole degree the two runtimes agree.
double cosine(double a)
{
    constexpr double kHalfPiHigh = 0x1.921fb54442d18p+0;
    constexpr double kHalfPiLow = 0x1.1a62633145c07p-54;
    if (std::fabs(kHalfPiHigh - a) < 1e-10)
        return std::sin((kHalfPiHigh - a) + kHalfPiLow);
    return std::cos(a);
}

std::uint64_t fnv1a(const std::string& bytes)
{
    std::uint64_t hash = 14695981039346656037ULL;
    for (const char c : bytes) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 1099511628211ULL;
    }
    return hash;
}

std::uint64_t mix(std::uint64_t value)
{
    value ^= value >> 33;
    value *= 0xff51afd7ed558ccdULL;
    value ^= value >> 33;
    value *= 0xc4ceb9fe1a85ec53ULL;
    value ^= value >> 33;
    return value;
}

// A whole decimal number with optional sign and surrounding blanks, as
// Qt's toLongLong reads it; false otherwise or on overflow.
bool wholeNumber(const std::string& text, std::int64_t* value)
{
    std::size_t begin = 0;
    std::size_t end = text.size();
    const auto blank
        = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; };
    while (begin < end && blank(text[begin]))
        ++begin;
    while (end > begin && blank(text[end - 1]))
        --end;
    const std::string number = text.substr(begin, end - begin);
    if (number.empty())
        return false;
    std::size_t digits = number[0] == '+' || number[0] == '-' ? 1 : 0;
    if (digits == number.size())
        return false;
    for (std::size_t i = digits; i < number.size(); ++i) {
        if (number[i] < '0' || number[i] > '9')
            return false;
    }
    errno = 0;
    const long long parsed = std::strtoll(number.c_str(), nullptr, 10);
    if (errno == ERANGE)
        return false;
    *value = parsed;
    return true;
}

struct Rgb {
    int r = 0;
    int g = 0;
    int b = 0;
};

int round16(float value)
{
    return static_cast<int>(value + 0.5f);
}

// A 16-bit channel to 8 bits, the value / 257 rounded, as QColor reads one.
int to8(int value)
{
    return (value + 128 - ((value + 128) >> 8)) >> 8;
}

// Hue, saturation and value to RGB exactly as QColor::fromHsv(h, s, v)
// followed by red(), green() and blue(): 16-bit channels in single precision.
Rgb fromHsv(int hue, int saturation, int value)
{
    const int h16 = (hue % 360) * 100;
    const int s16 = saturation * 0x101;
    const int v16 = value * 0x101;
    if (s16 == 0)
        return { to8(v16), to8(v16), to8(v16) };
    const float h = h16 == 36000 ? 0.0f : static_cast<float>(h16) / 6000.0f;
    const float s = static_cast<float>(s16) / 65535.0f;
    const float v = static_cast<float>(v16) / 65535.0f;
    const int i = static_cast<int>(h);
    const float f = h - static_cast<float>(i);
    const float p = v * (1.0f - s);
    const int vv = round16(v * 65535.0f);
    const int pp = round16(p * 65535.0f);
    Rgb rgb;
    if (i & 1) {
        const int q = round16(v * (1.0f - (s * f)) * 65535.0f);
        rgb = i == 1 ? Rgb { q, vv, pp } : i == 3 ? Rgb { pp, q, vv } : Rgb { vv, pp, q };
    } else {
        const int t = round16(v * (1.0f - (s * (1.0f - f))) * 65535.0f);
        rgb = i == 0 ? Rgb { vv, t, pp } : i == 2 ? Rgb { pp, vv, t } : Rgb { t, pp, vv };
    }
    return { to8(rgb.r), to8(rgb.g), to8(rgb.b) };
}

struct Pattern {
    Rgb first;
    Rgb second;
    double cosA = 1.0;
    double sinA = 0.0;
    double period = 16.0;
    int mapType = 0;
};

Pattern patternFor(const RunSpec& run)
{
    std::string key = "v=" + run.variation + ";m=" + run.mapType + ";";
    for (std::size_t i = 0; i < run.controls.size(); ++i)
        key += (i > 0 ? ";" : "") + run.controls[i];
    const std::uint64_t seed = mix(fnv1a(key));
    Pattern pattern;
    pattern.first = fromHsv(static_cast<int>(seed % 360), 160 + static_cast<int>((seed >> 9) % 96),
        180 + static_cast<int>((seed >> 17) % 76));
    pattern.second = fromHsv(static_cast<int>((seed >> 24) % 360), 120 + static_cast<int>((seed >> 33) % 136),
        40 + static_cast<int>((seed >> 41) % 120));
    const double angle = static_cast<double>((seed >> 48) % 180) * kPi / 180.0;
    pattern.cosA = cosine(angle);
    pattern.sinA = std::sin(angle);
    std::int64_t variation = 0;
    const bool ok = wholeNumber(run.variation, &variation);
    pattern.period = 6.0
        + static_cast<double>((ok ? std::llabs(variation % 61) : 0) + static_cast<std::int64_t>(seed % 7));
    std::int64_t mapType = 0;
    if (!wholeNumber(run.mapType, &mapType) || mapType < -2147483647LL - 1 || mapType > 2147483647LL)
        mapType = 0;
    pattern.mapType = static_cast<int>(std::clamp<std::int64_t>(mapType, 0, 9));
    return pattern;
}

Rgb patternPixel(const Pattern& pattern, int x, int y)
{
    const double along = (x * pattern.cosA + y * pattern.sinA) / pattern.period;
    const double t = along - std::floor(along);
    const double weight = t < 0.5 ? t * 2.0 : (1.0 - t) * 2.0;
    auto blend = [weight](int a, int b) { return static_cast<int>(a + (b - a) * weight); };
    int r = blend(pattern.first.r, pattern.second.r);
    int g = blend(pattern.first.g, pattern.second.g);
    int b = blend(pattern.first.b, pattern.second.b);
    // Each map kind looks different: grey maps, bluish normals, rotated channels.
    switch (pattern.mapType) {
    case 0:
        break;
    case 4:
        r = 128 + (r - 128) / 2;
        g = 128 + (g - 128) / 2;
        b = 255;
        break;
    default:
        if (pattern.mapType % 2 == 1) {
            const int grey = (r * 11 + g * 16 + b * 5) / 32;
            r = g = b = std::clamp(grey + pattern.mapType * 9, 0, 255);
        } else {
            std::swap(r, b);
            g = 255 - g;
        }
        break;
    }
    return { r & 0xff, g & 0xff, b & 0xff };
}

std::uint32_t argb(int a, int r, int g, int b)
{
    return (std::uint32_t(a & 0xff) << 24) | (std::uint32_t(r & 0xff) << 16) | (std::uint32_t(g & 0xff) << 8)
        | std::uint32_t(b & 0xff);
}

std::uint32_t readLe(const std::string& bytes, std::size_t at, int size)
{
    std::uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = (value << 8) | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    return value;
}

void writeLe(std::string& out, std::uint32_t value, int size)
{
    for (int i = 0; i < size; ++i)
        out += static_cast<char>((value >> (8 * i)) & 0xff);
}

} // namespace

int sideFromText(const std::string& text)
{
    std::int64_t value = 0;
    if (!wholeNumber(text, &value))
        return kDefaultSide;
    return static_cast<int>(std::clamp<std::int64_t>(value, kMinSide, kMaxSide));
}

Picture decodeBmp(const std::string& bytes)
{
    constexpr std::size_t kHeaders = 14 + 40;
    if (bytes.size() < kHeaders || bytes.compare(0, 2, "BM") != 0)
        return {};
    const std::uint32_t offset = readLe(bytes, 10, 4);
    const std::uint32_t infoSize = readLe(bytes, 14, 4);
    const auto width = static_cast<std::int32_t>(readLe(bytes, 18, 4));
    const auto rawHeight = static_cast<std::int32_t>(readLe(bytes, 22, 4));
    const std::uint32_t bits = readLe(bytes, 28, 2);
    const std::uint32_t compression = readLe(bytes, 30, 4);
    if (infoSize < 40 || width <= 0 || rawHeight == 0 || rawHeight == INT32_MIN || compression != 0
        || (bits != 24 && bits != 32))
        return {};
    const bool topDown = rawHeight < 0;
    const std::int64_t height = topDown ? -std::int64_t(rawHeight) : rawHeight;
    if (std::int64_t(width) * height > kMaxInputPixels)
        return {};
    const std::size_t stride = ((std::size_t(width) * bits + 31) / 32) * 4;
    if (offset > bytes.size() || (bytes.size() - offset) / stride < std::size_t(height))
        return {};
    Picture picture;
    picture.width = width;
    picture.height = static_cast<int>(height);
    if (const auto x = static_cast<std::int32_t>(readLe(bytes, 38, 4)); x > 0)
        picture.dotsPerMeterX = x;
    if (const auto y = static_cast<std::int32_t>(readLe(bytes, 42, 4)); y > 0)
        picture.dotsPerMeterY = y;
    picture.pixels.resize(std::size_t(width) * std::size_t(height));
    const std::size_t step = bits / 8;
    for (int y = 0; y < picture.height; ++y) {
        const std::size_t row = offset + stride * std::size_t(topDown ? y : picture.height - 1 - y);
        for (int x = 0; x < width; ++x) {
            const std::size_t at = row + std::size_t(x) * step;
            picture.pixels[std::size_t(y) * std::size_t(width) + std::size_t(x)]
                = argb(255, static_cast<unsigned char>(bytes[at + 2]),
                    static_cast<unsigned char>(bytes[at + 1]), static_cast<unsigned char>(bytes[at]));
        }
    }
    return picture;
}

Picture renderTask(const Picture& input, int canvasWidth, int canvasHeight, const RunSpec& run)
{
    const Pattern pattern = patternFor(run);
    Picture image = input;
    if (image.isNull()) {
        image.width = canvasWidth;
        image.height = canvasHeight;
        image.pixels.resize(std::size_t(canvasWidth) * std::size_t(canvasHeight));
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const Rgb over = patternPixel(pattern, x, y);
                image.pixels[std::size_t(y) * std::size_t(image.width) + std::size_t(x)]
                    = argb(255, over.r, over.g, over.b);
            }
        }
        return image;
    }
    // The effect: half the input, half the pattern, so the source stays visible.
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            std::uint32_t& pixel = image.pixels[std::size_t(y) * std::size_t(image.width) + std::size_t(x)];
            const Rgb over = patternPixel(pattern, x, y);
            const int r = static_cast<int>((pixel >> 16) & 0xff);
            const int g = static_cast<int>((pixel >> 8) & 0xff);
            const int b = static_cast<int>(pixel & 0xff);
            pixel = argb(static_cast<int>(pixel >> 24), (r + over.r) / 2, (g + over.g) / 2, (b + over.b) / 2);
        }
    }
    return image;
}

std::string encodeBmp(const Picture& picture)
{
    const std::size_t stride = ((std::size_t(picture.width) * 24 + 31) / 32) * 4;
    const std::size_t imageSize = stride * std::size_t(picture.height);
    std::string out;
    out.reserve(54 + imageSize);
    out += "BM";
    writeLe(out, static_cast<std::uint32_t>(54 + imageSize), 4);
    writeLe(out, 0, 4);
    writeLe(out, 54, 4);
    writeLe(out, 40, 4);
    writeLe(out, static_cast<std::uint32_t>(picture.width), 4);
    writeLe(out, static_cast<std::uint32_t>(picture.height), 4);
    writeLe(out, 1, 2);
    writeLe(out, 24, 2);
    writeLe(out, 0, 4);
    writeLe(out, static_cast<std::uint32_t>(imageSize), 4);
    writeLe(out, static_cast<std::uint32_t>(picture.dotsPerMeterX), 4);
    writeLe(out, static_cast<std::uint32_t>(picture.dotsPerMeterY), 4);
    writeLe(out, 0, 4);
    writeLe(out, 0, 4);
    // Rows bottom to top, blue green red, each padded to four bytes.
    for (int y = picture.height - 1; y >= 0; --y) {
        const std::size_t begin = out.size();
        for (int x = 0; x < picture.width; ++x) {
            const std::uint32_t pixel
                = picture.pixels[std::size_t(y) * std::size_t(picture.width) + std::size_t(x)];
            out += static_cast<char>(pixel & 0xff);
            out += static_cast<char>((pixel >> 8) & 0xff);
            out += static_cast<char>((pixel >> 16) & 0xff);
        }
        out.append(stride - (out.size() - begin), '\0');
    }
    return out;
}

} // namespace standin
