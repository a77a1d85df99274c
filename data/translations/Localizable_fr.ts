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
</context>
</TS>
