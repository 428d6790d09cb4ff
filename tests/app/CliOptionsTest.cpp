#include "app/CliOptions.h"

#include <QThread>

#include <gtest/gtest.h>

#include <tuple>

namespace quillon {
namespace {

CliParseResult parse(const QStringList& flags, CliOptions* options, QString* error = nullptr)
{
    return parseCliArguments(QStringList { QStringLiteral("quillon-cli") } + flags, options, error);
}

TEST(CliOptions, FlagsFillTheRunSettings)
{
    CliOptions options;
    ASSERT_EQ(
        parse({ "--filter", "a.ffxml", "b.ffxml", "--tool", "/t", "--output", "/o", "--input-dir", "/in",
                  "--frames", "-2", "--width", "64", "--height", "32", "--prefix", "x_", "--frame-style",
                  "letter", "--format", "png", "--preset", "1", "--log", "--seed", "42", "--antialias", "off",
                  "--dither", "on", "--png-bitdepth", "16", "--png-compression", "best", "--tiff-bitdepth",
                  "24", "--tiff-compression", "lzw", "--tga-bitdepth", "32", "--tga-flip", "on",
                  "--jpeg-quality", "95", "--maps", "normal,base,metallic", "--filter", "c.ffxml", "--jobs", "1024" },
            &options),
        CliParseResult::Run);
    EXPECT_EQ(options.filterFiles, (QStringList { "a.ffxml", "b.ffxml", "c.ffxml" }));
    const RunSettings& s = options.settings;
    EXPECT_EQ(s.inputMode, InputMode::Directory);
    EXPECT_EQ(s.nameStyle, FrameStyle::Letter);
    EXPECT_EQ(s.seed, std::optional<quint64>(42));
    // Negative frame counts are left to the run check.
    EXPECT_EQ(QStringList({ s.toolPath, s.outputPath, s.sourcePath, s.frameCountText, s.widthText,
                  s.heightText, s.outputPrefix, s.format, s.jpegQualityText }),
        QStringList({ "/t", "/o", "/in", "-2", "64", "32", "x_", "PNG", "95" }));
    // preset, log, antialias, dither, png depth and compression, tiff depth
    // and compression, tga depth and flip, maps.
    EXPECT_EQ(std::tuple(s.presetIndex, s.toolLog, s.antiAlias, s.dither, s.pngBitDepth, s.pngCompression,
                  s.tiffBitDepth, s.tiffCompression, s.tgaBitDepth, s.tgaFlipOrder, s.activateMaps),
        std::tuple(1, 1, 0, 1, 1, 2, 2, 1, 1, 1, 1));
    EXPECT_EQ(s.mapBoxes, (std::array<int, 10> { 1, 0, 0, 0, 1, 0, 0, 0, 0, 1 }));
    EXPECT_EQ(s.toolJobs, 1024);
    // --jobs 0: one process per core.
    for (const auto& [jobs, expected] : { std::pair { "0", QThread::idealThreadCount() }, std::pair { "1", 1 } }) {
        CliOptions counted;
        ASSERT_EQ(parse({ "--filter", "a.ffxml", "--tool", "/t", "--output", "/o", "--jobs", jobs }, &counted),
            CliParseResult::Run);
        EXPECT_EQ(counted.settings.toolJobs, std::max(1, expected)) << jobs;
    }
}

TEST(CliOptions, UnusableFlagsAreUsageErrors)
{
    const QList<QStringList> bad = { { "--bogus" }, { "--format", "GIF" }, { "--frames", "many" },
        { "--antialias", "maybe" }, { "--png-bitdepth", "12" }, { "--maps", "base,shiny" },
        { "--input", "a", "--input-dir", "b" }, { "--chain", "c.qlch", "--filter", "d.ffxml" },
        { "--preset", "-1" }, { "--seed", "x" }, { "stray" }, { "--tool" }, { "--run-part", "bundle" },
        { "--run-part", "bundle", "-1" }, { "--collect", "bundle", "--dry-run" },
        { "--slurm-bundle", "bundle", "--save-chain", "c.qlch" }, { "--jobs", "1025" } };
    for (const QStringList& flags : bad) {
        CliOptions options;
        QString error;
        EXPECT_EQ(parse(flags, &options, &error), CliParseResult::UsageError)
            << flags.join(' ').toStdString();
        EXPECT_FALSE(error.isEmpty());
    }
}

} // namespace
} // namespace quillon
