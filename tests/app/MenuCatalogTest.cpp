#include "app/CAboutDlg.h"
#include "app/CSlideDlg.h"
#include "browser/CMainFrame1.h"
#include "camera/dialogs/CAutoDlg.h"
#include "camera/frame/CVideoFrame.h"
#include "camera/panels/CCameraExposureDlg.h"
#include "camera/panels/CCameraFlipDlg.h"
#include "camera/panels/CCameraHSBDlg.h"
#include "camera/panels/CCameraHistogramDlg.h"
#include "camera/panels/CCameraLsDlg.h"
#include "camera/panels/CCameraModeDlg.h"
#include "camera/panels/CCameraPreviewDlg.h"
#include "camera/panels/CCameraSampleDlg.h"
#include "camera/panels/CCameraSpeedDlg.h"
#include "camera/panels/CCameraWBDlg.h"
#include "camera/panels/CExposureTimeDlg.h"
#include "i18n/i18n.h"
#include "platform/CImageOptionsDlg.h"
#include "platform/MenuResource.h"
#include "viewer/CFileSaveSetup.h"
#include "viewer/CFmtDlg.h"
#include "viewer/CMainFrame2.h"
#include "viewer/CZoomCustomDlg.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace lanmira;

namespace {

void collectMissing(const std::string& menu, const std::vector<MenuEntry>& entries,
                    std::vector<std::string>& missing) {
    for (const MenuEntry& e : entries) {
        if (e.kind == MenuEntry::Kind::Separator)
            continue;
        const std::string key = e.kind == MenuEntry::Kind::Popup ? e.key : std::to_string(e.id);
        if (!i18n_hasEnglish(menu.c_str(), key.c_str()))
            missing.push_back(menu + "/" + key);
        collectMissing(menu, e.children, missing);
    }
}

} // namespace

// Menus and dialogs are tables in code, so their texts are checked by walking the tables.
TEST(MenuCatalog, EveryMenuEntryAndDialogControlHasAnEnglishText) {
    ASSERT_TRUE(i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0));
    std::vector<std::string> missing;
    for (const MenuResource* menu :
         {&CMainFrame1::menuResource(), &CMainFrame2::menuResource(), &CVideoFrame::menuResource()})
        collectMissing(menu->name, menu->entries, missing);
    const std::pair<const char*, std::vector<int>> dialogs[] = {
        {CAboutDlg::dialogName(), CAboutDlg::controlIds()},
        {CAutoDlg::dialogName(), CAutoDlg::controlIds()},
        {CFileSaveSetup::dialogName(), CFileSaveSetup::controlIds()},
        {CFmtDlg::dialogName(), CFmtDlg::controlIds()},
        {CImageOptionsDlg::dialogName(), CImageOptionsDlg::controlIds()},
        {CSlideDlg::dialogName(), CSlideDlg::controlIds()},
        {CZoomCustomDlg::dialogName(), CZoomCustomDlg::controlIds()},
        {CCameraPreviewDlg::dialogName(), CCameraPreviewDlg::controlIds()},
        {CCameraExposureDlg::dialogName(), CCameraExposureDlg::controlIds()},
        {CExposureTimeDlg::dialogName(), CExposureTimeDlg::controlIds()},
        {CCameraWBDlg::dialogName(), CCameraWBDlg::controlIds()},
        {CCameraHSBDlg::dialogName(), CCameraHSBDlg::controlIds()},
        {CCameraLsDlg::dialogName(), CCameraLsDlg::controlIds()},
        {CCameraSpeedDlg::dialogName(), CCameraSpeedDlg::controlIds()},
        {CCameraModeDlg::dialogName(), CCameraModeDlg::controlIds()},
        {CCameraFlipDlg::dialogName(), CCameraFlipDlg::controlIds()},
        {CCameraSampleDlg::dialogName(), CCameraSampleDlg::controlIds()},
        {CCameraHistogramDlg::dialogName(), CCameraHistogramDlg::controlIds()}};
    for (const auto& [dialog, ids] : dialogs)
        for (int id : ids)
            if (!i18n_hasEnglish(dialog, std::to_string(id).c_str()))
                missing.push_back(std::string(dialog) + "/" + std::to_string(id));
    std::string list;
    for (const auto& m : missing)
        list += m + "\n";
    EXPECT_TRUE(missing.empty()) << list;
    i18n_reset();
}
