/* Counts the instructions that qemu-user executes for an emulated program; prints the number when the program ends.
 * Debian has QEMU's plugin interface switched on but ships no plugin and no header, so what is needed is declared here.
 * SPDX-License-Identifier: MIT */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#define EXPORT __attribute__((visibility("default")))

typedef uint64_t qemu_plugin_id_t;
struct qemu_plugin_tb;
typedef struct qemu_info_t qemu_info_t;
typedef void (*tb_trans_cb)(qemu_plugin_id_t id, struct qemu_plugin_tb *block);
typedef void (*end_cb)(qemu_plugin_id_t id, void *data);
enum { ADD_U64 = 0 };

extern void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id, tb_trans_cb callback);
extern void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb *block, int operation, void *counter,
                                                     uint64_t value);
extern void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, end_cb callback, void *data);
extern size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *block);

EXPORT int qemu_plugin_version = 1;

static uint64_t instructions;

static void count_block(qemu_plugin_id_t id, struct qemu_plugin_tb *block)
{
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(block, ADD_U64, &instructions, qemu_plugin_tb_n_insns(block));
}

static void print_count(qemu_plugin_id_t id, void *data)
{
    (void)id;
    (void)data;
    fprintf(stderr, "instructions: %llu\n", (unsigned long long)instructions);
}

EXPORT int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t *info, int argc, char **argv)
{
    (void)info;
    (void)argc;
    (void)argv;
    qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
    qemu_plugin_register_atexit_cb(id, print_count, NULL);
    return 0;
}
