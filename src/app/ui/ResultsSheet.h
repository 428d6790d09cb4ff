#pragma once

#include "app/ui/ResultsModel.h"

#include <QDialog>

#include <functional>
#include <memory>

class QComboBox;
class QLabel;
class QListView;
class QPushButton;
class QSortFilterProxyModel;
class QSpinBox;
class QUrl;

namespace quillon {

class ResultsExports;
struct RunPlan;

// What a run made, shown when it ends: the counts line, a grid of the final
// outputs in plan order (`resultsView`: thumbnail, name and status of each)
// and Open Output Folder. A double-click opens an output with the default
// viewer. Each output shows the values its varying parameters had; the grid
// can be sorted by one of them, and Use These Values asks for the chain that
// makes the selected output again. Not modal: it may stay open beside the
// window; each run refills it.
class ResultsSheet final : public QDialog {
    Q_OBJECT
public:
    explicit ResultsSheet(QWidget* parent = nullptr);

    // How files and folders are opened (the window's opener, which tests watch).
    void setUrlOpener(std::function<bool(const QUrl&)> opener) { m_opener = std::move(opener); }
    // The plan of the run shown, for the contact sheet and the animation.
    void setPlanSource(std::function<std::shared_ptr<const RunPlan>()> source) { m_plan = std::move(source); }
    ResultsExports* exports() const { return m_exports; }

    // `details`: why outputs are missing, one line each.
    void showResults(const QString& summary, const QString& folder, QList<ResultItem> items,
        const QStringList& details = {});
    // Where a failure to open an output or the folder is told.
    void setFailureSink(std::function<void(const QString&)> sink) { m_failure = std::move(sink); }

    ResultsModel* model() const { return m_model; }
    QListView* view() const { return m_view; }
    // The output selected in the grid (a row of model()), -1 for none.
    int selectedOutput() const;
    // Sorts the grid by a varying parameter; empty for plan order.
    void sortByParameter(const QString& name);

Q_SIGNALS:
    // Use These Values on the output at this row of model().
    void useValuesRequested(int row);

private:
    void fillSortChoices();
    void updateButtons();
    void openItem(const QModelIndex& index);
    void openUrl(const QUrl& url);

    std::function<bool(const QUrl&)> m_opener;
    std::function<std::shared_ptr<const RunPlan>()> m_plan;
    QSpinBox* m_fps = nullptr;
    std::function<void(const QString&)> m_failure;
    QLabel* m_details = nullptr;
    ResultsModel* m_model = nullptr;
    QSortFilterProxyModel* m_sorted = nullptr;
    ResultsExports* m_exports = nullptr;
    QComboBox* m_sortPopup = nullptr;
    QPushButton* m_useValues = nullptr;
    QListView* m_view = nullptr;
    QLabel* m_summary = nullptr;
    QPushButton* m_openFolder = nullptr;
    QString m_folder;
};

} // namespace quillon
