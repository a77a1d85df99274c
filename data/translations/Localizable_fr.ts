<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- The application's default strings table: every English text the desktop application shows
     (its panel, menus, progress window and dialogs) -> translation. -->
<TS version="2.1" language="fr_FR" sourcelanguage="en">
<context>
    <name>Localizable</name>
    <message>
        <source>Orvel Thumbnails Preferences</source>
        <translation>Préférences d’Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Créer</translation>
    </message>
    <message>
        <source>Naming</source>
        <translation>Nommage</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Taille</translation>
    </message>
    <message>
        <source>pixels</source>
        <translation>pixels</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Sortie</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Par défaut</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Aucune</translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Basse</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Haute</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Légère</translation>
    </message>
    <message>
        <source>Medium</source>
        <translation>Moyenne</translation>
    </message>
    <message>
        <source>Strong</source>
        <translation>Forte</translation>
    </message>
    <message>
        <source>Drop files or folders here, or open them with Orvel Thumbnails, to make their thumbnails.</source>
        <translation>Déposez des fichiers ou des dossiers ici, ou ouvrez-les avec Orvel Thumbnails, pour en créer les vignettes.</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Fichier</translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation>&amp;Fermer la fenêtre</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quitter</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Aide</translation>
    </message>
    <message>
        <source>&amp;About Orvel Thumbnails</source>
        <translation>À &amp;propos d’Orvel Thumbnails</translation>
    </message>
    <message>
        <source>About Orvel Thumbnails</source>
        <translation>À propos d’Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Makes thumbnails of pictures, documents and movies dropped on it or opened with it, with the settings of its preferences window.</source>
        <translation>Crée des vignettes des images, documents et vidéos déposés sur l’application ou ouverts avec elle, selon les réglages de sa fenêtre de préférences.</translation>
    </message>
    <message>
        <source>Making Thumbnails</source>
        <translation>Création des vignettes</translation>
    </message>
    <message>
        <source>%1 of %2 files</source>
        <translation>%1 sur %2 fichiers</translation>
    </message>
    <message>
        <source>%1, %2 written</source>
        <translation>%1, %2 écrits</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Stops the file being made (nothing of it is written) and leaves the files not yet started alone</source>
        <translation>Arrête le fichier en cours (rien n’en est écrit) et laisse intacts les fichiers pas encore commencés</translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Annulation…</translation>
    </message>
    <message>
        <source>1 file got no thumbnail</source>
        <translation>1 fichier n’a pas reçu de vignette</translation>
    </message>
    <message>
        <source>%1 files got no thumbnail</source>
        <translation>%1 fichiers n’ont pas reçu de vignette</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>et %1 de plus</translation>
    </message>
    <message>
        <source>Thumbnails made: %1</source>
        <translation>Vignettes créées : %1</translation>
    </message>
    <message>
        <source>&amp;Make Thumbnails…</source>
        <translation>&amp;Créer des vignettes…</translation>
    </message>
    <message>
        <source>&amp;Only a custom icon on the original file</source>
        <translation>&amp;Seulement une icône personnalisée sur le fichier d’origine</translation>
    </message>
    <message>
        <source>&amp;Quality (percent):</source>
        <translation>&amp;Qualité (pourcentage) :</translation>
    </message>
    <message>
        <source>&amp;Suffix</source>
        <translation>Suffi&amp;xe</translation>
    </message>
    <message>
        <source>&amp;Width:</source>
        <translation>&amp;Largeur :</translation>
    </message>
    <message>
        <source>A &amp;thumbnail file</source>
        <translation>Un fichier de &amp;vignette</translation>
    </message>
    <message>
        <source>A thumbnail file with a custom &amp;icon</source>
        <translation>Un fichier de vignette avec une &amp;icône personnalisée</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Tous les fichiers</translation>
    </message>
    <message>
        <source>Ends the program once the files it was opened with are done; when off, it stays in the status area</source>
        <translation>Quitte le programme une fois traités les fichiers ouverts avec lui ; désactivé, il reste dans la zone de notification</translation>
    </message>
    <message>
        <source>Fit into a &amp;box</source>
        <translation>Ajuster dans un &amp;cadre</translation>
    </message>
    <message>
        <source>Fo&amp;rmat:</source>
        <translation>F&amp;ormat :</translation>
    </message>
    <message>
        <source>Folder &amp;name:</source>
        <translation>Nom du &amp;dossier :</translation>
    </message>
    <message>
        <source>For example: %1 gets its own picture as its icon; nothing is written</source>
        <translation>Par exemple : %1 reçoit sa propre image comme icône ; rien n’est écrit</translation>
    </message>
    <message>
        <source>For example: %1 → %2</source>
        <translation>Par exemple : %1 → %2</translation>
    </message>
    <message>
        <source>Free software under the MIT licence.</source>
        <translation>Logiciel libre sous licence MIT.</translation>
    </message>
    <message>
        <source>Hei&amp;ght:</source>
        <translation>&amp;Hauteur :</translation>
    </message>
    <message>
        <source>Higher keeps more detail in JPEG and JPEG 2000 files; for PNG, TIFF and GIF it trades size for speed; BMP ignores it</source>
        <translation>Plus élevée, elle garde plus de détails dans les fichiers JPEG et JPEG 2000 ; pour PNG, TIFF et GIF elle échange taille contre vitesse ; BMP l’ignore</translation>
    </message>
    <message>
        <source>How much the thumbnail is sharpened after scaling</source>
        <translation>Le renforcement de la netteté de la vignette après la mise à l’échelle</translation>
    </message>
    <message>
        <source>How pixels are blended when a picture is made smaller: High is smoothest, None keeps hard edges</source>
        <translation>Comment les pixels sont mélangés quand une image est réduite : Haute est la plus douce, Aucune garde des bords nets</translation>
    </message>
    <message>
        <source>Interpo&amp;lation:</source>
        <translation>Interpolatio&amp;n :</translation>
    </message>
    <message>
        <source>Make Thumbnails</source>
        <translation>Créer des vignettes</translation>
    </message>
    <message>
        <source>Make Thumbnails…</source>
        <translation>Créer des vignettes…</translation>
    </message>
    <message>
        <source>Per&amp;cent:</source>
        <translation>Pourcen&amp;tage :</translation>
    </message>
    <message>
        <source>Pictures, documents and movies</source>
        <translation>Images, documents et vidéos</translation>
    </message>
    <message>
        <source>Pr&amp;efix</source>
        <translation>&amp;Préfixe</translation>
    </message>
    <message>
        <source>Prefi&amp;x:</source>
        <translation>Préfix&amp;e :</translation>
    </message>
    <message>
        <source>Puts the text after the file’s name: IMG_0001_thumb.jpg</source>
        <translation>Place le texte après le nom du fichier : IMG_0001_thumb.jpg</translation>
    </message>
    <message>
        <source>Puts the text before the file’s name: _thumbIMG_0001.jpg</source>
        <translation>Place le texte avant le nom du fichier : _thumbIMG_0001.jpg</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <source>Quit when &amp;done after opening files</source>
        <translation>Quitter une fois les fichiers ouverts t&amp;raités</translation>
    </message>
    <message>
        <source>S&amp;ub-folder</source>
        <translation>So&amp;us-dossier</translation>
    </message>
    <message>
        <source>Sc&amp;ale</source>
        <translation>&amp;Mettre à l’échelle</translation>
    </message>
    <message>
        <source>Scales each picture by the same percentage of its own size</source>
        <translation>Met chaque image à l’échelle d’un même pourcentage de sa propre taille</translation>
    </message>
    <message>
        <source>Scales each picture down to fit inside the width and height, keeping its proportions</source>
        <translation>Réduit chaque image pour qu’elle tienne dans la largeur et la hauteur, en gardant ses proportions</translation>
    </message>
    <message>
        <source>Shar&amp;pening:</source>
        <translation>Nettet&amp;é :</translation>
    </message>
    <message>
        <source>Show Preferences</source>
        <translation>Afficher les préférences</translation>
    </message>
    <message>
        <source>Suffi&amp;x:</source>
        <translation>Suffix&amp;e :</translation>
    </message>
    <message>
        <source>The height of the box in pixels, at least 16</source>
        <translation>La hauteur du cadre en pixels, au moins 16</translation>
    </message>
    <message>
        <source>The name a thumbnail of this file gets with these settings</source>
        <translation>Le nom que reçoit une vignette de ce fichier avec ces réglages</translation>
    </message>
    <message>
        <source>The picture format the thumbnails are written in</source>
        <translation>Le format d’image dans lequel les vignettes sont écrites</translation>
    </message>
    <message>
        <source>The text added to the names, or the sub-folder’s name; left empty it is “_”</source>
        <translation>Le texte ajouté aux noms, ou le nom du sous-dossier ; laissé vide, c’est « _ »</translation>
    </message>
    <message>
        <source>The thumbnail’s size as a percentage of the picture’s, 1 to 100</source>
        <translation>La taille de la vignette en pourcentage de celle de l’image, de 1 à 100</translation>
    </message>
    <message>
        <source>The width of the box in pixels, at least 16</source>
        <translation>La largeur du cadre en pixels, au moins 16</translation>
    </message>
    <message>
        <source>Writes a thumbnail picture beside each file, named by the rule below</source>
        <translation>Écrit une vignette à côté de chaque fichier, nommée selon la règle ci-dessous</translation>
    </message>
    <message>
        <source>Writes no file: the original file gets its own picture as its icon</source>
        <translation>N’écrit aucun fichier : le fichier d’origine reçoit sa propre image comme icône</translation>
    </message>
    <message>
        <source>Writes the thumbnail and shows it as that file’s icon in file managers</source>
        <translation>Écrit la vignette et l’affiche comme icône de ce fichier dans les gestionnaires de fichiers</translation>
    </message>
    <message>
        <source>Writes the thumbnails into a folder of that name beside the files</source>
        <translation>Écrit les vignettes dans un dossier de ce nom à côté des fichiers</translation>
    </message>
    <message>
        <source>Written by the Orvel Thumbnails developers, on Qt, libvips, Poppler, Ghostscript, FFmpeg, libplist and libarchive.</source>
        <translation>Écrit par les développeurs d’Orvel Thumbnails, sur Qt, libvips, Poppler, Ghostscript, FFmpeg, libplist et libarchive.</translation>
    </message>
    <message>
        <source>Check for &amp;Updates…</source>
        <translation>Rechercher des &amp;mises à jour…</translation>
    </message>
    <message>
        <source>Orvel Thumbnails &amp;Help</source>
        <translation>&amp;Aide d’Orvel Thumbnails</translation>
    </message>
    <message>
        <source>&amp;Release Notes</source>
        <translation>&amp;Notes de version</translation>
    </message>
    <message>
        <source>&amp;Website</source>
        <translation>Site &amp;web</translation>
    </message>
    <message>
        <source>&amp;Support</source>
        <translation>&amp;Assistance</translation>
    </message>
    <message>
        <source>&amp;Forum</source>
        <translation>&amp;Forum</translation>
    </message>
    <message>
        <source>&amp;Downloads</source>
        <translation>&amp;Téléchargements</translation>
    </message>
    <message>
        <source>Send &amp;Feedback…</source>
        <translation>Envoyer vos &amp;commentaires…</translation>
    </message>
    <message>
        <source>dry run: nothing written</source>
        <translation>essai : rien n’a été écrit</translation>
    </message>
    <message>
        <source>not a regular file</source>
        <translation>pas un fichier ordinaire</translation>
    </message>
    <message>
        <source>a thumbnail of this naming rule</source>
        <translation>une vignette de cette règle de nommage</translation>
    </message>
    <message>
        <source>inside the output folder</source>
        <translation>dans le dossier de sortie</translation>
    </message>
    <message>
        <source>its thumbnail is up to date</source>
        <translation>sa vignette est à jour</translation>
    </message>
    <message>
        <source>%1: skipped (%2)</source>
        <translation>%1 : ignoré (%2)</translation>
    </message>
    <message>
        <source>invalid value &apos;%1&apos; for %2 (expected %3)</source>
        <translation>valeur « %1 » non valable pour %2 (attendu : %3)</translation>
    </message>
    <message>
        <source>unknown setting &apos;%1&apos; (the settings are %2)</source>
        <translation>réglage « %1 » inconnu (les réglages sont %2)</translation>
    </message>
    <message>
        <source>%1 needs KEY=VALUE, not &apos;%2&apos;</source>
        <translation>%1 demande KEY=VALUE, pas « %2 »</translation>
    </message>
    <message>
        <source>set a setting; the value must be of the key&apos;s type and range (see the settings below)</source>
        <translation>fixer un réglage ; la valeur doit être du type et dans les limites de la clé (voir les réglages ci-dessous)</translation>
    </message>
    <message>
        <source>the same as --set</source>
        <translation>comme --set</translation>
    </message>
    <message>
        <source>tiff, bmp, gif, jpeg, png or jp2</source>
        <translation>tiff, bmp, gif, jpeg, png ou jp2</translation>
    </message>
    <message>
        <source>fit into a box of W by H (or N by N) pixels</source>
        <translation>faire tenir dans un cadre de W sur H (ou N sur N) pixels</translation>
    </message>
    <message>
        <source>WIDTHxHEIGHT or SIZE in pixels</source>
        <translation>LARGEURxHAUTEUR ou TAILLE en pixels</translation>
    </message>
    <message>
        <source>scale to PERCENT of the original size</source>
        <translation>mettre à PERCENT pour cent de la taille d’origine</translation>
    </message>
    <message>
        <source>a percentage above 0, at most 100</source>
        <translation>un pourcentage supérieur à 0, au plus 100</translation>
    </message>
    <message>
        <source>compression quality</source>
        <translation>qualité de compression</translation>
    </message>
    <message>
        <source>0 to 100</source>
        <translation>de 0 à 100</translation>
    </message>
    <message>
        <source>default, none, low or high</source>
        <translation>default, none, low ou high</translation>
    </message>
    <message>
        <source>name thumbnails NAME + TEXT</source>
        <translation>nommer les vignettes NOM + TEXT</translation>
    </message>
    <message>
        <source>name thumbnails TEXT + NAME</source>
        <translation>nommer les vignettes TEXT + NOM</translation>
    </message>
    <message>
        <source>put thumbnails into a sub-folder NAME</source>
        <translation>mettre les vignettes dans un sous-dossier NAME</translation>
    </message>
    <message>
        <source>write the thumbnails under DIR instead of beside their sources, a folder PATH as DIR/NAME with its sub-folders (NAME: the last part of PATH); --create icon ignores it</source>
        <translation>écrire les vignettes sous DIR au lieu de les placer à côté de leurs sources, un dossier PATH comme DIR/NAME avec ses sous-dossiers (NAME : la dernière partie de PATH) ; --create icon l’ignore</translation>
    </message>
    <message>
        <source>a folder</source>
        <translation>un dossier</translation>
    </message>
    <message>
        <source>thumbnail, thumbnail+icon or icon</source>
        <translation>thumbnail, thumbnail+icon ou icon</translation>
    </message>
    <message>
        <source>none, light, medium or strong</source>
        <translation>none, light, medium ou strong</translation>
    </message>
    <message>
        <source>files processed at once (default: one per processor core)</source>
        <translation>fichiers traités à la fois (par défaut : un par cœur de processeur)</translation>
    </message>
    <message>
        <source>1 to %1</source>
        <translation>de 1 à %1</translation>
    </message>
    <message>
        <source>also make thumbnails of the paths listed in FILE, one a line (&apos;-&apos;: standard input)</source>
        <translation>créer aussi les vignettes des chemins listés dans FILE, un par ligne (« - » : entrée standard)</translation>
    </message>
    <message>
        <source>the paths of --files-from end with NUL characters, not line breaks (find -print0)</source>
        <translation>les chemins de --files-from se terminent par des caractères NUL, pas par des sauts de ligne (find -print0)</translation>
    </message>
    <message>
        <source>leave alone a file whose thumbnail exists and is newer than it (to take up an interrupted run)</source>
        <translation>laisser de côté un fichier dont la vignette existe et est plus récente que lui (pour reprendre un traitement interrompu)</translation>
    </message>
    <message>
        <source>walk folders N levels deep (1: a folder&apos;s own files, 0: no folder entered; default: all the way)</source>
        <translation>parcourir les dossiers sur N niveaux (1 : les fichiers du dossier lui-même, 0 : aucun dossier parcouru ; par défaut : jusqu’au bout)</translation>
    </message>
    <message>
        <source>a whole number of levels, 0 or more</source>
        <translation>un nombre entier de niveaux, 0 ou plus</translation>
    </message>
    <message>
        <source>time limit per file (default 120, 0 for none)</source>
        <translation>limite de temps par fichier (120 par défaut, 0 pour aucune)</translation>
    </message>
    <message>
        <source>whole seconds, 0 for no limit</source>
        <translation>des secondes entières, 0 pour aucune limite</translation>
    </message>
    <message>
        <source>memory limit of each worker process (default: three quarters of the machine&apos;s memory shared among the workers; 0 for none)</source>
        <translation>limite de mémoire de chaque processus de travail (par défaut : les trois quarts de la mémoire de la machine, partagés entre les processus ; 0 pour aucune)</translation>
    </message>
    <message>
        <source>whole MiB, 0 for no limit</source>
        <translation>des Mio entiers, 0 pour aucune limite</translation>
    </message>
    <message>
        <source>decode and render every file as for real, list the thumbnails that would be written and what would be skipped or fail, and write nothing</source>
        <translation>décoder et dessiner chaque fichier comme pour de vrai, lister les vignettes qui seraient écrites et ce qui serait ignoré ou échouerait, et ne rien écrire</translation>
    </message>
    <message>
        <source>no progress bar and no summary</source>
        <translation>ni barre de progression ni bilan</translation>
    </message>
    <message>
        <source>print every thumbnail written, and log messages (FFmpeg&apos;s too)</source>
        <translation>afficher chaque vignette écrite, et les messages du journal (ceux de FFmpeg aussi)</translation>
    </message>
    <message>
        <source>a file manager&apos;s thumbnailer: with PATH being SOURCE OUTPUT, write one PNG of at most -s pixels (default 128) on its longer side, and nothing else; no settings are read</source>
        <translation>générateur de vignettes d’un gestionnaire de fichiers : avec SOURCE OUTPUT pour PATH, écrire un PNG d’au plus -s pixels (128 par défaut) sur son plus grand côté, et rien d’autre ; aucun réglage n’est lu</translation>
    </message>
    <message>
        <source>print this help</source>
        <translation>afficher cette aide</translation>
    </message>
    <message>
        <source>print the version</source>
        <translation>afficher la version</translation>
    </message>
    <message>
        <source>--thumbnailer takes two paths, SOURCE and OUTPUT</source>
        <translation>--thumbnailer prend deux chemins, SOURCE et OUTPUT</translation>
    </message>
    <message>
        <source>--thumbnailer reads no settings; only -s sets its size</source>
        <translation>--thumbnailer ne lit aucun réglage ; seul -s fixe sa taille</translation>
    </message>
    <message>
        <source>--thumbnailer reads local files only, not %1</source>
        <translation>--thumbnailer ne lit que des fichiers locaux, pas %1</translation>
    </message>
    <message>
        <source>unknown option %1</source>
        <translation>option %1 inconnue</translation>
    </message>
    <message>
        <source>%1 takes no value</source>
        <translation>%1 ne prend pas de valeur</translation>
    </message>
    <message>
        <source>%1 needs a value</source>
        <translation>%1 demande une valeur</translation>
    </message>
    <message>
        <source>no PATH given</source>
        <translation>aucun PATH donné</translation>
    </message>
    <message>
        <source>Usage:</source>
        <translation>Usage :</translation>
    </message>
    <message>
        <source>Makes a thumbnail of every image, PDF or PostScript document and movie in PATH (files, and folders searched through), with the stored settings; a movie gives the frame at half its length, at most 15 seconds in. Inside folders, files that are none of these and thumbnails the naming rule could have written are skipped.</source>
        <translation>Crée avec les réglages enregistrés une vignette de chaque image, document PDF ou PostScript et vidéo de PATH (des fichiers, et des dossiers parcourus) ; une vidéo donne l’image à la moitié de sa durée, au plus à 15 secondes du début. Dans les dossiers, les fichiers qui ne sont rien de cela et les vignettes que la règle de nommage a pu écrire sont ignorés.</translation>
    </message>
    <message>
        <source>Exits with 0 when every PATH was handled, 1 when something gave no thumbnail, 2 on a usage error.</source>
        <translation>Se termine avec 0 quand chaque PATH a été traité, 1 quand quelque chose n’a pas donné de vignette, 2 en cas d’erreur d’usage.</translation>
    </message>
    <message>
        <source>Settings for this run only (the stored settings are left as they are):</source>
        <translation>Réglages pour ce traitement seulement (les réglages enregistrés restent tels quels) :</translation>
    </message>
    <message>
        <source>Running:</source>
        <translation>Exécution :</translation>
    </message>
    <message>
        <source>Settings (KEY, type, default, meaning), stored in $XDG_CONFIG_HOME/orvel/thumbnails.conf; see &apos;orvel-thumbs defaults&apos;. A file named &apos;defaults&apos; is given as ./defaults.</source>
        <translation>Réglages (KEY, type, défaut, sens), enregistrés dans $XDG_CONFIG_HOME/orvel/thumbnails.conf ; voir « orvel-thumbs defaults ». Un fichier nommé « defaults » se donne comme ./defaults.</translation>
    </message>
    <message>
        <source>Examples:</source>
        <translation>Exemples :</translation>
    </message>
    <message>
        <source>thumbnails of every picture below ~/Pictures, with the stored settings</source>
        <translation>les vignettes de toutes les images sous ~/Pictures, avec les réglages enregistrés</translation>
    </message>
    <message>
        <source>256-pixel PNGs, each in a folder &apos;small&apos; beside its source</source>
        <translation>des PNG de 256 pixels, chacun dans un dossier « small » à côté de sa source</translation>
    </message>
    <message>
        <source>thumbnails of a read-only memory card in /tmp/thumbs/DCIM, in the card&apos;s folders</source>
        <translation>les vignettes d’une carte mémoire en lecture seule dans /tmp/thumbs/DCIM, dans les dossiers de la carte</translation>
    </message>
    <message>
        <source>file-manager icons for the files of ~/Downloads, not of its sub-folders</source>
        <translation>des icônes de gestionnaire de fichiers pour les fichiers de ~/Downloads, pas de ses sous-dossiers</translation>
    </message>
    <message>
        <source>store a setting for the runs to come</source>
        <translation>enregistrer un réglage pour les traitements à venir</translation>
    </message>
    <message>
        <source>Try &apos;orvel-thumbs --help&apos; for more.</source>
        <translation>Essayez « orvel-thumbs --help » pour en savoir plus.</translation>
    </message>
    <message>
        <source>the thumbnail engine %1 is missing beside %2</source>
        <translation>le moteur de vignettes %1 manque à côté de %2</translation>
    </message>
    <message>
        <source>cannot read %1: %2</source>
        <translation>impossible de lire %1 : %2</translation>
    </message>
    <message>
        <source>missing command</source>
        <translation>commande manquante</translation>
    </message>
    <message>
        <source>too many arguments</source>
        <translation>trop d’arguments</translation>
    </message>
    <message>
        <source>default</source>
        <translation>par défaut</translation>
    </message>
    <message>
        <source>the key %1 is not set (%2)</source>
        <translation>la clé %1 n’est pas définie (%2)</translation>
    </message>
    <message>
        <source>unknown type %1</source>
        <translation>type %1 inconnu</translation>
    </message>
    <message>
        <source>missing KEY or VALUE</source>
        <translation>KEY ou VALUE manquant</translation>
    </message>
    <message>
        <source>empty KEY</source>
        <translation>KEY vide</translation>
    </message>
    <message>
        <source>%1 is not a valid %2 value</source>
        <translation>%1 n’est pas une valeur %2 valable</translation>
    </message>
    <message>
        <source>unknown setting &apos;%1&apos; (write it anyway with defaults write --force)</source>
        <translation>réglage « %1 » inconnu (l’écrire quand même avec defaults write --force)</translation>
    </message>
    <message>
        <source>missing KEY</source>
        <translation>KEY manquant</translation>
    </message>
    <message>
        <source>unknown command %1</source>
        <translation>commande %1 inconnue</translation>
    </message>
    <message>
        <source>cannot write %1</source>
        <translation>impossible d’écrire %1</translation>
    </message>
    <message>
        <source>%1 files/s</source>
        <translation>%1 fichiers/s</translation>
    </message>
    <message>
        <source>%1 done</source>
        <translation>%1 traités</translation>
    </message>
    <message>
        <source>%1 left</source>
        <translation>%1 restant</translation>
    </message>
    <message>
        <source>1 thumbnail made</source>
        <translation>1 vignette créée</translation>
    </message>
    <message>
        <source>%1 thumbnails made</source>
        <translation>%1 vignettes créées</translation>
    </message>
    <message>
        <source>1 icon set</source>
        <translation>1 icône posée</translation>
    </message>
    <message>
        <source>%1 icons set</source>
        <translation>%1 icônes posées</translation>
    </message>
    <message>
        <source>%1 skipped</source>
        <translation>%1 ignorés</translation>
    </message>
    <message>
        <source>%1 failed</source>
        <translation>%1 en échec</translation>
    </message>
    <message>
        <source>%1 written</source>
        <translation>%1 écrits</translation>
    </message>
    <message>
        <source>%1 takes %2, not &apos;%3&apos;</source>
        <translation>%1 prend %2, pas « %3 »</translation>
    </message>
    <message>
        <source>try %1 %2</source>
        <translation>essayez %1 %2</translation>
    </message>
    <message>
        <source>a whole number from %1 to %2</source>
        <translation>un nombre entier de %1 à %2</translation>
    </message>
    <message>
        <source>a number from %1 to %2</source>
        <translation>un nombre de %1 à %2</translation>
    </message>
    <message>
        <source>true or false</source>
        <translation>true ou false</translation>
    </message>
    <message>
        <source>a text</source>
        <translation>un texte</translation>
    </message>
    <message>
        <source>output format: 0 TIFF, 1 BMP, 2 GIF, 3 JPEG, 4 PNG, 5 JPEG 2000</source>
        <translation>format de sortie : 0 TIFF, 1 BMP, 2 GIF, 3 JPEG, 4 PNG, 5 JPEG 2000</translation>
    </message>
    <message>
        <source>width of the box a thumbnail must fit, in pixels</source>
        <translation>largeur du cadre où doit tenir une vignette, en pixels</translation>
    </message>
    <message>
        <source>height of the box a thumbnail must fit, in pixels</source>
        <translation>hauteur du cadre où doit tenir une vignette, en pixels</translation>
    </message>
    <message>
        <source>0 fit the box; anything else scale by scale</source>
        <translation>0 tenir dans le cadre ; toute autre valeur mettre à l’échelle scale</translation>
    </message>
    <message>
        <source>scale factor of the source&apos;s pixel size</source>
        <translation>facteur d’échelle de la taille en pixels de la source</translation>
    </message>
    <message>
        <source>compression factor, 0 to 1</source>
        <translation>facteur de compression, de 0 à 1</translation>
    </message>
    <message>
        <source>interpolation: 0 default, 1 none, 2 low, 3 high</source>
        <translation>interpolation : 0 par défaut, 1 aucune, 2 basse, 3 haute</translation>
    </message>
    <message>
        <source>0 none, 1 light, 2 medium, 3 strong</source>
        <translation>0 aucune, 1 légère, 2 moyenne, 3 forte</translation>
    </message>
    <message>
        <source>suffix, prefix or sub-folder name</source>
        <translation>suffixe, préfixe ou nom du sous-dossier</translation>
    </message>
    <message>
        <source>1 suffix, 0 prefix, anything else a sub-folder</source>
        <translation>1 suffixe, 0 préfixe, toute autre valeur un sous-dossier</translation>
    </message>
    <message>
        <source>0 thumbnail, 1 thumbnail and its icon, 2 icon of the source</source>
        <translation>0 vignette, 1 vignette et son icône, 2 icône de la source</translation>
    </message>
    <message>
        <source>desktop application: quit after a launch by drop</source>
        <translation>application de bureau : quitter après un lancement par dépôt</translation>
    </message>
    <message>
        <source>the output folder %1 is a file</source>
        <translation>le dossier de sortie %1 est un fichier</translation>
    </message>
</context>
</TS>
