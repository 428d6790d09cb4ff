#pragma once

#include <QByteArray>
#include <QString>

#include <pugixml.hpp>

namespace quillon {

// Reads an XML file with pugixml's default (forgiving) parse options,
// keeping comments, processing instructions and the document type. On
// failure returns false and, when `error` is given, says why. With `storage`
// the document is parsed in place, in the file's bytes kept there: it must
// outlive the document and stay untouched.
bool loadXmlFile(pugi::xml_document& document, const QString& path, QString* error = nullptr,
    QByteArray* storage = nullptr);

// Serialises a document with a leading declaration (version "1.0", encoding
// "UTF-8"), two-space indentation and self-closing empty elements. Any
// declaration already in the document is replaced. A document so deeply
// nested that its indentation alone would pass 16 MB is written without
// indentation. `expectedSize`, when known, saves the growing of the result.
QByteArray serializeXml(pugi::xml_document& document, qsizetype expectedSize = 0);

// Appends the attribute `name` with `value` (it goes last).
inline void setAttribute(pugi::xml_node element, const char* name, const QString& value)
{
    element.append_attribute(name).set_value(value.toUtf8().constData());
}

// Removes the attribute and appends it again, so it ends up last.
inline void rewriteAttribute(pugi::xml_node element, const char* name, const QString& value)
{
    element.remove_attribute(name);
    setAttribute(element, name, value);
}

// An option element: `name` with the one attribute value="...".
inline void appendOption(pugi::xml_node parent, const char* name, const QString& value)
{
    setAttribute(parent.append_child(name), "value", value);
}

// One line about a problem on standard output, flushed at once.
void printConsoleLine(const QString& line);

// The element child at `index`, counting elements only; null beyond the end.
pugi::xml_node elementChildAt(pugi::xml_node parent, qint64 index);

} // namespace quillon
