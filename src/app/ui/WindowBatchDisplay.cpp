#include "app/ui/WindowBatchDisplay.h"

#include "app/ui/DialogSeams.h"
#include "app/ui/ProgressSheet.h"

namespace quillon {

WindowBatchDisplay::WindowBatchDisplay(ProgressSheet* sheet, std::function<void(const QString&)> showAlert)
    : m_sheet(sheet)
    , m_showAlert(std::move(showAlert))
{
}

void WindowBatchDisplay::showErrorAlert(const QString& message)
{
    if (m_showAlert)
        m_showAlert(message);
}

void WindowBatchDisplay::beginProgressSheet()
{
    m_sheet->beginRun(m_planned);
}

void WindowBatchDisplay::endProgressSheet()
{
    m_sheet->endRun();
}

void WindowBatchDisplay::showFilterInfo(const QString& name, const QString& author)
{
    m_sheet->showFilterInfo(name, author);
}

void WindowBatchDisplay::showSourceInfo(const QString& source)
{
    m_sheet->showSourceInfo(source);
}

void WindowBatchDisplay::showRenderInfo(const QString& info)
{
    m_sheet->showRenderInfo(info);
}

void WindowBatchDisplay::showAnimationFrame(int frame)
{
    m_sheet->showAnimationFrame(frame);
}

void WindowBatchDisplay::runFinished(bool /*aborted*/)
{
    m_sheet->finishRun();
}

void WindowBatchDisplay::beep()
{
    MessageBoxes::instance().beep();
}

} // namespace quillon
