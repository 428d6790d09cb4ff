#include "chain/ui/ChainDocument.h"

#include <QDir>
#include <QFileInfo>

namespace quillon {

QString ChainDocument::dialogDirectory() const
{
    const QFileInfo info(m_file);
    return !m_file.isEmpty() && info.absoluteDir().exists() ? info.absolutePath() : QDir::homePath();
}

void ChainDocument::setFile(const QString& path)
{
    m_file = path;
    m_edited = false;
    Q_EMIT changed();
}

void ChainDocument::markEdited()
{
    if (m_edited)
        return;
    m_edited = true;
    Q_EMIT changed();
}

} // namespace quillon
