#pragma once

#include <QLoggingCategory>
#include <QString>

namespace quillon {

// The lines a run prints on standard output, by kind. Each kind can be
// switched off with a logging rule ("quillon.files.info=false"); the command
// line's --quiet does that for all but the problems.
Q_DECLARE_LOGGING_CATEGORY(lcToolOutput) // the render tool's output
Q_DECLARE_LOGGING_CATEGORY(lcFiles) // "deleted PATH" and the like
Q_DECLARE_LOGGING_CATEGORY(lcProblems) // "HILFE!! ...", a log that could not be made
Q_DECLARE_LOGGING_CATEGORY(lcProgress) // filter, source and image progress
Q_DECLARE_LOGGING_CATEGORY(lcPlan) // the plan of a run, line by line (--verbose)

// One line on standard output, flushed at once, when its kind is on.
void consoleLine(const QLoggingCategory& category, const QString& line);
// From now on console lines go to standard error (standard output carries
// something a program reads, such as a report).
void sendConsoleToStandardError();

// A line kept at the bottom of a terminal on standard error (a progress
// line): rewritten in place, moved out of the way of every console line and
// drawn again below it. The line is cut to the terminal's width (read again
// when the terminal is resized); with TERM=dumb, NO_COLOR or CLICOLOR=0 it is
// cleared with spaces instead of a control sequence. An empty text ends it
// with a line end.
void showTransientLine(const QString& line);

} // namespace quillon
