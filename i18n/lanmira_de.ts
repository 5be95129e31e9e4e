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
        <source>ids_lanmira_toolbar_pasteshortcut</source>
        <translation>Verknüpfung einfügen</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_tiff</source>
        <translation>Mehrseitiges TIFF</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_title</source>
        <translation>Dateiübertragung</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_copying</source>
        <translation>Kopiere Datei %d von %d</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_moving</source>
        <translation>Verschiebe Datei %d von %d</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_bytes</source>
        <translation>%s von %s</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_conflict</source>
        <translation>%s ist bereits vorhanden.
Möchten Sie die Datei ersetzen?</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_replace</source>
        <translation>&amp;Ersetzen</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_skip</source>
        <translation>Über&amp;springen</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_all</source>
        <translation>Für &amp;alle Konflikte so verfahren</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_failed</source>
        <translation>Diese Elemente wurden nicht übertragen:</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_notfiles</source>
        <translation>Diese Einträge sind keine Dateien auf diesem Computer und wurden ausgelassen:</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_more</source>
        <translation>... und %d weitere</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_gone</source>
        <translation>Die Datei existiert nicht mehr.</translation>
    </message>
    <message>
        <source>ids_lanmira_histogram_low</source>
        <translation>Unterer Wert</translation>
    </message>
    <message>
        <source>ids_lanmira_histogram_high</source>
        <translation>Oberer Wert</translation>
    </message>
    <message>
        <source>ids_lanmira_histogram_channel</source>
        <translation>Kanal</translation>
    </message>
    <message>
        <source>ids_lanmira_spin_up</source>
        <translation>Erhöhen</translation>
    </message>
    <message>
        <source>ids_lanmira_spin_down</source>
        <translation>Verringern</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_notarget</source>
        <translation>Der Ordner %s existiert nicht.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_intoitself</source>
        <translation>Ein Ordner kann nicht in sich selbst abgelegt werden.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_notfile</source>
        <translation>Dies ist weder eine Datei noch ein Ordner.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_itself</source>
        <translation>Quelle und Ziel sind dieselbe Datei.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_folderexists</source>
        <translation>Ein Ordner dieses Namens ist im Weg.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_fileexists</source>
        <translation>Eine Datei dieses Namens ist im Weg.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_copiedonly</source>
        <translation>Die Datei wurde kopiert, aber das Original konnte nicht entfernt werden: %s</translation>
    </message>
    <message>
        <source>ids_lanmira_link_failed</source>
        <translation>Diese Verknüpfungen wurden nicht angelegt:</translation>
    </message>
    <message>
        <source>ids_calvora_browse_shutcut</source>
        <translation>%s ist bereits vorhanden.
Möchten Sie die Datei durch eine Verknüpfung ersetzen?</translation>
    </message>
    <message>
        <source>ids_lanmira_tiff_title</source>
        <translation>Mehrseitiges Tiff</translation>
    </message>
    <message>
        <source>ids_lanmira_openfail1</source>
        <translation>%s konnte nicht geöffnet werden.
%s
Klicken Sie auf OK, um mit dem nächsten Bild fortzufahren, oder auf Abbrechen, um aufzuhören.</translation>
    </message>
    <message>
        <source>ids_lanmira_openfail2</source>
        <translation>%s konnte nicht geöffnet werden.
Klicken Sie auf OK, um mit dem nächsten Bild fortzufahren, oder auf Abbrechen, um aufzuhören.</translation>
    </message>
    <message>
        <source>ids_lanmira_pageno</source>
        <translation>%s, Seite %d</translation>
    </message>
    <message>
        <source>ids_lanmira_pagefail1</source>
        <translation>%s konnte nicht geöffnet werden.
%s
Klicken Sie auf OK, um fortzufahren, oder auf Abbrechen, um aufzuhören.</translation>
    </message>
    <message>
        <source>ids_lanmira_pagefail2</source>
        <translation>%s konnte nicht geöffnet werden.
Klicken Sie auf OK, um fortzufahren, oder auf Abbrechen, um aufzuhören.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_resolution</source>
        <translation>Vorschau und Auflösung</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_exposureandgain</source>
        <translation>Belichtung und Verstärkung</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_white</source>
        <translation>Weißabgleich</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_coloradjust</source>
        <translation>Farbanpassung</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_power</source>
        <translation>Lichtquelle</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_framerate</source>
        <translation>Geschwindigkeit</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_color</source>
        <translation>Farbe / Grau</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_flip</source>
        <translation>Spiegeln</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_sampling</source>
        <translation>Abtastung</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_histogram</source>
        <translation>Histogramm</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_range</source>
        <translation>Bereich:</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_timeempty</source>
        <translation>Bitte geben Sie eine Belichtungszeit ein.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_timeinvalid</source>
        <translation>Die Belichtungszeit ist keine gültige Zahl.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_timeinoutofrange</source>
        <translation>Die Belichtungszeit liegt außerhalb des Bereichs, den die Kamera unterstützt.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_gray</source>
        <translation>Grau</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_rgb</source>
        <translation>RGB</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_error</source>
        <translation>Ein TWAIN-Fehler ist aufgetreten.</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_internal</source>
        <translation>Interner Fehler bei der Vorbereitung der TWAIN-Übernahme.</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_xfercount</source>
        <translation>Die Anzahl der Übertragungen lässt sich nicht einstellen.
Mit der Übernahme fortfahren?</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_pixeltype</source>
        <translation>Der Pixeltyp lässt sich nicht einstellen.
Mit der Übernahme fortfahren?</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_resolution</source>
        <translation>Die Auflösung lässt sich nicht einstellen.
Mit der Übernahme fortfahren?</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_select_title</source>
        <translation>Quelle auswählen</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_select_sources</source>
        <translation>&amp;Quellen:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_title</source>
        <translation>Scannen</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_device</source>
        <translation>Gerät:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_mode</source>
        <translation>&amp;Modus:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_bw</source>
        <translation>Schwarzweiß</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_gray</source>
        <translation>Graustufen</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_resolution</source>
        <translation>&amp;Auflösung:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_left</source>
        <translation>&amp;Links:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_top</source>
        <translation>&amp;Oben:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_width</source>
        <translation>&amp;Breite:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_height</source>
        <translation>&amp;Höhe:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_preview</source>
        <translation>&amp;Vorschau</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_scan</source>
        <translation>&amp;Scannen</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_hint</source>
        <translation>Ziehen Sie über die Vorschau, um den Scanbereich zu wählen.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_scanning</source>
        <translation>Scannen läuft...</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_refused</source>
        <translation>Der Scanner hat diese Einstellungen nicht angenommen.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_previewfailed</source>
        <translation>Die Vorschau ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_feederempty</source>
        <translation>Der Dokumenteneinzug ist leer.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_toolarge</source>
        <translation>Der Scan ist größer als der freie Speicher. Wählen Sie einen kleineren Bereich oder eine geringere Auflösung.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_failed</source>
        <translation>Der Scanner hat angehalten: %s</translation>
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
        <translation>&amp;Löschen&#9;[Shift+]Delete</translation>
    </message>
    <message>
        <source>32784</source>
        <translation>&amp;Alles auswählen&#9;Ctrl+A</translation>
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
        <translation>&amp;Aktualisieren&#9;F5</translation>
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
        <source>32868</source>
        <translation>Aus&amp;schneiden&#9;Ctrl+X</translation>
    </message>
    <message>
        <source>32866</source>
        <translation>&amp;Kopieren&#9;Ctrl+C</translation>
    </message>
    <message>
        <source>32867</source>
        <translation>&amp;Einfügen&#9;Ctrl+V</translation>
    </message>
    <message>
        <source>32875</source>
        <translation>&amp;Verknüpfung einfügen</translation>
    </message>
    <message>
        <source>32865</source>
        <translation>&amp;Mehrseitiges Tiff...</translation>
    </message>
    <message>
        <source>32895</source>
        <translation>&amp;Twain: Gerät auswählen...</translation>
    </message>
    <message>
        <source>32896</source>
        <translation>Twain: &amp;Übernehmen...</translation>
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
    <message>
        <source>options</source>
        <translation>&amp;Optionen</translation>
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
    <name>IDD_CAMERAPREVIEW</name>
    <message>
        <source>1063</source>
        <translation>Foto</translation>
    </message>
    <message>
        <source>3259</source>
        <translation>Aufnahme</translation>
    </message>
    <message>
        <source>4001</source>
        <translation>Auflösung:</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAEXPOSURE</name>
    <message>
        <source>1117</source>
        <translation>Automatische Belichtung</translation>
    </message>
    <message>
        <source>4001</source>
        <translation>Zielhelligkeit:</translation>
    </message>
    <message>
        <source>4002</source>
        <translation>Belichtungszeit:</translation>
    </message>
    <message>
        <source>4003</source>
        <translation>Verstärkung:</translation>
    </message>
    <message>
        <source>1124</source>
        <translation>Standardwerte</translation>
    </message>
</context>
<context>
    <name>IDD_EXPOSURETIME</name>
    <message>
        <source>0</source>
        <translation>Belichtungszeit</translation>
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
        <source>4001</source>
        <translation>ms</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAWB</name>
    <message>
        <source>1112</source>
        <translation>Farbtemperatur:</translation>
    </message>
    <message>
        <source>1114</source>
        <translation>Tönung:</translation>
    </message>
    <message>
        <source>1059</source>
        <translation>Schieben Sie den Messbereich (rotes Rechteck) auf ein rein weißes oder graues Objekt und klicken Sie auf „Weißabgleich“, um den Weißabgleich für das weitere Video festzulegen.</translation>
    </message>
    <message>
        <source>1110</source>
        <translation>Weißabgleich</translation>
    </message>
    <message>
        <source>1111</source>
        <translation>Standardwerte</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAHSB</name>
    <message>
        <source>4001</source>
        <translation>Farbton:</translation>
    </message>
    <message>
        <source>4002</source>
        <translation>Sättigung:</translation>
    </message>
    <message>
        <source>4003</source>
        <translation>Helligkeit:</translation>
    </message>
    <message>
        <source>4004</source>
        <translation>Kontrast:</translation>
    </message>
    <message>
        <source>4005</source>
        <translation>Gamma:</translation>
    </message>
    <message>
        <source>1128</source>
        <translation>Standardwerte</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERALS</name>
    <message>
        <source>1141</source>
        <translation>Wechselstrom (50 Hz)</translation>
    </message>
    <message>
        <source>1142</source>
        <translation>Wechselstrom (60 Hz)</translation>
    </message>
    <message>
        <source>1143</source>
        <translation>Gleichstrom</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERASPEED</name>
    <message>
        <source>4001</source>
        <translation>Niedrig</translation>
    </message>
    <message>
        <source>1101</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>3256</source>
        <translation>Schieben Sie den Regler nach rechts, damit die Kamera das Live-Video mit der höchsten Bildrate zeigt, die der USB-Hub des Computers unterstützt. Wenn kein Live-Video erscheint, schieben Sie den Regler nach links, um die Bildrate zu verringern.</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAMODE</name>
    <message>
        <source>1144</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>1145</source>
        <translation>Grau</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAFLIP</name>
    <message>
        <source>1148</source>
        <translation>Horizontal</translation>
    </message>
    <message>
        <source>1149</source>
        <translation>Vertikal</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERASAMPLE</name>
    <message>
        <source>1146</source>
        <translation>Zusammenfassen (Binning)</translation>
    </message>
    <message>
        <source>1147</source>
        <translation>Überspringen</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAHISTOGRAM</name>
    <message>
        <source>1103</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>1104</source>
        <translation>Standardwerte</translation>
    </message>
    <message>
        <source>1105</source>
        <translation>Automatisch</translation>
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
