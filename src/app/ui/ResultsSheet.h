#pragma once

#include "app/ui/ResultsModel.h"

#include <QDialog>

#include <functional>

class QLabel;
class QListView;
class QPushButton;
class QUrl;

namespace quillon {

// What a run made, shown when it ends: the counts line, a grid of the final
// outputs in plan order (`resultsView`: thumbnail, name and status of each)
// and Open Output Folder. A double-click opens an output with the default
// viewer. Not modal: it may stay open beside the window; each run refills it.
class ResultsSheet final : public QDialog {
    Q_OBJECT
public:
    explicit ResultsSheet(QWidget* parent = nullptr);

    // How files and folders are opened (the window's opener, which tests watch).
    void setUrlOpener(std::function<bool(const QUrl&)> opener) { m_opener = std::move(opener); }

    // `details`: why outputs are missing, one line each.
    void showResults(const QString& summary, const QString& folder, QList<ResultItem> items,
        const QStringList& details = {});
    // Where a failure to open an output or the folder is told.
    void setFailureSink(std::function<void(const QString&)> sink) { m_failure = std::move(sink); }

    ResultsModel* model() const { return m_model; }
    QListView* view() const { return m_view; }

private:
    void openItem(const QModelIndex& index);
    void openUrl(const QUrl& url);

    std::function<bool(const QUrl&)> m_opener;
    std::function<void(const QString&)> m_failure;
    QLabel* m_details = nullptr;
    ResultsModel* m_model = nullptr;
    QListView* m_view = nullptr;
    QLabel* m_summary = nullptr;
    QPushButton* m_openFolder = nullptr;
    QString m_folder;
};

} // namespace quillon
