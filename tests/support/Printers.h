#pragma once

// Readable Qt strings in GoogleTest messages: a QString as its text in
// quotes, a list of them as { "a", "b" } (without these, gtest prints the
// bytes of each QChar). Every test file gets this header (tests/CMakeLists.txt).

#include <QList>
#include <QString>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QList<QString>& list, std::ostream* os)
{
    *os << '{';
    for (qsizetype i = 0; i < list.size(); ++i) {
        *os << (i ? ", " : " ");
        PrintTo(list.at(i), os);
    }
    *os << (list.isEmpty() ? "}" : " }");
}
