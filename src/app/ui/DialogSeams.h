#pragma once

#include "batch/BatchDisplay.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QWidget;

namespace quillon {

// What a file dialog asks for. Fields left empty keep the dialog's defaults.
struct FileDialogRequest {
    enum class Mode { Open, Save };
    Mode mode = Mode::Open;
    QString title;
    QString prompt; // title of the confirming button
    QString message; // shown as the window title when no title is given
    QString nameFilter;
    QString defaultSuffix;
    QString directory; // where the dialog opens
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    bool canCreateDirectories = false;
};

// File dialogs run window-modal on a parent window; the answer arrives in a
// callback, which runs only when the user confirms. Tests set the next answer
// in advance: the dialog is then not shown and the answer is given at once.
class FileDialogs final {
public:
    static FileDialogs& instance();

    // The next dialog confirms with this path; an empty path cancels it.
    void setNextFileName(const QString& path) { m_next = path; }
    void clearNextFileName() { m_next.reset(); }
    // The request of the last dialog asked for (shown or answered).
    const FileDialogRequest& lastRequest() const { return m_lastRequest; }

    void open(
        QWidget* parent, const FileDialogRequest& request, std::function<void(const QString&)> accepted);

private:
    FileDialogs() = default;

    std::optional<QString> m_next;
    FileDialogRequest m_lastRequest;
};

// Alerts. In recording mode (tests) an alert is not shown but kept, so a test
// can read what the user would have seen.
class MessageBoxes final {
    Q_DECLARE_TR_FUNCTIONS(MessageBoxes)
public:
    static MessageBoxes& instance();

    void setRecording(bool on) { m_recording = on; }
    bool recording() const { return m_recording; }
    // The informative texts of the alerts shown while recording, oldest first.
    const QStringList& shownMessages() const { return m_shown; }
    // Forgets the recorded alerts and beeps.
    void clearShownMessages()
    {
        m_shown.clear();
        m_beeps = 0;
        m_nextAnswer = false;
        m_nextExisting = ExistingOutputs::Replace;
    }
    // System beeps sounded while recording.
    int beeps() const { return m_beeps; }

    // A critical alert: message text "Error:", the message as informative
    // text, one button "OK". Returns when it is closed.
    void showError(QWidget* parent, const QString& message);
    void beep();

    // A question with Yes and No (No is the default). While recording it is
    // kept with the alerts and answered with the answer set in advance.
    bool confirm(QWidget* parent, const QString& question);
    void setNextAnswer(bool yes) { m_nextAnswer = yes; }
    // An information box (About); kept with the alerts while recording.
    void showInformation(QWidget* parent, const QString& title, const QString& text);

    // Planned outputs exist already: Replace, Skip Existing or Cancel.
    // While recording it is kept and answered with the answer set in advance.
    ExistingOutputs askExistingOutputs(QWidget* parent, const QString& text);
    void setNextExistingAnswer(ExistingOutputs answer) { m_nextExisting = answer; }
    // How a run ended: the results sheet shows it, and while recording its
    // counts line is kept with the alerts too.
    void noteResults(const QString& summary);

private:
    MessageBoxes() = default;

    bool m_recording = false;
    bool m_nextAnswer = false;
    ExistingOutputs m_nextExisting = ExistingOutputs::Replace;
    QStringList m_shown;
    int m_beeps = 0;
};

} // namespace quillon
