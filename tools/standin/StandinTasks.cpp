#include "StandinTasks.h"

#include <QFile>
#include <QFileInfo>

#include <pugixml.hpp>

#include <cstring>

namespace quillon::standin {

namespace {

constexpr qint64 kMaxRunFileBytes = qint64(16) * 1024 * 1024;

QString attribute(const pugi::xml_node& node, const char* name)
{
    return QString::fromUtf8(node.attribute(name).value());
}

} // namespace

bool readSmallFile(const QString& path, qint64 maxBytes, QByteArray* bytes, QString* error)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists()) {
        *error = QStringLiteral("file not found: \"%1\"").arg(path);
        return false;
    }
    if (info.isDir()) {
        *error = QStringLiteral("\"%1\" is a directory").arg(path);
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read \"%1\": %2").arg(path, file.errorString());
        return false;
    }
    *bytes = file.read(maxBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        *error = QStringLiteral("cannot read \"%1\": %2").arg(path, file.errorString());
        return false;
    }
    if (bytes->size() > maxBytes) {
        *error = QStringLiteral("\"%1\" is too large").arg(path);
        return false;
    }
    return true;
}

bool parseControlFile(const QByteArray& bytes, ControlSpec* spec, QString* error)
{
    pugi::xml_document doc;
    const pugi::xml_parse_result parsed
        = doc.load_buffer(bytes.constData(), static_cast<std::size_t>(bytes.size()), pugi::parse_default);
    if (!parsed) {
        *error
            = QStringLiteral("the control file is not XML: %1").arg(QString::fromUtf8(parsed.description()));
        return false;
    }
    const pugi::xml_node tasks = doc.child("Tasks");
    if (!tasks) {
        *error = QStringLiteral("the control file has no Tasks element");
        return false;
    }
    spec->tasks.clear();
    for (const pugi::xml_node& task : tasks.children("Task")) {
        TaskSpec item;
        const pugi::xml_node image = task.child("Image");
        item.imagePath = attribute(image, "value");
        item.widthText = attribute(image, "width");
        item.heightText = attribute(image, "height");
        item.resultPath = attribute(task.child("Result"), "path");
        item.filterPath = attribute(task.child("Filter"), "value");
        spec->tasks.push_back(item);
    }
    spec->defaultFormat = attribute(
        tasks.child("GlobalSettings").child("BitmapFormatOptions").child("DefaultFormat"), "value");
    return true;
}

bool readRunFile(const QString& path, RunSpec* spec, QString* error)
{
    QByteArray bytes;
    if (!readSmallFile(path, kMaxRunFileBytes, &bytes, error))
        return false;
    pugi::xml_document doc;
    const pugi::xml_parse_result parsed
        = doc.load_buffer(bytes.constData(), static_cast<std::size_t>(bytes.size()), pugi::parse_default);
    if (!parsed) {
        *error = QStringLiteral("the filter \"%1\" is not XML: %2")
                     .arg(path, QString::fromUtf8(parsed.description()));
        return false;
    }
    // The run file holds one preset; whatever its element name, the first one counts.
    const pugi::xml_node preset = doc.document_element().child("Presets").first_child();
    const pugi::xml_node settings = preset.child("Settings");
    spec->variation = attribute(settings, "variation");
    spec->mapType = attribute(settings, "map_type");
    spec->controls.clear();
    for (const pugi::xml_node& control : preset.child("Controls").children()) {
        if (control.type() != pugi::node_element)
            continue;
        QString value;
        for (const pugi::xml_node& child : control.children()) {
            if (std::strcmp(child.name(), "Value") == 0 || std::strcmp(child.name(), "Checked") == 0)
                value = attribute(child, "value");
        }
        spec->controls.append(attribute(control, "id") + QLatin1Char('=') + value);
    }
    return true;
}

} // namespace quillon::standin
