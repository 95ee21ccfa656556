// A plugin of the emulator for user programs (QEMU 7.2): counts the instructions of the program that it runs,
// and prints the count so far on standard output each time the program asks for its parent's process id.
//
// Its interface is declared here as far as it is used, because no package has its header.
#include <stdint.h>
#include <stdio.h>

struct qemu_plugin_tb;  // instructions that are always executed one after the other
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* tb);
void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t id, void (*translated)(uint64_t, struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* tb, enum qemu_plugin_op op, void* value,
                                              uint64_t amount);
void qemu_plugin_register_vcpu_syscall_cb(uint64_t id, void (*called)(uint64_t, unsigned, int64_t, uint64_t,
                                                                      uint64_t, uint64_t, uint64_t, uint64_t,
                                                                      uint64_t, uint64_t, uint64_t));

__attribute__((visibility("default"))) int qemu_plugin_version = 1;

static const int64_t getppid_of_mips = 4064;
static uint64_t count;

static void translated(uint64_t id, struct qemu_plugin_tb* tb) {
  (void)id;
  qemu_plugin_register_vcpu_tb_exec_inline(tb, QEMU_PLUGIN_INLINE_ADD_U64, &count,
                                           qemu_plugin_tb_n_insns(tb));
}

static void called(uint64_t id, unsigned cpu, int64_t number, uint64_t a, uint64_t b, uint64_t c, uint64_t d,
                   uint64_t e, uint64_t f, uint64_t g, uint64_t h) {
  (void)id, (void)cpu, (void)a, (void)b, (void)c, (void)d, (void)e, (void)f, (void)g, (void)h;
  if (number == getppid_of_mips) {
    printf("count\t%llu\n", (unsigned long long)count);
    fflush(stdout);
  }
}

__attribute__((visibility("default"))) int qemu_plugin_install(uint64_t id, const void* info, int argc,
                                                               char** argv) {
  (void)info, (void)argc, (void)argv;
  qemu_plugin_register_vcpu_tb_trans_cb(id, translated);
  qemu_plugin_register_vcpu_syscall_cb(id, called);
  return 0;
}
