<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- The toolkit's strings table "Bundle": English dialog text and unit texts -> translation. -->
<TS version="2.1" language="fr_FR" sourcelanguage="en">
<context>
    <name>Bundle</name>
    <message>
        <source>A New Version is Available</source>
        <translation>Une nouvelle version est disponible</translation>
    </message>
    <message>
        <source>A new version of %@ is available (%@). Would you like to download the new version now?</source>
        <translation>Une nouvelle version de %@ est disponible (%@). Voulez-vous télécharger la nouvelle version maintenant ?</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Télécharger</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Your software is up-to-date</source>
        <translation>Votre logiciel est à jour</translation>
    </message>
    <message>
        <source>You are running %@ %@. No newer version was found.</source>
        <translation>Vous utilisez %@ %@. Aucune version plus récente n’a été trouvée.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>%d bytes</source>
        <translation>%d octets</translation>
    </message>
    <message>
        <source>%@ KB</source>
        <translation>%@ Ko</translation>
    </message>
    <message>
        <source>%@ MB</source>
        <translation>%@ Mo</translation>
    </message>
    <message>
        <source>%@ GB</source>
        <translation>%@ Go</translation>
    </message>
    <message>
        <source>%@ TB</source>
        <translation>%@ To</translation>
    </message>
</context>
</TS>
