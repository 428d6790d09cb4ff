#pragma once

#include "app/ui/Thumbnails.h"

#include <QAbstractListModel>
#include <QCache>
#include <QList>
#include <QPixmap>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace quillon {

// What became of one planned final output.
enum class OutputStatus { Written, Missing, NotRun };

struct ResultItem {
    QString path;
    OutputStatus status = OutputStatus::NotRun;
    // The values of the parameters that varied for this output, by name
    // ("Amount", or "2:Amount" in a chain of several filters).
    QVariantMap values {};
    QStringList valueNames {}; // the names of `values` in chain order
    QString reason = {}; // why a missing output is missing, when known
};

// The final outputs of a run in plan order, one row each: the file's name
// and status as text, its thumbnail as decoration. Thumbnails load lazily:
// a row's decoration is asked for only when the view shows it, and only then
// is the file decoded, in the thumbnail pool, a few at a time and the newest
// request first; decoded pictures stay in a cache of bounded size.
class ResultsModel final : public QAbstractListModel {
    Q_OBJECT
public:
    // ValuesRole: "Amount=0.250  Variations=1407"; SortRole: the value of
    // the sort parameter (setSortParameter), else the row.
    enum Role { PathRole = Qt::UserRole + 1, StatusRole, ValuesRole, SortRole };
    // Thumbnails in the results grid are this size at most.
    static constexpr int kIconSide = 128;
    // Decodes going at once; pending requests beyond kMaxPending drop the
    // oldest (rows long scrolled past).
    static constexpr int kMaxRunning = 2;
    static constexpr qsizetype kMaxPending = 256;

    explicit ResultsModel(QObject* parent = nullptr);

    void setItems(QList<ResultItem> items);
    const QList<ResultItem>& items() const { return m_items; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    static QString statusText(OutputStatus status);
    static QString valuesText(const ResultItem& item, const QString& separator);
    // The parameter SortRole gives; empty for plan order.
    void setSortParameter(const QString& name) { m_sortParameter = name; }
    // Decodes asked for since the last setItems.
    int decodesRequested() const { return m_requested; }
    // Decodes finished since the last setItems.
    int decodesFinished() const { return m_finished; }

private:
    QPixmap thumbnailFor(int row) const;
    void startDecodes() const;
    void decoded(const Thumbnail& thumbnail, quint64 generation);

    QList<ResultItem> m_items;
    QString m_sortParameter;
    QHash<QString, int> m_rows; // path -> row
    quint64 m_generation = 0;
    // Lazy loading state, touched from data() and so mutable.
    mutable QCache<QString, QPixmap> m_cache;
    mutable QHash<QString, QString> m_described; // path -> text for files without a picture
    mutable QSet<QString> m_asked; // pending or decoding
    mutable QList<QString> m_pending; // newest last
    mutable int m_running = 0;
    mutable int m_requested = 0;
    int m_finished = 0;
    QPixmap m_missingIcon;
    QPixmap m_notRunIcon;
    QPixmap m_loadingIcon;
};

} // namespace quillon
