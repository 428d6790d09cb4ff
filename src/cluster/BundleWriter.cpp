#include "cluster/BundleWriter.h"

#include "chain/ChainFile.h"
#include "cluster/ClusterBundle.h"
#include "cluster/ElementFiles.h"
#include "cluster/ElementPlan.h"
#include "cluster/SubmitScripts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <iterator>
#include <utility>

#include <sys/vfs.h>

namespace quillon {

namespace {

// File systems several machines mount: NFS, SMB/CIFS, AFS, Lustre, GPFS,
// BeeGFS, CephFS, GFS2, OCFS2, PanFS, and FUSE (sshfs, gcsfuse, JuiceFS ...).
bool isSharedFileSystem(const QString& path)
{
    struct statfs info { };
    if (::statfs(QFile::encodeName(path).constData(), &info) != 0)
        return false;
    static const unsigned long kShared[]
        = { 0x6969UL, 0x517BUL, 0xFF534D42UL, 0xFE534D42UL, 0x5346414FUL, 0x0BD00BD0UL, 0x47504653UL,
              0x19830326UL, 0x00C36400UL, 0x01161970UL, 0x7461636FUL, 0xAAD7AAEAUL, 0x65735546UL };
    const auto type = static_cast<unsigned long>(info.f_type) & 0xFFFFFFFFUL;
    return std::find(std::begin(kShared), std::end(kShared), type) != std::end(kShared);
}

} // namespace

bool prepareBundleDirectory(const QString& directory, QString* error)
{
    const QFileInfo info(directory);
    if (info.exists() || info.isSymLink()) {
        if (!info.isDir()) {
            *error
                = QStringLiteral("%1 is not a directory; the bundle needs a new or empty one").arg(directory);
            return false;
        }
        if (!QDir(directory).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
            *error
                = QStringLiteral("%1 is not empty; the bundle needs a new or empty directory").arg(directory);
            return false;
        }
    }
    return true;
}

bool writeClusterBundle(const BundleRequest& request, QString* error)
{
    const QDir dir(request.directory);
    if (!QDir().mkpath(request.directory) || !dir.mkpath(bundle::kParts) || !dir.mkpath(bundle::kLogs)) {
        *error = QStringLiteral("%1: cannot create the folders of the bundle").arg(request.directory);
        return false;
    }
    QStringList inputs;
    for (const PlannedToolRun& run : request.plan.toolRuns) {
        if (run.step == 0 && !run.input.isEmpty())
            inputs.append(run.input);
    }
    const QList<QList<qsizetype>> elementRuns = elementToolRuns(request.plan);
    const qsizetype elements = elementRuns.size();
    const QJsonObject manifest { { QStringLiteral("elements"), elements },
        { QStringLiteral("inputs"), QJsonArray::fromStringList(inputs) },
        { QStringLiteral("quillonCli"), request.cliPath }, { QStringLiteral("report"), request.reportFile } };
    const auto json
        = [](const QJsonObject& object) { return QJsonDocument(object).toJson(QJsonDocument::Indented); };
    ScriptValues scripts { QDir::cleanPath(QFileInfo(request.directory).absoluteFilePath()), request.cliPath,
        static_cast<int>(elements), request.sbatchOptions };
    if (!writeChainFile(dir.filePath(bundle::kChain), request.chain, error)
        || !saveBundleFile(dir.filePath(bundle::kSettings), json(settingsToJson(request.settings)), error)
        || !saveBundleFile(dir.filePath(bundle::kManifest), json(manifest), error)
        || !saveBundleFile(dir.filePath(bundle::kPlan), request.plan.toJson(), error))
        return false;

    // The run planned again from these files must come out the same before
    // anything is submitted; an element then reads only its own part and
    // checks by the fingerprint that none of them changed since.
    ClusterBundle written;
    RunPlan again;
    if (!loadClusterBundle(request.directory, &written, error) || !replanBundle(written, &again, error)
        || !writeElementFiles(request.directory, request.plan, elementRuns,
            bundleFingerprint(request.directory, written.chain), error))
        return false;

    return saveBundleFile(dir.filePath(bundle::kPartScript), partScript(scripts), error, true)
        && saveBundleFile(dir.filePath(bundle::kCollectScript), collectScript(scripts), error, true)
        && saveBundleFile(dir.filePath(bundle::kSubmit), submitScript(scripts), error, true);
}

QStringList unsharedPathNotes(const BundleRequest& request)
{
    QList<std::pair<QString, QString>> paths { { request.directory, QStringLiteral("the bundle") },
        { request.settings.outputPath, QStringLiteral("the output directory") },
        { request.settings.toolPath, QStringLiteral("the render tool") },
        { request.cliPath, QStringLiteral("quillon-cli") } };
    if (!request.settings.sourcePath.isEmpty())
        paths.append({ request.settings.sourcePath, QStringLiteral("the input") });
    for (const RecordPtr& record : request.chain) {
        if (record)
            paths.append({ record->string(key::path), QStringLiteral("a filter definition") });
    }
    QStringList notes;
    for (const auto& [path, what] : paths) {
        if (!path.isEmpty() && !isSharedFileSystem(path))
            notes.append(QStringLiteral("%1 (%2)").arg(path, what));
    }
    return notes;
}

} // namespace quillon
