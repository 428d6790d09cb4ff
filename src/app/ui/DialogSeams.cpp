#include "app/ui/DialogSeams.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

namespace quillon {

FileDialogs& FileDialogs::instance()
{
    static FileDialogs dialogs;
    return dialogs;
}

void FileDialogs::open(
    QWidget* parent, const FileDialogRequest& request, std::function<void(const QString&)> accepted)
{
    m_lastRequest = request;
    if (m_next) {
        const QString answer = *m_next;
        m_next.reset();
        if (!answer.isEmpty() && accepted)
            accepted(answer);
        return;
    }

    auto* dialog = new QFileDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    const QString title = !request.title.isEmpty() ? request.title : request.message;
    if (!title.isEmpty())
        dialog->setWindowTitle(title);
    if (!request.prompt.isEmpty())
        dialog->setLabelText(QFileDialog::Accept, request.prompt);
    if (!request.nameFilter.isEmpty())
        dialog->setNameFilter(request.nameFilter);
    if (!request.defaultSuffix.isEmpty())
        dialog->setDefaultSuffix(request.defaultSuffix);
    if (!request.directory.isEmpty())
        dialog->setDirectory(request.directory);
    if (request.mode == FileDialogRequest::Mode::Save) {
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setFileMode(QFileDialog::AnyFile);
    } else {
        dialog->setAcceptMode(QFileDialog::AcceptOpen);
        dialog->setFileMode(request.canChooseDirectories && !request.canChooseFiles
                ? QFileDialog::Directory
                : QFileDialog::ExistingFile);
        if (request.canChooseDirectories && !request.canChooseFiles)
            dialog->setOption(QFileDialog::ShowDirsOnly);
    }
    dialog->setOption(QFileDialog::ReadOnly,
        !request.canCreateDirectories && request.mode == FileDialogRequest::Mode::Open);
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog, [accepted](const QString& path) {
        if (accepted && !path.isEmpty())
            accepted(path);
    });
    dialog->open();
}

MessageBoxes& MessageBoxes::instance()
{
    static MessageBoxes boxes;
    return boxes;
}

void MessageBoxes::showError(QWidget* parent, const QString& message)
{
    if (m_recording) {
        m_shown.append(message);
        return;
    }
    QMessageBox box(parent);
    box.setIcon(QMessageBox::Critical);
    box.setText(tr("Error:"));
    box.setInformativeText(message);
    box.addButton(tr("OK"), QMessageBox::AcceptRole);
    box.exec();
}

void MessageBoxes::beep()
{
    if (m_recording) {
        ++m_beeps;
        return;
    }
    QApplication::beep();
}

bool MessageBoxes::confirm(QWidget* parent, const QString& question)
{
    if (m_recording) {
        m_shown.append(question);
        return m_nextAnswer;
    }
    return QMessageBox::question(parent, QApplication::applicationName(), question,
               QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        == QMessageBox::Yes;
}

void MessageBoxes::showInformation(QWidget* parent, const QString& title, const QString& text)
{
    if (m_recording) {
        m_shown.append(text);
        return;
    }
    QMessageBox::about(parent, title, text);
}

ExistingOutputs MessageBoxes::askExistingOutputs(QWidget* parent, const QString& text)
{
    if (m_recording) {
        m_shown.append(text);
        return m_nextExisting;
    }
    QMessageBox box(parent);
    box.setIcon(QMessageBox::Question);
    box.setText(text);
    QPushButton* replace = box.addButton(tr("Replace"), QMessageBox::DestructiveRole);
    QPushButton* skip = box.addButton(tr("Skip Existing"), QMessageBox::AcceptRole);
    QPushButton* cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(skip);
    box.exec();
    if (box.clickedButton() == replace)
        return ExistingOutputs::Replace;
    if (box.clickedButton() == skip)
        return ExistingOutputs::Skip;
    (void)cancel;
    return ExistingOutputs::Cancel;
}

void MessageBoxes::noteResults(const QString& summary)
{
    if (m_recording)
        m_shown.append(summary);
}

} // namespace quillon
