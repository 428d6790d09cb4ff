// The Windows form of Linux paths under Wine, from a prefix's dosdevices
// links (fake prefixes of symlinks in a temporary folder).

#include "run/WinePaths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillon;

namespace {

TEST(WinePaths, DrivesFromDosdevicesLinks)
{
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString root = temp.path();
    QDir dir(root);
    for (const char* folder :
        { "full/dosdevices", "full/drive_c/windows", "data/deep", "data/other", "dOnly/dosdevices", "fresh" })
        ASSERT_TRUE(dir.mkpath(QString::fromLatin1(folder)));
    const auto link = [&root](const QString& target, const char* name) {
        ASSERT_TRUE(QFile::link(target, root + QLatin1Char('/') + QString::fromLatin1(name))) << name;
    };
    link(QStringLiteral("../drive_c"), "full/dosdevices/c:");
    link(QStringLiteral("/"), "full/dosdevices/z:");
    link(root + QStringLiteral("/data"), "full/dosdevices/d:");
    link(root + QStringLiteral("/data/deep"), "full/dosdevices/e:");
    link(root + QStringLiteral("/missing"), "full/dosdevices/y:"); // leads nowhere: no drive
    link(root + QStringLiteral("/data/other"), "linked");
    link(root + QStringLiteral("/linked"), "full/dosdevices/f:"); // a link to a link
    link(QStringLiteral("/dev/null"), "full/dosdevices/com1");
    link(QStringLiteral("/dev/null"), "full/dosdevices/a::");
    link(root + QStringLiteral("/data"), "dOnly/dosdevices/d:");

    const struct {
        const char* prefix;
        QString path;
        QString windows; // empty: refused
        const char* refusal;
    } rows[] = {
        { "full", QStringLiteral("/usr/share/a.png"), QStringLiteral("Z:\\usr\\share\\a.png"), "" },
        { "full", QStringLiteral("/"), QStringLiteral("Z:\\"), "" },
        { "full", root + QStringLiteral("/full/drive_c/windows/a.txt"), QStringLiteral("C:\\windows\\a.txt"),
            "" },
        { "full", root + QStringLiteral("/data/a b/ü.png"), QStringLiteral("D:\\a b\\ü.png"), "" },
        { "full", root + QStringLiteral("/data/deep/x.png"), QStringLiteral("E:\\x.png"), "" },
        { "full", root + QStringLiteral("/data/deeper/x.png"), QStringLiteral("D:\\deeper\\x.png"), "" },
        { "full", root + QStringLiteral("/data/other/x.png"), QStringLiteral("F:\\x.png"), "" },
        { "full", root + QStringLiteral("/data/x/../deep/./y.png"), QStringLiteral("E:\\y.png"), "" },
        { "full", root + QStringLiteral("/missing/x.png"),
            QStringLiteral("Z:")
                + QString(root + QStringLiteral("/missing/x.png"))
                      .replace(QLatin1Char('/'), QLatin1Char('\\')),
            "" },
        { "full", QString(), QString(), "" },
        { "full", QStringLiteral("out/a.png"), QString(), "is not an absolute path" },
        { "full", root + QStringLiteral("/data/a:b.png"), QString(), "a name in it holds one of" },
        { "dOnly", root + QStringLiteral("/data/a.png"), QStringLiteral("D:\\a.png"), "" },
        { "dOnly", QStringLiteral("/usr/a.png"), QString(), "Wine cannot reach /usr/a.png: no drive in" },
        // Wine gives a prefix it makes the drive Z: for the whole tree.
        { "fresh", QStringLiteral("/usr/a.png"), QStringLiteral("Z:\\usr\\a.png"), "" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path.toStdString());
        const WinePaths paths = WinePaths::read(root + QLatin1Char('/') + QString::fromLatin1(row.prefix));
        QString error;
        EXPECT_EQ(paths.windowsPath(row.path, &error), row.windows);
        EXPECT_TRUE(error.contains(QString::fromUtf8(row.refusal))) << error.toStdString();
        EXPECT_EQ(error.isEmpty(), std::string(row.refusal).empty());
    }
}

} // namespace
