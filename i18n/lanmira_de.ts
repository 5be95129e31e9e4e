<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>strings</name>
    <message>
        <source>ids_lanmira_appname</source>
        <translation>Lanmira</translation>
    </message>
    <message>
        <source>ids_lanmira_browser_title</source>
        <translation>Lanmira</translation>
    </message>
    <message>
        <source>ids_lanmira_viewer_title</source>
        <translation>Lanmira-Bildbetrachter</translation>
    </message>
    <message>
        <source>ids_lanmira_update</source>
        <translation>Informationen zur Aktualisierung: %s</translation>
    </message>
</context>
<context>
    <name>IDD_ABOUTBOX</name>
    <message>
        <source>0</source>
        <translation>Über Lanmira</translation>
    </message>
    <message>
        <source>1001</source>
        <translation>Lanmira</translation>
    </message>
    <message>
        <source>1002</source>
        <translation>Version %s</translation>
    </message>
    <message>
        <source>1003</source>
        <translation>Erstellt am %s</translation>
    </message>
    <message>
        <source>1004</source>
        <translation>Copyright © Vornalt. Alle Rechte vorbehalten.</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>IDR_BROWSER</name>
    <message>
        <source>file</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>57665</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>57664</source>
        <translation>Ü&amp;ber...</translation>
    </message>
</context>
<context>
    <name>IDR_VIEWER</name>
    <message>
        <source>file</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>57665</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>57664</source>
        <translation>Ü&amp;ber...</translation>
    </message>
</context>
</TS>
