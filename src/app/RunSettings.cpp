#include "app/RunSettings.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace quillon {

namespace {

// The numeric prefix of the text as Latin-1 bytes, with leading white space
// skipped; strtoll/strtod do the rest.
QByteArray trimmedLeading(const QString& text)
{
    QByteArray bytes = text.toLatin1();
    qsizetype i = 0;
    while (i < bytes.size() && (bytes[i] == ' ' || bytes[i] == '\t' || bytes[i] == '\n' || bytes[i] == '\r'))
        ++i;
    return bytes.mid(i);
}

} // namespace

std::optional<qint64> leadingInteger(const QString& text)
{
    const QByteArray bytes = trimmedLeading(text);
    const char* begin = bytes.constData();
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(begin, &end, 10);
    if (end == begin)
        return std::nullopt;
    return static_cast<qint64>(value); // strtoll saturates on overflow
}

std::optional<double> leadingReal(const QString& text)
{
    const QByteArray bytes = trimmedLeading(text);
    const char* begin = bytes.constData();
    char* end = nullptr;
    const double value = std::strtod(begin, &end);
    if (end == begin || std::isnan(value))
        return std::nullopt;
    return value;
}

qint64 RunSettings::frameCount() const
{
    if (const auto whole = leadingInteger(frameCountText))
        return *whole;
    return 0;
}

std::optional<double> RunSettings::frameCountReal() const
{
    return leadingReal(frameCountText);
}

QString getPNGBitDepth(int code)
{
    return code == 0 ? QStringLiteral("8") : QStringLiteral("16");
}

QString getPNGCompression(int code)
{
    switch (code) {
    case 0:
        return QStringLiteral("NONE");
    case 1:
        return QStringLiteral("FAST");
    default:
        return QStringLiteral("BEST");
    }
}

QString getTIFFBitDepth(int code)
{
    switch (code) {
    case 0:
        return QStringLiteral("8");
    case 1:
        return QStringLiteral("16");
    default:
        return QStringLiteral("24");
    }
}

QString getTIFFCompression(int code)
{
    switch (code) {
    case 0:
        return QStringLiteral("NONE");
    case 1:
        return QStringLiteral("LZW");
    default:
        return QStringLiteral("DEFLATE");
    }
}

QString getTGABitDepth(int code)
{
    return code == 0 ? QStringLiteral("24") : QStringLiteral("32");
}

} // namespace quillon
