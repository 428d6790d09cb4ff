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
    // Every setting starts with its default from the setting table.
    RunSettings();

    // Paths and input.
    QString toolPath;
    QString outputPath;
    QString sourcePath;
    InputMode inputMode {};
    // A Windows build of the tool, run as `wine TOOL WINPATH` with every
    // path it is given in its Windows form: 1 on, 0 off.
    int toolWine {};
    QString winePrefix; // WINEPREFIX for the tool; empty: the user's
    QString wineBinary; // the wine launcher; empty: "wine" on PATH

    // Output naming and frames.
    QString outputPrefix;
    FrameStyle nameStyle {};
    QString frameCountText;
    QString widthText;
    QString heightText;

    // Rendering switches.
    int antiAlias {};
    int multithread {};
    int normalmapFlip {};
    int dither {};
    int progressive {};
    int toolLog {};
    int cleanup {};

    // Output format and its options.
    QString format;
    QString jpegQualityText;
    int jpegFullPrecision {};
    int pngIncludeTrans {};
    int tiffIncludeTrans {};
    int tiffFloatFormat {};
    int tgaIncludeTrans {};
    int tgaFlipOrder {};
    int pngBitDepth {}; // 0 8 bits, 1 16 bits
    int pngCompression {}; // 0 none, 1 fast, 2 best
    int tiffBitDepth {}; // 0 8, 1 16, 2 24 bits
    int tiffCompression {}; // 0 none, 1 LZW, 2 deflate
    int tgaBitDepth {}; // 0 24 bits, 1 32 bits

    // Chain-related.
    int presetIndex {}; // selected item of the preset pop-up
    int activateMaps {};
    // Map boxes in map-index order: base, alpha, diffuse, bump, normal,
    // specstr, specexp, ao, ro, metallic.
    std::array<int, 10> mapBoxes {};

    // Tool processes at once: the tool runs of a step (its inputs) spread
    // over this many slots, each with its task files in a folder of its own.
    int toolJobs {};

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
