#include "batch/DisplayRelay.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillon {

DisplayRelay::DisplayRelay()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, [this] { flush(); });
}

void DisplayRelay::setTarget(BatchDisplay* target)
{
    m_timer.stop();
    std::fill(std::begin(m_pending), std::end(m_pending), 0);
    m_sources = 0;
    m_target = target;
}

void DisplayRelay::schedule(Kind kind)
{
    m_pending[kind] = ++m_arrival;
    if (m_timer.isActive())
        return;
    const qint64 interval = m_target ? m_target->reportIntervalMs() : 0;
    const qint64 since = m_sinceFlush.isValid() ? m_sinceFlush.elapsed() : interval;
    if (since >= interval)
        flush();
    else
        m_timer.start(static_cast<int>(interval - since));
}

void DisplayRelay::flush()
{
    m_timer.stop();
    m_sinceFlush.start();
    std::array<Kind, KindCount> order { Source, Render, Progress };
    std::sort(order.begin(), order.end(), [this](Kind a, Kind b) { return m_pending[a] < m_pending[b]; });
    for (const Kind kind : order) {
        if (!m_pending[kind] || !m_target)
            continue;
        m_pending[kind] = 0;
        switch (kind) {
        case Source:
            m_target->showSourcesInfo(m_source, std::exchange(m_sources, 0));
            break;
        case Render:
            m_target->showRenderInfo(m_render);
            break;
        case Progress:
            m_target->showImageProgress(m_done, m_total, m_elapsedMs, m_leftMs, m_latest);
            break;
        case KindCount:
            break;
        }
    }
}

void DisplayRelay::showSourceInfo(const QString& source)
{
    m_source = source;
    ++m_sources;
    schedule(Source);
}

void DisplayRelay::showRenderInfo(const QString& info)
{
    m_render = info;
    schedule(Render);
}

void DisplayRelay::showImageProgress(
    qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest)
{
    m_done = done;
    m_total = total;
    m_elapsedMs = elapsedMs;
    m_leftMs = leftMs;
    m_latest = latest;
    schedule(Progress);
}

// The calls that are not merged: what is pending first.

void DisplayRelay::showErrorAlert(const QString& message)
{
    flush();
    if (m_target)
        m_target->showErrorAlert(message);
}

void DisplayRelay::beginProgressSheet()
{
    flush();
    if (m_target)
        m_target->beginProgressSheet();
}

void DisplayRelay::endProgressSheet()
{
    flush();
    if (m_target)
        m_target->endProgressSheet();
}

void DisplayRelay::showFilterInfo(const QString& name, const QString& author)
{
    flush();
    if (m_target)
        m_target->showFilterInfo(name, author);
}

void DisplayRelay::planRun(int inputCount, int steps, qint64 frames)
{
    flush();
    if (m_target)
        m_target->planRun(inputCount, steps, frames);
}

ExistingOutputs DisplayRelay::askExistingOutputs(const QStringList& paths)
{
    flush();
    return m_target ? m_target->askExistingOutputs(paths) : ExistingOutputs::Replace;
}

void DisplayRelay::showNotice(const QString& message)
{
    flush();
    if (m_target)
        m_target->showNotice(message);
}

bool DisplayRelay::confirmWarning(const QString& message)
{
    flush();
    return !m_target || m_target->confirmWarning(message);
}

void DisplayRelay::runFinished(bool aborted)
{
    flush();
    if (m_target)
        m_target->runFinished(aborted);
}

void DisplayRelay::beep()
{
    flush();
    if (m_target)
        m_target->beep();
}

} // namespace quillon
