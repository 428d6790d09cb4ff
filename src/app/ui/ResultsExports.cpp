#include "app/ui/ResultsExports.h"

#include "app/AnimationMaker.h"
#include "app/ContactSheet.h"
#include "app/ui/DialogSeams.h"
#include "run/RunPlan.h"

#include <QFutureWatcher>
#include <QProgressDialog>
#include <QWidget>
#include <QtConcurrent>

namespace quillon {

ResultsExports::ResultsExports(QWidget* window)
    : QObject(window)
    , m_window(window)
    , m_maker(new AnimationMaker(this))
{
    connect(m_maker, &AnimationMaker::progress, this, [this](qint64 done, qint64 total) {
        if (m_progress) {
            m_progress->setMaximum(static_cast<int>(total));
            m_progress->setValue(static_cast<int>(done));
        }
    });
}

ResultsExports::~ResultsExports() = default;

void ResultsExports::showError(const QString& message)
{
    MessageBoxes::instance().showError(m_window, message);
}

void ResultsExports::saveContactSheet(std::shared_ptr<const RunPlan> plan)
{
    if (!plan)
        return;
    FileDialogRequest request;
    request.mode = FileDialogRequest::Mode::Save;
    request.title = tr("Save Contact Sheet");
    request.prompt = tr("Save");
    request.nameFilter = tr("PNG image (*.png)");
    request.defaultSuffix = QStringLiteral("png");
    request.canCreateDirectories = true;
    FileDialogs::instance().open(m_window, request, [this, plan](const QString& path) {
        // Reading the outputs and drawing takes a while with many of them.
        auto* watcher = new QFutureWatcher<QString>(this);
        connect(watcher, &QFutureWatcher<QString>::finished, this, [this, watcher, path] {
            watcher->deleteLater();
            const QString error = watcher->result();
            if (error.isEmpty())
                Q_EMIT saved(path);
            else
                showError(error);
        });
        watcher->setFuture(QtConcurrent::run([plan, path] {
            QString error;
            quillon::saveContactSheet(path, contactTilesFor(*plan), &error);
            return error;
        }));
    });
}

void ResultsExports::makeAnimation(std::shared_ptr<const RunPlan> plan, int framesPerSecond)
{
    if (!plan || m_maker->isRunning())
        return;
    FileDialogRequest request;
    request.mode = FileDialogRequest::Mode::Save;
    request.title = tr("Make Animation");
    request.prompt = tr("Make");
    request.nameFilter = tr("Animation (*.gif *.webm *.mp4)");
    request.defaultSuffix = QStringLiteral("gif");
    request.canCreateDirectories = true;
    FileDialogs::instance().open(m_window, request, [this, plan, framesPerSecond](const QString& path) {
        if (!AnimationMaker::isAnimationName(path)) {
            showError(tr("An animation is named .gif, .webm or .mp4: %1").arg(path));
            return;
        }
        const QList<AnimationClip> clips = animationClipsFor(*plan, path);
        m_progress = new QProgressDialog(tr("Making the animation…"), tr("Abort"), 0, 0, m_window);
        m_progress->setObjectName(QStringLiteral("animationProgress"));
        m_progress->setWindowModality(Qt::WindowModal);
        m_progress->setMinimumDuration(0);
        m_progress->setAutoClose(false);
        m_progress->setAutoReset(false);
        connect(m_progress, &QProgressDialog::canceled, m_maker, &AnimationMaker::abort);
        connect(
            m_maker, &AnimationMaker::finished, this,
            [this, clips](bool ok, const QString& message) {
                if (m_progress) {
                    m_progress->deleteLater();
                    m_progress = nullptr;
                }
                if (!message.isEmpty())
                    showError(message);
                if (ok && !clips.isEmpty())
                    Q_EMIT saved(clips.last().outputPath);
            },
            Qt::SingleShotConnection);
        m_maker->start(clips, framesPerSecond);
    });
}

} // namespace quillon
