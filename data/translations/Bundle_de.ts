<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- The toolkit's strings table "Bundle": English dialog text and unit texts -> translation. -->
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Bundle</name>
    <message>
        <source>A New Version is Available</source>
        <translation>Eine neue Version ist verfügbar</translation>
    </message>
    <message>
        <source>A new version of %@ is available (%@). Would you like to download the new version now?</source>
        <translation>Eine neue Version von %@ ist verfügbar (%@). Möchten Sie die neue Version jetzt herunterladen?</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Herunterladen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Your software is up-to-date</source>
        <translation>Ihre Software ist auf dem neuesten Stand</translation>
    </message>
    <message>
        <source>You are running %@ %@. No newer version was found.</source>
        <translation>Sie verwenden %@ %@. Es wurde keine neuere Version gefunden.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
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
