/* A plugin for qemu: counts the instructions that a program executes, and says so at its end in the
 * file that the argument `out` names. For one thread.
 *
 * The declarations are those of qemu's plugin interface, version 1, as far as they are used here;
 * Debian does not package its header. */
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

typedef uint64_t qemu_plugin_id_t;
struct qemu_info;
struct qemu_plugin_tb;
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           void (*callback)(qemu_plugin_id_t,
                                                            struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* block, enum qemu_plugin_op op,
                                              void* counter, uint64_t add);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, void (*callback)(qemu_plugin_id_t, void*),
                                    void* data);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);

#define EXPORT __attribute__((visibility("default")))
EXPORT int qemu_plugin_version = 1;
EXPORT int qemu_plugin_install(qemu_plugin_id_t id, const struct qemu_info* info, int argc,
                               char** argv);

static uint64_t executed;
static char file[4096];

static void count(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
  (void)id;
  qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, &executed,
                                           qemu_plugin_tb_n_insns(block));
}

static void report(qemu_plugin_id_t id, void* data) {
  (void)id;
  (void)data;
  FILE* out = fopen(file, "w");
  if (out == NULL) return;
  fprintf(out, "%" PRIu64 "\n", executed);
  fclose(out);
}

int qemu_plugin_install(qemu_plugin_id_t id, const struct qemu_info* info, int argc, char** argv) {
  (void)info;
  if (argc != 1 || strncmp(argv[0], "out=", 4) != 0 || strlen(argv[0]) >= sizeof file) return 1;
  strcpy(file, argv[0] + 4);
  qemu_plugin_register_vcpu_tb_trans_cb(id, count);
  qemu_plugin_register_atexit_cb(id, report, NULL);
  return 0;
}
