// SPDX-License-Identifier: MIT
// A plugin for qemu's user emulation that counts the guest's instructions and prints their number when the
// guest ends. qemu's header is not packaged; these are the functions and the version that it needs.
#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>

struct qemu_plugin_tb;

extern "C" {

typedef std::uint64_t PluginId;

void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id, void (*translated)(PluginId, qemu_plugin_tb *));
void qemu_plugin_register_vcpu_tb_exec_inline(qemu_plugin_tb *block, int operation, void *counter,
                                              std::uint64_t amount);
std::size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb *block);
void qemu_plugin_register_atexit_cb(PluginId id, void (*over)(PluginId, void *), void *data);

__attribute__((visibility("default"))) extern const int qemu_plugin_version;
const int qemu_plugin_version = 1;

__attribute__((visibility("default"))) int qemu_plugin_install(PluginId id, const void *machine, int argc,
                                                               char **argv);
}

namespace {

const int add = 0; // the only inline operation

std::uint64_t instructions = 0;

void countBlock(PluginId, qemu_plugin_tb *block)
{
    qemu_plugin_register_vcpu_tb_exec_inline(block, add, &instructions, qemu_plugin_tb_n_insns(block));
}

void print(PluginId, void *)
{
    std::fprintf(stderr, "instructions %" PRIu64 "\n", instructions);
}

} // namespace

int qemu_plugin_install(PluginId id, const void *, int, char **)
{
    qemu_plugin_register_vcpu_tb_trans_cb(id, countBlock);
    qemu_plugin_register_atexit_cb(id, print, nullptr);
    return 0;
}
