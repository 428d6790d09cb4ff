#include "step/XmlFiles.h"

#include "library/DefinitionReader.h"
#include "run/Console.h"

#include <QFile>

#include <cstdio>

namespace quillon {

namespace {

// Thrown by a ByteArrayWriter whose output passed its limit, to stop the
// save; caught in serializeXml.
struct OutputLimitReached { };

class ByteArrayWriter final : public pugi::xml_writer {
public:
    // A negative limit is no limit.
    ByteArrayWriter(QByteArray& target, qsizetype limit)
        : m_target(target)
        , m_limit(limit)
    {
    }
    void write(const void* data, size_t size) override
    {
        if (m_limit >= 0 && m_target.size() + static_cast<qsizetype>(size) > m_limit)
            throw OutputLimitReached();
        m_target.append(static_cast<const char*>(data), static_cast<qsizetype>(size));
    }

private:
    QByteArray& m_target;
    qsizetype m_limit;
};

constexpr quint64 kMaxIndentationBytes = 16 * 1024 * 1024;

// The bytes that two-space indentation adds to the document, counted up to
// just past kMaxIndentationBytes. Walks the tree without recursion.
quint64 indentationBytes(const pugi::xml_document& document)
{
    quint64 total = 0;
    quint64 depth = 0;
    pugi::xml_node node = document.first_child();
    while (node) {
        total += 2 * 2 * depth; // before the start tag and before the end tag
        if (total > kMaxIndentationBytes)
            return total;
        if (node.first_child()) {
            node = node.first_child();
            ++depth;
            continue;
        }
        while (!node.next_sibling()) {
            if (depth == 0)
                return total;
            node = node.parent();
            --depth;
        }
        node = node.next_sibling();
    }
    return total;
}

} // namespace

bool loadXmlFile(pugi::xml_document& document, const QString& path, QString* error, QByteArray* storage)
{
    QByteArray local;
    QByteArray& bytes = storage ? *storage : local;
    if (!readDefinitionFile(path, bytes, error))
        return false;
    // Comments, processing instructions and the document type are kept, so a
    // run file is the whole definition re-serialised; only the declaration is
    // dropped (serializeXml writes its own).
    constexpr unsigned int options
        = pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_doctype;
    const pugi::xml_parse_result result = storage
        ? document.load_buffer_inplace(bytes.data(), static_cast<size_t>(bytes.size()), options)
        : document.load_buffer(bytes.constData(), static_cast<size_t>(bytes.size()), options);
    if (!result || !document.document_element()) {
        if (error)
            *error = QStringLiteral("cannot parse %1: %2 at offset %3")
                         .arg(path, QString::fromUtf8(result.description()))
                         .arg(result.offset);
        return false;
    }
    return true;
}

QByteArray serializeXml(pugi::xml_document& document, qsizetype expectedSize)
{
    for (pugi::xml_node node = document.first_child(); node;) {
        const pugi::xml_node next = node.next_sibling();
        if (node.type() == pugi::node_declaration)
            document.remove_child(node);
        node = next;
    }
    pugi::xml_node declaration = document.prepend_child(pugi::node_declaration);
    declaration.append_attribute("version").set_value("1.0");
    declaration.append_attribute("encoding").set_value("UTF-8");

    QByteArray bytes;
    if (expectedSize > 0)
        bytes.reserve(expectedSize);
    // Indentation grows with depth: a document nested 100,000 levels deep
    // would take some 20 GB pretty-printed. Such a document is written
    // without indentation; it reads the same. Its indentation can only pass
    // kMaxIndentationBytes when the indented output does, so the tree is
    // walked to count it only for outputs that large: for the others the
    // walk cost a sixth of a run file's time.
    try {
        ByteArrayWriter writer(bytes, static_cast<qsizetype>(kMaxIndentationBytes));
        document.save(writer, "  ", pugi::format_indent, pugi::encoding_utf8);
        return bytes;
    } catch (const OutputLimitReached&) {
        bytes.clear();
    }
    ByteArrayWriter writer(bytes, -1);
    const unsigned int format
        = indentationBytes(document) > kMaxIndentationBytes ? pugi::format_raw : pugi::format_indent;
    document.save(writer, "  ", format, pugi::encoding_utf8);
    return bytes;
}

void printConsoleLine(const QString& line)
{
    consoleLine(lcProblems(), line);
}

pugi::xml_node elementChildAt(pugi::xml_node parent, qint64 index)
{
    if (index < 0)
        return {};
    qint64 i = 0;
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element)
            continue;
        if (i++ == index)
            return child;
    }
    return {};
}

} // namespace quillon
