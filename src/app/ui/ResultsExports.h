#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QProgressDialog;
class QWidget;

namespace quillon {

class AnimationMaker;
struct RunPlan;

// What the results window makes of a run's outputs: the contact sheet
// (drawn in the thread pool) and the animations (ffmpeg, with a progress
// dialog and Abort). Each asks for the file first; problems are alerts.
class ResultsExports final : public QObject {
    Q_OBJECT
public:
    explicit ResultsExports(QWidget* window);
    ~ResultsExports() override;

    void saveContactSheet(std::shared_ptr<const RunPlan> plan);
    void makeAnimation(std::shared_ptr<const RunPlan> plan, int framesPerSecond);
    AnimationMaker* animationMaker() const { return m_maker; }

Q_SIGNALS:
    // A file was written (the contact sheet, or the last animation).
    void saved(const QString& path);

private:
    void showError(const QString& message);

    QWidget* m_window = nullptr;
    AnimationMaker* m_maker = nullptr;
    QProgressDialog* m_progress = nullptr;
};

} // namespace quillon
