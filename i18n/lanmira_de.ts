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
    <message>
        <source>ids_folders</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>ids_video</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_icons</source>
        <translation>Symbole</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_sort</source>
        <translation>Sortieren</translation>
    </message>
    <message>
        <source>ids_lanmira_status_position</source>
        <translation>%d/%d</translation>
    </message>
    <message>
        <source>ids_lanmira_status_selection</source>
        <translation>%d, %d</translation>
    </message>
    <message>
        <source>ids_lanmira_status_waiting</source>
        <translation>Warten...</translation>
    </message>
    <message>
        <source>ids_lanmira_status_image</source>
        <translation>%d bpp  %d x %d</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_title</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_confirm</source>
        <translation>Möchten Sie „%s“ in den Papierkorb verschieben?</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_confirm_many</source>
        <translation>Möchten Sie diese %d Elemente in den Papierkorb verschieben?</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_forever</source>
        <translation>Möchten Sie „%s“ endgültig löschen? Das kann nicht rückgängig gemacht werden.</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_forever_many</source>
        <translation>Möchten Sie diese %d Elemente endgültig löschen? Das kann nicht rückgängig gemacht werden.</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_notrash</source>
        <translation>„%s“ kann nicht in den Papierkorb verschoben werden, weil dieses Laufwerk keinen hat. Möchten Sie die Datei endgültig löschen?</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_failed</source>
        <translation>„%s“ konnte nicht gelöscht werden.
%s</translation>
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
    <message>
        <source>edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>view</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>32772</source>
        <translation>&amp;Löschen	[Shift+]Delete</translation>
    </message>
    <message>
        <source>32784</source>
        <translation>&amp;Alles auswählen	Ctrl+A</translation>
    </message>
    <message>
        <source>32874</source>
        <translation>Auswahl &amp;umkehren</translation>
    </message>
    <message>
        <source>32782</source>
        <translation>&amp;Große Symbole</translation>
    </message>
    <message>
        <source>32783</source>
        <translation>&amp;Kleine Symbole</translation>
    </message>
    <message>
        <source>32777</source>
        <translation>Nach &amp;Name sortieren</translation>
    </message>
    <message>
        <source>32778</source>
        <translation>Nach &amp;Typ sortieren</translation>
    </message>
    <message>
        <source>32779</source>
        <translation>Nach &amp;Größe sortieren</translation>
    </message>
    <message>
        <source>32871</source>
        <translation>Nach &amp;Breite sortieren</translation>
    </message>
    <message>
        <source>32872</source>
        <translation>Nach &amp;Höhe sortieren</translation>
    </message>
    <message>
        <source>32876</source>
        <translation>Nach &amp;Erweiterung sortieren</translation>
    </message>
    <message>
        <source>32780</source>
        <translation>&amp;Aufsteigend</translation>
    </message>
    <message>
        <source>32781</source>
        <translation>Ab&amp;steigend</translation>
    </message>
    <message>
        <source>32773</source>
        <translation>&amp;Aktualisieren	F5</translation>
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
<context>
    <name>IDD_IMAGEOPTIONS</name>
    <message>
        <source>0</source>
        <translation>Optionen für %s</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>1201</source>
        <translation>&amp;Qualität:</translation>
    </message>
    <message>
        <source>1202</source>
        <translation>&amp;Progressiv</translation>
    </message>
    <message>
        <source>1203</source>
        <translation>Kompressions&amp;stufe:</translation>
    </message>
    <message>
        <source>1204</source>
        <translation>&amp;Kompression:</translation>
    </message>
    <message>
        <source>1205</source>
        <translation>&amp;Verlustfrei</translation>
    </message>
    <message>
        <source>1210</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>1211</source>
        <translation>LZW</translation>
    </message>
    <message>
        <source>1212</source>
        <translation>Deflate (ZIP)</translation>
    </message>
    <message>
        <source>1213</source>
        <translation>PackBits</translation>
    </message>
    <message>
        <source>1214</source>
        <translation>JPEG</translation>
    </message>
</context>
</TS>
