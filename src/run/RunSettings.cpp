#include "run/RunSettings.h"

#include "run/SettingTable.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <system_error>

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
    // Only a decimal number counts ("0x10" is 0, "inf" and "nan" are no
    // number, as a text field's doubleValue has them): the longest prefix of
    // sign, digits, point, digits and exponent is converted.
    const QByteArray bytes = trimmedLeading(text);
    const auto isDigit
        = [&bytes](qsizetype at) { return at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9'; };
    qsizetype i = 0;
    if (i < bytes.size() && (bytes[i] == '+' || bytes[i] == '-'))
        ++i;
    // The decimal exponent of the leading significant digit, for telling an
    // overflow from an underflow below.
    qint64 magnitude = 0;
    bool significant = false;
    qsizetype digits = 0;
    for (; isDigit(i); ++i, ++digits) {
        significant = significant || bytes[i] != '0';
        if (significant)
            ++magnitude;
    }
    if (i < bytes.size() && bytes[i] == '.') {
        for (++i; isDigit(i); ++i, ++digits) {
            significant = significant || bytes[i] != '0';
            if (!significant)
                --magnitude;
        }
    }
    if (digits == 0)
        return std::nullopt;
    if (i < bytes.size() && (bytes[i] == 'e' || bytes[i] == 'E')) {
        qsizetype at = i + 1;
        const bool negativeExponent = at < bytes.size() && bytes[at] == '-';
        if (at < bytes.size() && (bytes[at] == '+' || bytes[at] == '-'))
            ++at;
        if (isDigit(at)) {
            qint64 exponent = 0;
            for (i = at; isDigit(i); ++i)
                exponent = std::min<qint64>(exponent * 10 + (bytes[i] - '0'), 1'000'000'000);
            magnitude += negativeExponent ? -exponent : exponent;
        }
    }
    // from_chars, unlike strtod, ignores the C locale the application runs in
    // (a German locale would stop strtod at the ".").
    const qsizetype start = bytes.startsWith('+') ? 1 : 0; // from_chars takes no "+"
    double value = 0.0;
    const std::from_chars_result parsed
        = std::from_chars(bytes.constData() + start, bytes.constData() + i, value);
    if (parsed.ec == std::errc::result_out_of_range) {
        // Too small gives zero, too large infinity, keeping the sign.
        value = magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0;
        return bytes.startsWith('-') ? -value : value;
    }
    if (parsed.ec != std::errc())
        return std::nullopt;
    return value;
}

RunSettings::RunSettings()
{
    for (const SettingDefinition& row : settingTable())
        row.set(*this, row.defaultValue);
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

qint64 frameLimit(FrameStyle style)
{
    switch (style) {
    case FrameStyle::FourDigit:
        return 9999;
    case FrameStyle::Letter:
        return 25;
    case FrameStyle::Plain:
        break;
    }
    return 999;
}

QString frameStyleName(FrameStyle style)
{
    switch (style) {
    case FrameStyle::FourDigit:
        return QStringLiteral("four-digit");
    case FrameStyle::Letter:
        return QStringLiteral("letter");
    case FrameStyle::Plain:
        break;
    }
    return QStringLiteral("plain");
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
