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
        <source>Naming</source>
        <translation>Benennung</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>pixels</source>
        <translation>Pixel</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgabe</translation>
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
        <source>Drop files or folders here, or open them with Orvel Thumbnails, to make their thumbnails.</source>
        <translation>Ziehen Sie Dateien oder Ordner hierher oder öffnen Sie sie mit Orvel Thumbnails, um ihre Miniaturen zu erstellen.</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
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
        <source>%1, %2 written</source>
        <translation>%1, %2 geschrieben</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Stops the file being made (nothing of it is written) and leaves the files not yet started alone</source>
        <translation>Hält die gerade bearbeitete Datei an (von ihr wird nichts geschrieben) und lässt die noch nicht begonnenen Dateien unberührt</translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Wird abgebrochen …</translation>
    </message>
    <message>
        <source>1 file got no thumbnail</source>
        <translation>1 Datei hat keine Miniatur erhalten</translation>
    </message>
    <message>
        <source>%1 files got no thumbnail</source>
        <translation>%1 Dateien haben keine Miniatur erhalten</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>und %1 weitere</translation>
    </message>
    <message>
        <source>Thumbnails made: %1</source>
        <translation>Miniaturen erstellt: %1</translation>
    </message>
    <message>
        <source>&amp;Make Thumbnails…</source>
        <translation>&amp;Miniaturen erstellen…</translation>
    </message>
    <message>
        <source>&amp;Only a custom icon on the original file</source>
        <translation>&amp;Nur ein eigenes Symbol für die Originaldatei</translation>
    </message>
    <message>
        <source>&amp;Quality (percent):</source>
        <translation>&amp;Qualität (Prozent):</translation>
    </message>
    <message>
        <source>&amp;Suffix</source>
        <translation>Su&amp;ffix</translation>
    </message>
    <message>
        <source>&amp;Width:</source>
        <translation>&amp;Breite:</translation>
    </message>
    <message>
        <source>A &amp;thumbnail file</source>
        <translation>Eine &amp;Miniaturdatei</translation>
    </message>
    <message>
        <source>A thumbnail file with a custom &amp;icon</source>
        <translation>Eine Miniaturdatei mit eigenem &amp;Symbol</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Alle Dateien</translation>
    </message>
    <message>
        <source>Ends the program once the files it was opened with are done; when off, it stays in the status area</source>
        <translation>Beendet das Programm, sobald die Dateien, mit denen es geöffnet wurde, fertig sind; ausgeschaltet bleibt es im Statusbereich</translation>
    </message>
    <message>
        <source>Fit into a &amp;box</source>
        <translation>In einen &amp;Rahmen einpassen</translation>
    </message>
    <message>
        <source>Fo&amp;rmat:</source>
        <translation>F&amp;ormat:</translation>
    </message>
    <message>
        <source>Folder &amp;name:</source>
        <translation>Ordnern&amp;ame:</translation>
    </message>
    <message>
        <source>For example: %1 gets its own picture as its icon; nothing is written</source>
        <translation>Zum Beispiel: %1 erhält sein eigenes Bild als Symbol; es wird nichts geschrieben</translation>
    </message>
    <message>
        <source>For example: %1 → %2</source>
        <translation>Zum Beispiel: %1 → %2</translation>
    </message>
    <message>
        <source>Free software under the MIT licence.</source>
        <translation>Freie Software unter der MIT-Lizenz.</translation>
    </message>
    <message>
        <source>Hei&amp;ght:</source>
        <translation>Höh&amp;e:</translation>
    </message>
    <message>
        <source>Higher keeps more detail in JPEG and JPEG 2000 files; for PNG, TIFF and GIF it trades size for speed; BMP ignores it</source>
        <translation>Höher erhält mehr Details in JPEG- und JPEG-2000-Dateien; bei PNG, TIFF und GIF tauscht sie Größe gegen Geschwindigkeit; BMP beachtet sie nicht</translation>
    </message>
    <message>
        <source>How much the thumbnail is sharpened after scaling</source>
        <translation>Wie stark die Miniatur nach dem Skalieren nachgeschärft wird</translation>
    </message>
    <message>
        <source>How pixels are blended when a picture is made smaller: High is smoothest, None keeps hard edges</source>
        <translation>Wie Pixel beim Verkleinern gemischt werden: Hoch ist am weichsten, Keine behält harte Kanten</translation>
    </message>
    <message>
        <source>Interpo&amp;lation:</source>
        <translation>Interpo&amp;lation:</translation>
    </message>
    <message>
        <source>Make Thumbnails</source>
        <translation>Miniaturen erstellen</translation>
    </message>
    <message>
        <source>Make Thumbnails…</source>
        <translation>Miniaturen erstellen…</translation>
    </message>
    <message>
        <source>Per&amp;cent:</source>
        <translation>Pro&amp;zent:</translation>
    </message>
    <message>
        <source>Pictures, documents and movies</source>
        <translation>Bilder, Dokumente und Filme</translation>
    </message>
    <message>
        <source>Pr&amp;efix</source>
        <translation>&amp;Präfix</translation>
    </message>
    <message>
        <source>Prefi&amp;x:</source>
        <translation>Präfi&amp;x:</translation>
    </message>
    <message>
        <source>Puts the text after the file’s name: IMG_0001_thumb.jpg</source>
        <translation>Setzt den Text hinter den Dateinamen: IMG_0001_thumb.jpg</translation>
    </message>
    <message>
        <source>Puts the text before the file’s name: _thumbIMG_0001.jpg</source>
        <translation>Setzt den Text vor den Dateinamen: _thumbIMG_0001.jpg</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Quit when &amp;done after opening files</source>
        <translation>Beenden, sobald geöffnete Dateien fer&amp;tig sind</translation>
    </message>
    <message>
        <source>S&amp;ub-folder</source>
        <translation>&amp;Unterordner</translation>
    </message>
    <message>
        <source>Sc&amp;ale</source>
        <translation>S&amp;kalieren</translation>
    </message>
    <message>
        <source>Scales each picture by the same percentage of its own size</source>
        <translation>Skaliert jedes Bild um denselben Prozentsatz seiner eigenen Größe</translation>
    </message>
    <message>
        <source>Scales each picture down to fit inside the width and height, keeping its proportions</source>
        <translation>Verkleinert jedes Bild, bis es in Breite und Höhe passt, und behält seine Proportionen</translation>
    </message>
    <message>
        <source>Shar&amp;pening:</source>
        <translation>Nachs&amp;chärfen:</translation>
    </message>
    <message>
        <source>Show Preferences</source>
        <translation>Einstellungen zeigen</translation>
    </message>
    <message>
        <source>Suffi&amp;x:</source>
        <translation>Suffi&amp;x:</translation>
    </message>
    <message>
        <source>The height of the box in pixels, at least 16</source>
        <translation>Die Höhe des Rahmens in Pixeln, mindestens 16</translation>
    </message>
    <message>
        <source>The name a thumbnail of this file gets with these settings</source>
        <translation>Der Name, den eine Miniatur dieser Datei mit diesen Einstellungen erhält</translation>
    </message>
    <message>
        <source>The picture format the thumbnails are written in</source>
        <translation>Das Bildformat, in dem die Miniaturen geschrieben werden</translation>
    </message>
    <message>
        <source>The text added to the names, or the sub-folder’s name; left empty it is “_”</source>
        <translation>Der Text, der den Namen hinzugefügt wird, oder der Name des Unterordners; leer gelassen ist er „_“</translation>
    </message>
    <message>
        <source>The thumbnail’s size as a percentage of the picture’s, 1 to 100</source>
        <translation>Die Größe der Miniatur in Prozent der Bildgröße, 1 bis 100</translation>
    </message>
    <message>
        <source>The width of the box in pixels, at least 16</source>
        <translation>Die Breite des Rahmens in Pixeln, mindestens 16</translation>
    </message>
    <message>
        <source>Writes a thumbnail picture beside each file, named by the rule below</source>
        <translation>Schreibt neben jede Datei ein Miniaturbild, benannt nach der Regel unten</translation>
    </message>
    <message>
        <source>Writes no file: the original file gets its own picture as its icon</source>
        <translation>Schreibt keine Datei: Die Originaldatei erhält ihr eigenes Bild als Symbol</translation>
    </message>
    <message>
        <source>Writes the thumbnail and shows it as that file’s icon in file managers</source>
        <translation>Schreibt die Miniatur und zeigt sie in Dateimanagern als Symbol dieser Datei</translation>
    </message>
    <message>
        <source>Writes the thumbnails into a folder of that name beside the files</source>
        <translation>Schreibt die Miniaturen in einen Ordner dieses Namens neben den Dateien</translation>
    </message>
    <message>
        <source>Written by the Orvel Thumbnails developers, on Qt, libvips, Poppler, Ghostscript, FFmpeg, libplist and libarchive.</source>
        <translation>Geschrieben von den Entwicklern von Orvel Thumbnails, auf Qt, libvips, Poppler, Ghostscript, FFmpeg, libplist und libarchive.</translation>
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
