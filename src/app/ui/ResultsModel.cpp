#include "app/ui/ResultsModel.h"

#include "run/RunPlan.h"

#include <QFileInfo>
#include <QFutureWatcher>
#include <algorithm>

namespace quillon {

namespace {

// About 64 MB of decoded thumbnails; the cache counts kilobytes.
constexpr int kCacheKilobytes = 64 * 1024;

} // namespace

ResultsModel::ResultsModel(QObject* parent)
    : QAbstractListModel(parent)
    , m_cache(kCacheKilobytes)
    , m_missingIcon(placeholderPixmap(tr("missing"), kIconSide))
    , m_notRunIcon(placeholderPixmap(tr("not run"), kIconSide))
    , m_loadingIcon(placeholderPixmap(QString(), kIconSide))
{
}

QString ResultsModel::statusText(OutputStatus status)
{
    switch (status) {
    case OutputStatus::Written:
        return tr("written");
    case OutputStatus::Missing:
        return tr("missing");
    case OutputStatus::NotRun:
        break;
    }
    return tr("not run");
}

QString ResultsModel::valuesText(const ResultItem& item, const QString& separator)
{
    QStringList parts;
    for (const QString& name : item.valueNames) {
        parts.append(name + QLatin1Char('=') + plannedValueText(item.values.value(name)));
    }
    return parts.join(separator);
}

void ResultsModel::setItems(QList<ResultItem> items)
{
    beginResetModel();
    m_items = std::move(items);
    m_rows.clear();
    for (int row = 0; row < m_items.size(); ++row)
        m_rows.insert(m_items.at(row).path, row);
    ++m_generation;
    m_cache.clear();
    m_described.clear();
    m_asked.clear();
    m_pending.clear();
    m_requested = 0;
    m_finished = 0;
    endResetModel();
}

int ResultsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_items.size());
}

QVariant ResultsModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const ResultItem& item = m_items.at(index.row());
    switch (role) {
    case Qt::DisplayRole: {
        QString text = QFileInfo(item.path).fileName() + QLatin1Char('\n') + statusText(item.status);
        if (const auto described = m_described.constFind(item.path); described != m_described.cend())
            text += QStringLiteral(", ") + *described;
        if (!item.valueNames.isEmpty())
            text += QLatin1Char('\n') + valuesText(item, QStringLiteral(" "));
        return text;
    }
    case Qt::ToolTipRole: {
        const QString values = valuesText(item, QStringLiteral("\n"));
        const QString head = item.reason.isEmpty()
            ? QStringLiteral("%1 (%2)").arg(item.path, statusText(item.status))
            : tr("%1 (%2: %3)").arg(item.path, statusText(item.status), item.reason);
        return head + (values.isEmpty() ? QString() : QLatin1Char('\n') + values);
    }
    case ValuesRole:
        return valuesText(item, QStringLiteral("  "));
    case SortRole:
        return m_sortParameter.isEmpty() ? QVariant(index.row()) : item.values.value(m_sortParameter);
    case Qt::DecorationRole:
        return thumbnailFor(index.row());
    case PathRole:
        return item.path;
    case StatusRole:
        return static_cast<int>(item.status);
    default:
        return {};
    }
}

QPixmap ResultsModel::thumbnailFor(int row) const
{
    const ResultItem& item = m_items.at(row);
    if (item.status == OutputStatus::Missing)
        return m_missingIcon;
    if (item.status == OutputStatus::NotRun)
        return m_notRunIcon;
    if (const QPixmap* cached = m_cache.object(item.path))
        return *cached;
    if (!m_asked.contains(item.path)) {
        m_asked.insert(item.path);
        m_pending.append(item.path);
        ++m_requested;
        if (m_pending.size() > kMaxPending)
            m_asked.remove(m_pending.takeFirst());
        startDecodes();
    }
    return m_loadingIcon;
}

void ResultsModel::startDecodes() const
{
    auto* self = const_cast<ResultsModel*>(this);
    while (m_running < kMaxRunning && !m_pending.isEmpty()) {
        const QString path = m_pending.takeLast();
        ++m_running;
        auto* watcher = new QFutureWatcher<Thumbnail>(self);
        const quint64 generation = m_generation;
        connect(watcher, &QFutureWatcher<Thumbnail>::finished, self, [self, watcher, generation] {
            watcher->deleteLater();
            --self->m_running;
            self->decoded(watcher->result(), generation);
            self->startDecodes();
        });
        watcher->setFuture(decodeThumbnailInPool(path, kIconSide));
    }
}

void ResultsModel::decoded(const Thumbnail& thumbnail, quint64 generation)
{
    if (generation != m_generation)
        return;
    m_asked.remove(thumbnail.path);
    ++m_finished;
    QPixmap pixmap;
    if (!thumbnail.image.isNull()) {
        pixmap = QPixmap::fromImage(thumbnail.image);
    } else {
        m_described.insert(thumbnail.path, thumbnail.description());
        pixmap = placeholderPixmap(thumbnail.format, kIconSide);
    }
    const int kilobytes = std::max(1, static_cast<int>(pixmap.width() * pixmap.height() * 4 / 1024));
    m_cache.insert(thumbnail.path, new QPixmap(pixmap), kilobytes);
    const int row = m_rows.value(thumbnail.path, -1);
    if (row >= 0)
        Q_EMIT dataChanged(index(row), index(row), { Qt::DecorationRole, Qt::DisplayRole });
}

} // namespace quillon
