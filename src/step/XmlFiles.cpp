#include "step/XmlFiles.h"

#include <QFile>
#include <QSaveFile>

#include <cstdio>

namespace quillon {

namespace {

class ByteArrayWriter final : public pugi::xml_writer {
public:
    explicit ByteArrayWriter(QByteArray& target)
        : m_target(target)
    {
    }
    void write(const void* data, size_t size) override
    {
        m_target.append(static_cast<const char*>(data), static_cast<qsizetype>(size));
    }

private:
    QByteArray& m_target;
};

} // namespace

bool loadXmlFile(pugi::xml_document& document, const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot open %1: %2").arg(path, file.errorString());
        return false;
    }
    const QByteArray bytes = file.readAll();
    const pugi::xml_parse_result result
        = document.load_buffer(bytes.constData(), static_cast<size_t>(bytes.size()), pugi::parse_default);
    if (!result || !document.document_element()) {
        if (error)
            *error = QStringLiteral("cannot parse %1: %2 at offset %3")
                         .arg(path, QString::fromUtf8(result.description()))
                         .arg(result.offset);
        return false;
    }
    return true;
}

QByteArray serializeXml(pugi::xml_document& document)
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
    ByteArrayWriter writer(bytes);
    document.save(writer, "  ", pugi::format_indent, pugi::encoding_utf8);
    return bytes;
}

bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    // Without commit() the temporary file is discarded when `file` goes away.
    const bool written
        = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    if (!written && error)
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return written;
}

void printConsoleLine(const QString& line)
{
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

} // namespace quillon
