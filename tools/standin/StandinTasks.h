#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace quillon::standin {

// One Task element of a control file.
struct TaskSpec {
    QString imagePath;
    QString widthText;
    QString heightText;
    QString resultPath;
    QString filterPath;
};

struct ControlSpec {
    std::vector<TaskSpec> tasks;
    QString defaultFormat; // the DefaultFormat identifier, e.g. "PNG"
};

// What a run file's single preset says, reduced to what the picture depends on.
struct RunSpec {
    QString variation;
    QString mapType;
    QStringList controls; // "id=value" in document order
};

// Parses a control file's bytes; false with a message when it is not one.
bool parseControlFile(const QByteArray& bytes, ControlSpec* spec, QString* error);

// Reads a run file; false with a message when it cannot be read or parsed.
bool readRunFile(const QString& path, RunSpec* spec, QString* error);

// Reads a whole file of at most maxBytes; false with a message otherwise.
bool readSmallFile(const QString& path, qint64 maxBytes, QByteArray* bytes, QString* error);

} // namespace quillon::standin
