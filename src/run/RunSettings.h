#pragma once

#include <QString>

#include <array>
#include <optional>

namespace quillon {

// Where a run's inputs come from.
enum class InputMode { File = 0, Directory = 1, None = 2 };
// How output names number the frames: -1, -0001 or -a.
enum class FrameStyle { Plain = 0, FourDigit = 1, Letter = 2 };

// Everything a batch run reads, copied from the window (or the command line)
// on the GUI thread at Start and read-only for the run. Check box states are
// ints: 1 on, 0 off, anything else mixed.
struct RunSettings {
    // Paths and input.
    QString toolPath;
    QString outputPath;
    QString sourcePath;
    InputMode inputMode = InputMode::File;
    // A Windows build of the tool, run as `wine TOOL WINPATH` with every
    // path it is given in its Windows form: 1 on, 0 off.
    int toolWine = 0;
    QString winePrefix; // WINEPREFIX for the tool; empty: the user's
    QString wineBinary; // the wine launcher; empty: "wine" on PATH

    // Output naming and frames.
    QString outputPrefix = QStringLiteral("my-export");
    FrameStyle nameStyle = FrameStyle::Plain;
    QString frameCountText = QStringLiteral("10");
    QString widthText = QStringLiteral("600");
    QString heightText = QStringLiteral("600");

    // Rendering switches.
    int antiAlias = 1;
    int multithread = 1;
    int normalmapFlip = 0;
    int dither = 0;
    int progressive = 1;
    int toolLog = 0;
    int cleanup = 1;

    // Output format and its options.
    QString format = QStringLiteral("JPEG");
    QString jpegQualityText = QStringLiteral("80");
    int jpegFullPrecision = 1;
    int pngIncludeTrans = 0;
    int tiffIncludeTrans = 1;
    int tiffFloatFormat = 0;
    int tgaIncludeTrans = 1;
    int tgaFlipOrder = 0;
    int pngBitDepth = 0; // 0 8 bits, 1 16 bits
    int pngCompression = 0; // 0 none, 1 fast, 2 best
    int tiffBitDepth = 0; // 0 8, 1 16, 2 24 bits
    int tiffCompression = 0; // 0 none, 1 LZW, 2 deflate
    int tgaBitDepth = 0; // 0 24 bits, 1 32 bits

    // Chain-related.
    int presetIndex = 0; // selected item of the preset pop-up
    int activateMaps = 0;
    // Map boxes in map-index order: base, alpha, diffuse, bump, normal,
    // specstr, specexp, ao, ro, metallic.
    std::array<int, 10> mapBoxes { 1, 0, 0, 0, 0, 0, 0, 0, 0, 0 };

    // Tool processes at once: the tool runs of a step (its inputs) spread
    // over this many slots, each with its task files in a folder of its own.
    int toolJobs = 1;

    // Seed of the run's random generator; none draws a fresh seed per run.
    std::optional<quint64> seed;

    // The frame count the way a text field's integerValue reads it: leading
    // white space, optional sign, digits; 0 when the text holds no number.
    qint64 frameCount() const;
    // The frame count as a real (doubleValue); none when the text holds no
    // number.
    std::optional<double> frameCountReal() const;
};

// The most frames a naming style can number: plain 999, four-digit 9999,
// letter 25 (a to y).
qint64 frameLimit(FrameStyle style);
// "plain", "four-digit", "letter": the style as the command line names it.
QString frameStyleName(FrameStyle style);

// Leading-number reads of a text, as a text field's integerValue and
// doubleValue do: "12abc" is 12, "abc" is no number.
std::optional<qint64> leadingInteger(const QString& text);
std::optional<double> leadingReal(const QString& text);

// Texts of the radio-group choices, as the control file writes them.
QString getPNGBitDepth(int code);
QString getPNGCompression(int code);
QString getTIFFBitDepth(int code);
QString getTIFFCompression(int code);
QString getTGABitDepth(int code);

} // namespace quillon
