#include "library/DefinitionReader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

using namespace quillon;

namespace {

QString oddFile(const QString& name)
{
    return QStringLiteral(QUILLON_DATA_DIR "/odd/") + name;
}

QString writeDefinition(const QTemporaryDir& dir, const QString& name, const QByteArray& content)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        ADD_FAILURE() << "cannot write " << path.toStdString();
    return path;
}

// The detail reader's record for a definition; the read must succeed.
RecordPtr detailsOf(const QString& path)
{
    RecordPtr filter = Record::create();
    filter->setString(key::path, path);
    EXPECT_TRUE(loadXMLInfoWithFilterdata(filter)) << path.toStdString();
    return filter;
}

QStringList ids(const RecordList& components)
{
    QStringList result;
    for (const RecordPtr& parameter : components)
        result.append(parameter->string(key::CONTROL_ID));
    return result;
}

const Record& parameterWithId(const Record& filter, const char* id)
{
    static const RecordPtr none = Record::create();
    const RecordList& components = *filter.list(key::Components);
    const auto it = std::find_if(components.begin(), components.end(),
        [&](const RecordPtr& p) { return p->string(key::CONTROL_ID) == QLatin1String(id); });
    return it == components.end() ? *none : **it;
}

} // namespace

TEST(LibraryReader, TakesNameAuthorAndFilterTypeOnly)
{
    QTemporaryDir dir;
    const RecordPtr info = getFilterInfoWithPath(writeDefinition(dir, QStringLiteral("glow.ffxml"),
        R"(<Filter><Information name-en="Soft Glow" author="Quillon Samples" description-en="Glows."/>
  <Components><Result><FilterType value="1"/></Result><SliderControl id="glow"/></Components>
  <Presets><Preset name-en="Default"/></Presets></Filter>)"));
    EXPECT_EQ(info->keys(), (QStringList { key::author, key::filtertype, key::name }));
    EXPECT_EQ(info->string(key::name), QStringLiteral("Soft Glow"));
    EXPECT_EQ(info->string(key::author), QStringLiteral("Quillon Samples"));
    EXPECT_EQ(info->string(key::filtertype), QStringLiteral("1"));
}

TEST(Readers, UnusableFilesGiveAnEmptyRecordAndLeaveTheChainRecordUnchanged)
{
    QTemporaryDir dir;
    QDir(dir.path()).mkdir(QStringLiteral("folder.ffxml"));
    const QStringList unusable {
        oddFile(QStringLiteral("LowerCaseRoot.ffxml")), // root is "filter"
        oddFile(QStringLiteral("Rejected.ffxml")), // mismatched end tag
        oddFile(QStringLiteral("Empty.ffxml")), // no root element
        oddFile(QStringLiteral("Folder Named.ffxml")), // a directory
        dir.filePath(QStringLiteral("folder.ffxml")),
        dir.filePath(QStringLiteral("missing.ffxml")),
        QString(),
    };
    for (const QString& path : unusable) {
        SCOPED_TRACE(path.toStdString());
        const RecordPtr info = getFilterInfoWithPath(path);
        ASSERT_NE(info, nullptr);
        EXPECT_TRUE(info->isEmpty());

        Record filter;
        filter.setString(key::path, path);
        filter.setInteger(key::ChoosenPreset, 2);
        const QMap<QString, QVariant> before = filter.values();
        EXPECT_FALSE(loadXMLInfoWithFilterdata(filter));
        EXPECT_EQ(filter.values(), before);
    }
    Record withoutPath;
    EXPECT_FALSE(loadXMLInfoWithFilterdata(withoutPath));
    EXPECT_TRUE(withoutPath.isEmpty());
    EXPECT_FALSE(loadXMLInfoWithFilterdata(RecordPtr()));
}

TEST(LibraryReader, MissingPiecesOfInformationAndFilterType)
{
    // No Information: no name, so the scan drops it; the filter type is still read.
    const RecordPtr noInformation
        = getFilterInfoWithPath(oddFile(QStringLiteral("MissingInformation.ffxml")));
    EXPECT_FALSE(noInformation->contains(key::name));
    EXPECT_EQ(noInformation->string(key::filtertype), QStringLiteral("2"));

    // Information without name-en, FilterType without value: empty strings.
    const RecordPtr noName = getFilterInfoWithPath(oddFile(QStringLiteral("NoName.ffxml")));
    EXPECT_EQ(noName->string(key::name, QStringLiteral("fallback")), QString());
    EXPECT_EQ(noName->string(key::author), QStringLiteral("Anonymous Tester"));
    EXPECT_EQ(noName->string(key::filtertype, QStringLiteral("fallback")), QString());

    // Without Components/Result/FilterType the key stays unset.
    EXPECT_FALSE(
        getFilterInfoWithPath(oddFile(QStringLiteral("ControlWithoutId.ffxml")))->contains(key::filtertype));
}

TEST(LibraryReader, LenientDocumentsAndEncodings)
{
    // Two Information elements, three FilterTypes in two Results and one
    // nested too deep, an undefined entity and no declaration: the later
    // direct children win.
    const RecordPtr info = getFilterInfoWithPath(oddFile(QStringLiteral("nested/deeper/Lenient.ffxml")));
    EXPECT_EQ(info->string(key::name), QStringLiteral("Lenient & Late &nbsp;"));
    EXPECT_EQ(info->string(key::author), QStringLiteral("Late"));
    EXPECT_EQ(info->string(key::filtertype), QStringLiteral("1"));

    QTemporaryDir dir;
    const QString utf8 = writeDefinition(dir, QStringLiteral("Café Crème.ffxml"),
        "<Filter><Information name-en=\"Caf\xc3\xa9 Cr\xc3\xa8me\"/></Filter>");
    EXPECT_EQ(getFilterInfoWithPath(utf8)->string(key::name), QStringLiteral("Café Crème"));

    const QString text = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"
                                        "<Filter><Information name-en=\"Ωmega\" author=\"Zoë\"/></Filter>");
    QByteArray utf16("\xff\xfe", 2);
    utf16.append(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    const RecordPtr omega = getFilterInfoWithPath(writeDefinition(dir, QStringLiteral("omega.ffxml"), utf16));
    EXPECT_EQ(omega->string(key::name), QStringLiteral("Ωmega"));
    EXPECT_EQ(omega->string(key::author), QStringLiteral("Zoë"));
}

TEST(DetailReader, SkipsControlsWithoutIdAndAppendsTheVariationsRow)
{
    const RecordPtr filter = detailsOf(oddFile(QStringLiteral("ControlWithoutId.ffxml")));
    const RecordListPtr components = filter->list(key::Components);
    ASSERT_NE(components, nullptr);
    ASSERT_EQ(ids(*components), (QStringList { QStringLiteral("a"), QStringLiteral("c"), kVariationsId }));

    const Record& angle = *components->at(0);
    EXPECT_EQ(angle.type(), controlType::kTypeAngle);
    EXPECT_EQ(angle.string(key::CONTROL_NAME), QStringLiteral("Angle A"));
    EXPECT_TRUE(angle.holdsReal(key::MINVALUE) && angle.holdsReal(key::MAXVALUE));
    EXPECT_DOUBLE_EQ(angle.real(key::MAXVALUE), 360.0);
    EXPECT_TRUE(angle.holdsInteger(key::ACTIVE) && angle.holdsInteger(key::POPSTATE));

    const Record& box = *components->at(1);
    EXPECT_EQ(box.type(), controlType::kTypeCheckbox);
    EXPECT_TRUE(box.holdsInteger(key::MAXVALUE));
    EXPECT_EQ(box.integer(key::MAXVALUE), 1);

    EXPECT_EQ(components->back()->integer(key::MAXVALUE), 30000);
    EXPECT_EQ(presetCount(*filter), 1);
    EXPECT_TRUE(filter->holdsInteger(key::ChoosenPreset));
    EXPECT_EQ(filter->integer(key::ChoosenPreset, -1), 0);
}

TEST(DetailReader, RangeMaxOfIntegerSliders)
{
    const RecordPtr filter = detailsOf(oddFile(QStringLiteral("RangeMaxValues.ffxml")));
    const Record& negative = parameterWithId(*filter, "negative");
    EXPECT_TRUE(negative.holdsInteger(key::CONTROL_MAX) && negative.holdsInteger(key::MAXVALUE));
    EXPECT_EQ(negative.integer(key::CONTROL_MAX), -5);
    EXPECT_EQ(negative.integer(key::MAXVALUE), -5);
    EXPECT_EQ(negative.integer(key::MINVALUE), 1);
    EXPECT_EQ(negative.integer(key::STARTVALUE), 1);
    EXPECT_EQ(parameterWithId(*filter, "fifty").integer(key::MAXVALUE), 50);
    EXPECT_EQ(parameterWithId(*filter, "plus").integer(key::CONTROL_MAX), 12);

    // No RangeMax, or one that is not a decimal integer: default range, no CONTROL_MAX.
    for (const char* id : { "none", "fraction", "spaced", "words", "missing" }) {
        SCOPED_TRACE(id);
        const Record& slider = parameterWithId(*filter, id);
        EXPECT_EQ(slider.type(), controlType::kTypeIntSlider);
        EXPECT_FALSE(slider.contains(key::CONTROL_MAX));
        EXPECT_TRUE(slider.holdsInteger(key::MAXVALUE));
        EXPECT_EQ(slider.integer(key::MAXVALUE), 1000);
    }

    // A later Name and a later RangeMax overwrite earlier ones.
    const Record& twice = parameterWithId(*filter, "twice");
    EXPECT_EQ(twice.string(key::CONTROL_NAME), QStringLiteral("Second Name"));
    EXPECT_EQ(twice.integer(key::CONTROL_MAX), 9);

    // RangeMax belongs to integer sliders only.
    EXPECT_FALSE(parameterWithId(*filter, "slider").contains(key::CONTROL_MAX));
    EXPECT_DOUBLE_EQ(parameterWithId(*filter, "slider").real(key::MAXVALUE), 1.0);

    // The limits of qint64, and names that are absent or empty.
    QTemporaryDir dir;
    const RecordPtr edges
        = detailsOf(writeDefinition(dir, QStringLiteral("edges.ffxml"), R"(<Filter><Components>
  <IntSliderControl id="lowest"><RangeMax value="-9223372036854775808"/></IntSliderControl>
  <IntSliderControl id="tooBig"><RangeMax value="9223372036854775808"/></IntSliderControl>
  <IntSliderControl id="sign"><RangeMax value="-"/></IntSliderControl>
  <SliderControl id="unnamed"/>
  <SliderControl id="blank"><Name/></SliderControl>
</Components></Filter>)"));
    EXPECT_EQ(
        parameterWithId(*edges, "lowest").integer(key::CONTROL_MAX), std::numeric_limits<qint64>::min());
    EXPECT_FALSE(parameterWithId(*edges, "tooBig").contains(key::CONTROL_MAX));
    EXPECT_FALSE(parameterWithId(*edges, "sign").contains(key::CONTROL_MAX));
    EXPECT_FALSE(parameterWithId(*edges, "unnamed").contains(key::CONTROL_NAME));
    EXPECT_EQ(parameterWithId(*edges, "blank").string(key::CONTROL_NAME, QStringLiteral("x")), QString());
}

TEST(DetailReader, CommentsTextAndNestedControlsAreNotParameters)
{
    const RecordPtr filter = detailsOf(oddFile(QStringLiteral("CommentsBetweenControls.ffxml")));
    EXPECT_EQ(ids(*filter->list(key::Components)),
        (QStringList {
            QStringLiteral("first"), QStringLiteral("second"), QStringLiteral("third"), kVariationsId }));
    // Text, a processing instruction, CDATA and comments between the presets are not presets.
    const QVariant count = filter->dict(key::Presets).value(key::PresetCount);
    EXPECT_EQ(count.typeId(), QMetaType::LongLong);
    EXPECT_EQ(count.toLongLong(), 4);
}

TEST(DetailReader, ReadingAgainGivesFreshComponentsAndResetsThePreset)
{
    const RecordPtr filter = detailsOf(oddFile(QStringLiteral("ControlWithoutId.ffxml")));
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
}

TEST(DetailReader, MissingSectionsLeaveTheirKeysUnset)
{
    QTemporaryDir dir;
    const RecordPtr bare = detailsOf(writeDefinition(dir, QStringLiteral("bare.ffxml"), "<Filter/>"));
    EXPECT_FALSE(bare->contains(key::Components));
    EXPECT_FALSE(bare->contains(key::Presets));
    EXPECT_EQ(bare->integer(key::ChoosenPreset, -1), 0);

    // Components without recognised controls: only the Variations row.
    const RecordPtr noControls = detailsOf(oddFile(QStringLiteral("nested/deeper/Lenient.ffxml")));
    EXPECT_EQ(ids(*noControls->list(key::Components)), QStringList { kVariationsId });
}
