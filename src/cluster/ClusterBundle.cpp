#include "cluster/ClusterBundle.h"

#include "chain/ChainFile.h"
#include "run/SafeFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace quillon {

namespace {

// Bundles hold one run's plan; this keeps a damaged file from filling memory.
constexpr qint64 kMaxBundleFileBytes = qint64(1) << 30;

bool readJsonObject(const QString& path, QJsonObject* object, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaxBundleFileBytes) {
        *error = QStringLiteral("Cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    QJsonParseError parse;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parse);
    if (!document.isObject()) {
        *error = QStringLiteral("%1 is not a bundle file: %2").arg(path, parse.errorString());
        return false;
    }
    *object = document.object();
    return true;
}

} // namespace

QString ClusterBundle::partReportPath(int element) const
{
    return QDir(directory).filePath(bundle::kParts + QStringLiteral("/part-%1.json").arg(element));
}

bool saveBundleFile(const QString& path, const QByteArray& bytes, QString* error, bool executable)
{
    // Parts on many hosts write into the bundle: never through a link.
    QString why;
    if (saveUserFile(path, bytes, &why, executable ? 0777 : 0666))
        return true;
    if (error)
        *error = why.isEmpty() ? why : why.at(0).toUpper() + why.mid(1);
    return false;
}

bool loadClusterBundle(const QString& directory, ClusterBundle* bundle, QString* error, bool withPlan)
{
    ClusterBundle loaded;
    loaded.directory = QDir::cleanPath(QFileInfo(directory).absoluteFilePath());
    const QDir dir(loaded.directory);
    QJsonObject manifest;
    QJsonObject settings;
    if ((withPlan && !readJsonObject(dir.filePath(bundle::kManifest), &manifest, error))
        || !readJsonObject(dir.filePath(bundle::kSettings), &settings, error)
        || (withPlan && !readJsonObject(dir.filePath(bundle::kPlan), &loaded.plan, error)))
        return false;
    loaded.settings = settingsFromJson(settings);
    for (const QJsonValue& input : manifest.value(QStringLiteral("inputs")).toArray())
        loaded.inputs.append(input.toString());
    loaded.elements = manifest.value(QStringLiteral("elements")).toInt();
    loaded.reportFile = manifest.value(QStringLiteral("report")).toString();
    if (withPlan && loaded.elements < 1) {
        *error = QStringLiteral("%1 names no element").arg(dir.filePath(bundle::kManifest));
        return false;
    }
    ChainReadResult chain = readChainFile(dir.filePath(bundle::kChain));
    if (chain.status != ChainReadResult::Ok) {
        *error = QStringLiteral("Cannot read the chain file %1: %2")
                     .arg(dir.filePath(bundle::kChain), chain.error);
        return false;
    }
    loaded.chain = std::move(chain.chain);
    *bundle = std::move(loaded);
    return true;
}

} // namespace quillon
