#pragma once

#include <QMainWindow>

#include <functional>
#include <memory>

namespace Ui {
class MainWindow;
} // namespace Ui

namespace quillon {

class ChainPanel;
class ChainPreview;
class ParameterEditor;
class Preferences;
class SettingsPane;

// The one window: the chain panel with Preview on the left, beside it the Settings page
// and the Filter parameters page, Start below, the menus and the status line.
// It hands each area to its own widget and connects them; what a command does
// with the run, the preferences and the help lives in AppDelegate.
class MainWindow final : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    Ui::MainWindow* ui() const { return m_ui.get(); }
    ChainPanel* chainPanel() const { return m_chainPanel; }
    // Preview, below the chain list.
    ChainPreview* chainPreview() const { return m_chainPreview; }
    ParameterEditor* parameterEditor() const { return m_parameterEditor; }
    SettingsPane* settingsPane() const { return m_settingsPane; }

    // The identifier ("1" or "2") of the selected page of mainTabControl.
    QString selectedMainTabIdentifier() const;

    // Puts the window and the splitter where they were last time, within
    // the available area of its screen.
    void restoreLayout(const Preferences& prefs);
    // Shrinks and moves the window into the available area of its screen.
    void fitToScreen();
    // Height kept free for a title bar before the frame is known.
    static constexpr int kTitleBarAllowance = 32;
    // Asked before the window closes; false keeps it open.
    void setCloseGuard(std::function<bool()> guard) { m_closeGuard = std::move(guard); }
    // Where the layout is saved when the window closes.
    void setLayoutStore(std::function<Preferences&()> store) { m_layoutStore = std::move(store); }
    // Opens a dropped chain file or takes a dropped image or folder as the
    // source; false for anything else.
    bool openDroppedPath(const QString& path);

Q_SIGNALS:
    void closing();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void mainTabDidSelectItem(int index);
    // The title names the chain file and marks an edited chain.
    void showChainDocument();

    std::unique_ptr<Ui::MainWindow> m_ui;
    ChainPanel* m_chainPanel = nullptr;
    ChainPreview* m_chainPreview = nullptr;
    ParameterEditor* m_parameterEditor = nullptr;
    SettingsPane* m_settingsPane = nullptr;
    std::function<bool()> m_closeGuard;
    std::function<Preferences&()> m_layoutStore;
};

} // namespace quillon
