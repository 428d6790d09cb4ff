#pragma once

#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <memory>

class QTemporaryDir;
class QTimer;

namespace quillon {

struct RunPlan;

// One animation: its file and its frames, in frame order.
struct AnimationClip {
    QString outputPath;
    QStringList frames;
};

// The animations of a plan: one per input, of its final outputs that exist
// (the first map of each frame), in frame order. A single clip is written
// to `path`; with several inputs each goes beside it as NAME-INPUT.EXT.
QList<AnimationClip> animationClipsFor(const RunPlan& plan, const QString& path);

// Assembles clips into animated GIF, WebM or MP4 files with the ffmpeg
// program found on PATH, one ffmpeg process at a time, driven by the
// process's signals. The frames are read through links in a temporary
// folder, never changed; ffmpeg writes into that folder and the result is
// then saved to the clip's file with QSaveFile.
class AnimationMaker final : public QObject {
    Q_OBJECT
public:
    explicit AnimationMaker(QObject* parent = nullptr);
    ~AnimationMaker() override;

    // The ffmpeg program on PATH; empty when there is none.
    static QString ffmpegPath();
    // True for the names an animation can have (.gif, .webm, .mp4).
    static bool isAnimationName(const QString& path);

    // Starts the first clip; finished follows (at once when nothing can start).
    void start(QList<AnimationClip> clips, int framesPerSecond);
    // Stops ffmpeg (terminate, kill after 3 s); finished(false, "") follows.
    void abort();
    bool isRunning() const { return m_process != nullptr; }

Q_SIGNALS:
    void progress(qint64 framesDone, qint64 framesTotal);
    // `message` says what went wrong; empty when all went well or on abort.
    void finished(bool ok, const QString& message);

private:
    void startClip();
    void clipEnded(int exitCode, QProcess::ExitStatus status);
    void readProgress();
    void finish(bool ok, const QString& message);

    QList<AnimationClip> m_clips;
    int m_clip = 0;
    int m_fps = 24;
    qint64 m_total = 0;
    qint64 m_done = 0; // frames of the finished clips
    bool m_aborted = false;
    QProcess* m_process = nullptr;
    QTimer* m_killTimer = nullptr;
    QString m_output; // ffmpeg's file in the temporary folder
    QByteArray m_errors; // the tail of ffmpeg's standard error
    std::unique_ptr<QTemporaryDir> m_folder;
};

} // namespace quillon
