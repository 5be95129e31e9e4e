#pragma once

// Every command number of the program. Menus, toolbar buttons and shortcuts carry these
// ids on their QActions, so one handler and one enabling rule serve all of them.
namespace lanmira::cmd {

// Framework commands.
inline constexpr int ID_FILE_OPEN = 57601;
inline constexpr int ID_FILE_SAVE = 57603;
inline constexpr int ID_FILE_SAVE_AS = 57604;
inline constexpr int ID_FILE_PRINT = 57607;
inline constexpr int ID_FILE_PRINT_PREVIEW = 57609;
inline constexpr int ID_EDIT_COPY = 57634; // camera frame: "Capture To &Clipboard\tCtrl+C"
inline constexpr int ID_APP_ABOUT = 57664;
inline constexpr int ID_APP_EXIT = 57665;

// Application commands shared by the frames.
inline constexpr int ID_MODE_BROWSER = 32786;
inline constexpr int ID_BROWSER_ITEM_OPEN = 32787;
inline constexpr int ID_SHOW_MAIN_WINDOW = 32863;
inline constexpr int ID_APP_OPEN = 32873;
inline constexpr int ID_PASTE_AS_NEW_FILE = 32906;
inline constexpr int ID_PROMPT_TO_SAVE = 32907;
inline constexpr int ID_FILE_FORMAT = 32908;
inline constexpr int ID_SLIDE_SHOW_SETTINGS = 32915;
inline constexpr int ID_FILE_DEFAULT_OPTIONS = 32897;

// Camera list and camera frame.
inline constexpr int ID_CAMERA_DROPDOWN = 32796;
inline constexpr int ID_CAMERA_FIRST = 52797; // one per enumerated camera
inline constexpr int ID_CAMERA_LAST = 52823;
inline constexpr int kMaxCameras = ID_CAMERA_LAST - ID_CAMERA_FIRST + 1;
inline constexpr int ID_CAMERA_DIALOG_FIRST = 32830; // the capture library's property dialogs
inline constexpr int ID_CAMERA_DIALOG_LAST = 32845;
inline constexpr int ID_VIDEO_TOPMOST = 32814;
inline constexpr int ID_VIDEO_VIEW_PROPERTIES = 32920;
inline constexpr int ID_VIDEO_CAPTURE_FRAME = 32861;
inline constexpr int ID_VIDEO_AUTO_CAPTURE = 32905;
inline constexpr int ID_VIDEO_START_RECORD = 32848;
inline constexpr int ID_VIDEO_STOP_RECORD = 32849;

// Scanner acquisition.
inline constexpr int ID_TWAIN_SELECT = 32895;
inline constexpr int ID_TWAIN_ACQUIRE = 32896;

// Browser: list, sorting, selection, icon size.
inline constexpr int ID_BROWSER_REFRESH = 32773;
inline constexpr int ID_BROWSER_TOGGLE_ICONS = 32774;
inline constexpr int ID_BROWSER_SORT_CYCLE = 32775;
inline constexpr int ID_SORT_BY_NAME = 32777;
inline constexpr int ID_SORT_BY_TYPE = 32778;
inline constexpr int ID_SORT_BY_SIZE = 32779;
inline constexpr int ID_SORT_BY_WIDTH = 32871;
inline constexpr int ID_SORT_BY_HEIGHT = 32872;
inline constexpr int ID_SORT_BY_EXTENSION = 32876;
inline constexpr int ID_SORT_ASCENDING = 32780;
inline constexpr int ID_SORT_DESCENDING = 32781;
inline constexpr int ID_LARGE_ICONS = 32782;
inline constexpr int ID_SMALL_ICONS = 32783;
inline constexpr int ID_SELECT_ALL = 32784;
inline constexpr int ID_INVERT_SELECTION = 32874;

// Browser: file operations (Delete is also the viewer's).
inline constexpr int ID_DELETE = 32772;
inline constexpr int ID_FILES_COPY = 32866;
inline constexpr int ID_FILES_PASTE = 32867;
inline constexpr int ID_FILES_CUT = 32868;
inline constexpr int ID_FILES_PASTE_SHORTCUT = 32875;
inline constexpr int ID_MULTIPAGE_TIFF = 32865;

// Viewer: pages.
inline constexpr int ID_PAGE_NEXT = 32883;
inline constexpr int ID_PAGE_PREVIOUS = 32884;
inline constexpr int ID_PAGE_FIRST = 32885;
inline constexpr int ID_PAGE_LAST = 32886;

// Viewer: zoom.
inline constexpr int ID_ZOOM_BEST_FIT = 32819;
inline constexpr int ID_TRACK = 32880;
inline constexpr int ID_ZOOM_ACTUAL_SIZE = 32887;
inline constexpr int ID_ZOOM_LOCK = 32888;
inline constexpr int ID_ZOOM_AUTO_SHRINK = 32889;
inline constexpr int ID_ZOOM_AUTO_ENLARGE = 32890;

// Viewer: clipboard and transforms.
inline constexpr int ID_COPY_IMAGE = 32892;
inline constexpr int ID_ROTATE_CW = 32898;
inline constexpr int ID_ROTATE_180 = 32899;
inline constexpr int ID_ROTATE_CCW = 32900;
inline constexpr int ID_FLIP_HORIZONTAL = 32901;
inline constexpr int ID_FLIP_VERTICAL = 32903;

// Viewer: folder navigation and slide show.
inline constexpr int ID_IMAGE_FIRST = 32878;
inline constexpr int ID_IMAGE_PREVIOUS = 32879;
inline constexpr int ID_IMAGE_LAST = 32881;
inline constexpr int ID_IMAGE_NEXT = 32882;
inline constexpr int ID_NEXT_PAGE_OR_IMAGE = 32912;
inline constexpr int ID_PREVIOUS_PAGE_OR_IMAGE = 32913;
inline constexpr int ID_SLIDE_SHOW = 32914;

// Status bar panes.
inline constexpr int ID_PANE_FRAME_RATE = 59396;
inline constexpr int ID_PANE_PATH = 59397;
inline constexpr int ID_PANE_SIZE = 59398;
inline constexpr int ID_PANE_DEPTH = 59399;
inline constexpr int ID_PANE_PAGE = 59400;
inline constexpr int ID_PANE_ZOOM = 59497;

// Resources: frames, menus, dialogs and cursors.
inline constexpr int IDR_BROWSER_FRAME = 127;
inline constexpr int IDR_VIEWER_FRAME = 129;
inline constexpr int IDR_VIDEO_FRAME = 133;
inline constexpr int IDR_DEVICE_MENU = 146;
inline constexpr int IDD_AUTO_CAPTURE = 150;
inline constexpr int IDC_HAND_CURSOR = 122;
inline constexpr int IDC_DRAG_CURSOR = 138;

} // namespace lanmira::cmd
