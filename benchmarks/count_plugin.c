/* Counts the instructions and the system calls that qemu-user executes for a program between its two marks, and prints them.
 * A mark is a system call with the first argument MARK, see repeat_operation.cpp.
 * Debian has QEMU's plugin interface switched on but ships no plugin and no header, so what is needed is declared here.
 * SPDX-License-Identifier: MIT */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#define EXPORT __attribute__((visibility("default")))
#define MARK 0x636f756e

typedef uint64_t qemu_plugin_id_t;
struct qemu_plugin_tb;
typedef struct qemu_info_t qemu_info_t;
typedef void (*tb_trans_cb)(qemu_plugin_id_t id, struct qemu_plugin_tb *block);
typedef void (*syscall_cb)(qemu_plugin_id_t id, unsigned int processor, int64_t number, uint64_t first, uint64_t, uint64_t,
                           uint64_t, uint64_t, uint64_t, uint64_t, uint64_t);
enum { ADD_U64 = 0 };

extern void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id, tb_trans_cb callback);
extern void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb *block, int operation, void *counter,
                                                     uint64_t value);
extern void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t id, syscall_cb callback);
extern size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *block);

EXPORT int qemu_plugin_version = 1;

static uint64_t instructions;
static uint64_t calls[512]; /* by number; higher ones are private to a processor */
static int marks;

static void count_block(qemu_plugin_id_t id, struct qemu_plugin_tb *block)
{
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(block, ADD_U64, &instructions, qemu_plugin_tb_n_insns(block));
}

static void print_counts(void)
{
    fprintf(stderr, "instructions: %llu\n", (unsigned long long)instructions);
    for (size_t number = 0; number < sizeof calls / sizeof *calls; ++number)
        if (calls[number])
            fprintf(stderr, "call %zu: %llu\n", number, (unsigned long long)calls[number]);
}

static void count_call(qemu_plugin_id_t id, unsigned int processor, int64_t number, uint64_t first, uint64_t b, uint64_t c,
                       uint64_t d, uint64_t e, uint64_t f, uint64_t g, uint64_t h)
{
    (void)id, (void)processor, (void)b, (void)c, (void)d, (void)e, (void)f, (void)g, (void)h;
    if (first == MARK) {
        if (++marks == 2)
            print_counts();
        instructions = 0;
        memset(calls, 0, sizeof calls);
    } else if (number >= 0 && number < (int64_t)(sizeof calls / sizeof *calls)) {
        ++calls[number];
    }
}

EXPORT int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t *info, int argc, char **argv)
{
    (void)info;
    (void)argc;
    (void)argv;
    qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
    qemu_plugin_register_vcpu_syscall_cb(id, count_call);
    return 0;
}
