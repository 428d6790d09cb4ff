#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace quillon {

// How one render tool run is started: the program, its arguments and the
// variables set in its environment on top of the program's own.
struct ToolLaunch {
    QString program;
    QStringList arguments;
    QList<QPair<QString, QString>> environment;
};

} // namespace quillon
