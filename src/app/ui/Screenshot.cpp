#include "app/ui/Screenshot.h"

#include "app/ui/AppDelegate.h"
#include "app/ui/MainWindow.h"
#include "app/ui/ResultsModel.h"
#include "app/ui/ResultsSheet.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPixmap>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace quillon {

void takeScreenshotWhenReady(AppDelegate& delegate, const QString& path, bool ofResults)
{
    constexpr qint64 kGiveUpMs = 60000;
    auto* poll = new QTimer(QCoreApplication::instance());
    poll->setInterval(50);
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    auto started = std::make_shared<bool>(false);
    QObject::connect(poll, &QTimer::timeout, poll, [&delegate, path, ofResults, poll, clock, started] {
        const bool late = clock->elapsed() > kGiveUpMs;
        // The add button comes on with the library; without a Filters
        // directory none comes, and the window is pictured as it is.
        if (!delegate.library() && clock->elapsed() < 10000)
            return;
        QWidget* subject = delegate.window();
        if (ofResults) {
            if (!*started) {
                *started = true;
                delegate.startBatchWithSender();
                return;
            }
            ResultsSheet* results = delegate.resultsSheet();
            const ResultsModel* model = results->model();
            const bool ready = results->isVisible() && model->decodesRequested() > 0
                && model->decodesFinished() >= model->decodesRequested();
            if (!ready && !late)
                return;
            subject = results;
        }
        poll->stop();
        const bool saved = !late && subject->grab().save(path);
        if (!saved)
            std::fprintf(stderr, "Cannot make the picture %s\n", qPrintable(path));
        QCoreApplication::exit(saved ? 0 : 1);
    });
    poll->start();
}

} // namespace quillon
