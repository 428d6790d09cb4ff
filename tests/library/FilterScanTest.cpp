#include "library/FilterScan.h"
#include "library/DefinitionReader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <atomic>
#include <memory>

using namespace quillon;

namespace {

const QString kFiltersDir = QStringLiteral(QUILLON_DATA_DIR "/filters");
const QString kOddDir = QStringLiteral(QUILLON_DATA_DIR "/odd");

void writeFile(const QString& root, const QString& relativePath, const QByteArray& content)
{
    const QString path = root + QLatin1Char('/') + relativePath;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
}

QByteArray definitionNamed(const QString& name, const char* root = "Filter")
{
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<%1>\n"
                          "  <Information name-en=\"%2\" author=\"Test Author\"/>\n"
                          "  <Components><Result><FilterType value=\"1\"/></Result></Components>\n</%1>\n")
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

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

// Stands in for the window's controller: starts a scan the way the window
// does and counts what comes back.
class FakeAppDelegate final : public QObject {
    Q_OBJECT
public:
    explicit FakeAppDelegate(QString filterPath)
        : m_filterPath(std::move(filterPath))
        , m_fetcher(new FilterFetcher(this))
    {
        connect(m_fetcher, &FilterFetcher::fetched, this, &FakeAppDelegate::fetchDoneWithArray);
    }

    void launchFilterFetcher()
    {
        m_spinnerRunning = true;
        m_addFilterButtonEnabled = false;
        m_fetcher->launch(m_filterPath);
    }

    void fetchDoneWithArray(const quillon::RecordList& filters)
    {
        m_addFilterButtonEnabled = true;
        m_spinnerRunning = false;
        m_baseFiltersArray = filters;
        m_handOverThread = QThread::currentThread();
        ++m_handOvers;
    }

    QString m_filterPath;
    FilterFetcher* m_fetcher = nullptr;
    bool m_spinnerRunning = false;
    bool m_addFilterButtonEnabled = false;
    RecordList m_baseFiltersArray;
    QThread* m_handOverThread = nullptr;
    std::atomic<int> m_handOvers { 0 };
};

void drainEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

} // namespace

TEST(FilterListing, FindsDefinitionsAtAnyDepthWithFullPaths)
{
    QTemporaryDir dir;
    QTemporaryDir outside;
    const QString root = dir.path();
    writeFile(root, QStringLiteral("Top.ffxml"), definitionNamed(QStringLiteral("Top")));
    writeFile(root, QStringLiteral("a/b/c/Deep.ffxml"), definitionNamed(QStringLiteral("Deep")));
    writeFile(root, QStringLiteral(".Hidden.ffxml"), definitionNamed(QStringLiteral("Hidden")));
    writeFile(root, QStringLiteral(".hiddendir/Inside.ffxml"), definitionNamed(QStringLiteral("Inside")));
    writeFile(root, QStringLiteral("Upper.FFXML"), definitionNamed(QStringLiteral("Upper")));
    writeFile(root, QStringLiteral("Backup.ffxml.bak"), definitionNamed(QStringLiteral("Backup")));
    writeFile(root, QStringLiteral("notes.txt"), "not a definition");
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("Folder.ffxml/empty")));
    writeFile(outside.path(), QStringLiteral("Linked.ffxml"), definitionNamed(QStringLiteral("Linked")));
    ASSERT_TRUE(QFile::link(outside.path(), root + QStringLiteral("/linked")));
    ASSERT_TRUE(QFile::link(root, root + QStringLiteral("/a/loop")));

    const QStringList expected {
        root + QStringLiteral("/Top.ffxml"),
        root + QStringLiteral("/a/b/c/Deep.ffxml"),
        root + QStringLiteral("/.Hidden.ffxml"),
        root + QStringLiteral("/.hiddendir/Inside.ffxml"),
        root + QStringLiteral("/Folder.ffxml"),
        root + QStringLiteral("/linked/Linked.ffxml"),
    };
    EXPECT_EQ(sorted(loadFilterNamesAndArrayWithPath(root)), sorted(expected));
    EXPECT_EQ(sorted(loadFilterNamesAndArrayWithPath(root + QStringLiteral("/./"))), sorted(expected));
}

TEST(FilterListing, UnlistableDirectoriesGiveNothing)
{
    QTemporaryDir dir;
    writeFile(dir.path(), QStringLiteral("File.ffxml"), definitionNamed(QStringLiteral("File")));
    EXPECT_TRUE(loadFilterNamesAndArrayWithPath(dir.filePath(QStringLiteral("missing"))).isEmpty());
    EXPECT_TRUE(loadFilterNamesAndArrayWithPath(dir.filePath(QStringLiteral("File.ffxml"))).isEmpty());
    EXPECT_TRUE(loadFilterNamesAndArrayWithPath(QString()).isEmpty());

    QTemporaryDir empty;
    EXPECT_TRUE(loadFilterNamesAndArrayWithPath(empty.path()).isEmpty());
    EXPECT_TRUE(scanFilterDirectory(empty.path()).empty());
    EXPECT_TRUE(scanFilterDirectory(dir.filePath(QStringLiteral("missing"))).empty());
}

TEST(FilterScan, KeepsUsableDefinitionsSortedByCodePoints)
{
    QTemporaryDir dir;
    const QString root = dir.path();
    writeFile(root, QStringLiteral("blur.ffxml"), definitionNamed(QStringLiteral("blur")));
    writeFile(root, QStringLiteral("Blurs/Blur.ffxml"), definitionNamed(QStringLiteral("Blur")));
    writeFile(root, QStringLiteral("x/y/Alpha.ffxml"), definitionNamed(QStringLiteral("Alpha")));
    writeFile(root, QStringLiteral("Zebra.ffxml"), definitionNamed(QStringLiteral("Zebra")));
    writeFile(root, QStringLiteral("apple.ffxml"), definitionNamed(QStringLiteral("apple")));
    writeFile(root, QStringLiteral("Elan.ffxml"), definitionNamed(QStringLiteral("Élan")));
    writeFile(root, QStringLiteral("Nameless.ffxml"),
        "<Filter><Information author=\"Someone\"/><Components/></Filter>");
    // Not usable: wrong root, no Information, rejected by the parser, a directory.
    writeFile(root, QStringLiteral("Lower.ffxml"), definitionNamed(QStringLiteral("Lower"), "filter"));
    writeFile(root, QStringLiteral("NoInfo.ffxml"), "<Filter><Components/></Filter>");
    writeFile(root, QStringLiteral("Broken.ffxml"), "<Filter><Information name-en=\"Broken\"></Filter>");
    writeFile(root, QStringLiteral("Upper.FFXML"), definitionNamed(QStringLiteral("Upper")));
    ASSERT_TRUE(QDir(root).mkdir(QStringLiteral("Dir.ffxml")));

    const RecordList library = scanFilterDirectory(root);
    EXPECT_EQ(names(library),
        (QStringList { QString(), QStringLiteral("Alpha"), QStringLiteral("Blur"), QStringLiteral("Zebra"),
            QStringLiteral("apple"), QStringLiteral("blur"), QStringLiteral("Élan") }));

    const Record& alpha = *library.at(1);
    EXPECT_EQ(alpha.keys(), (QStringList { key::author, key::filtertype, key::name, key::path }));
    EXPECT_EQ(alpha.string(key::path), root + QStringLiteral("/x/y/Alpha.ffxml"));
    EXPECT_EQ(library.front()->string(key::author), QStringLiteral("Someone"));
    EXPECT_EQ(library.front()->string(key::path), root + QStringLiteral("/Nameless.ffxml"));
}

TEST(FilterScan, SortsByCodePointsWithCanonicalEquivalentsTogether)
{
    QTemporaryDir dir;
    const QString root = dir.path();
    // U+FF21 (fullwidth A) is below U+1F600 as a code point, though its
    // UTF-16 unit 0xFF21 is above the surrogate 0xD83D.
    const QString fullwidth = QString(QChar(0xFF21)) + QStringLiteral("wide");
    const QString emoji = QString::fromUcs4(U"\U0001F600 smile");
    const QString composed = QString::fromUcs4(U"\u00C9cole");
    const QString decomposed = QString::fromUcs4(U"E\u0301cole");
    writeFile(root, QStringLiteral("emoji.ffxml"), definitionNamed(emoji));
    writeFile(root, QStringLiteral("wide.ffxml"), definitionNamed(fullwidth));
    writeFile(root, QStringLiteral("zebra.ffxml"), definitionNamed(QStringLiteral("zebra")));
    writeFile(root, QStringLiteral("Zebra.ffxml"), definitionNamed(QStringLiteral("Zebra")));
    writeFile(root, QStringLiteral("ecole1.ffxml"), definitionNamed(composed));
    writeFile(root, QStringLiteral("ecole2.ffxml"), definitionNamed(decomposed));

    const QStringList listed = names(scanFilterDirectory(root));
    ASSERT_EQ(listed.size(), 6);
    EXPECT_EQ(listed.mid(0, 2), (QStringList { QStringLiteral("Zebra"), QStringLiteral("zebra") }));
    // The two spellings of the same name sit together, after "zebra".
    EXPECT_EQ(
        QSet<QString>(listed.begin() + 2, listed.begin() + 4), (QSet<QString> { composed, decomposed }));
    EXPECT_EQ(listed.mid(4), (QStringList { fullwidth, emoji }));

    auto named = [](const QString& name) {
        Record record;
        record.setString(key::name, name);
        return record;
    };
    EXPECT_TRUE(filterNameLessThan(named(fullwidth), named(emoji)));
    EXPECT_FALSE(filterNameLessThan(named(emoji), named(fullwidth)));
    EXPECT_FALSE(filterNameLessThan(named(composed), named(decomposed)));
    EXPECT_FALSE(filterNameLessThan(named(decomposed), named(composed)));
    EXPECT_TRUE(filterNameLessThan(named(QString()), named(QStringLiteral("A"))));
    EXPECT_TRUE(codePointLessThan(QStringLiteral("ab"), QStringLiteral("abc")));
}

TEST(FilterScan, OddDefinitionsKeepOnlyTheUsableOnes)
{
    EXPECT_EQ(names(scanFilterDirectory(kOddDir)),
        (QStringList { QString(), QStringLiteral("Comments Between Controls"),
            QStringLiteral("Control Without Id"), QStringLiteral("Lenient & Late &nbsp;"),
            QStringLiteral("Range Max Values") }));
}

TEST(SampleLibrary, LoadsSortedWithEveryFilterUsable)
{
    const RecordList library = scanFilterDirectory(kFiltersDir);
    ASSERT_EQ(names(library),
        (QStringList { QStringLiteral("Alpha Fade"), QStringLiteral("Blur"), QStringLiteral("Emboss Edges"),
            QStringLiteral("Oil Paint"), QStringLiteral("Rusty Metal"), QStringLiteral("Soft Glow"),
            QStringLiteral("Stone Wall"), QStringLiteral("Vignette"), QStringLiteral("Zebra Stripes"),
            QStringLiteral("blur lite") }));

    QSet<QString> filterTypes;
    for (const RecordPtr& filter : library) {
        SCOPED_TRACE(filter->string(key::name).toStdString());
        EXPECT_TRUE(filter->string(key::path).startsWith(kFiltersDir + QLatin1Char('/')));
        EXPECT_FALSE(filter->string(key::author).isEmpty());
        filterTypes.insert(filter->string(key::filtertype));

        ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
        const RecordListPtr components = filter->list(key::Components);
        ASSERT_NE(components, nullptr);
        EXPECT_GE(components->size(), 4u);
        EXPECT_EQ(components->back()->type(), controlType::kTypeVariations);
        EXPECT_GE(presetCount(*filter), 1);
        EXPECT_LE(presetCount(*filter), 4);
        for (const RecordPtr& parameter : *components)
            EXPECT_FALSE(parameter->string(key::CONTROL_NAME).isEmpty());
    }
    EXPECT_TRUE(filterTypes.contains(QStringLiteral("1")));
    EXPECT_GE(filterTypes.size(), 2);
}

TEST(SampleLibrary, PresetsCarrySettingsAndEveryControl)
{
    for (const QString& path : loadFilterNamesAndArrayWithPath(kFiltersDir)) {
        SCOPED_TRACE(path.toStdString());
        pugi::xml_document document;
        ASSERT_TRUE(document.load_file(QFile::encodeName(path).constData()));
        const pugi::xml_node filter = document.child("Filter");

        QStringList controlIds;
        for (const pugi::xml_node& control : filter.child("Components").children()) {
            if (QByteArray(control.name()).endsWith("Control"))
                controlIds.append(QString::fromUtf8(control.attribute("id").value()));
        }
        ASSERT_FALSE(controlIds.isEmpty());

        for (const pugi::xml_node& preset : filter.child("Presets").children("Preset")) {
            const pugi::xml_node settings = preset.child("Settings");
            EXPECT_TRUE(settings.attribute("variation") && settings.attribute("map_type"));
            QStringList presetIds;
            for (const pugi::xml_node& control : preset.child("Controls").children()) {
                presetIds.append(QString::fromUtf8(control.attribute("id").value()));
                const bool checkbox = std::string_view(control.name()) == "CheckboxControl";
                EXPECT_TRUE(control.child(checkbox ? "Checked" : "Value").attribute("value"))
                    << control.name();
            }
            EXPECT_EQ(presetIds, controlIds);
        }
    }
}

TEST(FilterFetcher, HandsTheLibraryOverOnceOnTheControllerThread)
{
    FakeAppDelegate controller(kFiltersDir);
    controller.launchFilterFetcher();
    EXPECT_TRUE(controller.m_spinnerRunning);
    EXPECT_FALSE(controller.m_addFilterButtonEnabled);

    ASSERT_TRUE(QTest::qWaitFor([&] { return controller.m_handOvers > 0; }, 30000));
    drainEvents();
    EXPECT_EQ(controller.m_handOvers, 1);
    EXPECT_EQ(controller.m_handOverThread, QThread::currentThread());
    EXPECT_FALSE(controller.m_spinnerRunning);
    EXPECT_TRUE(controller.m_addFilterButtonEnabled);
    EXPECT_EQ(names(controller.m_baseFiltersArray), names(scanFilterDirectory(kFiltersDir)));
}

TEST(FilterFetcher, HandOverFollowsTheControllerToItsThread)
{
    QThread controllerThread;
    controllerThread.start();
    auto controller = std::make_unique<FakeAppDelegate>(kFiltersDir);
    controller->moveToThread(&controllerThread);
    QMetaObject::invokeMethod(controller.get(), &FakeAppDelegate::launchFilterFetcher, Qt::QueuedConnection);

    const bool handedOver = QTest::qWaitFor([&] { return controller->m_handOvers > 0; }, 30000);
    controllerThread.quit();
    controllerThread.wait();
    ASSERT_TRUE(handedOver);
    EXPECT_EQ(controller->m_handOvers, 1);
    EXPECT_EQ(controller->m_handOverThread, &controllerThread);
    EXPECT_EQ(controller->m_baseFiltersArray.size(), 10u);
}

TEST(FilterFetcher, EveryScanHandsOverItsOwnResult)
{
    QTemporaryDir dir;
    writeFile(dir.path(), QStringLiteral("One.ffxml"), definitionNamed(QStringLiteral("One")));
    FakeAppDelegate controller(dir.path());
    controller.launchFilterFetcher();
    controller.launchFilterFetcher();
    ASSERT_TRUE(QTest::qWaitFor([&] { return controller.m_handOvers >= 2; }, 30000));
    drainEvents();
    EXPECT_EQ(controller.m_handOvers, 2);
    EXPECT_EQ(names(controller.m_baseFiltersArray), QStringList { QStringLiteral("One") });

    // An empty library is handed over too, so the spinner stops.
    FakeAppDelegate nowhere(dir.filePath(QStringLiteral("missing")));
    nowhere.launchFilterFetcher();
    ASSERT_TRUE(QTest::qWaitFor([&] { return nowhere.m_handOvers > 0; }, 30000));
    EXPECT_TRUE(nowhere.m_baseFiltersArray.empty());
    EXPECT_FALSE(nowhere.m_spinnerRunning);
    EXPECT_TRUE(nowhere.m_addFilterButtonEnabled);
}

TEST(FilterFetcher, LibrariesArriveInTheOrderTheScansWereLaunched)
{
    // A large directory chosen first and a small one after it: the small
    // library would be ready first, but the last choice must be the last
    // library handed over.
    QTemporaryDir large;
    for (int i = 0; i < 400; ++i)
        writeFile(large.path(), QStringLiteral("d%1/F%2.ffxml").arg(i % 20).arg(i),
            definitionNamed(QStringLiteral("Large%1").arg(i)));
    QTemporaryDir small;
    writeFile(small.path(), QStringLiteral("Only.ffxml"), definitionNamed(QStringLiteral("Only")));

    QList<int> sizes;
    FilterFetcher fetcher;
    QObject::connect(&fetcher, &FilterFetcher::fetched,
        [&sizes](const RecordList& filters) { sizes.append(static_cast<int>(filters.size())); });
    fetcher.launch(large.path());
    fetcher.launch(small.path());
    ASSERT_TRUE(QTest::qWaitFor([&] { return sizes.size() == 2; }, 30000));
    EXPECT_EQ(sizes, (QList<int> { 400, 1 }));
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
    drainEvents();
    EXPECT_EQ(handOvers, 0);
}

#include "FilterScanTest.moc"
