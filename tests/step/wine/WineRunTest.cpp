// The render tool's Windows build under a real Wine: quillon-cli --wine
// drives the Windows stand-in (quillon-standin-render.exe) and gets the
// native stand-in's images; Abort ends Wine's processes. Run through
// tests/step/wine-prefix.sh, which makes the Wine prefix once for the suite
// (QUILLON_WINE_PREFIX) and skips where Wine cannot start.

#include "support/CliFixture.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <csignal>

namespace quillon {
namespace {

using test::CliFixture;
using test::CliResult;
using test::kTool;

const QString kWindowsTool = QStringLiteral(QUILLON_STANDIN_WIN_PATH);

// A 24-bit BMP of w x h pixels in a pattern of its own.
QByteArray bmp(int w, int h, int seed)
{
    const int stride = (w * 3 + 3) / 4 * 4;
    QByteArray pixels;
    for (int y = 0; y < h; ++y) {
        QByteArray row;
        for (int x = 0; x < w; ++x)
            row += QByteArray(1, char(x * 7 + seed)) + char(y * 13 + seed * 3) + char(x * y + seed);
        pixels += row + QByteArray(stride - row.size(), '\0');
    }
    const auto le = [](quint32 value, int size) {
        QByteArray bytes;
        for (int i = 0; i < size; ++i)
            bytes += char((value >> (8 * i)) & 0xff);
        return bytes;
    };
    return "BM" + le(54 + pixels.size(), 4) + le(0, 4) + le(54, 4) + le(40, 4) + le(w, 4) + le(h, 4)
        + le(1, 2) + le(24, 2) + le(0, 4) + le(pixels.size(), 4) + le(2835, 4) + le(2835, 4) + le(0, 4)
        + le(0, 4) + pixels;
}

// Wine's processes of `prefix` (the launcher, Windows programs, the
// wineserver): Wine's binaries with that WINEPREFIX in their environment.
QStringList wineProcesses(const QString& prefix)
{
    QStringList found;
    QDirIterator proc(QStringLiteral("/proc"), QDir::Dirs | QDir::NoDotAndDotDot);
    while (proc.hasNext()) {
        const QString dir = proc.next();
        if (!dir.section(QLatin1Char('/'), -1).toUInt())
            continue;
        const QString exe = QFile::symLinkTarget(dir + QStringLiteral("/exe"));
        QFile environ(dir + QStringLiteral("/environ"));
        if (!QFileInfo(exe).fileName().startsWith(QLatin1String("wine"))
            || !environ.open(QIODevice::ReadOnly))
            continue;
        if (environ.readAll().split('\0').contains("WINEPREFIX=" + prefix.toUtf8()))
            found.append(dir + QLatin1Char(' ') + exe);
    }
    return found;
}

class WineRun : public CliFixture {
protected:
    void SetUp() override
    {
        if (m_prefix.isEmpty())
            GTEST_SKIP() << "run through tests/step/wine-prefix.sh, which makes the Wine prefix";
        CliFixture::SetUp();
        writeFile(QStringLiteral("in/alpha.bmp"), bmp(31, 17, 5));
        writeFile(QStringLiteral("in/beta.bmp"), bmp(20, 25, 99));
        QFile chain(QStringLiteral(QUILLON_SOURCE_DIR "/tests/step/wine/two-sweeps.qlch"));
        ASSERT_TRUE(chain.open(QIODevice::ReadOnly));
        m_chain = writeFile(
            QStringLiteral("chain.qlch"), chain.readAll().replace("@DEFINITION@", m_definition.toUtf8()));
    }

    // Two filters, each sweeping a parameter, over both inputs.
    QStringList flags(const QString& tool, const QString& out) const
    {
        return { "--chain", m_chain, "--tool", tool, "--output", out, "--mkdir", "--input-dir", m_in,
            "--format", "BMP", "--frames", "3", "--seed", "7" };
    }

    static QString windowsForm(const QString& path)
    {
        return QStringLiteral("Z:") + QString(path).replace(QLatin1Char('/'), QLatin1Char('\\'));
    }

    const QString m_prefix = qEnvironmentVariable("QUILLON_WINE_PREFIX");
    QString m_chain;
};

TEST_F(WineRun, TheWindowsToolRendersWhatTheNativeOneDoes)
{
    const QString native = m_temp.path() + QStringLiteral("/native");
    const QString wine = m_temp.path() + QStringLiteral("/wine");
    expectExit(run(flags(kTool, native)), 0, "6 written, 0 missing");

    // The plan names each output in both forms.
    const CliResult plan = run(flags(kWindowsTool, wine) + QStringList { "--wine=" + m_prefix, "--dry-run" });
    EXPECT_EQ(plan.exitCode, 0) << plan.err.toStdString();
    const QString last = wine + QStringLiteral("/my-exportmy-exportbeta-3.bmp");
    EXPECT_TRUE(plan.out.contains(last + QStringLiteral(" = ") + windowsForm(last)))
        << plan.out.toStdString();

    const CliResult result = run(flags(kWindowsTool, wine) + QStringList { "--wine=" + m_prefix });
    expectExit(result, 0, "6 written, 0 missing");
    // The tool was given the control file's Windows path.
    EXPECT_TRUE(result.out.contains(QStringLiteral("Quillon stand-in render tool: ")
        + windowsForm(wine + QStringLiteral("/controlfile.xml"))))
        << result.out.toStdString();
    const auto expected = byName(native);
    EXPECT_EQ(expected.size(), 6);
    EXPECT_EQ(byName(wine).keys(), expected.keys());
    EXPECT_TRUE(byName(wine) == expected);
    // The wineserver the run brought up went with it.
    EXPECT_EQ(wineProcesses(m_prefix), QStringList());
}

TEST_F(WineRun, AbortEndsWinesProcesses)
{
    QProcess process;
    start(
        process, flags(kWindowsTool, m_out) + QStringList { "--wine" }, { { "QUILLON_STANDIN_HANG", "1" } });
    readUntil(process, "Quillon stand-in render tool: Z:");
    EXPECT_FALSE(wineProcesses(m_prefix).isEmpty());
    ASSERT_GT(process.processId(), 0);
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    EXPECT_EQ(finish(process).exitCode, 130);
    EXPECT_EQ(wineProcesses(m_prefix), QStringList());
    EXPECT_TRUE(test::batchDirectoryNames(m_out).isEmpty());
}

} // namespace
} // namespace quillon
