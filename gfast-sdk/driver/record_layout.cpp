// The request records as the board's kernel driver lays them out. Where every field lies can only be checked
// with 32-bit pointers; elsewhere pointers are wider and no kernel driver reads the records.

#include <gfast_api.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <initializer_list>

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

LAYOUT(sizeof(gfast_farendmsg) == 24);
LAYOUT(offsetof(gfast_farendmsg, port_idx) == 0);
LAYOUT(offsetof(gfast_farendmsg, farend_msg_req_type) == 2);
LAYOUT(offsetof(gfast_farendmsg, buf) == 4);
LAYOUT(offsetof(gfast_farendmsg, bufsize) == 8);
LAYOUT(offsetof(gfast_farendmsg, outmsg_datalen) == 12);
LAYOUT(offsetof(gfast_farendmsg, inmsg_datalen) == 16);
LAYOUT(offsetof(gfast_farendmsg, datalen_copied_to_user) == 20);

LAYOUT(sizeof(gfast_getres) == 16);
LAYOUT(offsetof(gfast_getres, buf) == 0);
LAYOUT(offsetof(gfast_getres, bufsize) == 4);
LAYOUT(offsetof(gfast_getres, datalen_rcvd_from_hw) == 8);
LAYOUT(offsetof(gfast_getres, datalen_copied_to_user) == 12);

LAYOUT(sizeof(gfast_devinf) == 12);
LAYOUT(offsetof(gfast_devinf, bufsize) == 4);
LAYOUT(offsetof(gfast_devinf, datalen_copied_to_user) == 8);

// What follows holds on every machine, whatever its pointer size.

static_assert(DFEIOCMEMRD == 0xC0044B01);
static_assert(DFEIOCFARENDMSG == 0xC0044B10);

static_assert(sizeof(gfast_flasherase) == 8);
static_assert(offsetof(gfast_flasherase, hw_flash_addr) == 0);
static_assert(offsetof(gfast_flasherase, hw_flash_len) == 4);
static_assert(offsetof(gfast_flasherase, erasetype) == 6);

static_assert(sizeof(gfast_imgdnld) == 128);
static_assert(offsetof(gfast_imgdnld, fw_filename) == 0);
static_assert(sizeof(gfast_flashprog) == 132);
static_assert(offsetof(gfast_flashprog, fw_filename) == 0);
static_assert(offsetof(gfast_flashprog, hw_flash_addr) == 128);

static_assert(sizeof(gfast_setporttag) == 6);
static_assert(offsetof(gfast_setporttag, port_idx) == 0);
static_assert(offsetof(gfast_setporttag, tag) == 2);
static_assert(offsetof(gfast_setporttag, add_del_flag) == 4);

// The fields of the records with pointers follow each other in this order.
namespace {

constexpr bool ascend(std::initializer_list<size_t> offsets) {
  return std::ranges::adjacent_find(offsets, std::ranges::greater_equal()) == offsets.end();
}

}  // namespace

static_assert(ascend({offsetof(gfast_iocreq, retcode), offsetof(gfast_iocreq, non_block),
                      offsetof(gfast_iocreq, user_req_id), offsetof(gfast_iocreq, req_u)}));
static_assert(ascend({offsetof(gfast_memread, hw_mem_addr), offsetof(gfast_memread, hw_mem_len),
                      offsetof(gfast_memread, buf), offsetof(gfast_memread, bufsize),
                      offsetof(gfast_memread, datalen_rcvd_from_hw),
                      offsetof(gfast_memread, datalen_copied_to_user)}));
static_assert(ascend({offsetof(gfast_flashread, hw_flash_addr), offsetof(gfast_flashread, hw_flash_len),
                      offsetof(gfast_flashread, buf), offsetof(gfast_flashread, bufsize),
                      offsetof(gfast_flashread, datalen_rcvd_from_hw),
                      offsetof(gfast_flashread, datalen_copied_to_user)}));
static_assert(ascend({offsetof(gfast_memwrite, hw_mem_addr), offsetof(gfast_memwrite, hw_mem_len),
                      offsetof(gfast_memwrite, buf), offsetof(gfast_memwrite, bufsize)}));
static_assert(ascend({offsetof(gfast_oamget, oid), offsetof(gfast_oamget, buf),
                      offsetof(gfast_oamget, bufsize), offsetof(gfast_oamget, datalen_rcvd_from_hw),
                      offsetof(gfast_oamget, datalen_copied_to_user)}));
static_assert(ascend({offsetof(gfast_oamset, oid), offsetof(gfast_oamset, buf),
                      offsetof(gfast_oamset, bufsize)}));
static_assert(ascend({offsetof(gfast_logcfg, buf), offsetof(gfast_logcfg, bufsize)}));
static_assert(ascend({offsetof(gfast_logalm_read, buf), offsetof(gfast_logalm_read, bufsize),
                      offsetof(gfast_logalm_read, datalen_rcvd_from_hw),
                      offsetof(gfast_logalm_read, datalen_copied_to_user)}));
static_assert(ascend({offsetof(gfast_farendmsg, port_idx), offsetof(gfast_farendmsg, farend_msg_req_type),
                      offsetof(gfast_farendmsg, buf), offsetof(gfast_farendmsg, bufsize),
                      offsetof(gfast_farendmsg, outmsg_datalen), offsetof(gfast_farendmsg, inmsg_datalen),
                      offsetof(gfast_farendmsg, datalen_copied_to_user)}));
static_assert(ascend({offsetof(gfast_getres, buf), offsetof(gfast_getres, bufsize),
                      offsetof(gfast_getres, datalen_rcvd_from_hw),
                      offsetof(gfast_getres, datalen_copied_to_user)}));
static_assert(ascend({offsetof(gfast_devinf, buf), offsetof(gfast_devinf, bufsize),
                      offsetof(gfast_devinf, datalen_copied_to_user)}));
