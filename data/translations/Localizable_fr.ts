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
        <source>A thumbnail file</source>
        <translation>Un fichier de vignette</translation>
    </message>
    <message>
        <source>A thumbnail file with a custom icon</source>
        <translation>Un fichier de vignette avec une icône personnalisée</translation>
    </message>
    <message>
        <source>Only a custom icon on the original file</source>
        <translation>Seulement une icône personnalisée sur le fichier d’origine</translation>
    </message>
    <message>
        <source>Naming</source>
        <translation>Nommage</translation>
    </message>
    <message>
        <source>Prefix</source>
        <translation>Préfixe</translation>
    </message>
    <message>
        <source>Suffix</source>
        <translation>Suffixe</translation>
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
        <source>Size</source>
        <translation>Taille</translation>
    </message>
    <message>
        <source>Fit into a box</source>
        <translation>Ajuster dans un cadre</translation>
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
        <source>pixels</source>
        <translation>pixels</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Mettre à l’échelle</translation>
    </message>
    <message>
        <source>Percent:</source>
        <translation>Pourcentage :</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Sortie</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format :</translation>
    </message>
    <message>
        <source>Quality (percent):</source>
        <translation>Qualité (pourcentage) :</translation>
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
        <source>Quit when done after opening files</source>
        <translation>Quitter une fois les fichiers ouverts traités</translation>
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
        <source>&amp;Make Thumbnails of Files…</source>
        <translation>&amp;Créer des vignettes de fichiers…</translation>
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
        <source>Make Thumbnails of Files</source>
        <translation>Créer des vignettes de fichiers</translation>
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
