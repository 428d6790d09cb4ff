#pragma once

#include <QString>

#include <memory>

namespace quillon {

class Preferences;

// Where the demo set-up finds its pieces.
struct DemoLocations {
    QString filtersDir; // the sample filter definitions
    QString toolPath; // the stand-in render tool
    QString outputDir; // where the demo renders
    QString settingsFile; // the demo's own preferences store
};

// Looks for the sample filters and the stand-in render tool next to the
// executable in `applicationDir` (an installed copy: bin/ and share/quillon),
// then in the build tree. The store lives in the user's config directory as
// Quillon/demo.conf; the output folder is $QUILLON_DEMO_OUTPUT or
// <temp>/quillon-demo.
DemoLocations findDemoLocations(const QString& applicationDir);

// Opens the demo store (reset to the factory values on first use) and points
// its render tool, Filters and output paths at `locations`, creating the
// output folder. The user's real store is not touched. Empty on failure.
std::unique_ptr<Preferences> openDemoPreferences(const DemoLocations& locations, QString* error = nullptr);

} // namespace quillon
