#pragma once

// The common ground of the batch run tests: a display that records what a
// run shows, and a fixture with a temporary tree (filters/, in/, out/), run
// settings toward the stand-in render tool and a controller that reports to
// the recording display.

#include "batch/BatchController.h"
#include "batch/BatchDisplay.h"
#include "library/Record.h"
#include "run/RunSettings.h"
#include "support/BatchFixtures.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace quillon::test {

// Records what a run shows, one event per call. The deletion list is taken
// when the progress sheet is ended: the completion does that just before its
// deletion pass.
class RecordingBatchDisplay final : public BatchDisplay {
public:
    explicit RecordingBatchDisplay(const BatchController* controller)
        : m_controller(controller)
    {
    }

    QStringList events;
    QStringList sources;
    QStringList renderLines; // shorter ones only; every one goes to `shown`
    QByteArray shown; // every render line's UTF-8 bytes, in order
    qint64 renderCount = 0;
    int beeps = 0;
    QStringList deletionList;
    std::function<void(const QString&)> onRender;

    void showErrorAlert(const QString& text) override { events.append(QStringLiteral("alert:") + text); }
    void beginProgressSheet() override { events.append(QStringLiteral("begin")); }
    void endProgressSheet() override
    {
        events.append(QStringLiteral("end"));
        deletionList = m_controller->interimFiles();
    }
    void showFilterInfo(const QString& name, const QString& author) override
    {
        events.append(QStringLiteral("filter:%1|%2").arg(name, author));
    }
    void showSourceInfo(const QString& source) override
    {
        sources.append(source);
        events.append(QStringLiteral("source:") + source);
    }
    void showRenderInfo(const QString& info) override;
    void runFinished(bool aborted) override
    {
        events.append(aborted ? QStringLiteral("finished:aborted") : QStringLiteral("finished"));
    }
    void beep() override { ++beeps; }
    int mergeMs = 0; // > 0: reports come merged, as to the window
    int reportIntervalMs() const override { return mergeMs; }

private:
    const BatchController* m_controller;
};

class BatchRunFixture : public ::testing::Test {
public: // table-driven tests check the run's traces from outside

    // Every standard output line of the controller goes to m_stdout.
    void SetUp() override;

    // A definition named `name` in filters/, as a chain record.
    RecordPtr filter(const QString& name);
    // A chain of one definition per name.
    RecordList chain(const QStringList& names);
    // A small image named `name` in in/; returns its path.
    QString input(const QString& name);
    // in/a.png as the source file (count 1), or in/ holding a.png and b.png
    // as the source directory (count 2).
    void useInputs(int count);

    // Starts a run that must be accepted.
    void start(const RecordList& chain);
    // Serves events until the run has completed: reports are handled as soon
    // as they arrive. False when it has not completed within 100 s.
    bool waitForIdle();
    // Starts a run and waits for its end: why it was refused (at once or
    // once planned), or an empty string when it ran.
    QString refusalOf(const RecordList& chain, const RunSettings& settings);

    QTemporaryDir m_temp;
    QString m_out;
    QString m_in;
    QString m_filters;
    RecordingBatchDisplay m_display { &m_controller };
    BatchController m_controller { &m_display };
    QStringList m_stdout;
    RunSettings m_settings;
};

} // namespace quillon::test
