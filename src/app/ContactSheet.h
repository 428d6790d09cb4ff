#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>

namespace quillon {

// One tile of a contact sheet: the image file and the lines under it (its
// name first, then one line per varying value).
struct ContactTile {
    QString path;
    QStringList label;
};

struct RunPlan;

// The tiles of a plan's final outputs, in plan order.
QList<ContactTile> contactTilesFor(const RunPlan& plan);

// Draws every tile into one image, in rows of about the square root of the
// count, each image scaled into a square cell with its label below. Images
// that cannot be read leave an empty, outlined cell. Needs a
// QGuiApplication for the fonts; runs on any thread. Stops early (with an
// unfinished sheet) once `aborted` is set.
QImage drawContactSheet(const QList<ContactTile>& tiles, const std::atomic<bool>* aborted = nullptr);

// Draws the sheet and writes it as PNG with QSaveFile; false with *error.
bool saveContactSheet(const QString& path, const QList<ContactTile>& tiles, QString* error = nullptr);

} // namespace quillon
