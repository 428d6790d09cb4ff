// The frame-count text as the run reads it: an integer for the control file,
// a real for the value rule, both the way a text field reads its number.

#include "run/RunSettings.h"
#include "support/BatchFixtures.h"

#include <gtest/gtest.h>

using namespace quillon;

namespace {

RunSettings withFrames(const QString& text)
{
    RunSettings settings;
    settings.frameCountText = text;
    return settings;
}

} // namespace

// golden/frame-counts.txt: a line per text (\n for a line break) with the
// integer and the real read from it; lines starting with # are comments.
// QUILLON_WRITE_GOLDEN=1 rewrites the results.
TEST(FrameCount, ALeadingDecimalNumberIsReadAndTheRestIgnored)
{
    const QString name = QStringLiteral("variations/golden/frame-counts.txt");
    const QString expected
        = QString::fromUtf8(test::fileBytes(QStringLiteral(QUILLON_SOURCE_DIR "/tests/") + name));
    QString actual;
    for (const QString& line : expected.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QString text = line.section(QLatin1Char('"'), 1, -2);
        const RunSettings read = withFrames(QString(text).replace(QStringLiteral("\\n"), QStringLiteral("\n")));
        const std::optional<double> real = read.frameCountReal();
        const QString result = QString::number(read.frameCount()) + QLatin1Char(' ')
            + (real ? QString::number(*real, 'g', 17) : QStringLiteral("none"));
        actual += (line.startsWith(QLatin1Char('#')) ? line : QLatin1Char('"') + text + QStringLiteral("\" -> ") + result)
            + QLatin1Char('\n');
    }
    test::expectGoldenFile(name, actual.toUtf8());
}
