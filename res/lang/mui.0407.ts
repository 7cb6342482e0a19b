<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- Deutsch (locale 1031): an example pack, partial on purpose; what it lacks stays English. -->
<TS version="2.1" language="de_DE">
<context>
    <name></name>
    <message id="40002">
        <source>Playlist</source>
        <translation>Wiedergabeliste</translation>
    </message>
    <message id="40005">
        <source>Menu</source>
        <translation>Menü</translation>
    </message>
    <message id="6313">
        <source>Seek to %s</source>
        <translation>Springe zu %s</translation>
    </message>
    <message id="6336">
        <source>Volume: %d%%</source>
        <translation>Lautstärke: %d%%</translation>
    </message>
    <message id="6343">
        <source>Paused by sleep timer</source>
        <translation>Vom Schlaftimer angehalten</translation>
    </message>
    <message id="6344">
        <source>%d seconds</source>
        <translation>%d Sekunden</translation>
    </message>
    <message id="6334">
        <source>Loading local content...</source>
        <translation>Lade lokale Inhalte...</translation>
    </message>
    <message id="6335">
        <source>Loading '%s'</source>
        <translation>Lade '%s'</translation>
    </message>
    <message id="6352">
        <source>Title:</source>
        <translation>Titel:</translation>
    </message>
    <message id="6353">
        <source>Artist:</source>
        <translation>Interpret:</translation>
    </message>
    <message id="6354">
        <source>Album:</source>
        <translation>Album:</translation>
    </message>
    <message id="6355">
        <source>Genre:</source>
        <translation>Genre:</translation>
    </message>
    <message id="6356">
        <source>Year:</source>
        <translation>Jahr:</translation>
    </message>
    <message id="6357">
        <source>Track Number:</source>
        <translation>Titelnummer:</translation>
    </message>
    <message id="6358">
        <source>&lt;hr&gt;File Information</source>
        <translation>&lt;hr&gt;Dateiinformationen</translation>
    </message>
    <message id="6359">
        <source>Codec:</source>
        <translation>Codec:</translation>
    </message>
    <message id="6360">
        <source>Sample Rate:</source>
        <translation>Abtastrate:</translation>
    </message>
    <message id="6361">
        <source>Bitrate:</source>
        <translation>Bitrate:</translation>
    </message>
    <message id="6362">
        <source>Duration:</source>
        <translation>Dauer:</translation>
    </message>
    <message id="6363">
        <source>Description:</source>
        <translation>Beschreibung:</translation>
    </message>
    <message id="6364">
        <source>Stereo:</source>
        <translation>Stereo:</translation>
    </message>
    <message id="6365">
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message id="6366">
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message id="menu.101.40041">
        <source>Play/Stop</source>
        <translation>Wiedergabe/Stopp</translation>
    </message>
    <message id="menu.101.p1.1">
        <source>Order</source>
        <translation>Reihenfolge</translation>
    </message>
    <message id="menu.101.40044">
        <source>Enable shuffle</source>
        <translation>Zufallswiedergabe</translation>
    </message>
    <message id="menu.101.40043">
        <source>Enable repeat</source>
        <translation>Wiederholen</translation>
    </message>
    <message id="menu.101.40026">
        <source>Repeat all</source>
        <translation>Alle wiederholen</translation>
    </message>
    <message id="menu.101.40027">
        <source>Repeat one</source>
        <translation>Einen wiederholen</translation>
    </message>
    <message id="menu.101.40028">
        <source>Repeat selected</source>
        <translation>Ausgewählte wiederholen</translation>
    </message>
    <message id="menu.101.p1.3">
        <source>Timers</source>
        <translation>Zeitschaltung</translation>
    </message>
    <message id="menu.101.40046">
        <source>Set Alarm</source>
        <translation>Wecker stellen</translation>
    </message>
    <message id="menu.101.1518">
        <source>Sleep Timer</source>
        <translation>Schlaftimer</translation>
    </message>
    <message id="menu.101.1102">
        <source>Equalizer</source>
        <translation>Equalizer</translation>
    </message>
    <message id="menu.101.p1.5">
        <source>Bookmark</source>
        <translation>Lesezeichen</translation>
    </message>
    <message id="menu.101.1514">
        <source>Add bookmark</source>
        <translation>Lesezeichen setzen</translation>
    </message>
    <message id="menu.101.1513">
        <source>Organize</source>
        <translation>Verwalten</translation>
    </message>
    <message id="menu.101.p1.6">
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message id="menu.101.p1.6.0">
        <source>FF/Rewind Step</source>
        <translation>Sprungweite</translation>
    </message>
    <message id="menu.101.40006">
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message id="menu.101.40007">
        <source>Playlist</source>
        <translation>Wiedergabeliste</translation>
    </message>
    <message id="menu.101.40090">
        <source>Effects</source>
        <translation>Effekte</translation>
    </message>
    <message id="menu.101.40001">
        <source>Key Mapping</source>
        <translation>Tastenbelegung</translation>
    </message>
    <message id="menu.101.40045">
        <source>File Associations</source>
        <translation>Dateizuordnungen</translation>
    </message>
    <message id="menu.101.p1.6.6">
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message id="menu.101.1100">
        <source>About</source>
        <translation>Über</translation>
    </message>
    <message id="menu.101.40009">
        <source>Exit</source>
        <translation>Beenden</translation>
    </message>
    <message id="menu.105.1">
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message id="menu.157.1">
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message id="menu.157.2">
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message id="dlg.119.title">
        <source>About</source>
        <translation>Über</translation>
    </message>
    <message id="dlg.119.version">
        <source>Tavrinsonic %d.%d</source>
        <translation>Tavrinsonic Version %d.%d</translation>
    </message>
    <message id="dlg.133.title">
        <source>TS Options</source>
        <translation>TS-Optionen</translation>
    </message>
    <message id="dlg.133.1039">
        <source>Sort files on load</source>
        <translation>Dateien beim Laden sortieren</translation>
    </message>
</context>
</TS>
