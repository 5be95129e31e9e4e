<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
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
        <translation>Lanmira Viewer</translation>
    </message>
    <message>
        <source>ids_lanmira_update</source>
        <translation>Update information: %s</translation>
    </message>
</context>
<context>
    <name>IDD_ABOUTBOX</name>
    <message>
        <source>0</source>
        <translation>About Lanmira</translation>
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
        <translation>Built on %s</translation>
    </message>
    <message>
        <source>1004</source>
        <translation>Copyright © Vornalt. All rights reserved.</translation>
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
        <translation>&amp;File</translation>
    </message>
    <message>
        <source>57665</source>
        <translation>E&amp;xit</translation>
    </message>
    <message>
        <source>help</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <source>57664</source>
        <translation>&amp;About...</translation>
    </message>
</context>
<context>
    <name>IDR_VIEWER</name>
    <message>
        <source>file</source>
        <translation>&amp;File</translation>
    </message>
    <message>
        <source>57665</source>
        <translation>E&amp;xit</translation>
    </message>
    <message>
        <source>help</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <source>57664</source>
        <translation>&amp;About...</translation>
    </message>
</context>
</TS>
