#include "step/XmlFiles.h"

#include "library/DefinitionReader.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

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

// Puts the file at `source` in the place of `target` in one step: a reader
// sees the old file or the new one, never neither. A rename over an existing
// file makes ext4 write the new file out to the disk at once (its guard for
// programs that skip fsync), which cost more than writing a whole task file;
// exchanging the two names does not, and the old file, now under the
// temporary name, is removed before it ever reaches the disk.
bool replaceFile(const QByteArray& source, const QByteArray& target)
{
#if defined(RENAME_EXCHANGE)
    struct stat existing {};
    // Only a regular file is exchanged: a directory or a link in the way is
    // left to rename, which refuses the one and replaces the other.
    if (::lstat(target.constData(), &existing) == 0 && S_ISREG(existing.st_mode)
        && ::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_EXCHANGE) == 0) {
        ::unlink(source.constData());
        return true;
    }
#endif
    return std::rename(source.constData(), target.constData()) == 0;
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
    constexpr unsigned int options = pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_doctype;
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
    ByteArrayWriter writer(bytes);
    // Indentation grows with depth: a document nested 100,000 levels deep
    // would take some 20 GB pretty-printed. Such a document is written
    // without indentation; it reads the same.
    const unsigned int format
        = indentationBytes(document) > kMaxIndentationBytes ? pugi::format_raw : pugi::format_indent;
    document.save(writer, "  ", format, pugi::encoding_utf8);
    return bytes;
}

bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error)
{
    // The render tool's files live only for one run: a reader must never see
    // half a file, but nothing needs them after a crash. So they are written
    // to a new file beside the target that then takes its place, without the
    // flush to the disk that QSaveFile makes before its rename (that flush
    // cost more than writing a whole run file).
    static std::atomic<quint64> counter{0};
    const QString temporaryStem = path + QStringLiteral(".quillon-%1-").arg(QCoreApplication::applicationPid());
    QFile temporary;
    bool opened = false;
    for (int attempt = 0; attempt < 16 && !opened; ++attempt) {
        temporary.setFileName(temporaryStem + QString::number(counter.fetch_add(1)));
        opened = temporary.open(QIODevice::WriteOnly | QIODevice::NewOnly);
        // Only a name already taken is worth another try.
        if (!opened && !QFileInfo::exists(temporary.fileName()))
            break;
    }
    if (!opened) {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(path, temporary.errorString());
        return false;
    }
    const bool written = temporary.write(bytes) == bytes.size() && temporary.flush();
    temporary.close();
    QString problem;
    if (!written || temporary.error() != QFileDevice::NoError)
        problem = temporary.errorString();
    else if (!replaceFile(QFile::encodeName(temporary.fileName()), QFile::encodeName(path)))
        problem = QString::fromLocal8Bit(std::strerror(errno));
    if (problem.isEmpty())
        return true;
    QFile::remove(temporary.fileName());
    if (error)
        *error = QStringLiteral("cannot write %1: %2").arg(path, problem);
    return false;
}

void printConsoleLine(const QString& line)
{
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

} // namespace quillon
