#pragma once

#include <QMainWindow>

namespace quillon {

// The application controller: owns the main window, the library and the
// chain.
class AppDelegate final : public QObject {
    Q_OBJECT
public:
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    QMainWindow* window() const { return m_window; }

private:
    QMainWindow* m_window = nullptr;
};

} // namespace quillon
