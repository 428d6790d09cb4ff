#include "app/ui/ResultsSheet.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace quillon {

ResultsSheet::ResultsSheet(QWidget* parent)
    : QDialog(parent)
    , m_model(new ResultsModel(this))
{
    setObjectName(QStringLiteral("resultsSheet"));
    setWindowTitle(tr("Results"));

    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("resultsSummary"));
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_summary->setWordWrap(true);
    m_details = new QLabel(this);
    m_details->setObjectName(QStringLiteral("resultsDetails"));
    m_details->setTextFormat(Qt::PlainText);
    m_details->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_details->setWordWrap(true);
    m_details->setAccessibleName(tr("Why outputs are missing"));

    // A static grid of equal cells: the view lays out thousands of rows from
    // one size and asks only the visible ones for their thumbnails.
    m_view = new QListView(this);
    m_view->setObjectName(QStringLiteral("resultsView"));
    m_view->setAccessibleName(tr("Outputs of the run"));
    m_view->setViewMode(QListView::IconMode);
    m_view->setMovement(QListView::Static);
    m_view->setResizeMode(QListView::Adjust);
    m_view->setUniformItemSizes(true);
    m_view->setLayoutMode(QListView::Batched);
    m_view->setIconSize(QSize(ResultsModel::kIconSide, ResultsModel::kIconSide));
    m_view->setGridSize(QSize(ResultsModel::kIconSide + 40, ResultsModel::kIconSide + 56));
    m_view->setWordWrap(true);
    m_view->setTextElideMode(Qt::ElideMiddle);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_view->setModel(m_model);
    connect(m_view, &QAbstractItemView::activated, this, &ResultsSheet::openItem);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    m_openFolder = buttons->addButton(tr("Open Output Folder"), QDialogButtonBox::ActionRole);
    m_openFolder->setObjectName(QStringLiteral("openOutputFolderButton"));
    connect(m_openFolder, &QPushButton::clicked, this, [this] { openUrl(QUrl::fromLocalFile(m_folder)); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(m_details);
    layout->addWidget(m_view, 1);
    layout->addWidget(buttons);
    resize(760, 520);
}

void ResultsSheet::showResults(
    const QString& summary, const QString& folder, QList<ResultItem> items, const QStringList& details)
{
    m_summary->setText(summary);
    m_details->setText(details.join(QLatin1Char('\n')));
    m_details->setVisible(!details.isEmpty());
    m_folder = folder;
    m_openFolder->setEnabled(!folder.isEmpty());
    m_model->setItems(std::move(items));
    show();
    raise();
}

void ResultsSheet::openItem(const QModelIndex& index)
{
    if (index.data(ResultsModel::StatusRole).toInt() != static_cast<int>(OutputStatus::Written))
        return;
    openUrl(QUrl::fromLocalFile(index.data(ResultsModel::PathRole).toString()));
}

void ResultsSheet::openUrl(const QUrl& url)
{
    const bool opened = m_opener ? m_opener(url) : QDesktopServices::openUrl(url);
    if (!opened && m_failure)
        m_failure(tr("Nothing could open %1.").arg(url.toLocalFile()));
}

} // namespace quillon
