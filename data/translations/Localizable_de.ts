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
    <message>
        <source>dry run: nothing written</source>
        <translation>Probelauf: nichts geschrieben</translation>
    </message>
    <message>
        <source>not a regular file</source>
        <translation>keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>a thumbnail of this naming rule</source>
        <translation>eine Miniatur dieser Benennungsregel</translation>
    </message>
    <message>
        <source>inside the output folder</source>
        <translation>im Ausgabeordner</translation>
    </message>
    <message>
        <source>its thumbnail is up to date</source>
        <translation>ihre Miniatur ist aktuell</translation>
    </message>
    <message>
        <source>%1: skipped (%2)</source>
        <translation>%1: übersprungen (%2)</translation>
    </message>
    <message>
        <source>invalid value &apos;%1&apos; for %2 (expected %3)</source>
        <translation>ungültiger Wert „%1“ für %2 (erwartet: %3)</translation>
    </message>
    <message>
        <source>unknown setting &apos;%1&apos; (the settings are %2)</source>
        <translation>unbekannte Einstellung „%1“ (die Einstellungen sind %2)</translation>
    </message>
    <message>
        <source>%1 needs KEY=VALUE, not &apos;%2&apos;</source>
        <translation>%1 braucht KEY=VALUE, nicht „%2“</translation>
    </message>
    <message>
        <source>set a setting; the value must be of the key&apos;s type and range (see the settings below)</source>
        <translation>eine Einstellung setzen; der Wert muss Typ und Bereich des Schlüssels haben (siehe die Einstellungen unten)</translation>
    </message>
    <message>
        <source>the same as --set</source>
        <translation>dasselbe wie --set</translation>
    </message>
    <message>
        <source>tiff, bmp, gif, jpeg, png or jp2</source>
        <translation>tiff, bmp, gif, jpeg, png oder jp2</translation>
    </message>
    <message>
        <source>fit into a box of W by H (or N by N) pixels</source>
        <translation>in einen Rahmen von W mal H (oder N mal N) Pixeln einpassen</translation>
    </message>
    <message>
        <source>WIDTHxHEIGHT or SIZE in pixels</source>
        <translation>BREITExHÖHE oder GRÖSSE in Pixeln</translation>
    </message>
    <message>
        <source>scale to PERCENT of the original size</source>
        <translation>auf PERCENT Prozent der Originalgröße skalieren</translation>
    </message>
    <message>
        <source>a percentage above 0, at most 100</source>
        <translation>ein Prozentsatz über 0, höchstens 100</translation>
    </message>
    <message>
        <source>compression quality</source>
        <translation>Kompressionsqualität</translation>
    </message>
    <message>
        <source>0 to 100</source>
        <translation>0 bis 100</translation>
    </message>
    <message>
        <source>default, none, low or high</source>
        <translation>default, none, low oder high</translation>
    </message>
    <message>
        <source>name thumbnails NAME + TEXT</source>
        <translation>Miniaturen NAME + TEXT benennen</translation>
    </message>
    <message>
        <source>name thumbnails TEXT + NAME</source>
        <translation>Miniaturen TEXT + NAME benennen</translation>
    </message>
    <message>
        <source>put thumbnails into a sub-folder NAME</source>
        <translation>Miniaturen in einen Unterordner NAME legen</translation>
    </message>
    <message>
        <source>write the thumbnails under DIR instead of beside their sources, a folder PATH as DIR/NAME with its sub-folders (NAME: the last part of PATH); --create icon ignores it</source>
        <translation>die Miniaturen unter DIR statt neben ihre Quellen schreiben, einen Ordner PATH als DIR/NAME mit seinen Unterordnern (NAME: der letzte Teil von PATH); --create icon beachtet das nicht</translation>
    </message>
    <message>
        <source>a folder</source>
        <translation>ein Ordner</translation>
    </message>
    <message>
        <source>thumbnail, thumbnail+icon or icon</source>
        <translation>thumbnail, thumbnail+icon oder icon</translation>
    </message>
    <message>
        <source>none, light, medium or strong</source>
        <translation>none, light, medium oder strong</translation>
    </message>
    <message>
        <source>files processed at once (default: one per processor core)</source>
        <translation>gleichzeitig bearbeitete Dateien (Standard: eine je Prozessorkern)</translation>
    </message>
    <message>
        <source>1 to %1</source>
        <translation>1 bis %1</translation>
    </message>
    <message>
        <source>also make thumbnails of the paths listed in FILE, one a line (&apos;-&apos;: standard input)</source>
        <translation>auch Miniaturen der in FILE aufgeführten Pfade erstellen, einer je Zeile („-“: Standardeingabe)</translation>
    </message>
    <message>
        <source>the paths of --files-from end with NUL characters, not line breaks (find -print0)</source>
        <translation>die Pfade von --files-from enden mit NUL-Zeichen, nicht mit Zeilenumbrüchen (find -print0)</translation>
    </message>
    <message>
        <source>leave alone a file whose thumbnail exists and is newer than it (to take up an interrupted run)</source>
        <translation>eine Datei auslassen, deren Miniatur existiert und neuer ist als sie (um einen unterbrochenen Lauf fortzusetzen)</translation>
    </message>
    <message>
        <source>walk folders N levels deep (1: a folder&apos;s own files, 0: no folder entered; default: all the way)</source>
        <translation>Ordner N Ebenen tief durchsuchen (1: die eigenen Dateien eines Ordners, 0: kein Ordner wird betreten; Standard: ganz hinab)</translation>
    </message>
    <message>
        <source>a whole number of levels, 0 or more</source>
        <translation>eine ganze Zahl von Ebenen, 0 oder mehr</translation>
    </message>
    <message>
        <source>time limit per file (default 120, 0 for none)</source>
        <translation>Zeitlimit je Datei (Standard 120, 0 für keines)</translation>
    </message>
    <message>
        <source>whole seconds, 0 for no limit</source>
        <translation>ganze Sekunden, 0 für kein Limit</translation>
    </message>
    <message>
        <source>memory limit of each worker process (default: three quarters of the machine&apos;s memory shared among the workers; 0 for none)</source>
        <translation>Speicherlimit jedes Arbeitsprozesses (Standard: drei Viertel des Arbeitsspeichers, aufgeteilt auf die Arbeitsprozesse; 0 für keines)</translation>
    </message>
    <message>
        <source>whole MiB, 0 for no limit</source>
        <translation>ganze MiB, 0 für kein Limit</translation>
    </message>
    <message>
        <source>decode and render every file as for real, list the thumbnails that would be written and what would be skipped or fail, and write nothing</source>
        <translation>jede Datei wie echt dekodieren und zeichnen, die Miniaturen auflisten, die geschrieben würden, und was übersprungen würde oder fehlschlüge, und nichts schreiben</translation>
    </message>
    <message>
        <source>no progress bar and no summary</source>
        <translation>kein Fortschrittsbalken und keine Zusammenfassung</translation>
    </message>
    <message>
        <source>print every thumbnail written, and log messages (FFmpeg&apos;s too)</source>
        <translation>jede geschriebene Miniatur ausgeben, dazu Protokollmeldungen (auch die von FFmpeg)</translation>
    </message>
    <message>
        <source>a file manager&apos;s thumbnailer: with PATH being SOURCE OUTPUT, write one PNG of at most -s pixels (default 128) on its longer side, and nothing else; no settings are read</source>
        <translation>Miniaturerzeuger eines Dateimanagers: mit SOURCE OUTPUT als PATH ein PNG von höchstens -s Pixeln (Standard 128) an der längeren Seite schreiben und sonst nichts; es werden keine Einstellungen gelesen</translation>
    </message>
    <message>
        <source>print this help</source>
        <translation>diese Hilfe ausgeben</translation>
    </message>
    <message>
        <source>print the version</source>
        <translation>die Version ausgeben</translation>
    </message>
    <message>
        <source>--thumbnailer takes two paths, SOURCE and OUTPUT</source>
        <translation>--thumbnailer nimmt zwei Pfade, SOURCE und OUTPUT</translation>
    </message>
    <message>
        <source>--thumbnailer reads no settings; only -s sets its size</source>
        <translation>--thumbnailer liest keine Einstellungen; nur -s setzt seine Größe</translation>
    </message>
    <message>
        <source>--thumbnailer reads local files only, not %1</source>
        <translation>--thumbnailer liest nur lokale Dateien, nicht %1</translation>
    </message>
    <message>
        <source>unknown option %1</source>
        <translation>unbekannte Option %1</translation>
    </message>
    <message>
        <source>%1 takes no value</source>
        <translation>%1 nimmt keinen Wert</translation>
    </message>
    <message>
        <source>%1 needs a value</source>
        <translation>%1 braucht einen Wert</translation>
    </message>
    <message>
        <source>no PATH given</source>
        <translation>kein PATH angegeben</translation>
    </message>
    <message>
        <source>Usage:</source>
        <translation>Aufruf:</translation>
    </message>
    <message>
        <source>Makes a thumbnail of every image, PDF or PostScript document and movie in PATH (files, and folders searched through), with the stored settings; a movie gives the frame at half its length, at most 15 seconds in. Inside folders, files that are none of these and thumbnails the naming rule could have written are skipped.</source>
        <translation>Erstellt mit den gespeicherten Einstellungen eine Miniatur jedes Bildes, PDF- oder PostScript-Dokuments und Films in PATH (Dateien, und Ordner werden durchsucht); ein Film gibt das Bild in der Hälfte seiner Länge, höchstens 15 Sekunden nach Beginn. In Ordnern werden Dateien, die nichts davon sind, und Miniaturen, die die Benennungsregel geschrieben haben könnte, übersprungen.</translation>
    </message>
    <message>
        <source>Exits with 0 when every PATH was handled, 1 when something gave no thumbnail, 2 on a usage error.</source>
        <translation>Endet mit 0, wenn jeder PATH bearbeitet wurde, mit 1, wenn etwas keine Miniatur ergab, mit 2 bei einem Aufruffehler.</translation>
    </message>
    <message>
        <source>Settings for this run only (the stored settings are left as they are):</source>
        <translation>Einstellungen nur für diesen Lauf (die gespeicherten bleiben, wie sie sind):</translation>
    </message>
    <message>
        <source>Running:</source>
        <translation>Ablauf:</translation>
    </message>
    <message>
        <source>Settings (KEY, type, default, meaning), stored in $XDG_CONFIG_HOME/orvel/thumbnails.conf; see &apos;orvel-thumbs defaults&apos;. A file named &apos;defaults&apos; is given as ./defaults.</source>
        <translation>Einstellungen (KEY, Typ, Standard, Bedeutung), gespeichert in $XDG_CONFIG_HOME/orvel/thumbnails.conf; siehe „orvel-thumbs defaults“. Eine Datei namens „defaults“ wird als ./defaults angegeben.</translation>
    </message>
    <message>
        <source>Examples:</source>
        <translation>Beispiele:</translation>
    </message>
    <message>
        <source>thumbnails of every picture below ~/Pictures, with the stored settings</source>
        <translation>Miniaturen aller Bilder unter ~/Pictures, mit den gespeicherten Einstellungen</translation>
    </message>
    <message>
        <source>256-pixel PNGs, each in a folder &apos;small&apos; beside its source</source>
        <translation>PNGs mit 256 Pixeln, jedes in einem Ordner „small“ neben seiner Quelle</translation>
    </message>
    <message>
        <source>thumbnails of a read-only memory card in /tmp/thumbs/DCIM, in the card&apos;s folders</source>
        <translation>Miniaturen einer schreibgeschützten Speicherkarte in /tmp/thumbs/DCIM, in den Ordnern der Karte</translation>
    </message>
    <message>
        <source>file-manager icons for the files of ~/Downloads, not of its sub-folders</source>
        <translation>Dateimanager-Symbole für die Dateien in ~/Downloads, nicht in seinen Unterordnern</translation>
    </message>
    <message>
        <source>store a setting for the runs to come</source>
        <translation>eine Einstellung für die kommenden Läufe speichern</translation>
    </message>
    <message>
        <source>Try &apos;orvel-thumbs --help&apos; for more.</source>
        <translation>Mehr mit „orvel-thumbs --help“.</translation>
    </message>
    <message>
        <source>the thumbnail engine %1 is missing beside %2</source>
        <translation>der Miniaturerzeuger %1 fehlt neben %2</translation>
    </message>
    <message>
        <source>cannot read %1: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>missing command</source>
        <translation>Befehl fehlt</translation>
    </message>
    <message>
        <source>too many arguments</source>
        <translation>zu viele Argumente</translation>
    </message>
    <message>
        <source>default</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>the key %1 is not set (%2)</source>
        <translation>der Schlüssel %1 ist nicht gesetzt (%2)</translation>
    </message>
    <message>
        <source>unknown type %1</source>
        <translation>unbekannter Typ %1</translation>
    </message>
    <message>
        <source>missing KEY or VALUE</source>
        <translation>KEY oder VALUE fehlt</translation>
    </message>
    <message>
        <source>empty KEY</source>
        <translation>leerer KEY</translation>
    </message>
    <message>
        <source>%1 is not a valid %2 value</source>
        <translation>%1 ist kein gültiger %2-Wert</translation>
    </message>
    <message>
        <source>unknown setting &apos;%1&apos; (write it anyway with defaults write --force)</source>
        <translation>unbekannte Einstellung „%1“ (trotzdem schreiben mit defaults write --force)</translation>
    </message>
    <message>
        <source>missing KEY</source>
        <translation>KEY fehlt</translation>
    </message>
    <message>
        <source>unknown command %1</source>
        <translation>unbekannter Befehl %1</translation>
    </message>
    <message>
        <source>cannot write %1</source>
        <translation>%1 kann nicht geschrieben werden</translation>
    </message>
    <message>
        <source>%1 files/s</source>
        <translation>%1 Dateien/s</translation>
    </message>
    <message>
        <source>%1 done</source>
        <translation>%1 fertig</translation>
    </message>
    <message>
        <source>%1 left</source>
        <translation>noch %1</translation>
    </message>
    <message>
        <source>1 thumbnail made</source>
        <translation>1 Miniatur erstellt</translation>
    </message>
    <message>
        <source>%1 thumbnails made</source>
        <translation>%1 Miniaturen erstellt</translation>
    </message>
    <message>
        <source>1 icon set</source>
        <translation>1 Symbol gesetzt</translation>
    </message>
    <message>
        <source>%1 icons set</source>
        <translation>%1 Symbole gesetzt</translation>
    </message>
    <message>
        <source>%1 skipped</source>
        <translation>%1 übersprungen</translation>
    </message>
    <message>
        <source>%1 failed</source>
        <translation>%1 fehlgeschlagen</translation>
    </message>
    <message>
        <source>%1 written</source>
        <translation>%1 geschrieben</translation>
    </message>
    <message>
        <source>%1 takes %2, not &apos;%3&apos;</source>
        <translation>%1 nimmt %2, nicht „%3“</translation>
    </message>
    <message>
        <source>try %1 %2</source>
        <translation>versuchen Sie %1 %2</translation>
    </message>
    <message>
        <source>a whole number from %1 to %2</source>
        <translation>eine ganze Zahl von %1 bis %2</translation>
    </message>
    <message>
        <source>a number from %1 to %2</source>
        <translation>eine Zahl von %1 bis %2</translation>
    </message>
    <message>
        <source>true or false</source>
        <translation>true oder false</translation>
    </message>
    <message>
        <source>a text</source>
        <translation>einen Text</translation>
    </message>
    <message>
        <source>output format: 0 TIFF, 1 BMP, 2 GIF, 3 JPEG, 4 PNG, 5 JPEG 2000</source>
        <translation>Ausgabeformat: 0 TIFF, 1 BMP, 2 GIF, 3 JPEG, 4 PNG, 5 JPEG 2000</translation>
    </message>
    <message>
        <source>width of the box a thumbnail must fit, in pixels</source>
        <translation>Breite des Rahmens, in den eine Miniatur passen muss, in Pixeln</translation>
    </message>
    <message>
        <source>height of the box a thumbnail must fit, in pixels</source>
        <translation>Höhe des Rahmens, in den eine Miniatur passen muss, in Pixeln</translation>
    </message>
    <message>
        <source>0 fit the box; anything else scale by scale</source>
        <translation>0 in den Rahmen einpassen; alles andere um scale skalieren</translation>
    </message>
    <message>
        <source>scale factor of the source&apos;s pixel size</source>
        <translation>Skalierungsfaktor der Pixelgröße der Quelle</translation>
    </message>
    <message>
        <source>compression factor, 0 to 1</source>
        <translation>Kompressionsfaktor, 0 bis 1</translation>
    </message>
    <message>
        <source>interpolation: 0 default, 1 none, 2 low, 3 high</source>
        <translation>Interpolation: 0 Standard, 1 keine, 2 niedrig, 3 hoch</translation>
    </message>
    <message>
        <source>0 none, 1 light, 2 medium, 3 strong</source>
        <translation>0 keine, 1 leicht, 2 mittel, 3 stark</translation>
    </message>
    <message>
        <source>suffix, prefix or sub-folder name</source>
        <translation>Suffix, Präfix oder Name des Unterordners</translation>
    </message>
    <message>
        <source>1 suffix, 0 prefix, anything else a sub-folder</source>
        <translation>1 Suffix, 0 Präfix, alles andere ein Unterordner</translation>
    </message>
    <message>
        <source>0 thumbnail, 1 thumbnail and its icon, 2 icon of the source</source>
        <translation>0 Miniatur, 1 Miniatur und ihr Symbol, 2 Symbol der Quelle</translation>
    </message>
    <message>
        <source>desktop application: quit after a launch by drop</source>
        <translation>Desktop-Anwendung: nach einem Start durch Ablegen beenden</translation>
    </message>
    <message>
        <source>the output folder %1 is a file</source>
        <translation>der Ausgabeordner %1 ist eine Datei</translation>
    </message>
</context>
</TS>
