<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- The application's default strings table: English interface text -> translation. -->
<TS version="2.1" language="fr_FR" sourcelanguage="en">
<context>
    <name>Localizable</name>
    <message>
        <source>File</source>
        <translation>Fichier</translation>
    </message>
    <message>
        <source>Make Thumbnails…</source>
        <translation>Créer des vignettes…</translation>
    </message>
    <message>
        <source>Make Thumbnails</source>
        <translation>Créer des vignettes</translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation>Préférences…</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <source>Quit Orvel Thumbnails</source>
        <translation>Quitter Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Édition</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Rétablir</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Couper</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Copier</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Coller</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Tout sélectionner</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenêtre</translation>
    </message>
    <message>
        <source>Minimize</source>
        <translation>Réduire</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
    <message>
        <source>Orvel Thumbnails Help</source>
        <translation>Aide d’Orvel Thumbnails</translation>
    </message>
    <message>
        <source>About Orvel Thumbnails</source>
        <translation>À propos d’Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Orvel Thumbnails makes thumbnails of pictures and documents.</source>
        <translation>Orvel Thumbnails crée des vignettes d’images et de documents.</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Choose Files or Folders</source>
        <translation>Choisir des fichiers ou des dossiers</translation>
    </message>
    <message>
        <source>Pictures and Documents (%1)</source>
        <translation>Images et documents (%1)</translation>
    </message>
    <message>
        <source>All Files (*)</source>
        <translation>Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>Préférences</translation>
    </message>
    <message>
        <source>Orvel Thumbnails Preferences</source>
        <translation>Préférences d’Orvel Thumbnails</translation>
    </message>
    <message>
        <source>Create:</source>
        <translation>Créer :</translation>
    </message>
    <message>
        <source>Thumbnail</source>
        <translation>Vignette</translation>
    </message>
    <message>
        <source>Thumbnail and icon</source>
        <translation>Vignette et icône</translation>
    </message>
    <message>
        <source>Icon of the source file</source>
        <translation>Icône du fichier source</translation>
    </message>
    <message>
        <source>Naming:</source>
        <translation>Nommage :</translation>
    </message>
    <message>
        <source>Suffix</source>
        <translation>Suffixe</translation>
    </message>
    <message>
        <source>Prefix</source>
        <translation>Préfixe</translation>
    </message>
    <message>
        <source>Sub-folder</source>
        <translation>Sous-dossier</translation>
    </message>
    <message>
        <source>Extension:</source>
        <translation>Extension :</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Nom :</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format :</translation>
    </message>
    <message>
        <source>Quality:</source>
        <translation>Qualité :</translation>
    </message>
    <message>
        <source>Interpolation:</source>
        <translation>Interpolation :</translation>
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
        <source>Sharpening:</source>
        <translation>Netteté :</translation>
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
        <source>Size:</source>
        <translation>Taille :</translation>
    </message>
    <message>
        <source>Fit in box</source>
        <translation>Adapter au cadre</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Mettre à l’échelle</translation>
    </message>
    <message>
        <source>Width:</source>
        <translation>Largeur :</translation>
    </message>
    <message>
        <source>Height:</source>
        <translation>Hauteur :</translation>
    </message>
    <message>
        <source>Scale:</source>
        <translation>Échelle :</translation>
    </message>
    <message>
        <source>pixels</source>
        <translation>pixels</translation>
    </message>
    <message>
        <source> px</source>
        <translation> px</translation>
    </message>
    <message>
        <source> %</source>
        <translation> %</translation>
    </message>
    <message>
        <source>Quit when done</source>
        <translation>Quitter une fois terminé</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Appliquer</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Making Thumbnails</source>
        <translation>Création des vignettes</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>%d bytes</source>
        <translation>%d octets</translation>
    </message>
    <message>
        <source>%@ KB</source>
        <translation>%@ Ko</translation>
    </message>
    <message>
        <source>%@ MB</source>
        <translation>%@ Mo</translation>
    </message>
    <message>
        <source>%@ GB</source>
        <translation>%@ Go</translation>
    </message>
    <message>
        <source>%@ TB</source>
        <translation>%@ To</translation>
    </message>
</context>
</TS>
