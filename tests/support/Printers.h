#pragma once

// Readable Qt strings in GoogleTest messages: a QString as its text in
// quotes (without this, gtest prints the bytes of each QChar); a list of them
// then prints as { "a", "b" }. Every test file gets this header
// (tests/CMakeLists.txt).

#include <QString>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}
