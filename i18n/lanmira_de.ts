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
    <message>
        <source>ids_lanmira_bpp</source>
        <translation>%d bpp, %d Pixel/m</translation>
    </message>
    <message>
        <source>ids_lanmira_page</source>
        <translation>Seite %d/%d</translation>
    </message>
    <message>
        <source>ids_calvora_zoom</source>
        <translation>%.0f%%</translation>
    </message>
    <message>
        <source>ids_lanmira_multipage</source>
        <translation>Das Bild ist eine Seite einer Datei mit mehreren Seiten. Nur diese Seite wird gespeichert.</translation>
    </message>
    <message>
        <source>ids_calvora_savefilefail1</source>
        <translation>Die Datei %s konnte nicht gespeichert werden.
%s</translation>
    </message>
    <message>
        <source>ids_calvora_savefilefail2</source>
        <translation>Die Datei %s konnte nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>ids_lanmira_savefile</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>ids_lanmira_savechanges</source>
        <translation>Änderungen an %s speichern?</translation>
    </message>
    <message>
        <source>ids_calvora_savedlg_replace</source>
        <translation>%s ist bereits vorhanden.
Möchten Sie die Datei ersetzen?</translation>
    </message>
    <message>
        <source>ids_lanmira_saveas_title</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>ids_lanmira_saveas_option</source>
        <translation>Option</translation>
    </message>
    <message>
        <source>ids_calvora_allsupported</source>
        <translation>Alle unterstützten Bilder</translation>
    </message>
    <message>
        <source>ids_lanmira_allfiles</source>
        <translation>Alle Dateien</translation>
    </message>
    <message>
        <source>ids_lanmira_open_title</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>ids_lanmira_open_preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>ids_lanmira_validate_range</source>
        <translation>Bitte geben Sie eine ganze Zahl zwischen %d und %d ein.</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_browser</source>
        <translation>Browser</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_print</source>
        <translation>Drucken</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_copyimage</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_rotleft</source>
        <translation>Links</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_rotright</source>
        <translation>Rechts</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_first</source>
        <translation>Erstes</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_prev</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_next</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_last</source>
        <translation>Letztes</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_bestfit</source>
        <translation>Einpassen</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_actual</source>
        <translation>100%</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_slideshow</source>
        <translation>Diashow</translation>
    </message>
    <message>
        <source>ids_calvora_record_title</source>
        <translation>Video aufnehmen</translation>
    </message>
    <message>
        <source>ids_calvora_record_mp4</source>
        <translation>MP4-Video</translation>
    </message>
    <message>
        <source>ids_calvora_record_mkv</source>
        <translation>Matroska-Video</translation>
    </message>
    <message>
        <source>ids_calvora_camera_controls</source>
        <translation>Kamera-Einstellungen</translation>
    </message>
    <message>
        <source>ids_calvora_nodevice</source>
        <translation>Keine Kamera gefunden</translation>
    </message>
    <message>
        <source>ids_calvora_video_framerate</source>
        <translation>Kamera %.1f fps, angezeigt %.1f fps</translation>
    </message>
    <message>
        <source>ids_whitebalance</source>
        <translation>Weißabgleich</translation>
    </message>
    <message>
        <source>ids_exposure</source>
        <translation>Belichtung</translation>
    </message>
    <message>
        <source>ids_calvora_camera_disconnected</source>
        <translation>Die Kamera wurde getrennt. Schließen Sie dieses Fenster, schließen Sie die Kamera wieder an und wählen Sie sie in der Kameraliste.</translation>
    </message>
    <message>
        <source>ids_calvora_camera_openfail</source>
        <translation>Die Kamera konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>ids_calvora_keepawake</source>
        <translation>Live-Video wird angezeigt</translation>
    </message>
    <message>
        <source>ids_calvora_record_failed</source>
        <translation>Die Aufnahme wurde beendet, weil die Datei nicht geschrieben werden konnte.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn0</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn1</source>
        <translation>Endungen</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn2</source>
        <translation>Liste</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn3</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn4</source>
        <translation>Merken</translation>
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
    <message>
        <source>32873</source>
        <translation>&amp;Öffnen...&#9;Insert</translation>
    </message>
    <message>
        <source>32906</source>
        <translation>Als &amp;neue Datei einfügen</translation>
    </message>
    <message>
        <source>32907</source>
        <translation>Vor dem Schließen &amp;fragen</translation>
    </message>
    <message>
        <source>32915</source>
        <translation>&amp;Diashow...</translation>
    </message>
    <message>
        <source>cameralist</source>
        <translation>Kamera&amp;liste</translation>
    </message>
    <message>
        <source>32897</source>
        <translation>&amp;Standard-Dateioptionen...</translation>
    </message>
    <message>
        <source>32908</source>
        <translation>Datei&amp;format...</translation>
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
        <translation>&amp;Info...</translation>
    </message>
    <message>
        <source>edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>zoom</source>
        <translation>&amp;Zoom</translation>
    </message>
    <message>
        <source>image</source>
        <translation>B&amp;ild</translation>
    </message>
    <message>
        <source>go</source>
        <translation>&amp;Gehe zu</translation>
    </message>
    <message>
        <source>57601</source>
        <translation>&amp;Öffnen...&#9;Ctrl+O</translation>
    </message>
    <message>
        <source>57603</source>
        <translation>&amp;Speichern&#9;Ctrl+S</translation>
    </message>
    <message>
        <source>57604</source>
        <translation>Speichern &amp;unter...</translation>
    </message>
    <message>
        <source>32772</source>
        <translation>&amp;Löschen&#9;[Shift+]Delete</translation>
    </message>
    <message>
        <source>57607</source>
        <translation>&amp;Drucken...&#9;Ctrl+P</translation>
    </message>
    <message>
        <source>57609</source>
        <translation>Seiten&amp;ansicht</translation>
    </message>
    <message>
        <source>32906</source>
        <translation>Als &amp;neue Datei einfügen</translation>
    </message>
    <message>
        <source>32907</source>
        <translation>Vor dem Schließen &amp;fragen</translation>
    </message>
    <message>
        <source>32915</source>
        <translation>&amp;Diashow...</translation>
    </message>
    <message>
        <source>32786</source>
        <translation>&amp;Browser&#9;Ctrl+B</translation>
    </message>
    <message>
        <source>32892</source>
        <translation>Bild &amp;kopieren&#9;Ctrl+C</translation>
    </message>
    <message>
        <source>32880</source>
        <translation>&amp;Hand&#9;Ctrl+T</translation>
    </message>
    <message>
        <source>32819</source>
        <translation>&amp;Einpassen&#9;NumPad*</translation>
    </message>
    <message>
        <source>32887</source>
        <translation>&amp;Originalgröße&#9;NumPad/</translation>
    </message>
    <message>
        <source>32888</source>
        <translation>&amp;Sperren&#9;Ctrl+NumPad/</translation>
    </message>
    <message>
        <source>32889</source>
        <translation>Automatisch &amp;verkleinern&#9;Ctrl+NumPad-</translation>
    </message>
    <message>
        <source>32890</source>
        <translation>Automatisch ver&amp;größern&#9;Ctrl+NumPad+</translation>
    </message>
    <message>
        <source>32900</source>
        <translation>90° gegen den &amp;Uhrzeigersinn drehen&#9;Ctrl+L</translation>
    </message>
    <message>
        <source>32898</source>
        <translation>90° im Uhr&amp;zeigersinn drehen&#9;Ctrl+R</translation>
    </message>
    <message>
        <source>32899</source>
        <translation>Um &amp;180° drehen</translation>
    </message>
    <message>
        <source>32901</source>
        <translation>&amp;Horizontal spiegeln</translation>
    </message>
    <message>
        <source>32903</source>
        <translation>&amp;Vertikal spiegeln</translation>
    </message>
    <message>
        <source>32885</source>
        <translation>E&amp;rste Seite</translation>
    </message>
    <message>
        <source>32884</source>
        <translation>Vo&amp;rige Seite&#9;PageUp</translation>
    </message>
    <message>
        <source>32883</source>
        <translation>Nä&amp;chste Seite&#9;PageDown</translation>
    </message>
    <message>
        <source>32886</source>
        <translation>Le&amp;tzte Seite</translation>
    </message>
    <message>
        <source>32878</source>
        <translation>&amp;Erstes Bild&#9;Ctrl+Home</translation>
    </message>
    <message>
        <source>32879</source>
        <translation>&amp;Voriges Bild&#9;Ctrl+PageUp</translation>
    </message>
    <message>
        <source>32882</source>
        <translation>&amp;Nächstes Bild&#9;Ctrl+PageDown</translation>
    </message>
    <message>
        <source>32881</source>
        <translation>&amp;Letztes Bild&#9;Ctrl+End</translation>
    </message>
    <message>
        <source>32914</source>
        <translation>&amp;Diashow&#9;Pause</translation>
    </message>
    <message>
        <source>32897</source>
        <translation>&amp;Standard-Dateioptionen...</translation>
    </message>
    <message>
        <source>32908</source>
        <translation>Datei&amp;format...</translation>
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
<context>
    <name>IDD_ZOOMCUSTOM</name>
    <message>
        <source>0</source>
        <translation>Zoom anpassen</translation>
    </message>
    <message>
        <source>1060</source>
        <translation>&amp;Zoom (%):</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>IDD_SLIDE</name>
    <message>
        <source>0</source>
        <translation>Diashow</translation>
    </message>
    <message>
        <source>1056</source>
        <translation>&amp;Pause (Sekunden):</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>IDR_VIDEO</name>
    <message>
        <source>file</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>camera</source>
        <translation>&amp;Kamera</translation>
    </message>
    <message>
        <source>dialogs</source>
        <translation>Kamera&amp;dialoge</translation>
    </message>
    <message>
        <source>help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>32861</source>
        <translation>Bild &amp;aufnehmen</translation>
    </message>
    <message>
        <source>57634</source>
        <translation>In die &amp;Zwischenablage&#9;Ctrl+C</translation>
    </message>
    <message>
        <source>32905</source>
        <translation>Automatische Auf&amp;nahme...</translation>
    </message>
    <message>
        <source>32848</source>
        <translation>Videoaufzeichnung Video&amp;aufzeichnung starten...amp;starten...</translation>
    </message>
    <message>
        <source>32849</source>
        <translation>Aufzeichnung &amp;beenden</translation>
    </message>
    <message>
        <source>32897</source>
        <translation>&amp;Standard-Dateioptionen...</translation>
    </message>
    <message>
        <source>32908</source>
        <translation>Datei&amp;format...</translation>
    </message>
    <message>
        <source>32907</source>
        <translation>Vor dem Schließen &amp;fragen</translation>
    </message>
    <message>
        <source>32915</source>
        <translation>&amp;Diashow...</translation>
    </message>
    <message>
        <source>32920</source>
        <translation>&amp;Eigenschaften...&#9;Shift+V</translation>
    </message>
    <message>
        <source>32814</source>
        <translation>Immer im &amp;Vordergrund</translation>
    </message>
    <message>
        <source>57664</source>
        <translation>&amp;Info...</translation>
    </message>
</context>
<context>
    <name>IDD_AUTO</name>
    <message>
        <source>0</source>
        <translation>Automatische Aufnahme</translation>
    </message>
    <message>
        <source>1044</source>
        <translation>&amp;Intervall (Sekunden):</translation>
    </message>
    <message>
        <source>1043</source>
        <translation>Anzahl &amp;begrenzen</translation>
    </message>
    <message>
        <source>1040</source>
        <translation>&amp;Anzahl:</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>IDD_IMAGEFMT</name>
    <message>
        <source>0</source>
        <translation>Dateiformate</translation>
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
        <source>1048</source>
        <translation>&amp;Standard</translation>
    </message>
</context>
<context>
    <name>IDD_FILESAVESETUP</name>
    <message>
        <source>0</source>
        <translation>Standard-Dateititel und -Endung</translation>
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
        <source>1003</source>
        <translation>&amp;Optionen...</translation>
    </message>
    <message>
        <source>1031</source>
        <translation>Datei&amp;titel:</translation>
    </message>
    <message>
        <source>1033</source>
        <translation>&amp;Endung:</translation>
    </message>
</context>
</TS>
