#include "library/FilterScan.h"
#include "library/DefinitionReader.h"
#include "support/BatchFixtures.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>


using namespace quillon;

namespace {

const QString kFiltersDir = QStringLiteral(QUILLON_DATA_DIR "/filters");

void writeFile(const QString& root, const QString& relativePath, const QByteArray& content)
{
    ASSERT_TRUE(test::writeFileBytes(root + QLatin1Char('/') + relativePath, content));
}

QByteArray definitionNamed(const QString& name, const char* root = "Filter")
{
    return QStringLiteral("<%1><Information name-en=\"%2\" author=\"Test Author\"/>"
                          "<Components><Result><FilterType value=\"1\"/></Result></Components></%1>")
        .arg(QString::fromLatin1(root), name)
        .toUtf8();
}

QStringList names(const RecordList& library)
{
    QStringList result;
    for (const RecordPtr& filter : library)
        result.append(filter->string(key::name));
    return result;
}

} // namespace

TEST(FilterListing, FindsDefinitionsAtAnyDepthWithFullPaths)
{
    QTemporaryDir dir;
    QTemporaryDir outside;
    const QString root = dir.path();
    for (const char* name : { "Top.ffxml", "a/b/c/Deep.ffxml", ".Hidden.ffxml", ".hiddendir/Inside.ffxml",
             "Upper.FFXML", "Backup.ffxml.bak", "notes.txt" })
        writeFile(root, QString::fromLatin1(name), definitionNamed(QStringLiteral("x")));
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("Folder.ffxml/empty")));
    writeFile(outside.path(), QStringLiteral("Linked.ffxml"), definitionNamed(QStringLiteral("Linked")));
    ASSERT_TRUE(QFile::link(outside.path(), root + QStringLiteral("/linked")));
    ASSERT_TRUE(QFile::link(root, root + QStringLiteral("/a/loop")));

    QStringList expected;
    for (const char* name : { "/Top.ffxml", "/a/b/c/Deep.ffxml", "/.Hidden.ffxml", "/.hiddendir/Inside.ffxml",
             "/Folder.ffxml", "/linked/Linked.ffxml" })
        expected.append(root + QString::fromLatin1(name));
    expected.sort();
    for (const QString& start : { root, root + QStringLiteral("/./") }) {
        QStringList listed = loadFilterNamesAndArrayWithPath(start);
        listed.sort();
        EXPECT_EQ(listed, expected);
    }

    // Nothing to list: a missing path, a file, no path, an empty directory.
    QTemporaryDir empty;
    for (const QString& path : { dir.filePath(QStringLiteral("missing")), root + QStringLiteral("/Top.ffxml"),
             QString(), empty.path() }) {
        EXPECT_TRUE(loadFilterNamesAndArrayWithPath(path).isEmpty()) << path.toStdString();
        EXPECT_TRUE(scanFilterDirectory(path).empty()) << path.toStdString();
    }
}

TEST(FilterScan, KeepsUsableDefinitionsSortedByCodePoints)
{
    QTemporaryDir dir;
    const QString root = dir.path();
    for (const char* name : { "blur", "Blurs/Blur", "x/y/Alpha", "Zebra", "apple" })
        writeFile(root, QString::fromLatin1(name) + QStringLiteral(".ffxml"),
            definitionNamed(QFileInfo(QString::fromLatin1(name)).fileName()));
    writeFile(root, QStringLiteral("Nameless.ffxml"),
        "<Filter><Information author=\"Someone\"/><Components/></Filter>");
    // Not usable: wrong root, no Information, rejected by the parser, a directory.
    writeFile(root, QStringLiteral("Lower.ffxml"), definitionNamed(QStringLiteral("Lower"), "filter"));
    writeFile(root, QStringLiteral("NoInfo.ffxml"), "<Filter><Components/></Filter>");
    writeFile(root, QStringLiteral("Broken.ffxml"), "<Filter><Information name-en=\"Broken\"></Filter>");
    writeFile(root, QStringLiteral("Upper.FFXML"), definitionNamed(QStringLiteral("Upper")));
    ASSERT_TRUE(QDir(root).mkdir(QStringLiteral("Dir.ffxml")));

    // U+FF21 (fullwidth A) is below U+1F600 as a code point, though its
    // UTF-16 unit 0xFF21 is above the surrogate 0xD83D.
    const QString fullwidth = QString(QChar(0xFF21)) + QStringLiteral("wide");
    const QString emoji = QString::fromUcs4(U"\U0001F600 smile");
    const QString composed = QString::fromUcs4(U"\u00C9cole");
    const QString decomposed = QString::fromUcs4(U"E\u0301cole");
    writeFile(root, QStringLiteral("emoji.ffxml"), definitionNamed(emoji));
    writeFile(root, QStringLiteral("wide.ffxml"), definitionNamed(fullwidth));
    writeFile(root, QStringLiteral("ecole1.ffxml"), definitionNamed(composed));
    writeFile(root, QStringLiteral("ecole2.ffxml"), definitionNamed(decomposed));

    const RecordList library = scanFilterDirectory(root);
    const QStringList listed = names(library);
    ASSERT_EQ(listed.size(), 10);
    EXPECT_EQ(listed.mid(0, 6),
        (QStringList { QString(), QStringLiteral("Alpha"), QStringLiteral("Blur"), QStringLiteral("Zebra"),
            QStringLiteral("apple"), QStringLiteral("blur") }));
    // The two spellings of the same name sit together.
    EXPECT_EQ(
        QSet<QString>(listed.begin() + 6, listed.begin() + 8), (QSet<QString> { composed, decomposed }));
    EXPECT_EQ(listed.mid(8), (QStringList { fullwidth, emoji }));

    const Record& alpha = *library.at(1);
    EXPECT_EQ(alpha.keys(), (QStringList { key::author, key::filtertype, key::name, key::path }));
    EXPECT_EQ(alpha.string(key::path), root + QStringLiteral("/x/y/Alpha.ffxml"));
    EXPECT_EQ(library.front()->string(key::author), QStringLiteral("Someone"));
    EXPECT_TRUE(codePointLessThan(QStringLiteral("ab"), QStringLiteral("abc")));
    // The lowest code point above U+FFFF (units D800 DC00) against U+E000.
    const QString first = QString::fromUcs4(U"\U00010000");
    const QString privateUse = QString(QChar(0xE000));
    EXPECT_TRUE(codePointLessThan(privateUse, first));
    EXPECT_FALSE(codePointLessThan(first, privateUse));
}

TEST(FilterFetcher, EveryScanHandsOverItsOwnResultInLaunchOrder)
{
    // A large directory chosen first and a small one after it: the small
    // library would be ready first, but the last choice must be the last
    // library handed over. A missing directory still hands over, so the
    // spinner stops.
    QTemporaryDir large;
    for (int i = 0; i < 400; ++i)
        writeFile(large.path(), QStringLiteral("d%1/F%2.ffxml").arg(i % 20).arg(i),
            definitionNamed(QStringLiteral("Large%1").arg(i)));
    QTemporaryDir small;
    writeFile(small.path(), QStringLiteral("Only.ffxml"), definitionNamed(QStringLiteral("Only")));

    QList<int> sizes;
    QEventLoop loop;
    FilterFetcher fetcher;
    QObject::connect(&fetcher, &FilterFetcher::fetched, [&](const RecordList& filters) {
        EXPECT_EQ(QThread::currentThread(), fetcher.thread()); // on the fetcher's thread, once per scan
        sizes.append(static_cast<int>(filters.size()));
        if (sizes.size() == 4)
            loop.quit();
    });
    fetcher.launch(large.path());
    fetcher.launch(small.path());
    fetcher.launch(small.path());
    fetcher.launch(small.filePath(QStringLiteral("missing")));
    QTimer::singleShot(30000, &loop, &QEventLoop::quit); // a safety net, not a wait
    loop.exec();
    QCoreApplication::processEvents();
    EXPECT_EQ(sizes, (QList<int> { 400, 1, 1, 0 }));
}

TEST(FilterFetcher, DestroyedFetcherDropsItsHandOver)
{
    int handOvers = 0;
    {
        FilterFetcher fetcher;
        QObject::connect(&fetcher, &FilterFetcher::fetched, [&handOvers] { ++handOvers; });
        fetcher.launch(kFiltersDir);
    }
    FilterFetcher::waitForScans();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    EXPECT_EQ(handOvers, 0);
}
