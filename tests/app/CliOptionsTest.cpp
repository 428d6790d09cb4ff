#include "app/CliOptions.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

CliParseResult parse(const QStringList& flags, CliOptions* options, QString* error = nullptr)
{
    return parseCliArguments(QStringList { QStringLiteral("quillon-cli") } + flags, options, error);
}

TEST(CliOptions, FewFlagsGiveTheFactoryDefaultsAndNoInput)
{
    CliOptions options;
    ASSERT_EQ(parse({}, &options), CliParseResult::UsageError);
    ASSERT_EQ(parse({ "--log" }, &options), CliParseResult::Run);
    EXPECT_EQ(options.settings.inputMode, InputMode::None);
    EXPECT_EQ(options.settings.outputPrefix, QStringLiteral("my-export"));
    EXPECT_EQ(options.settings.format, QStringLiteral("JPEG"));
    EXPECT_EQ(options.settings.activateMaps, 0);
    EXPECT_FALSE(options.settings.seed.has_value());
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
                  "--jpeg-quality", "95", "--maps", "normal,base,metallic", "--filter", "c.ffxml" },
            &options),
        CliParseResult::Run);
    EXPECT_EQ(options.filterFiles, (QStringList { "a.ffxml", "b.ffxml", "c.ffxml" }));
    const RunSettings& s = options.settings;
    EXPECT_EQ(s.toolPath, QStringLiteral("/t"));
    EXPECT_EQ(s.outputPath, QStringLiteral("/o"));
    EXPECT_EQ(s.inputMode, InputMode::Directory);
    EXPECT_EQ(s.sourcePath, QStringLiteral("/in"));
    EXPECT_EQ(s.frameCountText, QStringLiteral("-2")); // negative counts are left to the run check
    EXPECT_EQ(s.widthText, QStringLiteral("64"));
    EXPECT_EQ(s.heightText, QStringLiteral("32"));
    EXPECT_EQ(s.outputPrefix, QStringLiteral("x_"));
    EXPECT_EQ(s.nameStyle, FrameStyle::Letter);
    EXPECT_EQ(s.format, QStringLiteral("PNG"));
    EXPECT_EQ(s.presetIndex, 1);
    EXPECT_EQ(s.toolLog, 1);
    EXPECT_EQ(s.seed, std::optional<quint64>(42));
    EXPECT_EQ(s.antiAlias, 0);
    EXPECT_EQ(s.dither, 1);
    EXPECT_EQ(s.pngBitDepth, 1);
    EXPECT_EQ(s.pngCompression, 2);
    EXPECT_EQ(s.tiffBitDepth, 2);
    EXPECT_EQ(s.tiffCompression, 1);
    EXPECT_EQ(s.tgaBitDepth, 1);
    EXPECT_EQ(s.tgaFlipOrder, 1);
    EXPECT_EQ(s.jpegQualityText, QStringLiteral("95"));
    EXPECT_EQ(s.activateMaps, 1);
    EXPECT_EQ(s.mapBoxes, (std::array<int, 10> { 1, 0, 0, 0, 1, 0, 0, 0, 0, 1 }));
}

TEST(CliOptions, UnusableFlagsAreUsageErrors)
{
    const QList<QStringList> bad = {
        { "--bogus" },
        { "--format", "GIF" },
        { "--frames", "many" },
        { "--antialias", "maybe" },
        { "--png-bitdepth", "12" },
        { "--maps", "base,shiny" },
        { "--input", "a", "--input-dir", "b" },
        { "--chain", "c.qlch", "--filter", "d.ffxml" },
        { "--preset", "-1" },
        { "--seed", "x" },
        { "stray" },
        { "--tool" },
        { "--run-part", "bundle" },
        { "--run-part", "bundle", "-1" },
        { "--collect", "bundle", "--dry-run" },
        { "--slurm-bundle", "bundle", "--save-chain", "c.qlch" },
    };
    for (const QStringList& flags : bad) {
        CliOptions options;
        QString error;
        EXPECT_EQ(parse(flags, &options, &error), CliParseResult::UsageError)
            << flags.join(' ').toStdString();
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(CliOptions, HelpStatesTheFlagsAndTheDefaultsTheyStartFrom)
{
    CliOptions options;
    EXPECT_EQ(parse({ "--help" }, &options), CliParseResult::Help);
    EXPECT_EQ(parse({ "--version" }, &options), CliParseResult::Version);
    const RunSettings defaults;
    const QString help = cliHelpText().simplified();
    for (const QString& text : { QStringLiteral("--save-chain"), QStringLiteral("plain (default)"),
             QStringLiteral("(default %1)").arg(defaults.frameCountText),
             QStringLiteral("(default %1)").arg(defaults.widthText),
             QStringLiteral("(default %1)").arg(defaults.outputPrefix),
             QStringLiteral("(default %1)").arg(defaults.format),
             QStringLiteral("(default %1)").arg(defaults.jpegQualityText),
             // The input directory listing takes subdirectories too.
             QStringLiteral("files and subdirectories") })
        EXPECT_TRUE(help.contains(text)) << text.toStdString();
    EXPECT_FALSE(help.contains(QStringLiteral("hidden entries skipped")));
}

} // namespace
} // namespace quillon
