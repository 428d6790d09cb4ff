#include "StandinRender.h"

#include "StandinTasks.h"

#include <QColor>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace quillon::standin {

namespace {

// Input images larger than this many pixels are not loaded.
constexpr qint64 kMaxInputPixels = qint64(kMaxSide) * kMaxSide;

quint64 fnv1a(const QByteArray& bytes)
{
    quint64 hash = 14695981039346656037ULL;
    for (const char c : bytes) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 1099511628211ULL;
    }
    return hash;
}

quint64 mix(quint64 value)
{
    value ^= value >> 33;
    value *= 0xff51afd7ed558ccdULL;
    value ^= value >> 33;
    value *= 0xc4ceb9fe1a85ec53ULL;
    value ^= value >> 33;
    return value;
}

struct Pattern {
    QColor first;
    QColor second;
    double cosA = 1.0;
    double sinA = 0.0;
    double period = 16.0;
    int mapType = 0;
};

Pattern patternFor(const RunSpec& run)
{
    const QByteArray key = (QStringLiteral("v=") + run.variation + QStringLiteral(";m=") + run.mapType
        + QStringLiteral(";") + run.controls.join(QLatin1Char(';')))
                               .toUtf8();
    const quint64 seed = mix(fnv1a(key));
    Pattern pattern;
    pattern.first = QColor::fromHsv(static_cast<int>(seed % 360), 160 + static_cast<int>((seed >> 9) % 96),
        180 + static_cast<int>((seed >> 17) % 76));
    pattern.second = QColor::fromHsv(static_cast<int>((seed >> 24) % 360),
        120 + static_cast<int>((seed >> 33) % 136), 40 + static_cast<int>((seed >> 41) % 120));
    const double angle = static_cast<double>((seed >> 48) % 180) * std::numbers::pi / 180.0;
    pattern.cosA = std::cos(angle);
    pattern.sinA = std::sin(angle);
    bool ok = false;
    const qint64 variation = run.variation.toLongLong(&ok);
    pattern.period
        = 6.0 + static_cast<double>((ok ? std::abs(variation % 61) : 0) + static_cast<qint64>(seed % 7));
    pattern.mapType = std::clamp(run.mapType.toInt(), 0, 9);
    return pattern;
}

QRgb patternPixel(const Pattern& pattern, int x, int y)
{
    const double along = (x * pattern.cosA + y * pattern.sinA) / pattern.period;
    const double t = along - std::floor(along);
    const double weight = t < 0.5 ? t * 2.0 : (1.0 - t) * 2.0;
    auto blend = [weight](int a, int b) { return static_cast<int>(a + (b - a) * weight); };
    int r = blend(pattern.first.red(), pattern.second.red());
    int g = blend(pattern.first.green(), pattern.second.green());
    int b = blend(pattern.first.blue(), pattern.second.blue());
    // Each map kind looks different: grey maps, bluish normals, rotated channels.
    switch (pattern.mapType) {
    case 0:
        break;
    case 4: {
        r = 128 + (r - 128) / 2;
        g = 128 + (g - 128) / 2;
        b = 255;
        break;
    }
    default:
        if (pattern.mapType % 2 == 1) {
            const int grey = (r * 11 + g * 16 + b * 5) / 32;
            r = g = b = std::clamp(grey + pattern.mapType * 9, 0, 255);
        } else {
            std::swap(r, b);
            g = 255 - g;
        }
        break;
    }
    return qRgb(r, g, b);
}

QImage loadInput(const QString& path)
{
    if (path.isEmpty())
        return {};
    QImageReader reader(path);
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() > kMaxInputPixels)
        return {};
    QImage image = reader.read();
    if (image.isNull())
        return {};
    return image.convertToFormat(QImage::Format_ARGB32);
}

} // namespace

int sideFromText(const QString& text)
{
    bool ok = false;
    const qint64 value = text.trimmed().toLongLong(&ok);
    if (!ok)
        return kDefaultSide;
    return static_cast<int>(std::clamp<qint64>(value, kMinSide, kMaxSide));
}

QImage renderTask(const TaskSpec& task, const RunSpec& run)
{
    const Pattern pattern = patternFor(run);
    QImage image = loadInput(task.imagePath);
    if (image.isNull()) {
        image = QImage(sideFromText(task.widthText), sideFromText(task.heightText), QImage::Format_ARGB32);
        if (image.isNull())
            return image;
        for (int y = 0; y < image.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < image.width(); ++x)
                line[x] = patternPixel(pattern, x, y);
        }
        return image;
    }
    // The effect: half the input, half the pattern, so the source stays visible.
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb in = line[x];
            const QRgb over = patternPixel(pattern, x, y);
            line[x] = qRgba((qRed(in) + qRed(over)) / 2, (qGreen(in) + qGreen(over)) / 2,
                (qBlue(in) + qBlue(over)) / 2, qAlpha(in));
        }
    }
    return image;
}

bool writeResult(const QImage& image, const QString& path, const QString& formatId, QString* error)
{
    if (image.isNull()) {
        *error = QStringLiteral("nothing rendered for \"%1\"").arg(path);
        return false;
    }
    QByteArray format = formatId.trimmed().toLower().toLatin1();
    if (format == "jpg")
        format = "jpeg";
    if (format == "tif")
        format = "tiff";
    if (format.isEmpty() || !QImageWriter::supportedImageFormats().contains(format))
        format = "png";
    const QImage out = format == "jpeg" ? image.convertToFormat(QImage::Format_RGB32) : image;

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("cannot write \"%1\": %2").arg(path, file.errorString());
        return false;
    }
    QImageWriter writer(&file, format);
    if (!writer.write(out)) {
        *error = QStringLiteral("cannot write \"%1\": %2").arg(path, writer.errorString());
        file.cancelWriting();
        return false;
    }
    // commit() ignores a failure to write the last buffered bytes.
    if (!file.flush()) {
        *error = QStringLiteral("cannot write \"%1\": %2").arg(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        *error = QStringLiteral("cannot write \"%1\": %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace quillon::standin
