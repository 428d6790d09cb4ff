#pragma once

#include "library/Record.h"

#include <QCoreApplication>
#include <QHash>
#include <QStringList>

namespace quillon {

// The items of the preset pop-up: "Preset i", followed by the preset's own
// name where its definition gives one ("Preset 0 — Default"). The names are
// read from the definition once per version of the file.
class PresetTitles final {
    Q_DECLARE_TR_FUNCTIONS(PresetTitles)
public:
    // One title per preset of `filter` ("PresetCount" of its "Presets").
    QStringList titlesFor(const Record& filter);

private:
    QHash<QString, QStringList> m_names; // path and modification time -> names
};

} // namespace quillon
