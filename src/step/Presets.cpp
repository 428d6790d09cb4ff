// The preset of a run file: the chosen preset of the definition becomes its
// only one.

#include "step/FilterProcessObject.h"

#include "run/RunSettings.h"
#include "step/XmlFiles.h"

namespace quillon {

pugi::xml_node filterProcessObject::getPresetFromRootWithRoot(pugi::xml_node root) const
{
    const pugi::xml_node preset = elementChildAt(root.child("Presets"), settings().presetIndex);
    return preset ? makeDefaultPresetFromPreset(preset) : pugi::xml_node();
}

pugi::xml_node filterProcessObject::getPresetFromRootCopyWithRoot(pugi::xml_node root) const
{
    const pugi::xml_node preset = elementChildAt(root.child("Presets"), 0);
    return preset ? makeDefaultPresetFromPreset(preset) : pugi::xml_node();
}

pugi::xml_node filterProcessObject::makeDefaultPresetFromPreset(pugi::xml_node preset)
{
    if (!preset)
        return {};
    // The new element waits at document level until setPresetWithPreset
    // moves it into Presets; a pugixml node always belongs to a document.
    pugi::xml_node wrapped = preset.root().append_child("DefaultPreset");
    while (pugi::xml_node child = preset.first_child())
        wrapped.append_move(child);
    return wrapped;
}

void filterProcessObject::setPresetWithPreset(pugi::xml_node preset, pugi::xml_node root)
{
    pugi::xml_node presets = root.child("Presets");
    if (!presets) {
        printConsoleLine(QStringLiteral("Replace preset failed!"));
        return;
    }
    while (pugi::xml_node child = presets.first_child())
        presets.remove_child(child);
    presets.append_move(preset);
}

} // namespace quillon
