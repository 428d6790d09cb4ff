#include "app/CliOptions.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

CliParseResult parse(const QStringList& flags, CliOptions* options, QString* error = nullptr)
{
    return parseCliArguments(QStringList { QStringLiteral("quillon-cli") } + flags, options, error);
}

TEST(CliOptions, NoFlagsGiveTheFactoryDefaultsAndNoInput)
{
    CliOptions options;
    ASSERT_EQ(parse({}, &options), CliParseResult::Run);
    const RunSettings defaults;
    EXPECT_EQ(options.settings.inputMode, 2);
    EXPECT_EQ(options.settings.frameCountText, defaults.frameCountText);
    EXPECT_EQ(options.settings.widthText, QStringLiteral("600"));
    EXPECT_EQ(options.settings.outputPrefix, QStringLiteral("my-export"));
    EXPECT_EQ(options.settings.format, QStringLiteral("JPEG"));
    EXPECT_EQ(options.settings.jpegQualityText, QStringLiteral("80"));
    EXPECT_EQ(options.settings.toolLog, 0);
    EXPECT_EQ(options.settings.activateMaps, 0);
    EXPECT_FALSE(options.settings.seed.has_value());
}

TEST(CliOptions, FlagsFillTheRunSettings)
{
    CliOptions options;
    ASSERT_EQ(parse({ "--tool", "/t", "--output", "/o", "--input-dir", "/in", "--frames", "3", "--width",
                        "64", "--height", "32", "--prefix", "x_", "--frame-style", "letter", "--format",
                        "png", "--preset", "1", "--log", "--seed", "42", "--antialias", "off", "--dither",
                        "on", "--png-bitdepth", "16", "--png-compression", "best", "--tiff-bitdepth", "24",
                        "--tiff-compression", "lzw", "--tga-bitdepth", "32", "--tga-flip", "on",
                        "--jpeg-quality", "95" },
                  &options),
        CliParseResult::Run);
    const RunSettings& s = options.settings;
    EXPECT_EQ(s.toolPath, QStringLiteral("/t"));
    EXPECT_EQ(s.outputPath, QStringLiteral("/o"));
    EXPECT_EQ(s.inputMode, 1);
    EXPECT_EQ(s.sourcePath, QStringLiteral("/in"));
    EXPECT_EQ(s.frameCountText, QStringLiteral("3"));
    EXPECT_EQ(s.widthText, QStringLiteral("64"));
    EXPECT_EQ(s.heightText, QStringLiteral("32"));
    EXPECT_EQ(s.outputPrefix, QStringLiteral("x_"));
    EXPECT_EQ(s.nameStyle, 2);
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
}

TEST(CliOptions, MapsSwitchMapsOnWithExactlyTheNamedKinds)
{
    CliOptions options;
    ASSERT_EQ(parse({ "--maps", "normal,base,metallic" }, &options), CliParseResult::Run);
    EXPECT_EQ(options.settings.activateMaps, 1);
    EXPECT_EQ(options.settings.mapBoxes, (std::array<int, 10> { 1, 0, 0, 0, 1, 0, 0, 0, 0, 1 }));
}

TEST(CliOptions, DefinitionsKeepTheirOrderWhetherListedOrRepeated)
{
    CliOptions options;
    ASSERT_EQ(parse({ "--filter", "a.ffxml", "b.ffxml", "--tool", "t", "--filter", "c.ffxml" }, &options),
        CliParseResult::Run);
    EXPECT_EQ(options.filterFiles, (QStringList { "a.ffxml", "b.ffxml", "c.ffxml" }));
    EXPECT_EQ(options.settings.toolPath, QStringLiteral("t"));
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
    };
    for (const QStringList& flags : bad) {
        CliOptions options;
        QString error;
        EXPECT_EQ(parse(flags, &options, &error), CliParseResult::UsageError)
            << flags.join(' ').toStdString();
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(CliOptions, NegativeFramesAreLeftToTheRunCheck)
{
    CliOptions options;
    ASSERT_EQ(parse({ "--frames", "-2" }, &options), CliParseResult::Run);
    EXPECT_EQ(options.settings.frameCountText, QStringLiteral("-2"));
}

TEST(CliOptions, HelpAndVersion)
{
    CliOptions options;
    EXPECT_EQ(parse({ "--help" }, &options), CliParseResult::Help);
    EXPECT_EQ(parse({ "--version" }, &options), CliParseResult::Version);
    EXPECT_TRUE(cliHelpText().startsWith(cliUsageLine()));
    EXPECT_TRUE(cliHelpText().contains(QStringLiteral("--save-chain")));
}

TEST(CliOptions, HelpStatesTheDefaultsTheFlagsStartFrom)
{
    const RunSettings defaults;
    const QString help = cliHelpText().simplified();
    EXPECT_TRUE(help.contains(QStringLiteral("(default %1)").arg(defaults.frameCountText)));
    EXPECT_TRUE(help.contains(QStringLiteral("(default %1)").arg(defaults.widthText)));
    EXPECT_TRUE(help.contains(QStringLiteral("(default %1)").arg(defaults.outputPrefix)));
    EXPECT_TRUE(help.contains(QStringLiteral("(default %1)").arg(defaults.format)));
    EXPECT_TRUE(help.contains(QStringLiteral("(default %1)").arg(defaults.jpegQualityText)));
    EXPECT_EQ(defaults.nameStyle, 0);
    EXPECT_TRUE(help.contains(QStringLiteral("plain (default)")));
    // The input directory listing takes subdirectories too and skips only
    // what lies under a name beginning with ".".
    EXPECT_TRUE(help.contains(QStringLiteral("files and subdirectories")));
    EXPECT_FALSE(help.contains(QStringLiteral("hidden entries skipped")));
}

} // namespace
} // namespace quillon
