#include "app/DemoProfile.h"

#include "app/Preferences.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace quillon {

namespace {

QString firstExisting(const QStringList& candidates)
{
    for (const QString& candidate : candidates) {
        if (!candidate.isEmpty() && QFileInfo::exists(candidate))
            return QDir::cleanPath(candidate);
    }
    return candidates.isEmpty() ? QString() : QDir::cleanPath(candidates.last());
}

} // namespace

DemoLocations findDemoLocations(const QString& applicationDir)
{
    const QDir appDir(applicationDir);
    DemoLocations locations;

    // Only places relative to the program: an install, or a build tree (which
    // links share/quillon/filters to the sources and builds the tool in tools/).
    locations.filtersDir = firstExisting({ appDir.filePath(QStringLiteral("../share/quillon/filters")) });
    locations.toolPath
        = firstExisting({ appDir.filePath(QStringLiteral("../libexec/quillon/quillon-standin-render")),
            appDir.filePath(QStringLiteral("../tools/quillon-standin-render")) });

    const QString output = qEnvironmentVariable("QUILLON_DEMO_OUTPUT");
    locations.outputDir
        = !output.isEmpty() ? output : QDir(QDir::tempPath()).filePath(QStringLiteral("quillon-demo"));

    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    locations.settingsFile = QDir(config).filePath(QStringLiteral("Quillon/demo.conf"));
    return locations;
}

std::unique_ptr<Preferences> openDemoPreferences(const DemoLocations& locations, QString* error)
{
    if (!QDir().mkpath(locations.outputDir)) {
        if (error)
            *error = QStringLiteral("Cannot create the demo output folder %1").arg(locations.outputDir);
        return nullptr;
    }
    auto prefs = std::make_unique<Preferences>(locations.settingsFile);
    if (!prefs->stringForKey(pref::PREF_RESET))
        prefs->prefsReset();
    // Set every time: the build tree or the install may have moved.
    prefs->setString(pref::TOOL_PATH, locations.toolPath);
    prefs->setString(pref::FILTERS_PATH, locations.filtersDir);
    prefs->setString(pref::OUTPUT_DIR, locations.outputDir);
    if (!prefs->sync()) {
        if (error)
            *error = QStringLiteral("Cannot write the demo settings %1").arg(locations.settingsFile);
        return nullptr;
    }
    return prefs;
}

} // namespace quillon
