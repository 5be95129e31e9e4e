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
    <message>
        <source>ids_folders</source>
        <translation>Folders</translation>
    </message>
    <message>
        <source>ids_video</source>
        <translation>Camera</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_copy</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_paste</source>
        <translation>Paste</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_cut</source>
        <translation>Cut</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_delete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_refresh</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_icons</source>
        <translation>Icons</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_sort</source>
        <translation>Sort</translation>
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
        <translation>Waiting...</translation>
    </message>
    <message>
        <source>ids_lanmira_status_image</source>
        <translation>%d bpp  %d x %d</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_title</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_confirm</source>
        <translation>Do you want to move "%s" to the trash?</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_confirm_many</source>
        <translation>Do you want to move these %d items to the trash?</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_forever</source>
        <translation>Do you want to delete "%s" for good? This cannot be undone.</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_forever_many</source>
        <translation>Do you want to delete these %d items for good? This cannot be undone.</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_notrash</source>
        <translation>"%s" cannot be moved to the trash: its volume has none. Do you want to delete it for good?</translation>
    </message>
    <message>
        <source>ids_lanmira_delete_failed</source>
        <translation>"%s" could not be deleted.
%s</translation>
    </message>
    <message>
        <source>ids_lanmira_bpp</source>
        <translation>%d bpp, %d pixels/m</translation>
    </message>
    <message>
        <source>ids_lanmira_page</source>
        <translation>Page %d/%d</translation>
    </message>
    <message>
        <source>ids_calvora_zoom</source>
        <translation>%.0f%%</translation>
    </message>
    <message>
        <source>ids_lanmira_multipage</source>
        <translation>The picture is one page of a file with several pages. Only this page will be saved.</translation>
    </message>
    <message>
        <source>ids_calvora_savefilefail1</source>
        <translation>The file %s could not be saved.
%s</translation>
    </message>
    <message>
        <source>ids_calvora_savefilefail2</source>
        <translation>The file %s could not be saved.</translation>
    </message>
    <message>
        <source>ids_lanmira_savefile</source>
        <translation>Untitled</translation>
    </message>
    <message>
        <source>ids_lanmira_savechanges</source>
        <translation>Save changes to %s?</translation>
    </message>
    <message>
        <source>ids_calvora_savedlg_replace</source>
        <translation>%s already exists.
Do you want to replace it?</translation>
    </message>
    <message>
        <source>ids_lanmira_saveas_title</source>
        <translation>Save As</translation>
    </message>
    <message>
        <source>ids_lanmira_saveas_option</source>
        <translation>Option</translation>
    </message>
    <message>
        <source>ids_calvora_allsupported</source>
        <translation>All supported images</translation>
    </message>
    <message>
        <source>ids_lanmira_allfiles</source>
        <translation>All files</translation>
    </message>
    <message>
        <source>ids_lanmira_open_title</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>ids_lanmira_open_preview</source>
        <translation>Preview</translation>
    </message>
    <message>
        <source>ids_lanmira_validate_range</source>
        <translation>Please enter an integer between %d and %d.</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_browser</source>
        <translation>Browser</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_open</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_save</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_print</source>
        <translation>Print</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_copyimage</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_rotleft</source>
        <translation>Left</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_rotright</source>
        <translation>Right</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_first</source>
        <translation>First</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_prev</source>
        <translation>Previous</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_next</source>
        <translation>Next</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_last</source>
        <translation>Last</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_bestfit</source>
        <translation>Best Fit</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_actual</source>
        <translation>100%</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_slideshow</source>
        <translation>Slide Show</translation>
    </message>
    <message>
        <source>ids_calvora_record_title</source>
        <translation>Record Video</translation>
    </message>
    <message>
        <source>ids_calvora_record_mp4</source>
        <translation>MP4 video</translation>
    </message>
    <message>
        <source>ids_calvora_record_mkv</source>
        <translation>Matroska video</translation>
    </message>
    <message>
        <source>ids_calvora_camera_controls</source>
        <translation>Camera Controls</translation>
    </message>
    <message>
        <source>ids_calvora_nodevice</source>
        <translation>No camera found</translation>
    </message>
    <message>
        <source>ids_calvora_video_framerate</source>
        <translation>Camera %.1f fps, shown %.1f fps</translation>
    </message>
    <message>
        <source>ids_whitebalance</source>
        <translation>White Balance</translation>
    </message>
    <message>
        <source>ids_exposure</source>
        <translation>Exposure</translation>
    </message>
    <message>
        <source>ids_calvora_camera_disconnected</source>
        <translation>The camera was disconnected. Close this window, plug the camera in again and choose it from the camera list.</translation>
    </message>
    <message>
        <source>ids_calvora_camera_openfail</source>
        <translation>The camera could not be opened.</translation>
    </message>
    <message>
        <source>ids_calvora_keepawake</source>
        <translation>Showing live video</translation>
    </message>
    <message>
        <source>ids_calvora_record_failed</source>
        <translation>The recording stopped because the file could not be written.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_camera</source>
        <translation>Camera</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_pasteshortcut</source>
        <translation>Paste Shortcut</translation>
    </message>
    <message>
        <source>ids_lanmira_toolbar_tiff</source>
        <translation>Multi-page TIFF</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_title</source>
        <translation>File Transfer</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_copying</source>
        <translation>Copying file %d of %d</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_moving</source>
        <translation>Moving file %d of %d</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_bytes</source>
        <translation>%s of %s</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_cancel</source>
        <translation>&amp;Cancel</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_conflict</source>
        <translation>%s already exists.
Do you want to replace it?</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_replace</source>
        <translation>&amp;Replace</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_skip</source>
        <translation>&amp;Skip</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_all</source>
        <translation>Do this for &amp;all conflicts</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_failed</source>
        <translation>These items were not transferred:</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_notfiles</source>
        <translation>These entries are not files on this computer and were left out:</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_more</source>
        <translation>... and %d more</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_gone</source>
        <translation>It no longer exists.</translation>
    </message>
    <message>
        <source>ids_lanmira_histogram_low</source>
        <translation>Low level</translation>
    </message>
    <message>
        <source>ids_lanmira_histogram_high</source>
        <translation>High level</translation>
    </message>
    <message>
        <source>ids_lanmira_histogram_channel</source>
        <translation>Channel</translation>
    </message>
    <message>
        <source>ids_lanmira_spin_up</source>
        <translation>Increase</translation>
    </message>
    <message>
        <source>ids_lanmira_spin_down</source>
        <translation>Decrease</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_notarget</source>
        <translation>The folder %s does not exist.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_intoitself</source>
        <translation>A folder cannot be put into itself.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_notfile</source>
        <translation>It is neither a file nor a folder.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_itself</source>
        <translation>The source and the target are the same file.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_folderexists</source>
        <translation>A folder of this name is in the way.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_fileexists</source>
        <translation>A file of this name is in the way.</translation>
    </message>
    <message>
        <source>ids_lanmira_transfer_copiedonly</source>
        <translation>It was copied, but the original could not be removed: %s</translation>
    </message>
    <message>
        <source>ids_lanmira_link_failed</source>
        <translation>These links were not made:</translation>
    </message>
    <message>
        <source>ids_calvora_browse_shutcut</source>
        <translation>%s already exists.
Do you want to replace it with a link?</translation>
    </message>
    <message>
        <source>ids_lanmira_tiff_title</source>
        <translation>MultiPage Tiff</translation>
    </message>
    <message>
        <source>ids_lanmira_openfail1</source>
        <translation>%s could not be opened.
%s
Click OK to go on with the next picture, or Cancel to stop.</translation>
    </message>
    <message>
        <source>ids_lanmira_openfail2</source>
        <translation>%s could not be opened.
Click OK to go on with the next picture, or Cancel to stop.</translation>
    </message>
    <message>
        <source>ids_lanmira_pageno</source>
        <translation>%s, page %d</translation>
    </message>
    <message>
        <source>ids_lanmira_pagefail1</source>
        <translation>%s could not be opened.
%s
Click OK to go on, or Cancel to stop.</translation>
    </message>
    <message>
        <source>ids_lanmira_pagefail2</source>
        <translation>%s could not be opened.
Click OK to go on, or Cancel to stop.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_resolution</source>
        <translation>Preview and Resolution</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_exposureandgain</source>
        <translation>Exposure and Gain</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_white</source>
        <translation>White Balance</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_coloradjust</source>
        <translation>Color Adjustment</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_power</source>
        <translation>Light Source</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_framerate</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_color</source>
        <translation>Color / Gray</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_flip</source>
        <translation>Flip</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_sampling</source>
        <translation>Sampling</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_histogram</source>
        <translation>Histogram</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_range</source>
        <translation>Range:</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_timeempty</source>
        <translation>Please enter an exposure time.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_timeinvalid</source>
        <translation>The exposure time is not a valid number.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_timeinoutofrange</source>
        <translation>The exposure time is outside the range the camera supports.</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_gray</source>
        <translation>Gray</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_blue</source>
        <translation>Blue</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_green</source>
        <translation>Green</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_red</source>
        <translation>Red</translation>
    </message>
    <message>
        <source>ids_calvora_camerapane_rgb</source>
        <translation>RGB</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_error</source>
        <translation>A TWAIN error occurred.</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_internal</source>
        <translation>Internal error while preparing for TWAIN acquire.</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_xfercount</source>
        <translation>Unable to set xfer count.
Continue with Acquire?</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_pixeltype</source>
        <translation>Unable to set pixel type.
Continue with Acquire?</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_resolution</source>
        <translation>Unable to set resolution.
Continue with Acquire?</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_select_title</source>
        <translation>Select Source</translation>
    </message>
    <message>
        <source>ids_lanmira_twain_select_sources</source>
        <translation>&amp;Sources:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_title</source>
        <translation>Scan</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_device</source>
        <translation>Device:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_mode</source>
        <translation>&amp;Mode:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_bw</source>
        <translation>Black and white</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_gray</source>
        <translation>Grey</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_colour</source>
        <translation>Colour</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_resolution</source>
        <translation>&amp;Resolution:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_left</source>
        <translation>&amp;Left:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_top</source>
        <translation>&amp;Top:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_width</source>
        <translation>&amp;Width:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_height</source>
        <translation>&amp;Height:</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_preview</source>
        <translation>&amp;Preview</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_scan</source>
        <translation>&amp;Scan</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_hint</source>
        <translation>Drag over the preview to choose the area to scan.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_scanning</source>
        <translation>Scanning...</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_refused</source>
        <translation>The scanner did not accept these settings.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_previewfailed</source>
        <translation>The preview scan failed.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_feederempty</source>
        <translation>The document feeder is empty.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_toolarge</source>
        <translation>The scan is larger than the memory free for it. Choose a smaller area or a lower resolution.</translation>
    </message>
    <message>
        <source>ids_lanmira_scan_failed</source>
        <translation>The scanner stopped: %s</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn0</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn1</source>
        <translation>Extensions</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn2</source>
        <translation>List</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn3</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>ids_lanmira_fmtcolumn4</source>
        <translation>Mark</translation>
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
    <message>
        <source>edit</source>
        <translation>&amp;Edit</translation>
    </message>
    <message>
        <source>view</source>
        <translation>&amp;View</translation>
    </message>
    <message>
        <source>32772</source>
        <translation>&amp;Delete&#9;[Shift+]Delete</translation>
    </message>
    <message>
        <source>32784</source>
        <translation>Select &amp;All&#9;Ctrl+A</translation>
    </message>
    <message>
        <source>32874</source>
        <translation>&amp;Invert Selection</translation>
    </message>
    <message>
        <source>32782</source>
        <translation>&amp;Large Icons</translation>
    </message>
    <message>
        <source>32783</source>
        <translation>&amp;Small Icons</translation>
    </message>
    <message>
        <source>32777</source>
        <translation>Sort by &amp;Name</translation>
    </message>
    <message>
        <source>32778</source>
        <translation>Sort by &amp;Type</translation>
    </message>
    <message>
        <source>32779</source>
        <translation>Sort by &amp;Size</translation>
    </message>
    <message>
        <source>32871</source>
        <translation>Sort by &amp;Width</translation>
    </message>
    <message>
        <source>32872</source>
        <translation>Sort by &amp;Height</translation>
    </message>
    <message>
        <source>32876</source>
        <translation>Sort by &amp;Extension</translation>
    </message>
    <message>
        <source>32780</source>
        <translation>&amp;Ascending</translation>
    </message>
    <message>
        <source>32781</source>
        <translation>&amp;Descending</translation>
    </message>
    <message>
        <source>32773</source>
        <translation>&amp;Refresh&#9;F5</translation>
    </message>
    <message>
        <source>32873</source>
        <translation>&amp;Open...&#9;Insert</translation>
    </message>
    <message>
        <source>32906</source>
        <translation>Paste as &amp;New File</translation>
    </message>
    <message>
        <source>32907</source>
        <translation>&amp;Prompt to Save File</translation>
    </message>
    <message>
        <source>32915</source>
        <translation>&amp;Slide Show...</translation>
    </message>
    <message>
        <source>cameralist</source>
        <translation>Camera &amp;List</translation>
    </message>
    <message>
        <source>32868</source>
        <translation>Cu&amp;t&#9;Ctrl+X</translation>
    </message>
    <message>
        <source>32866</source>
        <translation>&amp;Copy&#9;Ctrl+C</translation>
    </message>
    <message>
        <source>32867</source>
        <translation>&amp;Paste&#9;Ctrl+V</translation>
    </message>
    <message>
        <source>32875</source>
        <translation>Paste &amp;Shortcut</translation>
    </message>
    <message>
        <source>32865</source>
        <translation>&amp;MultiPage Tiff...</translation>
    </message>
    <message>
        <source>32895</source>
        <translation>&amp;Twain: Select Device...</translation>
    </message>
    <message>
        <source>32896</source>
        <translation>Twain: &amp;Acquire...</translation>
    </message>
    <message>
        <source>32897</source>
        <translation>&amp;File Default Options...</translation>
    </message>
    <message>
        <source>32908</source>
        <translation>&amp;File Format...</translation>
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
    <message>
        <source>edit</source>
        <translation>&amp;Edit</translation>
    </message>
    <message>
        <source>zoom</source>
        <translation>&amp;Zoom</translation>
    </message>
    <message>
        <source>image</source>
        <translation>&amp;Image</translation>
    </message>
    <message>
        <source>go</source>
        <translation>&amp;Go</translation>
    </message>
    <message>
        <source>57601</source>
        <translation>&amp;Open...&#9;Ctrl+O</translation>
    </message>
    <message>
        <source>57603</source>
        <translation>&amp;Save&#9;Ctrl+S</translation>
    </message>
    <message>
        <source>57604</source>
        <translation>Save &amp;As...</translation>
    </message>
    <message>
        <source>32772</source>
        <translation>&amp;Delete&#9;[Shift+]Delete</translation>
    </message>
    <message>
        <source>57607</source>
        <translation>&amp;Print...&#9;Ctrl+P</translation>
    </message>
    <message>
        <source>57609</source>
        <translation>Print Pre&amp;view</translation>
    </message>
    <message>
        <source>32906</source>
        <translation>Paste as &amp;New File</translation>
    </message>
    <message>
        <source>32907</source>
        <translation>&amp;Prompt to Save File</translation>
    </message>
    <message>
        <source>32915</source>
        <translation>&amp;Slide Show...</translation>
    </message>
    <message>
        <source>32786</source>
        <translation>&amp;Browser&#9;Ctrl+B</translation>
    </message>
    <message>
        <source>32892</source>
        <translation>&amp;Copy Image&#9;Ctrl+C</translation>
    </message>
    <message>
        <source>32880</source>
        <translation>&amp;Track&#9;Ctrl+T</translation>
    </message>
    <message>
        <source>32819</source>
        <translation>&amp;Best Fit&#9;NumPad*</translation>
    </message>
    <message>
        <source>32887</source>
        <translation>&amp;Actual Size&#9;NumPad/</translation>
    </message>
    <message>
        <source>32888</source>
        <translation>&amp;Lock&#9;Ctrl+NumPad/</translation>
    </message>
    <message>
        <source>32889</source>
        <translation>Auto &amp;Shrink to Fit&#9;Ctrl+NumPad-</translation>
    </message>
    <message>
        <source>32890</source>
        <translation>Auto &amp;Enlarge to Fit&#9;Ctrl+NumPad+</translation>
    </message>
    <message>
        <source>32900</source>
        <translation>Rotate 90° &amp;Counter-clockwise&#9;Ctrl+L</translation>
    </message>
    <message>
        <source>32898</source>
        <translation>Rotate 90° Clock&amp;wise&#9;Ctrl+R</translation>
    </message>
    <message>
        <source>32899</source>
        <translation>Rotate &amp;180°</translation>
    </message>
    <message>
        <source>32901</source>
        <translation>Flip &amp;Horizontal</translation>
    </message>
    <message>
        <source>32903</source>
        <translation>Flip &amp;Vertical</translation>
    </message>
    <message>
        <source>32885</source>
        <translation>F&amp;irst Page</translation>
    </message>
    <message>
        <source>32884</source>
        <translation>Pre&amp;vious Page&#9;PageUp</translation>
    </message>
    <message>
        <source>32883</source>
        <translation>Ne&amp;xt Page&#9;PageDown</translation>
    </message>
    <message>
        <source>32886</source>
        <translation>L&amp;ast Page</translation>
    </message>
    <message>
        <source>32878</source>
        <translation>&amp;First&#9;Ctrl+Home</translation>
    </message>
    <message>
        <source>32879</source>
        <translation>&amp;Previous&#9;Ctrl+PageUp</translation>
    </message>
    <message>
        <source>32882</source>
        <translation>&amp;Next&#9;Ctrl+PageDown</translation>
    </message>
    <message>
        <source>32881</source>
        <translation>&amp;Last&#9;Ctrl+End</translation>
    </message>
    <message>
        <source>32914</source>
        <translation>&amp;Slide Show&#9;Pause</translation>
    </message>
    <message>
        <source>32897</source>
        <translation>&amp;File Default Options...</translation>
    </message>
    <message>
        <source>32908</source>
        <translation>&amp;File Format...</translation>
    </message>
</context>
<context>
    <name>IDD_IMAGEOPTIONS</name>
    <message>
        <source>0</source>
        <translation>%s Options</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>1201</source>
        <translation>&amp;Quality:</translation>
    </message>
    <message>
        <source>1202</source>
        <translation>&amp;Progressive</translation>
    </message>
    <message>
        <source>1203</source>
        <translation>Compression &amp;level:</translation>
    </message>
    <message>
        <source>1204</source>
        <translation>&amp;Compression:</translation>
    </message>
    <message>
        <source>1205</source>
        <translation>&amp;Lossless</translation>
    </message>
    <message>
        <source>1210</source>
        <translation>None</translation>
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
        <translation>Custom Zoom</translation>
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
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>IDD_SLIDE</name>
    <message>
        <source>0</source>
        <translation>Slide Show</translation>
    </message>
    <message>
        <source>1056</source>
        <translation>&amp;Delay (seconds):</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>IDR_VIDEO</name>
    <message>
        <source>file</source>
        <translation>&amp;File</translation>
    </message>
    <message>
        <source>camera</source>
        <translation>&amp;Camera</translation>
    </message>
    <message>
        <source>dialogs</source>
        <translation>Camera &amp;Dialogs</translation>
    </message>
    <message>
        <source>help</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <source>32861</source>
        <translation>Capt&amp;ure a Frame</translation>
    </message>
    <message>
        <source>57634</source>
        <translation>Capture To &amp;Clipboard&#9;Ctrl+C</translation>
    </message>
    <message>
        <source>32905</source>
        <translation>Aut&amp;o Capture...</translation>
    </message>
    <message>
        <source>32848</source>
        <translation>&amp;Start Record...</translation>
    </message>
    <message>
        <source>32849</source>
        <translation>Sto&amp;p Record</translation>
    </message>
    <message>
        <source>32897</source>
        <translation>&amp;File Default Options...</translation>
    </message>
    <message>
        <source>32908</source>
        <translation>&amp;File Format...</translation>
    </message>
    <message>
        <source>32907</source>
        <translation>&amp;Prompt to Save File</translation>
    </message>
    <message>
        <source>32915</source>
        <translation>&amp;Slide Show...</translation>
    </message>
    <message>
        <source>32920</source>
        <translation>&amp;View Properties...&#9;Shift+V</translation>
    </message>
    <message>
        <source>32814</source>
        <translation>Always &amp;topmost</translation>
    </message>
    <message>
        <source>57664</source>
        <translation>&amp;About...</translation>
    </message>
    <message>
        <source>options</source>
        <translation>&amp;Options</translation>
    </message>
</context>
<context>
    <name>IDD_AUTO</name>
    <message>
        <source>0</source>
        <translation>Auto Capture</translation>
    </message>
    <message>
        <source>1044</source>
        <translation>Time &amp;slot(second):</translation>
    </message>
    <message>
        <source>1043</source>
        <translation>&amp;Limit the total times</translation>
    </message>
    <message>
        <source>1040</source>
        <translation>&amp;Times:</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAPREVIEW</name>
    <message>
        <source>1063</source>
        <translation>Snap</translation>
    </message>
    <message>
        <source>3259</source>
        <translation>Record</translation>
    </message>
    <message>
        <source>4001</source>
        <translation>Resolution:</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAEXPOSURE</name>
    <message>
        <source>1117</source>
        <translation>Auto Exposure</translation>
    </message>
    <message>
        <source>4001</source>
        <translation>Exposure Target:</translation>
    </message>
    <message>
        <source>4002</source>
        <translation>Exposure Time:</translation>
    </message>
    <message>
        <source>4003</source>
        <translation>Gain:</translation>
    </message>
    <message>
        <source>1124</source>
        <translation>Defaults</translation>
    </message>
</context>
<context>
    <name>IDD_EXPOSURETIME</name>
    <message>
        <source>0</source>
        <translation>Exposure Time</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Cancel</translation>
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
        <translation>Temperature:</translation>
    </message>
    <message>
        <source>1114</source>
        <translation>Tint:</translation>
    </message>
    <message>
        <source>1059</source>
        <translation>Move the ROI (Marked by a red rectangle) to a pure white or gray object and click "White Balance" to establish the white balance for future video.</translation>
    </message>
    <message>
        <source>1110</source>
        <translation>White Balance</translation>
    </message>
    <message>
        <source>1111</source>
        <translation>Defaults</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAHSB</name>
    <message>
        <source>4001</source>
        <translation>Hue:</translation>
    </message>
    <message>
        <source>4002</source>
        <translation>Saturation:</translation>
    </message>
    <message>
        <source>4003</source>
        <translation>Brightness:</translation>
    </message>
    <message>
        <source>4004</source>
        <translation>Contrast:</translation>
    </message>
    <message>
        <source>4005</source>
        <translation>Gamma:</translation>
    </message>
    <message>
        <source>1128</source>
        <translation>Defaults</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERALS</name>
    <message>
        <source>1141</source>
        <translation>AC (50 Hz)</translation>
    </message>
    <message>
        <source>1142</source>
        <translation>AC (60 Hz)</translation>
    </message>
    <message>
        <source>1143</source>
        <translation>DC</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERASPEED</name>
    <message>
        <source>4001</source>
        <translation>Low</translation>
    </message>
    <message>
        <source>1101</source>
        <translation>High</translation>
    </message>
    <message>
        <source>3256</source>
        <translation>Move the slider to the right to ensure that the camera plays live video at the fastest frame rate that the computer USB hub supports. If live video fails to display, move the slider to the left to decrease the frame rate.</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAMODE</name>
    <message>
        <source>1144</source>
        <translation>Color</translation>
    </message>
    <message>
        <source>1145</source>
        <translation>Gray</translation>
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
        <translation>Vertical</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERASAMPLE</name>
    <message>
        <source>1146</source>
        <translation>Bin</translation>
    </message>
    <message>
        <source>1147</source>
        <translation>Skip</translation>
    </message>
</context>
<context>
    <name>IDD_CAMERAHISTOGRAM</name>
    <message>
        <source>1103</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <source>1104</source>
        <translation>Defaults</translation>
    </message>
    <message>
        <source>1105</source>
        <translation>Auto</translation>
    </message>
</context>
<context>
    <name>IDD_IMAGEFMT</name>
    <message>
        <source>0</source>
        <translation>File Formats</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>1048</source>
        <translation>&amp;Default</translation>
    </message>
</context>
<context>
    <name>IDD_FILESAVESETUP</name>
    <message>
        <source>0</source>
        <translation>Default File Title &amp; Extension Setup</translation>
    </message>
    <message>
        <source>1</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>2</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>1003</source>
        <translation>&amp;Option...</translation>
    </message>
    <message>
        <source>1031</source>
        <translation>File &amp;title:</translation>
    </message>
    <message>
        <source>1033</source>
        <translation>&amp;Extension:</translation>
    </message>
</context>
</TS>
