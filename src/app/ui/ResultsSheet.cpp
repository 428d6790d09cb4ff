#include "app/ui/ResultsSheet.h"

#include "app/ui/ResultsExports.h"
#include "run/RunPlan.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QSpinBox>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace quillon {

ResultsSheet::ResultsSheet(QWidget* parent)
    : QDialog(parent)
    , m_model(new ResultsModel(this))
    , m_sorted(new QSortFilterProxyModel(this))
    , m_exports(new ResultsExports(this))
{
    m_sorted->setSourceModel(m_model);
    m_sorted->setSortRole(ResultsModel::SortRole);
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
    m_view->setGridSize(QSize(ResultsModel::kIconSide + 40, ResultsModel::kIconSide + 72));
    m_view->setWordWrap(true);
    m_view->setTextElideMode(Qt::ElideMiddle);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_view->setModel(m_sorted);
    connect(m_view, &QAbstractItemView::activated, this, &ResultsSheet::openItem);
    connect(
        m_view->selectionModel(), &QItemSelectionModel::currentChanged, this, &ResultsSheet::updateButtons);

    m_sortPopup = new QComboBox(this);
    m_sortPopup->setObjectName(QStringLiteral("resultsSortPopup"));
    m_sortPopup->setAccessibleName(tr("Sort by"));
    connect(m_sortPopup, &QComboBox::activated, this,
        [this](int index) { sortByParameter(index > 0 ? m_sortPopup->itemText(index) : QString()); });
    auto* sortLabel = new QLabel(tr("Sort by:"), this);
    sortLabel->setBuddy(m_sortPopup);
    auto* sortRow = new QHBoxLayout;
    sortRow->addWidget(sortLabel);
    sortRow->addWidget(m_sortPopup, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    m_openFolder = buttons->addButton(tr("Open Output Folder"), QDialogButtonBox::ActionRole);
    m_openFolder->setObjectName(QStringLiteral("openOutputFolderButton"));
    connect(m_openFolder, &QPushButton::clicked, this, [this] { openUrl(QUrl::fromLocalFile(m_folder)); });
    m_useValues = buttons->addButton(tr("Use These Values"), QDialogButtonBox::ActionRole);
    m_useValues->setObjectName(QStringLiteral("useValuesButton"));
    m_useValues->setToolTip(tr("Set the chain so that the next run makes the selected output again"));
    connect(m_useValues, &QPushButton::clicked, this, [this] {
        if (const int row = selectedOutput(); row >= 0)
            Q_EMIT useValuesRequested(row);
    });
    auto* contactSheet = buttons->addButton(tr("Save Contact Sheet…"), QDialogButtonBox::ActionRole);
    contactSheet->setObjectName(QStringLiteral("saveContactSheetButton"));
    connect(contactSheet, &QPushButton::clicked, this, [this] {
        if (m_plan)
            m_exports->saveContactSheet(m_plan());
    });
    auto* animation = buttons->addButton(tr("Make Animation…"), QDialogButtonBox::ActionRole);
    animation->setObjectName(QStringLiteral("makeAnimationButton"));
    animation->setToolTip(tr("Assemble each input's frames into a GIF, WebM or MP4 file with ffmpeg"));
    connect(animation, &QPushButton::clicked, this, [this] {
        if (m_plan)
            m_exports->makeAnimation(m_plan(), m_fps->value());
    });
    m_fps = new QSpinBox(this);
    m_fps->setObjectName(QStringLiteral("animationFpsBox"));
    m_fps->setRange(1, 240);
    m_fps->setValue(24);
    m_fps->setSuffix(tr(" fps"));
    m_fps->setAccessibleName(tr("Frames per second of the animation"));
    auto* fpsLabel = new QLabel(tr("Animation:"), this);
    fpsLabel->setBuddy(m_fps);
    sortRow->addWidget(fpsLabel);
    sortRow->addWidget(m_fps);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addLayout(sortRow);
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
    fillSortChoices();
    updateButtons();
    show();
    raise();
}

int ResultsSheet::selectedOutput() const
{
    const QModelIndex current = m_view->selectionModel()->currentIndex();
    return current.isValid() ? m_sorted->mapToSource(current).row() : -1;
}

void ResultsSheet::sortByParameter(const QString& name)
{
    m_model->setSortParameter(name);
    m_sorted->invalidate();
    m_sorted->sort(0);
    const qsizetype choice = name.isEmpty() ? 0 : m_sortPopup->findText(name);
    m_sortPopup->setCurrentIndex(static_cast<int>(std::max<qsizetype>(choice, 0)));
}

void ResultsSheet::fillSortChoices()
{
    QStringList names;
    for (const ResultItem& item : m_model->items()) {
        for (const QString& name : item.valueNames) {
            if (!names.contains(name))
                names.append(name);
        }
    }
    m_sortPopup->clear();
    m_sortPopup->addItem(tr("Plan order"));
    m_sortPopup->addItems(names);
    m_sortPopup->setEnabled(!names.isEmpty());
    sortByParameter(QString());
}

void ResultsSheet::updateButtons()
{
    const int row = selectedOutput();
    m_useValues->setEnabled(row >= 0 && !m_model->items().at(row).valueNames.isEmpty());
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
