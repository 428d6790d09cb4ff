<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>AddFilterSheet</name>
    <message>
        <source>Add filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose one or more filters; they are added to the end of the chain in this order.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search by name or author</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ChainPanel</name>
    <message>
        <source>&lt;b&gt;Filter chain&lt;/b&gt; (runs from top to bottom)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add filters from the library to the end of the chain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the selected filter from the chain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Run the selected filter earlier</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Run the selected filter later</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Chain…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save Chain…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reading the Filters directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Render texture maps (one-filter chain)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Maps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Base</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alpha</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Diffuse</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bump</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Normal</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Specular strength</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Specular exponent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ambient occlusion</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Roughness</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Metallic</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Quillon</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter parameters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The format of the output files: the selected tab under Output format on the Settings page</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the settings and run the chain (Ctrl+Return)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Chain…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save Chain…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+S</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview Run…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show every output the run would make, with its values, without running anything</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset Preferences…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>F1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Donate…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Quillon</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Error:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OK</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Skip Existing</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProgressSheet</name>
    <message>
        <source>Rendering</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Step:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Author:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Elapsed:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>0:00</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%v of %m tool runs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Abort</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SettingsPane</name>
    <message>
        <source>Paths</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Render tool:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the FilterForge Batch tool</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locate…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose the render tool executable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filters:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the directory of filter definitions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose the Filters directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>where the images go</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose or create the output directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Input image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Input directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No input (render at a size)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Input:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not set</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose the input image or directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Forget the chosen input</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>600</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Width in pixels when rendering without input</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>×</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Height in pixels when rendering without input</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>pixels (without input)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output names and frames</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Prefix:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>my-export</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frame suffix:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Number (1, 2, 3 …)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Four digits (0001, 0002 …)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Letter (a, b, c …)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frames:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>10</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>at most</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>999</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rendering</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Anti-aliasing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Multithreading</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Normal-map flip</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dithering</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Progressive rendering</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clean up after the run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tool log (qlrn_logfile.txt)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write the render tool output to a log in the output directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tool processes at once:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How many render tool processes run at once: the inputs of a step are spread over them (1: one at a time)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output format</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>JPEG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quality:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>80</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Full precision</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>PNG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bit depth</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>8 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>16 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compression</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>None</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fast</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Best</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Include transparency</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TIFF</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>24 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LZW</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deflate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Floating point</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TGA</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>32 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Flip row order</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>BMP</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This format has no options.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>EXR</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>PFM</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Thumbnail</name>
    <message>
        <source>missing</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WindowBatchDisplay</name>
    <message>
        <source>Run aborted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Run finished.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> — %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of the planned outputs exist already (%2). Replace them, or skip their tasks?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start anyway?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::AppDelegate</name>
    <message>
        <source>Reset every setting to its factory value? The chain is kept.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The chain has changes that are not saved in a chain file. Quit anyway?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A run is going. Abort it and quit?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The user guide (Help.pdf) is not installed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No viewer could open the user guide %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No browser could open the donation page %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Quillon</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon %1
Renders images in batches through a filter chain.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ChainListModel</name>
    <message>
        <source>Filter chain (runs top to bottom)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ChainPanel</name>
    <message>
        <source>Choose the Filters directory on the Settings page to add filters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter chain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reading the Filters directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Preset:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the selected filter (Delete)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move the selected filter up (Ctrl+Up)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move the selected filter down (Ctrl+Down)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No filter selected: select one in the chain.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Parameters of %1 (position %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preset %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preset %1 — %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it cannot be read</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The filter definition of %1 could not be read; the filter was not added.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save filter chain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon chain (*.qlch)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The chain could not be saved to %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select Chain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon needs you to locate a saved filter chain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only chain files on this computer can be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The chain has changes that are not saved in a chain file. Replace it anyway?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ChainPreview</name>
    <message>
        <source>Preview</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Render frame 1 through the whole chain into a temporary folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview of frame 1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rendering a preview…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview cancelled.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview: the input directory holds no file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview: no temporary folder could be made.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview: the render tool wrote no image.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frame 1 in %1 s</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::LibraryListModel</name>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Author</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::MainWindow</name>
    <message>
        <source>Start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings and filter parameters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output format of the run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output format: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Untitled chain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1[*] — Quillon</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ParamTableModel</name>
    <message>
        <source>Active: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Active</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Parameter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Variation</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ParameterEditor</name>
    <message>
        <source>Variation over the frames</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter parameters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Random</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Toggle</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Mode:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check box</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sweep</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Integer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Real</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Variation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Variation of %1 over the frames</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::PlanPreview</name>
    <message>
        <source>Preview Run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Input</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Step</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Values</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&lt;no source&gt;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 tool runs, %2 outputs. Output format: %3</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ProgressSheet</name>
    <message>
        <source>Newest output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About %1:%2 left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n image(s) of this run are rendered. Abort the run?</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>%v of %m images</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%v of %m tool runs</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::RangeEditor</name>
    <message>
        <source>Random</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Mode:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;From:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;To:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ResultsModel</name>
    <message>
        <source>missing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (%2: %3)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::ResultsSheet</name>
    <message>
        <source>Results</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Why outputs are missing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Outputs of the run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Output Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing could open %1.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>quillon::SettingsPane</name>
    <message>
        <source>Width</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Height</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Most frames</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>JPEG quality</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>JPEG quality value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output format</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locate it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon needs you to locate to FilterForge Batch tool</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon needs you to locate the Filters directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This one</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon needs you to locate or create the output directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon needs you to locate an input image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quillon needs you to locate an input directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not set</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
