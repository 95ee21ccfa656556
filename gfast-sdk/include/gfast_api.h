// The kernel driver's contract: request codes, the request envelope and what the driver fills in.
//
// One ioctl on a device's descriptor carries one envelope. The envelope and its records are in host order;
// the buffers they point to hold chip bytes, which are little-endian (std/byte_order.h). The stated offsets
// are those of a processor with 32-bit pointers, the only one the driver runs on.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr uint32_t DFEIOC_MAGIC = 'K';
constexpr uint32_t DFEIOC_MAX_NUM = 15;  // declared so; the far-end message request is number 16 all the same
constexpr uint32_t DFEIOC_MAXLEN = 20;

constexpr char DFEIOC_BLOCKING = 0;
constexpr char DFEIOC_NONBLOCKING = 1;

constexpr size_t MAX_FW_FN_SIZE = 128;           // bytes of a firmware file name field
constexpr size_t GFAST_LOGCFG_BODY_SIZE = 16;    // bytes of a log configuration
constexpr uint16_t MAX_DFE_PORTNUM = 16;         // highest port index the driver accepts
constexpr uint32_t IOCTL_MAX_READ_BYTES = 900;   // most bytes of one memory read
constexpr uint32_t IOCTL_MAX_WRITE_BYTES = 128;  // most bytes of one memory write
constexpr uint32_t QVR_K_MAX_EVT_BUFFER_LEN = 1024;

// Direction read and write, type 'K', size 4. The size field is that of the board's pointer, so a code is the
// same number on every machine.
constexpr uint32_t dfeRequestCode(uint32_t number) {
  return 0xC0000000U | (4U << 16) | (DFEIOC_MAGIC << 8) | number;
}

constexpr uint32_t DFEIOCMEMRD = dfeRequestCode(1);        // memread: read device memory
constexpr uint32_t DFEIOCMEMWR = dfeRequestCode(2);        // memwrite: write device memory
constexpr uint32_t DFEIOCIMGACT = dfeRequestCode(3);       // activate: start a downloaded image
constexpr uint32_t DFEIOCIMGDNLD = dfeRequestCode(4);      // imgdnld: download an image file
constexpr uint32_t DFEIOCFLASHRD = dfeRequestCode(5);      // flashread
constexpr uint32_t DFEIOCFLASHERASE = dfeRequestCode(6);   // flasherase
constexpr uint32_t DFEIOCFLASHPROG = dfeRequestCode(7);    // flashprog: program flash from a file
constexpr uint32_t DFEIOCOAMGET = dfeRequestCode(8);       // oamget
constexpr uint32_t DFEIOCOAMSET = dfeRequestCode(9);       // oamset
constexpr uint32_t DFEIOCLOGCFG = dfeRequestCode(10);      // logcfg: switch on log delivery
constexpr uint32_t DFEIOCLOGRD = dfeRequestCode(11);       // logalm_read: pending log records
constexpr uint32_t DFEIOCALMRD = dfeRequestCode(12);       // logalm_read: one pending event
constexpr uint32_t DFEIOCSETPORTTAG = dfeRequestCode(13);  // setporttag
constexpr uint32_t DFEIOCGETRESULT = dfeRequestCode(14);   // getres
constexpr uint32_t DFEIOCDEVINFO = dfeRequestCode(15);     // devinf
constexpr uint32_t DFEIOCFARENDMSG = dfeRequestCode(16);   // farendmsg: exchange with the far-end modem

// "in" is filled by the caller, "out" by the driver.

struct gfast_memread {
  uint32_t hw_mem_addr;             // in: device address
  uint16_t hw_mem_len;              // in: bytes to read, at most IOCTL_MAX_READ_BYTES
  char* buf;                        // in: where the bytes go
  uint32_t bufsize;                 // in: equal to hw_mem_len
  uint32_t datalen_rcvd_from_hw;    // out: bytes the chip returned
  uint32_t datalen_copied_to_user;  // out: bytes copied into buf
};

struct gfast_flashread {
  uint32_t hw_flash_addr;
  uint16_t hw_flash_len;
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;
};

struct gfast_memwrite {
  uint32_t hw_mem_addr;  // in: device address; of an activation, where the chip starts executing
  uint16_t hw_mem_len;   // in: bytes to write, at most IOCTL_MAX_WRITE_BYTES
  char* buf;             // in: the bytes
  uint32_t bufsize;      // in: equal to hw_mem_len
};

using gfast_activate = gfast_memwrite;  // only hw_mem_addr is meaningful

enum flasherase_type : uint16_t { FLASHERASE_4KB = 1, FLASHERASE_64KB = 2, FLASHERASE_ALL = 3 };

struct gfast_flasherase {
  uint32_t hw_flash_addr;  // in: flash address of the sector; ignored by FLASHERASE_ALL
  uint16_t hw_flash_len;   // in: always 0
  uint16_t erasetype;      // in: flasherase_type
};

struct gfast_imgdnld {
  char fw_filename[MAX_FW_FN_SIZE];  // in: image file on the host; not terminated when it fills the field
};

struct gfast_flashprog {
  char fw_filename[MAX_FW_FN_SIZE];  // in: as above
  uint32_t hw_flash_addr;            // in: flash address at which programming starts
};

struct gfast_oamget {
  uint32_t oid;
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;
};

struct gfast_oamset {
  uint32_t oid;
  char* buf;
  uint32_t bufsize;
};

struct gfast_logcfg {
  char* buf;         // in: GFAST_LOGCFG_BODY_SIZE bytes
  uint32_t bufsize;  // in: GFAST_LOGCFG_BODY_SIZE
};

struct gfast_logalm_read {
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;  // out: 0 when nothing is pending
};

struct gfast_setporttag {
  uint16_t port_idx;
  uint16_t tag;
  uint16_t add_del_flag;
};

struct gfast_farendmsg {
  uint16_t port_idx;                // in: the line's index within the device
  uint16_t farend_msg_req_type;     // in: MGMT_FAR_END_REQ_TYPE
  char* buf;                        // in: the request; out: the response, in its place
  uint32_t bufsize;                 // in: bytes of buf
  uint32_t outmsg_datalen;          // in: bytes of the request
  uint32_t inmsg_datalen;           // in: bytes of buf, once more
  uint32_t datalen_copied_to_user;  // out: bytes of the response
};

struct gfast_getres {
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;
};

struct gfast_devinf {
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_copied_to_user;
};

struct gfast_iocreq {
  int32_t retcode;       // out: the driver's result; the ioctl's own result counts
  char non_block;        // in: DFEIOC_BLOCKING or DFEIOC_NONBLOCKING
  uint32_t user_req_id;  // in: caller's tag, always 0
  union {
    gfast_memread memread;
    gfast_memwrite memwrite;
    gfast_activate activate;
    gfast_imgdnld imgdnld;
    gfast_flashread flashread;
    gfast_flasherase flasherase;
    gfast_flashprog flashprog;
    gfast_oamget oamget;
    gfast_oamset oamset;
    gfast_logcfg logcfg;
    gfast_logalm_read logalm_read;
    gfast_setporttag setporttag;
    gfast_getres getres;
    gfast_devinf devinf;
    gfast_farendmsg farendmsg;
  } req_u;
};

enum MGMT_FAR_END_REQ_TYPE : uint32_t {
  MGMT_FAR_END_REQ_TYPE_MGMT_COUNTERS = 0,
  MGMT_FAR_END_REQ_TYPE_INVENTORY = 1,
  MGMT_FAR_END_REQ_TYPE_READMEM = 2,
  MGMT_FAR_END_REQ_TYPE_WRITEMEM = 3,
  MGMT_FAR_END_REQ_TYPE_FW_DOWNLOAD = 4,
  MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ = 5,
  MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ = 6,
  MGMT_FAR_END_REQ_TYPE_LAST = 7
};

// Header of a far-end management message, little-endian on the wire.
constexpr size_t MGMT_HEADER_SIZE = 12;
constexpr size_t MGMT_HEADER_OPCODE = 0;   // 2 bytes
constexpr size_t MGMT_HEADER_LEN = 2;      // 2 bytes
constexpr size_t MGMT_HEADER_SN = 4;       // 2 bytes, sequence number; 2 reserved bytes follow
constexpr size_t MGMT_HEADER_ADDRESS = 8;  // 4 bytes

// Reading far-end memory (MGMT_FAR_END_REQ_TYPE_READMEM): the request is a header whose len is the number of
// bytes wanted, at most MGMT_MAX_DATA; the response is the same header, its opcode marked as a response,
// followed by that many bytes. A far end that refuses answers with a header of MGMT_OPCODE_NACK.
constexpr uint16_t MGMT_OPCODE_READMEM = 2;
constexpr uint16_t MGMT_OPCODE_WRITEMEM = 3;
constexpr uint16_t MGMT_OPCODE_RESPONSE = 0x8000;
constexpr uint16_t MGMT_OPCODE_NACK = 0xFFFF;
constexpr size_t MGMT_MAX_DATA = 512;  // bytes one exchange carries

// GFAST_EVENT_S, the event record that DFEIOCALMRD returns: little-endian words at these offsets.
constexpr size_t GFAST_EVENT_TIMESTAMP0 = 0;
constexpr size_t GFAST_EVENT_TIMESTAMP1 = 4;
constexpr size_t GFAST_EVENT_TYPE = 8;     // EVENTS_TYPE_E
constexpr size_t GFAST_EVENT_PARAMS = 12;  // 4 bytes each

enum EVENTS_TYPE_E : uint32_t {
  EVENT_TYPE_LINKS_STATUS_CHANGED = 0,  // old link states, new link states: a nibble a line, line 0 lowest
  EVENT_TYPE_15_MINUTES_COUNTERS = 1,
  EVENT_TYPE_LINE_FAILURE = 2,  // LINK_FAILURE_TYPE_E, line
  EVENT_TYPE_MODEM_IS_READY = 3,
  EVENT_TYPE_BOOT_SUCCEEDED = 4,
  EVENT_TYPE_DTA_UNSUPPORTIVE_LINK = 5,  // line index within the device
  EVENT_TYPE_LAST = 6
};

enum LINK_FAILURE_TYPE_E : uint32_t {
  LF_REASON_NO_ERROR = 0,
  LF_REASON_GHS_NO_GFAST = 1,
  LF_REASON_SEVERELY_ERRORED_SECONDS = 2,
  LF_REASON_LOSS_OF_RMC = 3,
  LF_REASON_LOSS_OF_POWER = 4,
  LF_REASON_LOSS_OF_MARGIN = 5,
  LF_REASON_LOSS_OF_SIGNAL = 6,
  LF_REASON_INIT_SF_FAILURE = 7,
  LF_REASON_HIGH_BER = 8,
  LF_REASON_QUELVOR_PROPRIETARY = 15,
  LF_REASON_LAST = 16
};

// STRING_HEADER_S, the head of each record in a log buffer: four bytes, then the text (a printf format; two
// bytes a character from the framer and the control processor), the parameters (little-endian words), and one
// byte of padding when the text length is odd.
constexpr size_t STRING_HEADER_CORE_ID = 0;  // index of the line within the device
constexpr size_t STRING_HEADER_CORE_TYPE = 1;
constexpr size_t STRING_HEADER_NUM_PARAMS = 2;
constexpr size_t STRING_HEADER_TEXT_LENGTH = 3;
constexpr size_t STRING_HEADER_SIZE = 4;

enum LOG_CORE_TYPE_E : uint8_t { FDU_CORE = 0, FRAMER_CORE = 1, CP_CORE = 2, INVALID_CORE_TYPE = 3 };

// Device addresses of the device layer.
constexpr uint32_t PLL_MUX_REG_ADDRESS = 0xE0000018;
constexpr uint32_t IO_BASE_ADDRESS = 0xE0000000;
constexpr uint32_t RESET_REG_OFFSET = 0x14;
constexpr uint32_t RESET_REG_ADDRESS = IO_BASE_ADDRESS + RESET_REG_OFFSET;
constexpr uint32_t RESET_REGISTER_VALUE = 0x80000000;
constexpr uint32_t SBR_REG_ADDRESS = 0xE0000238;
constexpr uint32_t VIRT_ADDR_B0_REGS = 0xE1000000;  // 64 bytes
constexpr size_t B0_REGS_SIZE = 64;
constexpr size_t B0_REGS_MAC_ADDRESS = 10;  // 6 bytes
constexpr size_t B0_REGS_LINK_STATES = 36;  // little-endian word, a nibble a line
constexpr uint32_t VIRT_ADDR_DEVICE_INFO_READ = 0xE3100000;
constexpr uint32_t VIRT_ADDR_DEVICE_INFO_READ_AND_CLEAR = 0xE3000000;
constexpr uint32_t ROM_DEFAULT_ENTRY_POINT = 0xFFFFFFF0;
constexpr uint32_t VIRT_BASE_ADDR_CONFIGURATION_PARAMS = 0xE9000000;
constexpr uint32_t CONFIGURE_PARAMS_UAS_OFFSET = 0x00100000;
constexpr uint32_t CONFIGURE_PARAMS_REINIT_OFFSET = 0x00200000;
constexpr uint32_t CONFIGURE_PARAMS_LINKS_PROVISION = 0x00300000;
constexpr uint32_t VIRT_CONFIGURE_PARAMS_LINK_ID_OFFSET = 16;
constexpr uint32_t VIRT_ADDR_USER_ACTIVATION =
    VIRT_BASE_ADDR_CONFIGURATION_PARAMS + CONFIGURE_PARAMS_UAS_OFFSET;
constexpr uint32_t VIRT_ADDR_REINIT(uint32_t linkId) {
  return (VIRT_BASE_ADDR_CONFIGURATION_PARAMS + CONFIGURE_PARAMS_REINIT_OFFSET) |
         (linkId << VIRT_CONFIGURE_PARAMS_LINK_ID_OFFSET);
}
constexpr uint32_t VIRT_ADDR_LINKS_PROVISION(uint32_t linkId) {
  return (VIRT_BASE_ADDR_CONFIGURATION_PARAMS + CONFIGURE_PARAMS_LINKS_PROVISION) |
         (linkId << VIRT_CONFIGURE_PARAMS_LINK_ID_OFFSET);
}

// The software boot register (SBR), field by field from bit 0.
#define SBR_FIELD(name, size, offset)            \
  constexpr uint32_t SBR_##name##_SIZE = (size); \
  constexpr uint32_t SBR_##name##_OFFSET = (offset)
#define SBR_END(name) (SBR_##name##_OFFSET + SBR_##name##_SIZE)
SBR_FIELD(DISABLE_FLASH, 1, 0);
SBR_FIELD(DISABLE_AUTO_ACTIVATE, 1, SBR_END(DISABLE_FLASH));
SBR_FIELD(ENABLE_MDIO, 1, SBR_END(DISABLE_AUTO_ACTIVATE));
SBR_FIELD(SGMII_ACTIVE_LANE, 2, SBR_END(ENABLE_MDIO));
SBR_FIELD(DISABLE_UART, 1, SBR_END(SGMII_ACTIVE_LANE));
SBR_FIELD(DISABLE_ETH_FLOW_CONTROL, 1, SBR_END(DISABLE_UART));
SBR_FIELD(DISABLE_FLASH_B1, 1, SBR_END(DISABLE_ETH_FLOW_CONTROL));
SBR_FIELD(DISABLE_FLASH_OVERRIDE, 1, SBR_END(DISABLE_FLASH_B1));
SBR_FIELD(DISABLE_AUTO_ACTIVATE_OVERRIDE, 1, SBR_END(DISABLE_FLASH_OVERRIDE));
SBR_FIELD(ENABLE_MDIO_OVERRIDE, 1, SBR_END(DISABLE_AUTO_ACTIVATE_OVERRIDE));
SBR_FIELD(SGMII_ACTIVE_LANE_OVERRIDE, 1, SBR_END(ENABLE_MDIO_OVERRIDE));
SBR_FIELD(DISABLE_UART_OVERRIDE, 1, SBR_END(SGMII_ACTIVE_LANE_OVERRIDE));
SBR_FIELD(DISABLE_ETH_FLOW_CONTROL_OVERRIDE, 1, SBR_END(DISABLE_UART_OVERRIDE));
SBR_FIELD(DISABLE_FLASH_B1_OVERRIDE, 1, SBR_END(DISABLE_ETH_FLOW_CONTROL_OVERRIDE));
SBR_FIELD(USER_ACTIVATION_STATE, 1, SBR_END(DISABLE_FLASH_B1_OVERRIDE));
SBR_FIELD(SYSTEM_PARAMETER_CHANGE, 1, SBR_END(USER_ACTIVATION_STATE));
SBR_FIELD(RESERVED, 6, SBR_END(SYSTEM_PARAMETER_CHANGE));
SBR_FIELD(FW_STATE, 2, SBR_END(RESERVED));
SBR_FIELD(RESET_COUNTER, 3, SBR_END(FW_STATE));
SBR_FIELD(BOOT_RESET_COUNTER, 3, SBR_END(RESET_COUNTER));
SBR_FIELD(WD_INDICATOR, 1, SBR_END(BOOT_RESET_COUNTER));
#undef SBR_END
#undef SBR_FIELD

constexpr uint32_t SBR_FW_STATE(uint32_t sbr) {
  return (sbr >> SBR_FW_STATE_OFFSET) & 0x3U;
}
constexpr uint32_t SBR_RESET_COUNTER(uint32_t sbr) {
  return (sbr >> SBR_RESET_COUNTER_OFFSET) & 0x7U;
}
constexpr uint32_t SBR_BOOT_RESET_COUNTER(uint32_t sbr) {
  return (sbr >> SBR_BOOT_RESET_COUNTER_OFFSET) & 0x7U;
}

// DEV_INF_S, the device-information image: 260 bytes of little-endian words at these offsets.
constexpr size_t DEV_INF_SIZE = 260;
constexpr size_t DEV_INF_VERSION = 0;
constexpr size_t DEV_INF_FIRMWARE_VERSION = 4;    // profile, rc, ga, chipset from bit 0 up, 8 bits each
constexpr size_t DEV_INF_DATE = 8;                // six words, characters in bits 0-7 and 16-23
constexpr size_t DEV_INF_TIME = 32;               // one word, likewise
constexpr size_t DEV_INF_LINK_STARTUP_TIME = 36;  // milliseconds
constexpr size_t DEV_INF_LINK_ASSERT_INFO = 40;
constexpr size_t DEV_INF_GHS_TIMES = 128;    // four words
constexpr size_t DEV_INF_LAST_SIGNAL = 144;  // downstream in byte 0, upstream in byte 2
constexpr size_t DEV_INF_INIT_FAILURE_CAUSE = 148;
constexpr size_t DEV_INF_TEMPERATURE = 152;  // degrees Celsius
constexpr size_t DEV_INF_VENDOR_ID = 156;    // 12 bytes, the first 8 are the vendor id
constexpr size_t DEV_INF_LINK_ASSERT_EXTENSION = 168;
constexpr size_t DEV_INF_CP_ASSERT_INFO = 200;
constexpr size_t DEV_INF_CP_ASSERT_EXTENSION = 244;

// CPU_ASSERT_INFO_S, what a processor asserted, and CPU_ASSERT_INFO_EXTENSION_S, when: 32-bit words. A link
// has the pair of its framer, then that of its FDU.
constexpr size_t CPU_ASSERT_INFO_SIZE = 44;
constexpr size_t CPU_ASSERT_INFO_NUMBER = 0;  // of assertions since start
constexpr size_t CPU_ASSERT_INFO_ASSERT_ID = 4;
constexpr size_t CPU_ASSERT_INFO_NUM_PARAMS = 8;
constexpr size_t CPU_ASSERT_INFO_PARAMS = 12;
constexpr size_t CPU_ASSERT_MAX_PARAMS = 8;
constexpr size_t CPU_ASSERT_EXTENSION_SIZE = 16;
constexpr size_t CPU_ASSERT_EXTENSION_SYMBOL_COUNTER = 0;  // 0: the processor did not assert
constexpr size_t CPU_ASSERT_EXTENSION_TBM_SYMBOL = 4;
constexpr size_t CPU_ASSERT_EXTENSION_TBM_PHASE = 8;
constexpr size_t CPU_ASSERT_EXTENSION_TBM_SAMPLE = 12;

// Flash: sectors of 64 KiB (and 4 KiB), three regions.
constexpr uint32_t FLASH_SECTOR_64KB = 0x10000;
constexpr uint32_t FLASH_BOOTLOADER_START = 0x00000;
constexpr uint32_t FLASH_MANUFACTURER_BLOCK_START = 0x10000;
constexpr uint32_t FLASH_APP_FIRMWARE_START = 0x20000;
constexpr uint32_t FLASH_SIZE = 0x100000;
