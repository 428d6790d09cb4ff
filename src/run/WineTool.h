#pragma once

#include "run/ToolLaunch.h"
#include "run/WinePaths.h"

#include <QMutex>
#include <QString>

#include <memory>

namespace quillon {

struct RunPlan;
struct RunSettings;

// A render tool that is a Windows program, run under Wine: the wine
// launcher, the prefix and its drives (read once per run), the Windows form
// of every path the tool is given, and the prefix's wineserver, which a run
// that brought it up waits out before it ends. One per run; the steps of
// the run share it from any thread.
class WineTool final {
public:
    // How long the end of a run waits for the wineserver to go.
    static constexpr int kServerWaitMilliseconds = 30000;

    // For settings that run the tool under Wine: the launcher (the one set,
    // else "wine" on PATH) and the prefix's drives, attached to `plan`, and
    // every path of the plan checked for a Windows form. Returns why the run
    // cannot go, or an empty text; does nothing for a native tool.
    static QString attachTo(RunPlan& plan, const RunSettings& settings);

    WineTool(QString binary, QString givenPrefix, WinePaths paths);
    Q_DISABLE_COPY_MOVE(WineTool)

    const QString& binary() const { return m_binary; }
    const WinePaths& paths() const { return m_paths; }

    // The Windows form of a path the tool reads or writes; the path itself
    // when no drive covers it (the plan's check refused such runs).
    QString windowsPath(const QString& path) const;

    // `wine TOOL WINPATH` with WINEDEBUG=-all, and WINEPREFIX when one was
    // given. The first call of a run also notes whether the prefix's
    // wineserver runs already.
    ToolLaunch launch(const QString& tool, const QString& controlFile);

    // The end of the run: when its tool runs brought the wineserver up, waits
    // (at most `limitMs`) until it has gone; it goes by itself once no Windows
    // program of the prefix runs. Nothing is killed. Worker thread.
    void finishRun(int limitMs = kServerWaitMilliseconds);

    // Whether a wineserver serves `prefix` now: it holds the lock in its
    // folder under /tmp.
    static bool serverRunning(const QString& prefix);

private:
    QString m_binary;
    QString m_givenPrefix; // empty: the user's
    WinePaths m_paths;
    QMutex m_mutex;
    bool m_launched = false;
    bool m_serverBefore = false;
};

} // namespace quillon
