<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>AddFilterSheet</name>
    <message>
        <source>Add filters</source>
        <translation>Filter hinzufügen</translation>
    </message>
    <message>
        <source>Choose one or more filters; they are added to the end of the chain in this order.</source>
        <translation>Wählen Sie einen oder mehrere Filter; sie werden in dieser Reihenfolge ans Ende der Kette angefügt.</translation>
    </message>
    <message>
        <source>Search by name or author</source>
        <translation>Nach Name oder Autor suchen</translation>
    </message>
    <message>
        <source>Search filters</source>
        <translation>Filter suchen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
</context>
<context>
    <name>ChainPanel</name>
    <message>
        <source>&lt;b&gt;Filter chain&lt;/b&gt; (runs from top to bottom)</source>
        <translation>&lt;b&gt;Filterkette&lt;/b&gt; (läuft von oben nach unten)</translation>
    </message>
    <message>
        <source>Add…</source>
        <translation>Hinzufügen…</translation>
    </message>
    <message>
        <source>Add filters from the library to the end of the chain</source>
        <translation>Filter aus der Bibliothek ans Ende der Kette anfügen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected filter from the chain</source>
        <translation>Den ausgewählten Filter aus der Kette entfernen</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>Nach oben</translation>
    </message>
    <message>
        <source>Run the selected filter earlier</source>
        <translation>Den ausgewählten Filter früher ausführen</translation>
    </message>
    <message>
        <source>Down</source>
        <translation>Nach unten</translation>
    </message>
    <message>
        <source>Run the selected filter later</source>
        <translation>Den ausgewählten Filter später ausführen</translation>
    </message>
    <message>
        <source>Open Chain…</source>
        <translation>Kette öffnen…</translation>
    </message>
    <message>
        <source>Save Chain…</source>
        <translation>Kette speichern…</translation>
    </message>
    <message>
        <source>Reading the Filters directory</source>
        <translation>Der Filterordner wird gelesen</translation>
    </message>
    <message>
        <source>Render texture maps (one-filter chain)</source>
        <translation>Texturkarten rendern (Kette aus einem Filter)</translation>
    </message>
    <message>
        <source>Maps</source>
        <translation>Karten</translation>
    </message>
    <message>
        <source>Base</source>
        <translation>Basis</translation>
    </message>
    <message>
        <source>Alpha</source>
        <translation>Alpha</translation>
    </message>
    <message>
        <source>Diffuse</source>
        <translation>Diffus</translation>
    </message>
    <message>
        <source>Bump</source>
        <translation>Relief</translation>
    </message>
    <message>
        <source>Normal</source>
        <translation>Normale</translation>
    </message>
    <message>
        <source>Specular strength</source>
        <translation>Glanzstärke</translation>
    </message>
    <message>
        <source>Specular exponent</source>
        <translation>Glanzexponent</translation>
    </message>
    <message>
        <source>Ambient occlusion</source>
        <translation>Umgebungsverdeckung</translation>
    </message>
    <message>
        <source>Roughness</source>
        <translation>Rauheit</translation>
    </message>
    <message>
        <source>Metallic</source>
        <translation>Metallisch</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Quillon</source>
        <translation>Quillon</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Filter parameters</source>
        <translation>Filterparameter</translation>
    </message>
    <message>
        <source>The format of the output files: the selected tab under Output format on the Settings page</source>
        <translation>Das Format der Ausgabedateien: der ausgewählte Reiter unter Ausgabeformat auf der Seite Einstellungen</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Starten</translation>
    </message>
    <message>
        <source>Check the settings and run the chain (Ctrl+Return)</source>
        <translation>Einstellungen prüfen und die Kette ausführen (Strg+Eingabe)</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Open Chain…</source>
        <translation>Kette öffnen…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Save Chain…</source>
        <translation>Kette speichern…</translation>
    </message>
    <message>
        <source>Ctrl+S</source>
        <translation>Ctrl+S</translation>
    </message>
    <message>
        <source>Preview Run…</source>
        <translation>Lauf vorab ansehen…</translation>
    </message>
    <message>
        <source>Show every output the run would make, with its values, without running anything</source>
        <translation>Jede Ausgabe des Laufs mit ihren Werten zeigen, ohne etwas auszuführen</translation>
    </message>
    <message>
        <source>Reset Preferences…</source>
        <translation>Einstellungen zurücksetzen…</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>Quillon Help</source>
        <translation>Quillon-Hilfe</translation>
    </message>
    <message>
        <source>F1</source>
        <translation>F1</translation>
    </message>
    <message>
        <source>Donate…</source>
        <translation>Spenden…</translation>
    </message>
    <message>
        <source>About Quillon</source>
        <translation>Über Quillon</translation>
    </message>
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Error:</source>
        <translation>Fehler:</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>Ersetzen</translation>
    </message>
    <message>
        <source>Skip Existing</source>
        <translation>Vorhandene überspringen</translation>
    </message>
</context>
<context>
    <name>PresetTitles</name>
    <message>
        <source>Preset %1</source>
        <translation>Voreinstellung %1</translation>
    </message>
    <message>
        <source>Preset %1 — %2</source>
        <translation>Voreinstellung %1 — %2</translation>
    </message>
</context>
<context>
    <name>ProgressSheet</name>
    <message>
        <source>Rendering</source>
        <translation>Rendern</translation>
    </message>
    <message>
        <source>Step:</source>
        <translation>Schritt:</translation>
    </message>
    <message>
        <source>Filter:</source>
        <translation>Filter:</translation>
    </message>
    <message>
        <source>Author:</source>
        <translation>Autor:</translation>
    </message>
    <message>
        <source>Source:</source>
        <translation>Quelle:</translation>
    </message>
    <message>
        <source>Elapsed:</source>
        <translation>Vergangen:</translation>
    </message>
    <message>
        <source>0:00</source>
        <translation>0:00</translation>
    </message>
    <message>
        <source>%v of %m tool runs</source>
        <translation>%v von %m Werkzeugläufen</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>SettingsPane</name>
    <message>
        <source>Paths</source>
        <translation>Pfade</translation>
    </message>
    <message>
        <source>Render tool:</source>
        <translation>Render-Werkzeug:</translation>
    </message>
    <message>
        <source>the FilterForge Batch tool</source>
        <translation>das FilterForge-Batch-Werkzeug</translation>
    </message>
    <message>
        <source>Locate…</source>
        <translation>Suchen…</translation>
    </message>
    <message>
        <source>Choose the render tool executable</source>
        <translation>Das Programm des Render-Werkzeugs wählen</translation>
    </message>
    <message>
        <source>Filters:</source>
        <translation>Filter:</translation>
    </message>
    <message>
        <source>the directory of filter definitions</source>
        <translation>der Ordner der Filterdefinitionen</translation>
    </message>
    <message>
        <source>Choose the Filters directory</source>
        <translation>Den Filterordner wählen</translation>
    </message>
    <message>
        <source>Output:</source>
        <translation>Ausgabe:</translation>
    </message>
    <message>
        <source>where the images go</source>
        <translation>wohin die Bilder kommen</translation>
    </message>
    <message>
        <source>Choose or create the output directory</source>
        <translation>Den Ausgabeordner wählen oder anlegen</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>Source:</source>
        <translation>Quelle:</translation>
    </message>
    <message>
        <source>Input image</source>
        <translation>Eingabebild</translation>
    </message>
    <message>
        <source>Input directory</source>
        <translation>Eingabeordner</translation>
    </message>
    <message>
        <source>No input (render at a size)</source>
        <translation>Keine Eingabe (in einer Größe rendern)</translation>
    </message>
    <message>
        <source>Input:</source>
        <translation>Eingabe:</translation>
    </message>
    <message>
        <source>not set</source>
        <translation>nicht gesetzt</translation>
    </message>
    <message>
        <source>Choose the input image or directory</source>
        <translation>Das Eingabebild oder den Eingabeordner wählen</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Forget the chosen input</source>
        <translation>Die gewählte Eingabe vergessen</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>600</source>
        <translation>600</translation>
    </message>
    <message>
        <source>Width in pixels when rendering without input</source>
        <translation>Breite in Pixeln beim Rendern ohne Eingabe</translation>
    </message>
    <message>
        <source>×</source>
        <translation>×</translation>
    </message>
    <message>
        <source>Height in pixels when rendering without input</source>
        <translation>Höhe in Pixeln beim Rendern ohne Eingabe</translation>
    </message>
    <message>
        <source>pixels (without input)</source>
        <translation>Pixel (ohne Eingabe)</translation>
    </message>
    <message>
        <source>Output names and frames</source>
        <translation>Ausgabenamen und Einzelbilder</translation>
    </message>
    <message>
        <source>Prefix:</source>
        <translation>Präfix:</translation>
    </message>
    <message>
        <source>my-export</source>
        <translation>my-export</translation>
    </message>
    <message>
        <source>Frame suffix:</source>
        <translation>Bildendung:</translation>
    </message>
    <message>
        <source>Number (1, 2, 3 …)</source>
        <translation>Zahl (1, 2, 3 …)</translation>
    </message>
    <message>
        <source>Four digits (0001, 0002 …)</source>
        <translation>Vier Ziffern (0001, 0002 …)</translation>
    </message>
    <message>
        <source>Letter (a, b, c …)</source>
        <translation>Buchstabe (a, b, c …)</translation>
    </message>
    <message>
        <source>Frames:</source>
        <translation>Einzelbilder:</translation>
    </message>
    <message>
        <source>10</source>
        <translation>10</translation>
    </message>
    <message>
        <source>at most</source>
        <translation>höchstens</translation>
    </message>
    <message>
        <source>999</source>
        <translation>999</translation>
    </message>
    <message>
        <source>Rendering</source>
        <translation>Rendern</translation>
    </message>
    <message>
        <source>Anti-aliasing</source>
        <translation>Kantenglättung</translation>
    </message>
    <message>
        <source>Multithreading</source>
        <translation>Mehrere Threads</translation>
    </message>
    <message>
        <source>Normal-map flip</source>
        <translation>Normal-Map spiegeln</translation>
    </message>
    <message>
        <source>Dithering</source>
        <translation>Dithering</translation>
    </message>
    <message>
        <source>Progressive rendering</source>
        <translation>Progressives Rendern</translation>
    </message>
    <message>
        <source>Clean up after the run</source>
        <translation>Nach dem Lauf aufräumen</translation>
    </message>
    <message>
        <source>Tool log (qlrn_logfile.txt)</source>
        <translation>Werkzeugprotokoll (qlrn_logfile.txt)</translation>
    </message>
    <message>
        <source>Write the render tool output to a log in the output directory</source>
        <translation>Die Ausgabe des Render-Werkzeugs in ein Protokoll im Ausgabeordner schreiben</translation>
    </message>
    <message>
        <source>Tool processes at once:</source>
        <translation>Werkzeugprozesse gleichzeitig:</translation>
    </message>
    <message>
        <source>How many render tool processes run at once: the inputs of a step are spread over them (1: one at a time)</source>
        <translation>Wie viele Prozesse des Render-Werkzeugs gleichzeitig laufen: die Eingaben eines Schritts werden auf sie verteilt (1: einer nach dem anderen)</translation>
    </message>
    <message>
        <source>Output format</source>
        <translation>Ausgabeformat</translation>
    </message>
    <message>
        <source>JPEG</source>
        <translation>JPEG</translation>
    </message>
    <message>
        <source>Quality:</source>
        <translation>Qualität:</translation>
    </message>
    <message>
        <source>80</source>
        <translation>80</translation>
    </message>
    <message>
        <source>Full precision</source>
        <translation>Volle Genauigkeit</translation>
    </message>
    <message>
        <source>PNG</source>
        <translation>PNG</translation>
    </message>
    <message>
        <source>Bit depth</source>
        <translation>Bittiefe</translation>
    </message>
    <message>
        <source>8 bits</source>
        <translation>8 Bit</translation>
    </message>
    <message>
        <source>16 bits</source>
        <translation>16 Bit</translation>
    </message>
    <message>
        <source>Compression</source>
        <translation>Kompression</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Fast</source>
        <translation>Schnell</translation>
    </message>
    <message>
        <source>Best</source>
        <translation>Beste</translation>
    </message>
    <message>
        <source>Include transparency</source>
        <translation>Transparenz einschließen</translation>
    </message>
    <message>
        <source>TIFF</source>
        <translation>TIFF</translation>
    </message>
    <message>
        <source>24 bits</source>
        <translation>24 Bit</translation>
    </message>
    <message>
        <source>LZW</source>
        <translation>LZW</translation>
    </message>
    <message>
        <source>Deflate</source>
        <translation>Deflate</translation>
    </message>
    <message>
        <source>Floating point</source>
        <translation>Gleitkomma</translation>
    </message>
    <message>
        <source>TGA</source>
        <translation>TGA</translation>
    </message>
    <message>
        <source>32 bits</source>
        <translation>32 Bit</translation>
    </message>
    <message>
        <source>Flip row order</source>
        <translation>Zeilenreihenfolge umkehren</translation>
    </message>
    <message>
        <source>BMP</source>
        <translation>BMP</translation>
    </message>
    <message>
        <source>This format has no options.</source>
        <translation>Dieses Format hat keine Optionen.</translation>
    </message>
    <message>
        <source>EXR</source>
        <translation>EXR</translation>
    </message>
    <message>
        <source>PFM</source>
        <translation>PFM</translation>
    </message>
    <message>
        <source>Run the tool with Wine</source>
        <translation>Das Werkzeug mit Wine ausführen</translation>
    </message>
    <message>
        <source>The render tool is a Windows program (.exe): start it with wine and give it every path in its Windows form (Z:\…)</source>
        <translation>Das Render-Werkzeug ist ein Windows-Programm (.exe): es mit wine starten und ihm jeden Pfad in seiner Windows-Form (Z:\…) übergeben</translation>
    </message>
</context>
<context>
    <name>Thumbnail</name>
    <message>
        <source>missing</source>
        <translation>fehlt</translation>
    </message>
</context>
<context>
    <name>WindowBatchDisplay</name>
    <message>
        <source>Run aborted.</source>
        <translation>Lauf abgebrochen.</translation>
    </message>
    <message>
        <source>Run finished.</source>
        <translation>Lauf beendet.</translation>
    </message>
    <message>
        <source> — %1</source>
        <translation> — %1</translation>
    </message>
    <message>
        <source>%1 of the planned outputs exist already (%2). Replace them, or skip their tasks?</source>
        <translation>%1 der geplanten Ausgaben gibt es schon (%2). Sollen sie ersetzt oder ihre Aufgaben übersprungen werden?</translation>
    </message>
    <message>
        <source>Start anyway?</source>
        <translation>Trotzdem starten?</translation>
    </message>
</context>
<context>
    <name>quillon::AnimationMaker</name>
    <message>
        <source>There are no frames to make an animation of.</source>
        <translation>Es gibt keine Einzelbilder, aus denen eine Animation erstellt werden kann.</translation>
    </message>
    <message>
        <source>ffmpeg was not found on PATH; install the ffmpeg package to make animations.</source>
        <translation>ffmpeg wurde nicht im PATH gefunden; installieren Sie das Paket ffmpeg, um Animationen zu erstellen.</translation>
    </message>
    <message>
        <source>An animation is named .gif, .webm or .mp4: %1</source>
        <translation>Eine Animation endet auf .gif, .webm oder .mp4: %1</translation>
    </message>
    <message>
        <source>Cannot make a temporary folder: %1</source>
        <translation>Es kann kein temporärer Ordner angelegt werden: %1</translation>
    </message>
    <message>
        <source>Cannot link the frame %1 into a temporary folder</source>
        <translation>Das Einzelbild %1 kann nicht in einen temporären Ordner verlinkt werden</translation>
    </message>
    <message>
        <source>ffmpeg could not be started: %1</source>
        <translation>ffmpeg konnte nicht gestartet werden: %1</translation>
    </message>
    <message>
        <source>ffmpeg failed making %1: %2</source>
        <translation>ffmpeg konnte %1 nicht erstellen: %2</translation>
    </message>
</context>
<context>
    <name>quillon::AppDelegate</name>
    <message>
        <source>Reset every setting to its factory value? The chain is kept.</source>
        <translation>Alle Einstellungen auf ihre Werkswerte zurücksetzen? Die Kette bleibt erhalten.</translation>
    </message>
    <message>
        <source>The chain has changes that are not saved in a chain file. Quit anyway?</source>
        <translation>Die Kette hat Änderungen, die in keiner Kettendatei gespeichert sind. Trotzdem beenden?</translation>
    </message>
    <message>
        <source>A run is going. Abort it and quit?</source>
        <translation>Ein Lauf ist im Gange. Abbrechen und beenden?</translation>
    </message>
    <message>
        <source>The user guide (Help.pdf) is not installed.</source>
        <translation>Das Benutzerhandbuch (Help.pdf) ist nicht installiert.</translation>
    </message>
    <message>
        <source>No viewer could open the user guide %1.</source>
        <translation>Kein Betrachter konnte das Benutzerhandbuch %1 öffnen.</translation>
    </message>
    <message>
        <source>No browser could open the donation page %1.</source>
        <translation>Kein Browser konnte die Spendenseite %1 öffnen.</translation>
    </message>
    <message>
        <source>About Quillon</source>
        <translation>Über Quillon</translation>
    </message>
    <message>
        <source>Quillon %1
Renders images in batches through a filter chain.</source>
        <translation>Quillon %1
Rendert Bilder stapelweise durch eine Filterkette.</translation>
    </message>
    <message>
        <source>The chain now makes %1 again.</source>
        <translation>Die Kette erzeugt jetzt wieder %1.</translation>
    </message>
    <message>
        <source>Variations</source>
        <translation>Variationen</translation>
    </message>
</context>
<context>
    <name>quillon::ChainListModel</name>
    <message>
        <source>Filter chain (runs top to bottom)</source>
        <translation>Filterkette (läuft von oben nach unten)</translation>
    </message>
</context>
<context>
    <name>quillon::ChainPanel</name>
    <message>
        <source>Choose the Filters directory on the Settings page to add filters.</source>
        <translation>Wählen Sie den Filterordner auf der Seite Einstellungen, um Filter hinzuzufügen.</translation>
    </message>
    <message>
        <source>Filter chain</source>
        <translation>Filterkette</translation>
    </message>
    <message>
        <source>Reading the Filters directory</source>
        <translation>Der Filterordner wird gelesen</translation>
    </message>
    <message>
        <source>Filter library</source>
        <translation>Filterbibliothek</translation>
    </message>
    <message>
        <source>Preset</source>
        <translation>Voreinstellung</translation>
    </message>
    <message>
        <source>&amp;Preset:</source>
        <translation>&amp;Voreinstellung:</translation>
    </message>
    <message>
        <source>Remove the selected filter (Delete)</source>
        <translation>Den ausgewählten Filter entfernen (Entf)</translation>
    </message>
    <message>
        <source>Move the selected filter up (Ctrl+Up)</source>
        <translation>Den ausgewählten Filter nach oben schieben (Strg+Pfeil hoch)</translation>
    </message>
    <message>
        <source>Move the selected filter down (Ctrl+Down)</source>
        <translation>Den ausgewählten Filter nach unten schieben (Strg+Pfeil runter)</translation>
    </message>
    <message>
        <source>No filter selected: select one in the chain.</source>
        <translation>Kein Filter ausgewählt: wählen Sie einen in der Kette.</translation>
    </message>
    <message>
        <source>Parameters of %1 (position %2)</source>
        <translation>Parameter von %1 (Position %2)</translation>
    </message>
    <message>
        <source>it cannot be read</source>
        <translation>sie kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>The filter definition of %1 could not be read; the filter was not added.</source>
        <translation>Die Filterdefinition von %1 konnte nicht gelesen werden; der Filter wurde nicht hinzugefügt.</translation>
    </message>
    <message>
        <source>Save filter chain</source>
        <translation>Filterkette speichern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Quillon chain (*.qlch)</source>
        <translation>Quillon-Kette (*.qlch)</translation>
    </message>
    <message>
        <source>The chain could not be saved to %1: %2</source>
        <translation>Die Kette konnte nicht in %1 gespeichert werden: %2</translation>
    </message>
    <message>
        <source>Select Chain</source>
        <translation>Kette wählen</translation>
    </message>
    <message>
        <source>Quillon needs you to locate a saved filter chain</source>
        <translation>Quillon braucht Sie, um eine gespeicherte Filterkette zu finden</translation>
    </message>
    <message>
        <source>Only chain files on this computer can be opened.</source>
        <translation>Nur Kettendateien auf diesem Rechner können geöffnet werden.</translation>
    </message>
    <message>
        <source>The chain has changes that are not saved in a chain file. Replace it anyway?</source>
        <translation>Die Kette hat Änderungen, die in keiner Kettendatei gespeichert sind. Trotzdem ersetzen?</translation>
    </message>
</context>
<context>
    <name>quillon::ChainPreview</name>
    <message>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>Render frame 1 through the whole chain into a temporary folder</source>
        <translation>Einzelbild 1 durch die ganze Kette in einen temporären Ordner rendern</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Preview of frame 1</source>
        <translation>Vorschau von Einzelbild 1</translation>
    </message>
    <message>
        <source>Rendering a preview…</source>
        <translation>Eine Vorschau wird gerendert…</translation>
    </message>
    <message>
        <source>Preview cancelled.</source>
        <translation>Vorschau abgebrochen.</translation>
    </message>
    <message>
        <source>Preview: the input directory holds no file.</source>
        <translation>Vorschau: Der Eingabeordner enthält keine Datei.</translation>
    </message>
    <message>
        <source>Preview: no temporary folder could be made.</source>
        <translation>Vorschau: Es konnte kein temporärer Ordner angelegt werden.</translation>
    </message>
    <message>
        <source>Preview: %1</source>
        <translation>Vorschau: %1</translation>
    </message>
    <message>
        <source>Preview: the render tool wrote no image.</source>
        <translation>Vorschau: Das Render-Werkzeug hat kein Bild geschrieben.</translation>
    </message>
    <message>
        <source>Frame 1 in %1 s</source>
        <translation>Einzelbild 1 in %1 s</translation>
    </message>
</context>
<context>
    <name>quillon::LibraryListModel</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Author</source>
        <translation>Autor</translation>
    </message>
</context>
<context>
    <name>quillon::MainWindow</name>
    <message>
        <source>Start</source>
        <translation>Starten</translation>
    </message>
    <message>
        <source>Settings and filter parameters</source>
        <translation>Einstellungen und Filterparameter</translation>
    </message>
    <message>
        <source>Output format of the run</source>
        <translation>Ausgabeformat des Laufs</translation>
    </message>
    <message>
        <source>Output format: %1</source>
        <translation>Ausgabeformat: %1</translation>
    </message>
    <message>
        <source>Untitled chain</source>
        <translation>Unbenannte Kette</translation>
    </message>
    <message>
        <source>%1[*] — Quillon</source>
        <translation>%1[*] — Quillon</translation>
    </message>
</context>
<context>
    <name>quillon::ParamTableModel</name>
    <message>
        <source>Active: %1</source>
        <translation>Aktiv: %1</translation>
    </message>
    <message>
        <source>Active</source>
        <translation>Aktiv</translation>
    </message>
    <message>
        <source>Parameter</source>
        <translation>Parameter</translation>
    </message>
    <message>
        <source>Variation</source>
        <translation>Variation</translation>
    </message>
    <message>
        <source>[Random] </source>
        <translation>[Zufällig] </translation>
    </message>
    <message>
        <source>[Toggle] </source>
        <translation>[Umschalten] </translation>
    </message>
    <message>
        <source>[Sweep] </source>
        <translation>[Durchlauf] </translation>
    </message>
</context>
<context>
    <name>quillon::ParameterEditor</name>
    <message>
        <source>Variation over the frames</source>
        <translation>Variation über die Einzelbilder</translation>
    </message>
    <message>
        <source>Filter parameters</source>
        <translation>Filterparameter</translation>
    </message>
    <message>
        <source>Random</source>
        <translation>Zufällig</translation>
    </message>
    <message>
        <source>Toggle</source>
        <translation>Umschalten</translation>
    </message>
    <message>
        <source>&amp;Mode:</source>
        <translation>&amp;Modus:</translation>
    </message>
    <message>
        <source>Check box</source>
        <translation>Kontrollkästchen</translation>
    </message>
    <message>
        <source>Sweep</source>
        <translation>Durchlauf</translation>
    </message>
    <message>
        <source>Integer</source>
        <translation>Ganzzahl</translation>
    </message>
    <message>
        <source>Real</source>
        <translation>Kommazahl</translation>
    </message>
    <message>
        <source>Variation</source>
        <translation>Variation</translation>
    </message>
    <message>
        <source>Variation of %1 over the frames</source>
        <translation>Variation von %1 über die Einzelbilder</translation>
    </message>
    <message>
        <source>Test Strip…</source>
        <translation>Teststreifen…</translation>
    </message>
    <message>
        <source>Render frame 1 with several values of this parameter side by side</source>
        <translation>Einzelbild 1 mit mehreren Werten dieses Parameters nebeneinander rendern</translation>
    </message>
</context>
<context>
    <name>quillon::PlanPreview</name>
    <message>
        <source>Preview Run</source>
        <translation>Lauf vorab ansehen</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgabe</translation>
    </message>
    <message>
        <source>Input</source>
        <translation>Eingabe</translation>
    </message>
    <message>
        <source>Step</source>
        <translation>Schritt</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
    <message>
        <source>&lt;no source&gt;</source>
        <translation>&lt;keine Quelle&gt;</translation>
    </message>
    <message>
        <source>%1 tool runs, %2 outputs. Output format: %3</source>
        <translation>%1 Werkzeugläufe, %2 Ausgaben. Ausgabeformat: %3</translation>
    </message>
</context>
<context>
    <name>quillon::ProgressSheet</name>
    <message>
        <source>Newest output</source>
        <translation>Neueste Ausgabe</translation>
    </message>
    <message>
        <source>About %1:%2 left</source>
        <translation>Noch etwa %1:%2</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message numerus="yes">
        <source>%n image(s) of this run are rendered. Abort the run?</source>
        <translation>
            <numerusform>%n Bild dieses Laufs ist gerendert. Den Lauf abbrechen?</numerusform>
            <numerusform>%n Bilder dieses Laufs sind gerendert. Den Lauf abbrechen?</numerusform>
        </translation>
    </message>
    <message>
        <source>%v of %m images</source>
        <translation>%v von %m Bildern</translation>
    </message>
    <message>
        <source>%v of %m tool runs</source>
        <translation>%v von %m Werkzeugläufen</translation>
    </message>
</context>
<context>
    <name>quillon::RangeEditor</name>
    <message>
        <source>Random</source>
        <translation>Zufällig</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>To</source>
        <translation>Bis</translation>
    </message>
    <message>
        <source>From value</source>
        <translation>Von-Wert</translation>
    </message>
    <message>
        <source>To value</source>
        <translation>Bis-Wert</translation>
    </message>
    <message>
        <source>&amp;Mode:</source>
        <translation>&amp;Modus:</translation>
    </message>
    <message>
        <source>&amp;From:</source>
        <translation>&amp;Von:</translation>
    </message>
    <message>
        <source>&amp;To:</source>
        <translation>&amp;Bis:</translation>
    </message>
</context>
<context>
    <name>quillon::ResultsExports</name>
    <message>
        <source>Save Contact Sheet</source>
        <translation>Kontaktbogen speichern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>PNG image (*.png)</source>
        <translation>PNG-Bild (*.png)</translation>
    </message>
    <message>
        <source>Make Animation</source>
        <translation>Animation erstellen</translation>
    </message>
    <message>
        <source>Make</source>
        <translation>Erstellen</translation>
    </message>
    <message>
        <source>Animation (*.gif *.webm *.mp4)</source>
        <translation>Animation (*.gif *.webm *.mp4)</translation>
    </message>
    <message>
        <source>An animation is named .gif, .webm or .mp4: %1</source>
        <translation>Eine Animation endet auf .gif, .webm oder .mp4: %1</translation>
    </message>
    <message>
        <source>Making the animation…</source>
        <translation>Die Animation wird erstellt…</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>quillon::ResultsModel</name>
    <message>
        <source>missing</source>
        <translation>fehlt</translation>
    </message>
    <message>
        <source>not run</source>
        <translation>nicht gelaufen</translation>
    </message>
    <message>
        <source>written</source>
        <translation>geschrieben</translation>
    </message>
    <message>
        <source>%1 (%2: %3)</source>
        <translation>%1 (%2: %3)</translation>
    </message>
</context>
<context>
    <name>quillon::ResultsSheet</name>
    <message>
        <source>Results</source>
        <translation>Ergebnisse</translation>
    </message>
    <message>
        <source>Why outputs are missing</source>
        <translation>Warum Ausgaben fehlen</translation>
    </message>
    <message>
        <source>Outputs of the run</source>
        <translation>Ausgaben des Laufs</translation>
    </message>
    <message>
        <source>Open Output Folder</source>
        <translation>Ausgabeordner öffnen</translation>
    </message>
    <message>
        <source>Nothing could open %1.</source>
        <translation>Nichts konnte %1 öffnen.</translation>
    </message>
    <message>
        <source>Sort by</source>
        <translation>Sortieren nach</translation>
    </message>
    <message>
        <source>Sort by:</source>
        <translation>Sortieren nach:</translation>
    </message>
    <message>
        <source>Use These Values</source>
        <translation>Diese Werte übernehmen</translation>
    </message>
    <message>
        <source>Set the chain so that the next run makes the selected output again</source>
        <translation>Die Kette so einstellen, dass der nächste Lauf die ausgewählte Ausgabe erneut erzeugt</translation>
    </message>
    <message>
        <source>Save Contact Sheet…</source>
        <translation>Kontaktbogen speichern…</translation>
    </message>
    <message>
        <source>Make Animation…</source>
        <translation>Animation erstellen…</translation>
    </message>
    <message>
        <source>Assemble each input&apos;s frames into a GIF, WebM or MP4 file with ffmpeg</source>
        <translation>Die Einzelbilder jeder Eingabe mit ffmpeg zu einer GIF-, WebM- oder MP4-Datei zusammenfügen</translation>
    </message>
    <message>
        <source> fps</source>
        <translation> fps</translation>
    </message>
    <message>
        <source>Frames per second of the animation</source>
        <translation>Einzelbilder pro Sekunde der Animation</translation>
    </message>
    <message>
        <source>Animation:</source>
        <translation>Animation:</translation>
    </message>
    <message>
        <source>Plan order</source>
        <translation>Geplante Reihenfolge</translation>
    </message>
</context>
<context>
    <name>quillon::SettingsPane</name>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Most frames</source>
        <translation>Höchstzahl der Einzelbilder</translation>
    </message>
    <message>
        <source>JPEG quality</source>
        <translation>JPEG-Qualität</translation>
    </message>
    <message>
        <source>JPEG quality value</source>
        <translation>Wert der JPEG-Qualität</translation>
    </message>
    <message>
        <source>Output format</source>
        <translation>Ausgabeformat</translation>
    </message>
    <message>
        <source>Locate it</source>
        <translation>Auswählen</translation>
    </message>
    <message>
        <source>Quillon needs you to locate to FilterForge Batch tool</source>
        <translation>Quillon braucht Sie, um das FilterForge-Batch-Werkzeug zu finden</translation>
    </message>
    <message>
        <source>Quillon needs you to locate the Filters directory</source>
        <translation>Quillon braucht Sie, um den Filterordner zu finden</translation>
    </message>
    <message>
        <source>This one</source>
        <translation>Diesen</translation>
    </message>
    <message>
        <source>Quillon needs you to locate or create the output directory</source>
        <translation>Quillon braucht Sie, um den Ausgabeordner zu finden oder anzulegen</translation>
    </message>
    <message>
        <source>Quillon needs you to locate an input image</source>
        <translation>Quillon braucht Sie, um ein Eingabebild zu finden</translation>
    </message>
    <message>
        <source>Quillon needs you to locate an input directory</source>
        <translation>Quillon braucht Sie, um einen Eingabeordner zu finden</translation>
    </message>
    <message>
        <source>not set</source>
        <translation>nicht gesetzt</translation>
    </message>
</context>
<context>
    <name>quillon::TestStrip</name>
    <message>
        <source>Test Strip</source>
        <translation>Teststreifen</translation>
    </message>
    <message>
        <source>Use this value</source>
        <translation>Diesen Wert übernehmen</translation>
    </message>
    <message>
        <source>Rendering %1 images…</source>
        <translation>%1 Bilder werden gerendert…</translation>
    </message>
    <message>
        <source>No temporary folder could be made.</source>
        <translation>Es konnte kein temporärer Ordner angelegt werden.</translation>
    </message>
    <message>
        <source>The input directory holds no file.</source>
        <translation>Der Eingabeordner enthält keine Datei.</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>Abgebrochen.</translation>
    </message>
    <message>
        <source>Choose the image to keep its value.</source>
        <translation>Wählen Sie das Bild, dessen Wert übernommen werden soll.</translation>
    </message>
</context>
</TS>
