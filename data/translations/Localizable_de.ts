<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- The application's default strings table: English interface text -> translation. -->
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Localizable</name>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Make Thumbnails…</source>
        <translation>Miniaturen erstellen…</translation>
    </message>
    <message>
        <source>Make Thumbnails</source>
        <translation>Miniaturen erstellen</translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation>Einstellungen…</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Quit Orvel Thumbnails</source>
        <translation>Orvel Thumbnails beenden</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source>Minimize</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Orvel Thumbnails Help</source>
        <translation>Orvel Thumbnails-Hilfe</translation>
    </message>
    <message>
        <source>About Orvel Thumbnails</source>
        <translation>Über Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Orvel Thumbnails makes thumbnails of pictures and documents.</source>
        <translation>Orvel Thumbnails erstellt Miniaturen von Bildern und Dokumenten.</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Choose Files or Folders</source>
        <translation>Dateien oder Ordner wählen</translation>
    </message>
    <message>
        <source>Pictures and Documents (%1)</source>
        <translation>Bilder und Dokumente (%1)</translation>
    </message>
    <message>
        <source>All Files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Orvel Thumbnails Preferences</source>
        <translation>Orvel Thumbnails – Einstellungen</translation>
    </message>
    <message>
        <source>Create:</source>
        <translation>Erstellen:</translation>
    </message>
    <message>
        <source>Thumbnail</source>
        <translation>Miniatur</translation>
    </message>
    <message>
        <source>Thumbnail and icon</source>
        <translation>Miniatur und Symbol</translation>
    </message>
    <message>
        <source>Icon of the source file</source>
        <translation>Symbol der Originaldatei</translation>
    </message>
    <message>
        <source>Naming:</source>
        <translation>Benennung:</translation>
    </message>
    <message>
        <source>Suffix</source>
        <translation>Suffix</translation>
    </message>
    <message>
        <source>Prefix</source>
        <translation>Präfix</translation>
    </message>
    <message>
        <source>Sub-folder</source>
        <translation>Unterordner</translation>
    </message>
    <message>
        <source>Extension:</source>
        <translation>Endung:</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format:</translation>
    </message>
    <message>
        <source>Quality:</source>
        <translation>Qualität:</translation>
    </message>
    <message>
        <source>Interpolation:</source>
        <translation>Interpolation:</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Niedrig</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>Sharpening:</source>
        <translation>Schärfen:</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Leicht</translation>
    </message>
    <message>
        <source>Medium</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>Strong</source>
        <translation>Stark</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>Fit in box</source>
        <translation>In Rahmen einpassen</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Skalieren</translation>
    </message>
    <message>
        <source>Width:</source>
        <translation>Breite:</translation>
    </message>
    <message>
        <source>Height:</source>
        <translation>Höhe:</translation>
    </message>
    <message>
        <source>Scale:</source>
        <translation>Maßstab:</translation>
    </message>
    <message>
        <source>pixels</source>
        <translation>Pixel</translation>
    </message>
    <message>
        <source> px</source>
        <translation> px</translation>
    </message>
    <message>
        <source> %</source>
        <translation> %</translation>
    </message>
    <message>
        <source>Quit when done</source>
        <translation>Nach getaner Arbeit beenden</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Anwenden</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Making Thumbnails</source>
        <translation>Miniaturen werden erstellt</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>%d bytes</source>
        <translation>%d Byte</translation>
    </message>
    <message>
        <source>%@ KB</source>
        <translation>%@ KB</translation>
    </message>
    <message>
        <source>%@ MB</source>
        <translation>%@ MB</translation>
    </message>
    <message>
        <source>%@ GB</source>
        <translation>%@ GB</translation>
    </message>
    <message>
        <source>%@ TB</source>
        <translation>%@ TB</translation>
    </message>
</context>
</TS>
