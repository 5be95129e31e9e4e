// The manager and the SANE source through DSM_Entry, as any TWAIN application drives them,
// against SANE's "test" backend. Every scan sets its resolution: at 25.4 dpi (about a pixel
// per millimetre) the source's default area, the whole 200 x 200 mm bed, is a small square.

#include "SaneTestEnvironment.h"
#include "core/CapContainer.h"
#include "twain/twain.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

using namespace twaindsm;

namespace {

struct Dib {
    std::int32_t width = 0, height = 0;
    int bits = 0;
    std::uint32_t colours = 0;
};

Dib readDib(const void* block) {
    Dib d;
    const auto* p = static_cast<const std::uint8_t*>(block);
    std::memcpy(&d.width, p + 4, 4);
    std::memcpy(&d.height, p + 8, 4);
    std::uint16_t bits;
    std::memcpy(&bits, p + 14, 2);
    d.bits = bits;
    std::memcpy(&d.colours, p + 32, 4);
    return d;
}

class Twain {
public:
    TW_IDENTITY app{};
    TW_IDENTITY source{};

    Twain() {
        app.ProtocolMajor = 1;
        app.ProtocolMinor = 8;
        app.SupportedGroups = DG_CONTROL | DG_IMAGE;
        std::strcpy(app.ProductName, "DsmTest");
    }
    ~Twain() {
        // Leaves the manager closed for the next test, whatever this one did.
        TW_PENDINGXFERS p{};
        TW_USERINTERFACE ui{};
        dsm(DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER, &p);
        dsm(DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET, &p);
        dsm(DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS, &ui);
        DSM_Entry(&app, nullptr, DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, &source);
        DSM_Entry(&app, nullptr, DG_CONTROL, DAT_PARENT, MSG_CLOSEDSM, nullptr);
        ::unsetenv("LANMIRA_SANE_OPTIONS");
        ::unsetenv("LANMIRA_SANE_MEMORY_LIMIT");
    }

    TW_UINT16 dsm(TW_UINT32 dg, TW_UINT16 dat, TW_UINT16 msg, TW_MEMREF data) {
        return DSM_Entry(&app, &source, dg, dat, msg, data);
    }
    TW_UINT16 manager(TW_UINT16 dat, TW_UINT16 msg, TW_MEMREF data) {
        return DSM_Entry(&app, nullptr, DG_CONTROL, dat, msg, data);
    }
    TW_UINT16 condition(bool ofSource) {
        TW_STATUS status{};
        DSM_Entry(&app, ofSource ? &source : nullptr, DG_CONTROL, DAT_STATUS, MSG_GET, &status);
        return status.ConditionCode;
    }
    void openSource(const char* name = "test:0") {
        ASSERT_EQ(manager(DAT_PARENT, MSG_OPENDSM, nullptr), TWRC_SUCCESS);
        std::memset(&source, 0, sizeof source);
        std::strcpy(source.ProductName, name);
        ASSERT_EQ(manager(DAT_IDENTITY, MSG_OPENDS, &source), TWRC_SUCCESS);
    }
    TW_UINT16 set(TW_UINT16 cap, TW_UINT16 type, TW_UINT32 value) {
        TW_CAPABILITY c{cap, TWON_ONEVALUE, CapContainer::oneValue(type, value).write()};
        const TW_UINT16 rc = dsm(DG_CONTROL, DAT_CAPABILITY, MSG_SET, &c);
        std::free(c.hContainer);
        return rc;
    }
    std::optional<CapContainer> get(TW_UINT16 cap, TW_UINT16 msg = MSG_GET) {
        TW_CAPABILITY c{cap, 0, nullptr};
        if (dsm(DG_CONTROL, DAT_CAPABILITY, msg, &c) != TWRC_SUCCESS)
            return std::nullopt;
        auto parsed = CapContainer::read(c.ConType, c.hContainer, 4096);
        std::free(c.hContainer);
        return parsed;
    }
    // Enables without the source's dialog; the scan starts at once.
    void scanWith(TW_UINT16 pixelType, TW_UINT16 mechanism, double dpi = 25.4) {
        ASSERT_EQ(set(ICAP_PIXELTYPE, TWTY_UINT16, pixelType), TWRC_SUCCESS);
        ASSERT_EQ(set(ICAP_XFERMECH, TWTY_UINT16, mechanism), TWRC_SUCCESS);
        ASSERT_EQ(set(ICAP_XRESOLUTION, TWTY_FIX32, fix32Word(dpi)), TWRC_SUCCESS);
        TW_USERINTERFACE ui{0, 0, nullptr};
        ASSERT_EQ(dsm(DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS, &ui), TWRC_SUCCESS);
    }
    // The source's next news, waiting up to ten seconds for its scan thread.
    TW_UINT16 nextEvent() {
        for (int i = 0; i < 1000; ++i) {
            TW_EVENT e{nullptr, MSG_NULL};
            if (dsm(DG_CONTROL, DAT_EVENT, MSG_PROCESSEVENT, &e) == TWRC_DSEVENT)
                return e.TWMessage;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return MSG_NULL;
    }
    TW_UINT16 endTransfer() {
        TW_PENDINGXFERS p{};
        EXPECT_EQ(dsm(DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER, &p), TWRC_SUCCESS);
        return p.Count;
    }
};

TEST(DsmManager, StateChecksAndSourceList) {
    Twain t;
    // Nothing but opening is allowed before the manager is open.
    TW_IDENTITY id{};
    EXPECT_EQ(t.manager(DAT_IDENTITY, MSG_GETFIRST, &id), TWRC_FAILURE);
    EXPECT_EQ(t.condition(false), TWCC_SEQERROR);
    EXPECT_EQ(t.manager(DAT_PARENT, MSG_CLOSEDSM, nullptr), TWRC_FAILURE);

    ASSERT_EQ(t.manager(DAT_PARENT, MSG_OPENDSM, nullptr), TWRC_SUCCESS);
    EXPECT_NE(t.app.Id, 0u);
    EXPECT_EQ(t.manager(DAT_PARENT, MSG_OPENDSM, nullptr), TWRC_FAILURE);
    EXPECT_EQ(t.condition(false), TWCC_SEQERROR);

    std::vector<std::string> names;
    for (TW_UINT16 rc = t.manager(DAT_IDENTITY, MSG_GETFIRST, &id); rc == TWRC_SUCCESS;
         rc = t.manager(DAT_IDENTITY, MSG_GETNEXT, &id))
        names.emplace_back(id.ProductName);
    EXPECT_EQ(names, (std::vector<std::string>{"test:0", "test:1"}));
    EXPECT_EQ(t.manager(DAT_IDENTITY, MSG_GETNEXT, &id), TWRC_ENDOFLIST);

    // Without a display the chooser takes the default; the choice is remembered.
    ASSERT_EQ(t.manager(DAT_IDENTITY, MSG_USERSELECT, &id), TWRC_SUCCESS);
    EXPECT_STREQ(id.ProductName, "test:0");
    std::ofstream(twaintest::scratchRoot() / "config" / "twaindsm" / "default-source")
        << "test:1\n";
    ASSERT_EQ(t.manager(DAT_IDENTITY, MSG_GETDEFAULT, &id), TWRC_SUCCESS);
    EXPECT_STREQ(id.ProductName, "test:1");

    // A cleared identity opens the default; a second source is refused while one is open.
    std::memset(&t.source, 0, sizeof t.source);
    ASSERT_EQ(t.manager(DAT_IDENTITY, MSG_OPENDS, &t.source), TWRC_SUCCESS);
    EXPECT_STREQ(t.source.ProductName, "test:1");
    TW_IDENTITY other{};
    std::strcpy(other.ProductName, "test:0");
    EXPECT_EQ(t.manager(DAT_IDENTITY, MSG_OPENDS, &other), TWRC_FAILURE);
    EXPECT_EQ(t.condition(false), TWCC_MAXCONNECTIONS);
    // Closing the manager under an open source is a sequence error.
    EXPECT_EQ(t.manager(DAT_PARENT, MSG_CLOSEDSM, nullptr), TWRC_FAILURE);

    TW_IDENTITY wrong = t.source;
    wrong.Id += 100;
    TW_UINT32 group = 0;
    EXPECT_EQ(DSM_Entry(&t.app, &wrong, DG_CONTROL, DAT_XFERGROUP, MSG_GET, &group), TWRC_FAILURE);
    EXPECT_EQ(t.condition(false), TWCC_BADDEST);
    std::remove((twaintest::scratchRoot() / "config" / "twaindsm" / "default-source").c_str());
}

TEST(DsmManager, UnknownSourceAndMissingSources) {
    Twain t;
    ASSERT_EQ(t.manager(DAT_PARENT, MSG_OPENDSM, nullptr), TWRC_SUCCESS);
    std::strcpy(t.source.ProductName, "no-such:scanner");
    EXPECT_EQ(t.manager(DAT_IDENTITY, MSG_OPENDS, &t.source), TWRC_FAILURE);
    EXPECT_EQ(t.condition(false), TWCC_NODS);
}

TEST(SaneSource, CapabilitiesAnswerAndCheck) {
    Twain t;
    t.openSource();
    const auto types = t.get(ICAP_PIXELTYPE);
    ASSERT_TRUE(types);
    EXPECT_EQ(types->conType, TWON_ENUMERATION);
    // The test backend has grey at one bit, which stands in for line art.
    EXPECT_EQ(types->items, (std::vector<TW_UINT32>{TWPT_BW, TWPT_GRAY, TWPT_RGB}));
    const auto caps = t.get(CAP_SUPPORTEDCAPS);
    ASSERT_TRUE(caps);
    EXPECT_EQ(caps->conType, TWON_ARRAY);
    EXPECT_EQ(caps->items.size(), 13u);
    const auto width = t.get(ICAP_PHYSICALWIDTH);
    ASSERT_TRUE(width);
    EXPECT_NEAR(fix32Value(width->items[0]), 200 / 25.4, 0.01);
    const auto res = t.get(ICAP_XRESOLUTION);
    ASSERT_TRUE(res);
    EXPECT_EQ(res->conType, TWON_RANGE);
    EXPECT_EQ(fix32Value(res->items[1]), 1200);
    EXPECT_EQ(t.get(CAP_UICONTROLLABLE)->items[0], 1u);

    EXPECT_EQ(t.set(ICAP_PIXELTYPE, TWTY_UINT16, TWPT_PALETTE), TWRC_FAILURE);
    EXPECT_EQ(t.condition(true), TWCC_BADVALUE);
    EXPECT_EQ(t.set(CAP_XFERCOUNT, TWTY_INT16, 0), TWRC_FAILURE);
    EXPECT_EQ(t.set(ICAP_XRESOLUTION, TWTY_FIX32, fix32Word(5000)), TWRC_FAILURE);
    EXPECT_EQ(t.set(ICAP_PHYSICALWIDTH, TWTY_FIX32, fix32Word(1)), TWRC_FAILURE);
    EXPECT_EQ(t.condition(true), TWCC_CAPBADOPERATION);
    EXPECT_EQ(t.set(0x7777, TWTY_UINT16, 1), TWRC_FAILURE);
    EXPECT_EQ(t.condition(true), TWCC_CAPUNSUPPORTED);
    ASSERT_EQ(t.set(CAP_XFERCOUNT, TWTY_INT16, 0xFFFF), TWRC_SUCCESS);
    EXPECT_EQ(capItemToInt(TWTY_INT16, t.get(CAP_XFERCOUNT, MSG_GETCURRENT)->items[0]), -1);

    // Sets are for state 4 only.
    t.scanWith(TWPT_GRAY, TWSX_NATIVE);
    EXPECT_EQ(t.set(ICAP_PIXELTYPE, TWTY_UINT16, TWPT_RGB), TWRC_FAILURE);
    EXPECT_EQ(t.condition(true), TWCC_SEQERROR);
    EXPECT_TRUE(t.get(ICAP_PIXELTYPE, MSG_GETCURRENT));
}

TEST(SaneSource, NativeTransfersOfEachPixelType) {
    const struct {
        TW_UINT16 type;
        int bits;
        std::uint32_t colours;
    } rows[] = {{TWPT_BW, 1, 2}, {TWPT_GRAY, 8, 256}, {TWPT_RGB, 24, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        Twain t;
        t.openSource();
        t.scanWith(row.type, TWSX_NATIVE);
        // Out of order: a transfer before the source is ready is a sequence error.
        TW_HANDLE handle = nullptr;
        EXPECT_EQ(t.dsm(DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, &handle), TWRC_FAILURE);
        ASSERT_EQ(t.nextEvent(), MSG_XFERREADY);
        TW_IMAGEINFO info{};
        ASSERT_EQ(t.dsm(DG_IMAGE, DAT_IMAGEINFO, MSG_GET, &info), TWRC_SUCCESS);
        EXPECT_NEAR(info.ImageWidth, 200, 5);
        EXPECT_EQ(info.ImageLength, info.ImageWidth);
        EXPECT_EQ(info.BitsPerPixel, row.bits);
        ASSERT_EQ(t.dsm(DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, &handle), TWRC_XFERDONE);
        ASSERT_NE(handle, nullptr);
        const Dib dib = readDib(handle);
        EXPECT_EQ(dib.width, info.ImageWidth);
        EXPECT_EQ(dib.height, info.ImageLength);
        EXPECT_EQ(dib.bits, row.bits);
        EXPECT_EQ(dib.colours, row.colours);
        std::free(handle);
        EXPECT_EQ(t.endTransfer(), 0);
        // A flatbed's batch is one page; the source then asks to be closed.
        EXPECT_EQ(t.nextEvent(), MSG_CLOSEDSREQ);
    }
}

TEST(SaneSource, MemoryTransferInStrips) {
    Twain t;
    t.openSource();
    t.scanWith(TWPT_RGB, TWSX_MEMORY);
    ASSERT_EQ(t.nextEvent(), MSG_XFERREADY);
    TW_IMAGEINFO info{};
    ASSERT_EQ(t.dsm(DG_IMAGE, DAT_IMAGEINFO, MSG_GET, &info), TWRC_SUCCESS);
    const auto rowBytes = static_cast<TW_UINT32>(info.ImageWidth) * 3;
    const auto height = static_cast<TW_UINT32>(info.ImageLength);
    std::vector<std::uint8_t> buffer(rowBytes * 7 + 5); // seven rows and a bit
    TW_UINT32 rows = 0;
    TW_UINT16 rc = TWRC_SUCCESS;
    int strips = 0;
    while (rc == TWRC_SUCCESS) {
        TW_IMAGEMEMXFER x{};
        x.Memory = {TWMF_APPOWNS | TWMF_POINTER, static_cast<TW_UINT32>(buffer.size()),
                    buffer.data()};
        rc = t.dsm(DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET, &x);
        ASSERT_TRUE(rc == TWRC_SUCCESS || rc == TWRC_XFERDONE);
        // Packed fields are copied out before the checks take references to them.
        const TW_UINT32 yOffset = x.YOffset, bytesPerRow = x.BytesPerRow, stripRows = x.Rows;
        EXPECT_EQ(yOffset, rows);
        EXPECT_EQ(bytesPerRow, rowBytes);
        EXPECT_LE(stripRows, 7u);
        rows += stripRows;
        ++strips;
    }
    EXPECT_EQ(rows, height);
    EXPECT_EQ(strips, static_cast<int>((height + 6) / 7));
    EXPECT_EQ(t.endTransfer(), 0);
}

TEST(SaneSource, MemoryBufferShorterThanARowIsRefused) {
    Twain t;
    t.openSource("test:1");
    t.scanWith(TWPT_GRAY, TWSX_MEMORY);
    ASSERT_EQ(t.nextEvent(), MSG_XFERREADY);
    std::uint8_t tiny[4];
    TW_IMAGEMEMXFER x{};
    x.Memory = {TWMF_APPOWNS | TWMF_POINTER, sizeof tiny, tiny};
    EXPECT_EQ(t.dsm(DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET, &x), TWRC_FAILURE);
    EXPECT_EQ(t.condition(true), TWCC_BADVALUE);
}

TEST(SaneSource, FileTransferWritesTheChosenFormat) {
    for (TW_UINT16 format : {TWFF_BMP, TWFF_PNG, TWFF_TIFF}) {
        SCOPED_TRACE(format);
        Twain t;
        t.openSource();
        const auto path = twaintest::scratchRoot() / ("page" + std::to_string(format));
        TW_SETUPFILEXFER setup{};
        std::snprintf(setup.FileName, sizeof setup.FileName, "%s", path.c_str());
        setup.Format = format;
        ASSERT_EQ(t.dsm(DG_CONTROL, DAT_SETUPFILEXFER, MSG_SET, &setup), TWRC_SUCCESS);
        t.scanWith(TWPT_GRAY, TWSX_FILE);
        ASSERT_EQ(t.nextEvent(), MSG_XFERREADY);
        ASSERT_EQ(t.dsm(DG_IMAGE, DAT_IMAGEFILEXFER, MSG_GET, nullptr), TWRC_XFERDONE);
        std::ifstream in(path, std::ios::binary);
        char magic[4] = {};
        in.read(magic, 4);
        if (format == TWFF_BMP)
            EXPECT_EQ(std::string(magic, 2), "BM");
        else if (format == TWFF_PNG)
            EXPECT_EQ(std::string(magic + 1, 3), "PNG");
        else
            EXPECT_TRUE(std::string(magic, 2) == "II" || std::string(magic, 2) == "MM");
        EXPECT_EQ(t.endTransfer(), 0);
    }
    // A folder that does not exist fails the transfer and leaves the page pending.
    Twain t;
    t.openSource();
    TW_SETUPFILEXFER setup{};
    std::strcpy(setup.FileName, "/nonexistent-folder/page.bmp");
    setup.Format = TWFF_BMP;
    ASSERT_EQ(t.dsm(DG_CONTROL, DAT_SETUPFILEXFER, MSG_SET, &setup), TWRC_SUCCESS);
    t.scanWith(TWPT_GRAY, TWSX_FILE);
    ASSERT_EQ(t.nextEvent(), MSG_XFERREADY);
    EXPECT_EQ(t.dsm(DG_IMAGE, DAT_IMAGEFILEXFER, MSG_GET, nullptr), TWRC_FAILURE);
    EXPECT_EQ(t.condition(true), TWCC_FILEWRITEERROR);
}

TEST(SaneSource, FeederPagesArePendingOneAfterAnother) {
    ::setenv("LANMIRA_SANE_OPTIONS", "source=Automatic Document Feeder", 1);
    Twain t;
    t.openSource();
    ASSERT_EQ(t.set(CAP_XFERCOUNT, TWTY_INT16, 3), TWRC_SUCCESS);
    t.scanWith(TWPT_GRAY, TWSX_NATIVE);
    ASSERT_EQ(t.nextEvent(), MSG_XFERREADY);
    std::vector<int> left;
    for (int page = 0; page < 3; ++page) {
        TW_HANDLE handle = nullptr;
        ASSERT_EQ(t.dsm(DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, &handle), TWRC_XFERDONE);
        std::free(handle);
        left.push_back(t.endTransfer());
    }
    EXPECT_EQ(left, (std::vector<int>{2, 1, 0}));
}

TEST(SaneSource, ResetDropsPendingPages) {
    ::setenv("LANMIRA_SANE_OPTIONS", "source=Automatic Document Feeder", 1);
    Twain t;
    t.openSource();
    ASSERT_EQ(t.set(CAP_XFERCOUNT, TWTY_INT16, 2), TWRC_SUCCESS);
    t.scanWith(TWPT_GRAY, TWSX_NATIVE);
    ASSERT_EQ(t.nextEvent(), MSG_XFERREADY);
    TW_PENDINGXFERS p{};
    ASSERT_EQ(t.dsm(DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET, &p), TWRC_SUCCESS);
    EXPECT_EQ(p.Count, 0);
    TW_HANDLE handle = nullptr;
    EXPECT_EQ(t.dsm(DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, &handle), TWRC_FAILURE);
    TW_USERINTERFACE ui{};
    EXPECT_EQ(t.dsm(DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS, &ui), TWRC_SUCCESS);
}

TEST(SaneSource, FailedScansEndWithACloseRequest) {
    const struct {
        const char* options;
        const char* limit;
    } rows[] = {
        // The device stops answering halfway (as when it is unplugged).
        {"read-return-value=SANE_STATUS_IO_ERROR", nullptr},
        // A page larger than the memory allowed is refused before any of it is read.
        {nullptr, "1000"},
    };
    for (const auto& row : rows) {
        if (row.options)
            ::setenv("LANMIRA_SANE_OPTIONS", row.options, 1);
        if (row.limit)
            ::setenv("LANMIRA_SANE_MEMORY_LIMIT", row.limit, 1);
        Twain t;
        t.openSource();
        t.scanWith(TWPT_RGB, TWSX_NATIVE);
        EXPECT_EQ(t.nextEvent(), MSG_CLOSEDSREQ);
        TW_USERINTERFACE ui{};
        EXPECT_EQ(t.dsm(DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS, &ui), TWRC_SUCCESS);
        EXPECT_EQ(DSM_Entry(&t.app, nullptr, DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, &t.source),
                  TWRC_SUCCESS);
    }
}

} // namespace
