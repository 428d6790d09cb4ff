#include "SyntheticLibrary.h"

#include <QDir>
#include <QFile>

#include <random>
#include <string>

namespace quillon::bench {

namespace {

const char* const kControlKinds[]
    = { "SliderControl", "IntSliderControl", "AngleControl", "CheckboxControl" };

std::string controlId(int i)
{
    return "ctl_" + std::to_string(i);
}

} // namespace

qint64 writeSyntheticDefinition(
    const QString& path, const QString& name, qint64 targetBytes, int presets, std::uint64_t seed)
{
    std::mt19937_64 rng(seed);
    std::uniform_int_distribution<int> value(0, 1000);
    const int controls = 12 + static_cast<int>(rng() % 40);

    std::string xml;
    xml.reserve(static_cast<size_t>(targetBytes) + 4096);
    xml += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Filter>\n";
    xml += "  <Information name-en=\"" + name.toStdString()
        + "\" author=\"Synthetic Author\" description-en=\"A generated filter for benchmarks\""
          " category=\"Benchmarks\" version=\"3\"/>\n";
    xml += "  <Components>\n    <Result><FilterType value=\"" + std::to_string(rng() % 3) + "\"/></Result>\n";
    for (int i = 0; i < controls; ++i) {
        const char* kind = kControlKinds[i % 4];
        xml += std::string("    <") + kind + " id=\"" + controlId(i) + "\">\n";
        xml += "      <Name value-en=\"Control " + std::to_string(i) + "\"/>\n";
        if (i % 4 == 1)
            xml += "      <RangeMax value=\"" + std::to_string(10 + value(rng)) + "\"/>\n";
        xml += "      <DefaultValue value=\"" + std::to_string(value(rng)) + "\"/>\n";
        xml += std::string("    </") + kind + ">\n";
    }
    // The node graph: the bulk of a real definition.
    const qint64 presetBytes = 200LL * controls * presets;
    int node = 0;
    while (static_cast<qint64>(xml.size()) + presetBytes < targetBytes) {
        xml += "    <Component type=\"Blend\" id=\"node_" + std::to_string(node) + "\" x=\""
            + std::to_string(value(rng)) + "\" y=\"" + std::to_string(value(rng))
            + "\">\n      <Input name=\"Foreground\" source=\"node_" + std::to_string(node + 1)
            + "\"/>\n      <Input name=\"Background\" source=\"node_" + std::to_string(node + 2)
            + "\"/>\n      <Parameter name=\"Opacity\" value=\"" + std::to_string(value(rng))
            + "\" curve=\"0.000 0.250 0.500 0.750 1.000\"/>\n    </Component>\n";
        ++node;
    }
    xml += "  </Components>\n  <Presets>\n";
    for (int p = 0; p < presets; ++p) {
        xml += "    <Preset name-en=\"Preset " + std::to_string(p) + "\">\n";
        xml += "      <Settings variation=\"" + std::to_string(1 + value(rng))
            + "\" map_type=\"0\" seamless=\"false\" size=\"600\"/>\n      <Controls>\n";
        for (int i = 0; i < controls; ++i) {
            const char* kind = kControlKinds[i % 4];
            xml += std::string("        <") + kind + " id=\"" + controlId(i) + "\">";
            if (i % 4 == 3)
                xml += std::string("<Checked value=\"") + (value(rng) > 500 ? "true" : "false") + "\"/>";
            else
                xml += "<Value value=\"" + std::to_string(value(rng)) + "\"/>";
            xml += std::string("</") + kind + ">\n";
        }
        xml += "      </Controls>\n    </Preset>\n";
    }
    xml += "  </Presets>\n</Filter>\n";

    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(xml.data(), static_cast<qint64>(xml.size()));
    return static_cast<qint64>(xml.size());
}

qint64 writeSyntheticLibrary(const QString& dir, int count, std::uint64_t seed)
{
    std::mt19937_64 rng(seed);
    std::uniform_int_distribution<qint64> small(20 * 1024, 200 * 1024);
    std::uniform_int_distribution<qint64> large(2 * 1024 * 1024, 5 * 1024 * 1024);
    qint64 total = 0;
    for (int i = 0; i < count; ++i) {
        const QString folder = QStringLiteral("%1/Category %2/Set %3").arg(dir).arg(i % 12).arg(i % 5);
        QDir().mkpath(folder);
        const qint64 size = (i % 200 == 7) ? large(rng) : small(rng);
        const QString name = QStringLiteral("Filter %1").arg((i * 7919) % count, 5, 10, QLatin1Char('0'));
        total += writeSyntheticDefinition(QStringLiteral("%1/filter-%2.ffxml").arg(folder).arg(i), name, size,
            1 + static_cast<int>(rng() % 4), rng());
    }
    return total;
}

} // namespace quillon::bench
