<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name></name>
    <message id="6313">
        <source>Seek to %s</source>
        <translation>Springe zu %s</translation>
    </message>
    <message id="6336">
        <source>Volume: %d%%</source>
        <translation type="unfinished"></translation>
    </message>
    <message id="menu.101.p1.6">
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message id="6365">
        <source>Yes</source>
        <translation>Ja ✓</translation>
    </message>
</context>
</TS>
