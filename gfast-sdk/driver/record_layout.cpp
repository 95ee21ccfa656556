// The request records as the board's kernel driver lays them out. Only a processor with 32-bit pointers can
// check this; elsewhere the records carry wider pointers and no kernel driver reads them.

#include <gfast_api.h>

#include <cstddef>

#define LAYOUT(condition) static_assert(sizeof(void*) != 4 || (condition))

LAYOUT(sizeof(gfast_iocreq) == 144);
LAYOUT(offsetof(gfast_iocreq, retcode) == 0);
LAYOUT(offsetof(gfast_iocreq, non_block) == 4);
LAYOUT(offsetof(gfast_iocreq, user_req_id) == 8);
LAYOUT(offsetof(gfast_iocreq, req_u) == 12);

LAYOUT(sizeof(gfast_memread) == 24);
LAYOUT(offsetof(gfast_memread, hw_mem_addr) == 0);
LAYOUT(offsetof(gfast_memread, hw_mem_len) == 4);
LAYOUT(offsetof(gfast_memread, buf) == 8);
LAYOUT(offsetof(gfast_memread, bufsize) == 12);
LAYOUT(offsetof(gfast_memread, datalen_rcvd_from_hw) == 16);
LAYOUT(offsetof(gfast_memread, datalen_copied_to_user) == 20);

LAYOUT(sizeof(gfast_flashread) == 24);
LAYOUT(offsetof(gfast_flashread, hw_flash_addr) == 0);
LAYOUT(offsetof(gfast_flashread, hw_flash_len) == 4);
LAYOUT(offsetof(gfast_flashread, buf) == 8);
LAYOUT(offsetof(gfast_flashread, bufsize) == 12);
LAYOUT(offsetof(gfast_flashread, datalen_rcvd_from_hw) == 16);
LAYOUT(offsetof(gfast_flashread, datalen_copied_to_user) == 20);

LAYOUT(sizeof(gfast_memwrite) == 16);
LAYOUT(offsetof(gfast_memwrite, hw_mem_addr) == 0);
LAYOUT(offsetof(gfast_memwrite, hw_mem_len) == 4);
LAYOUT(offsetof(gfast_memwrite, buf) == 8);
LAYOUT(offsetof(gfast_memwrite, bufsize) == 12);

LAYOUT(sizeof(gfast_flasherase) == 8);
LAYOUT(offsetof(gfast_flasherase, hw_flash_addr) == 0);
LAYOUT(offsetof(gfast_flasherase, hw_flash_len) == 4);
LAYOUT(offsetof(gfast_flasherase, erasetype) == 6);

LAYOUT(sizeof(gfast_imgdnld) == 128);
LAYOUT(sizeof(gfast_flashprog) == 132);
LAYOUT(offsetof(gfast_flashprog, hw_flash_addr) == 128);

LAYOUT(sizeof(gfast_oamget) == 20);
LAYOUT(offsetof(gfast_oamget, buf) == 4);
LAYOUT(offsetof(gfast_oamget, bufsize) == 8);
LAYOUT(offsetof(gfast_oamget, datalen_rcvd_from_hw) == 12);
LAYOUT(offsetof(gfast_oamget, datalen_copied_to_user) == 16);
LAYOUT(sizeof(gfast_oamset) == 12);
LAYOUT(offsetof(gfast_oamset, buf) == 4);
LAYOUT(offsetof(gfast_oamset, bufsize) == 8);

LAYOUT(sizeof(gfast_logcfg) == 8);
LAYOUT(offsetof(gfast_logcfg, bufsize) == 4);

LAYOUT(sizeof(gfast_logalm_read) == 16);
LAYOUT(offsetof(gfast_logalm_read, buf) == 0);
LAYOUT(offsetof(gfast_logalm_read, bufsize) == 4);
LAYOUT(offsetof(gfast_logalm_read, datalen_rcvd_from_hw) == 8);
LAYOUT(offsetof(gfast_logalm_read, datalen_copied_to_user) == 12);

LAYOUT(sizeof(gfast_setporttag) == 6);
LAYOUT(offsetof(gfast_setporttag, tag) == 2);
LAYOUT(offsetof(gfast_setporttag, add_del_flag) == 4);

LAYOUT(sizeof(gfast_farendmsg) == 24);
LAYOUT(offsetof(gfast_farendmsg, port_idx) == 0);
LAYOUT(offsetof(gfast_farendmsg, farend_msg_req_type) == 2);
LAYOUT(offsetof(gfast_farendmsg, buf) == 4);
LAYOUT(offsetof(gfast_farendmsg, bufsize) == 8);
LAYOUT(offsetof(gfast_farendmsg, outmsg_datalen) == 12);
LAYOUT(offsetof(gfast_farendmsg, inmsg_datalen) == 16);
LAYOUT(offsetof(gfast_farendmsg, datalen_copied_to_user) == 20);

LAYOUT(sizeof(gfast_getres) == 16);
LAYOUT(sizeof(gfast_devinf) == 12);
LAYOUT(offsetof(gfast_devinf, bufsize) == 4);
LAYOUT(offsetof(gfast_devinf, datalen_copied_to_user) == 8);

// On every machine, whatever its pointer size.
static_assert(DFEIOCMEMRD == 0xC0044B01);
static_assert(DFEIOCFARENDMSG == 0xC0044B10);
