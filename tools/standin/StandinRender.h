#pragma once

#include <QImage>
#include <QString>

namespace quillon::standin {

struct RunSpec;
struct TaskSpec;

// Canvas size bounds and the size used when the texts are not numbers.
inline constexpr int kMinSide = 1;
inline constexpr int kMaxSide = 8192;
inline constexpr int kDefaultSide = 600;

// A side length from the control file's text: 600 when it is not a number,
// otherwise clamped to 1..8192.
int sideFromText(const QString& text);

// Renders the task: the input image with an effect when it loads, otherwise a
// canvas of the task's size. The pixels depend on the variation, the control
// values and the map kind.
QImage renderTask(const TaskSpec& task, const RunSpec& run);

// Writes the image to path in the format named by the identifier (JPEG, PNG,
// TIFF, TGA, BMP, EXR, PFM); formats Qt cannot write get PNG bytes. Atomic.
bool writeResult(const QImage& image, const QString& path, const QString& formatId, QString* error);

} // namespace quillon::standin
