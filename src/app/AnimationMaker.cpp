#include "app/AnimationMaker.h"

#include "run/RunPlan.h"
#include "variations/OutputValues.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

namespace quillon {

namespace {

constexpr int kKillAfterMs = 3000;
constexpr qsizetype kErrorTail = 2000;

// ffmpeg's encoder arguments by the animation's extension. Video codecs
// with 4:2:0 colour need even sizes.
QStringList encoderArguments(const QString& suffix)
{
    const QString even = QStringLiteral("scale=trunc(iw/2)*2:trunc(ih/2)*2");
    if (suffix == QLatin1String("gif"))
        return { QStringLiteral("-filter_complex"),
            QStringLiteral("[0:v]split[a][b];[a]palettegen[p];[b][p]paletteuse") };
    if (suffix == QLatin1String("webm"))
        return { QStringLiteral("-vf"), even, QStringLiteral("-c:v"), QStringLiteral("libvpx-vp9"),
            QStringLiteral("-b:v"), QStringLiteral("0"), QStringLiteral("-crf"), QStringLiteral("32"),
            QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p") };
    return { QStringLiteral("-vf"), even, QStringLiteral("-c:v"), QStringLiteral("libx264"),
        QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"), QStringLiteral("-movflags"),
        QStringLiteral("+faststart") };
}

// Copies ffmpeg's result to the user's file: a new file renamed over the
// name, so a link there is replaced and never written through.
bool saveCopy(const QString& from, const QString& to, QString* error)
{
    QFile source(from);
    QSaveFile target(to);
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("Cannot write the animation %1: %2")
                     .arg(to, source.isOpen() ? target.errorString() : source.errorString());
        return false;
    }
    while (!source.atEnd()) {
        const QByteArray chunk = source.read(1 << 20);
        if (chunk.isEmpty() || target.write(chunk) != chunk.size()) {
            *error = QStringLiteral("Cannot write the animation %1: %2").arg(to, target.errorString());
            return false;
        }
    }
    if (!target.commit()) {
        *error = QStringLiteral("Cannot write the animation %1: %2").arg(to, target.errorString());
        return false;
    }
    return true;
}

} // namespace

QList<AnimationClip> animationClipsFor(const RunPlan& plan, const QString& path)
{
    QList<QString> sources;
    QList<AnimationClip> clips;
    for (const OutputValues& output : finalOutputValues(plan)) {
        if (!output.frameFirst || !QFileInfo(output.resultPath).isFile())
            continue;
        qsizetype index = sources.indexOf(output.source);
        if (index < 0) {
            index = sources.size();
            sources.append(output.source);
            clips.append(AnimationClip {});
        }
        clips[index].frames.append(output.resultPath);
    }
    const QFileInfo info(path);
    for (qsizetype i = 0; i < clips.size(); ++i) {
        clips[i].outputPath = clips.size() == 1
            ? path
            : info.dir().filePath(QStringLiteral("%1-%2.%3")
                                      .arg(info.completeBaseName(),
                                          QFileInfo(sources.at(i)).completeBaseName(), info.suffix()));
    }
    return clips;
}

AnimationMaker::AnimationMaker(QObject* parent)
    : QObject(parent)
{
}

AnimationMaker::~AnimationMaker()
{
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(kKillAfterMs);
    }
}

QString AnimationMaker::ffmpegPath()
{
    return QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
}

bool AnimationMaker::isAnimationName(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("gif") || suffix == QLatin1String("webm")
        || suffix == QLatin1String("mp4");
}

void AnimationMaker::start(QList<AnimationClip> clips, int framesPerSecond)
{
    if (isRunning())
        return;
    m_clips = std::move(clips);
    m_clip = 0;
    m_fps = std::max(framesPerSecond, 1);
    m_total = 0;
    m_done = 0;
    m_aborted = false;
    for (const AnimationClip& clip : std::as_const(m_clips))
        m_total += clip.frames.size();
    if (m_total == 0) {
        finish(false, tr("There are no frames to make an animation of."));
        return;
    }
    if (ffmpegPath().isEmpty()) {
        finish(false, tr("ffmpeg was not found on PATH; install the ffmpeg package to make animations."));
        return;
    }
    startClip();
}

void AnimationMaker::startClip()
{
    const AnimationClip& clip = m_clips.at(m_clip);
    if (!isAnimationName(clip.outputPath)) {
        finish(false, tr("An animation is named .gif, .webm or .mp4: %1").arg(clip.outputPath));
        return;
    }
    m_folder = std::make_unique<QTemporaryDir>();
    if (!m_folder->isValid()) {
        finish(false, tr("Cannot make a temporary folder: %1").arg(m_folder->errorString()));
        return;
    }
    // Numbered links to the frames: ffmpeg's image sequence reads them in
    // order, whatever the frames are called.
    const QString suffix = QFileInfo(clip.frames.first()).suffix().toLower();
    for (qsizetype i = 0; i < clip.frames.size(); ++i) {
        const QString link = m_folder->filePath(
            QStringLiteral("frame-%1.%2").arg(i + 1, 6, 10, QLatin1Char('0')).arg(suffix));
        if (!QFile::link(QFileInfo(clip.frames.at(i)).absoluteFilePath(), link)) {
            finish(false, tr("Cannot link the frame %1 into a temporary folder").arg(clip.frames.at(i)));
            return;
        }
    }
    const QString animationSuffix = QFileInfo(clip.outputPath).suffix().toLower();
    m_output = m_folder->filePath(QStringLiteral("animation.") + animationSuffix);
    QStringList arguments { QStringLiteral("-nostdin"), QStringLiteral("-hide_banner"),
        QStringLiteral("-nostats"), QStringLiteral("-loglevel"), QStringLiteral("error"),
        QStringLiteral("-progress"), QStringLiteral("pipe:1"), QStringLiteral("-framerate"),
        QString::number(m_fps), QStringLiteral("-start_number"), QStringLiteral("1"), QStringLiteral("-i"),
        m_folder->filePath(QStringLiteral("frame-%06d.") + suffix) };
    arguments += encoderArguments(animationSuffix);
    arguments += m_output;

    m_errors.clear();
    m_process = new QProcess(this);
    m_process->setWorkingDirectory(m_folder->path());
    connect(m_process, &QProcess::readyReadStandardOutput, this, &AnimationMaker::readProgress);
    connect(m_process, &QProcess::readyReadStandardError, this,
        [this] { m_errors = (m_errors + m_process->readAllStandardError()).right(kErrorTail); });
    connect(m_process, &QProcess::finished, this, &AnimationMaker::clipEnded);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finish(false, tr("ffmpeg could not be started: %1").arg(m_process->errorString()));
    });
    m_process->start(ffmpegPath(), arguments);
}

void AnimationMaker::readProgress()
{
    const QList<QByteArray> lines = m_process->readAllStandardOutput().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("frame="))
            Q_EMIT progress(std::min(m_done + line.mid(6).trimmed().toLongLong(), m_total), m_total);
    }
}

void AnimationMaker::clipEnded(int exitCode, QProcess::ExitStatus status)
{
    if (m_aborted) {
        finish(false, QString());
        return;
    }
    if (status != QProcess::NormalExit || exitCode != 0) {
        finish(false,
            tr("ffmpeg failed making %1: %2")
                .arg(m_clips.at(m_clip).outputPath, QString::fromUtf8(m_errors).trimmed()));
        return;
    }
    QString error;
    if (!saveCopy(m_output, m_clips.at(m_clip).outputPath, &error)) {
        finish(false, error);
        return;
    }
    m_done += m_clips.at(m_clip).frames.size();
    Q_EMIT progress(m_done, m_total);
    m_process->deleteLater();
    m_process = nullptr;
    if (++m_clip < m_clips.size())
        startClip();
    else
        finish(true, QString());
}

void AnimationMaker::abort()
{
    if (!m_process)
        return;
    m_aborted = true;
    m_process->terminate();
    if (!m_killTimer) {
        m_killTimer = new QTimer(this);
        m_killTimer->setSingleShot(true);
        connect(m_killTimer, &QTimer::timeout, this, [this] {
            if (m_process)
                m_process->kill();
        });
    }
    m_killTimer->start(kKillAfterMs);
}

void AnimationMaker::finish(bool ok, const QString& message)
{
    if (m_killTimer)
        m_killTimer->stop();
    if (m_process) {
        m_process->disconnect(this);
        if (m_process->state() != QProcess::NotRunning) {
            m_process->kill();
            m_process->waitForFinished(kKillAfterMs);
        }
        m_process->deleteLater();
        m_process = nullptr;
    }
    m_folder.reset();
    Q_EMIT finished(ok, message);
}

} // namespace quillon
