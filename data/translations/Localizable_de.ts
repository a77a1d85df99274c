<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- The application's default strings table: every English text the desktop application shows
     (its panel, menus, progress window and dialogs) -> translation. -->
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Localizable</name>
    <message>
        <source>Orvel Thumbnails Preferences</source>
        <translation>Orvel Thumbnails – Einstellungen</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Erstellen</translation>
    </message>
    <message>
        <source>A thumbnail file</source>
        <translation>Eine Miniaturdatei</translation>
    </message>
    <message>
        <source>A thumbnail file with a custom icon</source>
        <translation>Eine Miniaturdatei mit eigenem Symbol</translation>
    </message>
    <message>
        <source>Only a custom icon on the original file</source>
        <translation>Nur ein eigenes Symbol für die Originaldatei</translation>
    </message>
    <message>
        <source>Naming</source>
        <translation>Benennung</translation>
    </message>
    <message>
        <source>Prefix</source>
        <translation>Präfix</translation>
    </message>
    <message>
        <source>Suffix</source>
        <translation>Suffix</translation>
    </message>
    <message>
        <source>Sub-folder</source>
        <translation>Unterordner</translation>
    </message>
    <message>
        <source>Extension:</source>
        <translation>Zusatz:</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Fit into a box</source>
        <translation>In einen Rahmen einpassen</translation>
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
        <source>pixels</source>
        <translation>Pixel</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Skalieren</translation>
    </message>
    <message>
        <source>Percent:</source>
        <translation>Prozent:</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgabe</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format:</translation>
    </message>
    <message>
        <source>Quality (percent):</source>
        <translation>Qualität (Prozent):</translation>
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
        <translation>Nachschärfen:</translation>
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
        <source>Quit when done after opening files</source>
        <translation>Beenden, sobald geöffnete Dateien fertig sind</translation>
    </message>
    <message>
        <source>Drop files or folders here, or open them with Orvel Thumbnails, to make their thumbnails.</source>
        <translation>Ziehen Sie Dateien oder Ordner hierher oder öffnen Sie sie mit Orvel Thumbnails, um ihre Miniaturen zu erstellen.</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Make Thumbnails of Files…</source>
        <translation>&amp;Miniaturen von Dateien erstellen…</translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation>Fenster &amp;schließen</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About Orvel Thumbnails</source>
        <translation>Ü&amp;ber Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Make Thumbnails of Files</source>
        <translation>Miniaturen von Dateien erstellen</translation>
    </message>
    <message>
        <source>About Orvel Thumbnails</source>
        <translation>Über Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Makes thumbnails of pictures, documents and movies dropped on it or opened with it, with the settings of its preferences window.</source>
        <translation>Erstellt Miniaturen von Bildern, Dokumenten und Filmen, die auf das Programm gezogen oder mit ihm geöffnet werden, mit den Einstellungen seines Einstellungsfensters.</translation>
    </message>
    <message>
        <source>Making Thumbnails</source>
        <translation>Miniaturen werden erstellt</translation>
    </message>
    <message>
        <source>%1 of %2 files</source>
        <translation>%1 von %2 Dateien</translation>
    </message>
    <message>
        <source>Check for &amp;Updates…</source>
        <translation>Nach &amp;Updates suchen …</translation>
    </message>
    <message>
        <source>Orvel Thumbnails &amp;Help</source>
        <translation>Orvel Thumbnails-&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Release Notes</source>
        <translation>&amp;Versionshinweise</translation>
    </message>
    <message>
        <source>&amp;Website</source>
        <translation>&amp;Website</translation>
    </message>
    <message>
        <source>&amp;Support</source>
        <translation>&amp;Support</translation>
    </message>
    <message>
        <source>&amp;Forum</source>
        <translation>&amp;Forum</translation>
    </message>
    <message>
        <source>&amp;Downloads</source>
        <translation>&amp;Downloads</translation>
    </message>
    <message>
        <source>Send &amp;Feedback…</source>
        <translation>&amp;Feedback senden …</translation>
    </message>
</context>
</TS>
