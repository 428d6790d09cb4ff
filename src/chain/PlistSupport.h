#pragma once

#include "run/Console.h"

// What the chain file's reader and writer share: ownership of libplist
// nodes and buffers, the date epoch, and their small reporting helpers.

#include <QString>

#include <plist/plist.h>

#include <cstdio>
#include <memory>

namespace quillon::plistsupport {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
// Owns a node tree until it is released into a parent container.
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

struct XmlBufferDeleter {
    void operator()(char* buffer) const { plist_to_xml_free(buffer); }
};

// Property-list dates count seconds from 2001-01-01 00:00 UTC.
inline constexpr qint64 kPlistEpochOffset = 978307200;

inline bool setError(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

// One line on standard output, flushed at once (unless file lines are off).
inline void printLine(const char* text)
{
    consoleLine(lcFiles(), QString::fromLatin1(text));
}

} // namespace quillon::plistsupport
