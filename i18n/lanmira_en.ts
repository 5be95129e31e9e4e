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
        <translation>&amp;Delete	[Shift+]Delete</translation>
    </message>
    <message>
        <source>32784</source>
        <translation>Select &amp;All	Ctrl+A</translation>
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
        <translation>&amp;Refresh	F5</translation>
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
</TS>
