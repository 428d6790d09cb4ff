#pragma once

#include <QObject>
#include <QString>

namespace quillon {

// The chain as the user's document: the chain file it was last opened from
// or saved to (none for a new or kept chain) and whether it was edited since.
class ChainDocument final : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    const QString& file() const { return m_file; }
    bool isEdited() const { return m_edited; }
    // Where a chain file dialog opens: the chain file's folder, or home.
    QString dialogDirectory() const;

    // The chain now matches `path` (empty: no file), unedited.
    void setFile(const QString& path);
    void markEdited();

Q_SIGNALS:
    void changed();

private:
    QString m_file;
    bool m_edited = false;
};

} // namespace quillon
