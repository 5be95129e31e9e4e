#pragma once

// The TWAIN 1.x records, numbers and entry points that the acquisition code, the data
// source manager and its sources share. Records are packed to two bytes, as the standard
// lays them out.

#include <cstdint>

extern "C" {

using TW_INT8 = std::int8_t;
using TW_INT16 = std::int16_t;
using TW_INT32 = std::int32_t;
using TW_UINT8 = std::uint8_t;
using TW_UINT16 = std::uint16_t;
using TW_UINT32 = std::uint32_t;
using TW_BOOL = TW_UINT16;
using TW_HANDLE = void*;
using TW_MEMREF = void*;
using TW_STR32 = char[34];
using TW_STR64 = char[66];
using TW_STR128 = char[130];
using TW_STR255 = char[256];

#pragma pack(push, 2)

struct TW_FIX32 {
    TW_INT16 Whole;
    TW_UINT16 Frac;
};

struct TW_VERSION {
    TW_UINT16 MajorNum;
    TW_UINT16 MinorNum;
    TW_UINT16 Language;
    TW_UINT16 Country;
    TW_STR32 Info;
};

struct TW_IDENTITY {
    TW_UINT32 Id;
    TW_VERSION Version;
    TW_UINT16 ProtocolMajor;
    TW_UINT16 ProtocolMinor;
    TW_UINT32 SupportedGroups;
    TW_STR32 Manufacturer;
    TW_STR32 ProductFamily;
    TW_STR32 ProductName;
};

struct TW_USERINTERFACE {
    TW_BOOL ShowUI;
    TW_BOOL ModalUI;
    TW_HANDLE hParent;
};

struct TW_EVENT {
    TW_MEMREF pEvent;
    TW_UINT16 TWMessage;
};

struct TW_PENDINGXFERS {
    TW_UINT16 Count;
    TW_UINT32 Reserved;
};

struct TW_STATUS {
    TW_UINT16 ConditionCode;
    TW_UINT16 Reserved;
};

struct TW_CAPABILITY {
    TW_UINT16 Cap;
    TW_UINT16 ConType;
    TW_HANDLE hContainer;
};

struct TW_ONEVALUE {
    TW_UINT16 ItemType;
    TW_UINT32 Item;
};

struct TW_ENUMERATION {
    TW_UINT16 ItemType;
    TW_UINT32 NumItems;
    TW_UINT32 CurrentIndex;
    TW_UINT32 DefaultIndex;
    TW_UINT8 ItemList[1];
};

struct TW_ARRAY {
    TW_UINT16 ItemType;
    TW_UINT32 NumItems;
    TW_UINT8 ItemList[1];
};

struct TW_RANGE {
    TW_UINT16 ItemType;
    TW_UINT32 MinValue;
    TW_UINT32 MaxValue;
    TW_UINT32 StepSize;
    TW_UINT32 DefaultValue;
    TW_UINT32 CurrentValue;
};

struct TW_IMAGEINFO {
    TW_FIX32 XResolution;
    TW_FIX32 YResolution;
    TW_INT32 ImageWidth;
    TW_INT32 ImageLength;
    TW_INT16 SamplesPerPixel;
    TW_INT16 BitsPerSample[8];
    TW_INT16 BitsPerPixel;
    TW_BOOL Planar;
    TW_INT16 PixelType;
    TW_UINT16 Compression;
};

struct TW_SETUPMEMXFER {
    TW_UINT32 MinBufSize;
    TW_UINT32 MaxBufSize;
    TW_UINT32 Preferred;
};

struct TW_MEMORY {
    TW_UINT32 Flags;
    TW_UINT32 Length;
    TW_MEMREF TheMem;
};

struct TW_IMAGEMEMXFER {
    TW_UINT16 Compression;
    TW_UINT32 BytesPerRow;
    TW_UINT32 Columns;
    TW_UINT32 Rows;
    TW_UINT32 XOffset;
    TW_UINT32 YOffset;
    TW_UINT32 BytesWritten;
    TW_MEMORY Memory;
};

struct TW_SETUPFILEXFER {
    TW_STR255 FileName;
    TW_UINT16 Format;
    TW_INT16 VRefNum;
};

#pragma pack(pop)

static_assert(sizeof(TW_ONEVALUE) == 6);
static_assert(sizeof(TW_FIX32) == 4);
static_assert(sizeof(TW_IDENTITY) == 156);

using DSMENTRYPROC = TW_UINT16 (*)(TW_IDENTITY* pOrigin, TW_IDENTITY* pDest, TW_UINT32 DG,
                                   TW_UINT16 DAT, TW_UINT16 MSG, TW_MEMREF pData);
using DSENTRYPROC = TW_UINT16 (*)(TW_IDENTITY* pOrigin, TW_UINT32 DG, TW_UINT16 DAT, TW_UINT16 MSG,
                                  TW_MEMREF pData);

TW_UINT16 DSM_Entry(TW_IDENTITY* pOrigin, TW_IDENTITY* pDest, TW_UINT32 DG, TW_UINT16 DAT,
                    TW_UINT16 MSG, TW_MEMREF pData);

} // extern "C"

// Data groups
inline constexpr TW_UINT32 DG_CONTROL = 0x0001;
inline constexpr TW_UINT32 DG_IMAGE = 0x0002;
inline constexpr TW_UINT32 DG_AUDIO = 0x0004;

// Data argument types
inline constexpr TW_UINT16 DAT_NULL = 0x0000;
inline constexpr TW_UINT16 DAT_CAPABILITY = 0x0001;
inline constexpr TW_UINT16 DAT_EVENT = 0x0002;
inline constexpr TW_UINT16 DAT_IDENTITY = 0x0003;
inline constexpr TW_UINT16 DAT_PARENT = 0x0004;
inline constexpr TW_UINT16 DAT_PENDINGXFERS = 0x0005;
inline constexpr TW_UINT16 DAT_SETUPMEMXFER = 0x0006;
inline constexpr TW_UINT16 DAT_SETUPFILEXFER = 0x0007;
inline constexpr TW_UINT16 DAT_STATUS = 0x0008;
inline constexpr TW_UINT16 DAT_USERINTERFACE = 0x0009;
inline constexpr TW_UINT16 DAT_XFERGROUP = 0x000A;
inline constexpr TW_UINT16 DAT_IMAGEINFO = 0x0101;
inline constexpr TW_UINT16 DAT_IMAGELAYOUT = 0x0102;
inline constexpr TW_UINT16 DAT_IMAGEMEMXFER = 0x0103;
inline constexpr TW_UINT16 DAT_IMAGENATIVEXFER = 0x0104;
inline constexpr TW_UINT16 DAT_IMAGEFILEXFER = 0x0105;

// Messages
inline constexpr TW_UINT16 MSG_NULL = 0x0000;
inline constexpr TW_UINT16 MSG_GET = 0x0001;
inline constexpr TW_UINT16 MSG_GETCURRENT = 0x0002;
inline constexpr TW_UINT16 MSG_GETDEFAULT = 0x0003;
inline constexpr TW_UINT16 MSG_GETFIRST = 0x0004;
inline constexpr TW_UINT16 MSG_GETNEXT = 0x0005;
inline constexpr TW_UINT16 MSG_SET = 0x0006;
inline constexpr TW_UINT16 MSG_RESET = 0x0007;
inline constexpr TW_UINT16 MSG_QUERYSUPPORT = 0x0008;
inline constexpr TW_UINT16 MSG_XFERREADY = 0x0101;
inline constexpr TW_UINT16 MSG_CLOSEDSREQ = 0x0102;
inline constexpr TW_UINT16 MSG_CLOSEDSOK = 0x0103;
inline constexpr TW_UINT16 MSG_CHECKSTATUS = 0x0201;
inline constexpr TW_UINT16 MSG_OPENDSM = 0x0301;
inline constexpr TW_UINT16 MSG_CLOSEDSM = 0x0302;
inline constexpr TW_UINT16 MSG_OPENDS = 0x0401;
inline constexpr TW_UINT16 MSG_CLOSEDS = 0x0402;
inline constexpr TW_UINT16 MSG_USERSELECT = 0x0403;
inline constexpr TW_UINT16 MSG_DISABLEDS = 0x0501;
inline constexpr TW_UINT16 MSG_ENABLEDS = 0x0502;
inline constexpr TW_UINT16 MSG_ENABLEDSUIONLY = 0x0503;
inline constexpr TW_UINT16 MSG_PROCESSEVENT = 0x0601;
inline constexpr TW_UINT16 MSG_ENDXFER = 0x0701;

// Return codes
inline constexpr TW_UINT16 TWRC_SUCCESS = 0;
inline constexpr TW_UINT16 TWRC_FAILURE = 1;
inline constexpr TW_UINT16 TWRC_CHECKSTATUS = 2;
inline constexpr TW_UINT16 TWRC_CANCEL = 3;
inline constexpr TW_UINT16 TWRC_DSEVENT = 4;
inline constexpr TW_UINT16 TWRC_NOTDSEVENT = 5;
inline constexpr TW_UINT16 TWRC_XFERDONE = 6;
inline constexpr TW_UINT16 TWRC_ENDOFLIST = 7;
inline constexpr TW_UINT16 TWRC_INFONOTSUPPORTED = 8;
inline constexpr TW_UINT16 TWRC_DATANOTAVAILABLE = 9;

// Condition codes
inline constexpr TW_UINT16 TWCC_SUCCESS = 0;
inline constexpr TW_UINT16 TWCC_BUMMER = 1;
inline constexpr TW_UINT16 TWCC_LOWMEMORY = 2;
inline constexpr TW_UINT16 TWCC_NODS = 3;
inline constexpr TW_UINT16 TWCC_MAXCONNECTIONS = 4;
inline constexpr TW_UINT16 TWCC_OPERATIONERROR = 5;
inline constexpr TW_UINT16 TWCC_BADCAP = 6;
inline constexpr TW_UINT16 TWCC_BADPROTOCOL = 9;
inline constexpr TW_UINT16 TWCC_BADVALUE = 10;
inline constexpr TW_UINT16 TWCC_SEQERROR = 11;
inline constexpr TW_UINT16 TWCC_BADDEST = 12;
inline constexpr TW_UINT16 TWCC_CAPUNSUPPORTED = 13;
inline constexpr TW_UINT16 TWCC_CAPBADOPERATION = 14;
inline constexpr TW_UINT16 TWCC_CAPSEQERROR = 15;
inline constexpr TW_UINT16 TWCC_DENIED = 16;
inline constexpr TW_UINT16 TWCC_FILEEXISTS = 17;
inline constexpr TW_UINT16 TWCC_FILENOTFOUND = 18;
inline constexpr TW_UINT16 TWCC_FILEWRITEERROR = 22;
inline constexpr TW_UINT16 TWCC_CHECKDEVICEONLINE = 23;

// Containers and item types
inline constexpr TW_UINT16 TWON_ARRAY = 3;
inline constexpr TW_UINT16 TWON_ENUMERATION = 4;
inline constexpr TW_UINT16 TWON_ONEVALUE = 5;
inline constexpr TW_UINT16 TWON_RANGE = 6;
inline constexpr TW_UINT16 TWTY_INT8 = 0;
inline constexpr TW_UINT16 TWTY_INT16 = 1;
inline constexpr TW_UINT16 TWTY_INT32 = 2;
inline constexpr TW_UINT16 TWTY_UINT8 = 3;
inline constexpr TW_UINT16 TWTY_UINT16 = 4;
inline constexpr TW_UINT16 TWTY_UINT32 = 5;
inline constexpr TW_UINT16 TWTY_BOOL = 6;
inline constexpr TW_UINT16 TWTY_FIX32 = 7;
inline constexpr TW_UINT16 TWTY_FRAME = 8;
inline constexpr TW_UINT16 TWTY_STR32 = 9;
inline constexpr TW_UINT16 TWTY_STR64 = 10;
inline constexpr TW_UINT16 TWTY_STR128 = 11;
inline constexpr TW_UINT16 TWTY_STR255 = 12;

// Capabilities
inline constexpr TW_UINT16 CAP_XFERCOUNT = 0x0001;
inline constexpr TW_UINT16 ICAP_COMPRESSION = 0x0100;
inline constexpr TW_UINT16 ICAP_PIXELTYPE = 0x0101;
inline constexpr TW_UINT16 ICAP_UNITS = 0x0102;
inline constexpr TW_UINT16 ICAP_XFERMECH = 0x0103;
inline constexpr TW_UINT16 CAP_SUPPORTEDCAPS = 0x1005;
inline constexpr TW_UINT16 CAP_INDICATORS = 0x100B;
inline constexpr TW_UINT16 CAP_UICONTROLLABLE = 0x100E;
inline constexpr TW_UINT16 ICAP_PHYSICALWIDTH = 0x1111;
inline constexpr TW_UINT16 ICAP_PHYSICALHEIGHT = 0x1112;
inline constexpr TW_UINT16 ICAP_XRESOLUTION = 0x1118;
inline constexpr TW_UINT16 ICAP_YRESOLUTION = 0x1119;
inline constexpr TW_UINT16 ICAP_BITDEPTH = 0x112B;

inline constexpr TW_UINT16 TWPT_BW = 0;
inline constexpr TW_UINT16 TWPT_GRAY = 1;
inline constexpr TW_UINT16 TWPT_RGB = 2;
inline constexpr TW_UINT16 TWPT_PALETTE = 3;
inline constexpr TW_UINT16 TWSX_NATIVE = 0;
inline constexpr TW_UINT16 TWSX_FILE = 1;
inline constexpr TW_UINT16 TWSX_MEMORY = 2;
inline constexpr TW_UINT16 TWFF_TIFF = 0;
inline constexpr TW_UINT16 TWFF_BMP = 2;
inline constexpr TW_UINT16 TWFF_JFIF = 4;
inline constexpr TW_UINT16 TWFF_TIFFMULTI = 6;
inline constexpr TW_UINT16 TWFF_PNG = 7;
inline constexpr TW_UINT16 TWCP_NONE = 0;
inline constexpr TW_UINT16 TWUN_INCHES = 0;

inline constexpr TW_UINT32 TWMF_APPOWNS = 0x0001;
inline constexpr TW_UINT32 TWMF_DSMOWNS = 0x0002;
inline constexpr TW_UINT32 TWMF_DSOWNS = 0x0004;
inline constexpr TW_UINT32 TWMF_POINTER = 0x0008;
inline constexpr TW_UINT32 TWMF_HANDLE = 0x0010;

inline constexpr TW_UINT16 TWLG_USA = 13;
inline constexpr TW_UINT16 TWCY_USA = 1;
