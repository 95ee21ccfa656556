// The kernel driver's contract: request codes, the request envelope and what the driver fills in.
//
// One ioctl on a device's descriptor carries one envelope. The envelope and its records are in host order;
// the buffers they point to hold chip bytes, which are little-endian. The stated offsets
// are those of a processor with 32-bit pointers, the only one the driver runs on.
#pragma once

#include <std/c_words.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define DFEIOC_MAGIC 'K'
#define DFEIOC_MAX_NUM 15  // declared so; the far-end message request is number 16 all the same
#define DFEIOC_MAXLEN 20

#define DFEIOC_BLOCKING 0
#define DFEIOC_NONBLOCKING 1

#define MAX_FW_FN_SIZE 128U         // bytes of a firmware file name field
#define GFAST_LOGCFG_BODY_SIZE 16U  // bytes of a log configuration
#define MAX_DFE_PORTNUM 16U         // highest port index the driver accepts
#define IOCTL_MAX_READ_BYTES 900U   // most bytes of one memory read
#define IOCTL_MAX_WRITE_BYTES 128U  // most bytes of one memory write
#define QVR_K_MAX_EVT_BUFFER_LEN 1024U

// Direction read and write, type 'K', size 4. The size field is that of the board's pointer, so a code is the
// same number on every machine.
#define DFEIOC_REQUEST_CODE(number) (0xC0000000U | (4U << 16) | ((uint32_t)DFEIOC_MAGIC << 8) | (number))

#define DFEIOCMEMRD DFEIOC_REQUEST_CODE(1)        // memread: read device memory
#define DFEIOCMEMWR DFEIOC_REQUEST_CODE(2)        // memwrite: write device memory
#define DFEIOCIMGACT DFEIOC_REQUEST_CODE(3)       // activate: start a downloaded image
#define DFEIOCIMGDNLD DFEIOC_REQUEST_CODE(4)      // imgdnld: download an image file
#define DFEIOCFLASHRD DFEIOC_REQUEST_CODE(5)      // flashread
#define DFEIOCFLASHERASE DFEIOC_REQUEST_CODE(6)   // flasherase
#define DFEIOCFLASHPROG DFEIOC_REQUEST_CODE(7)    // flashprog: program flash from a file
#define DFEIOCOAMGET DFEIOC_REQUEST_CODE(8)       // oamget
#define DFEIOCOAMSET DFEIOC_REQUEST_CODE(9)       // oamset
#define DFEIOCLOGCFG DFEIOC_REQUEST_CODE(10)      // logcfg: switch on log delivery
#define DFEIOCLOGRD DFEIOC_REQUEST_CODE(11)       // logalm_read: pending log records
#define DFEIOCALMRD DFEIOC_REQUEST_CODE(12)       // logalm_read: one pending event
#define DFEIOCSETPORTTAG DFEIOC_REQUEST_CODE(13)  // setporttag
#define DFEIOCGETRESULT DFEIOC_REQUEST_CODE(14)   // getres
#define DFEIOCDEVINFO DFEIOC_REQUEST_CODE(15)     // devinf
#define DFEIOCFARENDMSG DFEIOC_REQUEST_CODE(16)   // farendmsg: exchange with the far-end modem

// "in" is filled by the caller, "out" by the driver.

typedef struct gfast_memread {
  uint32_t hw_mem_addr;             // in: device address
  uint16_t hw_mem_len;              // in: bytes to read, at most IOCTL_MAX_READ_BYTES
  char* buf;                        // in: where the bytes go
  uint32_t bufsize;                 // in: equal to hw_mem_len
  uint32_t datalen_rcvd_from_hw;    // out: bytes the chip returned
  uint32_t datalen_copied_to_user;  // out: bytes copied into buf
} gfast_memread;

typedef struct gfast_flashread {
  uint32_t hw_flash_addr;
  uint16_t hw_flash_len;
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;
} gfast_flashread;

typedef struct gfast_memwrite {
  uint32_t hw_mem_addr;  // in: device address; of an activation, where the chip starts executing
  uint16_t hw_mem_len;   // in: bytes to write, at most IOCTL_MAX_WRITE_BYTES
  char* buf;             // in: the bytes
  uint32_t bufsize;      // in: equal to hw_mem_len
} gfast_memwrite;

typedef gfast_memwrite gfast_activate;  // only hw_mem_addr is meaningful

enum flasherase_type { FLASHERASE_4KB = 1, FLASHERASE_64KB = 2, FLASHERASE_ALL = 3 };

typedef struct gfast_flasherase {
  uint32_t hw_flash_addr;  // in: flash address of the sector; ignored by FLASHERASE_ALL
  uint16_t hw_flash_len;   // in: always 0
  uint16_t erasetype;      // in: flasherase_type
} gfast_flasherase;

typedef struct gfast_imgdnld {
  char fw_filename[MAX_FW_FN_SIZE];  // in: image file on the host; not terminated when it fills the field
} gfast_imgdnld;

typedef struct gfast_flashprog {
  char fw_filename[MAX_FW_FN_SIZE];  // in: as above
  uint32_t hw_flash_addr;            // in: flash address at which programming starts
} gfast_flashprog;

typedef struct gfast_oamget {
  uint32_t oid;
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;
} gfast_oamget;

typedef struct gfast_oamset {
  uint32_t oid;
  char* buf;
  uint32_t bufsize;
} gfast_oamset;

typedef struct gfast_logcfg {
  char* buf;         // in: GFAST_LOGCFG_BODY_SIZE bytes
  uint32_t bufsize;  // in: GFAST_LOGCFG_BODY_SIZE
} gfast_logcfg;

typedef struct gfast_logalm_read {
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;  // out: 0 when nothing is pending
} gfast_logalm_read;

typedef struct gfast_setporttag {
  uint16_t port_idx;
  uint16_t tag;
  uint16_t add_del_flag;
} gfast_setporttag;

typedef struct gfast_farendmsg {
  uint16_t port_idx;                // in: the line's index within the device
  uint16_t farend_msg_req_type;     // in: MGMT_FAR_END_REQ_TYPE
  char* buf;                        // in: the request; out: the response, in its place
  uint32_t bufsize;                 // in: bytes of buf
  uint32_t outmsg_datalen;          // in: bytes of the request
  uint32_t inmsg_datalen;           // in: bytes of buf, once more
  uint32_t datalen_copied_to_user;  // out: bytes of the response
} gfast_farendmsg;

typedef struct gfast_getres {
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_rcvd_from_hw;
  uint32_t datalen_copied_to_user;
} gfast_getres;

typedef struct gfast_devinf {
  char* buf;
  uint32_t bufsize;
  uint32_t datalen_copied_to_user;
} gfast_devinf;

typedef struct gfast_iocreq {
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
} gfast_iocreq;

GFAST_API_ENUM(MGMT_FAR_END_REQ_TYPE){
    MGMT_FAR_END_REQ_TYPE_MGMT_COUNTERS = 0,
    MGMT_FAR_END_REQ_TYPE_INVENTORY = 1,
    MGMT_FAR_END_REQ_TYPE_READMEM = 2,
    MGMT_FAR_END_REQ_TYPE_WRITEMEM = 3,
    MGMT_FAR_END_REQ_TYPE_FW_DOWNLOAD = 4,
    MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ = 5,
    MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ = 6,
    MGMT_FAR_END_REQ_TYPE_LAST = 7,
};

// GFAST_EVENT_S, the event record that DFEIOCALMRD returns: little-endian words at these offsets.
#define GFAST_EVENT_TIMESTAMP0 0U
#define GFAST_EVENT_TIMESTAMP1 4U
#define GFAST_EVENT_TYPE 8U     // EVENTS_TYPE_E
#define GFAST_EVENT_PARAMS 12U  // 4 bytes each

GFAST_API_ENUM(EVENTS_TYPE_E){
    EVENT_TYPE_LINKS_STATUS_CHANGED = 0,  // old link states, new link states: a nibble a line, line 0 lowest
    EVENT_TYPE_15_MINUTES_COUNTERS = 1,
    EVENT_TYPE_LINE_FAILURE = 2,  // LINK_FAILURE_TYPE_E, line
    EVENT_TYPE_MODEM_IS_READY = 3,
    EVENT_TYPE_BOOT_SUCCEEDED = 4,
    EVENT_TYPE_DTA_UNSUPPORTIVE_LINK = 5,  // line index within the device
    EVENT_TYPE_LAST = 6,
};

GFAST_API_ENUM(LINK_FAILURE_TYPE_E){
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
    LF_REASON_LAST = 16,
};

#ifdef __cplusplus
}
#endif
