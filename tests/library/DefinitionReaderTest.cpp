#include "library/DefinitionReader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>

using namespace quillon;

namespace {

const QString kOddDir = QStringLiteral(QUILLON_DATA_DIR "/odd");

QString oddFile(const QString& name)
{
    return kOddDir + QLatin1Char('/') + name;
}

QString writeDefinition(const QTemporaryDir& dir, const QString& name, const QByteArray& content)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        ADD_FAILURE() << "cannot write " << path.toStdString();
    return path;
}

RecordPtr chainRecordFor(const QString& path)
{
    RecordPtr filter = Record::create();
    filter->setString(key::path, path);
    return filter;
}

QStringList ids(const RecordList& components)
{
    QStringList result;
    for (const RecordPtr& parameter : components)
        result.append(parameter->string(key::CONTROL_ID));
    return result;
}

const RecordPtr& parameterWithId(const RecordList& components, const QString& id)
{
    static const RecordPtr none = Record::create();
    const auto it = std::find_if(components.begin(), components.end(),
        [&](const RecordPtr& p) { return p->string(key::CONTROL_ID) == id; });
    return it == components.end() ? none : *it;
}

bool holdsQint64(const Record& record, const QString& key)
{
    return record.value(key).typeId() == QMetaType::LongLong;
}

bool holdsDouble(const Record& record, const QString& key)
{
    return record.value(key).typeId() == QMetaType::Double;
}

} // namespace

TEST(LibraryReader, TakesNameAuthorAndFilterTypeOnly)
{
    QTemporaryDir dir;
    const QString path = writeDefinition(dir, QStringLiteral("glow.ffxml"), R"(<?xml version="1.0"?>
<Filter>
  <Information name-en="Soft Glow" author="Quillon Samples" description-en="Glows."/>
  <Components>
    <Result><FilterType value="1"/></Result>
    <SliderControl id="glow"><Name value-en="Glow"/></SliderControl>
  </Components>
  <Presets><Preset name-en="Default"/></Presets>
</Filter>)");

    const RecordPtr info = getFilterInfoWithPath(path);
    EXPECT_EQ(info->keys(), (QStringList { key::author, key::filtertype, key::name }));
    EXPECT_EQ(info->string(key::name), QStringLiteral("Soft Glow"));
    EXPECT_EQ(info->string(key::author), QStringLiteral("Quillon Samples"));
    EXPECT_EQ(info->string(key::filtertype), QStringLiteral("1"));
}

TEST(LibraryReader, UnusableFilesGiveAnEmptyRecord)
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
        const RecordPtr info = getFilterInfoWithPath(path);
        ASSERT_NE(info, nullptr);
        EXPECT_TRUE(info->isEmpty()) << path.toStdString();
    }
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
    EXPECT_TRUE(noName->contains(key::name));
    EXPECT_EQ(noName->string(key::name, QStringLiteral("fallback")), QString());
    EXPECT_EQ(noName->string(key::author), QStringLiteral("Anonymous Tester"));
    EXPECT_TRUE(noName->contains(key::filtertype));
    EXPECT_EQ(noName->string(key::filtertype, QStringLiteral("fallback")), QString());

    // Without Components/Result/FilterType the key stays unset.
    const RecordPtr noType = getFilterInfoWithPath(oddFile(QStringLiteral("ControlWithoutId.ffxml")));
    EXPECT_EQ(noType->string(key::name), QStringLiteral("Control Without Id"));
    EXPECT_FALSE(noType->contains(key::filtertype));
}

TEST(LibraryReader, LaterElementsWinAndOnlyDirectChildrenCount)
{
    // Two Information elements, three FilterTypes in two Results and one
    // nested too deep, an undefined entity and no declaration.
    const RecordPtr info = getFilterInfoWithPath(oddFile(QStringLiteral("nested/deeper/Lenient.ffxml")));
    EXPECT_EQ(info->string(key::name), QStringLiteral("Lenient & Late &nbsp;"));
    EXPECT_EQ(info->string(key::author), QStringLiteral("Late"));
    EXPECT_EQ(info->string(key::filtertype), QStringLiteral("1"));
}

TEST(LibraryReader, ReadsUtf8AndUtf16Names)
{
    QTemporaryDir dir;
    const QString utf8 = writeDefinition(dir, QStringLiteral("Café Crème.ffxml"),
        "<Filter><Information name-en=\"Caf\xc3\xa9 Cr\xc3\xa8me\"/></Filter>");
    EXPECT_EQ(getFilterInfoWithPath(utf8)->string(key::name), QStringLiteral("Café Crème"));

    const QString text = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"
                                        "<Filter><Information name-en=\"Ωmega\" author=\"Zoë\"/></Filter>");
    QByteArray utf16("\xff\xfe", 2);
    utf16.append(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    const RecordPtr info = getFilterInfoWithPath(writeDefinition(dir, QStringLiteral("omega.ffxml"), utf16));
    EXPECT_EQ(info->string(key::name), QStringLiteral("Ωmega"));
    EXPECT_EQ(info->string(key::author), QStringLiteral("Zoë"));
}

TEST(DetailReader, SkipsControlsWithoutIdAndAppendsTheVariationsRow)
{
    const RecordPtr filter = chainRecordFor(oddFile(QStringLiteral("ControlWithoutId.ffxml")));
    ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));

    const RecordListPtr components = filter->list(key::Components);
    ASSERT_NE(components, nullptr);
    ASSERT_EQ(ids(*components), (QStringList { QStringLiteral("a"), QStringLiteral("c"), kVariationsId }));

    const Record& angle = *components->at(0);
    EXPECT_EQ(angle.type(), controlType::kTypeAngle);
    EXPECT_EQ(angle.string(key::CONTROL_NAME), QStringLiteral("Angle A"));
    EXPECT_TRUE(holdsDouble(angle, key::MINVALUE) && holdsDouble(angle, key::MAXVALUE));
    EXPECT_DOUBLE_EQ(angle.real(key::MINVALUE), 0.0);
    EXPECT_DOUBLE_EQ(angle.real(key::MAXVALUE), 360.0);
    EXPECT_TRUE(holdsQint64(angle, key::ACTIVE) && holdsQint64(angle, key::POPSTATE));

    const Record& box = *components->at(1);
    EXPECT_EQ(box.type(), controlType::kTypeCheckbox);
    EXPECT_TRUE(holdsQint64(box, key::MINVALUE) && holdsQint64(box, key::MAXVALUE));
    EXPECT_EQ(box.integer(key::MAXVALUE), 1);

    const Record& variations = *components->back();
    EXPECT_EQ(variations.type(), controlType::kTypeVariations);
    EXPECT_EQ(variations.integer(key::MAXVALUE), 30000);

    EXPECT_EQ(presetCount(*filter), 1);
    EXPECT_TRUE(holdsQint64(*filter, key::ChoosenPreset));
    EXPECT_EQ(filter->integer(key::ChoosenPreset, -1), 0);
}

TEST(DetailReader, RangeMaxOfIntegerSliders)
{
    const RecordPtr filter = chainRecordFor(oddFile(QStringLiteral("RangeMaxValues.ffxml")));
    ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
    const RecordList& components = *filter->list(key::Components);

    const Record& negative = *parameterWithId(components, QStringLiteral("negative"));
    EXPECT_TRUE(holdsQint64(negative, key::CONTROL_MAX) && holdsQint64(negative, key::MAXVALUE));
    EXPECT_EQ(negative.integer(key::CONTROL_MAX), -5);
    EXPECT_EQ(negative.integer(key::MAXVALUE), -5);
    EXPECT_EQ(negative.integer(key::MINVALUE), 1);
    EXPECT_EQ(negative.integer(key::STARTVALUE), 1);

    EXPECT_EQ(parameterWithId(components, QStringLiteral("fifty"))->integer(key::MAXVALUE), 50);
    EXPECT_EQ(parameterWithId(components, QStringLiteral("plus"))->integer(key::CONTROL_MAX), 12);

    // No RangeMax, or one that is not a decimal integer: default range, no CONTROL_MAX.
    for (const char* id : { "none", "fraction", "spaced", "words", "missing" }) {
        const Record& slider = *parameterWithId(components, QString::fromLatin1(id));
        EXPECT_EQ(slider.type(), controlType::kTypeIntSlider) << id;
        EXPECT_FALSE(slider.contains(key::CONTROL_MAX)) << id;
        EXPECT_TRUE(holdsQint64(slider, key::MAXVALUE)) << id;
        EXPECT_EQ(slider.integer(key::MAXVALUE), 1000) << id;
    }

    // A later Name and a later RangeMax overwrite earlier ones.
    const Record& twice = *parameterWithId(components, QStringLiteral("twice"));
    EXPECT_EQ(twice.string(key::CONTROL_NAME), QStringLiteral("Second Name"));
    EXPECT_EQ(twice.integer(key::CONTROL_MAX), 9);

    // RangeMax belongs to integer sliders only.
    const Record& slider = *parameterWithId(components, QStringLiteral("slider"));
    EXPECT_FALSE(slider.contains(key::CONTROL_MAX));
    EXPECT_DOUBLE_EQ(slider.real(key::MAXVALUE), 1.0);
}

TEST(DetailReader, OutOfRangeRangeMaxIsNotAnInteger)
{
    QTemporaryDir dir;
    const QString path = writeDefinition(dir, QStringLiteral("big.ffxml"), R"(<Filter><Components>
  <IntSliderControl id="lowest"><RangeMax value="-9223372036854775808"/></IntSliderControl>
  <IntSliderControl id="tooBig"><RangeMax value="9223372036854775808"/></IntSliderControl>
  <IntSliderControl id="sign"><RangeMax value="-"/></IntSliderControl>
</Components></Filter>)");
    const RecordPtr filter = chainRecordFor(path);
    ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
    const RecordList& components = *filter->list(key::Components);
    EXPECT_EQ(parameterWithId(components, QStringLiteral("lowest"))->integer(key::CONTROL_MAX),
        std::numeric_limits<qint64>::min());
    EXPECT_FALSE(parameterWithId(components, QStringLiteral("tooBig"))->contains(key::CONTROL_MAX));
    EXPECT_FALSE(parameterWithId(components, QStringLiteral("sign"))->contains(key::CONTROL_MAX));
}

TEST(DetailReader, CommentsTextAndNestedControlsAreNotParameters)
{
    const RecordPtr filter = chainRecordFor(oddFile(QStringLiteral("CommentsBetweenControls.ffxml")));
    ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
    EXPECT_EQ(ids(*filter->list(key::Components)),
        (QStringList {
            QStringLiteral("first"), QStringLiteral("second"), QStringLiteral("third"), kVariationsId }));
    // Text, a processing instruction, CDATA and comments between the presets are not presets.
    const QVariant count = filter->dict(key::Presets).value(key::PresetCount);
    EXPECT_EQ(count.typeId(), QMetaType::LongLong);
    EXPECT_EQ(count.toLongLong(), 4);
}

TEST(DetailReader, ControlWithoutNameHasNoControlName)
{
    QTemporaryDir dir;
    const QString path = writeDefinition(dir, QStringLiteral("names.ffxml"), R"(<Filter><Components>
  <SliderControl id="unnamed"/>
  <SliderControl id="blank"><Name/></SliderControl>
</Components></Filter>)");
    const RecordPtr filter = chainRecordFor(path);
    ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
    const RecordList& components = *filter->list(key::Components);
    EXPECT_FALSE(parameterWithId(components, QStringLiteral("unnamed"))->contains(key::CONTROL_NAME));
    EXPECT_TRUE(parameterWithId(components, QStringLiteral("blank"))->contains(key::CONTROL_NAME));
    EXPECT_EQ(
        parameterWithId(components, QStringLiteral("blank"))->string(key::CONTROL_NAME, QStringLiteral("x")),
        QString());
}

TEST(DetailReader, ReadingAgainGivesFreshComponentsAndResetsThePreset)
{
    const RecordPtr filter = chainRecordFor(oddFile(QStringLiteral("ControlWithoutId.ffxml")));
    ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
    const RecordListPtr first = filter->list(key::Components);
    first->front()->setInteger(key::ACTIVE, 1);
    first->front()->setReal(key::STARTVALUE, 123.0);
    filter->setInteger(key::ChoosenPreset, 3);

    ASSERT_TRUE(loadXMLInfoWithFilterdata(*filter));
    const RecordListPtr second = filter->list(key::Components);
    ASSERT_NE(second, first);
    ASSERT_EQ(second->size(), first->size());
    EXPECT_NE(second->front(), first->front());
    EXPECT_EQ(second->front()->integer(key::ACTIVE), 0);
    EXPECT_DOUBLE_EQ(second->front()->real(key::STARTVALUE), 0.0);
    EXPECT_EQ(filter->integer(key::ChoosenPreset), 0);
    // The old list is left as it was, for whoever still holds it.
    EXPECT_EQ(first->front()->integer(key::ACTIVE), 1);
}

TEST(DetailReader, MissingSectionsLeaveTheirKeysUnset)
{
    QTemporaryDir dir;
    const RecordPtr bare = chainRecordFor(writeDefinition(dir, QStringLiteral("bare.ffxml"), "<Filter/>"));
    ASSERT_TRUE(loadXMLInfoWithFilterdata(bare));
    EXPECT_FALSE(bare->contains(key::Components));
    EXPECT_FALSE(bare->contains(key::Presets));
    EXPECT_EQ(bare->integer(key::ChoosenPreset, -1), 0);

    // Components without recognised controls: only the Variations row.
    const RecordPtr noControls = chainRecordFor(oddFile(QStringLiteral("nested/deeper/Lenient.ffxml")));
    ASSERT_TRUE(loadXMLInfoWithFilterdata(noControls));
    EXPECT_EQ(ids(*noControls->list(key::Components)), QStringList { kVariationsId });
}

TEST(DetailReader, UnusableDefinitionLeavesTheRecordUnchanged)
{
    for (const QString& name : { QStringLiteral("Rejected.ffxml"), QStringLiteral("LowerCaseRoot.ffxml"),
             QStringLiteral("Empty.ffxml"), QStringLiteral("Folder Named.ffxml"),
             QStringLiteral("no-such-file.ffxml") }) {
        const RecordPtr filter = chainRecordFor(oddFile(name));
        filter->setString(key::name, QStringLiteral("Kept"));
        filter->setInteger(key::ChoosenPreset, 2);
        const QMap<QString, QVariant> before = filter->values();
        EXPECT_FALSE(loadXMLInfoWithFilterdata(filter)) << name.toStdString();
        EXPECT_EQ(filter->values(), before) << name.toStdString();
    }

    Record withoutPath;
    EXPECT_FALSE(loadXMLInfoWithFilterdata(withoutPath));
    EXPECT_TRUE(withoutPath.isEmpty());
    EXPECT_FALSE(loadXMLInfoWithFilterdata(RecordPtr()));
}

TEST(ReaderHelpers, AttributesReadAsUtf8AndAbsentOnesAsEmpty)
{
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<C id=\"s\xc3\xbc\xc3\x9f\" other=\"\"/>"));
    const pugi::xml_node control = document.first_child();
    EXPECT_EQ(getIDFromNodeWithInelement(control), QStringLiteral("süß"));
    EXPECT_EQ(getAttributeFromNodeWithInelement(control, "other"), QString());
    EXPECT_EQ(getAttributeFromNodeWithInelement(control, "absent"), QString());
    EXPECT_EQ(getIDFromNodeWithInelement(pugi::xml_node()), QString());
}
