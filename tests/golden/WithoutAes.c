/* To be preloaded: an Arm processor without the cryptographic instructions, as far as a program can
 * ask. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <sys/auxv.h>

__attribute__((visibility("default"))) unsigned long getauxval(unsigned long type) {
  typedef unsigned long Ask(unsigned long);
  Ask* ask;
  *(void**)&ask = dlsym(RTLD_NEXT, "getauxval");
  return type == AT_HWCAP ? ask(type) & ~(unsigned long)(HWCAP_AES | HWCAP_PMULL) : ask(type);
}
