// The control file's global settings: rendering switches and the output
// format with its options.

#include "step/FilterProcessObject.h"

#include "run/RunSettings.h"
#include "step/XmlFiles.h"

namespace quillon {

// ---- Rendering and format options ----------------------------------------

pugi::xml_node filterProcessObject::createGlobalSettings(pugi::xml_node parent) const
{
    pugi::xml_node global = parent.append_child("GlobalSettings");
    createRenderOptions(global);
    createBitmapFormatOptions(global);
    return global;
}

pugi::xml_node filterProcessObject::createRenderOptions(pugi::xml_node parent) const
{
    const RunSettings& s = settings();
    pugi::xml_node options = parent.append_child("RenderingOptions");
    appendOption(options, "UseMultithreading", stringFromCheckbox(s.multithread));
    appendOption(options, "Dither", stringFromCheckbox(s.dither));
    appendOption(options, "Progressive", stringFromCheckbox(s.progressive));
    appendOption(options, "OptimizeBlurs", QStringLiteral("true"));
    appendOption(options, "AntiAliasBitmapComponentSources", stringFromCheckbox(s.antiAlias));
    appendOption(options, "Jitter", QStringLiteral("0"));
    appendOption(options, "TemporaryFilesLocation", QString());
    appendOption(options, "RAMUsageLimit", QStringLiteral("60"));
    appendOption(options, "NormalMapFlipY", stringFromCheckbox(s.normalmapFlip));
    return options;
}

pugi::xml_node filterProcessObject::createBitmapFormatOptions(pugi::xml_node parent) const
{
    const RunSettings& s = settings();
    pugi::xml_node options = parent.append_child("BitmapFormatOptions");
    appendOption(options, "DefaultFormat", getSelectedFormatText());

    pugi::xml_node jpg = options.append_child("JPG");
    appendOption(jpg, "Quality", s.jpegQualityText);
    appendOption(jpg, "FullPrecision", stringFromCheckbox(s.jpegFullPrecision));

    pugi::xml_node png = options.append_child("PNG");
    appendOption(png, "BitDepth", getPNGBitDepth(s.pngBitDepth));
    appendOption(png, "IncludeTransparency", stringFromCheckbox(s.pngIncludeTrans));
    appendOption(png, "ImageCompression", getPNGCompression(s.pngCompression));

    pugi::xml_node tif = options.append_child("TIF");
    appendOption(tif, "BitDepth", getTIFFBitDepth(s.tiffBitDepth));
    appendOption(tif, "IncludeTransparency", stringFromCheckbox(s.tiffIncludeTrans));
    appendOption(tif, "FloatFormat", stringFromCheckbox(s.tiffFloatFormat));
    appendOption(tif, "ImageCompression", getTIFFCompression(s.tiffCompression));

    pugi::xml_node tga = options.append_child("TGA");
    appendOption(tga, "BitDepth", getTGABitDepth(s.tgaBitDepth));
    appendOption(tga, "IncludeTransparency", stringFromCheckbox(s.tgaIncludeTrans));
    appendOption(tga, "FlipRowOrder", stringFromCheckbox(s.tgaFlipOrder));

    pugi::xml_node bmp = options.append_child("BMP");
    appendOption(bmp, "BitDepth", QStringLiteral("32"));
    appendOption(bmp, "FlipRowOrder", QStringLiteral("false"));

    pugi::xml_node exr = options.append_child("EXR");
    appendOption(exr, "BitDepth", QStringLiteral("32"));
    appendOption(exr, "FlipRowOrder", QStringLiteral("false"));
    appendOption(exr, "IncludeTransparency", QStringLiteral("true"));
    appendOption(exr, "ImageCompression", QStringLiteral("PIZ"));

    options.append_child("PFM");
    return options;
}

QString filterProcessObject::stringFromCheckbox(int state)
{
    if (state == 1)
        return QStringLiteral("true");
    if (state == 0)
        return QStringLiteral("false");
    return QStringLiteral("unknown");
}

QString filterProcessObject::getSelectedFormatText() const
{
    const QString& format = settings().format;
    // No format chosen: the window's first tab.
    return format.isEmpty() ? QStringLiteral("JPEG") : format;
}

QString filterProcessObject::getSelectedFileExtension() const
{
    return QLatin1Char('.') + getSelectedFormatText().toLower();
}

} // namespace quillon
