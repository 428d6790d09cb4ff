#pragma once

#include "library/Record.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace pugi {
class xml_node;
}

namespace quillon {

// Reading of filter definitions (.ffxml). Both readers parse the whole file
// with pugixml and keep nothing of the tree once they return; they are
// reentrant and run on any thread.

// Definition files larger than this are not read; a real one holds a few
// kilobytes.
inline constexpr qint64 kMaxDefinitionBytes = qint64(128) * 1024 * 1024;

// Reads a definition file whole into `bytes`. Fails (false, and a reason in
// `error`) when the path does not name a regular file (a pipe or a device
// would block or never end), when the file is larger than
// kMaxDefinitionBytes, or when it cannot be read.
bool readDefinitionFile(const QString& path, QByteArray& bytes, QString* error = nullptr);

// Why the file at `path` is not a usable filter definition, in words for
// the user ("it is not XML: ... at line 3", "it has no Presets element");
// empty when it is one.
QString definitionProblem(const QString& path);

// The library reader: a new record with "name", "author" and, when the
// definition has Components/Result/FilterType, "filtertype". The record is
// empty when the file cannot be read or parsed or its root is not `Filter`;
// it lacks "name" when the definition has no `Information` element.
RecordPtr getFilterInfoWithPath(const QString& path);

// The detail reader: reads the definition at the record's "path" and sets
// "Components" (the controls in document order, then the Variations row),
// "Presets" ({"PresetCount": n}) and "ChoosenPreset" 0 in place. Returns
// false and leaves the record unchanged when the definition is unusable.
bool loadXMLInfoWithFilterdata(Record& filterData);
bool loadXMLInfoWithFilterdata(const RecordPtr& filterData);

// The pieces of the readers, for a parsed definition.

// `Information`: "author" and "name" (from `name-en`), empty when absent.
void processInformationNodeWithInnode(const pugi::xml_node& innode, Record& filterInfo);
// `Components`: "filtertype" from each Result/FilterType child, the last one
// winning; unset when there is none.
void processFilterTypeNodeWithInnode(const pugi::xml_node& innode, Record& filterInfo);
// `Components`: one parameter record per direct control child with a
// non-empty id, then the Variations row.
RecordListPtr processComponentsNodeWithInnode(const pugi::xml_node& innode);
// `Presets`: {"PresetCount": number of element children}.
QVariantMap processPresetsNodeWithInnode(const pugi::xml_node& innode);

// The English names of the definition's presets in preset order, an empty
// string for a preset without one; empty when the file cannot be read.
QStringList presetNamesWithPath(const QString& path);

// An attribute's value; the empty string when the attribute is absent.
QString getAttributeFromNodeWithInelement(const pugi::xml_node& inelement, const char* attribute);
// The `id` attribute, empty when absent.
QString getIDFromNodeWithInelement(const pugi::xml_node& inelement);

} // namespace quillon
