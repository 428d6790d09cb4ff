// Both readers over every odd definition (data/odd and tests/library/golden)
// and every sample filter (data/filters):
// what each gives is printed, every key with its value's type, and compared
// with tests/library/golden/readers.txt. QUILLON_WRITE_GOLDEN=1 rewrites that
// file from what the readers give now (review the diff before committing it).

#include "library/DefinitionReader.h"
#include "support/BatchFixtures.h"

#include <QDir>
#include <QDirIterator>
#include <QMap>

#include <gtest/gtest.h>

using namespace quillon;

namespace {

const QString kGolden = QStringLiteral(QUILLON_SOURCE_DIR "/tests/library/golden/");

QString shown(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<controlType>())
        return controlTypeTag(value.value<controlType>()).trimmed();
    if (value.typeId() == QMetaType::QString)
        return QLatin1Char('"') + value.toString() + QLatin1Char('"');
    if (value.typeId() == QMetaType::QVariantMap) {
        QStringList entries;
        const QVariantMap map = value.toMap();
        for (auto it = map.begin(); it != map.end(); ++it)
            entries.append(it.key() + QStringLiteral(" = ") + shown(it.value()));
        return QLatin1Char('{') + entries.join(QStringLiteral(", ")) + QLatin1Char('}');
    }
    return QString::fromLatin1(value.typeName()) + QLatin1Char(' ') + value.toString();
}

// One line per key (the path the test set is left out); a parameter list
// shows each parameter's keys below a dash.
QString dump(const Record& record, const QString& indent)
{
    QString out;
    for (const QString& name : record.keys()) {
        const QVariant value = record.value(name);
        if (name == key::path)
            continue;
        if (value.metaType() != QMetaType::fromType<RecordListPtr>()) {
            out += indent + name + QStringLiteral(" = ") + shown(value) + QLatin1Char('\n');
            continue;
        }
        out += indent + name + QStringLiteral(":\n");
        for (const RecordPtr& parameter : *value.value<RecordListPtr>())
            out += indent + QStringLiteral("  -\n") + dump(*parameter, indent + QStringLiteral("    "));
    }
    return out;
}

// What both readers make of the file; a detail read that fails must leave
// the chain record as it was.
QString readBoth(const QString& path)
{
    QString out = QStringLiteral("library:\n") + dump(*getFilterInfoWithPath(path), QStringLiteral("  "));
    Record filter;
    filter.setString(key::path, path);
    filter.setInteger(key::ChoosenPreset, 2);
    const QMap<QString, QVariant> before = filter.values();
    if (loadXMLInfoWithFilterdata(filter))
        return out + QStringLiteral("detail:\n") + dump(filter, QStringLiteral("  "));
    EXPECT_EQ(filter.values(), before) << path.toStdString();
    return out + QStringLiteral("detail: refused\n");
}

} // namespace

TEST(DefinitionReaders, GiveWhatTheGoldenListingSaysForEveryOddDefinition)
{
    QMap<QString, QString> listings;
    for (const QString& root :
        { QStringLiteral(QUILLON_DATA_DIR "/odd/"), QStringLiteral(QUILLON_DATA_DIR "/filters/"), kGolden }) {
        QDirIterator it(root, { QStringLiteral("*.ffxml"), QStringLiteral("*.FFXML") },
            QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            listings.insert(path.mid(root.size()), readBoth(path));
        }
    }
    // Nothing at the path, or no path.
    QDir scratch(QDir::tempPath());
    listings.insert(QStringLiteral("(missing)"), readBoth(scratch.filePath(QStringLiteral("no-such.ffxml"))));
    listings.insert(QStringLiteral("(no path)"), readBoth(QString()));

    QString actual;
    for (auto it = listings.begin(); it != listings.end(); ++it)
        actual += QStringLiteral("== ") + it.key() + QLatin1Char('\n') + it.value();
    test::expectGoldenFile(QStringLiteral("library/golden/readers.txt"), actual.toUtf8());
}

TEST(DetailReader, ReadingAgainGivesFreshComponentsAndResetsThePreset)
{
    const RecordPtr filter = Record::create();
    filter->setString(key::path, QStringLiteral(QUILLON_DATA_DIR "/odd/ControlWithoutId.ffxml"));
    ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
    const RecordListPtr first = filter->list(key::Components);
    first->front()->setInteger(key::ACTIVE, 1);
    filter->setInteger(key::ChoosenPreset, 3);

    ASSERT_TRUE(loadXMLInfoWithFilterdata(*filter));
    const RecordListPtr second = filter->list(key::Components);
    ASSERT_NE(second, first);
    EXPECT_EQ(second->front()->integer(key::ACTIVE), 0);
    EXPECT_EQ(filter->integer(key::ChoosenPreset), 0);
    // The old list is left as it was, for whoever still holds it.
    EXPECT_EQ(first->front()->integer(key::ACTIVE), 1);
    EXPECT_FALSE(loadXMLInfoWithFilterdata(RecordPtr()));
}
