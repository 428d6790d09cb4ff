#include "chain/ChainKeeper.h"

#include "chain/ChainFile.h"

#include <QFileInfo>
#include <QtConcurrent/QtConcurrentRun>

namespace quillon {

ChainKeeper::ChainKeeper()
{
    // One thread: the writes land in the order of the changes.
    m_writer.setMaxThreadCount(1);
}

ChainKeeper::~ChainKeeper()
{
    waitForWrites();
}

void ChainKeeper::keep(const RecordList& chain)
{
    if (m_path.isEmpty())
        return;
    std::optional<QByteArray> bytes = chainFileBytes(chain);
    if (!bytes)
        return;
    (void)QtConcurrent::run(&m_writer, [path = m_path, bytes = std::move(*bytes)] {
        if (!QFileInfo(path).isSymLink())
            writeChainBytes(path, bytes);
    });
}

RecordList ChainKeeper::restore() const
{
    if (m_path.isEmpty() || !QFileInfo(m_path).isFile())
        return {};
    ChainReadResult result = readChainFile(m_path);
    return result.status == ChainReadResult::Refused ? RecordList() : std::move(result.chain);
}

void ChainKeeper::waitForWrites()
{
    m_writer.waitForDone();
}

} // namespace quillon
